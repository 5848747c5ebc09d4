/// @file
/// What a camera remembers of the requests that it got.
#ifndef CAMERA_SIM_EVIDENCE_H
#define CAMERA_SIM_EVIDENCE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

#include "camera_sim/control/ControlledCamera.h"

namespace camera_sim {

/// Counters, and the latest requests as they came; the oldest are forgotten first. Not safe for use
/// by several threads at once.
class CEvidence {
 public:
    /// @param recordLimit how many requests are kept
    explicit CEvidence(std::size_t recordLimit) : recordLimit_(recordLimit) {}

    /// Counts a request. @p operation is empty when it could not be read.
    void CountRequest(std::string_view service, std::string_view operation);
    /// Adds to a counter beside those of operations, "event:pulled".
    void CountEvents(std::string_view what, std::size_t count);
    /// The sum of the counters that @p operation, as in PlannedFault, means.
    std::uint64_t Count(std::string_view operation) const;
    const Counters& AllCounts() const { return counters_; }

    /// Keeps a request; the result is its number.
    std::uint64_t Record(RecordedRequest request);
    /// Completes a request whose answer came later, if it is still kept.
    void SetStatus(std::uint64_t number, unsigned status);
    std::vector<RecordedRequest> Requests() const { return {requests_.begin(), requests_.end()}; }

    void Clear();

 private:
    const std::size_t recordLimit_;
    Counters counters_;
    std::deque<RecordedRequest> requests_;
    std::size_t recordedBytes_ = 0;
    std::uint64_t forgottenRequests_ = 0;  // the number of requests_.front()
};

}  // namespace camera_sim

#endif
