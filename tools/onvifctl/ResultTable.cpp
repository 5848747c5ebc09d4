#include "ResultTable.h"

#include <tinyxml2.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

using Line = std::pair<std::string, std::string>;  // path and value

std::string TextOf(const XMLElement* element) {
    const char* text = element == nullptr ? nullptr : element->GetText();
    return text == nullptr ? "" : text;
}

bool IsRepeated(const XMLElement* element) {
    return element->NextSiblingElement(element->Name()) != nullptr ||
           element->PreviousSiblingElement(element->Name()) != nullptr;
}

int Position(const XMLElement* element) {
    int position = 1;
    while ((element = element->PreviousSiblingElement(element->Name())) != nullptr) {
        ++position;
    }
    return position;
}

void Flatten(const XMLElement* element, const std::string& path, std::vector<Line>& lines) {
    for (const auto* each = element->FirstAttribute(); each != nullptr; each = each->Next()) {
        lines.emplace_back(path.empty() ? each->Name() : path + " " + each->Name(), each->Value());
    }
    const std::string text = TextOf(element);
    if (!path.empty() && (!text.empty() || element->FirstChildElement() == nullptr)) {
        lines.emplace_back(path, text);
    }
    for (const auto* child = element->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        std::string name = child->Name();
        if (IsRepeated(child)) {
            name += "[" + std::to_string(Position(child)) + "]";
        }
        Flatten(child, path.empty() ? name : path + "/" + name, lines);
    }
}

std::string FormatSection(const XMLElement* command) {
    std::vector<Line> lines;
    if (command->FirstChildElement() == nullptr && command->GetText() != nullptr) {
        return std::string(command->Name()) + "  " + command->GetText() + "\n";
    }
    Flatten(command, "", lines);
    std::size_t width = 0;
    for (const auto& [path, value] : lines) {
        width = std::max(width, path.size());
    }
    std::string section = std::string(command->Name()) + "\n";
    for (const auto& [path, value] : lines) {
        section += "  " + path + std::string(width - path.size() + 2, ' ') + value + "\n";
    }
    return section;
}

void CollectRefusals(const XMLElement* element, const std::string& command,
                     std::vector<std::string>& refusals) {
    for (const auto* child = element->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (child->Name() == std::string_view("status") && TextOf(child) == "fail") {
            const std::string description = TextOf(child->FirstChildElement("description"));
            refusals.push_back(command + ": " +
                               (description.empty() ? "refused by the device" : description) +
                               " (error " + TextOf(child->FirstChildElement("errorCode")) + ")");
        } else {
            CollectRefusals(child, command, refusals);
        }
    }
}

template <typename Visit>
void ForEachCommand(const std::string& result, const Visit& visit) {
    tinyxml2::XMLDocument document;
    document.Parse(result.c_str(), result.size());
    const XMLElement* root = document.RootElement();
    for (const auto* each = root == nullptr ? nullptr : root->FirstChildElement(); each != nullptr;
         each = each->NextSiblingElement()) {
        visit(each);
    }
}

}  // namespace

std::string FormatTable(const std::string& result) {
    std::string table;
    ForEachCommand(result, [&table](const XMLElement* command) {
        table += (table.empty() ? "" : "\n") + FormatSection(command);
    });
    return table;
}

std::vector<std::string> Refusals(const std::string& result) {
    std::vector<std::string> refusals;
    ForEachCommand(result, [&refusals](const XMLElement* command) {
        CollectRefusals(command, command->Name(), refusals);
    });
    return refusals;
}

}  // namespace onvifctl
