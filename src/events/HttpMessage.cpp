#include "events/HttpMessage.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace onvif_client {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kHeaderEnd = "\r\n\r\n";

char ToLower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool EqualWithoutCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return ToLower(a) == ToLower(b); });
}

/// The value of the first header line of that name, if there is one.
std::optional<std::string_view> HeaderValue(std::string_view header, std::string_view name) {
    std::size_t lineEnd = header.find(kLineEnd);  // of the request line
    while (lineEnd != std::string_view::npos) {
        header.remove_prefix(lineEnd + kLineEnd.size());
        lineEnd = header.find(kLineEnd);
        const std::string_view line = header.substr(0, lineEnd);
        const std::size_t colon = line.find(':');
        if (colon != std::string_view::npos && EqualWithoutCase(line.substr(0, colon), name)) {
            return line.substr(colon + 1);
        }
    }
    return std::nullopt;
}

/// A decimal number with blanks around it, and nothing else.
std::optional<std::size_t> ParseLength(std::string_view text) {
    constexpr std::string_view kBlanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
    std::size_t length = 0;
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, length);
    return error == std::errc() && parsed == end ? std::optional(length) : std::nullopt;
}

}  // namespace

MessageState CutMessage(std::string_view buffer, MessageFrame& frame) {
    if (frame.headerSize == 0) {
        const std::size_t end = buffer.find(kHeaderEnd, frame.searched);
        if (end == std::string_view::npos) {
            frame.searched = std::max(buffer.size(), kHeaderEnd.size()) - kHeaderEnd.size();
            return buffer.size() < kLargestMessage ? MessageState::kIncomplete
                                                   : MessageState::kImpossible;
        }
        const std::size_t headerSize = end + kHeaderEnd.size();
        const auto announced = HeaderValue(buffer.substr(0, headerSize), "Content-Length");
        const auto bodySize = announced ? ParseLength(*announced) : 0;
        if (!bodySize || headerSize > kLargestMessage || *bodySize > kLargestMessage - headerSize) {
            return MessageState::kImpossible;
        }
        frame.headerSize = headerSize;
        frame.bodySize = *bodySize;
        frame.announced = announced.has_value();
    }
    return buffer.size() - frame.headerSize >= frame.bodySize ? MessageState::kComplete
                                                              : MessageState::kIncomplete;
}

std::string_view RequestPath(std::string_view header) {
    const std::size_t slash = header.find('/');
    const std::size_t end =
        slash == std::string_view::npos ? slash : header.find(" HTTP", slash + 1);
    return end == std::string_view::npos ? std::string_view()
                                         : header.substr(slash + 1, end - slash - 1);
}

}  // namespace onvif_client
