/// @file
/// Exchanges with devices, written to the trace file where there is one (platform/TraceFile.h).
///
/// An entry:
///
///     == 2026-11-22 14:05:09.123 10.0.0.5:80 GetDNS /onvif/device_service 500 12 ms fault CODE:
///     REASON
///     === request
///     (head and body)
///     === reply
///     (head and body)
///
/// Its first line holds the local time of the beginning, the device, the operation ("picture" for
/// the download of one), the path, the HTTP status or one word, the duration, and maybe a remark.
/// The words: "refused" and "no-connection", "closed" and "timeout" without a reply, "stopped" by
/// this side, "no-http" for bytes that are no reply. A line of a message never begins with "==".
#ifndef ONVIF_CLIENT_CLIENT_EXCHANGETRACE_H
#define ONVIF_CLIENT_CLIENT_EXCHANGETRACE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "client/SecurityHeader.h"
#include "platform/Wirelink.h"

namespace onvif_client {

/// One exchange that goes on.
class CExchangeTrace {
 public:
    /// What came back.
    struct Outcome {
        ExchangeEnd end = ExchangeEnd::kReplied;
        std::string_view reply;  // head and body
        std::optional<std::uint64_t> bodySize =
            std::nullopt;  // in the place of the body: a picture
    };

    /// Null where nothing is traced.
    static std::shared_ptr<CExchangeTrace> Begin(const std::string& ip, std::uint16_t port,
                                                 const Credentials& credentials,
                                                 std::string_view request);

    /// Begun now.
    CExchangeTrace(std::string device, Credentials credentials, std::string_view request);

    /// Writes the entry. Once.
    void End(const Outcome& outcome) const;

    /// The entry behind its time.
    std::string Text(const Outcome& outcome, std::uint32_t milliseconds) const;

 private:
    const std::string device_;
    const Credentials credentials_;
    const std::string request_;
    const std::uint32_t began_;
};

}  // namespace onvif_client

#endif
