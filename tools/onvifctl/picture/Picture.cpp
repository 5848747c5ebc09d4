#include "picture/Picture.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string>

#include "ExitCode.h"
#include "output/Printable.h"

namespace onvifctl {

namespace {

constexpr std::string_view kJpeg = "\xFF\xD8\xFF";
constexpr std::string_view kStarts[] = {kJpeg, "\x89PNG\r\n\x1A\n", "GIF87a", "GIF89a", "BM"};

/// Whether a JPEG lost its end on the way. Some devices put padding behind the end marker.
bool IsCutOff(std::string_view picture) {
    constexpr std::size_t kMostPadding = 1024;
    const std::string_view end =
        picture.substr(picture.size() - std::min(picture.size(), kMostPadding));
    return picture.starts_with(kJpeg) && end.find("\xFF\xD9") == std::string_view::npos;
}

/// @p start in lower case.
bool StartsWithLetters(std::string_view text, std::string_view start) {
    return text.size() >= start.size() &&
           std::equal(start.begin(), start.end(), text.begin(), [](char lower, char c) {
               return lower == std::tolower(static_cast<unsigned char>(c));
           });
}

std::string Describe(std::string_view bytes) {
    constexpr std::size_t kShown = 60;
    std::string_view text = bytes;
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    const bool page = StartsWithLetters(text, "<!doctype html") || StartsWithLetters(text, "<html");
    const char* kind = page                        ? "an HTML page"
                       : text.starts_with("<?xml") ? "an XML document"
                                                   : "this";
    return kind + (": " + Printable(text.substr(0, kShown))) + (text.size() > kShown ? "..." : "");
}

}  // namespace

void CheckPicture(std::string_view bytes) {
    if (std::none_of(std::begin(kStarts), std::end(kStarts),
                     [bytes](std::string_view start) { return bytes.starts_with(start); })) {
        throw CFailure(ExitCode::kRefused, "the device gave no picture, but " + Describe(bytes));
    }
    if (IsCutOff(bytes)) {
        throw CFailure(ExitCode::kRefused,
                       "the picture ended early, after " + std::to_string(bytes.size()) + " bytes");
    }
}

}  // namespace onvifctl
