/// @file
/// Result documents for people.
#ifndef ONVIFCTL_DOCUMENTS_RESULTTABLE_H
#define ONVIFCTL_DOCUMENTS_RESULTTABLE_H

#include <string>
#include <vector>

namespace onvifctl {

/// A result document as aligned text: a section per command, a line per value; repeated elements
/// stand side by side where they have much in common. The text is in proportion to the document,
/// whatever a device makes of it.
std::string FormatTable(const std::string& result);

/// What the device refused: "COMMAND: description (error N)" per status "fail".
std::vector<std::string> Refusals(const std::string& result);

/// Rows of cells, each column as wide as its widest cell. Cells that are very wide stick out: the
/// text is in proportion to the cells.
std::string AlignColumns(const std::vector<std::vector<std::string>>& rows);

}  // namespace onvifctl

#endif
