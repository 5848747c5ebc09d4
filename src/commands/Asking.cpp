#include "commands/Asking.h"

#include <algorithm>
#include <iterator>

#include "transform/FaultReaders.h"
#include "transform/XmlTransform.h"

namespace onvif_client {

namespace {

constexpr std::string_view kDeviceService = "device";

/// True for an answer, whatever it says.
bool IsAnswered(const Reply& reply) {
    constexpr int kUnanswered[] = {status::kNoReply, status::kNotAuthorized, status::kNotSent,
                                   status::kNotAnswered};
    return std::find(std::begin(kUnanswered), std::end(kUnanswered), reply.status) ==
           std::end(kUnanswered);
}

void LoadAnswer(const Reply& reply, CXmlDocument& document) {
    if (reply.status == status::kSuccess) {
        CXmlTransform::LoadTrimmed(reply.soap, document);
    }
}

bool SaysAnything(const XMLElement* element) {
    return element != nullptr && !(element->NoChildren() && element->FirstAttribute() == nullptr);
}

/// Whether an answer is what the step was sent for.
bool Gives(const CommandStep& step, const Reply& reply) {
    CXmlDocument trimmed;
    LoadAnswer(reply, trimmed);
    const XMLElement* body = trimmed.Find("Envelope/Body");
    const XMLElement* response = body == nullptr ? nullptr : body->FirstChildElement();
    return response != nullptr && ParseFault(trimmed.Root(), nullptr) &&
           (step.wanted.empty() || SaysAnything(FindElement(response, step.wanted)));
}

/// Every device has the device service.
bool Offers(const ICommandSession& session, std::string_view serviceKey) {
    return serviceKey == kDeviceService || session.Services().contains(serviceKey);
}

/// Null where the step can be asked nowhere else.
const CommandStep* StepElsewhere(const ICommandSession& session, const Elsewhere& elsewhere) {
    return elsewhere.step != nullptr && session.Extensions().Has(elsewhere.with) &&
                   Offers(session, elsewhere.step->serviceKey)
               ? elsewhere.step
               : nullptr;
}

/// Credentials that one service refuses are refused by all of them, and a device whose device
/// service is silent does not answer at all.
bool MayDoBetterElsewhere(const CommandStep& step, const Reply& reply) {
    return reply.status == status::kNoReply ? step.serviceKey != kDeviceService : IsAnswered(reply);
}

Answer Exchange(ICommandSession& session, const CommandStep& step, const CommandRequest& request) {
    const SignedRequest made = MakeRequest(step, request);
    return {&step,
            made.envelope.empty() ? Reply{status::kNotAnswered, {}} : session.Exchange(made)};
}

}  // namespace

SignedRequest MakeRequest(const CommandStep& step, const CommandRequest& request) {
    return {.envelope = step.build(request),
            .serviceKey = step.serviceKey,
            .replyCapacity = step.replyCapacity,
            .clock = step.clock,
            .timeoutMs = step.timeoutMs,
            .path = step.path == nullptr ? "" : step.path(request)};
}

Answer Ask(ICommandSession& session, const CommandStep& step, const CommandRequest& request) {
    const CommandStep* other = StepElsewhere(session, step.elsewhere);
    if (other == nullptr) {
        return Exchange(session, step, request);
    }
    if (!Offers(session, step.serviceKey)) {
        return Exchange(session, *other, request);
    }
    Answer first = Exchange(session, step, request);
    if (Gives(step, first.reply) || !MayDoBetterElsewhere(step, first.reply)) {
        return first;
    }
    Answer second = Exchange(session, *other, request);
    return Gives(*other, second.reply) ? second : first;
}

int ReadFirst(ICommandSession& session, const CommandStep& step, const CommandRequest& request,
              CXmlDocument& answer) {
    const Reply reply = Exchange(session, step, request).reply;
    LoadAnswer(reply, answer);
    return IsAnswered(reply) ? status::kSuccess : reply.status;
}

}  // namespace onvif_client
