/// @file
/// The first lines of the library's trace entries, one for each exchange.
#ifndef ONVIFCTL_TRACE_EXCHANGELINE_H
#define ONVIFCTL_TRACE_EXCHANGELINE_H

#include <optional>
#include <string>
#include <string_view>

namespace onvifctl {

/// What an exchange was, and what came of it.
struct ExchangeLine {
    std::string device;     // "IP:PORT"
    std::string operation;  // "GetDNS"; "picture" for the download of one
    std::string path;
    std::string outcome;  // the HTTP status, or a word where there is none
    std::string milliseconds;
    std::string remark;  // "fault CODE: REASON", "no SOAP", "123 bytes"; may be empty
};

/// Takes the lines of a trace off its front up to the next exchange's; what is behind the last line
/// break stays.
std::optional<ExchangeLine> TakeExchange(std::string_view& trace);

/// As people are shown it.
std::string TextOf(const ExchangeLine& line);

}  // namespace onvifctl

#endif
