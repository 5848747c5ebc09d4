#include "transform/ResultFrame.h"

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

bool ReadStatus(const ResultFrame& frame, FaultReading reading, std::string_view reply,
                const XMLElement* trimmedEnvelope, XMLElement* parent) {
    switch (frame.faultReader) {
        case FaultReader::kWithInvalidArgument:
            return ParseFaultCode(trimmedEnvelope, parent, reading) == 0;
        case FaultReader::kPullMessages:
            return reading == FaultReading::kOpen
                       ? ParseTrimmedPullMessagesFault(trimmedEnvelope, parent)
                       : ParsePullMessagesFault(reply, parent);
        case FaultReader::kGeneric:
            break;
    }
    return ParseFault(trimmedEnvelope, parent);
}

/// True for an answer that is neither a fault nor what was asked for.
bool LacksResponse(const ResultFrame& frame, FaultReading reading, std::string_view reply,
                   const XMLElement* trimmedEnvelope) {
    return !frame.response.empty() &&
           FirstChild(FindElement(trimmedEnvelope, "Envelope/Body"), frame.response) == nullptr &&
           ReadStatus(frame, reading, reply, trimmedEnvelope, nullptr);
}

}  // namespace

void BuildResult(const ResultFrame& frame, std::string_view reply, const Subject& subject,
                 CResultDocument& result, FaultReading reading) {
    XMLElement* command = result.Command(frame.root, frame.element);

    CXmlDocument trimmed;
    if (frame.prefixRemoval == PrefixRemoval::kInText) {
        trimmed.Load(CXmlTransform::TrimXmlNamespace(reply));
    } else {
        CXmlTransform::LoadTrimmed(reply, trimmed);
    }
    XMLElement* statusParent = StatusParent(frame, command);
    if (LacksResponse(frame, reading, reply, trimmed.Root())) {
        ReportMissingResponse(frame.faultReader == FaultReader::kPullMessages, statusParent);
    } else if (ReadStatus(frame, reading, reply, trimmed.Root(), statusParent) &&
               frame.copyValues != nullptr) {
        frame.copyValues({trimmed.Root(), subject}, command);
    }
}

}  // namespace onvif_client
