#include "client/HttpClient.h"
#include "commands/DeviceRequests.h"
#include "transform/TimeResults.h"

namespace onvif_client {

int CHttpClient::LookAtClock(std::string_view path) {
    const Target target{path, kOrdinaryReplyCapacity};
    const Reply bare = PostBare(target, BareClockEnvelope());
    if (LearnClock(bare)) {
        return status::kSuccess;
    }
    // Some devices tell their clock only to those who can log in. By their date, if they send one,
    // they accept the question even if their clock is wrong.
    const Reply asked = PostSignedAt(target, BuildGetSystemDateAndTime({}), deviceClock_.Now().utc);
    LearnClock(asked);
    const bool silent = bare.status == status::kNoReply && asked.status == status::kNoReply;
    return silent ? status::kNoReply : status::kSuccess;
}

bool CHttpClient::LearnClock(const Reply& reply) {
    if (reply.status == status::kSuccess) {
        const auto shown = ReadDeviceTime(reply.soap);
        if (const auto seconds = shown ? SecondsAt(*shown) : std::nullopt) {
            deviceClock_.Learn(*seconds);
            return true;
        }
    }
    if (reply.date) {
        deviceClock_.Learn(*reply.date);
    }
    return false;
}

bool CHttpClient::ClockMoved(const SigningTime& signedBy) {
    if (!credentials_.Present()) {
        return false;
    }
    const CLockGuard reading(clockReading_);
    if (deviceClock_.TakeLook()) {
        LookAtClock(ResolvePath("device"));
    }
    return deviceClock_.Now().clock != signedBy.clock;
}

Reply CHttpClient::PostByKeptClock(const Target& target, std::string_view envelope) {
    const SigningTime time = deviceClock_.Now();
    Reply reply = PostSignedAt(target, envelope, time.utc);
    if (reply.status == status::kNotAuthorized && ClockMoved(time)) {
        reply = PostSignedAt(target, envelope, deviceClock_.Now().utc);
    }
    return reply;
}

CalendarTime CHttpClient::TimeOfPull() {
    if (deviceClock_.TakeRefusal()) {
        ClockMoved(deviceClock_.Now());
    }
    return deviceClock_.Now().utc;
}

void CHttpClient::NoteClockSet() {
    if (!KeepsClock()) {
        return;
    }
    const CLockGuard reading(clockReading_);
    LookAtClock(ResolvePath("device"));
    // It may not have been set yet when it was looked at.
    deviceClock_.AllowLook();
}

}  // namespace onvif_client
