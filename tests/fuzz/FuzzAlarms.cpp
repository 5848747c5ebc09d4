// What the alarm side hears: replies to pulls and posted messages, in pieces.
#include <set>

#include "FuzzInput.h"
#include "FuzzPeer.h"
#include "events/EventParse.h"
#include "events/NotificationReceiver.h"
#include "events/NotifyMessage.h"
#include "events/SourceStates.h"
#include "onvif_client/OnvifClient.h"

namespace {

using namespace onvif_client;
using namespace onvif_client::fuzz;

/// One session for everybody.
class COneSession final : public ISessionSource {
 public:
    CHttpClient* Acquire(std::uint32_t) override { return &session_; }
    bool Release(std::uint32_t) override { return true; }
    CHttpClient& Session() { return session_; }

 private:
    CHttpClient session_{"user", "password", "127.0.0.1", 80, {Extension::kOpenFaults}};
};

COneSession& Sessions() {
    static COneSession sessions;
    return sessions;
}

/// Hears of every alarm in turns that it begins and ends.
class CTurns final : public CONVIFAlarmStateObserver {
 public:
    ~CTurns() override { Expect(active_.empty()); }
    void OnMotionAlarmState(unsigned int, bool state) override { Note(0, state); }
    void OnAlarmInState(unsigned int, unsigned int number, bool state) override {
        Expect(number > 0 && number <= 2 * CSourceStates::kMostInputs);
        Note(number, state);
    }

 private:
    void Note(unsigned int alarm, bool state) {
        Expect(state ? active_.insert(alarm).second : active_.erase(alarm) == 1);
    }
    std::set<unsigned int> active_;
};

/// What a pull's reply that comes in such pieces says: "1+" motion, "2-" no alarm at an input.
class CPullSink final : public IPullSink {
 public:
    bool Pulls() const override { return true; }
    void OnPullAnswer(const PullAnswer& answer) override {
        told_ += answer.maxTimeout + "." + std::to_string(answer.maxMessageLimit) + ".";
        for (const AlarmItem& item : answer.items) {
            told_ += std::to_string(static_cast<unsigned int>(item.type));
            told_ += item.state ? "+" : "-";
            Expect(item.topic.size() <= 256 && item.source.size() <= 512);
            told_ += item.topic + item.source;
            states_.Report(item, 1);
        }
        const bool interrupted = false;
        states_.CheckTimes(1, interrupted);
        AlarmItem loss;
        loss.news = AlarmNews::kLoss;
        states_.Report(loss, 1);
        states_.CheckTimes(1, interrupted);
    }
    void OnNoConnection() override {}
    const std::string& Told() const { return told_; }

 private:
    std::string told_;
    CTurns turns_;
    CSourceStates states_{1, &turns_};
};

std::string Pull(std::string_view reply, std::size_t pieceSize, CExtensions extensions) {
    CPullSink sink;
    CEventParse parser(sink, Sessions(), 1, extensions);
    for (; !reply.empty(); reply.remove_prefix(std::min(pieceSize, reply.size()))) {
        const std::string_view piece = reply.substr(0, pieceSize);
        parser.OnData(1, piece.data(), static_cast<std::uint32_t>(piece.size()), nullptr);
    }
    parser.OnEnd(1);
    return sink.Told();
}

void PullInPieces(std::string_view text, std::size_t pieceSize) {
    MessageFrame frame;
    const bool complete = CutMessage(text, frame) == MessageState::kComplete && frame.announced;
    constexpr CExtensions kSets[] = {
        {}, {Extension::kPerSourceAlarms}, {Extension::kHttpFraming, Extension::kLargeMessages}};
    for (const CExtensions extensions : kSets) {
        const std::string told = Pull(text, pieceSize, extensions);
        Expect(
            (extensions == CExtensions{Extension::kPerSourceAlarms} && !complete) ||
            (extensions == CExtensions{} && (!complete || text.size() > CEventParse::kCapacity)) ||
            told == Pull(text, text.size(), extensions));
    }
}

class CSink final : public INotifySink {
 public:
    void OnNotify(std::string_view body) override {
        ++calls_;
        for (const NotifyItem& item : ReadNotify(body).items) {
            told_ += item.topic + (item.active ? "+" : "-") + item.subscriptionReference + "\n";
        }
    }
    unsigned int Calls() const { return calls_; }
    const std::string& Told() const { return told_; }

 private:
    unsigned int calls_ = 0;
    std::string told_;
};

std::string Post(std::string_view post, std::size_t pieceSize) {
    CFuzzPeer& peer = CFuzzPeer::Instance();
    peer.Answer({std::string(post)}, pieceSize);
    CSink sink;
    CNotificationReceiver(sink).OnAccept(peer.Accept());
    Expect(sink.Calls() <= 1);
    Expect(peer.Sent().starts_with("HTTP/1.1 200 OK\r\n") == (sink.Calls() == 1));
    return sink.Told();
}

void PostInPieces(std::string_view text, std::size_t pieceSize) {
    Expect(Post(text, pieceSize) == Post(text, text.size()));
}

/// Results and addresses of subscriptions, and the requests that are made of them.
void ReadDocuments(std::string_view text, std::size_t) {
    const auto result = std::make_shared<CXmlDocument>(text);
    ReadPull({status::kSuccess, result});
    ReadPull({status::kSuccess, result}, true);
    const auto answer = ReadSubscription(text);
    const std::string value(text.substr(0, text.find('\0')));
    const std::string document =
        PullDocument({answer ? answer->address : value, answer ? answer->id : value});
    CXmlDocument pull(document);
    Expect(pull.Find("Get/pullMessages/messageLimit") != nullptr);
    CHttpClient& session = Sessions().Session();
    if (const auto prepared = session.PrepareRequest(document)) {
        Expect(!session.BuildHttpRequest(*prepared).empty());
    }
}

constexpr void (*kReaders[])(std::string_view, std::size_t) = {PullInPieces, PostInPieces,
                                                               ReadDocuments};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [text, choice] = ReadInput(data, size);
    kReaders[choice % std::size(kReaders)](text, choice / std::size(kReaders) + 1);
    return 0;
}
