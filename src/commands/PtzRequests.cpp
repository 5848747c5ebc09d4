#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/ServiceRequests.h"

namespace onvif_client {

namespace {

constexpr auto kGetConfigurationOptions =
    SoapEnvelope(kPtzw, FixedText("<ptzw:GetConfigurationOptions><ptzw:ConfigurationToken/>"
                                  "</ptzw:GetConfigurationOptions>"));

}  // namespace

std::string BuildGetPtzOptions(const std::string& ptzConfigurationToken) {
    CEnvelopeFiller envelope(kGetConfigurationOptions, "ptzw:GetConfigurationOptions");
    envelope.Set("ptzw:ConfigurationToken", ptzConfigurationToken);
    return envelope.Print();
}

}  // namespace onvif_client
