/// @file
/// Requests and replies between the server and the camera.
#ifndef CAMERA_SIM_HTTP_HTTP_H
#define CAMERA_SIM_HTTP_HTTP_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace camera_sim {

struct HttpRequest {
    std::string method;
    std::string target;
    std::string head;           ///< as received, with the empty line
    std::string authorization;  ///< the value of that header field
    bool keepAlive = false;     ///< the connection may stay open after the reply
    std::string body;
};

/// What the server does with a connection.
struct Reply {
    /// kDeferred: there is no reply yet; CCameraCore::Resume has it later.
    /// kSend closes behind the bytes unless the connection is kept, kReset resets, kSilence stays
    /// connected; kClose sends none.
    enum class Ending { kSend, kReset, kSilence, kClose, kDeferred };
    Ending ending = Ending::kSend;
    std::string bytes{};    ///< everything to send, HTTP head included
    unsigned status = 0;    ///< for the records
    bool keepOpen = false;  ///< another request may follow, if all is sent
    std::chrono::milliseconds delay{0};
    std::size_t segment = 0;  ///< bytes sent at once; 0: all
    /// Only what is between these goes out in segments.
    std::size_t segmentsBegin = 0;
    std::size_t segmentsEnd = std::string::npos;
    std::chrono::milliseconds pause{0};
    std::uint64_t ticket = 0;                       ///< of a deferred reply
    std::chrono::steady_clock::time_point until{};  ///< when to ask for it at the latest
};

inline constexpr std::string_view kSoapType = "application/soap+xml; charset=utf-8";
inline constexpr std::string_view kJsonType = "application/json";
inline constexpr std::string_view kTextType = "text/plain; charset=utf-8";

/// A complete message that ends the connection. @p fields are whole header lines.
Reply HttpReply(unsigned status, std::string_view fields, std::string_view contentType,
                std::string_view body);
/// The same with the fields that the status needs.
Reply HttpReply(unsigned status, std::string_view contentType, std::string_view body);
/// The same without a body.
Reply HttpReply(unsigned status);

/// The target without its query.
std::string_view PathOf(std::string_view target);

}  // namespace camera_sim

#endif
