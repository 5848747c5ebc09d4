#include "client/HttpChallenges.h"

#include <algorithm>
#include <utility>

#include "common/AsciiText.h"
#include "common/HttpHead.h"

namespace onvif_client {

namespace {

/// A scheme, or the name of a parameter, with the blanks behind it.
std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t,"), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(" \t,="));
    text.remove_prefix(word.size());
    text.remove_prefix(std::min(text.find_first_not_of(kHeadBlanks), text.size()));
    return word;
}

/// A quoted value keeps its commas; a backslash in it stands for what follows.
std::string TakeValue(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kHeadBlanks), text.size()));
    if (!text.starts_with('"')) {
        return std::string(Trim(TakeUntil(text, ",")));
    }
    std::string value;
    std::size_t at = 1;
    for (; at < text.size() && text[at] != '"'; ++at) {
        at += text[at] == '\\' && at + 1 < text.size() ? 1U : 0U;
        value += text[at];
    }
    text.remove_prefix(std::min(at + 1, text.size()));
    return value;
}

/// @return false for a challenge with an algorithm that this client does not speak.
bool SetParameter(std::string_view name, const std::string& value, DigestKinds kinds,
                  HttpChallenge& challenge) {
    if (SameLetters(name, "algorithm")) {
        challenge.algorithm = value;
        return SameLetters(value, "MD5") || (kinds == DigestKinds::kAll && challenge.IsSha256());
    }
    if (SameLetters(name, "stale")) {
        challenge.stale = SameLetters(value, "true");
    }
    const std::pair<std::string_view, std::string*> parameters[] = {{"realm", &challenge.realm},
                                                                    {"nonce", &challenge.nonce},
                                                                    {"qop", &challenge.qop},
                                                                    {"opaque", &challenge.opaque}};
    for (const auto& [known, place] : parameters) {
        if (SameLetters(name, known)) {
            *place = value;
        }
    }
    return true;
}

/// Adds the challenges of a field that this client speaks. They stand one behind the other, divided
/// by commas as their parameters are (RFC 9110, 11.6.1): a word without "=" begins the next one.
void ReadField(std::string_view field, DigestKinds kinds, ChallengeOffer& read) {
    std::vector<HttpChallenge>& challenges = read.challenges;
    bool digest = false;  // the parameters are those of the last challenge that was added
    while (!field.empty()) {
        const std::string_view word = TakeWord(field);
        if (!field.starts_with('=')) {
            digest = SameLetters(word, "Digest");
            read.asksForDigest = read.asksForDigest || digest;
            if (digest || SameLetters(word, "Basic")) {
                challenges.emplace_back().scheme =
                    digest ? AuthorizationScheme::kDigest : AuthorizationScheme::kBasic;
            }
            continue;
        }
        field.remove_prefix(1);
        const std::string value = TakeValue(field);
        if (digest && !SetParameter(word, value, kinds, challenges.back())) {
            challenges.pop_back();
            digest = false;
        }
    }
}

}  // namespace

bool HttpChallenge::IsSha256() const {
    return SameLetters(algorithm, "SHA-256");
}

ChallengeOffer ReadChallenges(std::string_view head, DigestKinds kinds) {
    ChallengeOffer read;
    std::vector<std::string> offers;
    bool offering = false;  // a folded line goes on with the last offer
    TakeUntil(head, kHeadLineEnd);
    while (!head.empty()) {
        const std::string_view line = TakeUntil(head, kHeadLineEnd);
        const auto field = SplitField(line).value_or(HeadField{});
        if (SameLetters(Trim(field.name), "Content-Length")) {
            continue;  // of the message, however it is written
        }
        if (SameLetters(Trim(field.name), "WWW-Authenticate")) {
            offers.emplace_back(field.value);
            offering = true;
        } else if (offering && IsFolded(line)) {
            offers.back().append(" ").append(Trim(line));
        } else {
            offering = false;
        }
    }
    for (const std::string& offer : offers) {
        ReadField(offer, kinds, read);
    }
    std::stable_partition(
        read.challenges.begin(), read.challenges.end(),
        [](const HttpChallenge& each) { return each.scheme == AuthorizationScheme::kDigest; });
    return read;
}

}  // namespace onvif_client
