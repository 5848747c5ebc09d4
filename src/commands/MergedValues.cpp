#include "commands/MergedValues.h"

#include <optional>
#include <string>
#include <string_view>

namespace onvif_client {

namespace {

std::string_view WithoutPrefix(std::string_view name) {
    return name.substr(name.find(':') + 1);
}

const XMLElement* Parameter(const XMLElement* wanted, const MergedValue& row) {
    return row.parameter == nullptr ? nullptr : FindElement(wanted, row.parameter);
}

std::optional<std::string> TextFor(const XMLElement* parameter, const XMLElement* present,
                                   const MergedValue& row) {
    if (parameter != nullptr) {
        return std::string(TextOf(parameter));
    }
    if (row.element[0] == '@') {
        if (const char* attribute = AttributeOf(present, row.element + 1)) {
            return attribute;
        }
    } else if (const XMLElement* element = FirstChild(present, WithoutPrefix(row.element))) {
        return std::string(TextOf(element));
    }
    return row.otherwise == nullptr ? std::nullopt : std::optional<std::string>(row.otherwise);
}

void MergeGroup(const XMLElement* wanted, const XMLElement* present, XMLElement* to,
                const MergedValue& row) {
    XMLElement* group = Append(to, row.element);
    MergeValues(row.parameter == nullptr ? wanted : Parameter(wanted, row),
                FirstChild(present, WithoutPrefix(row.element)), group, row.parts);
    if (group->NoChildren() && group->FirstAttribute() == nullptr && row.otherwise == nullptr) {
        to->DeleteChild(group);
    }
}

void MergeValue(const XMLElement* wanted, const XMLElement* present, XMLElement* to,
                const MergedValue& row) {
    if (!row.parts.empty()) {
        MergeGroup(wanted, present, to, row);
    } else if (const auto text = TextFor(Parameter(wanted, row), present, row)) {
        if (row.element[0] == '@') {
            to->SetAttribute(row.element + 1, text->c_str());
        } else {
            Append(to, row.element, *text);
        }
    }
}

}  // namespace

void MergeValues(const XMLElement* wanted, const XMLElement* present, XMLElement* to,
                 std::span<const MergedValue> rows) {
    for (const MergedValue& row : rows) {
        MergeValue(wanted, present, to, row);
    }
}

}  // namespace onvif_client
