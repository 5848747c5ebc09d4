#include "client/DigestAnswers.h"

#include <array>
#include <cstdio>
#include <initializer_list>

#include "common/AsciiText.h"
#include "common/HttpAddress.h"
#include "common/HttpHead.h"
#include "platform/Digests.h"

namespace onvif_client {

namespace {

constexpr std::size_t kLongestDigestText = 511;
constexpr std::string_view kAuth = "auth";

template <std::size_t Size>
std::string HexOrNothing(const std::optional<std::array<std::uint8_t, Size>>& digest) {
    return digest ? LowerHex(*digest) : "";
}

/// The digits of texts joined by colons; nothing for more than a device may have hashed. A cut text
/// would do worse: where a realm leaves room for some letters of the password only, a device finds
/// them one by one.
std::optional<std::string> HashJoined(bool sha256, std::initializer_list<std::string_view> texts) {
    std::string joined;
    for (const std::string_view text : texts) {
        joined.append(text).append(":");
    }
    joined.pop_back();
    if (joined.size() > kLongestDigestText) {
        return std::nullopt;
    }
    return sha256 ? HexOrNothing(Sha256(Bytes(joined))) : HexOrNothing(Md5(Bytes(joined)));
}

bool Offers(std::string_view list, std::string_view wanted) {
    while (!list.empty()) {
        if (SameLetters(Trim(TakeUntil(list, ",")), wanted)) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::optional<std::string> QuotedText(std::string_view text) {
    std::string quoted;
    for (const char c : text) {
        if (IsControl(c) && c != '\t') {
            return std::nullopt;
        }
        quoted += c == '"' || c == '\\' ? "\\" : "";
        quoted += c;
    }
    return quoted;
}

std::optional<std::string> DigestResponse(const Credentials& credentials,
                                          const HttpChallenge& challenge, std::string_view qop,
                                          const DigestSubject& subject) {
    const bool sha256 = challenge.IsSha256();
    const auto ha1 = HashJoined(sha256, {credentials.user, challenge.realm, credentials.password});
    const auto ha2 = HashJoined(sha256, {subject.method, subject.uri});
    if (!ha1 || !ha2) {
        return std::nullopt;
    }
    return qop.empty()
               ? HashJoined(sha256, {*ha1, challenge.nonce, *ha2})
               : HashJoined(sha256, {*ha1, challenge.nonce, subject.nc, subject.cnonce, qop, *ha2});
}

std::string DigestAuthorization(const Credentials& credentials, const HttpChallenge& challenge,
                                std::string_view method, std::string_view uri,
                                std::uint32_t count) {
    if (challenge.nonce.empty() || challenge.opaque.size() > kLongestDigestText ||
        (!challenge.qop.empty() && !Offers(challenge.qop, kAuth))) {
        return {};
    }
    const std::string_view qop = challenge.qop.empty() ? std::string_view() : kAuth;
    char nc[9];
    std::snprintf(nc, sizeof nc, "%08x", static_cast<unsigned int>(count));
    const std::string cnonce = MakeNonceText();
    const auto response = DigestResponse(credentials, challenge, qop, {method, uri, cnonce, nc});
    const auto user = QuotedText(credentials.user);
    const auto realm = QuotedText(challenge.realm);
    const auto nonce = QuotedText(challenge.nonce);
    const auto opaque = QuotedText(challenge.opaque);
    const auto quotedUri = QuotedText(uri);
    if (!response || response->empty() || !user || !realm || !nonce || !opaque || !quotedUri) {
        return {};
    }
    std::string field = "Digest username=\"" + *user + "\", realm=\"" + *realm + "\", nonce=\"" +
                        *nonce + "\", uri=\"" + *quotedUri + "\"";
    if (!challenge.algorithm.empty()) {
        field.append(", algorithm=").append(challenge.IsSha256() ? "SHA-256" : "MD5");
    }
    if (!qop.empty()) {
        field.append(", qop=").append(qop).append(", nc=").append(nc);
        field.append(", cnonce=\"").append(cnonce).append("\"");
    }
    field.append(", response=\"").append(*response).append("\"");
    if (!challenge.opaque.empty()) {
        field.append(", opaque=\"").append(*opaque).append("\"");
    }
    return field;
}

CDigestAnswers::Answer CDigestAnswers::Next(std::string_view method, std::string_view uri) {
    HttpChallenge challenge;
    std::uint32_t count = 0;
    {
        const CLockGuard guard(lock_);
        if (!challenge_) {
            return {};
        }
        challenge = *challenge_;
        count = ++count_;
    }
    return {DigestAuthorization(credentials_, challenge, method, uri, count), challenge.nonce};
}

CDigestAnswers::Verdict CDigestAnswers::Take(std::string_view reply, const Answer& answer) {
    reply = reply.substr(0, kLongestHead);
    const std::string_view head = TakeUntil(reply, kHeadEnd);
    std::string_view rest = head;
    if (StatusCode(TakeUntil(rest, kHeadLineEnd)) != "401") {
        const CLockGuard guard(lock_);
        accepted_ = accepted_ || (!head.empty() && challenge_ && challenge_->nonce == answer.nonce);
        return Verdict::kNotAsked;
    }
    if (credentials_.Present()) {
        for (const HttpChallenge& each : ReadChallenges(head, DigestKinds::kAll).challenges) {
            if (each.scheme == AuthorizationScheme::kDigest &&
                !DigestAuthorization(credentials_, each, "POST", "/", 1).empty()) {
                const CLockGuard guard(lock_);
                return LearnLocked(each, answer);
            }
        }
    }
    return Verdict::kNotAsked;
}

CDigestAnswers::Verdict CDigestAnswers::LearnLocked(const HttpChallenge& challenge,
                                                    const Answer& answer) {
    // An answer to another challenge than the one that is kept was overtaken by another thread's.
    const bool hadItsDay = !challenge_ || challenge_->nonce != answer.nonce || accepted_;
    const bool isNew = challenge.nonce != answer.nonce;
    if (!challenge_ || challenge_->nonce != challenge.nonce) {
        challenge_ = challenge;
        count_ = 0;
        accepted_ = false;
    }
    return isNew && (challenge.stale || hadItsDay) ? Verdict::kAskedAnew : Verdict::kRefused;
}

}  // namespace onvif_client
