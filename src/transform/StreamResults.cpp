#include "transform/MediaResults.h"

namespace onvif_client {

namespace {

constexpr CopiedValue kMediaUri[] = {{"Uri", "uri"},
                                     {"InvalidAfterConnect", "invalidAfterConnect"},
                                     {"InvalidAfterReboot", "invalidAfterReboot"},
                                     {"Timeout", "timeout"}};

void CopyStreamUri(const ReplyValues& reply, XMLElement* command) {
    CopyValues(FindElement(reply.envelope, "Envelope/Body/GetStreamUriResponse/MediaUri"), command,
               kMediaUri);
}

}  // namespace

constinit const ResultFrame kStreamUriResult = {"GetResponse", "streamURI", CopyStreamUri};

}  // namespace onvif_client
