#include "OddOptions.h"

#include <chrono>
#include <map>
#include <utility>
#include <vector>

namespace {

constexpr int kMostChannels = 255;
constexpr int kMostSeconds = 10 * 366 * 24 * 3600;

void AddHttpAuthentication(CLI::App& app, camera_sim::CameraOptions& camera) {
    AddHttpScheme(app, "--http-auth",
                  "services ask for HTTP credentials by a bare 401, not for a UsernameToken",
                  [&camera](camera_sim::HttpScheme scheme) { camera.httpAuthentication = scheme; });
    app.add_flag("--http-auth-or-token", camera.httpAuthenticationOrToken,
                 "with --http-auth: a UsernameToken will do instead");
    app.add_option("--http-realm", camera.httpRealm)->capture_default_str();
    app.add_option("--http-qop", camera.httpQop, "auth, auth,auth-int or empty: as in RFC 2069")
        ->capture_default_str();
    app.add_option("--http-nonce-uses", camera.httpNonceUses,
                   "requests that a nonce is good for, then stale=true; 0: any number")
        ->capture_default_str();
    app.add_option_function<int>(
           "--http-nonce-lifetime",
           [&camera](int seconds) { camera.httpNonceLifetime = std::chrono::seconds(seconds); },
           "seconds that a nonce is good for (300)")
        ->check(CLI::Range(0, kMostSeconds));
    app.add_option("--open-operations", camera.openOperations,
                   "operations that need no credentials, with commas between them")
        ->delimiter(',');
}

void AddFraming(CLI::App& app, camera_sim::CameraOptions& camera) {
    using camera_sim::KeepAlive;
    app.add_option_function<std::string>(
           "--keep-alive",
           [&camera](const std::string& text) {
               camera.keepAlive = text == "always" ? KeepAlive::kAlways : KeepAlive::kPolite;
           },
           "connections stay open after a reply: unless the client says otherwise (polite), or "
           "whatever it says (always)")
        ->check(CLI::IsMember({"polite", "always"}));
    app.add_option("--chunked", camera.chunkBytes, "bodies go in chunks of so many bytes");
    app.add_flag("--no-length", camera.noLength, "a body ends with the connection");
    app.add_flag("--no-bare-length", camera.noBareLength,
                 "a reply without a body says nothing of its length");
    app.add_flag("--continue", camera.interimReply, "HTTP 100 (Continue) goes before every reply");
    app.add_flag("--loose-end", camera.looseEnvelopeEnd, "envelopes end with \"Envelope >\"");
}

void AddClock(CLI::App& app, camera_sim::CameraOptions& camera) {
    app.add_option_function<std::string>(
           "--clock-access",
           [&camera](const std::string& text) {
               std::erase(camera.openOperations, "GetSystemDateAndTime");
               if (text == "public") {
                   camera.openOperations.emplace_back("GetSystemDateAndTime");
               }
           },
           "whether GetSystemDateAndTime needs no credentials (public) or does")
        ->check(CLI::IsMember({"public", "protected"}));
    app.add_option("--clock-refusal", camera.clockRefusal,
                   "the fault that SetSystemDateAndTime answers")
        ->check(CLI::IsMember(camera_sim::ClockRefusalNames()));
    app.add_flag("--strict-clock", camera.strictClock,
                 "credentials made too far from the camera's time, or wrong in another way, are "
                 "refused where none are needed, too");
    app.add_flag("--http-date", camera.httpDate, "replies have a Date, by the camera's clock");
}

/// NAME:PASSWORD:ROLE; the password may hold colons.
camera_sim::User ReadAccount(const std::string& text) {
    using camera_sim::Role;
    const std::map<std::string, Role> roles = {{"administrator", Role::kAdministrator},
                                               {"operator", Role::kOperator},
                                               {"user", Role::kUser}};
    const auto first = text.find(':');
    const auto last = text.rfind(':');
    const auto role = last == std::string::npos ? roles.end() : roles.find(text.substr(last + 1));
    if (role == roles.end() || first == 0 || first == last) {
        throw CLI::ValidationError(
            "--account",
            "an account is NAME:PASSWORD:ROLE, a role administrator, operator or user");
    }
    return {text.substr(0, first), text.substr(first + 1, last - first - 1), role->second};
}

void AddAccounts(CLI::App& app, camera_sim::CameraOptions& camera) {
    app.add_option_function<std::vector<std::string>>(
           "--account",
           [&camera](const std::vector<std::string>& texts) {
               for (const std::string& text : texts) {
                   camera.accounts.push_back(ReadAccount(text));
               }
           },
           "NAME:PASSWORD:ROLE: another account, an administrator, operator or user; may be "
           "repeated")
        ->allow_extra_args(false);
}

}  // namespace

void AddHttpScheme(CLI::App& app, const std::string& name, const std::string& help,
                   std::function<void(camera_sim::HttpScheme)> set) {
    using camera_sim::HttpScheme;
    const std::map<std::string, HttpScheme> schemes = {
        {"none", HttpScheme::kNone},
        {"basic", HttpScheme::kBasic},
        {"digest", HttpScheme::kDigest},
        {"digest-sha256", HttpScheme::kDigestSha256},
        {"digest-either", HttpScheme::kDigestEither},
    };
    app.add_option_function<std::string>(
           name,
           [schemes, set = std::move(set)](const std::string& text) { set(schemes.at(text)); },
           help)
        ->check(CLI::IsMember({"none", "basic", "digest", "digest-sha256", "digest-either"}));
}

void AddOddOptions(CLI::App& app, camera_sim::CameraOptions& camera) {
    AddHttpAuthentication(app, camera);
    AddFraming(app, camera);
    AddClock(app, camera);
    AddAccounts(app, camera);
    app.add_flag("--broken-media2", camera.brokenMedia2,
                 "the second media service is offered, but implements none of its operations");
    app.add_option("--channels", camera.channels, "of a recorder")
        ->check(CLI::Range(1, kMostChannels))
        ->capture_default_str();
}
