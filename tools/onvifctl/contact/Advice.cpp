#include "contact/Advice.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "contact/HttpReply.h"
#include "onvif_client/OnvifClient.h"

namespace onvifctl {

namespace {

enum class Cause {
    kNothing,
    kNobody,
    kNoAnswer,
    kNoRoute,
    kNotLetOut,
    kTls,
    kGreeting,
    kSilent,
    kHangsUp,
    kNoHttp,
    kToHttps,
    kElsewhere,
    kDigest,
    kBasic,
    kNotFound,
    kForbidden,
    kWebPage,
    kStatus,
    kNoOnvif,
    kCredentials,
    kNoUser,
    kClock,
    kGoesSilent,
    kLoginFails,
};

struct Row {
    Cause cause;
    Stage stage;
    const char* finding;  // {port} and {detail} are replaced
    const char* advice;
};

constexpr const char* kAnotherPort =
    "take the port that the device names for ONVIF or HTTP (80, 8000, 8080 and 8899 are usual)";
constexpr const char* kSwitchOn =
    "switch ONVIF on in the device, or take the port that it names for ONVIF";

constexpr Row kRows[] = {
    {Cause::kNothing, Stage::kLogin, "", ""},
    {Cause::kNobody, Stage::kTcp,
     "does not answer: nobody listens on port {port} (connection refused)", kAnotherPort},
    {Cause::kNoAnswer, Stage::kTcp, "does not answer: no connection to port {port} within 4 s",
     "check the address, the device's power, and firewalls on the way"},
    {Cause::kNoRoute, Stage::kTcp,
     "does not answer: there is no way to its network, or nobody there has the address",
     "check the address, and that this machine is in the device's network"},
    {Cause::kNotLetOut, Stage::kTcp, "does not answer: this machine cannot connect ({detail})",
     "check the address and this machine's firewall"},
    {Cause::kTls, Stage::kProtocol, "speaks HTTPS on port {port}",
     "allow HTTP in the device and take its HTTP port: the library speaks no HTTPS"},
    {Cause::kGreeting, Stage::kProtocol,
     "speaks first on port {port}, as no web server does: {detail}", kAnotherPort},
    {Cause::kSilent, Stage::kProtocol, "takes a connection to port {port} and says nothing",
     "take the port that the device names for ONVIF; restart the device if it is that one"},
    {Cause::kHangsUp, Stage::kProtocol,
     "takes a connection to port {port} and closes it without a word",
     "take the port that the device names for ONVIF, and see whether it permits only certain "
     "addresses"},
    {Cause::kNoHttp, Stage::kProtocol,
     "answers on port {port} with what is no proper HTTP: {detail}", kAnotherPort},
    {Cause::kToHttps, Stage::kRedirect, "sends on to HTTPS: {detail}",
     "allow HTTP in the device, without sending on: the library speaks no HTTPS"},
    {Cause::kElsewhere, Stage::kRedirect, "sends on to another address: {detail}",
     "name the host and the port of that address"},
    {Cause::kDigest, Stage::kAuthentication,
     "asks for HTTP Digest, and the extension http-digest is off",
     "switch it on: --extensions all, or ONVIF_CLIENT_EXTENSIONS"},
    {Cause::kBasic, Stage::kAuthentication,
     "asks for HTTP Basic and nothing else, which is not answered for a request",
     "let the device ask for Digest or for WS-UsernameToken"},
    {Cause::kNotFound, Stage::kHttp, "has no ONVIF on port {port} (HTTP status 404)", kSwitchOn},
    {Cause::kForbidden, Stage::kHttp, "forbids the request (HTTP status 403)",
     "see whether ONVIF is switched on in the device, and whether it permits only certain "
     "addresses or has locked this one out"},
    {Cause::kWebPage, Stage::kHttp, "answers with a web page where ONVIF should be", kSwitchOn},
    {Cause::kStatus, Stage::kHttp, "answers with HTTP status {detail} and without ONVIF",
     kSwitchOn},
    {Cause::kNoOnvif, Stage::kHttp, "does not answer as an ONVIF device", kSwitchOn},
    {Cause::kCredentials, Stage::kLogin, "refuses the user name or the password",
     "create an account in the device's list of ONVIF users, where it has one; before you try "
     "others: some devices lock an account after a few wrong passwords"},
    {Cause::kNoUser, Stage::kLogin, "refuses a login without a user", "name one by -u"},
    {Cause::kClock, Stage::kLogin,
     "refuses the user name, the password or the time of requests: its clock is {detail}",
     "switch keep-clock on (--extensions all), or set one of the clocks right"},
    {Cause::kGoesSilent, Stage::kLogin, "answers, but not the login",
     "switch the extensions on (--extensions all); with them on, --verbose shows what failed"},
    {Cause::kLoginFails, Stage::kLogin, "answers, but the login failed with code {detail}",
     "switch the extensions on (--extensions all); with them on, --verbose shows what failed"},
};

struct Found {
    Cause cause = Cause::kNothing;
    std::string detail{};
};

void Replace(std::string& text, std::string_view what, const std::string& with) {
    if (const std::size_t place = text.find(what); place != std::string::npos) {
        text.replace(place, what.size(), with);
    }
}

/// Of what a device says a line is enough, and not a long one.
std::string FirstLine(const std::string& text) {
    constexpr std::size_t kLongest = 200;
    return text.substr(0, std::min(text.find_first_of("\r\n"), kLongest));
}

Diagnosis Told(const Found& found, unsigned short port) {
    const Row& row = *std::find_if(std::begin(kRows), std::end(kRows),
                                   [&found](const Row& each) { return each.cause == found.cause; });
    Diagnosis diagnosis{row.stage, row.finding, row.advice};
    Replace(diagnosis.finding, "{port}", std::to_string(port));
    Replace(diagnosis.finding, "{detail}", FirstLine(found.detail));
    return diagnosis;
}

/// What speaks for itself before any HTTP.
Found BeforeHttp(const FirstContact& contact) {
    switch (contact.reach) {
        case Reach::kRefused:
            return {Cause::kNobody};
        case Reach::kNoRoute:
            return {Cause::kNoRoute};
        case Reach::kFailed:
            return {Cause::kNotLetOut, contact.reachError};
        case Reach::kPending:
        case Reach::kTimeOut:
            return {Cause::kNoAnswer};
        case Reach::kConnected:
            break;
    }
    if (contact.isTls) {
        return {Cause::kTls};
    }
    if (contact.reply.status != 0) {
        return {};
    }
    if (contact.bytes.empty()) {
        return {contact.hangsUp ? Cause::kHangsUp : Cause::kSilent};
    }
    return {contact.speaksFirst ? Cause::kGreeting : Cause::kNoHttp, contact.bytes};
}

/// What the challenges of a refusal ask for, where it cannot be given.
Found FromChallenges(const HttpReply& reply, const Attempt& attempt) {
    const bool digest = Offers(reply, "digest");
    if (reply.status != 401 || (digest && HasExtension(attempt.extensions, "http-digest"))) {
        return {};
    }
    if (digest) {
        return {Cause::kDigest};
    }
    return {Offers(reply, "basic") ? Cause::kBasic : Cause::kNothing};
}

Found FromHttp(const FirstContact& contact, const Attempt& attempt) {
    const HttpReply& reply = contact.reply;
    const std::string location = HeaderOf(reply, "location");
    if (reply.status / 100 == 3 && !location.empty()) {
        const bool toHttps = location.starts_with("https:") || location.starts_with("HTTPS:");
        return {toHttps ? Cause::kToHttps : Cause::kElsewhere, location};
    }
    if (reply.status == 401) {
        return FromChallenges(reply, attempt);
    }
    const BodyKind kind = KindOf(reply);
    if (kind == BodyKind::kEnvelope) {
        return FromChallenges(contact.toUnsigned, attempt);
    }
    if (reply.status == 404) {
        return {Cause::kNotFound};
    }
    if (reply.status == 403) {
        return {Cause::kForbidden};
    }
    if (reply.status != 200) {
        return {Cause::kStatus, std::to_string(reply.status)};
    }
    return {kind == BodyKind::kWebPage ? Cause::kWebPage : Cause::kNoOnvif};
}

Found FromContact(const FirstContact& contact, const Attempt& attempt) {
    Found found = BeforeHttp(contact);
    return found.cause == Cause::kNothing && contact.reply.status != 0 ? FromHttp(contact, attempt)
                                                                       : found;
}

Found FromLogin(unsigned int error, const FirstContact& contact, const Attempt& attempt) {
    Found found = FromContact(contact, attempt);
    if (error == ONVIF_CLIENT_NOT_AUTHORIZED) {
        if (found.cause == Cause::kDigest || found.cause == Cause::kBasic) {
            return found;
        }
        if (!attempt.hasUser) {
            return {Cause::kNoUser};
        }
        const bool apart = contact.clock && std::chrono::abs(*contact.clock) > kMostClockDifference;
        if (apart && !HasExtension(attempt.extensions, "keep-clock")) {
            return {Cause::kClock, ClockText(*contact.clock)};
        }
        return {Cause::kCredentials};
    }
    if (found.cause != Cause::kNothing) {
        return found;
    }
    return error == ONVIF_CLIENT_NO_REPLY ? Found{Cause::kGoesSilent}
                                          : Found{Cause::kLoginFails, std::to_string(error)};
}

ExitCode CodeOf(unsigned int error) {
    switch (error) {
        case ONVIF_CLIENT_NOT_AUTHORIZED:
            return ExitCode::kWrongCredentials;
        case ONVIF_CLIENT_NO_REPLY:
            return ExitCode::kUnreachable;
        default:
            return ExitCode::kLoginFailed;
    }
}

}  // namespace

Diagnosis DiagnosisOf(const FirstContact& contact, const Attempt& attempt) {
    return Told(FromContact(contact, attempt), attempt.port);
}

Diagnosis DiagnosisOf(unsigned int error, const FirstContact& contact, const Attempt& attempt) {
    return Told(FromLogin(error, contact, attempt), attempt.port);
}

CLoginFailure::CLoginFailure(unsigned int error, const std::string& host,
                             const Diagnosis& diagnosis)
    : CFailure(CodeOf(error), host + " " + diagnosis.finding + ". What helps: " + diagnosis.advice),
      host_(host),
      diagnosis_(diagnosis) {}

bool HasExtension(std::string_view extensions, std::string_view name) {
    while (!extensions.empty()) {
        const std::size_t end = std::min(extensions.find(','), extensions.size());
        std::string_view each = extensions.substr(0, end);
        const std::size_t start = std::min(each.find_first_not_of(' '), each.size());
        each = each.substr(start, each.find_last_not_of(' ') + 1 - start);
        if (each == name || (each == "all" && name != "no-basic")) {
            return true;
        }
        extensions.remove_prefix(std::min(end + 1, extensions.size()));
    }
    return false;
}

std::string ClockText(std::chrono::seconds difference) {
    std::int64_t seconds = std::chrono::abs(difference).count();
    if (seconds <= 2) {  // it was read over a network
        return "as this machine's";
    }
    if (seconds > 600) {
        seconds = (seconds + 30) / 60 * 60;
    }
    const std::pair<std::int64_t, const char*> parts[] = {
        {seconds / 3600, " h"}, {seconds / 60 % 60, " min"}, {seconds % 60, " s"}};
    std::string text;
    for (const auto& [number, unit] : parts) {
        if (number != 0) {
            text += (text.empty() ? "" : " ") + std::to_string(number) + unit;
        }
    }
    return text + (difference.count() > 0 ? " ahead of" : " behind") + " this machine's";
}

}  // namespace onvifctl
