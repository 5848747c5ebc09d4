#include <gtest/gtest.h>

#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CCamera;
using camera_sim::Fault;

class Replies : public CCameraTest {};

constexpr const char* kProlog = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr const char* kQueries =
    "<ipv4/><dns/><networkProtocols/><profiles/><devInfo/><alarmout/><alarmin/><motion/><presets/>"
    "<cruises/><osd/><osdoption/><imageOpts/><imageSettings/><streamURI><index>1</index>"
    "</streamURI><profile><index>0</index></profile><videoEncoderCfg><index>1</index>"
    "</videoEncoderCfg><videoEncoderCfgOpts><index>1</index></videoEncoderCfgOpts>";

TEST_F(Replies, GiveTheSameResultsWhateverTheirPrefixes) {
    for (const char* model : {"dome", "fixed"}) {
        std::string expected;
        for (const std::string& style : camera_sim::PrefixStyleNames()) {
            CCamera& camera = host_.Add({.model = model, .prefixStyle = style});
            auto result = Get(Login(camera), kQueries).value_or("(failed)");
            const std::string port = ":" + std::to_string(camera.Port());
            for (auto at = result.find(port); at != std::string::npos; at = result.find(port)) {
                result.replace(at, port.size(), ":PORT");
            }
            expected = expected.empty() ? result : expected;
            EXPECT_NE(result, "(failed)") << style;
            EXPECT_EQ(result, expected) << model << style;
        }
    }
}

/// Answers as cameras write them, each to the same question.
TEST_F(Replies, AreReadAsCamerasWriteThem) {
    const std::string soap = "http://www.w3.org/2003/05/soap-envelope";
    const std::string media = "http://www.onvif.org/ver10/media/wsdl";
    const std::string uri = "rtsp://c/1?a=1&amp;b=2";
    const auto envelope = [&](const std::string& prefix, const std::string& body) {
        return kProlog +
               ("<" + prefix + ":Envelope xmlns:" + prefix + "=\"" + soap + "\" xmlns:m=\"" +
                media + "\" xmlns:t=\"http://www.onvif.org/ver10/schema\"><" + prefix + ":Body>" +
                body + "</" + prefix + ":Body></" + prefix + ":Envelope>");
    };
    const std::string inside = "<t:Uri>" + uri + "</t:Uri><t:Timeout>PT5S</t:Timeout>";
    const std::string answer =
        "<m:GetStreamUriResponse><m:MediaUri>" + inside + "</m:MediaUri></m:GetStreamUriResponse>";
    const auto fault = [](const std::string& rest) { return "<s:Fault>" + rest + "</s:Fault>"; };
    const struct {
        const char* what;
        std::string reply;
        const char* path;
        const char* value;
    } cases[] = {
        {"SOAP-ENV", envelope("SOAP-ENV", answer), "uri", "rtsp://c/1?a=1&b=2"},
        {"env", envelope("env", answer), "uri", "rtsp://c/1?a=1&b=2"},
        {"soap", envelope("soap", answer), "uri", "rtsp://c/1?a=1&b=2"},
        {"soapenv", envelope("soapenv", answer), "uri", "rtsp://c/1?a=1&b=2"},
        {"two prefixes for one namespace",
         envelope("s", "<m:GetStreamUriResponse xmlns:n=\"" + media + "\"><n:MediaUri>" + inside +
                           "</n:MediaUri></m:GetStreamUriResponse>"),
         "timeout", "PT5S"},
        {"namespaces declared below the root and again",
         envelope("s", "<x:GetStreamUriResponse xmlns:x=\"" + media + "\"><x:MediaUri xmlns:x=\"" +
                           media +
                           "\"><Uri xmlns=\"http://www.onvif.org/ver10/schema\">u</Uri>"
                           "</x:MediaUri></x:GetStreamUriResponse>"),
         "uri", "u"},
        {"comments",
         envelope("s",
                  "<!-- a --><m:GetStreamUriResponse><!-- b --><m:MediaUri><!-- <c> --><t:Uri>u"
                  "</t:Uri></m:MediaUri></m:GetStreamUriResponse>"),
         "uri", "u"},
        {"CDATA",
         envelope("s",
                  "<m:GetStreamUriResponse><m:MediaUri><t:Uri><![CDATA[u?a=1&b=2]]></t:Uri>"
                  "</m:MediaUri></m:GetStreamUriResponse>"),
         "uri", "u?a=1&b=2"},
        {"line ends behind the envelope", envelope("s", answer) + "\r\n\r\n", "timeout", "PT5S"},
        {"line breaks between attributes",
         kProlog +
             ("\r\n<s:Envelope\r\n  xmlns:s=\"" + soap + "\"\r\n\txmlns:m=\"" + media +
              "\"\r\n>\r\n<s:Body\r\n>\r\n" +
              "<m:GetStreamUriResponse\n><m:MediaUri\r\n>"
              "<Uri\r\n>u</Uri\r\n></m:MediaUri></m:GetStreamUriResponse></s:Body></s:Envelope>"),
         "uri", "u"},
        {"optional elements missing",
         envelope("s", "<m:GetStreamUriResponse><m:MediaUri/></m:GetStreamUriResponse>"), "uri",
         "(none)"},
        {"a fault with a reason",
         envelope("s", fault("<s:Code><s:Value>s:Sender</s:Value></s:Code><s:Reason><s:Text"
                             " xml:lang=\"en\">no such profile</s:Text></s:Reason>")),
         "status/description", "no such profile"},
        {"a fault without reason, its codes qualified",
         envelope("s",
                  fault("<s:Code><s:Value>s:Sender</s:Value><s:Subcode><s:Value>ter:InvalidArgVal"
                        "</s:Value></s:Subcode></s:Code>")),
         "status/errorCode", "6"},
        {"a fault without reason has no description",
         envelope("s", fault("<s:Code><s:Value>s:Receiver</s:Value></s:Code>")),
         "status/description", "(none)"},
        {"a fault without prolog", envelope("s", fault("")).substr(std::string(kProlog).size()), "",
         "(failed)"},
    };
    CCamera& camera = host_.Add({});
    const unsigned int id = Login(camera);
    for (const auto& each : cases) {
        camera.Inject("GetStreamUri", {.kind = Fault::Kind::kRawReply,
                                       .remaining = 1,
                                       .reply = "HTTP/1.1 200 OK\r\n\r\n" + each.reply});
        const auto result = Get(id, "<streamURI><index>0</index></streamURI>");
        EXPECT_EQ(result ? At(*result, "streamURI/" + std::string(each.path)) : "(failed)",
                  each.value)
            << each.what;
    }
}

}  // namespace
}  // namespace client_test
