#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/ServiceRequests.h"
#include "transform/Conversions.h"
#include "transform/MotionCells.h"

namespace onvif_client {

namespace {

constexpr auto kGetModules =
    SoapEnvelope(kAna, FixedText("<ana:GetAnalyticsModules><ana:ConfigurationToken/>"
                                 "</ana:GetAnalyticsModules>"));
constexpr auto kGetRules =
    SoapEnvelope(kAna, FixedText("<ana:GetRules><ana:ConfigurationToken/></ana:GetRules>"));
constexpr auto kModifyModules = SoapEnvelope(
    kAna + kTt,
    FixedText("<ana:ModifyAnalyticsModules><ana:ConfigurationToken/>"
              "<ana:AnalyticsModule Name=\"\" Type=\"tt:CellMotionEngine\"><tt:Parameters/>"
              "</ana:AnalyticsModule></ana:ModifyAnalyticsModules>"));
constexpr auto kModifyRules =
    SoapEnvelope(kAna + kTt, FixedText("<ana:ModifyRules><ana:ConfigurationToken/>"
                                       "<ana:Rule Name=\"\" Type=\"tt:CellMotionDetector\">"
                                       "<tt:Parameters/></ana:Rule></ana:ModifyRules>"));

std::string AskByToken(std::string_view envelopeTemplate, const char* operation,
                       const CommandRequest& request) {
    CEnvelopeFiller envelope(envelopeTemplate, operation);
    envelope.Set("ana:ConfigurationToken", AnalyticsTokenOf(request));
    return envelope.Print();
}

XMLElement* AddItem(CEnvelopeFiller& envelope, XMLElement* parameters, const char* element,
                    const char* name) {
    XMLElement* item = envelope.Add(parameters, element);
    item->SetAttribute("Name", name);
    return item;
}

void CopyAttribute(const CommandRequest& request, std::string_view parameter, XMLElement* element,
                   const char* attribute) {
    if (request.Has(parameter)) {
        element->SetAttribute(attribute, request.Text(parameter).c_str());
    }
}

std::vector<std::string> AreaItems(const XMLElement* area) {
    std::vector<std::string> items;
    for (const XMLElement* item : Children(area, "item")) {
        items.emplace_back(TextOf(item));
    }
    return items;
}

}  // namespace

std::string AnalyticsTokenOf(const CommandRequest& request) {
    if (request.Has("token") || request.profile == nullptr) {
        return request.Text("token");
    }
    return request.profile->videoAnalyticsConfigurationToken;
}

std::string BuildGetAnalyticsModules(const CommandRequest& request) {
    return AskByToken(kGetModules, "ana:GetAnalyticsModules", request);
}

std::string BuildGetRules(const CommandRequest& request) {
    return AskByToken(kGetRules, "ana:GetRules", request);
}

std::string BuildModifyAnalyticsModules(const CommandRequest& request) {
    CEnvelopeFiller envelope(kModifyModules, "ana:ModifyAnalyticsModules");
    envelope.Set("ana:ConfigurationToken", AnalyticsTokenOf(request));
    CopyAttribute(request, "name", envelope.Find("ana:AnalyticsModule"), "Name");

    XMLElement* parameters = envelope.Find("ana:AnalyticsModule/tt:Parameters");
    if (request.Has("sensitivity")) {
        XMLElement* item = AddItem(envelope, parameters, "tt:SimpleItem", "Sensitivity");
        CopyAttribute(request, "sensitivity", item, "Value");
    }
    if (request.Has("columns") || request.Has("rows")) {
        XMLElement* item = AddItem(envelope, parameters, "tt:ElementItem", "Layout");
        XMLElement* layout = envelope.Add(item, "tt:CellLayout");
        CopyAttribute(request, "columns", layout, "Columns");
        CopyAttribute(request, "rows", layout, "Rows");
    }
    return envelope.Print();
}

std::string BuildModifyRules(const CommandRequest& request) {
    CEnvelopeFiller envelope(kModifyRules, "ana:ModifyRules");
    envelope.Set("ana:ConfigurationToken", AnalyticsTokenOf(request));
    const char* name = request.Has("ruleName") ? "ruleName" : "name";
    CopyAttribute(request, name, envelope.Find("ana:Rule"), "Name");

    if (const XMLElement* area = FindElement(request.command, "area")) {
        const CellRows cells = ArrangeCells(AreaItems(area), ToInt(request.Text("columns")),
                                            ToInt(request.Text("rows")));
        XMLElement* item = AddItem(envelope, envelope.Find("ana:Rule/tt:Parameters"),
                                   "tt:SimpleItem", "ActiveCells");
        item->SetAttribute("Value", EncodeActiveCells(cells).c_str());
    }
    return envelope.Print();
}

}  // namespace onvif_client
