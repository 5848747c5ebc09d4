/// @file
/// Whether what a device gave as a picture is one.
#ifndef ONVIFCTL_PICTURE_PICTURE_H
#define ONVIFCTL_PICTURE_PICTURE_H

#include <string_view>

namespace onvifctl {

/// Throws CFailure, which tells what came, unless the bytes begin as a JPEG, PNG, GIF or BMP file
/// does and, being a JPEG, have its end.
void CheckPicture(std::string_view bytes);

}  // namespace onvifctl

#endif
