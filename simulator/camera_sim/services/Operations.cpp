#include "camera_sim/services/Operations.h"

#include <algorithm>
#include <array>

#include "camera_sim/picture/Snapshot.h"

namespace camera_sim {
namespace {

struct OperationGroup {
    Ns ns;
    std::span<const Operation> (*operations)();
};

constexpr std::array kGroups = {
    OperationGroup{Ns::kDevice, DeviceOperations},
    OperationGroup{Ns::kDevice, DeviceClockOperations},
    OperationGroup{Ns::kDevice, DeviceNetworkOperations},
    OperationGroup{Ns::kDevice, RelayOperations},
    OperationGroup{Ns::kDeviceIo, DeviceIoOperations},
    OperationGroup{Ns::kMedia, MediaOperations},
    OperationGroup{Ns::kMedia, OsdOperations},
    OperationGroup{Ns::kMedia2, Media2Operations},
    OperationGroup{Ns::kPtz, PtzOperations},
    OperationGroup{Ns::kImaging, ImagingOperations},
    OperationGroup{Ns::kAnalytics, AnalyticsOperations},
    OperationGroup{Ns::kEvents, EventOperations},
    OperationGroup{Ns::kNotification, SubscriptionOperations},
};

void Replace(std::string& text, std::string_view placeholder, std::string_view value) {
    const auto position = text.find(placeholder);
    if (position != std::string::npos) text.replace(position, placeholder.size(), value);
}

std::string FillIn(std::string address, std::uint16_t port, std::string_view path) {
    Replace(address, "{host}", "127.0.0.1");
    Replace(address, "{port}", std::to_string(port));
    Replace(address, "{path}", path);
    return address;
}

}  // namespace

bool Offers(const CameraOptions& options, Ns ns) {
    switch (ns) {
        case Ns::kDevice:
        case Ns::kMedia:
            return true;
        case Ns::kDeviceIo:
            return options.deviceIo;
        case Ns::kMedia2:
            return options.media2.value_or(false);
        case Ns::kPtz:
            return options.ptz.value_or(false);
        case Ns::kImaging:
            return options.imaging;
        case Ns::kAnalytics:
            return options.analytics;
        case Ns::kEvents:
        case Ns::kNotification:
            return options.events;
        default:
            return false;
    }
}

std::string AdvertisedAddress(const CameraOptions& options, const Service& service) {
    return FillIn(options.addressShape, options.port, service.path);
}

std::string AdvertisedSnapshot(const CameraOptions& options, const Profile& profile) {
    return FillIn(options.snapshotAddressShape, options.port, SnapshotPath(profile.token));
}

const Operation* FindOperation(const CameraOptions& options, Ns ns, std::string_view name) {
    if (!Offers(options, ns) || (name == "GetServices" && !options.getServices)) return nullptr;
    for (const OperationGroup& group : kGroups) {
        if (group.ns != ns) continue;
        const auto operations = group.operations();
        const auto found = std::find_if(operations.begin(), operations.end(),
                                        [name](const Operation& row) { return row.name == name; });
        if (found != operations.end()) return &*found;
    }
    return nullptr;
}

SoapFault InvalidArgument(std::string detailCode, std::string reason) {
    return {"Sender", "InvalidArgVal", std::move(detailCode), std::move(reason)};
}

SoapFault NotSupported(std::string reason) {
    return {"Receiver", "ActionNotSupported", {}, std::move(reason)};
}

SoapFault IncompleteProfile() {
    return {"Receiver", "Action", "IncompleteConfiguration", "The profile has no video encoder"};
}

SoapFault NotAuthorized() {
    return {"Sender", "NotAuthorized", {}, "Sender not Authorized"};
}

void WriteFault(XmlWriter& out, const SoapFault& fault) {
    const XmlWriter::Scope element(out, Ns::kSoap, "Fault");
    {
        const XmlWriter::Scope code(out, Ns::kSoap, "Code");
        out.Element(Ns::kSoap, "Value", out.QualifiedName(Ns::kSoap, fault.code));
        if (!fault.subcode.empty()) {
            const XmlWriter::Scope subcode(out, Ns::kSoap, "Subcode");
            const auto colon = fault.subcode.find(':');
            const auto ns = FindUsualPrefix(std::string_view(fault.subcode).substr(0, colon));
            const bool foreign = colon != std::string::npos && ns;
            out.Element(Ns::kSoap, "Value",
                        foreign ? out.QualifiedName(*ns, fault.subcode.substr(colon + 1))
                                : out.QualifiedName(Ns::kError, fault.subcode));
            if (!fault.detailCode.empty()) {
                const XmlWriter::Scope detailCode(out, Ns::kSoap, "Subcode");
                out.Element(Ns::kSoap, "Value", out.QualifiedName(Ns::kError, fault.detailCode));
            }
        }
    }
    {
        const XmlWriter::Scope reason(out, Ns::kSoap, "Reason");
        const XmlWriter::Scope text(out, Ns::kSoap, "Text");
        out.Attribute("xml:lang", "en");
        out.Text(fault.reason);
    }
    if (fault.detail.empty()) return;
    const XmlWriter::Scope detail(out, Ns::kSoap, "Detail");
    out.Raw(fault.detail);
}

}  // namespace camera_sim
