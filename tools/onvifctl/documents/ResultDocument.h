/// @file
/// Single values of result documents.
#ifndef ONVIFCTL_DOCUMENTS_RESULTDOCUMENT_H
#define ONVIFCTL_DOCUMENTS_RESULTDOCUMENT_H

#include <tinyxml2.h>

#include <string>
#include <vector>

namespace onvifctl {

/// A parsed result document. What it gives out lives as long as it.
class CResultDocument {
 public:
    explicit CResultDocument(const std::string& result);

    /// The element of a command; null when the result does not have it.
    const tinyxml2::XMLElement* Command(const char* name) const;

    /// The items of a command.
    std::vector<const tinyxml2::XMLElement*> Items(const char* command) const;

 private:
    tinyxml2::XMLDocument document_;
};

/// The element at a path of names ("position/x") below @p from; null when there is none.
const tinyxml2::XMLElement* ElementAt(const tinyxml2::XMLElement* from, const std::string& path);

/// Its text as the device wrote it; empty when there is none.
std::string TextAt(const tinyxml2::XMLElement* from, const std::string& path);

}  // namespace onvifctl

#endif
