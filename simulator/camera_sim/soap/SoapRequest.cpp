#include "camera_sim/soap/SoapRequest.h"

#include "camera_sim/soap/Namespaces.h"

namespace camera_sim {
namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";

}  // namespace

std::string_view LocalName(const XmlElement& element) {
    const std::string_view name = element.Name();
    return name.substr(name.find(':') + 1);
}

std::string_view NamespaceUri(const XmlElement& element) {
    return NamespaceUri(element, element.Name());
}

std::string_view NamespaceUri(const XmlElement& element, std::string_view name) {
    const auto colon = name.find(':');
    std::string declaration = "xmlns";
    if (colon != std::string_view::npos) {
        declaration.append(":").append(name.substr(0, colon));
    }
    for (const XmlElement* scope = &element; scope != nullptr;
         scope = scope->Parent()->ToElement()) {
        if (const char* uri = scope->Attribute(declaration.c_str())) {
            return uri;
        }
    }
    return {};
}

const XmlElement* Child(const XmlElement* parent, std::string_view localName) {
    if (parent == nullptr) {
        return nullptr;
    }
    const XmlElement* child = parent->FirstChildElement();
    while (child != nullptr && LocalName(*child) != localName) {
        child = child->NextSiblingElement();
    }
    return child;
}

std::vector<const XmlElement*> Children(const XmlElement* parent, std::string_view localName) {
    std::vector<const XmlElement*> found;
    if (parent == nullptr) {
        return found;
    }
    for (const XmlElement* child = parent->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (LocalName(*child) == localName) {
            found.push_back(child);
        }
    }
    return found;
}

std::string_view Text(const XmlElement* element) {
    const char* raw = element == nullptr ? nullptr : element->GetText();
    const std::string_view text = raw == nullptr ? "" : raw;
    const auto first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

std::string_view ChildText(const XmlElement* parent, std::string_view localName) {
    return Text(Child(parent, localName));
}

CSoapRequest::CSoapRequest(std::string_view body) {
    if (document_.Parse(body.data(), body.size()) != tinyxml2::XML_SUCCESS) {
        problem_ = Problem::kNotXml;
        return;
    }
    const XmlElement* envelope = document_.RootElement();
    if (envelope == nullptr || LocalName(*envelope) != "Envelope" ||
        NamespaceUri(*envelope) != NamespaceOf(Ns::kSoap).uri) {
        problem_ = Problem::kNotSoap12;
        return;
    }
    header_ = Child(envelope, "Header");
    const XmlElement* soapBody = Child(envelope, "Body");
    operation_ = soapBody == nullptr ? nullptr : soapBody->FirstChildElement();
    if (operation_ == nullptr) {
        problem_ = Problem::kNoOperation;
    }
}

}  // namespace camera_sim
