#include "events/PullConnection.h"

#include <utility>

#include "common/LogText.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

constexpr int kTries = 3;
constexpr std::uint32_t kTryMs = 600;
constexpr std::uint32_t kSendMs = 1000;

}  // namespace

void CPullConnection::Begin(PullRequest request) {
    if (!request.mayReuse) {
        Close();
    }
    CWirelinkHandle replaced;  // its callbacks take the lock
    {
        const CLockGuard guard(lock_);
        request_ = std::move(request);
        triesLeft_ = kTries;
        reuses_ = rests_;
        if (reuses_ && ReuseLocked()) {
            return;
        }
        reuses_ = false;
        replaced = std::move(connection_);
        if (TryLocked()) {
            return;
        }
    }
    sink_.OnNoSocket();
}

void CPullConnection::Close() {
    CWirelinkHandle closed;
    const CLockGuard guard(lock_);
    closed = std::move(connection_);
    rests_ = false;
}

void CPullConnection::Rest() {
    std::uint32_t handle = 0;
    {
        const CLockGuard guard(lock_);
        handle = connection_.Get();
        rests_ = handle != 0;
    }
    WIRELINK_UnRegisterNode(handle);
}

bool CPullConnection::Reuses() const {
    const CLockGuard guard(lock_);
    return reuses_;
}

bool CPullConnection::Exists() const {
    const CLockGuard guard(lock_);
    int ignored = 0;
    return connection_ && WIRELINK_PopConnectResult(connection_.Get(), ignored, 0);
}

bool CPullConnection::ReuseLocked() {
    char unasked = 0;
    bool closed = false;
    if (WIRELINK_Recv_Immediate(connection_.Get(), &unasked, 1, &closed) > 0 || closed) {
        return false;
    }
    rests_ = false;
    stands_ = false;
    sent_ = 0;
    return SendLocked();
}

bool CPullConnection::TryLocked() {
    --triesLeft_;
    rests_ = false;
    stands_ = false;
    sent_ = 0;
    connection_ = CWirelinkHandle(WIRELINK_AddConnect(0, request_.host.c_str(), request_.port));
    if (!connection_) {
        return WIRELINK_GetLastError() != kWirelinkNoSocket;
    }
    int outcome = 0;
    if (WIRELINK_PopConnectResult(connection_.Get(), outcome, 0) && outcome > 0) {
        SendLocked();  // on the same machine it stands at once
    } else {
        WIRELINK_AwaitSendable(connection_.Get(), this, kTryMs);
    }
    return true;
}

void CPullConnection::OnSendable(std::uint32_t handle, bool ready) {
    CWirelinkHandle ended;  // without the lock; its own callback does not hold that up
    {
        const CLockGuard guard(lock_);
        if (connection_.Get() != handle) {
            return;
        }
        if (ready) {
            SendLocked();
            return;
        }
        if (stands_) {
            return;  // what was sent may be enough for an answer; else the pull runs into its
                     // time-out
        }
        if (triesLeft_ > 0) {
            ended = std::move(connection_);
            TryLocked();
            return;
        }
    }
    // The connection stays until this has returned: Close waits for its callback.
    sink_.OnNoConnection();
    const CLockGuard guard(lock_);
    if (connection_.Get() == handle) {
        ended = std::move(connection_);
    }
}

bool CPullConnection::SendLocked() {
    const std::uint32_t handle = connection_.Get();
    if (!std::exchange(stands_, true)) {
        int result = 0;
        if (!WIRELINK_RegisterNode(handle, &parser_, &parser_, 1, 1) &&
            WIRELINK_PopConnectResult(handle, result, 0)) {  // else the layer has just stopped
            LogAssert(loglabel::kOnvifEvent, "a pull's connection was not registered",
                      DeviceName(request_.host, request_.port));
        }
        WIRELINK_Start(handle);
    }
    while (sent_ < request_.text.size()) {
        const int sent = WIRELINK_Send(handle, request_.text.data() + sent_,
                                       static_cast<std::uint32_t>(request_.text.size() - sent_));
        if (sent > 0) {
            sent_ += static_cast<std::size_t>(sent);
        } else {
            if (WIRELINK_GetLastError() != kWirelinkWouldBlock) {
                return false;
            }
            WIRELINK_AwaitSendable(handle, this, kSendMs);
            break;
        }
    }
    if (sent_ == request_.text.size()) {
        std::string().swap(request_.text);  // hundreds of pulls wait for a minute
        sent_ = 0;
    }
    return true;
}

}  // namespace onvif_client
