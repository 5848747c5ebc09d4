#include "camera_sim/soap/Namespaces.h"

#include <string>
#include <vector>

#include "camera_sim/state/CameraOptions.h"

namespace camera_sim {
namespace {

constexpr std::array<Namespace, kNamespaceCount> kNamespaces = {{
    {"http://www.w3.org/2003/05/soap-envelope", "env"},
    {"http://www.onvif.org/ver10/schema", "tt"},
    {"http://www.onvif.org/ver10/device/wsdl", "tds"},
    {"http://www.onvif.org/ver10/deviceIO/wsdl", "tmd"},
    {"http://www.onvif.org/ver10/media/wsdl", "trt"},
    {"http://www.onvif.org/ver20/media/wsdl", "tr2"},
    {"http://www.onvif.org/ver20/ptz/wsdl", "tptz"},
    {"http://www.onvif.org/ver20/imaging/wsdl", "timg"},
    {"http://www.onvif.org/ver20/analytics/wsdl", "tan"},
    {"http://www.onvif.org/ver10/events/wsdl", "tev"},
    {"http://www.onvif.org/ver10/error", "ter"},
    {"http://www.w3.org/2005/08/addressing", "wsa"},
    {"http://docs.oasis-open.org/wsn/b-2", "wsnt"},
    {"http://docs.oasis-open.org/wsn/t-1", "wstop"},
    {"http://www.onvif.org/ver10/topics", "tns1"},
    {"http://docs.oasis-open.org/wsrf/rw-2", "wsrf-rw"},
    {"http://www.w3.org/2001/XMLSchema", "xs"},
    {"http://schemas.xmlsoap.org/ws/2005/04/discovery", "d"},
    {"http://schemas.xmlsoap.org/ws/2004/08/addressing", "a"},
    {"http://www.onvif.org/ver10/network/wsdl", "dn"},
}};
constexpr Namespace kNoNamespace{};

// "shuffled" gives well-known prefixes to other namespaces than usual, "default" uses none for
// the services: both are legal, and both surprise a reader that takes prefixes for names.
constexpr std::array kStyles = {
    PrefixStyle{"SOAP-ENV", {"SOAP-ENV", "tt",    "tds", "tmd",  "trt",  "tr2",  "tptz",
                             "timg",     "tan",   "tev", "ter",  "wsa5", "wsnt", "wstop",
                             "tns1",     "wsrfr", "xsd", "wsdd", "wsa",  "dn"}},
    PrefixStyle{"env",
                {"env", "tt",  "tds",  "tmd",   "trt",  "tr2",     "tptz", "timg", "tan",    "tev",
                 "ter", "wsa", "wsnt", "wstop", "tns1", "wsrf-rw", "xs",   "d",    "wsadis", "dn"}},
    PrefixStyle{"s",
                {"s",   "tt",  "tds",  "tmd",   "trt",  "tr2",     "tptz", "timg", "tan", "tev",
                 "ter", "wsa", "wsnt", "wstop", "tns1", "wsrf-rw", "xs",   "d",    "a",   "dn"}},
    PrefixStyle{
        "soap",
        {"soap",    "onvif",     "device", "io",        "media",         "media2",       "ptz",
         "imaging", "analytics", "events", "error",     "addressing",    "notification", "topicset",
         "tns1",    "resource",  "xsd",    "discovery", "oldaddressing", "network"}},
    PrefixStyle{"numbered",
                {"ns0",  "ns1",  "ns2",  "ns3",  "ns4",  "ns5",  "ns6",  "ns7",  "ns8",  "ns9",
                 "ns10", "ns11", "ns12", "ns13", "ns14", "ns15", "ns16", "ns17", "ns18", "ns19"}},
    PrefixStyle{"shuffled",
                {"tt",  "tds",  "env", "trt", "tmd",  "s",  "tr2",   "ter", "tptz", "timg",
                 "tan", "wsnt", "wsa", "tev", "tns1", "xs", "wstop", "dn",  "d",    "a"}},
    PrefixStyle{"default", {"s",   "tt",  "",     "",      "",     "",        "",   "", "",  "",
                            "ter", "wsa", "wsnt", "wstop", "tns1", "wsrf-rw", "xs", "", "a", "dn"}},
};

}  // namespace

const Namespace& NamespaceOf(Ns ns) {
    if (ns == Ns::kNone) {
        return kNoNamespace;
    }
    return kNamespaces[static_cast<std::size_t>(ns)];
}

std::optional<Ns> FindNamespace(std::string_view uri) {
    for (std::size_t i = 0; i < kNamespaceCount; ++i) {
        if (kNamespaces[i].uri == uri) {
            return static_cast<Ns>(i);
        }
    }
    return std::nullopt;
}

std::optional<Ns> FindUsualPrefix(std::string_view prefix) {
    for (std::size_t i = 0; i < kNamespaceCount; ++i) {
        if (kNamespaces[i].usualPrefix == prefix) {
            return static_cast<Ns>(i);
        }
    }
    return std::nullopt;
}

const PrefixStyle* FindPrefixStyle(std::string_view name) {
    for (const PrefixStyle& style : kStyles) {
        if (style.name == name) {
            return &style;
        }
    }
    return nullptr;
}

std::vector<std::string> PrefixStyleNames() {
    std::vector<std::string> names;
    names.reserve(kStyles.size());
    for (const PrefixStyle& style : kStyles) {
        names.emplace_back(style.name);
    }
    return names;
}

}  // namespace camera_sim
