/// @file
/// The devices with an observer, by login id.
#ifndef ONVIF_CLIENT_EVENTS_DEVICETABLE_H
#define ONVIF_CLIENT_EVENTS_DEVICETABLE_H

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "events/EventDeviceRecord.h"
#include "events/VisitSchedule.h"
#include "events/WakeList.h"
#include "platform/Mutex.h"

namespace onvif_client {

/// Any thread, visits one at a time. Nothing here calls an observer or waits for a device. Must
/// outlive what its records are told.
class CDeviceTable {
 public:
    using Record = std::shared_ptr<EventDeviceRecord>;

    /// @return the record that had the place before, or null.
    Record Put(Record record);
    /// Takes the record out; null for an unknown id.
    Record Take(std::uint32_t loginId);

    /// The record with the smallest id of at least that, or null: a walk by ids goes on whatever
    /// happens to the table meanwhile.
    Record From(std::uint64_t loginId) const;

    // For the control loop.
    /// As From, among the records that were woken or whose time has come; 0 begins a pass. The
    /// record counts as visited until the next call.
    Record VisitFrom(std::uint64_t loginId);
    /// When the record is to be visited again, if nothing wakes it before.
    void VisitAgain(std::uint32_t loginId, const NextVisit& next);
    void EndVisits();
    /// The next pass visits all records.
    void WakeEveryone() { wakes_.AddEveryone(); }
    /// The visited record when it has that id, also when it has been taken out meanwhile.
    Record Visited(std::uint32_t loginId) const;

    std::size_t Count() const;

    /// The record whose callback address that is, or null.
    Record AddressedBy(std::string_view callbackAddress) const;
    /// The devices that may post messages, by id.
    std::vector<Record> Posting() const;

 private:
    using Devices = std::map<std::uint64_t, Record>;

    /// The next one to visit of at least that id, or the end.
    Devices::iterator NextLocked(std::uint64_t loginId) REQUIRES(tableLock_);

    CWakeList wakes_;           // the records know it
    mutable CMutex tableLock_;  // behind the lifecycle lock, before a record's lock
    Devices devices_ GUARDED_BY(tableLock_);
    CVisitSchedule schedule_ GUARDED_BY(tableLock_);
    bool everyone_ GUARDED_BY(tableLock_) = false;       // is visited in this pass,
    bool everyoneLater_ GUARDED_BY(tableLock_) = false;  // or in the next one
    Record visited_ GUARDED_BY(tableLock_);
};

}  // namespace onvif_client

#endif
