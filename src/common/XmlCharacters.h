/// @file
/// The characters that XML 1.0 has. Pure functions; any thread.
#ifndef ONVIF_CLIENT_COMMON_XMLCHARACTERS_H
#define ONVIF_CLIENT_COMMON_XMLCHARACTERS_H

#include <cstdint>
#include <string>
#include <string_view>

namespace onvif_client {

/// U+FFFD in UTF-8: stands for what is no character.
inline constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

/// False for most control characters, surrogates, U+FFFE, U+FFFF and what is above U+10FFFF.
constexpr bool IsXmlCharacter(std::uint32_t code) {
    return code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code < 0xD800) ||
           (code >= 0xE000 && code < 0xFFFE) || (code >= 0x10000 && code <= 0x10FFFF);
}

bool HasOnlyXmlCharacters(std::string_view text);

/// Parsers refuse the whole document for one character that XML does not have, or for bytes that
/// are no UTF-8, and devices send both. Each such character, and each sequence of such bytes from
/// its first byte to its last continuation, becomes U+FFFD; the rest stays byte for byte.
void ReplaceForbiddenCharacters(std::string& text);

}  // namespace onvif_client

#endif
