#include "events/HttpMessage.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "common/HeaderText.h"

namespace onvif_client {

namespace {

constexpr std::string_view kHeaderEnd = "\r\n\r\n";

/// The value of the first header line of that name, if there is one.
std::optional<std::string_view> HeaderValue(std::string_view header, std::string_view name) {
    std::size_t lineEnd = header.find(kHeaderLineEnd);  // of the request line
    while (lineEnd != std::string_view::npos) {
        header.remove_prefix(lineEnd + kHeaderLineEnd.size());
        lineEnd = header.find(kHeaderLineEnd);
        const std::string_view line = header.substr(0, lineEnd);
        const std::size_t colon = line.find(':');
        if (colon != std::string_view::npos && SameLetters(line.substr(0, colon), name)) {
            return line.substr(colon + 1);
        }
    }
    return std::nullopt;
}

/// A decimal number with blanks around it, and nothing else.
std::optional<std::size_t> ParseLength(std::string_view text) {
    text = Trim(text);
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
