#include "transform/MotionCells.h"

#include <algorithm>
#include <cstdint>

#include "platform/Digests.h"

namespace onvif_client {

namespace {

using ByteString = std::vector<std::uint8_t>;

// A reply of two kilobytes must not make a result of many megabytes.
constexpr int kLongestSide = 1'024;
constexpr int kMostCells = 65'536;
constexpr std::size_t kLongestPacket = 128;

/// A control byte below 128 announces that many bytes and one more; 129 to 255 repeat the next
/// byte 257 minus that many times; 128 means nothing.
constexpr unsigned kNothing = 128;
constexpr unsigned kRepeat = 257;

std::uint8_t BitOf(std::size_t cell) {
    return static_cast<std::uint8_t>(0x80U >> (cell % 8));
}

std::size_t RunAt(const ByteString& bytes, std::size_t position) {
    std::size_t end = position + 1;
    while (end < bytes.size() && end - position < kLongestPacket && bytes[end] == bytes[position]) {
        ++end;
    }
    return end - position;
}

ByteString PackBits(const ByteString& bytes) {
    ByteString packed;
    ByteString literals;
    const auto flush = [&] {
        if (!literals.empty()) {
            packed.push_back(static_cast<std::uint8_t>(literals.size() - 1));
            packed.insert(packed.end(), literals.begin(), literals.end());
            literals.clear();
        }
    };
    for (std::size_t position = 0; position < bytes.size();) {
        const std::size_t run = RunAt(bytes, position);
        // A pair inside literals costs as much as two more of them.
        if (run >= 3 || (run == 2 && literals.empty())) {
            flush();
            packed.push_back(static_cast<std::uint8_t>(kRepeat - run));
            packed.push_back(bytes[position]);
            position += run;
            continue;
        }
        literals.push_back(bytes[position++]);
        if (literals.size() == kLongestPacket) {
            flush();
        }
    }
    flush();
    return packed;
}

/// Stops at the end of the data or when @p wanted bytes are there.
ByteString UnpackBits(std::span<const std::uint8_t> packed, std::size_t wanted) {
    ByteString bytes;
    while (!packed.empty() && bytes.size() < wanted) {
        const unsigned control = packed.front();
        packed = packed.subspan(1);
        if (control == kNothing) {
            continue;
        }
        if (control < kNothing) {
            const auto literals = packed.first(std::min<std::size_t>(control + 1, packed.size()));
            bytes.insert(bytes.end(), literals.begin(), literals.end());
            packed = packed.subspan(literals.size());
        } else if (!packed.empty()) {
            bytes.insert(bytes.end(), kRepeat - control, packed.front());
            packed = packed.subspan(1);
        }
    }
    bytes.resize(wanted);
    return bytes;
}

std::string CellsOf(std::string_view item) {
    std::string cells;
    std::copy_if(item.begin(), item.end(), std::back_inserter(cells),
                 [](char c) { return c == '0' || c == '1'; });
    return cells;
}

}  // namespace

bool IsCellLayout(int columns, int rows) {
    return columns >= 1 && rows >= 1 && columns <= kLongestSide && rows <= kLongestSide &&
           columns * rows <= kMostCells;
}

CellRows ArrangeCells(std::span<const std::string> items, int columns, int rows) {
    if (!IsCellLayout(columns, rows)) {
        return {};
    }
    CellRows given;
    std::transform(items.begin(), items.end(), std::back_inserter(given), CellsOf);
    const auto width = static_cast<std::size_t>(columns);
    const bool singleCells = std::all_of(given.begin(), given.end(),
                                         [](const std::string& each) { return each.size() <= 1; });
    if (singleCells) {
        std::string cells;
        for (const std::string& each : given) {
            cells += each;
        }
        given.clear();
        for (std::size_t at = 0; at < cells.size(); at += width) {
            given.push_back(cells.substr(at, width));
        }
    }
    given.resize(static_cast<std::size_t>(rows));
    for (std::string& row : given) {
        row.resize(width, '0');
    }
    return given;
}

std::string EncodeActiveCells(const CellRows& rows) {
    const std::size_t columns = rows.empty() ? 0 : rows.front().size();
    ByteString bytes((columns * rows.size() + 7) / 8);
    std::size_t cell = 0;
    for (const std::string& row : rows) {
        for (const char state : row) {
            if (state == '1') {
                bytes[cell / 8] |= BitOf(cell);
            }
            ++cell;
        }
    }
    return Base64(PackBits(bytes));
}

std::optional<CellRows> DecodeActiveCells(std::string_view activeCells, int columns, int rows) {
    const auto packed = DecodeBase64(activeCells);
    if (!IsCellLayout(columns, rows) || !packed) {
        return std::nullopt;
    }
    const auto width = static_cast<std::size_t>(columns);
    CellRows cells(static_cast<std::size_t>(rows), std::string(width, '0'));
    const ByteString bytes = UnpackBits(*packed, (width * cells.size() + 7) / 8);
    for (std::size_t cell = 0; cell < width * cells.size(); ++cell) {
        if ((bytes[cell / 8] & BitOf(cell)) != 0) {
            cells[cell / width][cell % width] = '1';
        }
    }
    return cells;
}

}  // namespace onvif_client
