/// @file
/// Answers to challenges to Digest (RFC 7616, with MD5 or SHA-256; RFC 2617 and 2069), and the
/// challenge that a session keeps: exchanges after the first one answer it unasked.
#ifndef ONVIF_CLIENT_CLIENT_DIGESTANSWERS_H
#define ONVIF_CLIENT_CLIENT_DIGESTANSWERS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "client/HttpChallenges.h"
#include "client/SecurityHeader.h"
#include "platform/Mutex.h"

namespace onvif_client {

/// What a response is made for.
struct DigestSubject {
    std::string_view method;
    std::string_view uri;
    std::string_view cnonce;
    std::string_view nc;
};

/// The response to a challenge, in lower-case hexadecimal digits. Nothing when a text to be hashed
/// has more than 511 bytes. @param qop  empty: as RFC 2069 has it, without cnonce and nc.
std::optional<std::string> DigestResponse(const Credentials& credentials,
                                          const HttpChallenge& challenge, std::string_view qop,
                                          const DigestSubject& subject);

/// A text as it stands between quotes; nothing for one that would end the line.
std::optional<std::string> QuotedText(std::string_view text);

/// The value of an "Authorization" field, with a fresh cnonce. Empty for a challenge that cannot be
/// answered: without a nonce, with another qop than "auth" only, or with texts that hold control
/// characters or are too long (an opaque of more than 511 bytes, for it would fill the request).
std::string DigestAuthorization(const Credentials& credentials, const HttpChallenge& challenge,
                                std::string_view method, std::string_view uri, std::uint32_t count);

/// What a session says unasked, and how it takes what its device asks for. Any thread.
class CDigestAnswers {
 public:
    /// The credentials must outlive it.
    explicit CDigestAnswers(const Credentials& credentials) : credentials_(credentials) {}

    /// What a request says of a challenge; empty texts: the device has not asked yet.
    struct Answer {
        std::string field;
        std::string nonce;
    };
    /// Counts the use of the challenge, so each answer serves one request.
    Answer Next(std::string_view method, std::string_view uri);

    enum class Verdict {
        kNotAsked,   // the reply asks for nothing that can be answered
        kAskedAnew,  // by a challenge that may let the same request pass
        kRefused,    // the answer was right in form, so the credentials are wrong
    };
    /// Keeps what a reply asks for, within 64 KiB of head.
    /// @param answer  of the request.
    Verdict Take(std::string_view reply, const Answer& answer);

 private:
    Verdict LearnLocked(const HttpChallenge& challenge, const Answer& answer) REQUIRES(lock_);

    const Credentials& credentials_;
    CMutex lock_;  // leaf
    std::optional<HttpChallenge> challenge_ GUARDED_BY(lock_);
    std::uint32_t count_ GUARDED_BY(lock_) = 0;  // answers to it
    bool accepted_ GUARDED_BY(lock_) = false;    // the device has taken one of them
};

}  // namespace onvif_client

#endif
