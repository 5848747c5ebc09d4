// Days with a site of cameras in minutes: moved_time --hours 72 --cameras 200 --seed 1, and with
// --by-source 1 the extensions per-source-alarms and background-subscription. The library runs on a
// network and a clock of the program's. The cameras are honest devices that have a bad life; each
// judges what its observer is told by what it has delivered.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "onvif_client/OnvifClient.h"
#include "support/System.h"
#include "support/VirtualNetwork.h"

namespace {

namespace net = client_test::network;
using client_test::IVirtualDevice;
using net::Moment;

constexpr Moment kSecond = 1000;
constexpr Moment kMinute = 60 * kSecond;
constexpr Moment kHour = 60 * kMinute;

enum Trouble { kReboot, kForgetting, kReset, kSilence, kSlowness, kRefusal, kTroubles };

/// Of all cameras.
struct Figures {
    bool bySource = false;
    std::size_t seed = 1, pulls = 0, messages = 0, changes = 0, told = 0, repeated = 0, cleared = 0,
                subscriptions = 0, troubled = 0, mostTroubled = 0;
    std::array<std::size_t, kTroubles> troubles{};
    Moment longestUnsubscribed = 0;
} figures;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

bool Holds(bool holds, const std::string& where, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "\nseed %zu, %s, after %.1f s: %s\n", figures.seed, where.c_str(),
                     static_cast<double>(net::Now()) / kSecond, what);
    }
    return holds;
}

std::string Fault(const std::string& subcode) {
    return "<s:Fault><s:Code><s:Value>s:Sender</s:Value><s:Subcode><s:Value>" + subcode +
           "</s:Value></s:Subcode></s:Code><s:Reason><s:Text>no</s:Text></s:Reason></s:Fault>";
}

class CCamera final : public IVirtualDevice, public CONVIFAlarmStateObserver {
 public:
    explicit CCamera(std::size_t number)
        : address_("10.0." + std::to_string(number / 250) + "." + std::to_string(number % 250 + 1)),
          random_(figures.seed * 100'000 + number) {}

    const std::string& Address() const { return address_; }

    /// From now on its alarms change and troubles come.
    void Live() {
        net::After(Random(1, 2 * kMinute), [this] { Change(); });
        net::After(Random(1, kHour), [this] { BeginTrouble(); });
    }

    /// At the end of every moment: nothing that is due is missing.
    void Check() {
        const Moment now = net::Now();
        for (Expected& each : expected_) {
            SkipRepetitions(each);
            Require(each.delivered.empty(), "delivered, but not told");
            if (figures.bySource) {
                Require(!each.told || now - lastWord_ <= 190 * kSecond, "an alarm is stuck");
                continue;
            }
            Require(!each.told || now - each.confirmed <= 5 * kSecond || each.lastCall == now,
                    "an active alarm was neither repeated nor cleared");
        }
        if (!IsSound()) {
            return;
        }
        // Every 100 s an attempt. One takes 16 s at a silent device, and four of those run at once.
        const auto turns = static_cast<Moment>(figures.mostTroubled) / 4 + 2;
        Require(now - std::max(soundSince_, subscribed_) <= (102 + turns * 16) * kSecond,
                "not subscribed again");
        const auto known = subscriptions_.find(known_);
        if (subscribed_ >= soundSince_ && known != subscriptions_.end()) {
            const auto& [end, queue] = known->second;
            Require(end <= now || queue.empty() || now - queue.front().made <= 10 * kSecond,
                    "messages wait, and nobody pulls them");
        }
    }

    Link GetLink() const override { return link_; }
    void OnClosed(std::uint32_t connection) override { pulls_.erase(connection); }
    void OnMotionAlarmState(unsigned int, bool state) override { OnTold(0, state); }
    void OnAlarmInState(unsigned int, unsigned int, bool state) override { OnTold(1, state); }

    void OnRequest(std::uint32_t connection, std::string_view request) override {
        const auto asks = [&](const char* what) { return request.find(what) != request.npos; };
        std::erase_if(subscriptions_,
                      [](const auto& each) { return each.second.end <= net::Now(); });
        const std::string_view path = "/subscription/";
        const std::size_t at = std::min(request.find(path), request.size() - path.size());
        const auto id = std::strtoul(request.data() + at + path.size(), nullptr, 10);
        if (refuses_) {
            Answer(connection, Fault("ter:NotAuthorized"));
        } else if (asks("CreatePullPointSubscriptionRequest")) {
            Subscribe(connection);
        } else if (asks("UnsubscribeRequest")) {
            Answer(connection, subscriptions_.erase(id) > 0 ? "<wsnt:UnsubscribeResponse/>"
                                                            : Fault("wsrfr:ResourceUnknownFault"));
        } else if (asks("PullMessagesRequest")) {
            const auto found = subscriptions_.find(id);
            pulls_[connection] = id;
            if (found == subscriptions_.end() || !found->second.queue.empty()) {
                AnswerPulls();
            }
            net::After(longestWait_, [this, connection] {
                if (pulls_.contains(connection)) {
                    AnswerPull(connection, pulls_.extract(connection).mapped());
                }
            });
        } else {
            Answer(connection, "<tds:GetServicesResponse/>");  // to all of a login
        }
    }

 private:
    struct Message {
        std::size_t alarm;
        bool state;
        Moment made;
        bool initial = false;
    };
    struct Subscription {
        Moment end;
        std::vector<Message> queue;
    };
    /// What the observer must be told of an alarm.
    struct Expected {
        std::vector<bool> delivered;
        bool told = false;
        Moment confirmed = 0;
        Moment lastCall = 0;
        Moment lost = -1;
    };

    void Require(bool holds, const char* what) const {
        if (!Holds(holds, "camera " + address_, what)) {
            std::_Exit(1);
        }
    }

    bool IsSound() const { return link_ == Link::kUp && !slow_ && !refuses_; }

    Moment Random(Moment least, Moment most) {
        return least +
               static_cast<Moment>(random_() % static_cast<std::uint64_t>(most - least + 1));
    }

    void Change() {
        const auto alarm = static_cast<std::size_t>(Random(0, 1));
        states_.at(alarm) = !states_.at(alarm);
        ++figures.changes;
        for (auto& [id, each] : subscriptions_) {
            each.queue.push_back({alarm, states_.at(alarm), net::Now()});
        }
        AnswerPulls();
        net::After(Random(1, Random(0, 3) == 0 ? kSecond : 4 * kMinute), [this] { Change(); });
    }

    void BeginTrouble() {
        const auto kind = static_cast<Trouble>(Random(0, kTroubles - 1));
        ++figures.troubles.at(kind);
        figures.mostTroubled = std::max(figures.mostTroubled, ++figures.troubled);
        if (kind <= kForgetting) {
            subscriptions_.clear();
        }
        if (kind == kReboot || kind == kReset) {
            pulls_.clear();
            net::CloseAll(*this);
        }
        AnswerPulls();
        link_ = kind == kReset ? Link::kRefusing : Link::kUp;
        link_ = kind == kReboot || kind == kSilence ? Link::kSilent : link_;
        slow_ = kind == kSlowness;
        refuses_ = kind == kRefusal;
        net::After(Random(1, 5 * kMinute), [this] {
            link_ = Link::kUp;
            slow_ = refuses_ = false;
            soundSince_ = net::Now();
            --figures.troubled;
        });
        net::After(Random(6 * kMinute, 2 * kHour), [this] { BeginTrouble(); });
    }

    void Answer(
        std::uint32_t connection, const std::string& body,
        const std::function<void()>& taken = [] {}) {
        const std::string envelope =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><s:Envelope "
            "xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\"><s:Body>" +
            body + "</s:Body></s:Envelope>";
        const bool fault = body.find(":Fault>") != std::string::npos;
        const std::string text = std::string("HTTP/1.1 ") + (fault ? "400 Bad Request" : "200 OK") +
                                 "\r\nContent-Length: " + std::to_string(envelope.size()) +
                                 "\r\nConnection: close\r\n\r\n" + envelope;
        // Every fourth comes in two pieces.
        const auto size = static_cast<Moment>(text.size());
        const auto cut = static_cast<std::size_t>(std::min(Random(1, 4 * size), size - 1));
        net::After(Random(1, slow_ ? 12 * kSecond : kSecond / 4), [=] {
            net::Give(connection, text.substr(0, cut));
            net::After(1, [=] {
                net::Give(connection, text.substr(cut), taken);
                net::Close(connection);
            });
        });
    }

    void Subscribe(std::uint32_t connection) {
        const std::size_t id = ++last_;
        const Moment now = net::Now();
        subscriptions_[id] = {now + grant_,
                              {{0, states_[0], now, true}, {1, states_[1], now, true}}};
        // What a trouble left behind expires; 600 s hold six.
        const bool clean = IsSound() && now - soundSince_ > 11 * kMinute;
        Require(subscriptions_.size() <= (clean ? 1 : 8), "subscriptions pile up");
        Answer(connection,
               "<tev:CreatePullPointSubscriptionResponse><tev:SubscriptionReference><wsa5:Address>"
               "http://" +
                   address_ + "/subscription/" + std::to_string(id) +
                   "</wsa5:Address></tev:SubscriptionReference>"
                   "</tev:CreatePullPointSubscriptionResponse>",
               [this, id] {
                   const Moment since = IsSound() ? std::max(soundSince_, subscribed_) : net::Now();
                   known_ = id;
                   lastWord_ = net::Now();
                   ++figures.subscriptions;
                   subscribed_ = net::Now();
                   figures.longestUnsubscribed =
                       std::max(figures.longestUnsubscribed, subscribed_ - since);
               });
    }

    void AnswerPulls() {
        for (const auto& [connection, id] : std::exchange(pulls_, {})) {
            AnswerPull(connection, id);
        }
    }

    void AnswerPull(std::uint32_t connection, std::size_t id) {
        const auto found = subscriptions_.find(id);
        ++figures.pulls;
        if (found == subscriptions_.end() || found->second.end <= net::Now()) {
            Answer(connection, Fault("wsrfr:ResourceUnknownFault"));
            return;
        }
        const auto messages = std::exchange(found->second.queue, {});
        std::string body = "<tev:PullMessagesResponse>";
        for (const Message& each : messages) {
            body += "<wsnt:NotificationMessage><wsnt:Topic>";
            body += each.alarm == 0 ? "tns1:RuleEngine/CellMotionDetector/Motion"
                                    : "tns1:Device/Trigger/DigitalInput";
            body += "</wsnt:Topic><wsnt:Message><tt:Message PropertyOperation=\"";
            body += each.initial ? "Initialized" : "Changed";
            body += "\"><tt:Data><tt:SimpleItem Name=\"State\" Value=\"";
            body += each.state ? "true" : "false";
            body += "\"/></tt:Data></tt:Message></wsnt:Message></wsnt:NotificationMessage>";
        }
        Answer(connection, body + "</tev:PullMessagesResponse>", [this, messages] {
            figures.messages += messages.size();
            lastWord_ = net::Now();
            for (const Message& each : messages) {
                expected_.at(each.alarm).delivered.push_back(each.state);
            }
        });
    }

    /// Nothing is told of them.
    static void SkipRepetitions(Expected& alarm) {
        while (!alarm.delivered.empty() && alarm.delivered.front() == alarm.told) {
            alarm.delivered.erase(alarm.delivered.begin());
            alarm.confirmed = net::Now();
        }
    }

    void OnTold(std::size_t alarm, bool state) {
        const auto lock = net::Hold();
        Expected& expected = expected_.at(alarm);
        SkipRepetitions(expected);
        expected.lastCall = net::Now();
        const Moment unconfirmed = expected.lastCall - expected.confirmed;
        if (!expected.delivered.empty()) {
            expected.delivered.erase(expected.delivered.begin());
            expected.confirmed = expected.lastCall;
            ++figures.told;
            Require(state != expected.told, "told another state than the device delivered");
        } else if (figures.bySource) {
            RequireLoss(expected, state);
        } else {
            ++(state ? figures.repeated : figures.cleared);
            Require(expected.told, "told what the device did not deliver, or twice");
            Require(unconfirmed > 5 * kSecond, "repeated too early");
            Require((unconfirmed > kMinute) != state, "cleared at the wrong time");
        }
        expected.told = state;
    }

    /// An alarm ends by itself only with its subscription. What a pull of the subscription before
    /// brings in that moment may begin it again.
    void RequireLoss(Expected& alarm, bool state) {
        const Moment now = alarm.lastCall;
        if (state) {
            Require(!alarm.told && alarm.lost == now, "told what the device did not deliver");
            return;
        }
        ++figures.cleared;
        alarm.lost = now;
        // An attempt that begins in a trouble takes 16 s.
        Require(alarm.told && (!IsSound() || now - soundSince_ <= 20 * kSecond ||
                               now - lastWord_ >= 180 * kSecond),
                "an alarm ended by itself");
    }

    const std::string address_;
    std::mt19937_64 random_;
    const Moment grant_ = Random(1, 10) * kMinute;
    const Moment longestWait_ = Random(1, 3) * 20 * kSecond;
    Link link_ = Link::kUp;
    bool slow_ = false;
    bool refuses_ = false;
    Moment soundSince_ = net::Now();
    Moment subscribed_ = 0;
    Moment lastWord_ = 0;
    std::array<bool, 2> states_{};
    std::map<std::size_t, Subscription> subscriptions_;
    std::size_t last_ = 0;
    std::size_t known_ = 0;                       // to the library
    std::map<std::uint32_t, std::size_t> pulls_;  // that wait: connections and subscriptions
    std::array<Expected, 2> expected_;
};

/// The bytes in use two thirds of the time before the end, and at the end.
std::pair<std::size_t, std::size_t> Pass(Moment time) {
    net::Sleep(time / 3);
    const std::size_t before = client_test::Held().bytes;
    net::Sleep(time - time / 3);
    return {before, client_test::Held().bytes};
}

}  // namespace

int main(int argc, char** argv) {
    constexpr Moment kStep = 200;
    std::map<std::string, std::size_t> options = {
        {"--hours", 3}, {"--cameras", 20}, {"--seed", 1}, {"--by-source", 0}};
    for (int i = 1; i + 1 < argc; i += 2) {
        options[argv[i]] = std::strtoull(argv[i + 1], nullptr, 10);
    }
    figures.seed = options["--seed"];
    figures.bySource = options["--by-source"] != 0;
    client_test::SetVariable("ONVIF_CLIENT_EXTENSIONS",
                             figures.bySource ? "per-source-alarms,background-subscription" : "");
    const auto began = std::chrono::steady_clock::now();
    client_test::SetVariable("ONVIF_CLIENT_LOG", "off");
    net::Start(kStep);
    net::Work(1);  // the event thread, from its start on
    ONVIF_CLIENT_Initial();
    std::map<unsigned int, std::unique_ptr<CCamera>> cameras;
    for (std::size_t i = 0; i < options["--cameras"]; ++i) {
        auto camera = std::make_unique<CCamera>(i);
        net::Hold(), net::Place(camera->Address(), *camera);
        unsigned int error = 0;
        const unsigned int id = ONVIF_CLIENT_Login(
            ONVIF_CLIENT_NO_LOGIN_ID, camera->Address().c_str(), 80, "admin", "camera-1", &error);
        ONVIF_CLIENT_AddAlarmStateObserver(id, camera.get());
        cameras[id] = std::move(camera);
    }
    net::Hold(), net::AtEndOfMoments([&, begun = false]() mutable {
        for (const auto& [id, each] : cameras) {
            begun ? each->Check() : each->Live();
        }
        begun = true;
    });
    const auto [before, after] = Pass(static_cast<Moment>(options["--hours"]) * kHour);
    net::Hold(), net::AtEndOfMoments([] {});
    for (const auto& [id, each] : cameras) {
        ONVIF_CLIENT_DelAlarmStateObserver(id);
    }
    net::Sleep(kMinute);
    const std::size_t left = net::Connections();
    ONVIF_CLIENT_Quit();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    std::printf(
        "\n%zu cameras, %.1f h in %.1f s: %zu subscriptions, %zu pulls answered, %zu "
        "messages of %zu changes, %zu told, %zu repetitions, %zu cleared; reboots %zu, "
        "forgotten subscriptions %zu, resets %zu, silent %zu, slow %zu, credentials "
        "refused %zu, at most %zu at once; subscribed again after %.1f s at most; %zu "
        "bytes in use, then %zu\n",
        cameras.size(), static_cast<double>(net::Now()) / kHour, took.count(),
        figures.subscriptions, figures.pulls, figures.messages, figures.changes, figures.told,
        figures.repeated, figures.cleared, figures.troubles[kReboot], figures.troubles[kForgetting],
        figures.troubles[kReset], figures.troubles[kSilence], figures.troubles[kSlowness],
        figures.troubles[kRefusal], figures.mostTroubled,
        static_cast<double>(figures.longestUnsubscribed) / kSecond, before, after);
    constexpr std::size_t kSlack = 1 << 20;  // queues differ from moment to moment
    const bool good = Holds(left == 0, "at the end", "connections are left") &&
                      Holds(after < before + kSlack, "at the end", "memory has grown") &&
                      Holds(figures.told > 0 && figures.troubles[kReboot] > 0, "at the end",
                            "nothing has happened");
    return good ? 0 : 1;
}
