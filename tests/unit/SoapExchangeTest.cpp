#include "client/SoapExchange.h"

#include <gtest/gtest.h>

#include "client/ReplyCollector.h"

namespace onvif_client {
namespace {

TEST(BuildPost, WritesTheRequestAsDevicesExpectIt) {
    EXPECT_EQ(BuildPost("onvif/device_service", "10.0.0.5", "<a>\t<b\t/></a>"),
              "POST /onvif/device_service HTTP/1.1\r\n"
              "Content-Type: application/soap+xml; charset=utf-8\r\nUser-Agent: ApiTool\r\n"
              "Host: 10.0.0.5\r\nContent-Length: 11\r\n\r\n<a><b/></a>");
    EXPECT_EQ(BuildPost("a b\r\n\x7F", "h\nX:", ""),
              "POST /a%20b%0D%0A%7F HTTP/1.1\r\nContent-Type: application/soap+xml; charset=utf-8"
              "\r\nUser-Agent: ApiTool\r\nHost: h%0AX:\r\n\r\n");
}

TEST(ReplyCollector, TakesNoMillionsOfParts) {
    const std::string block(4096, '<');
    CReplyCollector collector({Extension::kLargeMessages}, 8192);
    while (collector.OnReply(block.data(), 4096) != 0) {
    }
    EXPECT_EQ(collector.Take().size(), 1003520U);
}

TEST(BuildPost, CutsLongRequestsButStatesTheWholeBody) {
    const std::string request = BuildPost("p", "h", std::string(9000, 'x') + std::string(5, '\t'));
    EXPECT_EQ(request.size(), 8191U);
    EXPECT_NE(request.find("Content-Length: 9000\r\n"), std::string::npos);
}

std::string Fault(const std::string& code, const std::string& subcode) {
    return "<?xml version=\"1.0\"?><e:Envelope><e:Body><e:Fault><e:Code><e:Value>" + code +
           "</e:Value><e:Subcode><e:Value>" + subcode +
           "</e:Value></e:Subcode></e:Code></e:Fault></e:Body></e:Envelope>";
}

TEST(ClassifyReply, TheFirstTelltaleTextOrTheReplysFormDecides) {
    const std::string soap = "<?xml version=\"1.0\"?><s:Envelope></s:Envelope>";
    const std::string ok = "HTTP/1.1 200 OK\r\n\r\n";
    const std::string bad = "HTTP/1.1 400 Bad Request\r\n\r\n";
    const struct {
        std::string head;
        std::string body;  // the SOAP text of a success
        int status;
        int open;  // with the extension
    } cases[] = {
        {"", "", 5, 5},
        {ok, soap, 0, 0},
        {"", soap, 0, 0},
        {"HTTP/1.1 500 Internal\r\n\r\n", soap, 0, 0},
        {"HTTP/1.1 401 Unauthorized\r\n\r\n", "", 401, 401},
        {"HTTP/1.1 401 No\r\n\r\n", soap, 0, 401},
        {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 401 No\r\n\r\n", "", 7, 401},
        {bad, soap, 7, 0},
        {bad, soap + "ter:NotAuthorized", 401, 0},
        {ok, soap + "Sender could not be authenticated", 401, 0},
        {ok, Fault("e:Sender", "ter:NotAuthorized"), 401, 401},
        {bad, Fault("e:Sender", " x:FailedAuthentication\n"), 7, 401},
        {ok, Fault("InvalidSecurity", ""), 0, 401},
        {bad, Fault("e:Sender", "ter:InvalidArgVal") + "NotAuthorized", 401, 0},
        {ok,
         "<?xml?><Envelope><Body><Fault><faultcode>a:FailedCheck</faultcode></Fault></Body>"
         "</Envelope>",
         7, 401},
        {ok, "<html/>", 7, 7},
        {ok, "<Envelope/>", 7, 7},
        {ok, "<Envelope xmlns=\"x\"></Envelope>", 7, 0},
        {ok + "<!-- :Envelope -->\r\n", "<s:Envelope></s:Envelope>", 4, 0},
        {ok, "a <x y='EnvelopeEnvelope :Envelope> <Envelopes> </s:Envelope>", 4, 7},
        {"", "garbage", 7, 7},
    };
    for (const auto& each : cases) {
        const std::string reply = each.head + each.body;
        std::string_view found = "untouched";
        EXPECT_EQ(ClassifyReply("10.0.0.5", 80, reply, found), each.status) << reply;
        EXPECT_EQ(found, each.status == 0 ? std::string_view(each.body) : "untouched");
        found = "untouched";
        EXPECT_EQ(ClassifyOpenly("10.0.0.5", 80, reply, found), each.open) << reply;
        EXPECT_EQ(found, each.open == 0 ? std::string_view(each.body) : "untouched") << reply;
    }
}

}  // namespace
}  // namespace onvif_client
