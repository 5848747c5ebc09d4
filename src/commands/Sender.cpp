#include "commands/Sender.h"

#include "commands/Asking.h"
#include "transform/Conversions.h"
#include "transform/FaultReaders.h"

namespace onvif_client {

namespace {

/// Adds what the answer says to the session and to the result.
int TakeAnswer(ICommandSession& session, const Answer& answer, const CommandRequest& request,
               int index, CResultDocument& result) {
    const auto& [step, reply] = answer;
    if (reply.status != status::kSuccess) {
        return reply.status;
    }
    if (step->learn != nullptr) {
        step->learn(reply.soap, session);
    }
    if (step->result != nullptr) {
        const std::string token = step->tokenAsked == nullptr ? "" : step->tokenAsked(request);
        BuildResult(*step->result, reply.soap, {index, token}, result,
                    FaultReadingOf(session.Extensions()));
    }
    return reply.status;
}

bool EndsCommand(GoOn goOn, int stepStatus) {
    switch (goOn) {
        case GoOn::kUnlessFailed:
            return !status::LetsRequestGoOn(stepStatus);
        case GoOn::kOnSuccess:
            return stepStatus != status::kSuccess;
        case GoOn::kAlways:
            break;
    }
    return false;
}

bool Applies(const CommandStep& step, const XMLElement* run) {
    return step.build != nullptr &&
           (step.onlyWith.empty() || FirstChild(run, step.onlyWith) != nullptr);
}

int SendSteps(ICommandSession& session, const CommandSteps& steps, const XMLElement* run,
              CommandRequest request, int index, CResultDocument& result) {
    CXmlDocument answer;
    int stepStatus = status::kNotAnswered;
    for (const CommandStep& step : steps) {
        if (!Applies(step, run)) {
            continue;
        }
        if (step.readsFirst) {
            stepStatus = ReadFirst(session, step, request, answer);
            request.answer = answer.Root();
        } else {
            stepStatus = TakeAnswer(session, Ask(session, step, request), request, index, result);
        }
        if (EndsCommand(step.goOn, stepStatus)) {
            break;
        }
    }
    return stepStatus;
}

/// Once per "index" or "item", up to the first status that is not a success.
int SendLoop(ICommandSession& session, const CommandRow& row, const CommandSteps& steps,
             const ProfileList& profiles, const CommandElements& command, CResultDocument& result) {
    const bool overItems = row.loop == ProfileLoop::kItems;
    const char* name = overItems ? "item" : "index";
    int loopStatus = status::kNotAnswered;
    for (XMLElement* each = FirstChild(command.parameters, name); each != nullptr;
         each = each->NextSiblingElement(name)) {
        const XMLElement* index = overItems ? FirstChild(each, "index") : each;
        const MediaProfile* profile = SelectProfile(profiles, index);
        if (profile == nullptr) {
            continue;
        }
        if (overItems) {
            Append(each, "encodeToken", profile->videoEncoderConfigurationToken);
        }
        loopStatus = SendSteps(session, steps, command.run,
                               {command.parameters, profile, each, session.SpeedRanges()},
                               ToInt(TextOf(index)), result);
        if (loopStatus != status::kSuccess) {
            break;
        }
    }
    return loopStatus;
}

/// The steps of a command at this session's device.
const CommandSteps& StepsOf(const ICommandSession& session, const CommandRow& row) {
    const bool media2 = row.media2 != nullptr && session.HasMedia2();
    const CommandSteps* standard = media2 ? row.standardMedia2 : row.standard;
    if (standard != nullptr && session.Extensions().Has(Extension::kStandardRequests)) {
        return *standard;
    }
    return media2 ? *row.media2 : row.steps;
}

}  // namespace

int SendCommand(ICommandSession& session, const CommandRow& row, const CommandElements& command,
                CResultDocument& result) {
    if (row.answerLocally != nullptr) {
        row.answerLocally(session, result);
        return status::kSuccess;
    }
    const CommandSteps& steps = StepsOf(session, row);
    const auto profiles = session.Profiles();
    if (row.loop != ProfileLoop::kNone) {
        return SendLoop(session, row, steps, *profiles, command, result);
    }
    const MediaProfile* first = profiles->empty() ? nullptr : &profiles->front();
    const CommandRequest request = {command.parameters, first, nullptr, session.SpeedRanges()};
    return SendSteps(session, steps, command.run, request, 0, result);
}

const MediaProfile* SelectProfile(const ProfileList& profiles, const XMLElement* index) {
    const auto selected = ReadInt(TextOf(index));
    if (!selected || *selected < 0 || static_cast<std::size_t>(*selected) >= profiles.size()) {
        return nullptr;
    }
    return &profiles[static_cast<std::size_t>(*selected)];
}

}  // namespace onvif_client
