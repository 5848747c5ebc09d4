/// @file
/// Why a login failed, and what to do next.
#ifndef ONVIFCTL_CONTACT_ADVICE_H
#define ONVIFCTL_CONTACT_ADVICE_H

#include <chrono>
#include <string>
#include <string_view>

#include "ExitCode.h"
#include "contact/Probe.h"

namespace onvifctl {

/// The place in a first contact where something is found.
enum class Stage { kTcp, kProtocol, kHttp, kRedirect, kAuthentication, kLogin };

struct Diagnosis {
    Stage stage = Stage::kLogin;
    std::string finding;  // of the device: "does not answer ..."; empty: nothing is wrong
    std::string advice;
};

/// What is known when a login has failed.
struct Attempt {
    unsigned short port = 80;
    bool hasUser = false;
    std::string extensions;  // those in use, as in ONVIF_CLIENT_EXTENSIONS
};

/// What a first look shows to be wrong; nothing where the device answers as it should.
Diagnosis DiagnosisOf(const FirstContact& contact, const Attempt& attempt);

/// Why a login failed with @p error, an ONVIF_CLIENT_ErrorCode.
Diagnosis DiagnosisOf(unsigned int error, const FirstContact& contact, const Attempt& attempt);

/// Ends the tool as a failed login does.
class CLoginFailure : public CFailure {
 public:
    CLoginFailure(unsigned int error, const std::string& host, const Diagnosis& diagnosis);
    const Diagnosis& Why() const { return diagnosis_; }
    /// The message without the advice.
    std::string Finding() const { return host_ + " " + diagnosis_.finding; }

 private:
    const std::string host_;
    const Diagnosis diagnosis_;
};

/// Whether @p name is among extensions as in ONVIF_CLIENT_EXTENSIONS.
bool HasExtension(std::string_view extensions, std::string_view name);

/// Clocks that differ by more are apart: most devices then refuse what is signed by the other one.
inline constexpr std::chrono::seconds kMostClockDifference{30};

/// "3 h 5 min ahead of this machine's".
std::string ClockText(std::chrono::seconds difference);

}  // namespace onvifctl

#endif
