/// @file
/// The XML namespaces of the protocol and the prefixes that answers use for them.
#ifndef CAMERA_SIM_SOAP_NAMESPACES_H
#define CAMERA_SIM_SOAP_NAMESPACES_H

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace camera_sim {

enum class Ns {
    kSoap,
    kSchema,
    kDevice,
    kDeviceIo,
    kMedia,
    kMedia2,
    kPtz,
    kImaging,
    kAnalytics,
    kEvents,
    kError,
    kAddressing,
    kNotification,
    kTopicSet,
    kTopics,
    kResource,
    kXmlSchema,
    kDiscovery,
    kOldAddressing,  ///< of discovery
    kNetwork,        ///< of types of devices
    kCount,
    kNone = kCount  ///< elements without a namespace
};
inline constexpr std::size_t kNamespaceCount = static_cast<std::size_t>(Ns::kCount);

struct Namespace {
    std::string_view uri;
    std::string_view usualPrefix;
};
const Namespace& NamespaceOf(Ns ns);
std::optional<Ns> FindNamespace(std::string_view uri);
std::optional<Ns> FindUsualPrefix(std::string_view prefix);

/// One way of naming namespaces. An empty prefix makes it the default namespace of the elements
/// that are in it.
struct PrefixStyle {
    std::string_view name;
    std::array<std::string_view, kNamespaceCount> prefixes;

    std::string_view Prefix(Ns ns) const {
        return ns == Ns::kNone ? std::string_view() : prefixes[static_cast<std::size_t>(ns)];
    }
};
/// Null when there is none of that name.
const PrefixStyle* FindPrefixStyle(std::string_view name);

}  // namespace camera_sim

#endif
