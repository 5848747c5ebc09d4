#include "events/NotifyDelivery.h"

#include "events/NotifyMessage.h"

namespace onvif_client {

void CNotifyDelivery::OnNotify(std::string_view body) {
    const NotifyMessage notify = ReadNotify(body);
    for (const NotifyItem& each : notify.items) {
        const auto record = devices_.FindNotified(notify.to, each.subscriptionReference);
        if (record != nullptr) {
            const AlarmItem item = {ClassifyNotifiedTopic(each.topic), each.active};
            record->AddNotifiedItems({&item, 1});
        }
    }
}

}  // namespace onvif_client
