/// @file
/// What a reply says of success: the readers that write `status`, `errorCode` and `description`.
///
/// A reply without a SOAP fault counts as a success, one that did not parse included. A fault gives
/// the status "fail" and the error code 6, or 31 where a reader tells an invalid argument apart.
/// Each reader writes below @p parent, or nothing when that is null, and returns its verdict either
/// way.
#ifndef ONVIF_CLIENT_TRANSFORM_FAULTREADERS_H
#define ONVIF_CLIENT_TRANSFORM_FAULTREADERS_H

#include <string_view>

#include "common/Extensions.h"
#include "common/XmlDocument.h"

namespace onvif_client {

/// How faults are understood.
enum class FaultReading {
    kLiteral,  ///< as described below
    kOpen,     ///< codes by their local names, the fault of a pull whatever its prefixes
};

inline FaultReading FaultReadingOf(CExtensions extensions) {
    return extensions.Has(Extension::kOpenFaults) ? FaultReading::kOpen : FaultReading::kLiteral;
}

constexpr int kFaultCode = 6;
constexpr int kInvalidArgumentCode = 31;

/// Reads "Envelope/Body/Fault" of a trimmed reply. `errorCode` and `description` stand inside
/// `status`, behind its text.
/// @return true on success.
bool ParseFault(const XMLElement* trimmedEnvelope, XMLElement* parent);

/// The same, but the code "Sender" with the subcode "InvalidArgVal", both written without a prefix,
/// gives 31.
/// @return 0 on success, else the error code.
int ParseFaultCode(const XMLElement* trimmedEnvelope, XMLElement* parent,
                   FaultReading reading = FaultReading::kLiteral);

/// Reads the fault of an untrimmed reply to PullMessages. `errorCode` stands beside `status`, with
/// the device's limits `maxtimeout` and `maxmessagelimit` where it tells them.
/// @return true on success.
bool ParsePullMessagesFault(std::string_view reply, XMLElement* parent);

/// The same, of a trimmed reply.
bool ParseTrimmedPullMessagesFault(const XMLElement* trimmedEnvelope, XMLElement* parent);

/// Whether a fault refuses the credentials of a request: its code or a subcode says so, by its
/// local name (NotAuthorized, FailedAuthentication, ...).
bool RefusesCredentials(const XMLElement* trimmedEnvelope);

/// Writes what a fault without a reason gives, for answers that are neither a fault nor a response.
/// @param codeBeside  `errorCode` stands beside `status`, not inside.
void ReportMissingResponse(bool codeBeside, XMLElement* parent);

}  // namespace onvif_client

#endif
