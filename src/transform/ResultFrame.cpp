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

void CopyValue(const XMLElement* from, XMLElement* to, const CopiedValue& row) {
    const std::string_view source = row.source;
    const std::size_t at = source.find('@');
    if (at != std::string_view::npos) {
        const XMLElement* owner = at == 0 ? from : FindElement(from, source.substr(0, at - 1));
        if (const char* value = AttributeOf(owner, row.source + at + 1)) {
            Append(to, row.element, value);
        }
        return;
    }
    const XMLElement* found = FindElement(from, source);
    if (found == nullptr) {
        return;
    }
    if (row.parts.empty()) {
        Append(to, row.element, TextOf(found));
    } else {
        CopyValues(found, Append(to, row.element), row.parts);
    }
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

void BuildResult(const ResultFrame& frame, std::string_view reply, int index, std::string& result) {
    CResultDocument document(result, frame.root);
    XMLElement* command = document.CommandElement(frame.element);

    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    XMLElement* statusParent = StatusParent(frame, command);
    const bool success = frame.faultReader == FaultReader::kWithInvalidArgument
                             ? ParseFaultCode(trimmed.Root(), statusParent) == 0
                             : ParseFault(trimmed.Root(), statusParent);
    if (success && frame.copyValues != nullptr) {
        frame.copyValues({trimmed.Root(), index}, command);
    }
    result = document.Print();
}

void CopyValues(const XMLElement* from, XMLElement* to, std::span<const CopiedValue> rows) {
    for (const CopiedValue& row : rows) {
        CopyValue(from, to, row);
    }
}

}  // namespace onvif_client
