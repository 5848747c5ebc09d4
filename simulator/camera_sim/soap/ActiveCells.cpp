#include "camera_sim/soap/ActiveCells.h"

#include <algorithm>
#include <climits>
#include <cstddef>

#include "camera_sim/system/Crypto.h"

namespace camera_sim {
namespace {

constexpr std::size_t kLongestRun = 128;

std::size_t CellCount(Resolution layout) {
    return static_cast<std::size_t>(layout.width) * static_cast<std::size_t>(layout.height);
}

std::size_t ByteCount(std::size_t cells) {
    return (cells + CHAR_BIT - 1) / CHAR_BIT;
}

/// Nothing unless exactly @p size bytes come out and all of @p packed is used up.
std::optional<std::string> UnpackBits(std::string_view packed, std::size_t size) {
    constexpr unsigned kNoOperation = 128;
    std::string bytes;
    while (!packed.empty()) {
        const unsigned head = static_cast<unsigned char>(packed.front());
        packed.remove_prefix(1);
        if (head == kNoOperation) {
            continue;
        }
        const bool literal = head < kNoOperation;
        const std::size_t length = literal ? head + 1 : 2 * kLongestRun + 1 - head;
        const std::size_t taken = literal ? length : 1;
        if (taken > packed.size() || length > size - bytes.size()) {
            return std::nullopt;
        }
        if (literal) {
            bytes.append(packed.substr(0, taken));
        } else {
            bytes.append(length, packed.front());
        }
        packed.remove_prefix(taken);
    }
    if (bytes.size() != size) {
        return std::nullopt;
    }
    return bytes;
}

std::size_t RunAt(std::string_view bytes) {
    const std::size_t end = std::min(bytes.find_first_not_of(bytes.front()), bytes.size());
    return std::min(end, kLongestRun);
}

std::string PackBits(std::string_view bytes) {
    std::string packed;
    while (!bytes.empty()) {
        std::size_t length = RunAt(bytes);
        if (length > 1) {
            packed += static_cast<char>(2 * kLongestRun + 1 - length);
            packed += bytes.front();
        } else {
            while (length < std::min(bytes.size(), kLongestRun) &&
                   RunAt(bytes.substr(length)) == 1) {
                ++length;
            }
            packed += static_cast<char>(length - 1);
            packed += bytes.substr(0, length);
        }
        bytes.remove_prefix(length);
    }
    return packed;
}

unsigned BitOf(std::size_t cell) {
    return 1U << (CHAR_BIT - 1 - cell % CHAR_BIT);
}

}  // namespace

Resolution LayoutOf(const AnalyticsConfiguration& configuration) {
    for (const AnalyticsItem& module : configuration.modules) {
        if (module.cells) {
            return *module.cells;
        }
    }
    return {};
}

std::optional<Cells> DecodeCells(std::string_view text, Resolution layout) {
    const auto packed = DecodeBase64(text);
    if (!packed) {
        return std::nullopt;
    }
    Cells cells(CellCount(layout));
    const auto bytes = UnpackBits(*packed, ByteCount(cells.size()));
    if (!bytes) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
        cells[i] = (static_cast<unsigned char>((*bytes)[i / CHAR_BIT]) & BitOf(i)) != 0;
    }
    return cells;
}

std::string EncodeCells(const Cells& cells) {
    std::string bytes(ByteCount(cells.size()), '\0');
    for (std::size_t i = 0; i < cells.size(); ++i) {
        char& byte = bytes[i / CHAR_BIT];
        if (cells[i]) {
            byte = static_cast<char>(static_cast<unsigned char>(byte) | BitOf(i));
        }
    }
    return EncodeBase64(PackBits(bytes));
}

Cells MoveCells(const Cells& cells, Resolution from, Resolution to) {
    Cells moved(CellCount(to));
    const auto rows = static_cast<std::size_t>(std::min(from.height, to.height));
    const auto columns = static_cast<std::size_t>(std::min(from.width, to.width));
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            moved[row * static_cast<std::size_t>(to.width) + column] =
                cells[row * static_cast<std::size_t>(from.width) + column];
        }
    }
    return moved;
}

}  // namespace camera_sim
