#include "camera_sim/http/Framing.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace camera_sim {
namespace {

constexpr std::string_view kHeadEnd = "\r\n\r\n";
constexpr std::string_view kLength = "Content-Length: ";
constexpr std::string_view kEnvelopeEnd = "Envelope>";

std::string Chunked(std::string_view body, std::size_t size) {
    std::string chunks;
    while (!body.empty()) {
        const std::string_view chunk = body.substr(0, size);
        body.remove_prefix(chunk.size());
        char digits[2 * sizeof(std::size_t)];
        const auto end = std::to_chars(std::begin(digits), std::end(digits), chunk.size(), 16).ptr;
        chunks.append(std::begin(digits), end).append("\r\n").append(chunk).append("\r\n");
    }
    return chunks + "0\r\n\r\n";
}

/// "Date: Sun, 22 Nov 2026 06:20:39 GMT" as a line.
std::string DateLine(std::chrono::sys_seconds time) {
    constexpr std::array kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    std::array<char, 64> line{};
    std::snprintf(line.data(), line.size(), "Date: %s, %02u %s %d %02d:%02d:%02d GMT\r\n",
                  kDays[std::chrono::weekday(day).c_encoding()], static_cast<unsigned>(date.day()),
                  kMonths[static_cast<unsigned>(date.month()) - 1], static_cast<int>(date.year()),
                  static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return line.data();
}

}  // namespace

void Frame(Reply& reply, const CameraOptions& options, bool clientKeeps,
           std::chrono::sys_seconds now) {
    const auto headEnd = reply.bytes.find(kHeadEnd);
    const auto length = reply.bytes.rfind(kLength, headEnd);
    if (reply.status == 0 || headEnd == std::string::npos || length == std::string::npos) {
        return;
    }
    std::string body = reply.bytes.substr(headEnd + kHeadEnd.size());
    const bool bare = body.empty();
    if (options.looseEnvelopeEnd && body.ends_with(kEnvelopeEnd)) {
        body.insert(body.size() - 1, " ");
    }
    const bool chunked = options.chunkBytes > 0 && !bare;
    const bool noLength = options.noLength || (options.noBareLength && bare);
    // Only its end says where a body without a length ends.
    reply.keepOpen = (bare || chunked || !noLength) &&
                     (options.keepAlive == KeepAlive::kAlways ||
                      (options.keepAlive == KeepAlive::kPolite && clientKeeps));

    std::string& out = reply.bytes;
    out.resize(length);
    if (options.httpDate) {
        out += DateLine(now);
    }
    if (chunked) {
        out += "Transfer-Encoding: chunked\r\n";
    } else if (!noLength) {
        out.append(kLength).append(std::to_string(body.size())).append("\r\n");
    }
    out.append("Connection: ").append(reply.keepOpen ? "keep-alive" : "close").append(kHeadEnd);
    out += chunked ? Chunked(body, options.chunkBytes) : body;
    if (options.interimReply) {
        out.insert(0, "HTTP/1.1 100 Continue\r\n\r\n");
    }
}

}  // namespace camera_sim
