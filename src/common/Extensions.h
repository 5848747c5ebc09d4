/// @file
/// Extensions: named behaviours that help with real devices, off unless somebody switches them on.
///
/// What the library does without any is its default, and stays the plain way to read in the code.
/// An extension is asked for in one place, changes no other one, and is described for users in
/// docs/real-cameras.md. The set of a process is read from ONVIF_CLIENT_EXTENSIONS when the library
/// is started; a session, and the alarm side of a device, keep the set that they began with.
/// Values and pure functions; any thread.
#ifndef ONVIF_CLIENT_COMMON_EXTENSIONS_H
#define ONVIF_CLIENT_COMMON_EXTENSIONS_H

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace onvif_client {

enum class Extension : std::uint8_t {
    kHttpFraming,
    kLargeMessages,
    kOpenFaults,
    kKeepClock,
    kHttpDigest,
    kMediaFallback,
    kPerSourceAlarms,
    kStandardRequests,
    kOwnParameters,
    kBackgroundSubscription,
    kKeepAlive,
    kQuickLogin,
    kNoBasic,
};

struct ExtensionRow {
    Extension extension;
    std::string_view name;                          // as it is switched on
    std::string_view sentence;                      // what it changes
    bool inAll = true;                              // whether "all" switches it on
    std::optional<Extension> needs = std::nullopt;  // without which it stays off
};

/// Every extension.
std::span<const ExtensionRow> ExtensionTable();

/// The extensions that are on.
class CExtensions {
 public:
    constexpr CExtensions() = default;
    constexpr CExtensions(std::initializer_list<Extension> on) {
        for (const Extension each : on) {
            Add(each);
        }
    }

    constexpr void Add(Extension extension) { bits_ |= Bit(extension); }
    constexpr void Remove(Extension extension) { bits_ &= ~Bit(extension); }
    constexpr bool Has(Extension extension) const { return (bits_ & Bit(extension)) != 0; }
    constexpr bool operator==(const CExtensions&) const = default;

 private:
    static constexpr std::uint32_t Bit(Extension extension) {
        return std::uint32_t{1} << static_cast<std::uint8_t>(extension);
    }
    std::uint32_t bits_ = 0;
};

/// The extensions of a list of names with commas between them, blanks around them do not count;
/// "all" stands for all that it may.
/// @param unknown  receives the names that no extension has.
/// @param lacking  receives the rows of those that stay off as the one that they need is off.
CExtensions ReadExtensions(std::string_view list, std::vector<std::string>& unknown,
                           std::vector<const ExtensionRow*>& lacking);

/// As it is switched on.
std::string_view ExtensionName(Extension extension);

}  // namespace onvif_client

#endif
