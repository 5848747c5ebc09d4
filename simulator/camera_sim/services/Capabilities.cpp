// The services and what GetServices says about their capabilities.
#include <algorithm>
#include <array>

#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

int MaximumProfiles(const CameraState& state) {
    constexpr std::size_t kLeast = 8;
    return static_cast<int>(std::max(kLeast, state.media.profiles.size()));
}

void WriteDevice(CXmlWriter& out, const CameraState&) {
    const Scope capabilities(out, Ns::kDevice, "Capabilities");
    {
        const Scope network(out, Ns::kDevice, "Network");
        out.Attribute("IPFilter", false);
        out.Attribute("ZeroConfiguration", false);
        out.Attribute("IPVersion6", false);
        out.Attribute("DynDNS", false);
        out.Attribute("NTP", 1);
    }
    {
        const Scope security(out, Ns::kDevice, "Security");
        out.Attribute("TLS1.2", false);
        out.Attribute("UsernameToken", true);
        out.Attribute("HttpDigest", false);
        out.Attribute("MaxUsers", 1);
    }
    const Scope system(out, Ns::kDevice, "System");
    out.Attribute("DiscoveryResolve", false);
    out.Attribute("DiscoveryBye", false);
    out.Attribute("RemoteDiscovery", false);
    out.Attribute("SystemBackup", false);
    out.Attribute("SystemLogging", false);
}

void WriteMedia(CXmlWriter& out, const CameraState& state) {
    const Scope capabilities(out, Ns::kMedia, "Capabilities");
    out.Attribute("SnapshotUri", true);
    out.Attribute("Rotation", false);
    out.Attribute("OSD", true);
    {
        const Scope profiles(out, Ns::kMedia, "ProfileCapabilities");
        out.Attribute("MaximumNumberOfProfiles", MaximumProfiles(state));
    }
    const Scope streaming(out, Ns::kMedia, "StreamingCapabilities");
    out.Attribute("RTPMulticast", true);
    out.Attribute("RTP_TCP", true);
    out.Attribute("RTP_RTSP_TCP", true);
}

void WriteMedia2(CXmlWriter& out, const CameraState& state) {
    const Scope capabilities(out, Ns::kMedia2, "Capabilities");
    out.Attribute("SnapshotUri", true);
    out.Attribute("Rotation", false);
    out.Attribute("OSD", true);
    {
        const Scope profiles(out, Ns::kMedia2, "ProfileCapabilities");
        out.Attribute("MaximumNumberOfProfiles", MaximumProfiles(state));
        out.Attribute("ConfigurationsSupported",
                      "VideoSource VideoEncoder AudioSource AudioEncoder Metadata Analytics PTZ");
    }
    const Scope streaming(out, Ns::kMedia2, "StreamingCapabilities");
    out.Attribute("RTSPStreaming", true);
    out.Attribute("RTPMulticast", true);
    out.Attribute("RTP_RTSP_TCP", true);
}

void WriteEvents(CXmlWriter& out, const CameraState&) {
    const Scope capabilities(out, Ns::kEvents, "Capabilities");
    out.Attribute("WSSubscriptionPolicySupport", true);
    out.Attribute("WSPausableSubscriptionManagerInterfaceSupport", false);
}

void WritePtz(CXmlWriter& out, const CameraState&) {
    const Scope capabilities(out, Ns::kPtz, "Capabilities");
    out.Attribute("EFlip", false);
    out.Attribute("Reverse", false);
    out.Attribute("MoveStatus", true);
    out.Attribute("StatusPosition", true);
}

void WriteImaging(CXmlWriter& out, const CameraState&) {
    const Scope capabilities(out, Ns::kImaging, "Capabilities");
    out.Attribute("ImageStabilization", false);
    out.Attribute("Presets", false);
}

void WriteAnalytics(CXmlWriter& out, const CameraState&) {
    const Scope capabilities(out, Ns::kAnalytics, "Capabilities");
    out.Attribute("RuleSupport", true);
    out.Attribute("AnalyticsModuleSupport", true);
    out.Attribute("CellBasedSceneDescriptionSupported", true);
}

void WriteDeviceIo(CXmlWriter& out, const CameraState& state) {
    const Scope capabilities(out, Ns::kDeviceIo, "Capabilities");
    out.Attribute("VideoSources", static_cast<int>(state.media.videoSources.size()));
    out.Attribute("VideoOutputs", 0);
    out.Attribute("AudioSources", static_cast<int>(state.media.audioSourceConfigurations.size()));
    out.Attribute("AudioOutputs", 0);
    out.Attribute("RelayOutputs", static_cast<int>(state.relays.size()));
    out.Attribute("DigitalInputs", static_cast<int>(state.inputs.size()));
}

constexpr std::array kServices = {
    Service{Ns::kDevice, "/onvif/device_service", 2, 60, WriteDevice},
    Service{Ns::kMedia, "/onvif/media_service", 2, 60, WriteMedia},
    Service{Ns::kMedia2, "/onvif/media2_service", 2, 60, WriteMedia2},
    Service{Ns::kEvents, "/onvif/event_service", 2, 60, WriteEvents},
    Service{Ns::kPtz, "/onvif/ptz_service", 2, 50, WritePtz},
    Service{Ns::kImaging, "/onvif/imaging_service", 2, 50, WriteImaging},
    Service{Ns::kAnalytics, "/onvif/analytics_service", 2, 40, WriteAnalytics},
    Service{Ns::kDeviceIo, "/onvif/deviceio_service", 2, 60, WriteDeviceIo},
};

}  // namespace

std::span<const Service> AllServices() {
    return kServices;
}

const Service* FindService(Ns ns) {
    for (const Service& service : kServices) {
        if (service.ns == ns) {
            return &service;
        }
    }
    return nullptr;
}

}  // namespace camera_sim
