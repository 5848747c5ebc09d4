#include <expat.h>

#include "FuzzInput.h"

void onvif_client::fuzz::ExpectDocument(std::string_view text) {
    // One maker's operation has a name that no namespace can have.
    const bool plain = text.find("ptzw:3DControl") != std::string_view::npos;
    XML_Parser parser = plain ? XML_ParserCreate(nullptr) : XML_ParserCreateNS(nullptr, ' ');
    Expect(XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK);
    XML_ParserFree(parser);
}
