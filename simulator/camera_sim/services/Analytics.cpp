// Analytics service: the motion detector's module and rule.
#include <algorithm>
#include <array>

#include "camera_sim/services/MediaElements.h"
#include "camera_sim/services/Services.h"
#include "camera_sim/soap/ActiveCells.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr int kMostColumnsOrRows = 64;
/// Enough for the cells of the largest layout; padding cannot make a value grow without end.
constexpr std::size_t kLongestValue = 4096;
constexpr std::string_view kCellsParameter = "ActiveCells";

/// The parameters that are whole numbers.
struct NumberParameter {
    std::string_view name;
    int least;
    int most;
};
constexpr std::array kNumberParameters = {
    NumberParameter{"Sensitivity", 0, 100},
    NumberParameter{"MinCount", 1, kMostColumnsOrRows* kMostColumnsOrRows},
    NumberParameter{"AlarmOnDelay", 0, 600000},
    NumberParameter{"AlarmOffDelay", 0, 600000},
};

/// How modules and rules differ.
struct ItemKind {
    std::string_view element;
    std::vector<AnalyticsItem> AnalyticsConfiguration::*items;
    std::string_view noSuchItem;
    std::string_view invalidItem;
    std::string_view supported;
    std::string_view description;
};
constexpr ItemKind kModules{
    "AnalyticsModule", &AnalyticsConfiguration::modules, "NoModule",
    "InvalidModule",   "SupportedAnalyticsModules",      "AnalyticsModuleDescription"};
constexpr ItemKind kRules{"Rule",           &AnalyticsConfiguration::rules,
                          "InvalidRule",    "InvalidRule",
                          "SupportedRules", "RuleDescription"};

AnalyticsConfiguration* RequestedConfiguration(Call& call) {
    return FindByToken(call.state.media.analytics, call.Argument("ConfigurationToken"));
}

SoapFault NoConfiguration() {
    return InvalidArgument("NoConfig", "No such analytics configuration");
}

SoapFault Invalid(const ItemKind& kind, std::string_view what) {
    return InvalidArgument(std::string(kind.invalidItem), std::string(what) + " is not valid");
}

Answer WriteItems(Call& call, const ItemKind& kind) {
    const AnalyticsConfiguration* configuration = RequestedConfiguration(call);
    if (configuration == nullptr) {
        return NoConfiguration();
    }
    for (const AnalyticsItem& item : configuration->*kind.items) {
        WriteAnalyticsItem(call.out, Ns::kAnalytics, kind.element, item);
    }
    return kDone;
}

void WriteItemType(CXmlWriter& out, std::string_view element, std::string_view name,
                   const std::string& type) {
    const Scope item(out, Ns::kSchema, element);
    out.Attribute("Name", name);
    out.Attribute("Type", type);
}

// The kinds that there are, as many as there are: none can be created or removed.
Answer WriteSupported(Call& call, const ItemKind& kind) {
    const AnalyticsConfiguration* configuration = RequestedConfiguration(call);
    if (configuration == nullptr) {
        return NoConfiguration();
    }
    CXmlWriter& out = call.out;
    const auto& items = configuration->*kind.items;
    const Scope supported(out, Ns::kAnalytics, kind.supported);
    out.Attribute("Limit", static_cast<int>(items.size()));
    for (const AnalyticsItem& item : items) {
        const Scope description(out, Ns::kSchema, kind.description);
        out.Attribute("Name", out.QualifiedName(Ns::kSchema, item.type));
        out.Attribute("maxInstances", 1);
        const Scope parameters(out, Ns::kSchema, "Parameters");
        for (const auto& [name, value] : item.parameters) {
            const bool cells = name == kCellsParameter;
            WriteItemType(out, "SimpleItemDescription", name,
                          out.QualifiedName(Ns::kXmlSchema, cells ? "base64Binary" : "int"));
        }
        if (item.cells) {
            WriteItemType(out, "ElementItemDescription", "Layout",
                          out.QualifiedName(Ns::kSchema, "CellLayout"));
        }
    }
    return kDone;
}

std::string_view AttributeText(const XmlElement* element, const char* name) {
    const char* text = element == nullptr ? nullptr : element->Attribute(name);
    return text == nullptr ? "" : text;
}

bool IsValidParameter(std::string_view name, std::string_view value, Resolution layout) {
    if (value.size() > kLongestValue) {
        return false;
    }
    if (name == kCellsParameter) {
        return DecodeCells(value, layout).has_value();
    }
    for (const NumberParameter& row : kNumberParameters) {
        if (row.name != name) {
            continue;
        }
        const auto number = ToInt(value);
        return number && *number >= row.least && *number <= row.most;
    }
    return false;
}

// An item without a name is taken for the cells of the rule.
Answer ReadParameter(const XmlElement& given, const ItemKind& kind, Resolution layout,
                     AnalyticsItem& item) {
    const std::string_view name =
        given.Attribute("Name") == nullptr ? kCellsParameter : AttributeText(&given, "Name");
    const std::string_view value = AttributeText(&given, "Value");
    const auto parameter = std::find_if(item.parameters.begin(), item.parameters.end(),
                                        [name](const auto& each) { return each.first == name; });
    if (parameter == item.parameters.end() || !IsValidParameter(name, value, layout)) {
        return Invalid(kind, name.empty() ? "A parameter without a name" : name);
    }
    parameter->second = value;
    return kDone;
}

/// A vector of the transformation; true when it is absent or valid.
bool ReadVector(const XmlElement* given, PictureVector& vector) {
    if (given == nullptr) {
        return true;
    }
    const auto x = ToDouble(AttributeText(given, "x"));
    const auto y = ToDouble(AttributeText(given, "y"));
    if (!x || !y) {
        return false;
    }
    vector = {*x, *y};
    return true;
}

bool ReadLayout(const XmlElement* given, AnalyticsItem& item) {
    const auto columns = ToInt(AttributeText(given, "Columns"));
    const auto rows = ToInt(AttributeText(given, "Rows"));
    if (!item.cells || !columns || !rows || *columns < 1 || *rows < 1 ||
        *columns > kMostColumnsOrRows || *rows > kMostColumnsOrRows) {
        return false;
    }
    if (item.cells->width != *columns || item.cells->height != *rows) {
        item.transformation.reset();
    }
    item.cells = {*columns, *rows};
    const XmlElement* transformation = Child(given, "Transformation");
    if (transformation == nullptr) {
        return true;
    }
    CellTransformation changed = TransformationOf(item);
    if (!ReadVector(Child(transformation, "Translate"), changed.translate) ||
        !ReadVector(Child(transformation, "Scale"), changed.scale)) {
        return false;
    }
    item.transformation = changed;
    return true;
}

/// A type, when there is one, has to be that of the item; its prefix does not matter.
bool HasType(const XmlElement& given, const AnalyticsItem& item) {
    const std::string_view type = AttributeText(&given, "Type");
    return type.empty() || type.substr(type.find(':') + 1) == item.type;
}

Answer ReadItem(const XmlElement& given, const ItemKind& kind, Resolution layout,
                AnalyticsItem& item) {
    if (!HasType(given, item)) {
        return Invalid(kind, "Type");
    }
    const XmlElement* parameters = Child(&given, "Parameters");
    for (const XmlElement* parameter : Children(parameters, "SimpleItem")) {
        if (auto fault = ReadParameter(*parameter, kind, layout, item)) {
            return fault;
        }
    }
    for (const XmlElement* parameter : Children(parameters, "ElementItem")) {
        if (AttributeText(parameter, "Name") != "Layout" ||
            !ReadLayout(Child(parameter, "CellLayout"), item)) {
            return Invalid(kind, "Layout");
        }
    }
    return kDone;
}

/// Lets the rules keep their cells when the layout below them has changed.
void FollowLayout(AnalyticsConfiguration& configuration, Resolution before) {
    const Resolution after = LayoutOf(configuration);
    if (after.width == before.width && after.height == before.height) {
        return;
    }
    for (AnalyticsItem& rule : configuration.rules) {
        for (auto& [name, value] : rule.parameters) {
            if (name != kCellsParameter) {
                continue;
            }
            if (const auto cells = DecodeCells(value, before)) {
                value = EncodeCells(MoveCells(*cells, before, after));
            }
        }
    }
}

Answer ModifyItems(Call& call, const ItemKind& kind) {
    AnalyticsConfiguration* configuration = RequestedConfiguration(call);
    if (configuration == nullptr) {
        return NoConfiguration();
    }
    const auto given = Children(&call.request, kind.element);
    if (given.empty()) {
        return Invalid(kind, "A request without an item");
    }
    AnalyticsConfiguration changed = *configuration;
    const Resolution layout = LayoutOf(changed);
    auto& items = changed.*kind.items;
    for (const XmlElement* each : given) {
        const std::string_view name = AttributeText(each, "Name");
        const auto item =
            std::find_if(items.begin(), items.end(),
                         [name](const AnalyticsItem& candidate) { return candidate.name == name; });
        if (item == items.end()) {
            return InvalidArgument(std::string(kind.noSuchItem), "There is none of that name");
        }
        if (auto fault = ReadItem(*each, kind, layout, *item)) {
            return fault;
        }
    }
    FollowLayout(changed, layout);
    *configuration = std::move(changed);
    return kDone;
}

Answer GetAnalyticsModules(Call& call) {
    return WriteItems(call, kModules);
}
Answer ModifyAnalyticsModules(Call& call) {
    return ModifyItems(call, kModules);
}
Answer GetSupportedAnalyticsModules(Call& call) {
    return WriteSupported(call, kModules);
}
Answer GetRules(Call& call) {
    return WriteItems(call, kRules);
}
Answer ModifyRules(Call& call) {
    return ModifyItems(call, kRules);
}
Answer GetSupportedRules(Call& call) {
    return WriteSupported(call, kRules);
}

constexpr std::array kOperations = {
    Operation{"GetAnalyticsModules", GetAnalyticsModules},
    Operation{"ModifyAnalyticsModules", ModifyAnalyticsModules},
    Operation{"GetSupportedAnalyticsModules", GetSupportedAnalyticsModules},
    Operation{"GetRules", GetRules},
    Operation{"ModifyRules", ModifyRules},
    Operation{"GetSupportedRules", GetSupportedRules},
};

}  // namespace

std::span<const Operation> AnalyticsOperations() {
    return kOperations;
}

}  // namespace camera_sim
