#include "transform/FaultReaders.h"

#include <algorithm>
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

void CopyTrimmedLimits(const XMLElement* fault, XMLElement* parent) {
    for (const Limit& limit : kLimits) {
        if (const XMLElement* found = FindElement(fault, limit.trimmed)) {
            Append(parent, limit.element, TextOf(found));
        }
    }
}

void WritePullMessagesFault(XMLElement* parent) {
    Append(parent, "status", "fail");
    Append(parent, "errorCode", kFaultCode);
}

/// A qualified name in a text, without white space and prefix.
std::string_view LocalName(std::string_view text) {
    constexpr std::string_view kWhiteSpace = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    text = text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
    return text.substr(text.rfind(':') + 1);
}

bool IsRefusal(std::string_view code) {
    constexpr std::string_view kRefusals[] = {
        "NotAuthorized",   "SenderNotAuthorized",  "FailedAuthentication", "FailedCheck",
        "InvalidSecurity", "InvalidSecurityToken", "MessageExpired",
    };
    return std::find(std::begin(kRefusals), std::end(kRefusals), LocalName(code)) !=
           std::end(kRefusals);
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

int ParseFaultCode(const XMLElement* trimmedEnvelope, XMLElement* parent, FaultReading reading) {
    const XMLElement* fault = FindFault(trimmedEnvelope);
    if (fault == nullptr) {
        Append(parent, "status", "success");
        return 0;
    }
    const XMLElement* code = FindElement(fault, "Code");
    const auto is = [code, reading](std::string_view path, std::string_view name) {
        const std::string_view text = TextAt(code, path);
        return (reading == FaultReading::kOpen ? LocalName(text) : text) == name;
    };
    const bool invalidArgument = is("Value", "Sender") && is("Subcode/Value", "InvalidArgVal");
    const int errorCode = invalidArgument ? kInvalidArgumentCode : kFaultCode;
    WriteFault(fault, errorCode, parent);
    return errorCode;
}

bool ParsePullMessagesFault(std::string_view reply, XMLElement* parent) {
    if (reply.find("Fault") == std::string_view::npos) {
        Append(parent, "status", "success");  // nearly always, and without another parsing
        return true;
    }
    CXmlTransform transform(reply);
    XMLElement* fault =
        transform.FindChild(transform.Document().Root(), "s:Envelope/s:Body/s:Fault");
    if (fault == nullptr) {
        Append(parent, "status", "success");
        return true;
    }
    WritePullMessagesFault(parent);
    if (!CopyLimits(transform, fault, parent)) {
        // For devices that declare the prefix of the detail no earlier than there.
        const CXmlDocument trimmed(CXmlTransform::TrimXmlNamespace(reply));
        CopyTrimmedLimits(FindFault(trimmed.Root()), parent);
    }
    return false;
}

bool ParseTrimmedPullMessagesFault(const XMLElement* trimmedEnvelope, XMLElement* parent) {
    const XMLElement* fault = FindFault(trimmedEnvelope);
    if (fault == nullptr) {
        Append(parent, "status", "success");
        return true;
    }
    WritePullMessagesFault(parent);
    CopyTrimmedLimits(fault, parent);
    return false;
}

bool RefusesCredentials(const XMLElement* trimmedEnvelope) {
    const XMLElement* fault = FindFault(trimmedEnvelope);
    bool refuses = IsRefusal(TextOf(FirstChild(fault, "faultcode")));  // as SOAP 1.1 has it
    for (const XMLElement* code = FirstChild(fault, "Code"); code != nullptr && !refuses;
         code = FirstChild(code, "Subcode")) {
        refuses = IsRefusal(TextOf(FirstChild(code, "Value")));
    }
    return refuses;
}

void ReportMissingResponse(bool codeBeside, XMLElement* parent) {
    XMLElement* status = Append(parent, "status", "fail");
    Append(codeBeside ? parent : status, "errorCode", kFaultCode);
}

}  // namespace onvif_client
