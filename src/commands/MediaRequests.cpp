#include "commands/Envelope.h"
#include "commands/ServiceRequests.h"

namespace onvif_client {

namespace {

constexpr auto kGetProfiles10 = SoapEnvelope(kMdw, FixedText("<mdw:GetProfiles/>"));
// Without a type a ver20 service lists the profiles without their configurations.
constexpr auto kGetProfiles20 = SoapEnvelope(
    kTrt2, FixedText("<trt2:GetProfiles><trt2:Type>All</trt2:Type></trt2:GetProfiles>"));

}  // namespace

std::string BuildGetProfiles10(const CommandRequest&) {
    return std::string(kGetProfiles10);
}

std::string BuildGetProfiles20(const CommandRequest&) {
    return std::string(kGetProfiles20);
}

}  // namespace onvif_client
