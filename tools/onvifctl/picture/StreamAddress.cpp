#include "picture/StreamAddress.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string_view>

#include "ExitCode.h"
#include "system/Program.h"

namespace onvifctl {

namespace {

constexpr std::array kPlayers = {"ffplay", "mpv", "vlc"};
constexpr std::array kSchemes = {"rtsp://", "rtsps://", "http://", "https://"};

std::string PercentEncoded(const std::string& text) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 || std::string_view("-._~").find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            encoded.append({'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]});
        }
    }
    return encoded;
}

}  // namespace

std::string WithCredentials(const std::string& address, const std::string& user,
                            const std::string& password) {
    const std::size_t scheme = address.find("://");
    if (scheme == std::string::npos || user.empty()) {
        return address;
    }
    const std::size_t host = scheme + 3;
    const std::size_t end = std::min(address.find_first_of("/?#", host), address.size());
    const std::size_t at = address.substr(host, end - host).rfind('@');
    return address.substr(0, host) + PercentEncoded(user) + ":" + PercentEncoded(password) + "@" +
           address.substr(at == std::string::npos ? host : host + at + 1);
}

std::string FindPlayer() {
    for (const char* name : kPlayers) {
        if (const auto program = FindProgram(name)) {
            return *program;
        }
    }
    throw CFailure(ExitCode::kUsage, "there is no ffplay, mpv or vlc to play it");
}

int Play(const std::string& player, const std::string& address) {
    if (std::none_of(kSchemes.begin(), kSchemes.end(),
                     [&address](const char* scheme) { return address.starts_with(scheme); })) {
        throw CFailure(ExitCode::kRefused, "the device gave no address that can be played");
    }
    const std::optional<int> code = ContinueAs(player, {address});
    if (!code) {
        throw CFailure(ExitCode::kUsage, "cannot start '" + player + "'");
    }
    return *code;
}

}  // namespace onvifctl
