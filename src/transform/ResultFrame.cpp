#include "transform/ResultFrame.h"

#include "transform/FaultReaders.h"
#include "transform/XmlTransform.h"

namespace onvif_client {

namespace {

XMLElement* StatusParent(const ResultFrame& frame, XMLElement* command) {
    switch (frame.statusPlace) {
        case StatusPlace::kWrapper:
            return Append(command, frame.statusWrapper);
        case StatusPlace::kNowhere:
            return nullptr;
        case StatusPlace::kCommand:
            break;
    }
    return command;
}

}  // namespace

CResultDocument::CResultDocument(const std::string& result, std::string_view root)
    : document_(result), root_(document_.Find(root)) {
    if (root_ == nullptr) {
        root_ = document_.Root() == nullptr ? document_.AppendRoot(root)
                                            : Append(document_.Root(), root);
    }
}

XMLElement* CResultDocument::CommandElement(std::string_view name) {
    XMLElement* element = FirstChild(root_, name);
    return element == nullptr ? Append(root_, name) : element;
}

void BuildResult(const ResultFrame& frame, std::string_view reply, const Subject& subject,
                 std::string& result) {
    CResultDocument document(result, frame.root);
    XMLElement* command = document.CommandElement(frame.element);

    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    XMLElement* statusParent = StatusParent(frame, command);
    const bool success = frame.faultReader == FaultReader::kWithInvalidArgument
                             ? ParseFaultCode(trimmed.Root(), statusParent) == 0
                             : ParseFault(trimmed.Root(), statusParent);
    if (success && frame.copyValues != nullptr) {
        frame.copyValues({trimmed.Root(), subject}, command);
    }
    result = document.Print();
}

}  // namespace onvif_client
