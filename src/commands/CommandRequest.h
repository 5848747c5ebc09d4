/// @file
/// One command of a request document as its request builder sees it.
#ifndef ONVIF_CLIENT_COMMANDS_COMMANDREQUEST_H
#define ONVIF_CLIENT_COMMANDS_COMMANDREQUEST_H

#include <string>
#include <string_view>

#include "common/XmlDocument.h"
#include "transform/MediaProfile.h"

namespace onvif_client {

struct CommandRequest {
    /// The command's element, completed by the dispatcher; its children are the parameters.
    const XMLElement* command = nullptr;
    /// The profile that the request is about: the one chosen by an index, else the first. Null when
    /// the device has none.
    const MediaProfile* profile = nullptr;
    /// The element of an item loop that is at work; null for commands without one.
    const XMLElement* item = nullptr;
    /// The device's ranges of continuous velocity.
    PtzRanges speedRanges = {};
    /// The root of what the device answered to a step that reads first, its names without prefixes;
    /// null without such a step, and when there was no answer.
    const XMLElement* answer = nullptr;

    bool Has(std::string_view path) const { return FindElement(command, path) != nullptr; }
    /// The parameter's text; empty when it is absent.
    std::string Text(std::string_view path) const { return std::string(TextAt(command, path)); }
};

/// Makes the envelope of a request. Builders never fail: what a request leaves out keeps the
/// template's default or is sent empty, and the device's answer decides. A builder that gives
/// nothing has nothing to send.
using RequestBuilder = std::string (*)(const CommandRequest& request);

}  // namespace onvif_client

#endif
