#include "camera_sim/control/JsonWriter.h"

#include <array>
#include <charconv>
#include <cstddef>

namespace camera_sim {
namespace {

/// How many bytes the UTF-8 character at the start of @p text has; 0 when it is none.
std::size_t CharacterLength(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
    }
    // Overlong forms, surrogates and what lies above U+10FFFF.
    const bool bad = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) >= 0xA0) ||
                     (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) >= 0x90);
    return bad ? 0 : length;
}

}  // namespace

void JsonWriter::Value(double value) {
    Begin();
    std::array<char, 32> digits{};
    text_.append(digits.data(),
                 std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
}

void JsonWriter::Begin() {
    if (!first_) text_ += ',';
    first_ = false;
}

JsonWriter& JsonWriter::Key(std::string_view name) {
    Begin();
    AppendString(name);
    text_ += ':';
    first_ = true;
    return *this;
}

void JsonWriter::Value(std::string_view text) {
    Begin();
    AppendString(text);
}

void JsonWriter::AppendString(std::string_view text) {
    constexpr std::string_view kHexDigits = "0123456789abcdef";
    text_ += '"';
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        const auto byte = static_cast<unsigned char>(text.front());
        if (length == 0) {
            text_ += "\\ufffd";
        } else if (byte == '"' || byte == '\\') {
            text_ += '\\';
            text_ += text.front();
        } else if (byte < 0x20) {
            text_ += "\\u00";
            text_ += kHexDigits[byte >> 4U];
            text_ += kHexDigits[byte & 0xFU];
        } else {
            text_ += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    text_ += '"';
}

}  // namespace camera_sim
