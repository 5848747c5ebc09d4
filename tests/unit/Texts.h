/// What the unit tests read in envelopes and results.
#ifndef ONVIF_CLIENT_TESTS_UNIT_TEXTS_H
#define ONVIF_CLIENT_TESTS_UNIT_TEXTS_H

#include <tinyxml2.h>

#include <string>

#include "support/Outline.h"

namespace client_test {

inline std::string WithoutWhiteSpace(const tinyxml2::XMLElement* element) {
    tinyxml2::XMLPrinter printer(nullptr, true);
    if (element != nullptr) {
        element->Accept(&printer);
    }
    return printer.CStr();
}

/// What stands in the body of a request envelope.
inline std::string Body(const std::string& envelope) {
    tinyxml2::XMLDocument document;
    document.Parse(envelope.c_str());
    const auto* root = document.RootElement();
    const auto* body = root == nullptr ? nullptr : root->FirstChildElement("s:Body");
    return WithoutWhiteSpace(body == nullptr ? nullptr : body->FirstChildElement());
}

inline std::string Envelope(const std::string& body) {
    return "<?xml version=\"1.0\"?><env:Envelope xmlns:env=\"e\"><env:Body>" + body +
           "</env:Body></env:Envelope>";
}

/// A reply with these elements, as Outline.h describes.
inline std::string Reply(std::string_view outline) {
    return Envelope(Xml(outline));
}

inline std::string Compact(const std::string& text) {
    tinyxml2::XMLDocument document;
    document.Parse(text.c_str());
    return WithoutWhiteSpace(document.RootElement());
}

}  // namespace client_test

#endif
