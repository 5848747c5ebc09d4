#include "contact/Address.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "ExitCode.h"
#include "system/HostName.h"

namespace onvifctl {

namespace {

CFailure BadAddress(std::string_view host, const std::string& why) {
    return {ExitCode::kUsage, "'" + std::string(host) + "' " + why};
}

bool IsHexadecimal(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// Whether the text is an IPv6 address, with or without a zone: enough of its form to tell it from
/// a slip in HOST:PORT.
bool IsIpv6(std::string_view text) {
    text = text.substr(0, text.find('%'));
    std::size_t digits = 0;
    std::size_t colons = 0;
    for (const char c : text) {
        digits = c == ':' ? 0 : digits + 1;
        colons += c == ':' ? 1 : 0;
        if ((c != ':' && c != '.' && !IsHexadecimal(c)) || colons > 7) {
            return false;
        }
        if (digits > 4 && text.find('.') == std::string_view::npos) {
            return false;
        }
    }
    const std::size_t all = text.find('.') == std::string_view::npos ? 7 : 6;
    return colons == all || text.find("::") != std::string_view::npos;
}

/// In "[ADDRESS]" or "[ADDRESS]:PORT" what stands in brackets, else the text itself.
std::string_view WithoutBrackets(std::string_view text) {
    return text.starts_with('[') ? text.substr(1, text.find(']') - 1) : text;
}

/// HOST[:PORT] of a text that may begin with http://.
std::string_view WithoutScheme(std::string_view host) {
    const std::size_t colon = host.find("://");
    if (colon == std::string_view::npos) {
        return host;
    }
    std::string scheme(host.substr(0, colon));
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    if (scheme == "https") {
        throw BadAddress(host,
                         "asks for HTTPS, and the library speaks plain HTTP only: allow HTTP in "
                         "the device, and name it as HOST or HOST:PORT");
    }
    if (scheme != "http") {
        throw BadAddress(host, "is not HOST, HOST:PORT or http://HOST:PORT");
    }
    const std::string_view rest = host.substr(colon + 3);
    return rest.substr(0, rest.find_first_of("/?#"));
}

bool CanBeInAName(char c) {
    constexpr std::string_view kElsewhere = "/\\?#[]%<>\"'";
    return static_cast<unsigned char>(c) > ' ' && c != '\x7F' &&
           kElsewhere.find(c) == std::string_view::npos;
}

}  // namespace

Address ParseAddress(const std::string& host) {
    if (host.find('@') != std::string::npos) {
        // What stands before it may be a password, which is for nobody's screen.
        throw CFailure(ExitCode::kUsage,
                       "an address holds no '@': name the device as HOST or HOST:PORT, the user by "
                       "-u and the password by -p");
    }
    const std::string_view place = WithoutScheme(host);
    if (IsIpv6(WithoutBrackets(place))) {
        throw BadAddress(host,
                         "is an IPv6 address, and the library speaks IPv4 only: name the device by "
                         "its IPv4 address");
    }
    const std::size_t colon = std::min(place.rfind(':'), place.size());
    Address address{std::string(place.substr(0, colon))};
    bool fits = !address.name.empty() && std::all_of(address.name.begin(), address.name.end(),
                                                     [](char c) { return CanBeInAName(c); });
    if (fits && colon < place.size()) {
        const char* end = place.data() + place.size();
        const auto [stop, error] = std::from_chars(place.data() + colon + 1, end, address.port);
        fits = error == std::errc() && stop == end && address.port != 0 &&
               address.name.find(':') == std::string::npos;
    }
    if (!fits) {
        throw BadAddress(host, "is not HOST or HOST:PORT");
    }
    return address;
}

std::string FullAddress(const std::string& host) {
    const Address address = ParseAddress(host);
    return address.name + ":" + std::to_string(address.port);
}

std::string Resolve(const std::string& name) {
    const auto address = DottedAddressOf(name);
    if (!address) {
        throw CFailure(ExitCode::kUnreachable,
                       "no IPv4 address is known for '" + name +
                           "': check its spelling and the name server, or take the address itself "
                           "(the library speaks no IPv6)");
    }
    return *address;
}

}  // namespace onvifctl
