/// @file
/// The two command tables: everything that makes a command what it is, one row per command, in
/// matching order. To add a command, write its request builder, its result frame and its row.
#ifndef ONVIF_CLIENT_COMMANDS_COMMANDTABLE_H
#define ONVIF_CLIENT_COMMANDS_COMMANDTABLE_H

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "commands/CommandRequest.h"
#include "commands/CommandSession.h"
#include "commands/ResponseBuffer.h"
#include "transform/ResultFrame.h"

namespace onvif_client {

/// Where a completion's token comes from.
enum class TokenSource {
    kNone,
    kIndexedProfile,    // the profile that the parameter "index" selects
    kFirstProfile,      // the first profile's token
    kFirstVideoSource,  // the first profile's video source token
};

/// A child that the dispatcher adds to a command whatever the profile.
struct FixedChild {
    std::string_view element;
    std::string_view text;
};

/// What the dispatcher adds to a command from the cached profiles. The spelling of the element is
/// the one that the command's builder reads.
struct Completion {
    TokenSource source = TokenSource::kNone;
    /// Empty: nothing is added, but the profile must be there.
    std::string_view element = {};
    std::span<const FixedChild> fixedChildren = {};
};

/// When the step behind this one runs.
enum class GoOn {
    kUnlessFailed,  // status 0 or 2; any other is the command's
    kOnSuccess,     // status 0; any other is the command's
    kAlways,        // the status is ignored
};

struct CommandStep;

/// A step for another service of the device. It is sent in the place of one whose service the
/// device does not list, and behind one that fails (but for refused credentials), or whose answer
/// lacks what it is for; there it counts when it does better. A device that does not list the other
/// service is not asked there. Steps that read first have none.
struct Elsewhere {
    const CommandStep* step = nullptr;  // null: nowhere. Its own elsewhere is not looked at
    Extension with = {};                // the session has to have it
};

/// One exchange of a command.
struct CommandStep {
    RequestBuilder build = nullptr;  // null: no step
    std::string_view serviceKey = {};
    /// Writes the answer's values; null: the answer gives no result.
    const ResultFrame* result = nullptr;
    std::uint32_t replyCapacity = kOrdinaryReplyCapacity;
    SigningClock clock = SigningClock::kLocal;
    /// What the session learns from a successful answer.
    void (*learn)(std::string_view reply, ICommandSession& session) = nullptr;
    /// The token of what the request is about, when the result shows it.
    std::string (*tokenAsked)(const CommandRequest& request) = nullptr;
    /// Not empty: the step runs only for an element of the command that has this child.
    std::string_view onlyWith = {};
    /// Where the request goes instead of the service; an empty path means the service.
    std::string (*path)(const CommandRequest& request) = nullptr;
    std::uint32_t timeoutMs = kExchangeTimeoutMs;
    GoOn goOn = GoOn::kUnlessFailed;
    /// The answer, also a refusal, is what the next step's builder starts from; it ends the command
    /// only where there is none, or the credentials were refused.
    bool readsFirst = false;
    /// What an answer is for: a path below its response, to an element that is not empty. Empty:
    /// any answer but a fault. Looked at where the step can be asked elsewhere.
    std::string_view wanted = {};
    Elsewhere elsewhere = {};
};

using CommandSteps = std::array<CommandStep, 2>;

/// Commands that are sent once per profile chosen.
enum class ProfileLoop {
    kNone,
    kIndexes,  // for every child "index"
    kItems,    // for every child "item" with an "index"; it gets the child "encodeToken"
};

struct CommandRow {
    std::string_view name;
    Completion completion = {};
    CommandSteps steps = {};
    /// The same command for devices with the ver20 media service; null: there is one way only.
    const CommandSteps* media2 = nullptr;
    /// The same two with the extension standard-requests; null: as without it.
    const CommandSteps* standard = nullptr;
    const CommandSteps* standardMedia2 = nullptr;
    ProfileLoop loop = ProfileLoop::kNone;
    /// Not null: answers without any exchange, adding to the result document.
    void (*answerLocally)(const ICommandSession& session, CResultDocument& result) = nullptr;
    /// Not null: the answer is a picture, fetched from what the steps' result document says; the
    /// request ends with it. Returns a status.
    int (*fetchPicture)(ICommandSession& session, const std::string& result,
                        ResponseBuffer& picture) = nullptr;
};

/// The commands of a root element ("Get", "Set").
struct CommandTable {
    std::string_view root;
    std::span<const CommandRow> rows;
};

/// Compares names byte for byte; the first row that matches.
const CommandRow* FindCommand(const CommandTable& table, std::string_view name);

extern const CommandTable kGetCommands;
extern const CommandTable kSetCommands;

}  // namespace onvif_client

#endif
