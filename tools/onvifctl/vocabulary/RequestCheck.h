/// @file
/// Whether a request names what the library knows: it passes over what it does not know.
#ifndef ONVIFCTL_VOCABULARY_REQUESTCHECK_H
#define ONVIFCTL_VOCABULARY_REQUESTCHECK_H

#include <string>
#include <vector>

namespace onvifctl {

/// Throws CFailure, with the nearest name where there is one, when a command of the document or a
/// parameter is unknown. @p options: what a mistyped parameter may have been meant for ("format").
void CheckRequest(const std::string& request, const std::vector<std::string>& options);

}  // namespace onvifctl

#endif
