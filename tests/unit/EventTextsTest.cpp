#include <gtest/gtest.h>

#include <utility>

#include "events/CallbackAddress.h"
#include "events/EventDocuments.h"
#include "events/EventParse.h"
#include "events/NotifyDelivery.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Reply;
using client_test::Xml;

TEST(EventDocuments, AreTheRequestsOfTheLanguage) {
    const auto document = [](const std::string& root, const std::string& command) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" +
               Xml(root + "(version=1.0 systemType=ipc){" + command + "}");
    };
    EXPECT_EQ(
        CreateDocument("http://h:6699/subscription_0"),
        document("Set",
                 "createPullPointSubscription{timeout=PT600S to=http://h:6699/subscription_0}"));
    EXPECT_EQ(PullDocument({"http://h/s?a=1&b=<2>", "7", "urn:x", "PT30S", 100}),
              document("Get",
                       "pullMessages{token='http://h/s?a=1&amp;b=&lt;2&gt;' subscriptionId=7 "
                       "subscriptionIdAttribute=urn:x timeout=PT30S messageLimit=100}"));
    EXPECT_EQ(UnsubscribeDocument("http://h/s"),
              document("Set", "unsubscribe{serverAddr=http://h/s}"));
    EXPECT_EQ(RenewDocument("http://h/s"),
              document("Set", "renew{serverAddr=http://h/s timeout=PT1M}"));
}

TEST(CallbackAddress, IsTheOneThatTheDeviceMostLikelyReaches) {
    const std::vector<std::string> local = {"192.168.1.5", "10.0.0.5", "10.0.0.6"};
    const std::pair<const char*, const char*> cases[] = {{"192.168.1.64", "192.168.1.5"},
                                                         {"10.0.0.64", "10.0.0.6"},
                                                         {"10.0.1.1", "10.0.0.5"},
                                                         {"2.3.4.5", "192.168.1.5"},
                                                         {"", "192.168.1.5"}};
    for (const auto& [device, closest] : cases) {
        EXPECT_EQ(ClosestAddress(local, device), closest) << device;
    }
    EXPECT_EQ(CallbackAddress("10.0.0.5", 6699, 3), "http://10.0.0.5:6699/subscription_3");
}

/// One session for every login id but 0.
class COneSession final : public ISessionSource {
 public:
    explicit COneSession(CExtensions extensions = {})
        : session_{"", "", "127.0.0.1", 80, extensions} {}
    CHttpClient* Acquire(std::uint32_t loginId) override {
        return loginId == 0 ? nullptr : &session_;
    }
    bool Release(std::uint32_t) override { return true; }

 private:
    CHttpClient session_;
};

std::string Message(const std::string& topic, const std::string& items) {
    return "wsnt:NotificationMessage{wsnt:Topic=" + topic + " wsnt:Message{tt:Message{" + items +
           "}}}";
}

std::string Http(const std::string& body, const std::string& lengthName = "Content-Length") {
    return "HTTP/1.1 200 OK\r\n" + lengthName + ": " + std::to_string(body.size()) + "\r\n\r\n" +
           body;
}

const std::string kReply = Reply(
    "x:PullMessagesResponse{" +
    Message("tns1:RuleEngine/CellMotionDetector/Motion",
            "tt:Data{tt:SimpleItem(Name=IsMotion Value=true)}") +
    Message("tns1:Device/Trigger/Relay",
            "tt:Key{tt:SimpleItem(Name=K Value=false)} tt:Data{tt:SimpleItem(Name=L Value=true)}") +
    "}");

/// What the parser made of a reply: "1+" motion active, "2-" alarm input inactive; at its end "."
/// with messages, "," without, "?" refused credentials, "!" something else.
class CFedParser final : private IPullSink {
 public:
    explicit CFedParser(std::uint32_t loginId = 1, CExtensions extensions = {})
        : sessions_(extensions), parser_(*this, sessions_, loginId, extensions) {}

    std::string Feed(std::string_view block) {
        std::uint32_t wanted = 7;
        const auto length = static_cast<std::uint32_t>(block.size());
        EXPECT_EQ(parser_.OnData(1, block.data(), length, &wanted), length);
        EXPECT_EQ(wanted, 0U);
        return std::exchange(made_, "");
    }
    std::string End() {
        parser_.OnEnd(1);
        return std::exchange(made_, "");
    }
    void Reset() { parser_.Reset(); }
    void StopPulling() { pulls_ = false; }

 private:
    bool Pulls() const override { return pulls_; }
    void OnPullAnswer(const PullAnswer& answer) override {
        for (const AlarmItem& item : answer.items) {
            made_ += std::to_string(static_cast<int>(item.type)) + (item.state ? "+" : "-");
        }
        made_ += answer.maxTimeout + ".,?!"[static_cast<int>(answer.outcome)];
    }
    void OnNoConnection() override {}

    COneSession sessions_;
    bool pulls_ = true;
    std::string made_;
    CEventParse parser_;
};

TEST(EventParse, AReplyIsHandledOnceItIsComplete) {
    const std::string reply = Http(kReply);
    for (std::size_t split = 1; split < reply.size(); ++split) {
        CFedParser parser;
        ASSERT_EQ(parser.Feed(reply.substr(0, split)), "") << split;
        ASSERT_EQ(parser.Feed(reply.substr(split)), "1+2-.") << split;
        ASSERT_EQ(parser.Feed(reply), "") << "ignored until the reset";
        parser.Reset();
        ASSERT_EQ(parser.Feed(reply), "1+2-.");
        parser.Reset();
        parser.StopPulling();
        ASSERT_EQ(parser.Feed(reply), "");
    }
}

TEST(EventParse, RepliesOfEveryKindLeadOn) {
    const std::string tooLong(CEventParse::kCapacity - 100, ' ');
    const struct {
        std::string reply;
        const char* made;
    } cases[] = {
        {Http(kReply, "Content-length"), "1+2-."},
        {Http(kReply) + "x", "1+2-."},
        {Http(kReply, "X"), ""},
        {Http(kReply + tooLong), ""},
        {"HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n" + kReply, ""},
        {"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", "!"},
        {Http("no document"), "!"},
        {"HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n", "!"},
        {"HTTP/1.1 401 Unauthorized\r\nContent-Length: 0\r\n\r\n", "?"},
        {Http(Reply("x:Fault")), "!"},
        {Http(Reply("x:RenewResponse")), "!"},
        {Http(Reply("x:PullMessagesResponse")), ","},
        {Http(Reply("x:PullMessagesResponse{" + Message("tns1:Other", "") + "}")), "0-."},
    };
    for (const auto& each : cases) {
        CFedParser parser;
        EXPECT_EQ(parser.Feed(each.reply), each.made) << each.reply.substr(0, 80);
    }
    CFedParser unknownSession(0);
    EXPECT_EQ(unknownSession.Feed(Http(kReply)), "!");
}

TEST(EventParse, ExtensionsTakeOtherReplies) {
    const std::string ok = "HTTP/1.1 200 OK\r\n";
    const std::string tooLong(CEventParse::kCapacity, ' ');
    const auto chunked = [](std::string text) {  // a byte each
        for (std::size_t at = text.size(); at-- > 0;) {
            text.insert(at + 1, "\r\n").insert(at, "1\r\n");
        }
        return "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + text + "0\r\n\r\n";
    };
    const CExtensions framing = {Extension::kHttpFraming};
    const CExtensions large = {Extension::kLargeMessages};
    const std::string fault =
        Http(Xml("Envelope(xmlns=http://www.w3.org/2003/05/soap-envelope){Body{Fault{Detail{"
                 "PullMessagesFaultResponse{MaxTimeout=PT9S}}}}}"));
    const struct {
        CExtensions extensions;
        std::string reply;
        const char* made;
        const char* atEnd;
    } cases[] = {
        {{}, ok + "\r\n" + kReply, "", ""},
        {framing, ok + "\r\n" + kReply, "", "1+2-."},
        {framing, kReply, "", ""},
        {framing, Http(kReply) + "x", "1+2-.", ""},
        {framing, Http(kReply).substr(0, 200), "", ""},
        {framing, "HTTP/1.1 100 C\r\n\r\n" + Http(kReply), "1+2-.", ""},
        {{}, chunked(kReply), "", ""},
        {framing, chunked(kReply), "1+2-.", ""},
        {framing, chunked(kReply + tooLong), "", ""},
        {{Extension::kLargeMessages, Extension::kHttpFraming},
         chunked(kReply + tooLong),
         "1+2-.",
         ""},
        {{}, fault, "!", ""},
        {{Extension::kOpenFaults}, fault, "PT9S!", ""},
        {{Extension::kOpenFaults}, Http(kReply + "<!--NotAuthorized-->"), "1+2-.", ""},
        {large, Http(kReply + tooLong), "1+2-.", ""},
        {large, Http(kReply + std::string(4'190'000, ' ')), "1+2-.", ""},
        {large, Http(kReply + std::string(4'194'304, ' ')), "", ""},
    };
    for (const auto& each : cases) {
        CFedParser parser(1, each.extensions);
        EXPECT_EQ(parser.Feed(each.reply), each.made) << each.reply.substr(0, 80);
        EXPECT_EQ(parser.End(), each.atEnd) << each.reply.substr(0, 80);
    }
}

TEST(EventDocuments, APullRepeatsShortDurationsAlone) {
    const std::pair<const char*, bool> cases[] = {
        {"PT30S", true}, {"P1DT2H", true}, {"PT0.5S", true}, {"PT00000000000001M", true},
        {"PT", false},   {"PTS", false},   {"PT1", false},   {"PT000000000000001M", false},
        {"30", false},   {"P", false},     {"-PT1M", false}, {"PT1M&amp;", false},
    };
    for (const auto& [text, taken] : cases) {
        const PullAnswer answer =
            ReadPull({status::kSuccess,
                      std::make_shared<CXmlDocument>(
                          "<GetResponse><pullMessages><status>fail</status><maxtimeout>" +
                          std::string(text) + "</maxtimeout></pullMessages></GetResponse>")});
        EXPECT_EQ(answer.maxTimeout, taken ? text : "") << text;
    }
}

TEST(EventDocuments, ASubscriptionHasTextsThatAPullCanRepeat) {
    const std::string address(2000, 'a');
    const std::string id(512, 'i');
    const auto read = [](const std::string& at, const std::string& identifier) {
        return ReadSubscription("<SetResponse><createPullPointSubscription><address>" + at +
                                "</address><subscriptionId>" + identifier +
                                "</subscriptionId></createPullPointSubscription></SetResponse>");
    };
    const auto longest = read(address, id);
    ASSERT_TRUE(longest);
    EXPECT_EQ(longest->address + longest->id + longest->idAttribute, address + id + "NULL");
    EXPECT_EQ(read("a", id + "i").value().id, "NULL");
    EXPECT_FALSE(read(address + "a", id));
    EXPECT_FALSE(ReadSubscription("<SetResponse/>"));
}

TEST(NotifyDelivery, PostsReachTheDeviceThatTheyAreAbout) {
    const auto notify = [](const char* to, const char* reference) {
        return Xml(
            "s:Envelope{s:Header{ad:To=" + std::string(to) +
            "} s:Body{wsn:Notify{wsn:NotificationMessage{wsn:SubscriptionReference{ad:Address='" +
            reference +
            "'} wsn:Topic=tns1:MotionAlarm "
            "wsn:Message{tt:Message{tt:Data{tt:SimpleItem(Value=1)}}}}}}}");
    };
    COneSession sessions;
    CDeviceTable devices;
    std::shared_ptr<EventDeviceRecord> records[3];
    for (std::uint32_t id = 0; id < 3; ++id) {
        records[id] = std::make_shared<EventDeviceRecord>(sessions, id, nullptr,
                                                          "http://h/" + std::to_string(id));
        devices.Put(records[id]);
    }
    records[1]->UseNotifications("http://10.0.0.5/manager");
    records[2]->UseNotifications("http://10.0.0.6:8000/manager");
    CNotifyDelivery delivery(devices);
    const struct {
        std::string body;
        int receiver;  // -1: none
    } cases[] = {
        {notify("http://h/1", ""), 1},
        {notify("http://h/2", "http://10.0.0.5/x"), 2},
        {notify("http://other", "http://10.0.0.6:8000/x"), 2},
        {notify("http://h/0", ""), -1},  // is pulled from
        {notify("http://other", ""), -1},
        {"garbage", -1},
    };
    for (const auto& each : cases) {
        delivery.OnNotify(each.body);
        for (int id = 0; id < 3; ++id) {
            EXPECT_EQ(records[id]->TakeItems().size(), id == each.receiver ? 1U : 0U) << each.body;
        }
    }
}

}  // namespace
}  // namespace onvif_client
