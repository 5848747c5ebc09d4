/// @file
/// Texts of devices for terminals, which a device must not be able to control.
#ifndef ONVIFCTL_OUTPUT_PRINTABLE_H
#define ONVIFCTL_OUTPUT_PRINTABLE_H

#include <string>
#include <string_view>

namespace onvifctl {

enum class Lines {
    kOne,   // tabs and line breaks become blanks
    kMany,  // tabs and line feeds stay
};

/// The text with every control character as "\x1B" or "\u009B", and with every byte that is no
/// UTF-8 as "\x9B", since some terminals take it for one. Anything else stays as it is, and so does
/// what this function has made.
std::string Printable(std::string_view text, Lines lines = Lines::kOne);

}  // namespace onvifctl

#endif
