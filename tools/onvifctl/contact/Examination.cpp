#include "contact/Examination.h"

#include <algorithm>
#include <ctime>

#include "contact/Abilities.h"
#include "contact/Advice.h"
#include "contact/NeededExtensions.h"
#include "contact/Probe.h"
#include "system/Environment.h"

namespace onvifctl {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

std::string TimeText(std::chrono::seconds difference) {
    const auto time = std::chrono::system_clock::now() + difference;
    const std::tm parts =
        UtcTime(std::max<std::time_t>(0, std::chrono::system_clock::to_time_t(time)));
    char text[64] = {};
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &parts);
    return text;
}

std::string ReplyText(const HttpReply& reply) {
    constexpr const char* kBodies[] = {"nothing in it", "a SOAP envelope", "a web page",
                                       "neither SOAP nor a web page"};
    return "status " + std::to_string(reply.status) + ", " +
           kBodies[static_cast<std::size_t>(KindOf(reply))];
}

std::string AuthenticationText(const FirstContact& contact) {
    const HttpReply& refusal = contact.toUnsigned.status == 0 ? contact.reply : contact.toUnsigned;
    const std::string challenge = HeaderOf(refusal, "www-authenticate");
    if (refusal.status == 401 && !challenge.empty()) {
        return "WWW-Authenticate: " + challenge;
    }
    if (refusal.status == 200) {
        return "answers without any";
    }
    return "no WWW-Authenticate; without credentials status " + std::to_string(refusal.status);
}

class CExamination {
 public:
    CExamination(ConnectionOptions options, bool setClock)
        : options_(std::move(options)), setClock_(setClock), address_(ParseAddress(options_.host)) {
        const std::string ofEnvironment = Variable("ONVIF_CLIENT_EXTENSIONS");
        options_.extensions =
            options_.extensions.value_or(ofEnvironment.empty() ? "all" : ofEnvironment);
    }

    Examination Run() {
        if (FindsName() && MakesContact()) {
            LogIn();
        }
        if (done_.conclusion.empty()) {
            done_.conclusion = options_.host + " is well";
        }
        return std::move(done_);
    }

 private:
    bool FindsName() {
        const auto begin = Clock::now();
        const auto time = [begin] {
            return std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
        };
        try {
            ip_ = Resolve(address_.name);
            done_.steps.push_back({"name", true, time(), ip_});
            return true;
        } catch (const CFailure& failure) {
            done_.steps.push_back({"name", false, time(), failure.what()});
            Conclude(failure.Code(), "there is no address for " + address_.name);
            return false;
        }
    }

    /// @return whether there is anybody to log in to.
    bool MakesContact() {
        contact_ = LookAt(ip_, address_.port);
        diagnosis_ =
            DiagnosisOf(contact_, {address_.port, !options_.user.empty(), *options_.extensions});
        const std::string port = "port " + std::to_string(address_.port) + " is open";
        const bool isThere =
            Tell(Stage::kTcp, "TCP", contact_.connecting, port) &&
            Tell(Stage::kProtocol, "protocol", contact_.asking, "HTTP without TLS");
        if (!isThere) {
            const bool answers = contact_.isTls || !contact_.bytes.empty();
            Conclude(answers ? ExitCode::kLoginFailed : ExitCode::kUnreachable,
                     options_.host + " " + diagnosis_.finding);
            return false;
        }
        TellOfHttp();
        const bool isDevice =
            diagnosis_.finding.empty() || diagnosis_.stage == Stage::kAuthentication;
        if (isDevice) {
            done_.extensions = ExtensionsFor(contact_, setClock_);
        }
        return true;
    }

    void TellOfHttp() {
        Tell(Stage::kHttp, "HTTP", contact_.asking, ReplyText(contact_.reply));
        if (const std::string to = HeaderOf(contact_.reply, "location"); !to.empty()) {
            Tell(Stage::kRedirect, "Location", contact_.asking, to);
        }
        if (KindOf(contact_.reply) == BodyKind::kEnvelope || contact_.reply.status == 401) {
            Tell(Stage::kAuthentication, "credentials", contact_.asking,
                 AuthenticationText(contact_));
        }
        done_.clock = contact_.clock;
        TellOfClock("");
    }

    /// @return whether that is well.
    bool Tell(Stage stage, const char* name, milliseconds time, const std::string& finding) {
        const bool isWell = diagnosis_.finding.empty() || diagnosis_.stage != stage;
        constexpr std::size_t kLongest = 300;  // devices choose the length of their headers
        done_.steps.push_back({name, isWell, time,
                               isWell ? finding.substr(0, kLongest) : diagnosis_.finding,
                               isWell ? "" : diagnosis_.advice});
        return isWell;
    }

    void TellOfClock(const std::string& byWhom) {
        if (!done_.clock) {
            return;
        }
        const bool isWell = std::chrono::abs(*done_.clock) <= kMostClockDifference;
        const bool keeps = HasExtension(*options_.extensions, "keep-clock");
        done_.steps.push_back(
            {"clock",
             isWell,
             {},
             TimeText(*done_.clock) + byWhom + ", " + ClockText(*done_.clock),
             isWell
                 ? ""
                 : (keeps ? "keep-clock goes by the device's time; onvifctl set HOST dateAndTime "
                            "sets it"
                          : "a login tries to set it; keep-clock goes by the device's time")});
    }

    void LogIn() {
        options_.password = PasswordFor(options_);
        TriedSession session = TrySession(options_, contact_, Events::kTry);
        if (session.steps.front().finding == diagnosis_.finding) {
            session.steps.front().advice.clear();  // it stands above
        }
        Append(session, "");
        ConcludeFrom(session);
        if (const auto clock = ClockIn(session.clock); clock && !done_.clock) {
            done_.clock = std::chrono::round<std::chrono::seconds>(
                *clock + milliseconds(500) - std::chrono::system_clock::now());
            TellOfClock(" with credentials");
        }
        const ExitCode login = session.abilities.login;
        if (login == ExitCode::kWrongCredentials) {
            return;  // no second try: devices lock accounts
        }
        std::string used = *options_.extensions;
        if (done_.code != ExitCode::kDone && !HasExtension(used, "all")) {
            options_.extensions = used = "all";
            session = TrySession(options_, contact_, Events::kTry);
            Append(session, "all: ");
            const bool isWell = std::all_of(session.steps.begin(), session.steps.end(),
                                            [](const Step& each) { return each.isWell; });
            done_.conclusion += isWell ? "; with all extensions it is well" : "";
        }
        if (session.abilities.login == ExitCode::kDone) {
            done_.extensions =
                FindNeededExtensions({options_, contact_, session.abilities, used, setClock_},
                                     std::move(done_.extensions));
        }
    }

    void Append(const TriedSession& session, const std::string& prefix) {
        for (Step step : session.steps) {
            step.name = prefix + step.name;
            done_.steps.push_back(std::move(step));
        }
        for (const NeededExtension& each : session.extensions) {
            if (std::none_of(done_.extensions.begin(), done_.extensions.end(),
                             [&each](const auto& other) { return other.name == each.name; })) {
                done_.extensions.push_back(each);
            }
        }
    }

    void ConcludeFrom(const TriedSession& session) {
        if (session.abilities.login != ExitCode::kDone) {
            Conclude(session.abilities.login, options_.host + " " + session.steps.front().finding);
            return;
        }
        std::string failed;
        for (const Step& step : session.steps) {
            failed += step.isWell ? "" : (failed.empty() ? "" : ", ") + step.name;
        }
        if (!failed.empty()) {
            Conclude(ExitCode::kRefused, options_.host + " lets log in, but fails at: " + failed);
        }
    }

    void Conclude(ExitCode code, const std::string& sentence) {
        done_.code = code;
        done_.conclusion = sentence;
    }

    ConnectionOptions options_;
    const bool setClock_;
    const Address address_;
    std::string ip_;
    FirstContact contact_;
    Diagnosis diagnosis_;
    Examination done_;
};

}  // namespace

Examination Examine(ConnectionOptions options, bool setClock) {
    return CExamination(std::move(options), setClock).Run();
}

}  // namespace onvifctl
