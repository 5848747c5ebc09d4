/// @file
/// Misbehaviours that a camera can be told to show, and how they are written.
#ifndef CAMERA_SIM_CONTROL_FAULT_H
#define CAMERA_SIM_CONTROL_FAULT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "camera_sim/soap/SoapFault.h"

namespace camera_sim {

/// A misbehaviour that meets requests. Every kind waits `delay` first. An HTTP 401 in place of a
/// picture has no challenge.
struct Fault {
    enum class Kind {
        kDelay,         ///< answers properly, only late
        kSilence,       ///< never answers, keeps the connection open; nothing is executed
        kClose,         ///< closes without an answer; nothing is executed
        kTruncate,      ///< closes after the first `bytes` bytes of the reply, HTTP head included
        kGarbage,       ///< sends `bytes` meaningless bytes (the same ones each time) instead
        kSoapFault,     ///< answers `soapFault`; nothing is executed
        kUnauthorized,  ///< answers HTTP 401 without a body; nothing is executed
        kNoProlog,      ///< answers without the XML declaration
        kSegments,      ///< sends the reply in pieces of `bytes` bytes, `pause` apart
        kRawReply,      ///< sends `reply` as it is, HTTP head and all; nothing is executed
        kBareStatus,    ///< answers HTTP `status` with neither body nor challenge
    };
    Kind kind = Kind::kDelay;
    std::int64_t remaining = -1;  ///< how many requests it still meets; negative: all
    std::chrono::milliseconds delay{0};
    std::size_t bytes = 0;
    std::chrono::milliseconds pause{0};
    SoapFault soapFault{};
    std::string reply{};
    unsigned status = 0;
};

/// A fault and the requests that it meets.
struct PlannedFault {
    /// An operation ("GetProfiles"), an operation of one service by its usual prefix
    /// ("tr2:GetProfiles", "tr2:*" for any), "http:snapshot" for pictures, or "*" for all requests,
    /// unreadable ones included.
    std::string operation;
    Fault fault;
};

/// Reads OPERATION[@COUNT]=KIND[:ARGUMENT], the form of the command line and of control requests
/// (FaultSyntax() explains it). Nothing when @p text is not of that form; @p error then says why.
std::optional<PlannedFault> ParseFault(std::string_view text, std::string& error);
std::string_view FaultSyntax();

/// The word for a kind in texts, e.g. "truncate".
std::string_view KindName(Fault::Kind kind);

/// Whether @p pattern, as in PlannedFault::operation, means that operation.
bool MatchesOperation(std::string_view pattern, std::string_view service,
                      std::string_view operation);

}  // namespace camera_sim

#endif
