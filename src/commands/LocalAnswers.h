/// @file
/// Commands that the session answers from what it knows, without an exchange.
#ifndef ONVIF_CLIENT_COMMANDS_LOCALANSWERS_H
#define ONVIF_CLIENT_COMMANDS_LOCALANSWERS_H

#include "commands/CommandSession.h"
#include "transform/ResultDocument.h"

namespace onvif_client {

/// "streamCount": the number of cached profiles, unless the result document tells it already.
void AnswerStreamCount(const ICommandSession& session, CResultDocument& result);

/// "serviceUrl": one "item" per entry of the service table, with the key as attribute "service".
void AnswerServiceUrl(const ICommandSession& session, CResultDocument& result);

}  // namespace onvif_client

#endif
