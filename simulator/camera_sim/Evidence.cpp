#include "camera_sim/Evidence.h"

#include <string>
#include <utility>

namespace camera_sim {
namespace {

constexpr std::size_t kMostCounters = 512;
constexpr std::size_t kRecordedBytesLimit = std::size_t{16} * 1024 * 1024;

std::size_t Size(const RecordedRequest& request) {
    return sizeof request + request.operation.size() + request.path.size() + request.head.size() +
           request.body.size();
}

}  // namespace

void CEvidence::CountRequest(std::string_view service, std::string_view operation) {
    ++counters_["*"];
    if (operation.empty()) {
        return;
    }
    std::string name(service);
    name.append(":").append(operation);
    const auto counter = counters_.find(name);
    if (counter != counters_.end()) {
        ++counter->second;
    } else if (counters_.size() < kMostCounters) {
        counters_.emplace(std::move(name), 1);
    }
}

void CEvidence::CountEvents(std::string_view what, std::size_t count) {
    if (count > 0) {
        counters_[std::string(what)] += count;
    }
}

std::uint64_t CEvidence::Count(std::string_view operation) const {
    std::uint64_t count = 0;
    for (const auto& [name, value] : counters_) {
        const auto colon = name.find(':');
        const bool all = colon == std::string::npos;
        if (all ? operation == "*"
                : operation != "*" &&
                      MatchesOperation(operation, std::string_view(name).substr(0, colon),
                                       std::string_view(name).substr(colon + 1))) {
            count += value;
        }
    }
    return count;
}

std::uint64_t CEvidence::Record(RecordedRequest request) {
    const std::uint64_t number = forgottenRequests_ + requests_.size();
    recordedBytes_ += Size(request);
    requests_.push_back(std::move(request));
    while (requests_.size() > recordLimit_ || recordedBytes_ > kRecordedBytesLimit) {
        recordedBytes_ -= Size(requests_.front());
        requests_.pop_front();
        ++forgottenRequests_;
    }
    return number;
}

void CEvidence::SetStatus(std::uint64_t number, unsigned status) {
    if (number >= forgottenRequests_ && number - forgottenRequests_ < requests_.size()) {
        requests_[number - forgottenRequests_].status = status;
    }
}

void CEvidence::Clear() {
    counters_.clear();
    forgottenRequests_ += requests_.size();
    requests_.clear();
    recordedBytes_ = 0;
}

}  // namespace camera_sim
