/// @file
/// A bitmap font of 5 by 7 dots for printable ASCII.
#ifndef CAMERA_SIM_PICTURE_FONT_H
#define CAMERA_SIM_PICTURE_FONT_H

#include <array>
#include <cstdint>

namespace camera_sim {

inline constexpr int kGlyphWidth = 5;
inline constexpr int kGlyphHeight = 7;

/// Rows from top to bottom; of each the lowest five bits count, the highest of them is leftmost.
using Glyph = std::array<std::uint8_t, kGlyphHeight>;

/// The dots of @p character; a question mark for what the font does not have.
const Glyph& GlyphOf(char character);

}  // namespace camera_sim

#endif
