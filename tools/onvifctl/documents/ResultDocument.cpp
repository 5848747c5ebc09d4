#include "documents/ResultDocument.h"

#include <sstream>

namespace onvifctl {

using tinyxml2::XMLElement;

CResultDocument::CResultDocument(const std::string& result) {
    document_.Parse(result.c_str(), result.size());
}

const XMLElement* CResultDocument::Command(const char* name) const {
    const XMLElement* root = document_.RootElement();
    return root == nullptr ? nullptr : root->FirstChildElement(name);
}

std::vector<const XMLElement*> CResultDocument::Items(const char* command) const {
    std::vector<const XMLElement*> items;
    for (const XMLElement* item = ElementAt(Command(command), "item"); item != nullptr;
         item = item->NextSiblingElement("item")) {
        items.push_back(item);
    }
    return items;
}

const XMLElement* ElementAt(const XMLElement* from, const std::string& path) {
    std::istringstream steps(path);
    for (std::string step; from != nullptr && std::getline(steps, step, '/');) {
        from = from->FirstChildElement(step.c_str());
    }
    return from;
}

std::string TextAt(const XMLElement* from, const std::string& path) {
    const XMLElement* element = ElementAt(from, path);
    return element == nullptr || element->GetText() == nullptr ? "" : element->GetText();
}

}  // namespace onvifctl
