#include "client/HttpClient.h"
#include "commands/DeviceRequests.h"
#include "commands/Sender.h"
#include "commands/ServiceRequests.h"
#include "common/LogText.h"
#include "common/TraceText.h"

namespace onvif_client {

int CHttpClient::Login() {
    patience_.emplace();
    const int ended = IsQuick() ? TakeQuickLoginSteps() : TakeLoginSteps();
    // Some steps go on without a reply.
    const int outcome = patience_->Lost() ? status::kNoReply : ended;
    patience_.reset();
    loggedIn_ = outcome == status::kSuccess;
    return outcome;
}

int CHttpClient::TakeLoginSteps() {
    if (const int failed = AlignDeviceClock()) {
        return failed;
    }
    if (const int failed = DiscoverServices()) {
        return failed;
    }
    return ReadOptionsBehind(FetchProfiles());
}

int CHttpClient::FetchProfiles() {
    CResultDocument discarded;
    return SendCommand(*this, *FindCommand(kGetCommands, "profiles"), {}, discarded);
}

/// The options that depend on the profiles, if those came.
int CHttpClient::ReadOptionsBehind(int profilesStatus) {
    return profilesStatus == status::kSuccess ? ReadOptions() : profilesStatus;
}

/// Afterwards requests are signed by a time that the device agrees with.
int CHttpClient::AlignDeviceClock() {
    if (KeepsClock()) {
        deviceClock_.TakeLook();
        return LookAtClock(kDefaultDevicePath);
    }
    std::string deviceTime;
    const int failed = CheckDeviceClock(deviceTime);
    return failed != status::kSuccess ? failed : SetDeviceClock(std::move(deviceTime));
}

int CHttpClient::CheckDeviceClock(std::string& deviceTime) {
    if (FetchDeviceClock(kDefaultDevicePath, deviceTime) == status::kSuccess) {
        return status::kSuccess;
    }
    // Some devices tell their clock only to those who can log in.
    const Reply reply =
        PostSigned({kDefaultDevicePath, kOrdinaryReplyCapacity}, BuildGetSystemDateAndTime({}));
    if (reply.status == status::kNotAuthorized && AnswersDigest()) {
        return reply.status;
    }
    return reply.status == status::kSuccess ? status::kSuccess : status::kNoReply;
}

int CHttpClient::SetDeviceClock(std::string deviceTime) {
    if (!IsQuick()) {
        deviceTime.clear();
        FetchDeviceClock(kDefaultDevicePath, deviceTime);
    }
    // Our time is read last, so that a slow answer does not make it late.
    const std::string setting = BuildLoginClockSetting(UtcNow(), ReadLocalTimeZone());
    const int answered =
        PostSignedByDeviceClock({kDefaultDevicePath, kOrdinaryReplyCapacity}, setting, deviceTime)
            .status;
    const bool fatal = answered == status::kNotAuthorized || answered == status::kNoReply;
    return fatal ? answered : status::kSuccess;
}

int CHttpClient::DiscoverServices() {
    ServiceTable services;
    const int listed = GetServersUrl(services);
    Trace("%s,%s:%d ---------------\n", tracepoint::kServicesRead.label,
          tracepoint::kServicesRead.function, tracepoint::kServicesRead.line);
    // Where no clock is set, this is the first request that tells a wrong password.
    if (listed == status::kNoReply || (listed == status::kNotAuthorized && KeepsClock())) {
        return listed;
    }
    const int failed = listed != status::kSuccess || services.empty()
                           ? DiscoverWithoutServices(services)
                           : CompleteServices(services);
    const CLockGuard guard(dataLock_);
    services_ = std::move(services);
    return failed;
}

int CHttpClient::GetServersUrl(ServiceTable& services) {
    const Reply reply = PostSigned({kDefaultDevicePath, kServicesCapacity, kDiscoveryTimeoutMs},
                                   GetServicesEnvelope());
    TakeServices(reply.status == status::kSuccess ? reply.soap : "", services);
    return reply.status;
}

/// @param reply  empty: none.
void CHttpClient::TakeServices(std::string_view reply, ServiceTable& services) {
    for (int unknown = reply.empty() ? 0 : ReadServices(reply, services); unknown > 0; --unknown) {
        LogNormalOf(DeviceName(ip_, port_), logpoint::kUnknownService, "%s",
                    "Warning, unknowed service address!!");
    }
    const bool media2 = services.contains("media2");
    {
        const CLockGuard guard(dataLock_);
        hasMedia2_ = media2;
    }
    const TracePoint& trace = media2 ? tracepoint::kMedia2 : tracepoint::kNoMedia2;
    Trace("\n\n%s,%s:%d , is  %s. \n", trace.label, trace.function, trace.line,
          media2 ? "h265" : "h264");
}

int CHttpClient::ReadAllCapabilities(ServiceTable& services) {
    const Reply reply =
        PostSigned({kDefaultDevicePath, kOrdinaryReplyCapacity, kDiscoveryTimeoutMs},
                   BuildGetCapabilities("All"));
    if (reply.status == status::kSuccess) {
        ReadCapabilities(reply.soap, services, eventCapabilities_);
    }
    return reply.status;
}

int CHttpClient::ProbeCapability(const CapabilityCategory& category, ServiceTable& services) {
    if (!category.inSchema && extensions_.Has(Extension::kStandardRequests)) {
        return status::kNotAnswered;
    }
    const Reply reply =
        PostSigned({kDefaultDevicePath, kOrdinaryReplyCapacity, kDiscoveryTimeoutMs},
                   BuildGetCapabilities(category.name));
    if (reply.status == status::kSuccess) {
        if (const auto path = ReadCapability(reply.soap, category)) {
            services.emplace(category.key, *path);
        }
    }
    return reply.status;
}

/// For devices that do not know GetServices.
int CHttpClient::DiscoverWithoutServices(ServiceTable& services) {
    const int read = ReadAllCapabilities(services);
    if (read != status::kSuccess || services.empty()) {
        for (const CapabilityCategory& category : CapabilityCategories()) {
            if (ProbeCapability(category, services) == status::kNoReply) {
                return status::kNoReply;
            }
        }
    }
    if (services.empty()) {
        services = {{"device", std::string(kDefaultDevicePath)}, {"media", "onvif/Media"}};
    }
    return status::kSuccess;
}

/// For devices that listed their services: what the list leaves out.
/// @param eventsTold  the list has told where events are.
int CHttpClient::CompleteServices(ServiceTable& services, bool eventsTold) {
    ServiceTable scratch;
    if (!eventsTold && ReadAllCapabilities(scratch) == status::kNoReply) {
        return status::kNoReply;
    }
    if (const auto events = scratch.find("events"); events != scratch.end()) {
        const CLockGuard guard(dataLock_);
        eventsPath_ = events->second;
    }
    for (const CapabilityCategory& category : CapabilityCategories()) {
        const std::string_view key = category.key;
        const bool needed = (key == "media" || key == "imaging") && !services.contains(key);
        if (needed && ProbeCapability(category, services) == status::kNoReply) {
            return status::kNoReply;
        }
    }
    return status::kSuccess;
}

/// The options that later commands need, as far as the device has the services.
int CHttpClient::ReadOptions() {
    const auto profiles = Profiles();
    if (profiles->empty()) {
        return status::kSuccess;
    }
    const MediaProfile& first = profiles->front();
    const ServiceTable services = Services();
    const bool ptz = services.contains("ptz") && !first.ptzConfigurationToken.empty();
    const bool focus = services.contains("imaging") && !first.videoSourceToken.empty();
    if (ptz && focus && sideBySide_) {
        return ReadOptionsSideBySide(first);
    }
    if (ptz && ReadPtzOptions(first.ptzConfigurationToken) == status::kNoReply) {
        return status::kNoReply;
    }
    if (focus) {
        ReadFocusOptions(first.videoSourceToken);
    }
    return status::kSuccess;
}

int CHttpClient::ReadPtzOptions(const std::string& token) {
    const Reply reply = Exchange({BuildGetPtzOptions(token), "ptz"});
    if (reply.status == status::kSuccess) {
        ReadPtzRanges(reply.soap, ptzRanges_.emplace());
    }
    return reply.status;
}

int CHttpClient::ReadFocusOptions(const std::string& token) {
    const Reply reply = Exchange({BuildGetMoveOptions(token), "imaging"});
    if (reply.status == status::kSuccess) {
        ReadFocusSpeedRange(reply.soap, focusSpeedRange_.emplace());
    }
    return reply.status;
}

}  // namespace onvif_client
