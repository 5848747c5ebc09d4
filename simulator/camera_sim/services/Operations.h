/// @file
/// The operations of the camera. An operation is one row of a service's table and one function.
#ifndef CAMERA_SIM_SERVICES_OPERATIONS_H
#define CAMERA_SIM_SERVICES_OPERATIONS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "camera_sim/CameraSim.h"
#include "camera_sim/events/EventHub.h"
#include "camera_sim/soap/Namespaces.h"
#include "camera_sim/soap/SoapRequest.h"
#include "camera_sim/soap/XmlWriter.h"

namespace camera_sim {

/// The services that a camera offers; the order is that of GetServices.
struct Service {
    Ns ns;
    std::string_view path;
    int majorVersion;
    int minorVersion;
    /// Writes the service's capabilities element for GetServices.
    void (*writeCapabilities)(XmlWriter& out, const CameraState& state);
};
std::span<const Service> AllServices();
const Service* FindService(Ns ns);
/// Whether a camera made with @p options (complete, no unset services) has the service.
bool Offers(const CameraOptions& options, Ns ns);
/// The service's address as the camera advertises it.
std::string AdvertisedAddress(const CameraOptions& options, const Service& service);

/// The address of a profile's picture.
std::string AdvertisedSnapshot(const CameraOptions& options, const Profile& profile);

/// What a handler gets.
struct Call {
    CameraState& state;
    const CameraOptions& options;
    /// The operation's element.
    const XmlElement& request;
    /// Stands inside the answer's element; what is written before a fault is dropped.
    XmlWriter& out;
    std::chrono::sys_seconds systemTime;
    EventHub& events;
    /// The envelope's header, or null.
    const XmlElement* header;
    std::string_view path;
    /// Set by a handler whose answer has to wait; what it wrote is dropped then.
    std::optional<PullWait> wait{};

    std::string_view Argument(std::string_view name) const { return ChildText(&request, name); }
};

/// A handler checks everything before it changes the state.
using Answer = std::optional<SoapFault>;
inline constexpr std::nullopt_t kDone = std::nullopt;
using Handler = Answer (*)(Call&);

struct Operation {
    std::string_view name;
    Handler handler;
    /// Answers in this element; empty: the name with "Response" behind it.
    std::string_view response = {};
};

/// The operations, one file per service or part of one.
std::span<const Operation> DeviceOperations();
std::span<const Operation> DeviceClockOperations();
std::span<const Operation> DeviceNetworkOperations();
std::span<const Operation> RelayOperations();
std::span<const Operation> DeviceIoOperations();
std::span<const Operation> MediaOperations();
std::span<const Operation> OsdOperations();
std::span<const Operation> Media2Operations();
std::span<const Operation> PtzOperations();
std::span<const Operation> ImagingOperations();
std::span<const Operation> AnalyticsOperations();

/// SetVideoEncoderConfiguration of the first and the second media service.
Answer SetVideoEncoder10(Call& call);
Answer SetVideoEncoder20(Call& call);
std::span<const Operation> EventOperations();
std::span<const Operation> SubscriptionOperations();

inline constexpr std::string_view kSubscriptionPath = "/onvif/subscription";

/// Null when there is none. A service that the camera does not offer has no operations.
const Operation* FindOperation(const CameraOptions& options, Ns ns, std::string_view name);

SoapFault InvalidArgument(std::string detailCode, std::string reason);
SoapFault NotSupported(std::string reason);
/// For a profile without what the operation needs.
SoapFault IncompleteProfile();
SoapFault NotAuthorized();
/// A dotted address.
bool IsIpv4(std::string_view text);
/// The days and time part of an XML Schema duration, not negative: "P1DT2H", "PT5S", "PT0.5S".
bool IsDuration(std::string_view text);
void WriteFault(XmlWriter& out, const SoapFault& fault);

}  // namespace camera_sim

#endif
