#include "transform/MediaProfile.h"

#include <span>

#include "transform/Conversions.h"
#include "transform/FaultReaders.h"
#include "transform/XmlTransform.h"

namespace onvif_client {

namespace {

struct ProfileField {
    std::string MediaProfile::*field;
    // Of the two, the one that exists below the profile.
    std::string_view configuration10;  // GetProfiles of the ver10 media service
    std::string_view configuration20;  // GetProfiles of the ver20 media service
    std::string_view child;            // empty: the configuration's token
};

constexpr ProfileField kFields[] = {
    {&MediaProfile::videoSourceToken, "VideoSourceConfiguration", "Configurations/VideoSource",
     "SourceToken"},
    {&MediaProfile::videoSourceConfigurationToken, "VideoSourceConfiguration",
     "Configurations/VideoSource", ""},
    {&MediaProfile::videoEncoderConfigurationToken, "VideoEncoderConfiguration",
     "Configurations/VideoEncoder", ""},
    {&MediaProfile::videoEncoderConfigurationName, "VideoEncoderConfiguration",
     "Configurations/VideoEncoder", "Name"},
    {&MediaProfile::ptzConfigurationToken, "PTZConfiguration", "Configurations/PTZ", ""},
    {&MediaProfile::videoAnalyticsConfigurationToken, "VideoAnalyticsConfiguration",
     "Configurations/Analytics", ""},
};

std::string TokenOf(const XMLElement* element) {
    const char* token = AttributeOf(element, "token");
    return token == nullptr ? "" : token;
}

MediaProfile ReadProfile(const XMLElement* element) {
    MediaProfile profile;
    profile.token = TokenOf(element);
    for (const ProfileField& row : kFields) {
        const XMLElement* configuration = FindElement(element, row.configuration10);
        if (configuration == nullptr) {
            configuration = FindElement(element, row.configuration20);
        }
        profile.*row.field = row.child.empty() ? TokenOf(configuration)
                                               : std::string(TextAt(configuration, row.child));
    }
    return profile;
}

void ReadRangeEnd(const XMLElement* space, std::string_view path, int& value) {
    if (const XMLElement* element = FindElement(space, path)) {
        value = ToInt(TextOf(element));
    }
}

}  // namespace

bool ReadProfiles(std::string_view reply, ProfileList& profiles) {
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    if (!ParseFault(trimmed.Root(), nullptr)) {
        return false;
    }
    profiles.clear();
    const XMLElement* response = trimmed.Find("Envelope/Body/GetProfilesResponse");
    for (const XMLElement* each : Children(response, "Profiles")) {
        profiles.push_back(ReadProfile(each));
    }
    return true;
}

void ReadPtzRanges(std::string_view reply, PtzRanges& ranges) {
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    const XMLElement* spaces = trimmed.Find(
        "Envelope/Body/GetConfigurationOptionsResponse/PTZConfigurationOptions/Spaces");
    const XMLElement* panTilt = FirstChild(spaces, "ContinuousPanTiltVelocitySpace");
    const XMLElement* zoom = FirstChild(spaces, "ContinuousZoomVelocitySpace");
    ReadRangeEnd(panTilt, "XRange/Min", ranges.pan.minimum);
    ReadRangeEnd(panTilt, "XRange/Max", ranges.pan.maximum);
    ReadRangeEnd(panTilt, "YRange/Min", ranges.tilt.minimum);
    ReadRangeEnd(panTilt, "YRange/Max", ranges.tilt.maximum);
    ReadRangeEnd(zoom, "XRange/Min", ranges.zoom.minimum);
    ReadRangeEnd(zoom, "XRange/Max", ranges.zoom.maximum);
}

void ReadFocusSpeedRange(std::string_view reply, FocusSpeedRange& range) {
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    const XMLElement* speed =
        trimmed.Find("Envelope/Body/GetMoveOptionsResponse/MoveOptions/Continuous/Speed");
    if (const XMLElement* minimum = FirstChild(speed, "Min")) {
        range.minimum = TextOf(minimum);
    }
    if (const XMLElement* maximum = FirstChild(speed, "Max")) {
        range.maximum = TextOf(maximum);
    }
}

}  // namespace onvif_client
