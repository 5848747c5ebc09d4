/// @file
/// The head of an HTTP message: its first line and its fields (RFC 9112). Pure functions; any
/// thread.
#ifndef ONVIF_CLIENT_COMMON_HTTPHEAD_H
#define ONVIF_CLIENT_COMMON_HTTPHEAD_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace onvif_client {

inline constexpr std::string_view kHeadLineEnd = "\r\n";
inline constexpr std::string_view kHeadEnd = "\r\n\r\n";
inline constexpr std::string_view kHeadBlanks = " \t";

/// Bytes of a reply's head; a longer one is not read as such.
inline constexpr std::size_t kLongestHead = 65536;

/// Where the head at the front of a growing buffer ends.
/// @param searched  0 at first; what the last call left, when the buffer has only grown since.
/// @return its size with the empty line behind it; 0: the end is not there yet.
std::size_t HeadSize(std::string_view buffer, std::size_t& searched);

/// Takes the text up to @p separator, and the separator, off the front.
std::string_view TakeUntil(std::string_view& text, std::string_view separator);

/// Without the blanks around it.
std::string_view Trim(std::string_view text);

/// "401" of "HTTP/1.1 401 Unauthorized": devices choose the words behind it.
std::string_view StatusCode(std::string_view statusLine);

/// The path of a request without its leading slash: what stands between the head's first "/" and
/// the " HTTP" behind it. Empty when there is no such text.
std::string_view RequestPath(std::string_view head);

/// A field's line taken apart at its first colon, blanks included.
struct HeadField {
    std::string_view name;
    std::string_view value;
};

/// Nothing for a line without a colon.
std::optional<HeadField> SplitField(std::string_view line);

/// The value of the first field of that name, which has no blanks around it; nothing without one.
/// Letters compare without case.
std::optional<std::string_view> FieldValue(std::string_view head, std::string_view name);

/// A line that goes on with the field before it (obsolete line folding).
bool IsFolded(std::string_view line);

// Numbers as the two kinds of reader need them: whoever frames a message by a number must not guess
// it, whoever only limits a buffer takes what there is.

/// A decimal number with blanks around it, and nothing else.
std::optional<std::size_t> StrictNumber(std::string_view text);

/// The decimal number that the text starts with; 0 without one, the largest number for one that is
/// too large.
std::uint64_t LenientNumber(std::string_view text);

}  // namespace onvif_client

#endif
