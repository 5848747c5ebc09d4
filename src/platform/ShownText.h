/// @file
/// Texts of devices made fit for a terminal and for a file of lines.
#ifndef ONVIF_CLIENT_PLATFORM_SHOWNTEXT_H
#define ONVIF_CLIENT_PLATFORM_SHOWNTEXT_H

#include <string>
#include <string_view>

namespace onvif_client {

/// The text with each byte of a control character (C0, DEL and, in UTF-8, C1), and each byte that
/// is not UTF-8, written as \xNN.
std::string ShownText(std::string_view text);

}  // namespace onvif_client

#endif
