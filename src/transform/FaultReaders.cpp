#include "transform/FaultReaders.h"

#include <iterator>

#include "transform/XmlTransform.h"

namespace onvif_client {

namespace {

const XMLElement* FindFault(const XMLElement* trimmedEnvelope) {
    return FindElement(trimmedEnvelope, "Envelope/Body/Fault");
}

void WriteFault(const XMLElement* fault, int code, XMLElement* parent) {
    XMLElement* status = Append(parent, "status", "fail");
    Append(status, "errorCode", code);
    if (const XMLElement* reason = FindElement(fault, "Reason/Text")) {
        Append(status, "description", TextOf(reason));
    }
}

struct Limit {
    const char* source;   // canonical
    const char* trimmed;  // the same without prefixes
    const char* element;
};

constexpr Limit kLimits[] = {
    {"s:Detail/ew:PullMessagesFaultResponse/ew:MaxTimeout",
     "Detail/PullMessagesFaultResponse/MaxTimeout", "maxtimeout"},
    {"s:Detail/ew:PullMessagesFaultResponse/ew:MaxMessageLimit",
     "Detail/PullMessagesFaultResponse/MaxMessageLimit", "maxmessagelimit"},
};

/// @return true when there was any.
bool CopyLimits(CXmlTransform& transform, const XMLElement* fault, XMLElement* parent) {
    bool any = false;
    for (const Limit& limit : kLimits) {
        std::string text;
        if (transform.GetChildText(fault, limit.source, text)) {
            Append(parent, limit.element, text);
            any = true;
        }
    }
    return any;
}

/// For devices that declare the prefix of the detail no earlier than there.
void CopyLimits(std::string_view reply, XMLElement* parent) {
    const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
    const XMLElement* fault = FindFault(trimmed.Root());
    for (const Limit& limit : kLimits) {
        if (const XMLElement* found = FindElement(fault, limit.trimmed)) {
            Append(parent, limit.element, TextOf(found));
        }
    }
}

}  // namespace

bool ParseFault(const XMLElement* trimmedEnvelope, XMLElement* parent) {
    const XMLElement* fault = FindFault(trimmedEnvelope);
    if (fault == nullptr) {
        Append(parent, "status", "success");
        return true;
    }
    WriteFault(fault, kFaultCode, parent);
    return false;
}

int ParseFaultCode(const XMLElement* trimmedEnvelope, XMLElement* parent) {
    const XMLElement* fault = FindFault(trimmedEnvelope);
    if (fault == nullptr) {
        Append(parent, "status", "success");
        return 0;
    }
    const XMLElement* code = FindElement(fault, "Code");
    const bool invalidArgument =
        TextAt(code, "Value") == "Sender" && TextAt(code, "Subcode/Value") == "InvalidArgVal";
    const int errorCode = invalidArgument ? kInvalidArgumentCode : kFaultCode;
    WriteFault(fault, errorCode, parent);
    return errorCode;
}

bool ParsePullMessagesFault(std::string_view reply, XMLElement* parent) {
    CXmlTransform transform(reply);
    XMLElement* fault =
        transform.FindChild(transform.Document().Root(), "s:Envelope/s:Body/s:Fault");
    if (fault == nullptr) {
        Append(parent, "status", "success");
        return true;
    }
    Append(parent, "status", "fail");
    Append(parent, "errorCode", kFaultCode);
    if (!CopyLimits(transform, fault, parent)) {
        CopyLimits(reply, parent);
    }
    return false;
}

void ReportMissingResponse(bool codeBeside, XMLElement* parent) {
    XMLElement* status = Append(parent, "status", "fail");
    Append(codeBeside ? parent : status, "errorCode", kFaultCode);
}

}  // namespace onvif_client
