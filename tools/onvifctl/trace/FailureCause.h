/// @file
/// Why a request brought nothing, in words, and what to do next.
#ifndef ONVIFCTL_TRACE_FAILURECAUSE_H
#define ONVIFCTL_TRACE_FAILURECAUSE_H

#include <optional>
#include <string>
#include <vector>

#include "trace/ExchangeLine.h"

namespace onvifctl {

/// "CAUSE; ADVICE", by the last of the exchanges.
/// @param exchanges  those of the request; nothing: they are not known.
std::string CauseOfFailure(const std::optional<std::vector<ExchangeLine>>& exchanges);

}  // namespace onvifctl

#endif
