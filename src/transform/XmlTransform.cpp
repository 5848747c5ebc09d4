#include "transform/XmlTransform.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>

#include "common/AsciiText.h"

namespace onvif_client {

namespace {

struct NamespaceEnding {
    std::string_view ending;  // lower case
    std::string_view canonical;
};

// The first ending that a lower-cased namespace URI matches decides. "/topics" stands before
// "/event/topics" on purpose: event topics are always "tp", and "et" keeps its own mapping.
constexpr NamespaceEnding kNamespaceEndings[] = {
    {"/soap-envelope", "s"},
    {"/device/wsdl", "tds"},
    {"www.onvif.org/ver10/schema", "tt"},
    {"/discovery", "dis"},
    {"www.w3.org/2005/08/addressing", "ad"},
    {"schemas.xmlsoap.org/ws/2004/08/addressing", "addis"},
    {"/network/wsdl", "nt"},
    {"/wsdl/http", "http"},
    {"/analytics/wsdl", "ana"},
    {"/events/wsdl", "ew"},
    {"/imaging/wsdl", "img"},
    {"/deviceio/wsdl", "dio"},
    {"/topics", "tp"},
    {"/event/topics", "et"},
    {"/ver20/ptz/wsdl", "ptzw"},
    {"/ver10/media/wsdl", "mdw"},
    {"/ver20/media/wsdl", "trt2"},
    {"/storage/wsdl", "sto"},
    {"/addressing/wsdl", "adw"},
    {"http://schemas.xmlsoap.org/wsdl", "wsdl"},
    {"/wsn/b-2", "wsnt"},
    {"/oasis-200401-wss-wssecurity-secext-1.0.xsd", "wsse"},
    {"/oasis-200401-wss-wssecurity-utility-1.0.xsd", "wsu"},
    {"www.onvif.org/ver10/error", "ter"},
};

constexpr std::array<std::string_view, CXmlTransform::kPrefixCount> kCanonicalPrefixes = {
    "ad",   "addis", "adw", "ana", "dio", "dis", "et",   "ew", "http", "img",  "mdw",  "nt",
    "ptzw", "s",     "sto", "tds", "ter", "tp",  "trt2", "tt", "wsdl", "wsnt", "wsse", "wsu"};

static_assert(std::is_sorted(kCanonicalPrefixes.begin(), kCanonicalPrefixes.end()));
static_assert(std::size(kNamespaceEndings) == CXmlTransform::kPrefixCount);

bool EqualsLower(char c, char lower) {
    return LowerCase(c) == lower;
}

/// The prefix that an attribute declares: what follows "xmlns" (in any case) in its name.
std::optional<std::string_view> DeclaredPrefix(std::string_view attribute) {
    constexpr std::string_view kXmlns = "xmlns";
    const auto found =
        std::search(attribute.begin(), attribute.end(), kXmlns.begin(), kXmlns.end(), EqualsLower);
    if (found == attribute.end()) {
        return std::nullopt;
    }
    std::string_view prefix(found + kXmlns.size(), attribute.end());
    if (prefix.find(':') != std::string_view::npos) {
        prefix.remove_prefix(1);
    }
    return prefix;
}

/// The canonical prefix of a namespace URI; empty when the URI is none that we know.
std::string_view CanonicalPrefix(std::string_view uri) {
    const auto* row = std::find_if(
        std::begin(kNamespaceEndings), std::end(kNamespaceEndings),
        [uri](const NamespaceEnding& each) {
            const std::string_view ending = each.ending;
            return uri.size() >= ending.size() &&
                   std::equal(uri.rbegin(),
                              uri.rbegin() + static_cast<std::ptrdiff_t>(ending.size()),
                              ending.rbegin(), EqualsLower);
        });
    return row == std::end(kNamespaceEndings) ? std::string_view() : row->canonical;
}

/// Replaces the prefix of every step (what stands before its first colon) by @p translate (prefix);
/// a prefix for which that gives nothing stays.
template <typename Translate>
void TranslatePrefixes(std::string& path, const Translate& translate) {
    std::string translated;
    translated.reserve(path.size() + 16);
    std::string_view rest = path;
    for (;;) {
        const std::size_t slash = rest.find('/');
        const std::string_view step = rest.substr(0, slash);
        const std::size_t colon = step.find(':');
        const std::string_view prefix = step.substr(0, colon == std::string_view::npos ? 0 : colon);
        translated += translate(prefix).value_or(prefix);
        translated += step.substr(prefix.size());
        if (slash == std::string_view::npos) {
            break;
        }
        translated += '/';
        rest.remove_prefix(slash + 1);
    }
    path = std::move(translated);
}

}  // namespace

CXmlTransform::CXmlTransform() {
    InitNamespacePrefix();
}

CXmlTransform::CXmlTransform(std::string_view envelope) : CXmlTransform() {
    if (document_.Load(envelope)) {
        LoadNamespacePrefix();
    }
}

void CXmlTransform::InitNamespacePrefix() {
    for (std::size_t i = 0; i < kPrefixCount; ++i) {
        prefixes_[i] = {kCanonicalPrefixes[i], std::string(kCanonicalPrefixes[i])};
    }
}

void CXmlTransform::LoadNamespacePrefix() {
    const XMLElement* root = document_.Root();
    if (root == nullptr) {
        return;
    }
    std::map<std::string_view, std::string_view> declarations;  // by prefix: a later one wins
    for (const auto* each = root->FirstAttribute(); each != nullptr; each = each->Next()) {
        if (const auto prefix = DeclaredPrefix(each->Name())) {
            declarations[*prefix] = each->Value();
        }
    }
    for (const auto& [prefix, uri] : declarations) {
        const std::string_view canonical = CanonicalPrefix(uri);
        const auto row =
            std::find_if(prefixes_.begin(), prefixes_.end(),
                         [canonical](const Prefix& each) { return each.canonical == canonical; });
        if (row != prefixes_.end()) {
            row->actual = prefix;
        }
    }
}

void CXmlTransform::LocalizePath(std::string& path) const {
    TranslatePrefixes(path, [this](std::string_view prefix) -> std::optional<std::string_view> {
        const auto row = std::lower_bound(
            prefixes_.begin(), prefixes_.end(), prefix,
            [](const Prefix& each, std::string_view key) { return each.canonical < key; });
        if (row == prefixes_.end() || row->canonical != prefix) {
            return std::nullopt;
        }
        return row->actual;
    });
}

void CXmlTransform::CanonicalizeName(std::string& nameOrPath) const {
    TranslatePrefixes(
        nameOrPath, [this](std::string_view prefix) -> std::optional<std::string_view> {
            const auto row =
                std::find_if(prefixes_.begin(), prefixes_.end(),
                             [prefix](const Prefix& each) { return each.actual == prefix; });
            return row == prefixes_.end() ? std::nullopt : std::optional(row->canonical);
        });
}

XMLElement* CXmlTransform::AddElement(XMLElement* parent, std::string path, std::string_view text) {
    LocalizePath(path);
    return Append(parent, path, text);
}

XMLElement* CXmlTransform::AddIntElement(XMLElement* parent, std::string path, std::int32_t value) {
    return AddElement(parent, std::move(path), std::to_string(value));
}

XMLElement* CXmlTransform::AddUIntElement(XMLElement* parent, std::string path,
                                          std::uint32_t value) {
    return AddElement(parent, std::move(path), std::to_string(value));
}

bool CXmlTransform::SetElementText(std::string path, const std::string& text) {
    return SetChildText(document_.Root(), std::move(path), text);
}

bool CXmlTransform::SetChildText(XMLElement* parent, std::string path, const std::string& text) {
    return SetText(FindChild(parent, std::move(path)), text);
}

bool CXmlTransform::GetChildText(const XMLElement* parent, std::string path,
                                 std::string& text) const {
    text.clear();
    LocalizePath(path);
    const XMLElement* child = FindElement(parent, path);
    if (child == nullptr) {
        return false;
    }
    text = TextOf(child);
    if (text.find(':') != std::string::npos) {
        CanonicalizeName(text);
    }
    return true;
}

XMLElement* CXmlTransform::FindChild(XMLElement* parent, std::string path) const {
    LocalizePath(path);
    return FindElement(parent, path);
}

bool CXmlTransform::GetElementName(const XMLElement* element, std::string& name) const {
    name = NameOf(element);
    if (element == nullptr) {
        return false;
    }
    CanonicalizeName(name);
    return true;
}

std::string CXmlTransform::TrimXmlNamespace(std::string_view reply) {
    std::string trimmed;
    trimmed.reserve(reply.size());
    for (std::size_t at = 0; at < reply.size();) {
        const std::size_t tag = std::min(reply.find('<', at), reply.size());
        trimmed += reply.substr(at, tag - at);
        if (tag == reply.size()) {
            break;
        }
        std::size_t stop = tag;
        while (stop < reply.size() && reply[stop] != ':' && reply[stop] != ' ' &&
               reply[stop] != '>') {
            ++stop;
        }
        if (stop < reply.size() && reply[stop] == ':') {
            trimmed += reply[tag + 1] == '/' ? "</" : "<";
            at = stop + 1;
        } else {
            trimmed += reply.substr(tag, stop - tag);
            at = stop;
        }
    }
    trimmed.resize(reply.size());
    return trimmed;
}

void CXmlTransform::TrimElementNames(XMLElement* element) {
    const std::string name(NameOf(element));
    if (const std::size_t colon = name.find(':'); colon != std::string::npos) {
        element->SetName(name.c_str() + colon + 1);
    }
    // No deeper than the parser goes.
    for (XMLElement* each = element->FirstChildElement(); each != nullptr;
         each = each->NextSiblingElement()) {
        TrimElementNames(each);
    }
}

void CXmlTransform::LoadTrimmed(std::string_view reply, CXmlDocument& document) {
    document.Load(reply);
    if (XMLElement* root = document.Root()) {
        TrimElementNames(root);
    }
}

}  // namespace onvif_client
