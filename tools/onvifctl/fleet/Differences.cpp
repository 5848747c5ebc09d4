#include "fleet/Differences.h"

#include <tinyxml2.h>

#include <map>
#include <string_view>

#include "documents/ResultDocument.h"

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;
using Values = std::map<std::string, std::string>;

/// An item has the name of its token, so that it is the same wherever it stands.
std::string StepTo(const XMLElement* element, std::map<std::string, int>& seen) {
    const std::string name = element->Name();
    std::string token = TextAt(element, "token");
    if (name == "item" && !token.empty()) {
        return token;
    }
    const int earlier = seen[name]++;
    return earlier == 0 ? name : name + "[" + std::to_string(earlier + 1) + "]";
}

/// Tree by tree from a list: a document may be as deep as its parser permits.
Values ValuesOf(const std::string& text) {
    tinyxml2::XMLDocument document;
    document.Parse(text.c_str(), text.size());
    Values values;
    std::vector<std::pair<const XMLElement*, std::string>> rest = {{document.RootElement(), ""}};
    while (!rest.empty()) {
        const auto [parent, path] = rest.back();
        rest.pop_back();
        std::map<std::string, int> seen;
        for (const auto* child = parent == nullptr ? nullptr : parent->FirstChildElement();
             child != nullptr; child = child->NextSiblingElement()) {
            const std::string_view name = child->Name();
            if (name == "status" || name == "ruleStatus") {
                continue;
            }
            const std::string step = path + (path.empty() ? "" : "/") + StepTo(child, seen);
            if (child->FirstChildElement() == nullptr) {
                values[step] = TextAt(child, "");
            } else {
                rest.emplace_back(child, step);
            }
        }
    }
    return values;
}

}  // namespace

std::vector<std::string> Differences(const std::string& present, const std::string& wanted) {
    const Values before = ValuesOf(present);
    const Values after = ValuesOf(wanted);
    std::vector<std::string> lines;
    const auto text = [](const Values& values, const std::string& path) {
        const auto place = values.find(path);
        return place == values.end() ? "(nothing)" : "'" + place->second + "'";
    };
    Values all = before;
    all.insert(after.begin(), after.end());
    for (const auto& [path, value] : all) {
        const std::string from = text(before, path);
        const std::string to = after.contains(path) ? text(after, path) : "(not in the document)";
        if (from != to) {
            std::string& line = lines.emplace_back(path);
            line.append(": ").append(from).append(" -> ").append(to);
        }
    }
    return lines;
}

}  // namespace onvifctl
