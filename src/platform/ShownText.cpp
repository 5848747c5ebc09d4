#include "platform/ShownText.h"

#include <cstdint>

namespace onvif_client {

namespace {

/// The lead bytes of one length, and the smallest character that may take that many bytes.
struct SequenceKind {
    unsigned mask;
    unsigned lead;
    std::size_t length;
    std::uint32_t smallest;
};

// A character of two bytes begins behind C1, so that C1 is none.
constexpr SequenceKind kKinds[] = {
    {0x80, 0x00, 1, 0x20},
    {0xE0, 0xC0, 2, 0xA0},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
};

bool IsCharacter(std::uint32_t code) {
    return code != 0x7F && (code < 0xD800 || code > 0xDFFF) && code <= 0x10FFFF;
}

/// How many bytes the character in front has; 0: there is none that can be shown.
std::size_t CharacterSize(std::string_view text) {
    const unsigned lead = static_cast<unsigned char>(text.front());
    for (const SequenceKind& kind : kKinds) {
        if ((lead & kind.mask) != kind.lead || kind.length > text.size()) {
            continue;
        }
        std::uint32_t code = lead & ~kind.mask;
        for (const char each : text.substr(1, kind.length - 1)) {
            const unsigned byte = static_cast<unsigned char>(each);
            if ((byte & 0xC0U) != 0x80U) {
                return 0;
            }
            code = (code << 6U) | (byte & 0x3FU);
        }
        return code >= kind.smallest && IsCharacter(code) ? kind.length : 0;
    }
    return 0;
}

}  // namespace

std::string ShownText(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        std::size_t size = CharacterSize(text);
        if (size == 0) {
            const unsigned byte = static_cast<unsigned char>(text.front());
            shown.append({'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 0xFU]});
            size = 1;
        } else {
            shown += text.substr(0, size);
        }
        text.remove_prefix(size);
    }
    return shown;
}

}  // namespace onvif_client
