#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/MergedValues.h"
#include "commands/StandardRequests.h"

namespace onvif_client {

namespace {

constexpr auto kGetAllOsds = SoapEnvelope(kTrt, FixedText("<trt:GetOSDs/>"));
constexpr auto kGetOsd = SoapEnvelope(kTrt, FixedText("<trt:GetOSD><trt:OSDToken/></trt:GetOSD>"));
constexpr auto kCreateOsd =
    SoapEnvelope(kTrt + kTt, FixedText("<trt:CreateOSD><trt:OSD/></trt:CreateOSD>"));
constexpr auto kSetOsd = SoapEnvelope(kTrt + kTt, FixedText("<trt:SetOSD><trt:OSD/></trt:SetOSD>"));

constexpr MergedValue kCoordinates[] = {{"@x", "x"}, {"@y", "y"}};
constexpr MergedValue kPosition[] = {{"tt:Type", "type"}, {"tt:Pos", nullptr, kCoordinates}};
constexpr MergedValue kColorValues[] = {{"@X"}, {"@Y"}, {"@Z"}, {"@Colorspace"}};
constexpr MergedValue kColor[] = {{"@Transparent"}, {"tt:Color", nullptr, kColorValues}};
constexpr MergedValue kText[] = {
    {"@IsPersistentText"},
    {"tt:Type", "type"},
    {"tt:DateFormat", "dateFormat"},
    {"tt:TimeFormat", "timeFormat"},
    {"tt:FontSize"},
    {"tt:FontColor", nullptr, kColor},
    {"tt:BackgroundColor", nullptr, kColor},
    {"tt:PlainText", "plainText"},
};
constexpr MergedValue kImage[] = {{"tt:ImgPath"}};
constexpr MergedValue kContent[] = {{"tt:Position", "pos", kPosition, ""},
                                    {"tt:TextString", nullptr, kText}};
constexpr MergedValue kPicture[] = {{"tt:Position", "pos", kPosition, ""},
                                    {"tt:Image", nullptr, kImage}};

void Remove(XMLElement* parent, const char* name) {
    if (XMLElement* found = FirstChild(parent, name)) {
        parent->DeleteChild(found);
    }
}

/// What one kind of position or text has says nothing of another.
void FitToTypes(XMLElement* osd) {
    XMLElement* position = FirstChild(osd, "tt:Position");
    if (TextAt(position, "tt:Type") != "Custom") {
        Remove(position, "tt:Pos");
    }
    XMLElement* text = FirstChild(osd, "tt:TextString");
    const std::string_view type = TextAt(text, "tt:Type");
    if (type != "Plain") {
        Remove(text, "tt:PlainText");
    }
    if (type != "DateAndTime" && type != "Date") {
        Remove(text, "tt:DateFormat");
    }
    if (type != "DateAndTime" && type != "Time") {
        Remove(text, "tt:TimeFormat");
    }
}

/// Only devices that show this element take it: the schema has none of its name.
void AddChannelName(const CommandRequest& request, const XMLElement* present, XMLElement* osd) {
    if (const XMLElement* shown = FindElement(present, "Extension/ChannelName")) {
        Append(osd, "tt:Extension/tt:ChannelName",
               request.Has("extensionswitch") ? request.Text("extensionswitch") : TextOf(shown));
    }
}

void FillOsd(const CommandRequest& request, const XMLElement* present, XMLElement* osd) {
    osd->SetAttribute("token", request.Text("token").c_str());
    const std::string source = VideoSourceConfigurationOf(request);
    const bool isText = request.Has("type") || TextAt(present, "Type") != "Image";
    const MergedValue entity[] = {{"tt:VideoSourceConfigurationToken",
                                   nullptr,
                                   {},
                                   source.empty() ? nullptr : source.c_str()}};
    MergeValues(nullptr, present, osd, entity);
    Append(osd, "tt:Type", isText ? "Text" : "Image");
    if (isText) {
        MergeValues(request.command, present, osd, kContent);
    } else {
        MergeValues(request.command, present, osd, kPicture);
    }
    FitToTypes(osd);
    AddChannelName(request, present, osd);
}

}  // namespace

std::string BuildStandardGetOsds(const CommandRequest& request) {
    return VideoSourceConfigurationOf(request).empty() ? std::string(kGetAllOsds)
                                                       : BuildGetOsds(request);
}

std::string BuildReadOsd(const CommandRequest& request) {
    CEnvelopeFiller envelope(kGetOsd, "trt:GetOSD");
    envelope.Copy(request, "token", "trt:OSDToken");
    return envelope.Print();
}

std::string BuildStandardCreateOsd(const CommandRequest& request) {
    CEnvelopeFiller envelope(kCreateOsd, "trt:CreateOSD");
    FillOsd(request, nullptr, envelope.Find("trt:OSD"));
    return envelope.Print();
}

std::string BuildStandardSetOsd(const CommandRequest& request) {
    CEnvelopeFiller envelope(kSetOsd, "trt:SetOSD");
    FillOsd(request, FindElement(request.answer, "Envelope/Body/GetOSDResponse/OSD"),
            envelope.Find("trt:OSD"));
    return envelope.Print();
}

}  // namespace onvif_client
