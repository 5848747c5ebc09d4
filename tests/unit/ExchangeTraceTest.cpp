#include "client/ExchangeTrace.h"

#include <gtest/gtest.h>

#include "common/Redaction.h"

namespace onvif_client {
namespace {

TEST(Redaction, TakesWhatLetsIn) {
    const KnownSecrets known = {"operator", "s3cret/pw"};
    const struct {
        std::string message;
        std::string shown;
    } cases[] = {
        {"authorization:\tBasic b3BlOnB3PQ==\r\nSet-Cookie: session=1; path=/\r\n",
         "Authorization: Basic (removed)\r\nSet-Cookie: (removed)\r\n"},
        {"Authorization: Digest username=\"a,b\", realm=\"r\", nonce=\"n\", uri=\"/u\",\r\n"
         " response=\"x\", cnonce=y\r\nA: b",
         "Authorization: Digest username=(removed), realm=\"r\", nonce=(removed), uri=\"/u\", "
         "response=(removed), cnonce=(removed)\r\nA: b"},
        {"WWW-Authenticate: Basic realm=\"r\", Digest realm=\"no end, nonce=\"abc\", qop=\"a\"\n",
         "WWW-Authenticate: Basic realm=\"r\", Digest (removed)\n"},
        {"<w:Username>a</w:Username><Password Type='#D'>x</Password><u:Created/>",
         "<w:Username>(removed)</w:Username><Password Type='#D'>(removed)</Password><u:Created/>"},
        {"<tt:User><tt:UserName><![CDATA[a<b]]></tt:UserName><tt:UserLevel>U</tt:UserLevel>",
         "<tt:User><tt:UserName>(removed)</tt:UserName><tt:UserLevel>U</tt:UserLevel>"},
        {"<Nonce>cut off", "<Nonce>(removed)"},
        {"<tt:SimpleItem Name=\"UserName\" Value=\"a\"/><i Name='Level' Value='2'/>",
         "<tt:SimpleItem Name=\"UserName\" Value=\"(removed)\"/><i Name='Level' Value='2'/>"},
        {"<a user='x' users='2'>rtsp://u:p@10.0.0.5/1 http://u:p/w@h/2 http://h:80/a@b</a>",
         "<a user='(removed)' users='2'>rtsp://(removed)@10.0.0.5/1 http://(removed)@h/2 "
         "http://h:80/a@b</a>"},
        {"GET /snap?usr=a&amp;pwd=b&channel=1 HTTP/1.1",
         "GET /snap?usr=(removed)&amp;pwd=(removed)&channel=1 HTTP/1.1"},
        {"POST /operator HTTP/1.1\r\n\r\nno operator operators<operator>'operator' s3cret/pw<",
         "POST /operator HTTP/1.1\r\n\r\nno (removed) operators<operator>'(removed)' (removed)<"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(Redacted(each.message, known), each.shown);
    }
}

TEST(ExchangeTrace, NoTextOfADeviceCanLookLikeAnEntry) {
    const CExchangeTrace trace("10.0.0.5:80", {"operator", "s3cret"},
                               "POST /d HTTP/1.1\r\n\r\n<s:Body>\n<t:GetDNS/></s:Body>");
    const std::string head = "HTTP/1.1 500 No\r\n\r\n";
    const std::string fault =
        "<s:Envelope><s:Body><s:Fault><s:Code><s:Value>s:Sender</s:Value><s:Subcode><s:Value>"
        "t:Busy</s:Value></s:Subcode></s:Code><s:Reason><s:Text>no\n== operator\x1B</s:Text>"
        "</s:Reason></s:Fault></s:Body></s:Envelope>";
    EXPECT_EQ(
        trace.Text({ExchangeEnd::kClosed, head + fault}, 7).substr(0, 80),
        "10.0.0.5:80 GetDNS /d 500 7 ms fault Busy: no == (removed)\\x1B\n=== request\nPOST ");
    EXPECT_EQ(trace.Text({ExchangeEnd::kClosed, head + "\t\x9B\n== x\n==\n"}, 7),
              "10.0.0.5:80 GetDNS /d 500 7 ms\n=== request\nPOST /d HTTP/1.1\n\n<s:Body>\n"
              "<t:GetDNS/></s:Body>\n=== reply, then closed\nHTTP/1.1 500 No\n\n"
              "\t\\x9B\n\\x3D= x\n\\x3D=\n\n");
    EXPECT_TRUE(trace.Text({ExchangeEnd::kTimeout, ""}, 8)
                    .starts_with("10.0.0.5:80 GetDNS /d timeout 8 ms\n"));
    const std::string large = trace.Text({ExchangeEnd::kReplied, std::string(300000, 'x')}, 7);
    EXPECT_EQ(large.substr(262144 + 104), "x\n... 37856 bytes more\n\n");
}

}  // namespace
}  // namespace onvif_client
