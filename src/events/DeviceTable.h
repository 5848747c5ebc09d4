/// @file
/// The devices with an observer, by login id.
#ifndef ONVIF_CLIENT_EVENTS_DEVICETABLE_H
#define ONVIF_CLIENT_EVENTS_DEVICETABLE_H

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "events/EventDeviceRecord.h"

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

    /// The record whose callback address that is; else the first one whose renewal goes to the host
    /// of @p subscriptionReference; else null.
    Record FindNotified(std::string_view to, std::string_view subscriptionReference) const;

 private:
    mutable std::mutex tableLock_;  // guards the members below; before a record's lock
    std::map<std::uint64_t, Record> devices_;
    Record visited_;
};

}  // namespace onvif_client

#endif
