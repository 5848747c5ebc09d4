/// @file
/// Request documents and their dispatch.
///
/// A request document is XML in UTF-8 with the root "Get" (ask) or "Set" (change). Each child
/// element of the root is one command, named by its element; its children are the parameters. The
/// commands run in document order on the calling thread. CommandTable.h holds what is known of each
/// command, DeviceRequests.h and ServiceRequests.h the request builders; the session that carries
/// the exchanges is reached through ICommandSession. Nothing here knows sockets, and nothing keeps
/// state between requests.
///
/// A command that needs tokens of the device gets them from the cached profiles before it is sent
/// (Completion). A command goes on to the next while its status is 0 or 2.
#ifndef ONVIF_CLIENT_COMMANDS_GETCMD_H
#define ONVIF_CLIENT_COMMANDS_GETCMD_H

#include <optional>
#include <string>
#include <string_view>

#include "commands/CommandTable.h"

namespace onvif_client {

/// What a Get request gives.
struct GetAnswer {
    /// True when the last status is 0.
    bool success = false;
    /// The result document; empty when the request failed, or when the answer is a picture.
    std::string document;
    ResponseBuffer picture;
};

/// Runs a Get request. A command that is not in the table leaves the status as it was: as the first
/// one it fails the request, behind a successful one it is passed over. A command that cannot be
/// completed does the same.
GetAnswer RunGet(ICommandSession& session, std::string_view request,
                 const CommandTable& table = kGetCommands);

/// The request that the first command of a Get request starts with, for whoever sends it by other
/// means than the session; nothing when no command can run, or it is answered without an exchange
/// or sent once per profile.
std::optional<SignedRequest> FirstRequest(const ICommandSession& session, std::string_view request,
                                          const CommandTable& table = kGetCommands);

/// Runs a Set request. Commands that are not in the table or cannot be completed are passed over.
/// @param result  receives the result document; empty when no command gave one.
/// @return false when a command failed; the commands before it are not undone.
bool RunSet(ICommandSession& session, std::string_view request, std::string& result,
            const CommandTable& table = kSetCommands);

}  // namespace onvif_client

#endif
