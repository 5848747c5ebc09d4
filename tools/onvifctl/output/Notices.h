/// @file
/// What people are told on standard error: messages, and a line about what goes on. From any
/// thread.
#ifndef ONVIFCTL_OUTPUT_NOTICES_H
#define ONVIFCTL_OUTPUT_NOTICES_H

#include <string>

namespace onvifctl {

/// Tells on standard error, in one line of printable text.
void Tell(const std::string& message);

/// While one lives, what its thread tells is about this camera and begins with its name.
class CTellsOf {
 public:
    explicit CTellsOf(const std::string& camera);
    ~CTellsOf();
    CTellsOf(const CTellsOf&) = delete;
    CTellsOf& operator=(const CTellsOf&) = delete;
};

/// Shows what goes on in the last line of the terminal that standard error is, in the place of what
/// was shown there; an empty text takes it away, and so does what is told. Nowhere else.
void ShowStatus(const std::string& text);

}  // namespace onvifctl

#endif
