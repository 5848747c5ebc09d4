/// @file
/// SOAP faults, with those that many operations answer.
#ifndef CAMERA_SIM_SOAP_SOAPFAULT_H
#define CAMERA_SIM_SOAP_SOAPFAULT_H

#include <string>

namespace camera_sim {

/// A SOAP 1.2 fault.
struct SoapFault {
    std::string code = "Sender";  ///< "Sender" or "Receiver"
    /// Below the ONVIF error namespace, e.g. "NotAuthorized", or with another namespace's usual
    /// prefix, e.g. "wsrf-rw:ResourceUnknownFault"; empty: none.
    std::string subcode{};
    std::string detailCode{};  ///< the subcode's own subcode, e.g. "NoProfile"; empty: none
    std::string reason{};
    std::string detail{};  ///< an XML element that declares its namespaces; empty: none
};

class CXmlWriter;

SoapFault InvalidArgument(std::string detailCode, std::string reason);
SoapFault NotSupported(std::string reason);
/// For a profile without what the operation needs.
SoapFault IncompleteProfile();
SoapFault NotAuthorized();
void WriteFault(CXmlWriter& out, const SoapFault& fault);

}  // namespace camera_sim

#endif
