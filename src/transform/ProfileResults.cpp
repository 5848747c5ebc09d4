#include "transform/MediaResults.h"

namespace onvif_client {

namespace {

constexpr CopiedValue kProfile[] = {{"@token", "token"}, {"@fixed", "fixed"}, {"Name", "name"}};
constexpr CopiedValue kIdentity[] = {
    {"@token", "token"}, {"Name", "name"}, {"UseCount", "useCount"}};
constexpr CopiedValue kBounds[] = {
    {"@x", "x"}, {"@y", "y"}, {"@width", "width"}, {"@height", "height"}};
constexpr CopiedValue kVideoSource[] = {{"SourceToken", "videoSourceToken"},
                                        {"Bounds", "bounds", kBounds}};
constexpr CopiedValue kAudioSource[] = {{"SourceToken", "audioSourceToken"}};
constexpr CopiedValue kAudioEncoder[] = {
    {"Encoding", "encode"}, {"Bitrate", "bitrate"}, {"SampleRate", "sampleRate"}};
constexpr CopiedValue kPtz[] = {{"NodeToken", "nodeToken"}};

struct Configuration {
    std::string_view source10;  // ver10 media service, relative to the profile
    std::string_view source20;  // ver20
    std::string_view element;
    std::span<const CopiedValue> values = {};  // behind the identity
    bool isVideoEncoder = false;
};

constexpr Configuration kConfigurations[] = {
    {"VideoSourceConfiguration", "Configurations/VideoSource", "videoSourceCfg", kVideoSource},
    {"VideoEncoderConfiguration", "Configurations/VideoEncoder", "videoEncoderCfg", {}, true},
    {"AudioSourceConfiguration", "Configurations/AudioSource", "audioSourceCfg", kAudioSource},
    {"AudioEncoderConfiguration", "Configurations/AudioEncoder", "audioEncoderCfg", kAudioEncoder},
    {"VideoAnalyticsConfiguration", "Configurations/Analytics", "videoAnalyticsCfg"},
    {"PTZConfiguration", "Configurations/PTZ", "ptzCfg", kPtz},
    {"MetadataConfiguration", "Configurations/Metadata", "metadataCfg"},
};

void CopyProfile(const XMLElement* profile, int index, XMLElement* command) {
    XMLElement* item = Append(command, "item");
    Append(item, "index", index);
    CopyValues(profile, item, kProfile);
    for (const Configuration& row : kConfigurations) {
        const XMLElement* source = FindElement(profile, row.source10);
        if (source == nullptr) {
            source = FindElement(profile, row.source20);
        }
        if (source == nullptr) {
            continue;
        }
        XMLElement* copied = Append(item, row.element);
        if (row.isVideoEncoder) {
            CopyVideoEncoderConfiguration(source, copied);
            continue;
        }
        CopyValues(source, copied, kIdentity);
        CopyValues(source, copied, row.values);
    }
}

void CopyProfiles(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* response = FindElement(reply.envelope, "Envelope/Body/GetProfilesResponse");
    int index = 0;
    for (const XMLElement* each : Children(response, "Profiles")) {
        CopyProfile(each, index++, command);
    }
}

void CopyChosenProfile(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* profile =
        FindElement(reply.envelope, "Envelope/Body/GetProfileResponse/Profile");
    if (profile != nullptr) {
        CopyProfile(profile, reply.subject.index, command);
    }
}

}  // namespace

constinit const ResultFrame kProfilesResult = {"GetResponse", "profiles", CopyProfiles};
constinit const ResultFrame kProfileResult = {"GetResponse", "profile", CopyChosenProfile};

}  // namespace onvif_client
