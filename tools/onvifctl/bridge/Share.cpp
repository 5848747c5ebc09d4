#include "bridge/Share.h"

#include <charconv>
#include <cstdint>

#include "ExitCode.h"

namespace onvifctl {

namespace {

/// FNV-1a of the text, whose bits a finalizer spreads: the last byte alone must move all of them.
std::uint64_t HashOf(const std::string& text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
    hash = (hash ^ hash >> 33U) * 0xFF51AFD7ED558CCDU;
    hash = (hash ^ hash >> 33U) * 0xC4CEB9FE1A85EC53U;
    return hash ^ hash >> 33U;
}

}  // namespace

Share ParseShare(const std::string& text) {
    constexpr unsigned int kMost = 10000;
    Share share;
    const char* const end = text.data() + text.size();
    const auto number = std::from_chars(text.data(), end, share.number);
    if (number.ec == std::errc() && number.ptr != end && *number.ptr == '/') {
        const auto count = std::from_chars(number.ptr + 1, end, share.count);
        if (count.ec == std::errc() && count.ptr == end && share.number >= 1 &&
            share.number <= share.count && share.count <= kMost) {
            return share;
        }
    }
    throw CFailure(ExitCode::kUsage,
                   "'" + text + "' is not I/N: the I-th of N shares, from 1 to N");
}

unsigned int OwnerOf(const std::string& camera, unsigned int count) {
    unsigned int owner = 1;
    std::uint64_t largest = 0;
    for (unsigned int number = 1; number <= count; ++number) {
        const std::uint64_t hash = HashOf(camera + '/' + std::to_string(number));
        if (hash > largest) {
            largest = hash;
            owner = number;
        }
    }
    return owner;
}

}  // namespace onvifctl
