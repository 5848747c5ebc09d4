/// @file
/// The cell bitmap of a motion detector: a grid of cells, each watched or not, as the ActiveCells
/// text of a cell motion rule (ONVIF Analytics Service, cell motion detector). Pure functions.
///
/// The cells are numbered from the upper left corner, row by row without padding; cell i is the bit
/// 0x80 >> (i mod 8) of byte i / 8. The bytes are packed by PackBits (TIFF 6.0, section 9) as one
/// string and written in Base64.
#ifndef ONVIF_CLIENT_TRANSFORM_MOTIONCELLS_H
#define ONVIF_CLIENT_TRANSFORM_MOTIONCELLS_H

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace onvif_client {

/// One text per row, top row first; one character per cell, left to right: "1" active, "0" not.
/// All rows are of one length.
using CellRows = std::vector<std::string>;

/// True for a layout of at least one and at most 65,536 cells, 1,024 a side.
bool IsCellLayout(int columns, int rows);

/// Makes rows from what somebody wrote: of each item only the characters "0" and "1" count. Items
/// with more than one of them are rows; if no item has more than one, they are single cells in row
/// order. What is missing is "0", what is too much is dropped. No rows for an impossible layout.
CellRows ArrangeCells(std::span<const std::string> items, int columns, int rows);

/// The ActiveCells text; no rows give an empty one.
std::string EncodeActiveCells(const CellRows& rows);

/// Any PackBits stream is understood; missing bits are 0, surplus ones are ignored.
/// @return nothing for an impossible layout and for a text that is not Base64.
std::optional<CellRows> DecodeActiveCells(std::string_view activeCells, int columns, int rows);

}  // namespace onvif_client

#endif
