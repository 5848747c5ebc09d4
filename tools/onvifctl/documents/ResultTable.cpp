#include "documents/ResultTable.h"

#include <tinyxml2.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "output/Printable.h"

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

using Line = std::pair<std::string, std::string>;  // path and value
using Record = std::vector<Line>;

std::string TextOf(const XMLElement* element) {
    const char* text = element == nullptr ? nullptr : element->GetText();
    return text == nullptr ? "" : Printable(text);
}

/// How often each name stands among the children of an element.
using NameCounts = std::unordered_map<std::string_view, std::size_t>;

NameCounts CountChildren(const XMLElement* parent) {
    NameCounts counts;
    for (const auto* child = parent->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        ++counts[child->Name()];
    }
    return counts;
}

/// @p position  from 1.
std::string Number(std::size_t position) {
    return "[" + std::to_string(position) + "]";
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
    const NameCounts counts = CountChildren(element);
    NameCounts passed;
    for (const auto* child = element->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        std::string name = path.empty() ? child->Name() : path + "/" + child->Name();
        const std::size_t position = ++passed[child->Name()];
        if (counts.at(child->Name()) > 1) {
            name += Number(position);
        }
        Flatten(child, name, record);
    }
}

/// A row of path and value per leaf.
void AddLines(const XMLElement* element, const std::string& path,
              std::vector<std::vector<std::string>>& rows) {
    Record record;
    Flatten(element, path, record);
    for (const auto& [leaf, value] : record) {
        rows.push_back({leaf, value});
    }
}

/// Repeated elements as records, with the fields that any of them has.
struct Repeated {
    std::vector<Record> records;
    std::vector<std::string> fields;
    std::vector<std::vector<std::string>> values;  // by record and field; empty when too many
};

/// Whether a cell for every field of every record is not much more than what is there.
bool HaveMuchInCommon(const Repeated& repeated) {
    constexpr std::size_t kCellsPerLine = 4;
    std::size_t lines = 0;
    for (const Record& record : repeated.records) {
        lines += record.size();
    }
    return repeated.fields.size() * repeated.records.size() <= kCellsPerLine * lines;
}

Repeated Collect(const XMLElement* first) {
    Repeated found;
    std::unordered_map<std::string, std::size_t> places;
    for (const auto* each = first; each != nullptr;
         each = each->NextSiblingElement(first->Name())) {
        Flatten(each, "", found.records.emplace_back());
        for (const auto& [field, value] : found.records.back()) {
            if (places.emplace(field, found.fields.size()).second) {
                found.fields.push_back(field);
            }
        }
    }
    if (HaveMuchInCommon(found)) {
        for (const Record& record : found.records) {
            auto& row = found.values.emplace_back(found.fields.size());
            for (const auto& [field, value] : record) {
                std::string& cell = row[places.at(field)];
                cell = cell.empty() ? value : cell;
            }
        }
    }
    return found;
}

/// Repeated elements side by side: a row each when they are small, a column each otherwise. Those
/// that have little in common stand one below the other.
std::string FormatRepeated(const XMLElement* first) {
    constexpr std::size_t kSmall = 3;
    const Repeated found = Collect(first);
    const auto& fields = found.fields;
    const auto& values = found.values;
    const std::string name = first->Name();
    std::vector<std::vector<std::string>> rows;
    if (values.empty()) {
        std::size_t position = 0;
        for (const auto* each = first; each != nullptr;
             each = each->NextSiblingElement(first->Name())) {
            AddLines(each, name + Number(++position), rows);
        }
    } else if (fields.size() <= kSmall) {
        rows.push_back(fields);
        rows.back().insert(rows.back().begin(), name);
        for (std::size_t i = 0; i < values.size(); ++i) {
            rows.push_back(values[i]);
            rows.back().insert(rows.back().begin(), Number(i + 1));
        }
    } else {
        rows.push_back({name});
        for (std::size_t i = 0; i < values.size(); ++i) {
            rows.back().push_back(Number(i + 1));
        }
        for (std::size_t field = 0; field < fields.size(); ++field) {
            auto& row = rows.emplace_back(1, fields[field]);
            for (const auto& record : values) {
                row.push_back(record[field]);
            }
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
    const NameCounts counts = CountChildren(command);
    NameCounts passed;
    for (const auto* child = command->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (counts.at(child->Name()) > 1) {
            repeated += ++passed[child->Name()] == 1 ? FormatRepeated(child) : "";
            continue;
        }
        AddLines(child, child->Name(), single);
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
    constexpr std::size_t kWidest = 64;
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::min(std::max(widths[i], row[i].size()), kWidest);
        }
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line = " ";
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += " " + row[i] +
                    std::string(std::max(widths[i], row[i].size()) - row[i].size() + 1, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

}  // namespace onvifctl
