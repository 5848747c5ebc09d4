#include "contact/NeededExtensions.h"

#include <algorithm>

#include "contact/Advice.h"
#include "contact/HttpReply.h"

namespace onvifctl {

namespace {

using Clock = std::chrono::steady_clock;

bool Has(const std::vector<NeededExtension>& extensions, const std::string& name) {
    return std::any_of(extensions.begin(), extensions.end(),
                       [&name](const NeededExtension& each) { return each.name == name; });
}

std::string FramingOf(const FirstContact& contact) {
    const HttpReply& reply = contact.reply;
    if (!HeaderOf(reply, "transfer-encoding").empty()) {
        return "its replies come in chunks";
    }
    if (contact.staysOpen) {
        return "it keeps a connection open behind a reply without an envelope";
    }
    return reply.hasEnd || reply.body.empty() ? "" : "its replies state no length";
}

std::string FaultsOf(const FirstContact& contact) {
    if (KindOf(contact.reply) == BodyKind::kEnvelope && !IsPlainEnvelope(contact.reply)) {
        return "its replies have no XML declaration, or no prefix";
    }
    const HttpReply& refusal = contact.toUnsigned;
    const bool isOpen = KindOf(refusal) == BodyKind::kEnvelope && refusal.status / 100 == 4;
    return isOpen ? "its faults come with HTTP status " + std::to_string(refusal.status) : "";
}

std::string DigestOf(const FirstContact& contact) {
    return Offers(contact.reply, "digest") || Offers(contact.toUnsigned, "digest")
               ? "it asks for HTTP Digest"
               : "";
}

std::string ClockOf(const FirstContact& contact) {
    return contact.clock && std::chrono::abs(*contact.clock) > kMostClockDifference
               ? "its clock is " + ClockText(*contact.clock) + ", and a login without it sets that"
               : "";
}

Abilities With(const Reference& reference, const std::vector<NeededExtension>& extensions,
               const std::string& another) {
    ConnectionOptions options = reference.options;
    options.extensions = another;
    for (const NeededExtension& each : extensions) {
        *options.extensions += "," + each.name;
    }
    return TrySession(options, reference.contact, Events::kLeave).abilities;
}

}  // namespace

std::vector<NeededExtension> ExtensionsFor(const FirstContact& contact, bool setClock) {
    constexpr struct {
        const char* name;
        std::string (*reason)(const FirstContact&);
    } kSigns[] = {{"http-framing", FramingOf},
                  {"open-faults", FaultsOf},
                  {"http-digest", DigestOf},
                  {"keep-clock", ClockOf}};
    std::vector<NeededExtension> found;
    for (const auto& [name, reason] : kSigns) {
        const std::string why = setClock && reason == ClockOf ? "" : reason(contact);
        if (!why.empty()) {
            found.push_back({name, why});
        }
    }
    return found;
}

std::vector<NeededExtension> FindNeededExtensions(const Reference& reference,
                                                  std::vector<NeededExtension> known) {
    constexpr std::chrono::seconds kPatience{30};
    const auto end = Clock::now() + kPatience;
    // Without keep-clock a login sets the device's clock and stops its time server.
    const std::string always = reference.setClock ? "" : "keep-clock";
    Abilities present = With(reference, known, always);
    std::string lack = Lack(present, reference.abilities);
    const auto mayGoOn = [&] {
        return !lack.empty() && present.login != ExitCode::kWrongCredentials && Clock::now() < end;
    };
    if (reference.setClock && present.login == ExitCode::kWrongCredentials) {
        known.push_back({"keep-clock", "a login that sets the clock is refused"});
        return known;
    }
    for (const char* name :
         {"keep-clock", "http-framing", "open-faults", "media-fallback", "large-messages"}) {
        if (!mayGoOn()) {
            break;
        }
        if (name == always || Has(known, name) || !HasExtension(reference.extensions, name)) {
            continue;
        }
        const Abilities more = With(reference, known, always + "," + name);
        if (!Lack(present, more).empty()) {
            known.push_back({name, "without it " + lack});
            present = more;
            lack = Lack(present, reference.abilities);
        }
    }
    if (!lack.empty()) {
        known.push_back({"all", "without the others " + lack});
    }
    return known;
}

}  // namespace onvifctl
