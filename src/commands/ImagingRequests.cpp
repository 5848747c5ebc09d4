#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/ServiceRequests.h"

namespace onvif_client {

namespace {

constexpr auto kGetMoveOptions = SoapEnvelope(
    kImg, FixedText("<img:GetMoveOptions><img:VideoSourceToken/></img:GetMoveOptions>"));

}  // namespace

std::string BuildGetMoveOptions(const std::string& videoSourceToken) {
    CEnvelopeFiller envelope(kGetMoveOptions, "img:GetMoveOptions");
    envelope.Set("img:VideoSourceToken", videoSourceToken);
    return envelope.Print();
}

}  // namespace onvif_client
