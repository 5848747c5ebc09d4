#include "client/SoapExchange.h"

#include <gtest/gtest.h>

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

TEST(BuildPost, CutsLongRequestsButStatesTheWholeBody) {
    const std::string request = BuildPost("p", "h", std::string(9000, 'x') + std::string(5, '\t'));
    EXPECT_EQ(request.size(), 8191U);
    EXPECT_NE(request.find("Content-Length: 9000\r\n"), std::string::npos);
}

TEST(ClassifyReply, TheFirstTelltaleTextDecides) {
    const std::string soap = "<?xml version=\"1.0\"?><s:Envelope></s:Envelope>";
    const struct {
        std::string reply;
        int status;
    } cases[] = {
        {"", 5},
        {"HTTP/1.1 200 OK\r\n\r\n" + soap, 0},
        {"HTTP/1.1 500 Internal\r\n\r\n" + soap, 0},
        {"HTTP/1.1 401 Unauthorized\r\n\r\n", 401},
        {"HTTP/1.1 400 Bad Request\r\n\r\n" + soap, 7},
        {"HTTP/1.1 400 Bad Request\r\n\r\n" + soap + "ter:NotAuthorized", 401},
        {"HTTP/1.1 200 OK\r\n\r\n" + soap + "Sender could not be authenticated", 401},
        {"HTTP/1.1 200 OK\r\n\r\n<html/>", 7},
        {"HTTP/1.1 200 OK\r\n\r\n<Envelope/>", 7},
        {"HTTP/1.1 200 OK\r\n\r\n<s:Envelope></s:Envelope>", 4},
        {"garbage", 7},
    };
    for (const auto& each : cases) {
        std::string_view found = "untouched";
        EXPECT_EQ(ClassifyReply("10.0.0.5", 80, each.reply, found), each.status) << each.reply;
        EXPECT_EQ(found, each.status == 0 ? std::string_view(soap) : "untouched");
    }
}

}  // namespace
}  // namespace onvif_client
