#include "ResultTable.h"

#include <tinyxml2.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

using Line = std::pair<std::string, std::string>;  // path and value
using Record = std::vector<Line>;

std::string TextOf(const XMLElement* element) {
    const char* text = element == nullptr ? nullptr : element->GetText();
    return text == nullptr ? "" : Printable(text);
}

/// How many siblings of the same name stand before it.
std::size_t Position(const XMLElement* element) {
    std::size_t position = 0;
    while ((element = element->PreviousSiblingElement(element->Name())) != nullptr) {
        ++position;
    }
    return position;
}

std::string Number(std::size_t position) {
    return "[" + std::to_string(position + 1) + "]";
}

/// The leaves below an element, its own attributes and text included, repeated ones numbered.
void Flatten(const XMLElement* element, const std::string& path, Record& record) {
    for (const auto* each = element->FirstAttribute(); each != nullptr; each = each->Next()) {
        record.emplace_back(path.empty() ? each->Name() : path + " " + each->Name(),
                            Printable(each->Value()));
    }
    const std::string text = TextOf(element);
    if (!text.empty() || element->FirstChildElement() == nullptr) {
        record.emplace_back(path, text);
    }
    for (const auto* child = element->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        std::string name = path.empty() ? child->Name() : path + "/" + child->Name();
        const bool repeated = child->NextSiblingElement(child->Name()) != nullptr ||
                              child->PreviousSiblingElement(child->Name()) != nullptr;
        if (repeated) {
            name += Number(Position(child));
        }
        Flatten(child, name, record);
    }
}

std::string ValueOf(const Record& record, const std::string& field) {
    const auto found = std::find_if(record.begin(), record.end(),
                                    [&field](const Line& line) { return line.first == field; });
    return found == record.end() ? "" : found->second;
}

/// Repeated elements side by side: a row each when they are small, a column each otherwise.
std::string FormatRepeated(const XMLElement* first) {
    constexpr std::size_t kSmall = 3;
    std::vector<Record> records;
    std::vector<std::string> fields;
    for (const auto* each = first; each != nullptr;
         each = each->NextSiblingElement(first->Name())) {
        Flatten(each, "", records.emplace_back());
        for (const Line& line : records.back()) {
            if (std::find(fields.begin(), fields.end(), line.first) == fields.end()) {
                fields.push_back(line.first);
            }
        }
    }
    std::vector<std::vector<std::string>> rows;
    if (fields.size() <= kSmall) {
        rows.emplace_back(1, first->Name());
        rows.back().insert(rows.back().end(), fields.begin(), fields.end());
        for (std::size_t i = 0; i < records.size(); ++i) {
            auto& row = rows.emplace_back(1, Number(i));
            for (const std::string& field : fields) {
                row.push_back(ValueOf(records[i], field));
            }
        }
        return AlignColumns(rows);
    }
    rows.emplace_back(1, first->Name());
    for (std::size_t i = 0; i < records.size(); ++i) {
        rows.back().push_back(Number(i));
    }
    for (const std::string& field : fields) {
        auto& row = rows.emplace_back(1, field);
        for (const Record& record : records) {
            row.push_back(ValueOf(record, field));
        }
    }
    return AlignColumns(rows);
}

std::string FormatSection(const XMLElement* command) {
    if (command->FirstChildElement() == nullptr) {
        return std::string(command->Name()) + "  " + TextOf(command) + "\n";
    }
    std::string section = std::string(command->Name()) + "\n";
    std::vector<std::vector<std::string>> single;
    std::string repeated;
    for (const auto* child = command->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (child->PreviousSiblingElement(child->Name()) != nullptr) {
            continue;
        }
        if (child->NextSiblingElement(child->Name()) != nullptr) {
            repeated += FormatRepeated(child);
            continue;
        }
        Record record;
        Flatten(child, child->Name(), record);
        for (const auto& [path, value] : record) {
            single.push_back({path, value});
        }
    }
    return section + AlignColumns(single) + repeated;
}

void CollectRefusals(const XMLElement* element, const std::string& command,
                     std::vector<std::string>& refusals) {
    for (const auto* child = element->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (child->Name() == std::string_view("status") && TextOf(child) == "fail") {
            const std::string description = TextOf(child->FirstChildElement("description"));
            // The code stands in the status or, for some commands, beside it.
            const XMLElement* code = child->FirstChildElement("errorCode");
            code = code == nullptr ? element->FirstChildElement("errorCode") : code;
            refusals.push_back(command + ": " +
                               (description.empty() ? "refused by the device" : description) +
                               " (error " + TextOf(code) + ")");
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

std::string AlignColumns(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line = " ";
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += " " + row[i] + std::string(widths[i] - row[i].size() + 1, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

std::string Printable(std::string text) {
    constexpr char kDelete = 0x7F;
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == kDelete; }, ' ');
    return text;
}

}  // namespace onvifctl
