#include <gtest/gtest.h>

#include "commands/ServiceRequests.h"
#include "transform/EventResults.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Compact;
using client_test::WithoutWhiteSpace;
using client_test::Xml;

/// The envelope from "ad:To" on: headers behind it, and the body.
std::string FromTo(const std::string& envelope) {
    const CXmlDocument document(envelope);
    const std::string text = WithoutWhiteSpace(document.Root());
    const auto to = text.find("<ad:To");
    return to == std::string::npos ? text : text.substr(to);
}

TEST(EventRequests, AddressTheirMessages) {
    const std::string body =
        "s:Body(xmlns:xsi=http://www.w3.org/2001/XMLSchema-instance "
        "xmlns:xsd=http://www.w3.org/2001/XMLSchema)";
    const std::string events = "(xmlns=http://www.onvif.org/ver10/events/wsdl)";
    const struct {
        RequestBuilder build;
        const char* command;
        std::string to;
        std::string behind;  // the last header before it
        std::string body;
    } cases[] = {
        {BuildCreatePullPointSubscription, "c{timeout=PT600S to=http://h/a?b&amp;c}",
         "=http://h/a?b&amp;c", "",
         body + "{CreatePullPointSubscription" + events + "{InitialTerminationTime=PT600S}}"},
        {BuildPullMessages,
         "c{token=http://h/s subscriptionId=7 subscriptionIdAttribute=urn:x timeout=PT1M "
         "messageLimit=9}",
         "=http://h/s", "SubscriptionId(xmlns=urn:x ad:IsReferenceParameter=true)=7",
         body + "{PullMessages" + events + "{Timeout=PT1M MessageLimit=9}}"},
        {BuildPullMessages, "c{token subscriptionId=NULL}", "", "",
         body + "{PullMessages" + events + "}"},
        {BuildUnsubscribe, "c{serverAddr=http://h/s}", "=http://h/s", "",
         body + "{Unsubscribe(xmlns=http://docs.oasis-open.org/wsn/b-2)}"},
        {BuildRenew, "c{serverAddr=http://h/s timeout=PT1M}", "=http://h/s", "",
         "s:Body{wsn:Renew{wsn:TerminationTime=PT1M}}"},
        {BuildSubscribe, "c{clientAddr=http://h/c timeout=PT1M}", "", "",
         "s:Body{wsn:Subscribe{wsn:ConsumerReference{ad:Address=http://h/c} "
         "wsn:InitialTerminationTime=PT1M}}"},
    };
    for (const auto& each : cases) {
        const CXmlDocument request(Xml(each.command));
        EXPECT_EQ(FromTo(each.build({request.Root()})),
                  Xml("ad:To(s:mustUnderstand=1)" + each.to + " " + each.behind) + "</s:Header>" +
                      Xml(each.body) + "</s:Envelope>")
            << each.command;
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
        std::string command = "c{token='";
        command.append(each.address).append("' serverAddr='").append(each.address).append("'}");
        const CXmlDocument request(Xml(command));
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
    const auto created = [](const std::string& attribute) {
        return "p:CreatePullPointSubscriptionResponse{p:SubscriptionReference{a:Address=http://h/s "
               "a:ReferenceParameters{dom0:SubscriptionId(" +
               attribute + "=urn:x)=7}} w:CurrentTime=C w:TerminationTime=T}";
    };
    const std::string identified =
        "SetResponse{createPullPointSubscription{status=success address=http://h/s "
        "subscriptionId=7 subscriptionIdAttriute=urn:x currentTime=C terminationTime=T}}";
    const struct {
        const ResultFrame& frame;
        std::string body;
        std::string expected;
    } cases[] = {
        {kCreatePullPointSubscriptionResult, created("xmlns:dom0"), identified},
        {kCreatePullPointSubscriptionResult, created("xmlndom0"), identified},
        {kCreatePullPointSubscriptionResult, "",
         "SetResponse{createPullPointSubscription{status=fail{errorCode=6}}}"},
        {kSubscribeResult, "w:SubscribeResponse{w:SubscriptionReference{a:Address=http://h/s}}",
         "SetResponse{subscribe{status=success address=http://h/s}}"},
        {kRenewResult, "w:RenewResponse{w:TerminationTime=T w:CurrentTime=C}",
         "GetResponse{renew{status=success currentTime=C terminationTime=T}}"},
        {kPullMessagesResult,
         "p:PullMessagesResponse{p:CurrentTime=C p:TerminationTime=T "
         "w:NotificationMessage=<!--w:x-->{w:Topic\n=<![CDATA[t:A]]> w:Message{s:Message(UtcTime=U "
         "PropertyOperation=Changed){s:Source{s:SimpleItem(Name=S Value=1)} "
         "s:Key{s:SimpleItem(Name=K Value=2)} s:Data{s:SimpleItem(Name=D Value=3) "
         "s:SimpleItem(Name=E)}}}} w:NotificationMessage{w:Topic=t:B}}",
         "GetResponse{pullMessages{status=success currenttime=C terminationtime=T "
         "notifyMessage{topic=t:A message{utcTime=U propertyOper=Changed source{item{name=S "
         "val=1}} key{item{name=K val=2}} data{item{name=D val=3} item{name=E}}}} "
         "notifyMessage{topic=t:B}}}"},
        {kPullMessagesResult,
         "E:Fault{E:Reason{E:Text=no} "
         "E:Detail{x:PullMessagesFaultResponse(xmlns:x=http://www.onvif.org/ver10/events/"
         "wsdl){x:MaxTimeout=PT30S}}}",
         "GetResponse{pullMessages{status=fail errorCode=6 maxtimeout=PT30S}}"},
        {kPullMessagesResult,
         "E:Fault{E:Detail{p:PullMessagesFaultResponse{p:MaxTimeout=PT9S p:MaxMessageLimit=7}}}",
         "GetResponse{pullMessages{status=fail errorCode=6 maxtimeout=PT9S maxmessagelimit=7}}"},
        {kPullMessagesResult, "p:Other", "GetResponse{pullMessages{status=fail errorCode=6}}"},
    };
    for (const auto& each : cases) {
        CResultDocument result;
        BuildResult(each.frame, Soap(Xml(each.body)), {}, result);
        EXPECT_EQ(Compact(result.Print()), Xml(each.expected)) << each.body;
    }
}

}  // namespace
}  // namespace onvif_client
