#include "client/SecurityHeader.h"

#include <utility>

#include "common/LogPoints.h"
#include "common/TraceText.h"
#include "platform/Clock.h"
#include "platform/Digests.h"
#include "platform/Mutex.h"
#include "platform/PerProcess.h"
#include "transform/TimeResults.h"

namespace onvif_client {

namespace {

constexpr const char* kHeader = "s:Envelope/s:Header";
constexpr const char* kSecurity = "s:Envelope/s:Header/wsse:Security";
constexpr const char* kToken = "s:Envelope/s:Header/wsse:Security/wsse:UsernameToken";

struct NonceCounter {
    CMutex lock;  // keeps tick reads in the counter's order, too; leaf
    std::uint32_t last GUARDED_BY(lock) = 0;
};

constinit CPerProcess<NonceCounter> nonceCounter;

/// Ticks never go back and the counter always moves, so under one lock the sums only ascend and no
/// nonce comes twice, whatever number of threads asks.
std::uint32_t NextNonceValue() {
    NonceCounter& counter = nonceCounter.Get();
    const CLockGuard guard(counter.lock);
    ++counter.last;
    return TickCount() + counter.last;
}

void Remove(CXmlTransform& envelope, std::string path) {
    envelope.LocalizePath(path);
    envelope.Document().Delete(path);
}

std::string CreatedAt(const CalendarTime& utc) {
    char created[64];
    std::snprintf(created, sizeof created, "%04d-%02d-%02dT%02d:%02d:%02dZ", utc.year, utc.month,
                  utc.day, utc.hour, utc.minute, utc.second);
    return created;
}

std::optional<TokenTexts> MakeTokenCreated(const Credentials& credentials, std::string created) {
    const std::string nonce = MakeNonceText();
    const auto digest = Sha1(Bytes(nonce + created + credentials.password));
    if (nonce.empty() || !digest) {
        return std::nullopt;
    }
    // The digest is made over the nonce's text, and the device hashes what it decodes: the same.
    return TokenTexts{Base64(*digest), Base64(Bytes(nonce)), std::move(created)};
}

bool FillToken(const Credentials& credentials, CXmlTransform& envelope, const TokenTexts& texts) {
    XMLElement* token = envelope.FindChild(envelope.Document().Root(), kToken);
    return envelope.SetChildText(token, "wsse:Username", credentials.user) &&
           envelope.SetChildText(token, "wsse:Password", texts.digest) &&
           envelope.SetChildText(token, "wsse:Nonce", texts.nonce) &&
           envelope.SetChildText(token, "wsu:Created", texts.created);
}

}  // namespace

std::string MakeNonceText() {
    const std::uint32_t value = NextNonceValue();
    const std::uint8_t bytes[] = {
        static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8U),
        static_cast<std::uint8_t>(value >> 16U), static_cast<std::uint8_t>(value >> 24U)};
    const auto digest = Md5(bytes);
    return digest ? LowerHex(*digest) : "";
}

std::optional<TokenTexts> MakeToken(const Credentials& credentials,
                                    const std::optional<CalendarTime>& created) {
    return MakeTokenCreated(credentials, CreatedAt(created ? *created : UtcNow()));
}

bool FillSecurityHeader(const Credentials& credentials, CXmlTransform& envelope,
                        const TokenTexts& texts) {
    if (!credentials.Present()) {
        Remove(envelope, kHeader);
        return true;
    }
    return FillToken(credentials, envelope, texts);
}

bool Authentication_UseIPCTime(const Credentials& credentials, CXmlTransform& envelope,
                               const std::string& deviceTimeResult) {
    if (!credentials.Present()) {
        Remove(envelope, kSecurity);
        return true;
    }
    const std::string created = CreatedFromDeviceTime(deviceTimeResult);
    Trace("%s,%s:%d, xml:%s.\n", tracepoint::kDeviceClock.label, tracepoint::kDeviceClock.function,
          tracepoint::kDeviceClock.line, created.c_str());
    const auto token = MakeTokenCreated(credentials, created);
    return token && FillToken(credentials, envelope, *token);
}

}  // namespace onvif_client
