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

void ReadRange(const XMLElement* space, std::string_view axis, SpeedRange& range) {
    const XMLElement* found = FirstChild(space, axis);
    if (const XMLElement* minimum = FirstChild(found, "Min")) {
        range.minimum = ToInt(TextOf(minimum));
        range.exactMinimum = ToReal(TextOf(minimum));
    }
    if (const XMLElement* maximum = FirstChild(found, "Max")) {
        range.maximum = ToInt(TextOf(maximum));
        range.exactMaximum = ToReal(TextOf(maximum));
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
    ReadRange(panTilt, "XRange", ranges.pan);
    ReadRange(panTilt, "YRange", ranges.tilt);
    ReadRange(zoom, "XRange", ranges.zoom);
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
