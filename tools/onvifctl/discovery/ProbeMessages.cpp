#include "discovery/ProbeMessages.h"

#include <tinyxml2.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <sstream>

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

constexpr std::size_t kMostText = 8192;  // of the lists of a device together

std::string LocalName(const std::string& name) {
    return name.substr(name.find(':') + 1);
}

/// @p element itself, or the first beside it of that name, whatever its prefix; null for none.
const XMLElement* Named(const XMLElement* element, const char* name) {
    while (element != nullptr && LocalName(element->Name()) != name) {
        element = element->NextSiblingElement();
    }
    return element;
}

const XMLElement* Child(const XMLElement* parent, const char* name) {
    return parent == nullptr ? nullptr : Named(parent->FirstChildElement(), name);
}

/// The words of an element's text, as long as there is room for them.
std::vector<std::string> Words(const XMLElement* element, std::size_t& room) {
    const char* text = element == nullptr ? nullptr : element->GetText();
    std::istringstream stream(text == nullptr ? "" : text);
    std::vector<std::string> words;
    for (std::string word; stream >> word && word.size() <= room;) {
        room -= word.size();
        words.push_back(word);
    }
    return words;
}

std::string Word(const XMLElement* element) {
    std::size_t room = kMostText;
    const auto words = Words(element, room);
    return words.empty() ? "" : words.front();
}

FoundDevice ReadMatch(const XMLElement* match) {
    std::size_t room = kMostText;
    FoundDevice device;
    device.endpoint = Word(Child(Child(match, "EndpointReference"), "Address"));
    device.addresses = Words(Child(match, "XAddrs"), room);
    device.types = Words(Child(match, "Types"), room);
    for (std::string& type : device.types) {
        type = LocalName(type);
    }
    device.scopes = Words(Child(match, "Scopes"), room);
    return device;
}

}  // namespace

std::string NewMessageId() {
    std::random_device random;
    std::array<std::uint32_t, 4> parts = {};
    for (std::uint32_t& part : parts) {
        part = random();
    }
    parts[1] = (parts[1] & 0xFFFF0FFFU) | 0x4000U;      // version 4: random
    parts[2] = (parts[2] & 0x3FFFFFFFU) | 0x80000000U;  // of RFC 4122
    std::array<char, 48> text = {};
    std::snprintf(text.data(), text.size(), "urn:uuid:%08x-%04x-%04x-%04x-%04x%08x",
                  static_cast<unsigned>(parts[0]), static_cast<unsigned>(parts[1] >> 16U),
                  static_cast<unsigned>(parts[1] & 0xFFFFU), static_cast<unsigned>(parts[2] >> 16U),
                  static_cast<unsigned>(parts[2] & 0xFFFFU), static_cast<unsigned>(parts[3]));
    return text.data();
}

std::string MakeProbe(const ProbedType& type, const std::string& messageId) {
    const std::string prefix = type.prefix;
    return R"(<?xml version="1.0" encoding="UTF-8"?>)"
           R"(<e:Envelope xmlns:e="http://www.w3.org/2003/05/soap-envelope")"
           R"( xmlns:w="http://schemas.xmlsoap.org/ws/2004/08/addressing")"
           R"( xmlns:d="http://schemas.xmlsoap.org/ws/2005/04/discovery" xmlns:)" +
           prefix + "=\"" + type.uri + "\"><e:Header><w:MessageID>" + messageId +
           "</w:MessageID>"
           R"(<w:To e:mustUnderstand="true">urn:schemas-xmlsoap-org:ws:2005:04:discovery</w:To>)"
           R"(<w:Action e:mustUnderstand="true">)"
           "http://schemas.xmlsoap.org/ws/2005/04/discovery/Probe</w:Action></e:Header>"
           "<e:Body><d:Probe><d:Types>" +
           prefix + ":" + type.name + "</d:Types></d:Probe></e:Body></e:Envelope>";
}

std::vector<FoundDevice> ReadProbeMatches(const std::string& text,
                                          const std::set<std::string>& probes) {
    tinyxml2::XMLDocument document;  // refuses elements that are nested too deep
    std::vector<FoundDevice> devices;
    if (document.Parse(text.c_str(), text.size()) != tinyxml2::XML_SUCCESS) {
        return devices;
    }
    const XMLElement* envelope = Named(document.RootElement(), "Envelope");
    if (probes.count(Word(Child(Child(envelope, "Header"), "RelatesTo"))) == 0) {
        return devices;
    }
    const XMLElement* match = Child(Child(Child(envelope, "Body"), "ProbeMatches"), "ProbeMatch");
    while (match != nullptr) {
        devices.push_back(ReadMatch(match));
        match = Named(match->NextSiblingElement(), "ProbeMatch");
    }
    return devices;
}

}  // namespace onvifctl
