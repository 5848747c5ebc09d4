#include "camera_sim/services/Services.h"

#include <algorithm>
#include <array>

#include "camera_sim/events/EventReplies.h"
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
    OperationGroup{Ns::kDevice, DeviceNamesOperations},
    OperationGroup{Ns::kDevice, DeviceSystemOperations},
    OperationGroup{Ns::kDevice, RelayOperations},
    OperationGroup{Ns::kDeviceIo, DeviceIoOperations},
    OperationGroup{Ns::kMedia, MediaOperations},
    OperationGroup{Ns::kMedia, MediaConfigurationOperations},
    OperationGroup{Ns::kMedia, MediaOptionsOperations},
    OperationGroup{Ns::kMedia, OsdOperations},
    OperationGroup{Ns::kMedia2, Media2Operations},
    OperationGroup{Ns::kMedia2, Media2ConfigurationOperations},
    OperationGroup{Ns::kMedia2, Media2OptionsOperations},
    OperationGroup{Ns::kMedia2, OsdOperations},
    OperationGroup{Ns::kPtz, PtzNodeOperations},
    OperationGroup{Ns::kPtz, PtzMoveOperations},
    OperationGroup{Ns::kPtz, PtzPresetOperations},
    OperationGroup{Ns::kImaging, ImagingOperations},
    OperationGroup{Ns::kAnalytics, AnalyticsOperations},
    OperationGroup{Ns::kEvents, EventOperations},
    OperationGroup{Ns::kNotification, SubscriptionOperations},
};

Answer GetServiceCapabilities(Call& call) {
    FindService(call.Service())->writeCapabilities(call.out, call.state);
    return kDone;
}

/// What every service has.
constexpr Operation kServiceCapabilities{"GetServiceCapabilities", GetServiceCapabilities};

constexpr std::string_view kPathPlaceholder = "{path}";

void Replace(std::string& text, std::string_view placeholder, std::string_view value) {
    const auto position = text.find(placeholder);
    if (position != std::string::npos) {
        text.replace(position, placeholder.size(), value);
    }
}

std::string FillIn(std::string address, std::uint16_t port, std::string_view path) {
    Replace(address, "{host}", "127.0.0.1");
    Replace(address, "{port}", std::to_string(port));
    Replace(address, kPathPlaceholder, path);
    return address;
}

/// The common address of all subscriptions or one below it.
bool IsSubscriptionPath(std::string_view path) {
    return path == kSubscriptionPath ||
           (path.starts_with(kSubscriptionPath) && path[kSubscriptionPath.size()] == '/');
}

/// Whether all services share one address.
bool SharesAddress(const CameraOptions& options, std::string_view path) {
    return path == "/" && options.addressShape.find(kPathPlaceholder) == std::string::npos;
}

}  // namespace

bool Offers(const CameraOptions& options, Ns ns) {
    switch (ns) {
        case Ns::kDevice:
            return true;
        case Ns::kMedia:
            return options.media;
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
    const bool broken = ns == Ns::kMedia2 && options.brokenMedia2;
    if (!Offers(options, ns) || broken || (name == "GetServices" && !options.getServices)) {
        return nullptr;
    }
    if (name == kServiceCapabilities.name && FindService(ns) != nullptr) {
        return &kServiceCapabilities;
    }
    for (const OperationGroup& group : kGroups) {
        if (group.ns != ns) {
            continue;
        }
        const auto operations = group.operations();
        const auto found = std::find_if(operations.begin(), operations.end(),
                                        [name](const Operation& row) { return row.name == name; });
        if (found != operations.end()) {
            return &*found;
        }
    }
    return nullptr;
}

bool IsEventService(Ns ns) {
    return ns == Ns::kEvents || ns == Ns::kNotification;
}

bool IsServedAt(const CameraOptions& options, Ns ns, std::string_view path) {
    if (!options.strictPaths || SharesAddress(options, path)) {
        return true;
    }
    if (IsEventService(ns)) {
        return path == FindService(Ns::kEvents)->path || IsSubscriptionPath(path);
    }
    // Relays of the device service are asked for at device I/O as well.
    return path == FindService(ns)->path ||
           (ns == Ns::kDevice && options.deviceIo && path == FindService(Ns::kDeviceIo)->path);
}

bool IsServicePath(const CameraOptions& options, std::string_view path) {
    const auto services = AllServices();
    return !options.strictPaths || SharesAddress(options, path) ||
           (options.events && IsSubscriptionPath(path)) ||
           std::any_of(services.begin(), services.end(),
                       [&](const Service& service) { return service.path == path; });
}

}  // namespace camera_sim
