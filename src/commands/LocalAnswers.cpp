#include "commands/LocalAnswers.h"

namespace onvif_client {

namespace {

constexpr std::string_view kRoot = "GetResponse";

}  // namespace

void AnswerStreamCount(const ICommandSession& session, CResultDocument& result) {
    XMLElement* count = result.Command(kRoot, "streamCount");
    if (count->NoChildren()) {
        SetText(count, std::to_string(session.Profiles()->size()));
    }
}

void AnswerServiceUrl(const ICommandSession& session, CResultDocument& result) {
    XMLElement* element = result.AddCommand(kRoot, "serviceUrl");
    for (const auto& [key, path] : session.Services()) {
        Append(element, "item", path)->SetAttribute("service", key.c_str());
    }
}

}  // namespace onvif_client
