#include "Connection.h"

#include <atomic>
#include <memory>

#include "ExitCode.h"
#include "contact/Address.h"
#include "contact/Advice.h"
#include "contact/Probe.h"
#include "documents/RequestDocument.h"
#include "hosts/Credentials.h"
#include "onvif_client/OnvifClient.h"
#include "picture/Picture.h"
#include "system/Environment.h"
#include "system/StandardStreams.h"
#include "trace/ExchangeLog.h"
#include "trace/FailureCause.h"

namespace onvifctl {

namespace {

/// Whether a login that fails should be looked into: not when the library's end broke it off.
std::atomic<bool> libraryRuns{false};

CLoginFailure LoginFailure(unsigned int error, const ConnectionOptions& options,
                           const Address& address, const FirstContact& contact) {
    const Attempt attempt{address.port, !options.user.empty(), Variable("ONVIF_CLIENT_EXTENSIONS")};
    return {error, options.host, DiagnosisOf(error, contact, attempt)};
}

}  // namespace

bool NeedsPassword(const ConnectionOptions& options) {
    return !options.password && options.passwordFile.empty() && options.passwordCommand.empty() &&
           !options.user.empty();
}

std::string PasswordFor(const ConnectionOptions& options) {
    if (options.password) {
        return *options.password;
    }
    if (!options.passwordFile.empty()) {
        return PasswordOfFile(options.passwordFile);
    }
    if (!options.passwordCommand.empty()) {
        return PasswordOfCommand(options.passwordCommand);
    }
    if (options.user.empty()) {
        return "";
    }
    return AskForPassword("Password of " + options.user + " at " + options.host + ": ")
        .value_or("");
}

ConnectionOptions WithPassword(ConnectionOptions options) {
    options.password = PasswordFor(options);
    return options;
}

CStartedLibrary::CStartedLibrary(const ConnectionOptions& options) {
    // Standard output is for data.
    SetMissingVariable("ONVIF_CLIENT_TRACE", options.verbose ? "stderr" : "off");
    if (options.extensions) {
        SetVariable("ONVIF_CLIENT_EXTENSIONS", *options.extensions);
    } else {
        SetMissingVariable("ONVIF_CLIENT_EXTENSIONS", "all");
    }
    if (!options.verbose) {
        SetMissingVariable("ONVIF_CLIENT_LOG", "error");
    }
    // The tool pulls its events: nobody else needs to reach it.
    SetMissingVariable("ONVIF_CLIENT_LISTEN_ADDRESS", "127.0.0.1");
    CExchangeLog::Instance().Prepare(options.trace);
    ONVIF_CLIENT_Initial();
    try {
        CExchangeLog::Instance().Begin(options.verbose);
    } catch (...) {
        ONVIF_CLIENT_Quit();
        throw;
    }
    libraryRuns = true;
}

CStartedLibrary::~CStartedLibrary() {
    libraryRuns = false;
    ONVIF_CLIENT_Quit();
    CExchangeLog::Instance().End();
}

CConnection::CConnection(const ConnectionOptions& options, const FirstContact* known)
    : loginId_(ONVIF_CLIENT_NO_LOGIN_ID) {
    const Address address = ParseAddress(options.host);
    const std::string ip = Resolve(address.name);
    const std::string password = PasswordFor(options);
    unsigned int error = 0;
    device_ = ip + ":" + std::to_string(address.port);
    loginId_ = ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, ip.c_str(), address.port,
                                  options.user.c_str(), password.c_str(), &error);
    CExchangeLog::Instance().Show();
    if (loginId_ == ONVIF_CLIENT_NO_LOGIN_ID) {
        throw LoginFailure(error, options, address,
                           known != nullptr ? *known : LookAt(ip, address.port, [] {
                               return libraryRuns.load();
                           }));
    }
}

CConnection::~CConnection() {
    ONVIF_CLIENT_Logout(loginId_);
}

std::string CConnection::Send(const std::string& request) const {
    CExchangeLog& log = CExchangeLog::Instance();
    const std::uint64_t began = log.Now();
    char* response = nullptr;
    int length = 0;
    const bool success = RootOf(request) == "Get"
                             ? ONVIF_CLIENT_GetCfg(loginId_, request.c_str(), response, &length)
                             : ONVIF_CLIENT_SetCfg(loginId_, request.c_str(), response);
    std::string result = response == nullptr ? "" : response;
    ONVIF_CLIENT_DelResponseBuff(response);
    log.Show();
    if (!success) {
        throw CFailure(ExitCode::kRefused, CauseOfFailure(log.Since(began, device_)));
    }
    return result;
}

std::string CConnection::Picture(unsigned int index) const {
    const std::string request =
        MakeRequest("Get", {"snapshotURI", "--index", std::to_string(index)});
    CExchangeLog& log = CExchangeLog::Instance();
    const std::uint64_t began = log.Now();
    char* response = nullptr;
    int length = 0;
    const bool success = ONVIF_CLIENT_GetCfg(loginId_, request.c_str(), response, &length);
    std::string picture;
    if (response != nullptr && length > 0) {
        picture.assign(response, static_cast<std::size_t>(length));
    }
    ONVIF_CLIENT_DelResponseBuff(response);
    log.Show();
    if (!success || picture.empty()) {
        throw CFailure(ExitCode::kRefused, "no picture of profile " + std::to_string(index) + ": " +
                                               CauseOfFailure(log.Since(began, device_)));
    }
    CheckPicture(picture);
    return picture;
}

}  // namespace onvifctl
