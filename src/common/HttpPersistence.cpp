#include "common/HttpPersistence.h"

#include <algorithm>
#include <optional>

#include "common/AsciiText.h"
#include "common/HttpHead.h"

namespace onvif_client {

namespace {

/// What the fields of a head say that matter here.
struct Persistence {
    bool close = false;
    bool keepAlive = false;
    int lengths = 0;
    bool codings = false;
    std::optional<std::size_t> seconds;
};

void ReadConnection(std::string_view options, Persistence& read) {
    while (!options.empty()) {
        const std::string_view option = Trim(TakeUntil(options, ","));
        read.close = read.close || SameLetters(option, "close");
        read.keepAlive = read.keepAlive || SameLetters(option, "keep-alive");
    }
}

void ReadKeepAlive(std::string_view parameters, Persistence& read) {
    while (!parameters.empty()) {
        std::string_view value = TakeUntil(parameters, ",");
        const std::string_view name = Trim(TakeUntil(value, "="));
        if (SameLetters(name, "timeout")) {
            read.seconds = StrictNumber(value).value_or(0);
        } else if (SameLetters(name, "max") && StrictNumber(value) == 0U) {
            read.close = true;
        }
    }
}

void ReadField(const HeadField& field, Persistence& read) {
    if (SameLetters(field.name, "Connection")) {
        ReadConnection(field.value, read);
    } else if (SameLetters(field.name, "Keep-Alive")) {
        ReadKeepAlive(field.value, read);
    } else if (SameLetters(field.name, "Content-Length")) {
        ++read.lengths;
    } else if (SameLetters(field.name, "Transfer-Encoding")) {
        read.codings = true;
    }
}

}  // namespace

std::uint32_t PersistsForMs(std::string_view reply, std::uint32_t longest) {
    constexpr std::size_t kMillisecondsInASecond = 1000;
    constexpr std::uint32_t kOnTheWayMs = 500;  // the device counts from before we have its reply
    std::string_view head = TakeUntil(reply, kHeadEnd);
    const std::string_view statusLine = TakeUntil(head, kHeadLineEnd);
    Persistence read;
    while (!head.empty()) {
        if (const auto field = SplitField(TakeUntil(head, kHeadLineEnd))) {
            ReadField(*field, read);
        }
    }
    const bool persists = statusLine.starts_with("HTTP/1.1 ") ||
                          (statusLine.starts_with("HTTP/1.0 ") && read.keepAlive && !read.codings);
    if (!persists || read.close || read.lengths > 1 || (read.lengths == 1 && read.codings)) {
        return 0;
    }
    if (!read.seconds || *read.seconds > longest / kMillisecondsInASecond) {
        return longest;
    }
    const auto stated = static_cast<std::uint32_t>(*read.seconds * kMillisecondsInASecond);
    return std::max(stated, kOnTheWayMs) - kOnTheWayMs;
}

}  // namespace onvif_client
