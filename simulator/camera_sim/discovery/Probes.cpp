#include "camera_sim/discovery/Probes.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <vector>

#include "camera_sim/services/Services.h"
#include "camera_sim/soap/XmlWriter.h"
#include "camera_sim/system/Crypto.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr std::string_view kEveryone = "urn:schemas-xmlsoap-org:ws:2005:04:discovery";

std::string InDiscovery(std::string_view name) {
    return std::string(NamespaceOf(Ns::kDiscovery).uri) + "/" + std::string(name);
}

std::string Anonymous() {
    return std::string(NamespaceOf(Ns::kOldAddressing).uri) + "/role/anonymous";
}

std::vector<std::string> Words(std::string_view text) {
    std::istringstream stream{std::string(text)};
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

struct Type {
    Ns ns;
    std::string_view name;
};
constexpr std::array kTypes = {Type{Ns::kNetwork, "NetworkVideoTransmitter"},
                               Type{Ns::kDevice, "Device"}};

bool HasType(const XmlElement& types, std::string_view word) {
    return std::any_of(kTypes.begin(), kTypes.end(), [&](const Type& type) {
        return word.substr(word.find(':') + 1) == type.name &&
               NamespaceUri(types, word) == NamespaceOf(type.ns).uri;
    });
}

/// A URI, scheme and authority in small letters, and the segments of its path.
std::vector<std::string> Segments(const std::string& uri) {
    const std::size_t authority = uri.find("://");
    const std::size_t path =
        std::min(uri.find('/', authority == std::string::npos ? 0 : authority + 3), uri.size());
    std::string start = uri.substr(0, path);
    std::transform(start.begin(), start.end(), start.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    std::vector<std::string> segments = {start};
    std::istringstream rest(uri.substr(std::min(path + 1, uri.size())));
    for (std::string segment; std::getline(rest, segment, '/');) {
        segments.push_back(segment);
    }
    return segments;
}

bool IsRelative(const std::string& segment) {
    return segment == "." || segment == "..";
}

/// Whether a scope that is asked for is one of the camera's, or stands above it.
bool IsPrefix(const std::string& asked, const std::string& own) {
    const auto shorter = Segments(asked);
    const auto longer = Segments(own);
    return shorter.size() <= longer.size() &&
           std::equal(shorter.begin(), shorter.end(), longer.begin()) &&
           std::none_of(longer.begin(), longer.end(), IsRelative);
}

bool IsSame(const std::string& asked, const std::string& own) {
    return asked == own;
}

using ScopeRule = bool (*)(const std::string& asked, const std::string& own);

/// Null for a rule that the camera does not know.
ScopeRule RuleOf(const XmlElement& scopes) {
    const char* named = scopes.Attribute("MatchBy");
    if (named == nullptr || named == InDiscovery("rfc3986")) {
        return IsPrefix;
    }
    return named == InDiscovery("strcmp0") ? IsSame : nullptr;
}

bool HasScopes(const XmlElement& asked, const std::vector<DeviceScope>& own) {
    const ScopeRule rule = RuleOf(asked);
    const auto words = Words(Text(&asked));
    return rule != nullptr && std::all_of(words.begin(), words.end(), [&](const auto& word) {
               return std::any_of(own.begin(), own.end(),
                                  [&](const auto& scope) { return rule(word, scope.item); });
           });
}

void WriteTypes(CXmlWriter& out, const PrefixStyle& style) {
    const Scope types(out, Ns::kDiscovery, "Types");
    std::string names;
    for (const Type& type : kTypes) {
        names += names.empty() ? "" : " ";
        if (!style.Prefix(type.ns).empty()) {
            names += out.QualifiedName(type.ns, type.name);
            continue;
        }
        // A name in a text would be in the default namespace, which is another one there.
        const Namespace& space = NamespaceOf(type.ns);
        out.Attribute("xmlns:" + std::string(space.usualPrefix), space.uri);
        names.append(space.usualPrefix).append(":").append(type.name);
    }
    out.Text(names);
}

/// Of at least 16 bytes, as RFC 4122 writes it.
std::string Uuid(std::string bytes, unsigned version) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    bytes.resize(16);
    bytes[6] = static_cast<char>((bytes[6] & 0x0F) | static_cast<int>(version << 4U));
    bytes[8] = static_cast<char>((bytes[8] & 0x3F) | 0x80);
    std::string text = "urn:uuid:";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        text += i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "";
        text.append({kDigits[byte / 16U], kDigits[byte % 16U]});
    }
    return text;
}

}  // namespace

std::string EndpointOf(const CameraOptions& options) {
    constexpr unsigned kByHash = 5;
    return Uuid(
        HashOf(Hash::kSha1, "onvif-camera-sim " + options.model + std::to_string(options.port)),
        kByHash);
}

CProbe::CProbe(std::string_view datagram) : soap_(datagram) {
    const XmlElement* element = soap_.Operation();
    if (element == nullptr || NamespaceUri(*element) != NamespaceOf(Ns::kDiscovery).uri) {
        return;
    }
    const XmlElement* header = soap_.Header();
    const std::string_view name = LocalName(*element);
    const std::string_view replyTo = ChildText(Child(header, "ReplyTo"), "Address");
    isResolve_ = name == "Resolve";
    isValid_ = (isResolve_ || name == "Probe") &&
               ChildText(header, "Action") == InDiscovery(name) &&
               ChildText(header, "To") == kEveryone && !ChildText(header, "MessageID").empty() &&
               (replyTo.empty() || replyTo == Anonymous());
}

bool CProbe::Means(const CameraOptions& options, const CameraState& state) const {
    const XmlElement* element = soap_.Operation();
    if (isResolve_) {
        return ChildText(Child(element, "EndpointReference"), "Address") == EndpointOf(options);
    }
    const XmlElement* types = Child(element, "Types");
    const auto wanted = Words(Text(types));
    const XmlElement* scopes = Child(element, "Scopes");
    return std::all_of(wanted.begin(), wanted.end(),
                       [types](const auto& word) { return HasType(*types, word); }) &&
           (scopes == nullptr || HasScopes(*scopes, DeviceScopes(options, state)));
}

std::optional<std::string> CProbe::Answer(const CameraOptions& options, const CameraState& state,
                                          const PrefixStyle& style, AppSequence sequence) const {
    if (!isValid_ || !options.discoverable || !Means(options, state)) {
        return std::nullopt;
    }
    const std::string match = isResolve_ ? "ResolveMatch" : "ProbeMatch";
    CXmlWriter out(style, options.prettyXml);
    constexpr unsigned kRandom = 4;
    out.Element(Ns::kOldAddressing, "MessageID", Uuid(RandomBytes(16), kRandom));
    out.Element(Ns::kOldAddressing, "RelatesTo", ChildText(soap_.Header(), "MessageID"));
    out.Element(Ns::kOldAddressing, "To", Anonymous());
    out.Element(Ns::kOldAddressing, "Action", InDiscovery(match + "es"));
    {
        const Scope position(out, Ns::kDiscovery, "AppSequence");
        out.Attribute("InstanceId", std::to_string(sequence.instance));
        out.Attribute("MessageNumber", std::to_string(sequence.number));
    }
    out.EndHeader();
    std::string scopes;
    for (const DeviceScope& scope : DeviceScopes(options, state)) {
        scopes += (scopes.empty() ? "" : " ") + scope.item;
    }
    {
        const Scope matches(out, Ns::kDiscovery, match + "es");
        const Scope one(out, Ns::kDiscovery, match);
        {
            const Scope reference(out, Ns::kOldAddressing, "EndpointReference");
            out.Element(Ns::kOldAddressing, "Address", EndpointOf(options));
        }
        WriteTypes(out, style);
        out.Element(Ns::kDiscovery, "Scopes", scopes);
        out.Element(Ns::kDiscovery, "XAddrs",
                    AdvertisedAddress(options, *FindService(Ns::kDevice)));
        out.Element(Ns::kDiscovery, "MetadataVersion", 1);
    }
    return out.Envelope(options.xmlProlog);
}

}  // namespace camera_sim
