// Device service: who the camera is, what it can do.
#include <array>

#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

Answer GetServices(Call& call) {
    const std::string_view wanted = call.Argument("IncludeCapability");
    const auto includeCapability = wanted.empty() ? false : ToBool(wanted);
    if (!includeCapability) {
        return InvalidArgument({}, "IncludeCapability is neither true nor false");
    }
    for (const Service& service : AllServices()) {
        if (!Offers(call.options, service.ns)) {
            continue;
        }
        const Scope entry(call.out, Ns::kDevice, "Service");
        call.out.Element(Ns::kDevice, "Namespace", NamespaceOf(service.ns).uri);
        call.out.Element(Ns::kDevice, "XAddr", AdvertisedAddress(call.options, service));
        if (*includeCapability) {
            const Scope capabilities(call.out, Ns::kDevice, "Capabilities");
            service.writeCapabilities(call.out, call.state);
        }
        const Scope version(call.out, Ns::kDevice, "Version");
        call.out.Element(Ns::kSchema, "Major", service.majorVersion);
        call.out.Element(Ns::kSchema, "Minor", service.minorVersion);
    }
    return kDone;
}

void WriteAddress(Call& call, Ns ns) {
    call.out.Element(Ns::kSchema, "XAddr", AdvertisedAddress(call.options, *FindService(ns)));
}

void WriteFlags(CXmlWriter& out, std::initializer_list<std::pair<std::string_view, bool>> flags) {
    for (const auto& [name, value] : flags) {
        out.Element(Ns::kSchema, name, value);
    }
}

void WriteAnalyticsCapabilities(Call& call) {
    WriteAddress(call, Ns::kAnalytics);
    WriteFlags(call.out, {{"RuleSupport", true}, {"AnalyticsModuleSupport", true}});
}

void WriteDeviceCapabilities(Call& call) {
    CXmlWriter& out = call.out;
    WriteAddress(call, Ns::kDevice);
    {
        const Scope network(out, Ns::kSchema, "Network");
        WriteFlags(out, {{"IPFilter", false},
                         {"ZeroConfiguration", false},
                         {"IPVersion6", false},
                         {"DynDNS", false}});
    }
    {
        const Scope system(out, Ns::kSchema, "System");
        WriteFlags(out, {{"DiscoveryResolve", false},
                         {"DiscoveryBye", false},
                         {"RemoteDiscovery", false},
                         {"SystemBackup", false},
                         {"SystemLogging", false},
                         {"FirmwareUpgrade", false}});
        const Scope version(out, Ns::kSchema, "SupportedVersions");
        out.Element(Ns::kSchema, "Major", 2);
        out.Element(Ns::kSchema, "Minor", 60);
    }
    {
        const Scope connectors(out, Ns::kSchema, "IO");
        out.Element(Ns::kSchema, "InputConnectors", static_cast<int>(call.state.inputs.size()));
        out.Element(Ns::kSchema, "RelayOutputs", static_cast<int>(call.state.relays.size()));
    }
    const Scope security(out, Ns::kSchema, "Security");
    WriteFlags(out, {{"TLS1.1", false},
                     {"TLS1.2", false},
                     {"OnboardKeyGeneration", false},
                     {"AccessPolicyConfig", false},
                     {"X.509Token", false},
                     {"SAMLToken", false},
                     {"KerberosToken", false},
                     {"RELToken", false}});
}

void WriteEventCapabilities(Call& call) {
    WriteAddress(call, Ns::kEvents);
    WriteFlags(call.out, {{"WSSubscriptionPolicySupport", true},
                          {"WSPullPointSupport", true},
                          {"WSPausableSubscriptionManagerInterfaceSupport", false}});
}

void WriteImagingCapabilities(Call& call) {
    WriteAddress(call, Ns::kImaging);
}

void WriteMediaCapabilities(Call& call) {
    WriteAddress(call, Ns::kMedia);
    const Scope streaming(call.out, Ns::kSchema, "StreamingCapabilities");
    WriteFlags(call.out, {{"RTPMulticast", true}, {"RTP_TCP", true}, {"RTP_RTSP_TCP", true}});
}

void WritePtzCapabilities(Call& call) {
    WriteAddress(call, Ns::kPtz);
}

void WriteDeviceIoCapabilities(Call& call) {
    CXmlWriter& out = call.out;
    const CameraState& state = call.state;
    WriteAddress(call, Ns::kDeviceIo);
    out.Element(Ns::kSchema, "VideoSources", static_cast<int>(state.media.videoSources.size()));
    out.Element(Ns::kSchema, "VideoOutputs", 0);
    out.Element(Ns::kSchema, "AudioSources",
                static_cast<int>(state.media.audioSourceConfigurations.size()));
    out.Element(Ns::kSchema, "AudioOutputs", 0);
    out.Element(Ns::kSchema, "RelayOutputs", static_cast<int>(state.relays.size()));
}

struct Category {
    std::string_view name;
    Ns ns;
    void (*write)(Call&);
    bool extension;
};

/// In the order of the answer; extensions stand last.
constexpr std::array kCategories = {
    Category{"Analytics", Ns::kAnalytics, WriteAnalyticsCapabilities, false},
    Category{"Device", Ns::kDevice, WriteDeviceCapabilities, false},
    Category{"Events", Ns::kEvents, WriteEventCapabilities, false},
    Category{"Imaging", Ns::kImaging, WriteImagingCapabilities, false},
    Category{"Media", Ns::kMedia, WriteMediaCapabilities, false},
    Category{"PTZ", Ns::kPtz, WritePtzCapabilities, false},
    Category{"DeviceIO", Ns::kDeviceIo, WriteDeviceIoCapabilities, true},
};
using Selection = std::array<bool, kCategories.size()>;

SoapFault NoSuchService() {
    return {"Receiver", "ActionNotSupported", "NoSuchService", "No such service"};
}

/// Adds the categories that @p name stands for; false when the camera does not have it.
bool Select(const CameraOptions& options, std::string_view name, Selection& selected) {
    const bool all = name == "All";
    bool known = all && options.capabilitiesAll;
    if (all && !known) {
        return false;
    }
    for (std::size_t i = 0; i < kCategories.size(); ++i) {
        if ((all || kCategories[i].name == name) && Offers(options, kCategories[i].ns)) {
            selected[i] = known = true;
        }
    }
    return known;
}

Answer GetCapabilities(Call& call) {
    Selection selected{};
    const auto wanted = Children(&call.request, "Category");
    if (wanted.empty() && !Select(call.options, "All", selected)) {
        return NoSuchService();
    }
    for (const XmlElement* category : wanted) {
        if (!Select(call.options, Text(category), selected)) {
            return NoSuchService();
        }
    }
    const Scope capabilities(call.out, Ns::kDevice, "Capabilities");
    for (std::size_t i = 0; i < kCategories.size(); ++i) {
        if (!selected[i]) {
            continue;
        }
        std::optional<Scope> extension;
        if (kCategories[i].extension) {
            extension.emplace(call.out, Ns::kSchema, "Extension");
        }
        const Scope category(call.out, Ns::kSchema, kCategories[i].name);
        kCategories[i].write(call);
    }
    return kDone;
}

Answer GetDeviceInformation(Call& call) {
    const DeviceInformation& information = call.state.information;
    call.out.Element(Ns::kDevice, "Manufacturer", information.manufacturer);
    call.out.Element(Ns::kDevice, "Model", information.model);
    call.out.Element(Ns::kDevice, "FirmwareVersion", information.firmwareVersion);
    call.out.Element(Ns::kDevice, "SerialNumber", information.serialNumber);
    call.out.Element(Ns::kDevice, "HardwareId", information.hardwareId);
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetServices", GetServices},
    Operation{"GetCapabilities", GetCapabilities},
    Operation{"GetDeviceInformation", GetDeviceInformation},
};

}  // namespace

std::span<const Operation> DeviceOperations() {
    return kOperations;
}

}  // namespace camera_sim
