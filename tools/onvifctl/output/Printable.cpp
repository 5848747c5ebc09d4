#include "output/Printable.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace onvifctl {

namespace {

/// What the bytes at the start of a text encode.
struct Character {
    std::uint32_t code;
    std::size_t length;  // 0: they are no UTF-8
};

Character FirstCharacter(std::string_view text) {
    const auto byte = [text](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
    constexpr std::array<std::uint32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
    const std::uint8_t lead = byte(0);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 0 || lead > 0xF4 || length > text.size()) {
        return {lead, 0};
    }
    std::uint32_t code = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return {lead, 0};
        }
        code = code << 6 | (byte(i) & 0x3F);
    }
    return code < kLeast[length] ? Character{lead, 0} : Character{code, length};
}

std::string Escaped(const Character& character) {
    std::array<char, 8> text = {};
    std::snprintf(text.data(), text.size(), character.length > 1 ? "\\u%04X" : "\\x%02X",
                  static_cast<unsigned int>(character.code));
    return text.data();
}

}  // namespace

std::string Printable(std::string_view text, Lines lines) {
    std::string printable;
    printable.reserve(text.size());
    while (!text.empty()) {
        const Character first = FirstCharacter(text);
        const std::size_t length = first.length == 0 ? 1 : first.length;
        const bool control = first.code < ' ' || (first.code >= 0x7F && first.code < 0xA0);
        const char c = text.front();
        if (c == '\n' || c == '\t' || (c == '\r' && lines == Lines::kOne)) {
            printable += lines == Lines::kOne ? ' ' : c;
        } else if (control || first.length == 0) {
            printable += Escaped(first);
        } else {
            printable += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return printable;
}

}  // namespace onvifctl
