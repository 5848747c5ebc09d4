#include "transform/MotionResults.h"

#include "transform/Conversions.h"
#include "transform/MotionCells.h"

namespace onvif_client {

namespace {

std::string_view AttributeText(const XMLElement* element, const char* name) {
    const char* value = AttributeOf(element, name);
    return value == nullptr ? std::string_view{} : value;
}

/// The first of several modules or rules whose type has that name in whatever namespace.
const XMLElement* FindByType(const XMLElement* response, std::string_view element,
                             std::string_view type) {
    for (const XMLElement* each : Children(response, element)) {
        const std::string_view name = AttributeText(each, "Type");
        if (name.substr(name.rfind(':') + 1) == type) {
            return each;
        }
    }
    return nullptr;
}

const XMLElement* FindItem(const XMLElement* owner, std::string_view kind, std::string_view name) {
    for (const XMLElement* each : Children(FirstChild(owner, "Parameters"), kind)) {
        if (AttributeText(each, "Name") == name) {
            return each;
        }
    }
    return nullptr;
}

void CopyAttribute(const XMLElement* from, const char* attribute, XMLElement* command,
                   const char* element) {
    if (const char* value = AttributeOf(from, attribute)) {
        Append(command, element, value);
    }
}

void CopySimpleItem(const XMLElement* owner, const char* name, XMLElement* command,
                    const char* element) {
    CopyAttribute(FindItem(owner, "SimpleItem", name), "Value", command, element);
}

void CopyModule(const ReplyValues& reply, XMLElement* command) {
    Append(command, "token", reply.subject.token);
    const XMLElement* module =
        FindByType(FindElement(reply.envelope, "Envelope/Body/GetAnalyticsModulesResponse"),
                   "AnalyticsModule", "CellMotionEngine");
    CopyAttribute(module, "Name", command, "name");
    CopySimpleItem(module, "Sensitivity", command, "sensitivity");
    const XMLElement* layout = FirstChild(FindItem(module, "ElementItem", "Layout"), "CellLayout");
    CopyAttribute(layout, "Columns", command, "columns");
    CopyAttribute(layout, "Rows", command, "rows");
}

void AddArea(const char* activeCells, XMLElement* command) {
    XMLElement* area = Append(command, "area");
    const auto cells = DecodeActiveCells(activeCells, ToInt(TextAt(command, "columns")),
                                         ToInt(TextAt(command, "rows")));
    for (const std::string& row : cells.value_or(CellRows{})) {
        Append(area, "item", row);
    }
}

void CopyRule(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* rule =
        FindByType(FindElement(reply.envelope, "Envelope/Body/GetRulesResponse"), "Rule",
                   "CellMotionDetector");
    CopyAttribute(rule, "Name", command, "ruleName");
    CopySimpleItem(rule, "MinCount", command, "minCount");
    CopySimpleItem(rule, "AlarmOnDelay", command, "alarmOnDelay");
    CopySimpleItem(rule, "AlarmOffDelay", command, "alarmOffDelay");
    const XMLElement* item = FindItem(rule, "SimpleItem", "ActiveCells");
    if (const char* activeCells = AttributeOf(item, "Value")) {
        AddArea(activeCells, command);
        Append(command, "activeCells", activeCells);
    }
}

}  // namespace

constinit const ResultFrame kMotionModuleResult = {"GetResponse", "motion", CopyModule};
constinit const ResultFrame kMotionRuleResult = {.root = "GetResponse",
                                                 .element = "motion",
                                                 .copyValues = CopyRule,
                                                 .statusPlace = StatusPlace::kWrapper,
                                                 .statusWrapper = "ruleStatus"};

}  // namespace onvif_client
