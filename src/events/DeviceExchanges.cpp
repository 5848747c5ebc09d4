#include "events/DeviceExchanges.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "common/LogText.h"
#include "platform/Clock.h"
#include "platform/Wirelink.h"
#include "platform/WirelinkHandle.h"

namespace onvif_client {

namespace {

constexpr int kConnectionTries = 3;
constexpr int kResultPolls = 20;
constexpr std::uint32_t kResultPauseMs = 30;
constexpr int kSendTries = 100;
constexpr std::uint32_t kSendPauseMs = 10;

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

struct HttpRequest {
    std::string host;
    std::uint16_t port = 0;
    std::string text;  // empty: nothing to send
};

HttpRequest BuildPullRequest(const EventDeviceRecord& record, ISessionSource& sessions) {
    const CSessionReference reference(sessions, record.LoginId());
    CHttpClient* session = reference.Session();
    if (session == nullptr) {
        return {};
    }
    return {session->DeviceAddress(), session->Port(),
            session->BuildHttpRequest(PullDocument(record.Pull()))};
}

void SendAll(std::uint32_t handle, std::string_view text) {
    for (int i = 0; i < kSendTries && !text.empty(); ++i) {
        const int sent =
            WIRELINK_Send(handle, text.data(), static_cast<std::uint32_t>(text.size()));
        if (sent > 0) {
            text.remove_prefix(static_cast<std::size_t>(sent));
        } else if (WIRELINK_GetLastError() == kWirelinkWouldBlock) {
            SleepMilliseconds(kSendPauseMs);
        } else {
            break;
        }
    }
}

/// @return false when another try may do better. True when the request is on its way, was lost on a
///         connection that stood, or no connection is to be had.
bool TryPull(EventDeviceRecord& record, const HttpRequest& request) {
    CWirelinkHandle connection(WIRELINK_AddConnect(0, request.host.c_str(), request.port));
    const std::uint32_t handle = connection.Get();
    if (handle == 0) {
        return true;
    }
    record.SetConnection(std::move(connection));
    if (!AwaitConnected(handle, kResultPolls, kResultPauseMs)) {
        record.CloseConnection();
        return false;
    }
    CEventParse& parser = record.Parser();
    int result = 0;
    if (!WIRELINK_RegisterNode(handle, &parser, &parser, 1, 1) &&
        WIRELINK_PopConnectResult(handle, result, 0)) {  // else the layer has just stopped
        LogAssert(loglabel::kOnvifEvent, "a pull's connection was not registered");
    }
    WIRELINK_Start(handle);
    SendAll(handle, request.text);
    return true;
}

}  // namespace

bool Subscribe(EventDeviceRecord& record, ISessionSource& sessions) {
    record.BeginSubscribing();
    const std::string result =
        Set(record.LoginId(), sessions, CreateDocument(record.CallbackAddress()));
    const auto answer = ReadSubscription(result);
    record.EndSubscribing(answer);
    return answer.has_value();
}

void Resubscribe(EventDeviceRecord& record, ISessionSource& sessions) {
    Set(record.LoginId(), sessions, UnsubscribeDocument(record.Pull().address));
    if (Subscribe(record, sessions)) {
        // A pull that still waits on the old subscription would tell of old states later.
        SendPull(record, sessions);
    }
}

void Renew(EventDeviceRecord& record, ISessionSource& sessions) {
    Set(record.LoginId(), sessions, RenewDocument(record.RenewAddress()));
}

void SendPull(EventDeviceRecord& record, ISessionSource& sessions) {
    record.CloseConnection();
    record.BeginPull();
    const HttpRequest request = BuildPullRequest(record, sessions);
    bool done = request.text.empty();
    for (int i = 0; i < kConnectionTries && !done; ++i) {
        done = TryPull(record, request);
    }
    if (!done) {
        record.MarkSilent();
    }
}

}  // namespace onvif_client
