/// @file
/// What a simulated camera knows about itself: the values that its operations show and change.
/// Plain data. Enumerated values are kept in the words of the protocol ("Bistable", "open").
#ifndef CAMERA_SIM_STATE_CAMERASTATE_H
#define CAMERA_SIM_STATE_CAMERASTATE_H

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "camera_sim/state/ImagingState.h"
#include "camera_sim/state/User.h"

namespace camera_sim {

struct DeviceInformation {
    std::string manufacturer;
    std::string model;
    std::string firmwareVersion;
    std::string serialNumber;
    std::string hardwareId;
};

struct CameraClock {
    /// The camera's time is this machine's time plus the offset.
    std::chrono::seconds offset{0};
    std::string type = "NTP";  ///< "NTP" or "Manual"
    bool daylightSavings = false;
    std::string timeZone = "UTC0";  ///< POSIX 1003.1
};

struct PrefixedAddress {
    std::string address;
    int prefixLength = 24;
};

struct NetworkInterface {
    std::string token;
    bool enabled = true;
    std::string name;
    std::string hwAddress;
    int mtu = 1500;
    bool autoNegotiation = true;
    int speed = 100;  ///< Mbit/s
    std::string duplex = "Full";
    bool ipv4Enabled = true;
    std::vector<PrefixedAddress> manual;
    std::optional<PrefixedAddress> fromDhcp;
    bool dhcp = false;
};

struct NetworkProtocol {
    std::string name;  ///< "HTTP", "HTTPS" or "RTSP"
    bool enabled = true;
    std::vector<int> ports;
};

struct NameServers {
    bool fromDhcp = false;
    std::vector<std::string> searchDomains;
    std::vector<std::string> dhcpAddresses;
    std::vector<std::string> manualAddresses;
};

/// Addresses or names.
struct TimeServers {
    bool fromDhcp = false;
    std::vector<std::string> dhcpHosts = {"192.0.2.4"};
    std::vector<std::string> manualHosts = {"192.0.2.5"};
};

struct Network {
    std::string hostname;
    std::vector<NetworkInterface> interfaces;
    std::vector<std::string> gatewaysIpv4;
    std::vector<std::string> gatewaysIpv6;
    NameServers nameServers;
    TimeServers timeServers;
    std::vector<NetworkProtocol> protocols;
};

struct RelayOutput {
    std::string token;
    std::string mode = "Bistable";   ///< "Bistable" or "Monostable"
    std::string delayTime = "PT0S";  ///< how long a monostable relay stays active
    std::string idleState = "open";  ///< "open" or "closed"
    bool active = false;
};

struct DigitalInput {
    std::string token;
    std::string idleState = "open";
    bool active = false;
};

struct Range {
    double minimum = 0;
    double maximum = 0;
};

struct Resolution {
    int width = 0;
    int height = 0;
};

struct Multicast {
    std::string address = "0.0.0.0";
    int port = 0;
    int ttl = 0;
    bool autoStart = false;
};

struct VideoSource {
    std::string token;
    Resolution resolution;
    bool motorizedFocus = false;
    ImagingSettings imaging{};
    FocusLens lens{};
    bool motion = false;
};

struct VideoSourceConfiguration {
    std::string token;
    std::string name;
    std::string source;
    Resolution bounds;
};

struct VideoEncoder {
    std::string token;
    std::string name;
    /// "JPEG", "MPEG4", "H264" or "H265". The first media service does not know the last.
    std::string encoding = "H264";
    Resolution resolution;
    Resolution largest;  ///< that the encoder can be set to
    double quality = 4;
    int frameRate = 25;
    int bitrate = 2048;  ///< kbit/s
    int govLength = 50;
    std::string profile = "Main";
    int encodingInterval = 1;  ///< every so many frames are sent; not with the second service
    bool constantBitrate = false;
    std::string sessionTimeout = "PT60S";
    Multicast multicast;
};

struct AudioSourceConfiguration {
    std::string token;
    std::string name;
    std::string source;
};

struct AudioEncoder {
    std::string token;
    std::string name;
    std::string encoding = "G711";
    int bitrate = 64;    ///< kbit/s
    int sampleRate = 8;  ///< kHz
    Multicast multicast;
};

/// How the cells lie on the picture, from -1 to 1 either way.
struct PictureVector {
    double x = 0;
    double y = 0;
};
struct CellTransformation {
    PictureVector translate{-1, -1};
    PictureVector scale;
};

/// One analytics module or rule.
struct AnalyticsItem {
    std::string name;
    std::string type;  ///< local name in the schema namespace, e.g. "CellMotionEngine"
    std::vector<std::pair<std::string, std::string>> parameters;
    std::optional<Resolution> cells;                     ///< columns and rows of a cell layout
    std::optional<CellTransformation> transformation{};  ///< unset: the cells fill the picture
};

struct AnalyticsConfiguration {
    std::string token;
    std::string name;
    std::vector<AnalyticsItem> modules;
    std::vector<AnalyticsItem> rules;
};

struct PtzConfiguration {
    std::string token;
    std::string name;
    std::string node;
    Range pan{-1, 1};
    Range tilt{-1, 1};
    Range zoom{0, 1};
    Range panSpeed{-1, 1};
    Range tiltSpeed{-1, 1};
    Range zoomSpeed{-1, 1};
    std::chrono::seconds defaultTimeout{10};
    std::chrono::seconds minimumTimeout{1};
    std::chrono::seconds maximumTimeout{60};
};

struct MetadataConfiguration {
    std::string token;
    std::string name;
    Multicast multicast;
};

/// A text on the picture.
struct Osd {
    std::string token;
    std::string source;                  ///< a video source configuration
    std::string position = "UpperLeft";  ///< a corner, or "Custom"
    double x = 0;                        ///< where a custom text stands, -1 to 1 left to right
    double y = 0;                        ///< the same bottom to top
    std::string textType = "Plain";      ///< "Plain", "Date", "Time" or "DateAndTime"
    std::string plainText;
    std::string dateFormat = "MM/dd/yyyy";
    std::string timeFormat = "HH:mm:ss";
    std::optional<std::string> channelName;  ///< a vendor's addition, kept as it came
};

/// A media profile: the tokens of its configurations, empty where there is none.
struct Profile {
    std::string token;
    std::string name;
    bool fixed = true;
    std::string videoSource;
    std::string audioSource;
    std::string videoEncoder;
    std::string audioEncoder;
    std::string analytics;
    std::string ptz;
    std::string metadata;
};

struct Media {
    std::vector<VideoSource> videoSources;
    std::vector<VideoSourceConfiguration> videoSourceConfigurations;
    std::vector<VideoEncoder> videoEncoders;
    std::vector<AudioSourceConfiguration> audioSourceConfigurations;
    std::vector<AudioEncoder> audioEncoders;
    std::vector<AnalyticsConfiguration> analytics;
    std::vector<PtzConfiguration> ptz;
    std::vector<MetadataConfiguration> metadata;
    std::vector<Profile> profiles;
    std::vector<Osd> osds;
    int lastOsdNumber = 0;  ///< for the tokens of new ones
};

struct PtzPosition {
    double pan = 0;
    double tilt = 0;
    double zoom = 0;

    bool operator==(const PtzPosition&) const = default;
};

struct PtzPreset {
    std::string token;
    std::string name;
    PtzPosition position;
};

struct PtzTourSpot {
    std::string preset;
    std::chrono::seconds stay{0};
};

struct PtzTour {
    std::string token;
    std::string name;
    std::string state = "Idle";  ///< "Idle", "Touring" or "Paused"
    std::vector<PtzTourSpot> spots;
};

/// The dome's head. It moves on by itself: ask Position.
struct PtzHead {
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr TimePoint kNoEnd = TimePoint::max();

    PtzPosition home;
    PtzPosition start;     ///< where it was when it last got an order
    PtzPosition velocity;  ///< units per second; the full range takes two seconds at 1
    TimePoint since{};
    TimePoint until = kNoEnd;  ///< when it stops by itself
    std::vector<PtzPreset> presets;
    std::vector<PtzTour> tours;
    int lastNumber = 0;  ///< of presets and tours, for their tokens

    PtzPosition Position(TimePoint now) const;
};

struct CameraState {
    DeviceInformation information;
    CameraClock clock;
    std::vector<User> users;  ///< none: no authentication is needed
    Network network;
    std::vector<RelayOutput> relays;
    std::vector<DigitalInput> inputs;
    Media media;
    PtzHead ptz;
};

/// The element of @p list that carries @p token, or null.
template <typename List>
auto* FindByToken(List& list, std::string_view token) {
    for (auto& entry : list) {
        if (entry.token == token) {
            return &entry;
        }
    }
    return static_cast<decltype(&list.front())>(nullptr);
}

}  // namespace camera_sim

#endif
