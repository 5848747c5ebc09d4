#include "events/DeviceExchanges.h"

#include <string>

#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

/// Sends a Set document through the device's session.
/// @return the result document; empty when there is none.
std::string Set(std::uint32_t loginId, ISessionSource& sessions, const std::string& document) {
    const CSessionReference reference(sessions, loginId);
    std::string result;
    if (reference.Session() != nullptr) {
        reference.Session()->Set(document, result);
    }
    return result;
}

/// The same with a Get document.
std::string Get(std::uint32_t loginId, ISessionSource& sessions, const std::string& document) {
    const CSessionReference reference(sessions, loginId);
    ResponseBuffer result;
    if (reference.Session() != nullptr) {
        reference.Session()->Get(document, result);
    }
    return result.data == nullptr ? "" : result.data.get();
}

PullRequest BuildPullRequest(EventDeviceRecord& record, ISessionSource& sessions) {
    const CSessionReference reference(sessions, record.LoginId());
    CHttpClient* session = reference.Session();
    if (session == nullptr) {
        return {};
    }
    const PreparedRequest* prepared = record.PreparedPull(
        [session](const PullPoint& pull) { return session->PrepareRequest(PullDocument(pull)); });
    PullRequest request{session->DeviceAddress(), session->Port(),
                        prepared == nullptr ? "" : session->BuildHttpRequest(*prepared)};
    request.mayReuse = session->TrustsKeptConnections();
    record.ForgetIdlePull();
    if (!request.text.empty()) {
        request.trace = session->BeginTrace(request.text);
    }
    return request;
}

}  // namespace

bool Subscribe(EventDeviceRecord& record, ISessionSource& sessions) {
    record.BeginSubscribing();
    const std::string result =
        Set(record.LoginId(), sessions, CreateDocument(record.CallbackAddress()));
    const auto answer = ReadSubscription(result);
    if (!answer && WIRELINK_GetLastError() == kWirelinkNoSocket) {
        record.OnNoSocket();
    }
    record.EndSubscribing(answer);
    if (answer && record.AsksForInputs()) {
        record.SetInputs(ReadInputs(Get(record.LoginId(), sessions, InputsDocument())));
    }
    return answer.has_value();
}

void Resubscribe(EventDeviceRecord& record, ISessionSource& sessions) {
    if (!record.AwaitsFirstSubscription()) {
        Set(record.LoginId(), sessions, UnsubscribeDocument(record.Pull().address));
    }
    if (Subscribe(record, sessions)) {
        // A pull that still waits on the old subscription would tell of old states later.
        SendPull(record, sessions);
    }
}

void Renew(EventDeviceRecord& record, ISessionSource& sessions) {
    Set(record.LoginId(), sessions, RenewDocument(record.RenewAddress()));
}

void SendPull(EventDeviceRecord& record, ISessionSource& sessions) {
    record.EndPull();
    record.BeginPull(BuildPullRequest(record, sessions));
}

}  // namespace onvif_client
