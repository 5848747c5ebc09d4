#include "camera_sim/soap/SoapFault.h"

#include <string_view>
#include <utility>

#include "camera_sim/soap/Namespaces.h"
#include "camera_sim/soap/XmlWriter.h"

namespace camera_sim {
SoapFault InvalidArgument(std::string detailCode, std::string reason) {
    return {"Sender", "InvalidArgVal", std::move(detailCode), std::move(reason)};
}

SoapFault NotSupported(std::string reason) {
    return {"Receiver", "ActionNotSupported", {}, std::move(reason)};
}

SoapFault IncompleteProfile() {
    return {"Receiver", "Action", "IncompleteConfiguration", "The profile has no video encoder"};
}

SoapFault NotAuthorized() {
    return {"Sender", "NotAuthorized", {}, "Sender not Authorized"};
}

void WriteFault(CXmlWriter& out, const SoapFault& fault) {
    const CXmlWriter::CScope element(out, Ns::kSoap, "Fault");
    {
        const CXmlWriter::CScope code(out, Ns::kSoap, "Code");
        out.Element(Ns::kSoap, "Value", out.QualifiedName(Ns::kSoap, fault.code));
        if (!fault.subcode.empty()) {
            const CXmlWriter::CScope subcode(out, Ns::kSoap, "Subcode");
            const auto colon = fault.subcode.find(':');
            const auto ns = FindUsualPrefix(std::string_view(fault.subcode).substr(0, colon));
            const bool foreign = colon != std::string::npos && ns;
            out.Element(Ns::kSoap, "Value",
                        foreign ? out.QualifiedName(*ns, fault.subcode.substr(colon + 1))
                                : out.QualifiedName(Ns::kError, fault.subcode));
            if (!fault.detailCode.empty()) {
                const CXmlWriter::CScope detailCode(out, Ns::kSoap, "Subcode");
                out.Element(Ns::kSoap, "Value", out.QualifiedName(Ns::kError, fault.detailCode));
            }
        }
    }
    {
        const CXmlWriter::CScope reason(out, Ns::kSoap, "Reason");
        const CXmlWriter::CScope text(out, Ns::kSoap, "Text");
        out.Attribute("xml:lang", "en");
        out.Text(fault.reason);
    }
    if (fault.detail.empty()) {
        return;
    }
    const CXmlWriter::CScope detail(out, Ns::kSoap, "Detail");
    out.Raw(fault.detail);
}

}  // namespace camera_sim
