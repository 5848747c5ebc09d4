/// @file
/// The cells in which a motion detector looks for motion, as the protocol carries them: one bit a
/// cell, row by row from the top left, packed as PackBits and written as Base64.
#ifndef CAMERA_SIM_SOAP_ACTIVECELLS_H
#define CAMERA_SIM_SOAP_ACTIVECELLS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// One entry a cell, row by row; the size is that of the layout.
using Cells = std::vector<bool>;

/// The cell layout of the motion module, which the cells of the rules refer to; none: no cells.
Resolution LayoutOf(const AnalyticsConfiguration& configuration);

/// Nothing when @p text does not hold exactly the cells of @p layout.
std::optional<Cells> DecodeCells(std::string_view text, Resolution layout);
std::string EncodeCells(const Cells& cells);

/// The cells at the same columns and rows of another layout; those that are new are not active.
Cells MoveCells(const Cells& cells, Resolution from, Resolution to);

}  // namespace camera_sim

#endif
