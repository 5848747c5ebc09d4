#include "commands/Sender.h"

#include "transform/Conversions.h"
#include "transform/FaultReaders.h"
#include "transform/XmlTransform.h"

namespace onvif_client {

namespace {

/// True for an answer, whatever it says.
bool IsAnswered(const Reply& reply) {
    return reply.status != status::kNoReply && reply.status != status::kNotAuthorized &&
           reply.status != status::kNotSent;
}

void LoadTrimmed(const Reply& reply, CXmlDocument& document) {
    if (reply.status == status::kSuccess && document.Load(reply.soap) &&
        document.Root() != nullptr) {
        CXmlTransform::TrimElementNames(document.Root());
    }
}

bool HasWhatIsWanted(const CommandStep& step, const Reply& reply) {
    CXmlDocument trimmed;
    LoadTrimmed(reply, trimmed);
    const XMLElement* body = trimmed.Find("Envelope/Body");
    const XMLElement* response = body == nullptr ? nullptr : body->FirstChildElement();
    return response != nullptr && ParseFault(trimmed.Root(), nullptr) &&
           (step.wanted.empty() || FirstChild(response, step.wanted) != nullptr);
}

/// @param made  the step's own request.
Reply Ask(ICommandSession& session, const CommandStep& step, const CommandRequest& request,
          const SignedRequest& made) {
    Reply reply = session.Exchange(made);
    if (step.elsewhere == nullptr || !IsAnswered(reply) || HasWhatIsWanted(step, reply) ||
        !session.Services().contains(step.elsewhere->serviceKey)) {
        return reply;
    }
    Reply other = session.Exchange(MakeRequest(*step.elsewhere, request));
    return HasWhatIsWanted(*step.elsewhere, other) ? other : reply;
}

int ReadFirst(ICommandSession& session, const CommandStep& step, CommandRequest& request,
              CXmlDocument& answer) {
    const Reply reply = session.Exchange(MakeRequest(step, request));
    LoadTrimmed(reply, answer);
    request.answer = answer.Root();
    return IsAnswered(reply) ? status::kSuccess : reply.status;
}

int TakeReply(ICommandSession& session, const CommandStep& step, const CommandRequest& request,
              int index, const Reply& reply, CResultDocument& result) {
    if (reply.status != status::kSuccess) {
        return reply.status;
    }
    if (step.learn != nullptr) {
        step.learn(reply.soap, session);
    }
    if (step.result != nullptr) {
        const std::string token = step.tokenAsked == nullptr ? "" : step.tokenAsked(request);
        BuildResult(*step.result, reply.soap, {index, token}, result,
                    FaultReadingOf(session.Extensions()));
    }
    return reply.status;
}

int SendStep(ICommandSession& session, const CommandStep& step, const CommandRequest& request,
             int index, CResultDocument& result) {
    const SignedRequest made = MakeRequest(step, request);
    if (made.envelope.empty()) {
        return status::kNotAnswered;
    }
    return TakeReply(session, step, request, index, Ask(session, step, request, made), result);
}

/// With media-fallback. Refused credentials are refused by either service.
int SendToEither(ICommandSession& session, const CommandStep& first, const CommandStep& other,
                 const CommandRequest& request, CResultDocument& result) {
    const ServiceTable services = session.Services();
    if (other.serviceKey == first.serviceKey || !services.contains(other.serviceKey)) {
        return SendStep(session, first, request, 0, result);
    }
    if (!services.contains(first.serviceKey)) {
        return SendStep(session, other, request, 0, result);
    }
    const auto serves = [](const CommandStep& step, const Reply& reply) {
        return reply.status == status::kSuccess && step.serves(reply.soap);
    };
    const Reply reply = session.Exchange(MakeRequest(first, request));
    if (!serves(first, reply) && reply.status != status::kNotAuthorized) {
        const Reply second = session.Exchange(MakeRequest(other, request));
        if (serves(other, second)) {
            return TakeReply(session, other, request, 0, second, result);
        }
    }
    return TakeReply(session, first, request, 0, reply, result);
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
        stepStatus = step.readsFirst ? ReadFirst(session, step, request, answer)
                                     : SendStep(session, step, request, index, result);
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
    if (row.fallback != nullptr && session.Extensions().Has(Extension::kMediaFallback)) {
        return SendToEither(session, steps.front(), row.fallback->front(), request, result);
    }
    return SendSteps(session, steps, command.run, request, 0, result);
}

SignedRequest MakeRequest(const CommandStep& step, const CommandRequest& request) {
    return {.envelope = step.build(request),
            .serviceKey = step.serviceKey,
            .replyCapacity = step.replyCapacity,
            .clock = step.clock,
            .timeoutMs = step.timeoutMs,
            .path = step.path == nullptr ? "" : step.path(request)};
}

const MediaProfile* SelectProfile(const ProfileList& profiles, const XMLElement* index) {
    const auto selected = ReadInt(TextOf(index));
    if (!selected || *selected < 0 || static_cast<std::size_t>(*selected) >= profiles.size()) {
        return nullptr;
    }
    return &profiles[static_cast<std::size_t>(*selected)];
}

}  // namespace onvif_client
