#include "commands/LocalAnswers.h"

#include "transform/ResultFrame.h"

namespace onvif_client {

void AnswerStreamCount(const ICommandSession& session, std::string& result) {
    constexpr std::string_view kElement = "streamCount";
    CResultDocument document(result, "GetResponse");
    if (FirstChild(document.Root(), kElement) == nullptr) {
        Append(document.Root(), kElement, std::to_string(session.Profiles()->size()));
    }
    result = document.Print();
}

void AnswerServiceUrl(const ICommandSession& session, std::string& result) {
    CResultDocument document(result, "GetResponse");
    XMLElement* element = Append(document.Root(), "serviceUrl");
    for (const auto& [key, path] : session.Services()) {
        Append(element, "item", path)->SetAttribute("service", key.c_str());
    }
    result = document.Print();
}

}  // namespace onvif_client
