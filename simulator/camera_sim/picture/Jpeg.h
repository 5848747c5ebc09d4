/// @file
/// Pictures and their compression.
#ifndef CAMERA_SIM_PICTURE_JPEG_H
#define CAMERA_SIM_PICTURE_JPEG_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// Pixels row by row from the top left, each red, green, blue.
struct Picture {
    static constexpr std::size_t kChannels = 3;

    explicit Picture(Resolution pictureSize)
        : size(pictureSize),
          pixels(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
                 kChannels) {}

    Resolution size;  ///< both above 0
    std::vector<std::uint8_t> pixels;
};

/// A baseline JPEG file; nothing when it cannot be made. @p quality from 1 to 100.
std::optional<std::string> CompressJpeg(const Picture& picture, int quality);

}  // namespace camera_sim

#endif
