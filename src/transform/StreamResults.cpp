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

constexpr CopiedValue kMediaUri20[] = {{"Uri", "uri"}};

void CopyStreamUri20(const ReplyValues& reply, XMLElement* command) {
    CopyValues(FindElement(reply.envelope, "Envelope/Body/GetStreamUriResponse"), command,
               kMediaUri20);
}

void CopySnapshotUri20(const ReplyValues& reply, XMLElement* command) {
    CopyValues(FindElement(reply.envelope, "Envelope/Body/GetSnapshotUriResponse"), command,
               kMediaUri20);
}

}  // namespace

constinit const ResultFrame kSnapshotUri20Result = {"GetResponse", "snapshotURI",
                                                    CopySnapshotUri20};
constinit const ResultFrame kStreamUri20Result = {"GetResponse", "streamURI", CopyStreamUri20};
constinit const ResultFrame kSnapshotUriResult = {"GetResponse", "snapshotURI", CopySnapshotUri};
constinit const ResultFrame kStreamUriResult = {"GetResponse", "streamURI", CopyStreamUri};

std::string SnapshotAddressIn(const std::string& result) {
    const CXmlDocument document(result);
    return std::string(TextAt(document.Root(), "GetResponse/snapshotURI/uri"));
}

}  // namespace onvif_client
