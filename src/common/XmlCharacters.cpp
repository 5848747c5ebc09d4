#include "common/XmlCharacters.h"

#include <algorithm>
#include <iterator>

namespace onvif_client {

namespace {

/// What begins with a byte of one kind.
struct LeadByte {
    std::uint8_t last;  // the greatest byte of the kind
    std::uint8_t bits;  // those that belong to the code
    std::size_t length;
    std::uint32_t leastCode;  // a smaller one is overlong
};

// The first row whose last byte is not smaller decides. What leads nothing has no code.
constexpr LeadByte kLeadBytes[] = {{0x7F, 0x7F, 1, 0},    {0xBF, 0, 1, 1},
                                   {0xDF, 0x1F, 2, 0x80}, {0xEF, 0x0F, 3, 0x800},
                                   {0xF7, 7, 4, 0x10000}, {0xFF, 0, 1, 1}};

struct Sequence {
    std::size_t length;
    bool isCharacter;
};

Sequence FirstSequence(std::string_view text) {
    const auto byte = [text](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
    const LeadByte& lead =
        *std::find_if(std::begin(kLeadBytes), std::end(kLeadBytes),
                      [&byte](const LeadByte& each) { return byte(0) <= each.last; });
    std::uint32_t code = byte(0) & lead.bits;
    std::size_t length = 1;
    for (; length < std::min(lead.length, text.size()) && (byte(length) & 0xC0) == 0x80; ++length) {
        code = code << 6 | (byte(length) & 0x3F);
    }
    return {length, length == lead.length && code >= lead.leastCode && IsXmlCharacter(code)};
}

/// What a compiler tests with a few instructions.
constexpr std::size_t kBlock = 32;

/// True for a block of nothing but characters of ASCII that XML has, as nearly all are.
bool StartsWithPlainBlock(std::string_view text) {
    if (text.size() < kBlock) {
        return false;
    }
    // Without a branch and in bytes, so that many are compared at once. What is not ASCII is
    // negative.
    std::uint8_t others = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
        const auto c = static_cast<std::int8_t>(text[i]);
        others |= static_cast<std::uint8_t>(c < ' ') & static_cast<std::uint8_t>(c != '\n');
    }
    return others == 0;
}

/// The position of the first sequence from @p at on that is no character, or the end.
std::size_t FindForbidden(std::string_view text, std::size_t at) {
    while (at < text.size()) {
        if (StartsWithPlainBlock(text.substr(at))) {
            at += kBlock;
            continue;
        }
        const Sequence sequence = FirstSequence(text.substr(at));
        if (!sequence.isCharacter) {
            break;
        }
        at += sequence.length;
    }
    return at;
}

}  // namespace

bool HasOnlyXmlCharacters(std::string_view text) {
    return FindForbidden(text, 0) == text.size();
}

void ReplaceForbiddenCharacters(std::string& text) {
    std::size_t at = FindForbidden(text, 0);
    if (at == text.size()) {
        return;
    }
    std::string replaced;
    std::size_t from = 0;
    for (; at < text.size(); at = FindForbidden(text, from)) {
        replaced.append(text, from, at - from).append(kReplacementCharacter);
        from = at + FirstSequence(std::string_view(text).substr(at)).length;
    }
    text = replaced.append(text, from);
}

}  // namespace onvif_client
