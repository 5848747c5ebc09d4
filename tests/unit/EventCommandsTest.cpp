#include <gtest/gtest.h>

#include "commands/ServiceRequests.h"
#include "transform/EventResults.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Compact;
using client_test::WithoutWhiteSpace;

/// The envelope from "ad:To" on: headers behind it, and the body.
std::string FromTo(const std::string& envelope) {
    const CXmlDocument document(envelope);
    const std::string text = WithoutWhiteSpace(document.Root());
    const auto to = text.find("<ad:To");
    return to == std::string::npos ? text : text.substr(to);
}

TEST(EventRequests, AddressTheirMessages) {
    const std::string to = "<ad:To s:mustUnderstand=\"1\">";
    const std::string body =
        "</s:Header><s:Body xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
        " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">";
    const std::string end = "</s:Body></s:Envelope>";
    const std::string events = " xmlns=\"http://www.onvif.org/ver10/events/wsdl\"";
    const struct {
        RequestBuilder build;
        const char* command;
        std::string expected;
    } cases[] = {
        {BuildCreatePullPointSubscription,
         "<c><timeout>PT600S</timeout><to>http://h/a?b&amp;c</to></c>",
         to + "http://h/a?b&amp;c</ad:To>" + body + "<CreatePullPointSubscription" + events +
             "><InitialTerminationTime>PT600S</InitialTerminationTime>"
             "</CreatePullPointSubscription>" +
             end},
        {BuildPullMessages,
         "<c><token>http://h/s</token><subscriptionId>7</subscriptionId><subscriptionIdAttribute>"
         "urn:x</subscriptionIdAttribute><timeout>PT1M</timeout><messageLimit>9</messageLimit></c>",
         to +
             "http://h/s</ad:To><SubscriptionId xmlns=\"urn:x\" ad:IsReferenceParameter=\"true\">7"
             "</SubscriptionId>" +
             body + "<PullMessages" + events +
             "><Timeout>PT1M</Timeout><MessageLimit>9</MessageLimit></PullMessages>" + end},
        {BuildPullMessages, "<c><token/><subscriptionId>NULL</subscriptionId></c>",
         "<ad:To s:mustUnderstand=\"1\"/>" + body + "<PullMessages" + events + "/>" + end},
        {BuildUnsubscribe, "<c><serverAddr>http://h/s</serverAddr></c>",
         to + "http://h/s</ad:To>" + body +
             "<Unsubscribe xmlns=\"http://docs.oasis-open.org/wsn/b-2\"/>" + end},
        {BuildRenew, "<c><serverAddr>http://h/s</serverAddr><timeout>PT1M</timeout></c>",
         to +
             "http://h/s</ad:To></s:Header><s:Body><wsn:Renew><wsn:TerminationTime>PT1M"
             "</wsn:TerminationTime></wsn:Renew>" +
             end},
        {BuildSubscribe, "<c><clientAddr>http://h/c</clientAddr><timeout>PT1M</timeout></c>",
         "<ad:To s:mustUnderstand=\"1\"/></s:Header><s:Body><wsn:Subscribe><wsn:ConsumerReference>"
         "<ad:Address>http://h/c</ad:Address></wsn:ConsumerReference><wsn:InitialTerminationTime>"
         "PT1M</wsn:InitialTerminationTime></wsn:Subscribe>" +
             end},
    };
    for (const auto& each : cases) {
        const CXmlDocument request(each.command);
        EXPECT_EQ(FromTo(each.build({request.Root()})), each.expected) << each.command;
    }
}

TEST(EventRequests, GoToTheSubscriptionsPath) {
    const struct {
        const char* address;
        const char* pull;
        const char* renew;
    } cases[] = {
        {"http://10.0.0.5:80/onvif/sub?Idx=3", "onvif/sub?Idx=3", "onvif/sub?Idx=3"},
        {"10.0.0.5/onvif/sub", "onvif/sub", "onvif/sub"},
        {"x/http://10.0.0.5/sub", "http://10.0.0.5/sub", "http://10.0.0.5/sub"},
        {"\n http://10.0.0.5/", "", "onvif/device_service"},
        {"http://10.0.0.5", "", "onvif/device_service"},
        {"", "", "onvif/device_service"},
    };
    for (const auto& each : cases) {
        std::string command = "<c><token>";
        command.append(each.address).append("</token><serverAddr>").append(each.address);
        const CXmlDocument request(command + "</serverAddr></c>");
        EXPECT_EQ(PullPath({request.Root()}), each.pull) << each.address;
        EXPECT_EQ(RenewPath({request.Root()}), each.renew) << each.address;
    }
}

std::string Soap(const std::string& body) {
    return "<?xml version='1.0'?><E:Envelope xmlns:E='http://www.w3.org/2003/05/soap-envelope'"
           " xmlns:p='http://www.onvif.org/ver10/events/wsdl'><E:Body>" +
           body + "</E:Body></E:Envelope>";
}

TEST(EventResults, TellWhatTheDeviceAnswers) {
    const std::string fault =
        "<E:Fault><E:Reason><E:Text>no</E:Text></E:Reason><E:Detail><x:PullMessagesFaultResponse"
        " xmlns:x='http://www.onvif.org/ver10/events/wsdl'><x:MaxTimeout>PT30S</x:MaxTimeout>"
        "</x:PullMessagesFaultResponse></E:Detail></E:Fault>";
    const std::string created =
        "<p:CreatePullPointSubscriptionResponse><p:SubscriptionReference><a:Address>http://h/s"
        "</a:Address><a:ReferenceParameters><dom0:SubscriptionId @='urn:x'>7</dom0:SubscriptionId>"
        "</a:ReferenceParameters></p:SubscriptionReference><w:CurrentTime>C</w:CurrentTime>"
        "<w:TerminationTime>T</w:TerminationTime></p:CreatePullPointSubscriptionResponse>";
    const auto createdWith = [&created](const char* attribute) {
        std::string text = created;
        return text.replace(text.find('@'), 1, attribute);
    };
    const std::string identified =
        "<SetResponse><createPullPointSubscription><status>success</status><address>http://h/s"
        "</address><subscriptionId>7</subscriptionId><subscriptionIdAttriute>urn:x"
        "</subscriptionIdAttriute><currentTime>C</currentTime><terminationTime>T</terminationTime>"
        "</createPullPointSubscription></SetResponse>";
    const std::string missing = "<status>fail<errorCode>6</errorCode></status>";
    const struct {
        const ResultFrame& frame;
        std::string body;
        std::string expected;
    } cases[] = {
        {kCreatePullPointSubscriptionResult, createdWith("xmlns:dom0"), identified},
        {kCreatePullPointSubscriptionResult, createdWith("xmlndom0"), identified},
        {kCreatePullPointSubscriptionResult, "",
         "<SetResponse><createPullPointSubscription>" + missing +
             "</createPullPointSubscription></SetResponse>"},
        {kSubscribeResult,
         "<w:SubscribeResponse><w:SubscriptionReference><a:Address>http://h/s</a:Address>"
         "</w:SubscriptionReference></w:SubscribeResponse>",
         "<SetResponse><subscribe><status>success</status><address>http://h/s</address>"
         "</subscribe></SetResponse>"},
        {kRenewResult,
         "<w:RenewResponse><w:TerminationTime>T</w:TerminationTime><w:CurrentTime>C"
         "</w:CurrentTime></w:RenewResponse>",
         "<GetResponse><renew><status>success</status><currentTime>C</currentTime>"
         "<terminationTime>T</terminationTime></renew></GetResponse>"},
        {kPullMessagesResult,
         "<p:PullMessagesResponse><p:CurrentTime>C</p:CurrentTime><p:TerminationTime>T"
         "</p:TerminationTime><w:NotificationMessage><!--w:x--><w:Topic\n><![CDATA[t:A]]></w:Topic>"
         "<w:Message><s:Message UtcTime='U' PropertyOperation='Changed'><s:Source><s:SimpleItem"
         " Name='S' Value='1'/></s:Source><s:Key><s:SimpleItem Name='K' Value='2'/></s:Key><s:Data>"
         "<s:SimpleItem Name='D' Value='3'/><s:SimpleItem Name='E'/></s:Data></s:Message>"
         "</w:Message></w:NotificationMessage><w:NotificationMessage><w:Topic>t:B</w:Topic>"
         "</w:NotificationMessage></p:PullMessagesResponse>",
         "<GetResponse><pullMessages><status>success</status><currenttime>C</currenttime>"
         "<terminationtime>T</terminationtime><notifyMessage><topic>t:A</topic><message><utcTime>U"
         "</utcTime><propertyOper>Changed</propertyOper><source><item><name>S</name><val>1</val>"
         "</item></source><key><item><name>K</name><val>2</val></item></key><data><item><name>D"
         "</name><val>3</val></item><item><name>E</name></item></data></message></notifyMessage>"
         "<notifyMessage><topic>t:B</topic></notifyMessage></pullMessages></GetResponse>"},
        {kPullMessagesResult, fault,
         "<GetResponse><pullMessages><status>fail</status><errorCode>6</errorCode><maxtimeout>PT30S"
         "</maxtimeout></pullMessages></GetResponse>"},
        {kPullMessagesResult,
         "<E:Fault><E:Detail><p:PullMessagesFaultResponse><p:MaxTimeout>PT9S</p:MaxTimeout>"
         "<p:MaxMessageLimit>7</p:MaxMessageLimit></p:PullMessagesFaultResponse></E:Detail>"
         "</E:Fault>",
         "<GetResponse><pullMessages><status>fail</status><errorCode>6</errorCode><maxtimeout>PT9S"
         "</maxtimeout><maxmessagelimit>7</maxmessagelimit></pullMessages></GetResponse>"},
        {kPullMessagesResult, "<p:Other/>",
         "<GetResponse><pullMessages><status>fail</status><errorCode>6</errorCode></pullMessages>"
         "</GetResponse>"},
    };
    for (const auto& each : cases) {
        CResultDocument result;
        BuildResult(each.frame, Soap(each.body), {}, result);
        EXPECT_EQ(Compact(result.Print()), each.expected) << each.body;
    }
}

}  // namespace
}  // namespace onvif_client
