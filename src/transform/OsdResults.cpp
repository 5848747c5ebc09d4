#include "transform/MediaResults.h"

namespace onvif_client {

namespace {

constexpr CopiedValue kPosition[] = {{"Type", "type"}, {"Pos/@x", "x"}, {"Pos/@y", "y"}};
constexpr CopiedValue kColor[] = {{"@Transparent", "transparent"},
                                  {"Color/@X", "x"},
                                  {"Color/@Y", "y"},
                                  {"Color/@Z", "z"},
                                  {"Color/@Colorspace", "colorspace"}};
// `type` is the text's type, because that is what the commands that write an OSD read there.
constexpr CopiedValue kOsd[] = {
    {"@token", "token"},
    {"VideoSourceConfigurationToken", "videoSourceCfgToken"},
    {"Type", "osdType"},
    {"Position", "pos", kPosition},
    {"TextString/Type", "type"},
    {"TextString/PlainText", "plainText"},
    {"TextString/DateFormat", "dateFormat"},
    {"TextString/TimeFormat", "timeFormat"},
    {"TextString/@IsPersistentText", "persistentText"},
    {"TextString/FontSize", "fontSize"},
    {"TextString/FontColor", "fontColor", kColor},
    {"TextString/BackgroundColor", "backgroundColor", kColor},
    {"Image/ImgPath", "imgPath"},
};

constexpr CopiedValue kRange[] = {{"Min", "min"}, {"Max", "max"}};
constexpr CopiedValue kColorOptions[] = {{"Transparent", "transparent", kRange}};
constexpr CopiedValue kMaximum[] = {{"@Total", "total"},         {"@Image", "image"},
                                    {"@PlainText", "plainText"}, {"@Date", "date"},
                                    {"@Time", "time"},           {"@DateAndTime", "dateAndTime"}};
constexpr CopiedValue kCounts[] = {{"MaximumNumberOfOSDs", "maximumNumber", kMaximum},
                                   {"Type*", "osdType"}};
constexpr CopiedValue kPositions[] = {{"PositionOption*", "type"}};
constexpr CopiedValue kTextOptions[] = {
    {"TextOption/Type*", "type"},
    {"TextOption/DateFormat*", "dateFormat"},
    {"TextOption/TimeFormat*", "timeFormat"},
    {"TextOption/FontSizeRange", "fontSize", kRange},
};
constexpr CopiedValue kFontColor[] = {{"TextOption/FontColor", "fontColor", kColorOptions}};
constexpr CopiedValue kBackground[] = {
    {"TextOption/BackgroundColor", "backgroundColor", kColorOptions}};
constexpr CopiedValue kImages[] = {{"ImageOption/ImagePath*", "imgPath"}};

void CopyOsds(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* response = FindElement(reply.envelope, "Envelope/Body/GetOSDsResponse");
    for (const XMLElement* osd : Children(response, "OSDs")) {
        XMLElement* item = Append(command, "item");
        CopyValues(osd, item, kOsd);
        // Devices put the extension at either place.
        const XMLElement* channel = FindElement(osd, "Extension/ChannelName");
        if (channel == nullptr) {
            channel = FindElement(osd, "TextString/Extension/ChannelName");
        }
        if (channel != nullptr) {
            Append(item, "extensionswitch", TextOf(channel));
        }
    }
}

void CopyOsdOptions(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* options =
        FindElement(reply.envelope, "Envelope/Body/GetOSDOptionsResponse/OSDOptions");
    CopyValues(options, command, kCounts);
    if (FirstChild(options, "PositionOption") != nullptr) {
        CopyValues(options, Append(command, "pos"), kPositions);
    }
    CopyValues(options, command, kTextOptions);
    if (FindElement(options, "TextOption/FontColor/Transparent") != nullptr) {
        CopyValues(options, command, kFontColor);
    }
    if (FindElement(options, "TextOption/BackgroundColor/Transparent") != nullptr) {
        CopyValues(options, command, kBackground);
    }
    CopyValues(options, command, kImages);
}

void CopyNewOsd(const ReplyValues& reply, XMLElement* command) {
    constexpr CopiedValue kRows[] = {{"OSDToken", "token"}};
    CopyValues(FindElement(reply.envelope, "Envelope/Body/CreateOSDResponse"), command, kRows);
}

}  // namespace

constinit const ResultFrame kOsdResult = {"GetResponse", "osd", CopyOsds};
constinit const ResultFrame kOsdOptionsResult = {"GetResponse", "osdoption", CopyOsdOptions};
constinit const ResultFrame kCreateOsdResult = {"CreateResponse", "createosd", CopyNewOsd};

}  // namespace onvif_client
