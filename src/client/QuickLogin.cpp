#include "client/HttpClient.h"
#include "commands/DeviceRequests.h"
#include "common/Beside.h"
#include "transform/ServiceAddresses.h"

namespace onvif_client {

/// The clock and the list of services do not depend on each other where the list is asked for
/// without credentials, and neither do the profiles and what the list lacks. A step that comes to
/// nothing here is taken as without the extension.
int CHttpClient::TakeQuickLoginSteps() {
    Reply list;
    int aligned = status::kNoReply;
    {
        CBeside asking(
            [&] {
                list = PostBare({kDefaultDevicePath, kServicesCapacity, kDiscoveryTimeoutMs},
                                BareServicesEnvelope());
            },
            [&] { GiveWay(); });
        aligned = AlignDeviceClock();
        asking.Wait();
    }
    if (aligned != status::kSuccess) {
        return aligned;
    }
    if (list.status == status::kNoReply) {
        GoOnAlone();
    }
    ServiceTable services;
    if (list.status == status::kSuccess) {
        TakeServices(list.soap, services);
    }
    // Who does not list media to everybody may keep more to himself.
    if (!services.contains("media") && !services.contains("media2")) {
        const int failed = DiscoverServices();
        return failed != status::kSuccess ? failed : ReadOptionsBehind(FetchProfiles());
    }
    return LearnProfilesBesideServices(std::move(services), ReadEventService(list.soap));
}

int CHttpClient::LearnProfilesBesideServices(ServiceTable services,
                                             const std::optional<EventService>& events) {
    {
        const CLockGuard guard(dataLock_);
        services_ = services;
        if (events) {
            eventsPath_ = events->path;
        }
    }
    if (events) {
        eventCapabilities_ = events->capabilities;
    }
    const bool eventsTold = events.has_value();
    const bool complete = eventsTold && services.contains("media") && services.contains("imaging");
    int completed = status::kSuccess;
    int learned = status::kNoReply;
    // Profiles may have to go to a media service that is not known yet.
    if (complete || !sideBySide_ || !services.contains("media")) {
        completed = complete ? completed : CompleteServices(services, eventsTold);
        AddServices(services);
        learned = completed == status::kSuccess ? FetchProfiles() : completed;
    } else {
        CBeside completing([&] { completed = CompleteServices(services, eventsTold); },
                           [&] { GiveWay(); });
        learned = FetchProfiles();
        completing.Wait();
        if (completed == status::kNoReply && learned != status::kNoReply) {
            GoOnAlone();
            completed = CompleteServices(services, eventsTold);
        } else if (learned == status::kNoReply && completed != status::kNoReply) {
            GoOnAlone();
            learned = FetchProfiles();
        }
        AddServices(services);
    }
    return completed != status::kSuccess ? completed : ReadOptionsBehind(learned);
}

void CHttpClient::AddServices(const ServiceTable& services) {
    const CLockGuard guard(dataLock_);
    services_.insert(services.begin(), services.end());
}

/// A device may serve one connection at a time, and wait for the next request of the one that has
/// its answer.
void CHttpClient::GiveWay() {
    sideBySide_ = false;
    kept_.Close();
}

/// One of two exchanges was left unanswered.
void CHttpClient::GoOnAlone() {
    keptTrust_ = KeptTrust::kRefused;
    GiveWay();
}

int CHttpClient::ReadOptionsSideBySide(const MediaProfile& profile) {
    int focus = status::kNoReply;
    int ptz = status::kNoReply;
    {
        CBeside asking([&] { focus = ReadFocusOptions(profile.videoSourceToken); },
                       [&] { GiveWay(); });
        ptz = ReadPtzOptions(profile.ptzConfigurationToken);
        asking.Wait();
    }
    if ((ptz == status::kNoReply) != (focus == status::kNoReply)) {
        GoOnAlone();
        if (ptz == status::kNoReply) {
            ptz = ReadPtzOptions(profile.ptzConfigurationToken);
        } else {
            ReadFocusOptions(profile.videoSourceToken);
        }
    }
    return ptz == status::kNoReply ? ptz : status::kSuccess;
}

}  // namespace onvif_client
