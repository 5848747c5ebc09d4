#include "events/DeviceTable.h"

#include <algorithm>
#include <utility>

namespace onvif_client {

CDeviceTable::Record CDeviceTable::Put(Record record) {
    const CLockGuard guard(tableLock_);
    return std::exchange(devices_[record->LoginId()], std::move(record));
}

CDeviceTable::Record CDeviceTable::Take(std::uint32_t loginId) {
    const CLockGuard guard(tableLock_);
    auto node = devices_.extract(loginId);
    return node.empty() ? nullptr : std::move(node.mapped());
}

CDeviceTable::Record CDeviceTable::From(std::uint64_t loginId) const {
    const CLockGuard guard(tableLock_);
    const auto found = devices_.lower_bound(loginId);
    return found == devices_.end() ? nullptr : found->second;
}

CDeviceTable::Record CDeviceTable::VisitFrom(std::uint64_t loginId) {
    Record before;  // ends without the lock: this may be the last reference
    const CLockGuard guard(tableLock_);
    const auto found = devices_.lower_bound(loginId);
    before = std::exchange(visited_, found == devices_.end() ? nullptr : found->second);
    return visited_;
}

void CDeviceTable::EndVisits() {
    Record before;  // as above
    const CLockGuard guard(tableLock_);
    before = std::move(visited_);
}

CDeviceTable::Record CDeviceTable::Visited(std::uint32_t loginId) const {
    const CLockGuard guard(tableLock_);
    return visited_ != nullptr && visited_->LoginId() == loginId ? visited_ : nullptr;
}

CDeviceTable::Record CDeviceTable::AddressedBy(std::string_view callbackAddress) const {
    const CLockGuard guard(tableLock_);
    const auto found = std::find_if(devices_.begin(), devices_.end(), [&](const auto& each) {
        return each.second->CallbackAddress() == callbackAddress;
    });
    return found == devices_.end() ? nullptr : found->second;
}

std::vector<CDeviceTable::Record> CDeviceTable::Posting() const {
    std::vector<Record> posting;
    const CLockGuard guard(tableLock_);
    for (const auto& [loginId, record] : devices_) {
        if (!record->RenewAddress().empty()) {
            posting.push_back(record);
        }
    }
    return posting;
}

}  // namespace onvif_client
