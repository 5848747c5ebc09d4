#include <gtest/gtest.h>

#include <chrono>

#include "client/HttpClient.h"
#include "commands/DeviceRequests.h"
#include "common/HttpReplyFraming.h"
#include "platform/Wirelink.h"
#include "support/ScriptedPeer.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::CPeerConnection;
using client_test::CScriptedPeer;

const std::string kOk = "HTTP/1.1 200 OK\r\n";
const std::string kCounted = kOk + "content-length: 4 \r\n\r\n";
const std::string kChunks = kOk + "Transfer-Encoding: gzip, Chunked\r\nContent-Length: 3\r\n\r\n";

TEST(HttpReplyFraming, CutsEveryReplyTheSameHoweverItArrives) {
    const std::string extension(300, 'x');
    const struct {
        std::string head;
        std::string bytes;
        std::string kept;  // of the bytes
        ReplyState state;
        std::string behind = {};
    } cases[] = {
        {kCounted, "bod", "bod", ReplyState::kGoesOn},
        {kCounted, "body", "body", ReplyState::kComplete},
        {kCounted, "bodybehind", "body", ReplyState::kComplete, "behind"},
        {"HTTP/1.1 404 No\r\nContent-Length:0\r\n\r\n", "x", "", ReplyState::kComplete, "x"},
        {"HTTP/1.1 204 \r\n\r\n", "x", "", ReplyState::kComplete, "x"},
        {kChunks, "4\r\nbody\r\n0a;n=v\r\n0123456789\r\n0\r\nT", "body0123456789",
         ReplyState::kComplete, "T"},
        {kChunks, "4 \nbody2\r\nxy0\n", "bodyxy", ReplyState::kComplete},
        {kChunks, "2\r\nxy\r\nbody\r\n", "xy", ReplyState::kBroken},
        {kChunks, "2\r\nxy\r\n\r\n\r\n", "xy", ReplyState::kBroken, "\r\n"},
        {kChunks, "1\r\nx1;" + extension, "x", ReplyState::kBroken, extension.substr(255)},
        {kChunks, "ffffffffffffffff\r\nx", "x", ReplyState::kGoesOn},
        {kChunks, "10000000000000000\r\nx", "10000000000000000\r\nx", ReplyState::kUnframed},
        {kChunks, "<s:Envelope>", "<s:Envelope>", ReplyState::kUnframed},
        {kOk + "\r\n", "body", "body", ReplyState::kUntilEnd},
        {kOk + "Content-Length: -1\r\n\r\n", "body", "body", ReplyState::kUnframed},
        {kOk + "Content-Length: 99999999999999999999\r\n\r\n", "", "", ReplyState::kUnframed},
        {kOk + std::string(70000, 'h'), "", "", ReplyState::kUnframed},
        {"<html>", "no head", "no head", ReplyState::kUnframed},
        {"HTTP/" + std::string(20, 'v'), "", "", ReplyState::kUnframed},
    };
    for (const auto& each : cases) {
        const std::string sent =
            "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.0 102 P\r\nX: y\r\n\r\n" + each.head + each.bytes;
        for (std::size_t size = 1; size <= std::min<std::size_t>(sent.size(), 500); ++size) {
            CHttpReplyFraming framing;
            std::string reply;
            std::string behind;
            for (std::size_t at = 0; at < sent.size(); at += size) {
                std::string_view piece = std::string_view(sent).substr(at, size);
                framing.Add(piece, reply);
                behind += piece;
            }
            ASSERT_TRUE(reply == each.head + each.kept && behind == each.behind &&
                        framing.State() == each.state)
                << sent.substr(0, 200) << "\nin pieces of " << size << " gives\n"
                << reply.substr(0, 200) << "\nand behind it\n"
                << behind.substr(0, 200);
        }
    }
}

class ExtendedExchange : public testing::Test {
 protected:
    ExtendedExchange() { WIRELINK_Initial(1, 1, nullptr, 0); }
    ~ExtendedExchange() override { WIRELINK_Quit(); }

    /// Does something with a session whose device answers so, and keeps or closes the connection.
    template <typename Work>
    static auto With(const std::string& reply, bool closes, CExtensions extensions,
                     const Work& work) {
        const CScriptedPeer peer([&](CPeerConnection& connection) {
            connection.Read(100);
            connection.Send(reply);
            if (!closes) {
                connection.WaitForClose();
            }
        });
        CHttpClient session("u", "p", "127.0.0.1", peer.Port(), extensions);
        return work(session);
    }

    /// The status of an exchange, and the text of <v> in its envelope.
    /// @param late  whether the time-out alone ends it.
    std::string Try(const std::string& reply, CExtensions extensions, bool late) {
        Reply got;
        // Until the time is enough for this machine.
        for (unsigned int timeoutMs = late ? 100 : 60000;
             timeoutMs <= 60000 && got.status == status::kNoReply; timeoutMs *= 4) {
            const auto began = std::chrono::steady_clock::now();
            got = With(reply, false, extensions, [timeoutMs](CHttpClient& session) {
                return session.Exchange({.envelope = std::string(GetServicesEnvelope()),
                                         .serviceKey = "device",
                                         .timeoutMs = timeoutMs});
            });
            took_ = std::chrono::steady_clock::now() - began;
            EXPECT_EQ(took_ >= std::chrono::milliseconds(timeoutMs), late) << reply.substr(0, 200);
        }
        const std::size_t value = got.soap.find("<v>");
        const std::size_t end = got.soap.find("</v>");
        return std::to_string(got.status) + " " +
               (end == std::string::npos ? got.soap.substr(0, 20)
                                         : got.soap.substr(value + 3, end - value - 3));
    }

    std::chrono::steady_clock::duration took_{};
};

const std::string kEnvelope = "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"x\"><v>value</v>";

std::string Counted(const std::string& status, const std::string& body, int less = 0) {
    return "HTTP/1.1 " + status +
           "\r\nContent-Length: " + std::to_string(static_cast<int>(body.size()) - less) +
           "\r\n\r\n" + body;
}

TEST_F(ExtendedExchange, EndsWhereHttpSaysSo) {
    const std::string half = kEnvelope.substr(0, 50);  // within the value
    const struct {
        std::string reply;
        const char* literal;
        bool literalLate;
        const char* framed;
        bool framedLate = false;
    } cases[] = {
        {Counted("200 OK", kEnvelope + "</s:Envelope>"), "0 value", false, "0 value"},
        {Counted("401 No", ""), "7 ", true, "7 "},
        {Counted("401 Unauthorized", "") + "behind", "401 ", true, "401 "},
        {Counted("400 Bad Request", "<html/>"), "7 ", true, "7 "},
        {"HTTP/1.1 100 Continue\r\n\r\n" + Counted("404 N", ""), "7 ", true, "7 "},
        {kChunks + "32\r\n" + half + "\r\n7\r\n" + kEnvelope.substr(50) + "\r\nd\r\n</s:Envelope>",
         "0 va\r\n7\r\nlue", false, "0 value"},
        {kChunks + "39\r\n" + kEnvelope + "\r\n8\r\n</s:Enve\r\n5\r\nlope>\r\n0\r\n\r\n", "0 value",
         true, "0 value"},
        {kChunks + "39\r\n" + kEnvelope + "\r\nbroken\r\n", "0 value", true, "0 value"},
        {Counted("200 OK", kEnvelope + "</s:Envelope>", 16), "0 value", false, "0 value"},
        {kEnvelope, "0 value", true, "0 value", true},
        {kOk + "\r\n" + kEnvelope, "0 value", true, "0 value", true},
        {Counted("200 OK", kEnvelope + "</s:Envelope >"), "0 value", true, "0 value"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(Try(each.reply, {}, each.literalLate), each.literal) << each.reply;
        EXPECT_EQ(Try(each.reply, {Extension::kHttpFraming}, each.framedLate), each.framed)
            << each.reply;
    }
    EXPECT_GE(took_, std::chrono::milliseconds(250)) << "the envelope's end had not come";
}

TEST_F(ExtendedExchange, MessagesMayBeLarge) {
    std::string largest = kOk + "\r\n<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"x\">";
    largest.resize(16'777'216, ' ');
    for (const std::size_t less : {0U, 200U}) {
        const std::string reply =
            largest.substr(0, largest.size() - less) + "<v>value</v></s:Envelope>";
        const std::string begin = "0 <?xml version=\"1.0\"?";
        EXPECT_EQ(Try(reply, {}, false), begin);
        EXPECT_EQ(Try(reply, {Extension::kLargeMessages}, false), less == 0 ? begin : "0 value");
    }
    const std::string document = "<Get><pullMessages><timeout>" + std::string(1'050'000, 'v') +
                                 "</timeout></pullMessages></Get>";
    for (const CExtensions each : {CExtensions{}, CExtensions{Extension::kLargeMessages}}) {
        CHttpClient session("u", "p", "127.0.0.1", 80, each);
        EXPECT_EQ(session.BuildHttpRequest(session.PrepareRequest(document).value()).size(),
                  each == CExtensions{} ? 8'191U : 1'048'576U);
    }
}

TEST_F(ExtendedExchange, FaultsAndBareEnvelopesAreAnswers) {
    const auto ask = [](const std::string& reply, CExtensions extensions) {
        return With(reply, true, extensions, [](CHttpClient& session) {
            ResponseBuffer response;
            session.Get("<Get><networkProtocols/></Get>", response);
            return response.data == nullptr ? "" : client_test::Compact(response.data.get());
        });
    };
    const auto result = [](const std::string& inside) {
        return "<GetResponse><networkProtocols>" + inside + "</networkProtocols></GetResponse>";
    };
    const std::string bare =
        "<Envelope\txmlns=\"s\"\r\n\txmlns:t=\"t\"><Body><GetNetworkProtocolsResponse>"
        "<NetworkProtocols><t:Name>RTSP</t:Name><Port>NotAuthorized</Port></NetworkProtocols>"
        "</GetNetworkProtocolsResponse></Body></Envelope>";
    const std::string fault = client_test::Reply(
        "env:Fault{env:Code{env:Value=env:Sender env:Subcode{env:Value=ter:InvalidArgVal}} "
        "env:Reason{env:Text=why}}");
    const std::pair<std::string, std::string> cases[] = {
        {Counted("400 Bad Request", fault),
         result("<status>fail<errorCode>31</errorCode><description>why</description></status>")},
        {Counted("200 OK", bare),
         result("<status>success</status><rtsp><port>NotAuthorized</port></rtsp>")},
        {Counted("200 OK", client_test::Reply("env:Fault{env:Code{env:Value=a:NotAuthorized}}")),
         ""},
    };
    for (const auto& [reply, open] : cases) {
        EXPECT_EQ(ask(reply, {}), "") << reply;
        EXPECT_EQ(ask(reply, {Extension::kOpenFaults}), open) << reply;
    }
}

}  // namespace
}  // namespace onvif_client
