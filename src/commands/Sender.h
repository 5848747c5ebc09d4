/// @file
/// Sends one command: walks its steps, has each one asked and adds the answers to the result.
#ifndef ONVIF_CLIENT_COMMANDS_SENDER_H
#define ONVIF_CLIENT_COMMANDS_SENDER_H

#include "commands/CommandTable.h"

namespace onvif_client {

/// A command of a request document; null elements for one without parameters.
struct CommandElements {
    /// The element that is run, completed. The conditions of steps look here.
    const XMLElement* run = nullptr;
    /// What requests are built from; items of an item loop are completed here.
    XMLElement* parameters = nullptr;
};

/// Runs every exchange of the command.
/// @param result   the request's result document so far; the answers are added to it.
/// @return the status that counts; 2 when nothing was to be sent.
int SendCommand(ICommandSession& session, const CommandRow& row, const CommandElements& command,
                CResultDocument& result);

/// The profile that the text of an "index" element selects, from 0; null when it is out of range.
const MediaProfile* SelectProfile(const ProfileList& profiles, const XMLElement* index);

}  // namespace onvif_client

#endif
