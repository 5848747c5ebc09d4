/// @file
/// The result document that answers a whole request.
#ifndef ONVIF_CLIENT_TRANSFORM_RESULTDOCUMENT_H
#define ONVIF_CLIENT_TRANSFORM_RESULTDOCUMENT_H

#include <memory>
#include <string>
#include <string_view>

#include "common/XmlDocument.h"

namespace onvif_client {

/// Every command adds its element below the root; answers of one command share an element.
///
/// Only the last answer shows texts as they were copied. The earlier ones have the form that
/// printing and parsing the document between two answers gives them (TakeParsedForm): applications
/// know results by their bytes. Each access therefore first settles what the one before added.
class CResultDocument {
 public:
    /// The first element of a command below @p root, each made when it is missing. Whoever gets it
    /// appends to it or, where it had children before, to the first of them.
    XMLElement* Command(std::string_view root, std::string_view name);
    /// A further element of a command.
    XMLElement* AddCommand(std::string_view root, std::string_view name);

    /// The whole document as text; empty when it has no command.
    std::string Print();
    /// Gives it away as whoever parses the text would have it.
    std::unique_ptr<const CXmlDocument> TakeParsed();

 private:
    XMLElement* Root(std::string_view name);
    XMLElement* Open(XMLElement* command);
    void Settle();

    std::unique_ptr<CXmlDocument> document_ = std::make_unique<CXmlDocument>();
    XMLElement* open_ = nullptr;  // what was handed out last
    XMLNode* settled_ = nullptr;  // its last child at that time
};

}  // namespace onvif_client

#endif
