/// @file
/// From a posted Notify message to the records of the devices that it is about.
#ifndef ONVIF_CLIENT_EVENTS_NOTIFYDELIVERY_H
#define ONVIF_CLIENT_EVENTS_NOTIFYDELIVERY_H

#include "events/DeviceTable.h"
#include "events/NotificationReceiver.h"

namespace onvif_client {

/// Any thread.
class CNotifyDelivery final : public INotifySink {
 public:
    explicit CNotifyDelivery(const CDeviceTable& devices) : devices_(devices) {}

    /// A message that belongs to no device, or to one that is pulled from, is ignored.
    void OnNotify(std::string_view body) override;

 private:
    const CDeviceTable& devices_;
};

}  // namespace onvif_client

#endif
