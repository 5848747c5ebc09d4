#include "events/NotifyDelivery.h"

#include <algorithm>
#include <vector>

#include "events/AlarmTopics.h"
#include "events/NotifyMessage.h"

namespace onvif_client {

void CNotifyDelivery::OnNotify(std::string_view body) {
    const std::vector<CDeviceTable::Record> posting = devices_.Posting();
    if (posting.empty()) {
        return;  // whoever reaches the port could make us read texts in vain
    }
    const NotifyMessage notify = ReadNotify(body);
    const CDeviceTable::Record addressed = devices_.AddressedBy(notify.to);
    for (const NotifyItem& each : notify.items) {
        const auto agreeing = std::find_if(posting.begin(), posting.end(), [&](const auto& record) {
            return AddressesAgree(each.subscriptionReference, record->RenewAddress());
        });
        const AlarmItem item = {ClassifyNotifiedTopic(each.topic), each.active};
        if (addressed != nullptr) {
            addressed->AddNotifiedItems({&item, 1});
        } else if (agreeing != posting.end()) {
            (*agreeing)->AddNotifiedItems({&item, 1});
        }
    }
}

}  // namespace onvif_client
