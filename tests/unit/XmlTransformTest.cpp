#include "transform/XmlTransform.h"

#include <gtest/gtest.h>

#include "transform/FaultReaders.h"

namespace onvif_client {
namespace {

TEST(TrimXmlNamespace, DropsTagPrefixesAndNothingElse) {
    const std::pair<std::string, std::string> cases[] = {
        {"<tds:Foo>", "<Foo>"},
        {"</tds:Foo>", "</Foo>"},
        {"<tt:Bar/>", "<Bar/>"},
        {"<a:b:c>", "<b:c>"},
        {"<env:Body s:x=\"1\">", "<Body s:x=\"1\">"},
        {"<?xml version=\"1.0\"?>", "<?xml version=\"1.0\"?>"},
        {"<!-- a:b -->", "<!-- a:b -->"},
        {"<a>ter:NotAuthorized</a>", "<a>ter:NotAuthorized</a>"},
        {"<x xmlns:t=\"urn:t\">", "<x xmlns:t=\"urn:t\">"},
        // Only a blank ends a name: behind a line break or a tab the scan goes on to the colon.
        {"<Envelope\n xmlns:s=\"u\">", "<Envelope\n xmlns:s=\"u\">"},
        {"<Envelope\nxmlns:s=\"u\">", "<s=\"u\">"},
        {"<Envelope\txmlns:s=\"u\">", "<s=\"u\">"},
        {"", ""},
        {"text", "text"},
        {"<", "<"},
        {"<a:", "<"},
        {"</a:", "</"},
        {"a<b", "a<b"},
    };
    for (const auto& [reply, expected] : cases) {
        const std::string trimmed = CXmlTransform::TrimXmlNamespace(reply);
        EXPECT_EQ(std::string(trimmed.c_str()), expected) << reply;
        EXPECT_EQ(trimmed.size(), reply.size()) << reply;
    }
}

TEST(NamespacePrefixes, AreLearntFromTheRootsDeclarations) {
    CXmlTransform transform(
        "<SOAP-ENV:Envelope xmlns:SOAP-ENV='http://www.w3.org/2003/05/soap-envelope'"
        " xmlns:a='http://www.onvif.org/ver10/DEVICE/wsdl' "
        "XMLNS:b='http://www.onvif.org/ver10/schema'"
        " xmlns:z='http://www.onvif.org/ver10/events/wsdl' xmlns:y='http://x/events/wsdl'"
        " xmlns:q='http://docs.oasis-open.org/wsn/event/topics' xmlns:u='urn:unknown'>"
        "<SOAP-ENV:Body xmlns:late='http://www.onvif.org/ver20/media/wsdl'><a:Foo>b:Value</a:Foo>"
        "</SOAP-ENV:Body></SOAP-ENV:Envelope>");
    const std::pair<const char*, const char*> paths[] = {
        {"s:Envelope/s:Body", "SOAP-ENV:Envelope/SOAP-ENV:Body"},
        {"tds:Foo", "a:Foo"},
        {"tt:x/plain/tds:y", "b:x/plain/a:y"},
        {"ew:x", "z:x"},       // the later prefix in byte order wins
        {"tp:x", "q:x"},       // event topics are topics
        {"et:x", "et:x"},      // and never anything else
        {"trt2:x", "trt2:x"},  // declared below the root: not read
        {"other:x", "other:x"},
        {"", ""},
        {"x/", "x/"},
    };
    for (const auto& [canonical, localized] : paths) {
        std::string path = canonical;
        transform.LocalizePath(path);
        EXPECT_EQ(path, localized) << canonical;
    }
    std::string text;
    XMLElement* root = transform.Document().Root();
    EXPECT_TRUE(transform.GetChildText(root, "s:Envelope/s:Body/tds:Foo", text));
    EXPECT_EQ(text, "tt:Value");
    EXPECT_TRUE(transform.GetElementName(root->FirstChildElement()->FirstChildElement(), text));
    EXPECT_EQ(text, "tds:Foo");
    EXPECT_FALSE(transform.GetElementName(nullptr, text));
    EXPECT_FALSE(transform.SetChildText(root, "s:Envelope/s:Missing", "x"));
}

TEST(NamespacePrefixes, ADefaultNamespaceMapsToTheEmptyPrefix) {
    CXmlTransform transform("<Envelope xmlns='http://www.w3.org/2003/05/soap-envelope'/>");
    std::string path = "s:Envelope";
    transform.LocalizePath(path);
    EXPECT_EQ(path, ":Envelope");
    std::string name = "Envelope";
    transform.CanonicalizeName(name);
    EXPECT_EQ(name, "sEnvelope");
    EXPECT_TRUE(ParsePullMessagesFault(
        "<Envelope "
        "xmlns='http://www.w3.org/2003/05/soap-envelope'><Body><Fault/></Body></Envelope>",
        nullptr));
}

std::string FaultReply(const std::string& code, const std::string& subcode,
                       const std::string& reason) {
    return "<Envelope><Body><Fault><Code><Value>" + code + "</Value><Subcode><Value>" + subcode +
           "</Value></Subcode></Code>" + reason + "</Fault></Body></Envelope>";
}

TEST(FaultReaders, WriteCodeAndDescriptionInsideTheStatus) {
    const std::string reason = "<Reason><Text>Invalid time</Text></Reason>";
    const struct {
        std::string reply;
        int code;
        int open;                 // with the extension
        const char* description;  // null: none
    } cases[] = {
        {FaultReply("Sender", "InvalidArgVal", reason), 31, 31, "Invalid time"},
        {FaultReply("Receiver", "InvalidArgVal", reason), 6, 6, "Invalid time"},
        {FaultReply("env:Sender", "InvalidArgVal", reason), 6, 31, "Invalid time"},
        {FaultReply("Sender", "ter:InvalidArgVal", ""), 6, 31, nullptr},
        {FaultReply(" e:Sender\n", "x", "<Reason><Text/></Reason>"), 6, 6, ""},
        {"<Envelope><Body><Fault/></Body></Envelope>", 6, 6, nullptr},
        {"<Envelope><Body/></Envelope>", 0, 0, nullptr},
        {"not xml", 0, 0, nullptr},
    };
    for (const auto& each : cases) {
        const CXmlDocument reply(each.reply);
        CXmlDocument generic("<g/>");
        CXmlDocument withCode("<c/>");
        EXPECT_EQ(ParseFault(reply.Root(), generic.Root()), each.code == 0) << each.reply;
        EXPECT_EQ(ParseFaultCode(reply.Root(), withCode.Root()), each.code) << each.reply;
        EXPECT_EQ(ParseFaultCode(reply.Root(), nullptr, FaultReading::kOpen), each.open);
        EXPECT_EQ(ParseFault(reply.Root(), nullptr), each.code == 0);

        const XMLElement* status = withCode.Find("status");
        EXPECT_EQ(TextOf(status), each.code == 0 ? "success" : "fail");
        EXPECT_EQ(TextAt(status, "errorCode"), each.code == 0 ? "" : std::to_string(each.code));
        EXPECT_EQ(TextAt(generic.Root(), "status/errorCode"), each.code == 0 ? "" : "6");
        const XMLElement* description = FindElement(status, "description");
        ASSERT_EQ(description != nullptr, each.description != nullptr) << each.reply;
        EXPECT_EQ(TextOf(description), each.description == nullptr ? "" : each.description);
    }
}

}  // namespace
}  // namespace onvif_client
