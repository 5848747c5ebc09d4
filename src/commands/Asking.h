/// @file
/// Asks a device: the exchange of one step, and of the step elsewhere that may stand in for it.
#ifndef ONVIF_CLIENT_COMMANDS_ASKING_H
#define ONVIF_CLIENT_COMMANDS_ASKING_H

#include "commands/CommandTable.h"

namespace onvif_client {

/// The request of one exchange of a command.
SignedRequest MakeRequest(const CommandStep& step, const CommandRequest& request);

struct Answer {
    const CommandStep* step;  // whose answer it is; never null
    Reply reply;
};

/// Exchanges the step's request or, as CommandStep::elsewhere says, that of the step that it names
/// there. Status 2 when there is nothing to be sent.
Answer Ask(ICommandSession& session, const CommandStep& step, const CommandRequest& request);

/// Exchanges the request of a step that reads first.
/// @param answer  receives what came, its names without prefixes, if it can be read; a fault, too.
/// @return 0 for whatever answer, else the status.
int ReadFirst(ICommandSession& session, const CommandStep& step, const CommandRequest& request,
              CXmlDocument& answer);

}  // namespace onvif_client

#endif
