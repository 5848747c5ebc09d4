#include "contact/Abilities.h"

#include <set>

#include "contact/Advice.h"
#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"
#include "documents/ResultTable.h"

namespace onvifctl {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Trial {
    const CConnection& connection;
    TriedSession& session;
    bool hasSources = false;                  // several of video
    std::vector<std::string> subscription{};  // the words that name it in a request
};

CResultDocument Ask(const Trial& trial, const std::string& root,
                    const std::vector<std::string>& words) {
    const std::string result = trial.connection.Send(MakeRequest(root, words));
    const auto refusals = Refusals(result);
    if (!refusals.empty()) {
        throw CFailure(ExitCode::kRefused, refusals.front());
    }
    return CResultDocument(result);
}

std::size_t CountOf(const tinyxml2::XMLElement* parent, const char* name) {
    std::size_t count = 0;
    for (const auto* each = parent == nullptr ? nullptr : parent->FirstChildElement(name);
         each != nullptr; each = each->NextSiblingElement(name)) {
        ++count;
    }
    return count;
}

std::string Counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string AskForServices(Trial& trial) {
    const CResultDocument result = Ask(trial, "Get", {"serviceUrl"});
    std::set<std::string> services;
    std::string text;
    for (const auto* each : result.Items("serviceUrl")) {
        const char* name = each->Attribute("service");
        text += (text.empty() ? "" : ", ") + *services.insert(name == nullptr ? "" : name).first;
    }
    if (services.contains("media2") && !services.contains("media")) {
        trial.session.extensions.push_back(
            {"media-fallback", "it has the second media service alone"});
    }
    return text;
}

std::string AskForProfiles(Trial& trial) {
    const CResultDocument result = Ask(trial, "Get", {"profiles"});
    const auto profiles = result.Items("profiles");
    std::set<std::string> sources;
    for (const auto* each : profiles) {
        sources.insert(TextAt(each, "videoSourceCfg/videoSourceToken"));
    }
    trial.session.abilities.profiles = profiles.size();
    if (profiles.empty()) {
        throw CFailure(ExitCode::kRefused, "the device shows no profiles");
    }
    if (sources.size() > 1) {
        trial.hasSources = true;
        trial.session.extensions.push_back(
            {"per-source-alarms", "it has " + Counted(sources.size(), "video source")});
    }
    return Counted(profiles.size(), "profile");
}

std::string AskForStream(Trial& trial) {
    std::string uri =
        TextAt(Ask(trial, "Get", {"streamURI", "--index", "0"}).Command("streamURI"), "uri");
    if (uri.empty()) {
        throw CFailure(ExitCode::kRefused, "the device gives no address of a stream");
    }
    trial.session.abilities.stream = true;
    return uri;
}

std::string FetchPicture(Trial& trial) {
    const std::string picture = trial.connection.Picture(0);
    trial.session.abilities.picture = true;
    return Counted(picture.size(), "byte");
}

std::string Subscribe(Trial& trial) {
    const auto begin = Clock::now();
    const CResultDocument result =
        Ask(trial, "Set", {"createPullPointSubscription", "--timeout", "PT60S"});
    const auto* made = result.Command("createPullPointSubscription");
    std::string address = TextAt(made, "address");
    if (address.empty()) {
        throw CFailure(ExitCode::kRefused, "the device gives no address of a subscription");
    }
    trial.subscription = {"--token", address};
    if (const std::string id = TextAt(made, "subscriptionId"); !id.empty()) {
        const std::string space = TextAt(made, "subscriptionIdAttriute");
        trial.subscription.insert(trial.subscription.end(),
                                  {"--subscriptionId", id, "--subscriptionIdAttribute", space});
    }
    if (Clock::now() - begin > std::chrono::seconds(2)) {
        trial.session.extensions.push_back(
            {"background-subscription", "a subscription takes it seconds"});
    }
    return address;
}

std::string Pull(Trial& trial) {
    if (trial.subscription.empty()) {
        throw CFailure(ExitCode::kRefused, "there is no subscription to pull from");
    }
    std::vector<std::string> words = {"pullMessages", "--timeout", "PT1S", "--messageLimit", "10"};
    words.insert(words.end(), trial.subscription.begin(), trial.subscription.end());
    const CResultDocument result = Ask(trial, "Get", words);
    return Counted(CountOf(result.Command("pullMessages"), "notifyMessage"), "message");
}

void Unsubscribe(const Trial& trial) {
    if (trial.subscription.empty()) {
        return;
    }
    try {
        Ask(trial, "Set", {"unsubscribe", "--serverAddr", trial.subscription[1]});
    } catch (const CFailure&) {
        // It ends by itself in a minute.
    }
}

/// What no step tells: a device without inputs or without a clock to show is not ill.
void LookAround(Trial& trial, Events events) {
    auto& session = trial.session;
    try {
        session.clock = trial.connection.Send(MakeRequest("Get", {"dateAndTime"}));
        const std::size_t inputs =
            events == Events::kLeave
                ? 0
                : CountOf(Ask(trial, "Get", {"alarmin"}).Command("alarmin"), "token");
        if (inputs > 1 && !trial.hasSources) {
            session.extensions.push_back(
                {"per-source-alarms", "it has " + Counted(inputs, "alarm input")});
        }
    } catch (const CFailure&) {
        return;
    }
}

struct Try {
    const char* name;
    Events events;
    std::string (*make)(Trial&);
    const char* advice;
};

constexpr Try kTries[] = {
    {"services", Events::kLeave, AskForServices, "see --verbose"},
    {"profiles", Events::kLeave, AskForProfiles,
     "try the account of an administrator; large-messages and media-fallback help where a reply is "
     "large or a media service fails"},
    {"stream", Events::kLeave, AskForStream, "try the account of an administrator"},
    {"picture", Events::kLeave, FetchPicture,
     "many encoders make no JPEG pictures, and some devices have users of their own for pictures"},
    {"subscription", Events::kTry, Subscribe,
     "switch events on in the device; too many subscriptions of others end with their time, or "
     "when it starts anew"},
    {"pull", Events::kTry, Pull, "see --verbose"},
};

void Log(TriedSession& session, const char* name, Clock::time_point begin, bool isWell,
         const std::string& finding, const std::string& advice) {
    const auto time = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
    session.steps.push_back({name, isWell, time, finding, advice});
}

void TryAll(const CConnection& connection, Events events, TriedSession& session) {
    Trial trial{connection, session};
    for (const Try& each : kTries) {
        if (each.events == Events::kTry && events == Events::kLeave) {
            continue;
        }
        const auto begin = Clock::now();
        try {
            const std::string finding = each.make(trial);
            Log(session, each.name, begin, true, finding, "");
        } catch (const CFailure& failure) {
            Log(session, each.name, begin, false, failure.what(), each.advice);
        }
    }
    Unsubscribe(trial);
    LookAround(trial, events);
}

}  // namespace

std::string Lack(const Abilities& one, const Abilities& other) {
    if (one.login != ExitCode::kDone && other.login == ExitCode::kDone) {
        return "the login fails";
    }
    if (one.profiles < other.profiles) {
        return std::to_string(one.profiles) + " of " + Counted(other.profiles, "profile");
    }
    if (other.stream && !one.stream) {
        return "no stream";
    }
    return other.picture && !one.picture ? "no picture" : "";
}

TriedSession TrySession(const ConnectionOptions& options, const FirstContact& contact,
                        Events events) {
    const CStartedLibrary library(options);
    TriedSession session;
    const auto begin = Clock::now();
    try {
        const CConnection connection(options, &contact);
        session.abilities.login = ExitCode::kDone;
        Log(session, "login", begin, true, "as '" + options.user + "'", "");
        TryAll(connection, events, session);
    } catch (const CLoginFailure& failure) {
        session.abilities.login = failure.Code();
        Log(session, "login", begin, false, failure.Why().finding, failure.Why().advice);
    }
    return session;
}

}  // namespace onvifctl
