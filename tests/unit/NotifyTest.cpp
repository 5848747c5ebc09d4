#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "common/HttpHead.h"
#include "events/AlarmTopics.h"
#include "events/ContentTypes.h"
#include "events/HttpMessage.h"
#include "events/NotifyMessage.h"
#include "support/Outline.h"

namespace onvif_client {
namespace {

using client_test::Xml;

/// What a message comes to that arrives byte by byte: its body, "(incomplete)" or "(impossible)".
std::string BodyByBytes(const std::string& bytes) {
    MessageFrame frame;
    for (std::size_t size = 1; size <= bytes.size(); ++size) {
        switch (CutMessage(std::string_view(bytes).substr(0, size), frame)) {
            case MessageState::kComplete:
                return "[" + bytes.substr(frame.headerSize, frame.bodySize) + "]";
            case MessageState::kImpossible:
                return "(impossible)";
            case MessageState::kIncomplete:
                break;
        }
    }
    return "(incomplete)";
}

TEST(HttpMessage, TheFirstCompleteMessageIsCutOff) {
    const std::string post = "POST /a HTTP/1.1\r\n";
    const std::pair<std::string, const char*> cases[] = {
        {post + "Content-Length: 5\r\n\r\nhello", "[hello]"},
        {post + "Content-Length: 5\r\n\r\nhellPOST", "[hellP]"},
        {post + "Content-Length: 5\r\n\r", "(incomplete)"},
        {post + "Content-Length: 4\r\n\r\n\r\n\r\n", "[\r\n\r\n]"},
        {post + "Host: x\r\ncONTENT-lENGTH:\t2 \r\nA: b\r\n\r\nok", "[ok]"},
        {post + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nok", "[o]"},
        {post + "X-Content-Length: 2\r\nX: Content-Length: 2\r\n\r\nok", "[]"},
        {post + "Content-Length : 2\r\n Content-Length: 2\r\n\r\nok", "[]"},  // other names
        {post + "\r\nContent-Length: 2\r\n\r\nok", "[]"},
        {"Content-Length: 2\r\n\r\nok", "[]"},  // in the place of the request line
        {"\r\n\r\n", "[]"},
        {post + "Content-Length: -1\r\n\r\n", "(impossible)"},
        {post + "Content-Length: +1\r\n\r\nx", "(impossible)"},
        {post + "Content-Length:\r\n\r\n", "(impossible)"},
        {post + "Content-Length: 5x\r\n\r\nhello", "(impossible)"},
        {post + "Content-Length: 1048576\r\n\r\n", "(impossible)"},
        {post + "Content-Length: 18446744073709551621\r\n\r\nhello", "(impossible)"}};
    for (const auto& [bytes, body] : cases) {
        EXPECT_EQ(BodyByBytes(bytes), body) << bytes;
    }
}

TEST(HttpMessage, TheLongestMessageHasOneMebibyte) {
    const std::string header = "POST / HTTP/1.1\r\nContent-Length: 1048532\r\n\r\n";
    ASSERT_EQ(header.size() + 1048532, kLargestMessage);
    MessageFrame frame;
    EXPECT_EQ(CutMessage(header + std::string(1048532, 'x'), frame), MessageState::kComplete);
    EXPECT_EQ(BodyByBytes("X" + header), "(impossible)");

    MessageFrame endless;
    const std::string letters(kLargestMessage, 'x');
    EXPECT_EQ(CutMessage(letters.substr(1), endless), MessageState::kIncomplete);
    EXPECT_EQ(CutMessage(letters, endless), MessageState::kImpossible);
    MessageFrame longHeader;
    EXPECT_EQ(CutMessage(letters + "\r\n\r\n", longHeader), MessageState::kImpossible);
}

TEST(ContentTypes, ThePathOfTheRequestChooses) {
    const struct {
        const char* requestLine;
        const char* path;
        const char* type;
    } cases[] = {{"POST / HTTP/1.1", "", "text/html"},
                 {"POST /subscription_3 HTTP/1.1", "subscription_3", "text/xml"},
                 {"POST /a/b c HTTP/1.1\r\nX: /d HTTP", "a/b c", "text/xml"},
                 {"POST http://h/a.png HTTP/1.1", "/h/a.png", "image/png"},
                 {"HTTP/1.1 200 OK", "", "text/html"},
                 {"POST", "", "text/html"},
                 {"/a.html HTTP", "a.html", "text/html"},
                 {"/a.htm.html HTTP", "a.htm.html", "text/html"},
                 {"/a.ht HTTP", "a.ht", "application/octet-stream"},
                 {"/a. HTTP", "a.", "application/octet-stream"},
                 {"/a.b.c HTTP", "a.b.c", "text/plain"},
                 {"/a.jad HTTP", "a.jad", "text/vnd.sun.j2me.app-descriptor"},
                 {"/queryQRInfo HTTP", "queryQRInfo", "image/png"},
                 {"/x/queryQRInfo.txt HTTP", "x/queryQRInfo.txt", "image/png"}};
    for (const auto& each : cases) {
        EXPECT_EQ(RequestPath(each.requestLine), each.path);
        EXPECT_EQ(ContentTypeOf(each.path), each.type) << each.path;
    }
}

/// Every item as topic, "+" or "-" for its state, reference and a semicolon; before them the
/// address that the message is meant for.
std::string Read(const std::string& body) {
    const NotifyMessage notify = ReadNotify(body);
    std::string text = notify.to + ">";
    for (const NotifyItem& item : notify.items) {
        text += item.topic + (item.active ? "+" : "-") + item.subscriptionReference + ";";
    }
    return text;
}

std::string Data(const std::string& simpleItems) {
    return " wsn:Message{tt:Message{tt:Source{tt:SimpleItem(Name=S Value=true)} tt:Data{" +
           simpleItems + "}}}";
}

TEST(NotifyMessage, ItemsAreReadByTheirUsualNames) {
    const std::string on = Data("tt:SimpleItem(Name=a Value=1)");
    const std::pair<std::string, const char*> cases[] = {
        {"wsn:Topic=A" + on, "A+;"},
        {"wsn:topic=a wsn:Topic=A", "A-;"},
        {"wsn:topic=a wsn:Topic", "-;"},
        {"wsn:topic=a" + on, "a+;"},
        {"b:Topic=A" + on, "+;"},
        {Data("tt:SimpleItem(Value=false) tt:SimpleItem(Value=true)"), "-;"},
        {Data("tt:SimpleItem(Value=TRUE) tt:SimpleItem(Value=false)"), "+;"},
        {Data("tt:SimpleItem(Value=True)"), "-;"},
        {Data("tt:SimpleItem(Name='no value')") + Data("tt:SimpleItem(Value=1)"), "-;"},
        {Data(""), "-;"},
        {"wsn:SubscriptionReference{ad:Address=http://r}", "-http://r;"},
        {"} x wsn:NotificationMessage{wsn:Topic=B" + on, "-;B+;"}};
    for (const auto& [content, items] : cases) {
        EXPECT_EQ(
            Read(Xml(
                "s:Envelope{s:Header{ad:To=http://me} s:Body{wsn:Notify{wsn:NotificationMessage{" +
                content + "}}}}")),
            std::string("http://me>") + items)
            << content;
    }
}

TEST(NotifyMessage, OtherTextsGiveNoItems) {
    const std::string message = "<wsn:NotificationMessage/>";
    for (const std::string& body :
         {std::string(), std::string("\0<s:Envelope/>", 14), std::string("<s:Envelope><s:Body>"),
          "<env:Envelope><env:Body><wsn:Notify>" + message +
              "</wsn:Notify></env:Body></env:Envelope>",
          "<s:Envelope><s:Body>" + message + "</s:Body></s:Envelope>", std::string(100000, '<'),
          std::string("<s:Envelope><s:Header/></s:Envelope>")}) {
        EXPECT_EQ(Read(body), ">") << body.substr(0, 100);
    }
}

TEST(NotifyMessage, ReferencesAgreeWithRenewAddressesOnTheSameHost) {
    for (const char* reference :
         {"http://10.0.0.1:80/sub/1", "http://10.0.0.1:80/", "http://10.0"}) {
        EXPECT_TRUE(AddressesAgree(reference, "http://10.0.0.1:80/sub/2")) << reference;
    }
    for (const char* reference : {"http://10.0.0.2:80/sub/2", "http://10.0.0.1:8080/sub/2", "sub",
                                  "http://10.0.0.1:80sub", "http://", "http:///sub", ""}) {
        EXPECT_FALSE(AddressesAgree(reference, "http://10.0.0.1:80/sub/2")) << reference;
    }
    EXPECT_FALSE(AddressesAgree("http://10.0.0.1/sub", "http://10.0"));
}

TEST(AlarmTopics, PulledAndNotifiedTopicsDiffer) {
    const struct {
        const char* topic;
        std::uint32_t pulled;
        std::uint32_t notified;
    } cases[] = {{"tns1:RuleEngine/CellMotionDetector/Motion", 1, 1},
                 {"tns1:RuleEngine/LineDetector/Crossed", 1, 0},
                 {"tns1:VideoSource/MotionAlarm", 1, 1},
                 {"tns1:VideoAnalytics/MotionDetection", 1, 1},
                 {"tns1:Device/Trigger/DigitalInput", 2, 2},
                 {"tns1:Device/Trigger/Relay", 2, 2},
                 {"AlarmIn/1", 2, 2},
                 {"AlarmIn/MotionAlarm", 1, 1},
                 {"tns1:Device/PIR", 2, 0},
                 {"PIR/RuleEngine", 1, 0},
                 {"tns1:Device/Trigger", 0, 0},
                 {"motionalarm", 0, 0},
                 {"", 0, 0}};
    for (const auto& each : cases) {
        EXPECT_EQ(static_cast<std::uint32_t>(ClassifyPulledTopic(each.topic)), each.pulled);
        EXPECT_EQ(static_cast<std::uint32_t>(ClassifyNotifiedTopic(each.topic)), each.notified)
            << each.topic;
    }
}

}  // namespace
}  // namespace onvif_client
