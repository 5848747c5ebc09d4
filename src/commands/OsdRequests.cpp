#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/ServiceRequests.h"

namespace onvif_client {

namespace {

constexpr auto kGetOsds =
    SoapEnvelope(kTrt, FixedText("<trt:GetOSDs><trt:ConfigurationToken/></trt:GetOSDs>"));
constexpr auto kGetOsdOptions = SoapEnvelope(
    kTrt, FixedText("<trt:GetOSDOptions><trt:ConfigurationToken/></trt:GetOSDOptions>"));
constexpr auto kCreateOsd =
    SoapEnvelope(kTrt + kTt, FixedText("<trt:CreateOSD><trt:OSD/></trt:CreateOSD>"));
constexpr auto kSetOsd = SoapEnvelope(kTrt + kTt, FixedText("<trt:SetOSD><trt:OSD/></trt:SetOSD>"));
constexpr auto kDeleteOsd =
    SoapEnvelope(kTrt, FixedText("<trt:DeleteOSD><trt:OSDToken/></trt:DeleteOSD>"));

void AddCopy(CEnvelopeFiller& envelope, XMLElement* parent, const CommandRequest& request,
             std::string_view parameter, const char* element) {
    if (request.Has(parameter)) {
        envelope.Add(parent, element, request.Text(parameter));
    }
}

void AddPosition(CEnvelopeFiller& envelope, XMLElement* osd, const CommandRequest& request) {
    XMLElement* position = envelope.Add(osd, "tt:Position");
    AddCopy(envelope, position, request, "pos/type", "tt:Type");
    if (request.Text("pos/type") == "Custom") {
        XMLElement* place = envelope.Add(position, "tt:Pos");
        place->SetAttribute("x", request.Text("pos/x").c_str());
        place->SetAttribute("y", request.Text("pos/y").c_str());
    }
}

void AddText(CEnvelopeFiller& envelope, XMLElement* osd, const CommandRequest& request) {
    XMLElement* text = envelope.Add(osd, "tt:TextString");
    AddCopy(envelope, text, request, "type", "tt:Type");
    const std::string type = request.Text("type");
    if (type == "Plain") {
        AddCopy(envelope, text, request, "plainText", "tt:PlainText");
    } else if (type == "DateAndTime") {
        AddCopy(envelope, text, request, "dateFormat", "tt:DateFormat");
        AddCopy(envelope, text, request, "timeFormat", "tt:TimeFormat");
    }
}

/// A text OSD; other kinds are not written.
XMLElement* FillOsd(CEnvelopeFiller& envelope, const CommandRequest& request) {
    XMLElement* osd = envelope.Find("trt:OSD");
    osd->SetAttribute("token", request.Text("token").c_str());
    if (const std::string source = VideoSourceConfigurationOf(request); !source.empty()) {
        envelope.Add(osd, "tt:VideoSourceConfigurationToken", source);
    }
    envelope.Add(osd, "tt:Type", "Text");
    AddPosition(envelope, osd, request);
    AddText(envelope, osd, request);
    return osd;
}

}  // namespace

std::string VideoSourceConfigurationOf(const CommandRequest& request) {
    return request.profile == nullptr ? "" : request.profile->videoSourceConfigurationToken;
}

std::string BuildGetOsds(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetOsds, "trt:GetOSDs");
    envelope.Set("trt:ConfigurationToken", VideoSourceConfigurationOf(request));
    return envelope.Print();
}

std::string BuildGetOsdOptions(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetOsdOptions, "trt:GetOSDOptions");
    envelope.Set("trt:ConfigurationToken", VideoSourceConfigurationOf(request));
    return envelope.Print();
}

std::string BuildCreateOsd(const CommandRequest& request) {
    CEnvelopeFiller envelope(kCreateOsd, "trt:CreateOSD");
    FillOsd(envelope, request);
    return envelope.Print();
}

std::string BuildSetOsd(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetOsd, "trt:SetOSD");
    XMLElement* osd = FillOsd(envelope, request);
    if (request.Has("extensionswitch")) {
        envelope.Add(osd, "tt:Extension/tt:ChannelName", request.Text("extensionswitch"));
    }
    return envelope.Print();
}

std::string BuildDeleteOsd(const CommandRequest& request) {
    CEnvelopeFiller envelope(kDeleteOsd, "trt:DeleteOSD");
    envelope.Copy(request, "token", "trt:OSDToken");
    return envelope.Print();
}

}  // namespace onvif_client
