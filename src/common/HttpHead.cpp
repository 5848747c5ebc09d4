#include "common/HttpHead.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "common/AsciiText.h"

namespace onvif_client {

std::size_t HeadSize(std::string_view buffer, std::size_t& searched) {
    const std::size_t end = buffer.find(kHeadEnd, searched);
    if (end == std::string_view::npos) {
        searched = std::max(buffer.size(), kHeadEnd.size()) - kHeadEnd.size();
        return 0;
    }
    return end + kHeadEnd.size();
}

std::string_view TakeUntil(std::string_view& text, std::string_view separator) {
    const std::size_t end = text.find(separator);
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + separator.size());
    return taken;
}

std::string_view Trim(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kHeadBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kHeadBlanks) + 1);
}

std::string_view StatusCode(std::string_view statusLine) {
    TakeUntil(statusLine, " ");
    return TakeUntil(statusLine, " ");
}

std::string_view RequestPath(std::string_view head) {
    const std::size_t slash = head.find('/');
    const std::size_t end = slash == std::string_view::npos ? slash : head.find(" HTTP", slash + 1);
    return end == std::string_view::npos ? std::string_view()
                                         : head.substr(slash + 1, end - slash - 1);
}

std::optional<HeadField> SplitField(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    return HeadField{line.substr(0, colon), line.substr(colon + 1)};
}

std::optional<std::string_view> FieldValue(std::string_view head, std::string_view name) {
    TakeUntil(head, kHeadLineEnd);  // the first line is no field
    while (!head.empty()) {
        const auto field = SplitField(TakeUntil(head, kHeadLineEnd));
        if (field && SameLetters(field->name, name)) {
            return field->value;
        }
    }
    return std::nullopt;
}

bool IsFolded(std::string_view line) {
    return line.find_first_of(kHeadBlanks) == 0;
}

std::optional<std::size_t> StrictNumber(std::string_view text) {
    text = Trim(text);
    std::size_t number = 0;
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && parsed == end ? std::optional(number) : std::nullopt;
}

std::uint64_t LenientNumber(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max()
                                                   : number;
}

}  // namespace onvif_client
