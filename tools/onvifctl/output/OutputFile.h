/// @file
/// Files that are there as a whole or not at all.
#ifndef ONVIFCTL_OUTPUT_OUTPUTFILE_H
#define ONVIFCTL_OUTPUT_OUTPUTFILE_H

#include <string>
#include <string_view>

#include "ExitCode.h"

namespace onvifctl {

/// Writes a file by way of a temporary one beside it, so that a failure leaves what was there
/// before, and nothing else; so does a signal that ends the tool meanwhile (system/Interruption.h:
/// no other may be alive). What is no regular file (a pipe, a device) is written directly. Throws
/// CFailure when it cannot be written.
void WriteWholeFile(const std::string& file, std::string_view bytes);

/// Ends the tool whatever its threads do, but not in the middle of a whole file.
[[noreturn]] void EndAtOnce(ExitCode code);

}  // namespace onvifctl

#endif
