#include "events/DeviceTable.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/Clock.h"

namespace onvif_client {

CDeviceTable::Record CDeviceTable::Put(Record record) {
    EventDeviceRecord& added = *record;
    const CLockGuard guard(tableLock_);
    Record before = std::exchange(devices_[added.LoginId()], std::move(record));
    added.WakeBy(wakes_);
    return before;
}

CDeviceTable::Record CDeviceTable::Take(std::uint32_t loginId) {
    const CLockGuard guard(tableLock_);
    schedule_.Forget(loginId);
    auto node = devices_.extract(loginId);
    return node.empty() ? nullptr : std::move(node.mapped());
}

CDeviceTable::Record CDeviceTable::From(std::uint64_t loginId) const {
    const CLockGuard guard(tableLock_);
    const auto found = devices_.lower_bound(loginId);
    return found == devices_.end() ? nullptr : found->second;
}

CDeviceTable::Devices::iterator CDeviceTable::NextLocked(std::uint64_t loginId) {
    if (loginId == 0) {
        everyone_ = std::exchange(everyoneLater_, false);
    }
    CWakeList::Awake awake = wakes_.Take();
    try {
        for (const std::uint32_t each : awake.loginIds) {
            schedule_.Add(each);
        }
        schedule_.SetNow(TickCount(), CalendarSeconds());
    } catch (const std::bad_alloc&) {
        awake.everyone = true;
    }
    if (awake.everyone) {
        everyone_ = true;
        everyoneLater_ = loginId != 0;  // those before it have had their turn
    }
    if (everyone_) {
        return devices_.lower_bound(loginId);
    }
    auto found = devices_.end();
    while (found == devices_.end()) {
        const auto next = schedule_.Take(loginId);
        if (!next) {
            break;
        }
        found = devices_.find(*next);  // it may have gone
    }
    return found;
}

CDeviceTable::Record CDeviceTable::VisitFrom(std::uint64_t loginId) {
    Record before;  // ends without the lock: this may be the last reference
    const CLockGuard guard(tableLock_);
    const auto found = NextLocked(loginId);
    before = std::exchange(visited_, found == devices_.end() ? nullptr : found->second);
    return visited_;
}

void CDeviceTable::VisitAgain(std::uint32_t loginId, const NextVisit& next) {
    try {
        const CLockGuard guard(tableLock_);
        schedule_.SetNow(TickCount(), CalendarSeconds());
        schedule_.Add(loginId, next);
    } catch (const std::bad_alloc&) {
        WakeEveryone();
    }
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

std::size_t CDeviceTable::Count() const {
    const CLockGuard guard(tableLock_);
    return devices_.size();
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
