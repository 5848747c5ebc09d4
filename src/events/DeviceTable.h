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
#include "platform/Mutex.h"

namespace onvif_client {

/// Any thread. Nothing here calls an observer or waits for a device.
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

    // For the control loop: as From, and the record counts as visited until the next call.
    Record VisitFrom(std::uint64_t loginId);
    void EndVisits();
    /// The visited record when it has that id, also when it has been taken out meanwhile.
    Record Visited(std::uint32_t loginId) const;

    /// The record whose callback address that is, or null.
    Record AddressedBy(std::string_view callbackAddress) const;
    /// The devices that may post messages, by id.
    std::vector<Record> Posting() const;

 private:
    mutable CMutex tableLock_;  // behind the lifecycle lock, before a record's lock
    std::map<std::uint64_t, Record> devices_ GUARDED_BY(tableLock_);
    Record visited_ GUARDED_BY(tableLock_);
};

}  // namespace onvif_client

#endif
