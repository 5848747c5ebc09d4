#include "events/DeviceTable.h"

#include <algorithm>
#include <utility>

#include "events/NotifyMessage.h"

namespace onvif_client {

CDeviceTable::Record CDeviceTable::Put(Record record) {
    const std::lock_guard guard(tableLock_);
    return std::exchange(devices_[record->LoginId()], std::move(record));
}

CDeviceTable::Record CDeviceTable::Take(std::uint32_t loginId) {
    const std::lock_guard guard(tableLock_);
    auto node = devices_.extract(loginId);
    return node.empty() ? nullptr : std::move(node.mapped());
}

CDeviceTable::Record CDeviceTable::From(std::uint64_t loginId) const {
    const std::lock_guard guard(tableLock_);
    const auto found = devices_.lower_bound(loginId);
    return found == devices_.end() ? nullptr : found->second;
}

CDeviceTable::Record CDeviceTable::VisitFrom(std::uint64_t loginId) {
    Record before;  // ends without the lock: this may be the last reference
    const std::lock_guard guard(tableLock_);
    const auto found = devices_.lower_bound(loginId);
    before = std::exchange(visited_, found == devices_.end() ? nullptr : found->second);
    return visited_;
}

void CDeviceTable::EndVisits() {
    Record before;  // as above
    const std::lock_guard guard(tableLock_);
    before = std::move(visited_);
}

CDeviceTable::Record CDeviceTable::Visited(std::uint32_t loginId) const {
    const std::lock_guard guard(tableLock_);
    return visited_ != nullptr && visited_->LoginId() == loginId ? visited_ : nullptr;
}

CDeviceTable::Record CDeviceTable::FindNotified(std::string_view to,
                                                std::string_view subscriptionReference) const {
    const std::lock_guard guard(tableLock_);
    auto found = std::find_if(devices_.begin(), devices_.end(), [to](const auto& each) {
        return each.second->CallbackAddress() == to;
    });
    if (found == devices_.end()) {
        found = std::find_if(devices_.begin(), devices_.end(), [&](const auto& each) {
            return AddressesAgree(subscriptionReference, each.second->RenewAddress());
        });
    }
    return found == devices_.end() ? nullptr : found->second;
}

}  // namespace onvif_client
