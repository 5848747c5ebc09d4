/// @file
/// What the camera offers, and where: its services, their addresses, their operations.
#ifndef CAMERA_SIM_SERVICES_SERVICES_H
#define CAMERA_SIM_SERVICES_SERVICES_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/services/Operation.h"

namespace camera_sim {

/// The services that a camera offers; the order is that of GetServices.
struct Service {
    Ns ns;
    std::string_view path;
    int majorVersion;
    int minorVersion;
    /// Writes the service's capabilities element for GetServices.
    void (*writeCapabilities)(CXmlWriter& out, const CameraState& state);
};
std::span<const Service> AllServices();
const Service* FindService(Ns ns);
/// Whether a camera made with @p options (complete, no unset services) has the service.
bool Offers(const CameraOptions& options, Ns ns);
/// The service's address as the camera advertises it.
std::string AdvertisedAddress(const CameraOptions& options, const Service& service);

/// The address of a profile's picture.
std::string AdvertisedSnapshot(const CameraOptions& options, const Profile& profile);

/// What the camera says of itself to those who search.
struct DeviceScope {
    std::string item;
    bool fixed;
};
std::vector<DeviceScope> DeviceScopes(const CameraOptions& options, const CameraState& state);

/// Whether requests of that namespace are answered at @p path.
bool IsServedAt(const CameraOptions& options, Ns ns, std::string_view path);
/// Whether any service answers at @p path.
bool IsServicePath(const CameraOptions& options, std::string_view path);
/// Of the event service or of subscriptions.
bool IsEventService(Ns ns);

/// Null when there is none. A service that the camera does not offer has no operations.
const Operation* FindOperation(const CameraOptions& options, Ns ns, std::string_view name);

/// The least role that may use the operation.
Role NeededRole(Ns ns, std::string_view operation);

/// The operations, one file per service or part of one.
std::span<const Operation> DeviceOperations();
std::span<const Operation> DeviceClockOperations();
std::span<const Operation> DeviceNetworkOperations();
std::span<const Operation> DeviceNamesOperations();
std::span<const Operation> DeviceSystemOperations();
std::span<const Operation> RelayOperations();
std::span<const Operation> DeviceIoOperations();
std::span<const Operation> MediaOperations();
/// Of both media services.
std::span<const Operation> OsdOperations();
std::span<const Operation> MediaConfigurationOperations();
std::span<const Operation> MediaOptionsOperations();
std::span<const Operation> Media2Operations();
std::span<const Operation> Media2ConfigurationOperations();
std::span<const Operation> Media2OptionsOperations();
std::span<const Operation> PtzNodeOperations();
std::span<const Operation> PtzMoveOperations();
std::span<const Operation> PtzPresetOperations();
std::span<const Operation> ImagingOperations();
std::span<const Operation> AnalyticsOperations();
std::span<const Operation> EventOperations();
std::span<const Operation> SubscriptionOperations();

}  // namespace camera_sim

#endif
