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

void CopySnapshotUri(const ReplyValues& reply, XMLElement* command) {
    CopyValues(FindElement(reply.envelope, "Envelope/Body/GetSnapshotUriResponse/MediaUri"),
               command, kMediaUri);
}

}  // namespace

constinit const ResultFrame kSnapshotUriResult = {"GetResponse", "snapshotURI", CopySnapshotUri};
constinit const ResultFrame kStreamUriResult = {"GetResponse", "streamURI", CopyStreamUri};

std::string SnapshotAddressIn(const std::string& result) {
    const CXmlDocument document(result);
    return std::string(TextAt(document.Root(), "GetResponse/snapshotURI/uri"));
}

}  // namespace onvif_client
