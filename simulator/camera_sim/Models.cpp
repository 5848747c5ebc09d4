#include "camera_sim/Models.h"

#include <array>

#include "camera_sim/soap/ActiveCells.h"

using namespace std::chrono_literals;

namespace camera_sim {
namespace {

/// One stream of a model.
struct Stream {
    std::string name;
    std::string encoding;
    Resolution resolution;
    int frameRate;
    int bitrate;
};

/// Which configurations a profile has.
struct Wiring {
    std::string channel;  ///< ends the tokens of its video source and analytics
    std::string stream;   ///< ends its own token and that of its encoder
    Multicast multicast;
    bool audio = false;
};

void AddProfile(Media& media, const Stream& stream, Wiring wiring) {
    VideoEncoder encoder;
    encoder.token = "VideoEncoder_" + wiring.stream;
    encoder.name = stream.name + " encoder";
    encoder.encoding = stream.encoding;
    encoder.resolution = stream.resolution;
    encoder.largest = stream.resolution;
    encoder.frameRate = stream.frameRate;
    encoder.bitrate = stream.bitrate;
    encoder.govLength = stream.frameRate * 2;
    encoder.multicast = std::move(wiring.multicast);

    Profile profile;
    profile.token = "Profile_" + wiring.stream;
    profile.name = stream.name;
    profile.videoSource = "VideoSourceConfig_" + wiring.channel;
    profile.videoEncoder = encoder.token;
    profile.analytics = "Analytics_" + wiring.channel;
    profile.metadata = "Metadata_1";
    if (wiring.audio) {
        profile.audioSource = "AudioSourceConfig_1";
        profile.audioEncoder = "AudioEncoder_1";
    }
    media.videoEncoders.push_back(std::move(encoder));
    media.profiles.push_back(std::move(profile));
}

void AddStreams(Media& media, const std::vector<Stream>& streams, bool audio) {
    int number = 0;
    for (const Stream& stream : streams) {
        const std::string suffix = std::to_string(++number);
        AddProfile(media, stream,
                   {"1", suffix, {"239.255.42." + suffix, 32000 + 2 * number, 16}, audio});
    }
}

/// The cells in the middle half of the picture, either way.
Cells MiddleOf(Resolution layout) {
    Cells cells;
    for (int row = 0; row < layout.height; ++row) {
        for (int column = 0; column < layout.width; ++column) {
            const bool inside = 4 * row >= layout.height && 4 * row < 3 * layout.height &&
                                4 * column >= layout.width && 4 * column < 3 * layout.width;
            cells.push_back(inside);
        }
    }
    return cells;
}

/// A video source with its configuration and analytics; their tokens end with @p channel.
void AddChannel(Media& media, const std::string& channel, Resolution sensor, bool motorizedFocus) {
    constexpr Resolution kCells{22, 18};
    const std::string source = "VideoSource_" + channel;
    media.videoSources.push_back({source, sensor, motorizedFocus, {}, {}});
    media.videoSourceConfigurations.push_back(
        {"VideoSourceConfig_" + channel, "Sensor", source, sensor});
    media.analytics.push_back(
        {"Analytics_" + channel,
         "Analytics",
         {{"CellMotion", "CellMotionEngine", {{"Sensitivity", "60"}}, kCells, {}}},
         {{"MotionRule",
           "CellMotionDetector",
           {{"MinCount", "5"},
            {"AlarmOnDelay", "100"},
            {"AlarmOffDelay", "100"},
            {"ActiveCells", EncodeCells(MiddleOf(kCells))}},
           {},
           {}}}});
}

Media MakeMedia(Resolution sensor, bool motorizedFocus) {
    Media media;
    AddChannel(media, "1", sensor, motorizedFocus);
    media.metadata.push_back({"Metadata_1", "Metadata", {"239.255.42.100", 32100, 16}});
    return media;
}

void AddAudio(Media& media) {
    media.audioSourceConfigurations.push_back(
        {"AudioSourceConfig_1", "Microphone", "AudioSource_1"});
    media.audioEncoders.push_back(
        {"AudioEncoder_1", "Speech", "G711", 64, 8, {"239.255.42.90", 32090, 16}});
}

void AddPtz(Media& media) {
    PtzConfiguration ptz;
    ptz.token = "PtzConfig_1";
    ptz.name = "PTZ";
    ptz.node = "PtzNode_1";
    for (Profile& profile : media.profiles) {
        profile.ptz = ptz.token;
    }
    media.ptz.push_back(std::move(ptz));
}

PtzHead MakeHead() {
    PtzHead head;
    head.presets = {{"Preset_1", "Entrance", {-0.5, 0.1, 0}},
                    {"Preset_2", "Yard", {0.6, -0.2, 0.4}}};
    head.tours = {{"Tour_3", "Round", "Idle", {{"Preset_1", 10s}, {"Preset_2", 20s}}}};
    head.lastNumber = 3;
    return head;
}

void AddOsd(Media& media, const std::string& source, const std::string& text) {
    Osd osd;
    osd.token = "OSD_" + std::to_string(++media.lastOsdNumber);
    osd.source = source;
    osd.plainText = text;
    media.osds.push_back(std::move(osd));
}

Network MakeNetwork(const std::string& hostname, const std::string& hwAddress) {
    NetworkInterface interface;
    interface.token = "eth0";
    interface.name = "eth0";
    interface.hwAddress = hwAddress;
    interface.manual = {{"192.0.2.10", 24}};
    interface.fromDhcp = PrefixedAddress{"192.0.2.200", 24};

    Network network;
    network.hostname = hostname;
    network.interfaces = {std::move(interface)};
    network.gatewaysIpv4 = {"192.0.2.1"};
    network.nameServers.dhcpAddresses = {"192.0.2.2"};
    network.nameServers.manualAddresses = {"192.0.2.3"};
    network.protocols = {{"HTTP", true, {80}}, {"HTTPS", false, {443}}, {"RTSP", true, {554}}};
    return network;
}

CameraState MakeDome(const CameraOptions&) {
    CameraState state;
    state.information = {"Simulated Cameras", "SIM-DOME", "1.4.2", "SD-000001", "1.0"};
    state.network = MakeNetwork("sim-dome", "02:00:5e:00:53:01");
    state.relays = {{.token = "Relay_1"}, {.token = "Relay_2"}};
    state.inputs = {{.token = "Input_1"}, {.token = "Input_2"}};
    state.media = MakeMedia({2560, 1440}, true);
    AddAudio(state.media);
    AddStreams(state.media,
               {{"MainStream", "H265", {2560, 1440}, 25, 4096},
                {"SubStream", "H264", {704, 576}, 25, 768},
                {"MobileStream", "JPEG", {352, 288}, 10, 512}},
               true);
    AddOsd(state.media, "VideoSourceConfig_1", state.information.model);
    return state;
}

CameraState MakeFixed(const CameraOptions&) {
    CameraState state;
    state.information = {"Simulated Cameras", "SIM-FIXED", "1.1.0", "SF-000001", "1.0"};
    state.network = MakeNetwork("sim-fixed", "02:00:5e:00:53:02");
    state.relays = {{.token = "Relay_1"}};
    state.inputs = {{.token = "Input_1"}};
    state.media = MakeMedia({1920, 1080}, false);
    AddStreams(state.media,
               {{"MainStream", "H264", {1920, 1080}, 25, 2048},
                {"SubStream", "H264", {640, 480}, 15, 512}},
               false);
    return state;
}

/// What a recorder finds in the pictures of a channel, besides motion.
void AddRecorderRules(AnalyticsConfiguration& analytics) {
    const std::string schedule =
        "Mon 00:00-24:00;Tue 00:00-24:00;Wed 00:00-24:00;Thu 00:00-24:00;Fri 00:00-24:00";
    analytics.modules.push_back({"ObjectEngine",
                                 "ObjectEngine",
                                 {{"Sensitivity", "50"},
                                  {"MinimumSize", "0.02 0.02"},
                                  {"MaximumSize", "0.9 0.9"},
                                  {"Classes", "Human Vehicle Animal Other"}},
                                 {},
                                 {}});
    for (const char* const name : {"LineRule", "FieldRule"}) {
        const bool line = name[0] == 'L';
        analytics.rules.push_back({name,
                                   line ? "LineDetector" : "FieldDetector",
                                   {{"Segments", "-0.8 0.1 -0.2 0.15 0.3 0.1 0.8 0.12"},
                                    {"Direction", "Any"},
                                    {"ClassFilter", "Human Vehicle"},
                                    {"MinimumConfidence", "0.6"},
                                    {"Schedule", schedule}},
                                   {},
                                   {}});
    }
}

CameraState MakeRecorder(const CameraOptions& options) {
    constexpr Resolution kSensor{2560, 1440};
    CameraState state;
    state.information = {"Simulated Cameras", "SIM-RECORDER", "3.2.0", "SR-000001", "2.0"};
    state.network = MakeNetwork("sim-recorder", "02:00:5e:00:53:03");
    state.relays = {{.token = "Relay_1"}, {.token = "Relay_2"}};
    Media& media = state.media;
    AddAudio(media);
    media.metadata.push_back({"Metadata_1", "Metadata", {"239.255.42.100", 32100, 16}});
    for (int number = 1; number <= options.channels; ++number) {
        const std::string channel = std::to_string(number);
        const std::string name = "Channel " + channel;
        state.inputs.push_back({.token = "Input_" + channel});
        AddChannel(media, channel, kSensor, false);
        AddRecorderRules(media.analytics.back());
        AddOsd(media, "VideoSourceConfig_" + channel, name);
        const Multicast main{"239.255.43." + channel, 32000 + 4 * number, 16};
        const Multicast sub{"239.255.44." + channel, 32002 + 4 * number, 16};
        AddProfile(media, {name + " main", "H265", kSensor, 25, 4096},
                   {channel, channel + "_Main", main, true});
        AddProfile(media, {name + " sub", "H264", {704, 576}, 15, 512},
                   {channel, channel + "_Sub", sub, true});
    }
    return state;
}

struct Model {
    std::string_view name;
    CameraState (*make)(const CameraOptions&);
    bool media2;
    bool ptz;
    HttpScheme snapshotAuthentication;
};

constexpr std::array kModels = {
    Model{"dome", MakeDome, true, true, HttpScheme::kDigest},
    Model{"fixed", MakeFixed, false, false, HttpScheme::kBasic},
    Model{"recorder", MakeRecorder, true, false, HttpScheme::kDigest},
};

}  // namespace

std::optional<CameraState> MakeModel(CameraOptions& options) {
    for (const Model& model : kModels) {
        if (model.name != options.model) {
            continue;
        }
        CameraState state = model.make(options);
        state.clock.offset = options.clockOffset;
        state.clock.type = options.clockOffset.count() == 0 ? "NTP" : "Manual";
        if (!options.user.empty()) {
            state.users.push_back({options.user, options.password});
        }
        state.users.insert(state.users.end(), options.accounts.begin(), options.accounts.end());
        options.media2 = options.media2.value_or(model.media2);
        options.ptz = options.ptz.value_or(model.ptz);
        if (*options.ptz) {
            AddPtz(state.media);
            state.ptz = MakeHead();
        }
        options.snapshotAuthentication =
            options.snapshotAuthentication.value_or(model.snapshotAuthentication);
        return state;
    }
    return std::nullopt;
}

}  // namespace camera_sim
