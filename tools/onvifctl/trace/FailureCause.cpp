#include "trace/FailureCause.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace onvifctl {

namespace {

/// In the texts, %O is the request, %S the HTTP status, %P the path, %M the milliseconds, and %F
/// the fault's reason with ": " in front, if there is one.
struct Cause {
    std::string_view outcome;  // x: any digit; empty: any
    std::string_view remark;   // how it begins
    std::string_view sentence;
    std::string_view advice;
};

constexpr std::string_view kRights =
    "log in as an administrator, or give the account the right in the device";
constexpr std::string_view kNotOffered =
    "'onvifctl get HOST serviceUrl' shows the services that it offers";
constexpr std::string_view kParameters =
    "look at the command's parameters (docs/commands.md), and at what the device says in a trace "
    "(--trace FILE)";

// The first one that fits counts.
constexpr Cause kCauses[] = {
    {"refused", "", "the device refused the connection for %O",
     "look whether it restarts, and try again"},
    {"no-connection", "", "no connection to the device came about for %O",
     "look whether it is switched on and connected, and try again"},
    {"closed", "", "the device closed the connection without a reply to %O",
     "try again; a device that always does so cannot handle this request, or is overloaded"},
    {"timeout", "", "the device did not reply to %O in time (%M ms)",
     "try again; if it stays so, look at the network and at what else loads the device"},
    {"stopped", "", "%O was broken off", "try again"},
    {"no-http", "", "what came in reply to %O is not HTTP",
     "look at the port, and at what answers there (--trace FILE)"},
    {"", "fault NotAuthorized", "the device refuses the credentials for %O (HTTP %S)%F", kRights},
    {"", "fault FailedAuthentication", "the device refuses the credentials for %O (HTTP %S)%F",
     kRights},
    {"401", "", "the device refuses the credentials for %O (HTTP 401)%F", kRights},
    {"403", "", "the device forbids %O (HTTP 403)%F", kRights},
    {"", "fault ActionNotSupported", "the device does not support %O (HTTP %S)%F", kNotOffered},
    {"404", "", "the device has nothing at %P for %O (HTTP 404)%F", kNotOffered},
    {"400", "", "the device calls %O a bad request (HTTP 400)%F", kParameters},
    {"500", "", "the device failed at %O (HTTP 500)%F", kParameters},
    {"", "fault", "the device refuses %O (HTTP %S)%F", kParameters},
    {"2xx", "no SOAP", "what came in reply to %O is not XML that answers it (HTTP %S)",
     "look whether the port is that of ONVIF, and at the reply (--trace FILE)"},
    {"2xx", "",
     "the reply to %O (HTTP %S) has nothing that can be used, or what follows it was not sent",
     "look at parameters and index of what follows, and at the reply (--trace FILE)"},
    {"3xx", "", "the device leads %O elsewhere (HTTP %S)",
     "if it wants HTTPS, allow HTTP in the device"},
    {"", "", "the device does not answer %O as it should (HTTP %S)%F",
     "look at its reply (--trace FILE)"},
};

bool Fits(std::string_view outcome, std::string_view pattern) {
    return pattern.empty() || std::equal(outcome.begin(), outcome.end(), pattern.begin(),
                                         pattern.end(), [](char is, char wanted) {
                                             return is == wanted ||
                                                    (wanted == 'x' && is >= '0' && is <= '9');
                                         });
}

/// With ": " in front; empty where there is none.
std::string Reason(const std::string& remark) {
    const std::size_t colon = remark.starts_with("fault") ? remark.find(": ") : std::string::npos;
    const bool says = colon != std::string::npos && colon + 2 < remark.size();
    return says ? remark.substr(colon) : "";
}

std::string Filled(std::string_view text, const ExchangeLine& exchange) {
    std::string filled;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            filled += text[at];
            continue;
        }
        switch (text[++at]) {
            case 'O':
                filled += exchange.operation == "picture" ? "the request for the picture"
                                                          : "the request " + exchange.operation;
                break;
            case 'S':
                filled += exchange.outcome;
                break;
            case 'P':
                filled += exchange.path;
                break;
            case 'M':
                filled += exchange.milliseconds;
                break;
            default:
                filled += Reason(exchange.remark);
        }
    }
    return filled;
}

}  // namespace

std::string CauseOfFailure(const std::optional<std::vector<ExchangeLine>>& exchanges) {
    if (!exchanges) {
        return "the device refused a command or did not answer it; --verbose shows more";
    }
    if (exchanges->empty()) {
        return "the device was not asked: a parameter is missing or an index is out of range; "
               "docs/commands.md has the parameters, 'onvifctl get HOST profiles' what an index "
               "counts from 0";
    }
    const ExchangeLine& last = exchanges->back();
    const auto* cause =
        std::find_if(std::begin(kCauses), std::end(kCauses), [&last](const Cause& each) {
            return Fits(last.outcome, each.outcome) && last.remark.starts_with(each.remark);
        });
    return Filled(cause->sentence, last) + "; " + std::string(cause->advice);
}

}  // namespace onvifctl
