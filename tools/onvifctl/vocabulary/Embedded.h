/// @file
/// Pages of docs/ that the program was built with.
#ifndef ONVIFCTL_VOCABULARY_EMBEDDED_H
#define ONVIFCTL_VOCABULARY_EMBEDDED_H

#include <string_view>

namespace onvifctl {

/// docs/commands.md.
std::string_view CommandsPage();

/// docs/result-shapes.json.
std::string_view ResultShapes();

}  // namespace onvifctl

#endif
