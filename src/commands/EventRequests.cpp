#include "commands/Envelope.h"
#include "commands/EnvelopeFiller.h"
#include "commands/ServiceRequests.h"
#include "common/HttpAddress.h"

namespace onvif_client {

namespace {

constexpr auto kCreatePullPointSubscription =
    AddressedSoapEnvelope(FixedText("http://www.onvif.org/ver10/events/wsdl/EventPortType/"
                                    "CreatePullPointSubscriptionRequest"),
                          FixedText(""), FixedText("<CreatePullPointSubscription/>"));

constexpr auto kPullMessages = AddressedSoapEnvelope(
    FixedText("http://www.onvif.org/ver10/events/wsdl/PullPointSubscription/PullMessagesRequest"),
    FixedText(""), FixedText("<PullMessages/>"));

constexpr auto kRenew = AddressedSoapEnvelope(
    FixedText("http://docs.oasis-open.org/wsn/bw-2/SubscriptionManager/RenewRequest"),
    kSchemaInstance + kWsn, FixedText("<wsn:Renew/>"));

constexpr auto kUnsubscribe = AddressedSoapEnvelope(
    FixedText("http://docs.oasis-open.org/wsn/bw-2/SubscriptionManager/UnsubscribeRequest"), kWsn,
    FixedText("<Unsubscribe/>"));

constexpr auto kSubscribe = AddressedSoapEnvelope(
    FixedText("http://docs.oasis-open.org/wsn/bw-2/NotificationProducer/SubscribeRequest"),
    kSchemaInstance + kWsn,
    FixedText("<wsn:Subscribe><wsn:ConsumerReference><ad:Address/></wsn:ConsumerReference>"
              "<wsn:InitialTerminationTime/></wsn:Subscribe>"));

/// An addressed envelope; paths start from its operation.
class CAddressedEnvelope : public CEnvelopeFiller {
 public:
    CAddressedEnvelope(std::string_view envelopeTemplate, const std::string& operation)
        : CEnvelopeFiller(envelopeTemplate, operation) {}

    XMLElement* Header() { return Envelope("s:Header"); }
    XMLElement* Body() { return Envelope("s:Body"); }

    /// Writes where the message is meant to go.
    void SetTo(const CommandRequest& request, std::string_view parameter) {
        if (request.Has(parameter)) {
            SetText(FirstChild(Header(), "ad:To"), request.Text(parameter));
        }
    }
    /// Puts the operation into a default namespace.
    void SetNamespace(const char* uri) {
        Operation()->SetAttribute("xmlns", uri);
        DeclareSchemaInstance(Body());
    }
    /// Appends a parameter of the request; an absent one is left out.
    void Append(const CommandRequest& request, std::string_view parameter,
                const std::string& element) {
        if (request.Has(parameter)) {
            Add(Operation(), element, request.Text(parameter));
        }
    }
};

/// The subscription's identifier, as the device gave it, travels in the header (WS-Addressing 1.0,
/// reference parameters).
void AddReferenceParameter(const CommandRequest& request, CAddressedEnvelope& envelope) {
    const std::string id = request.Text("subscriptionId");
    if (!request.Has("subscriptionId") || id == kNoIdentifier) {
        return;
    }
    XMLElement* element = envelope.Add(envelope.Header(), "SubscriptionId", id);
    if (request.Has("subscriptionIdAttribute")) {
        element->SetAttribute("xmlns", request.Text("subscriptionIdAttribute").c_str());
    }
    element->SetAttribute("ad:IsReferenceParameter", "true");
}

/// What follows the host; empty when nothing does.
std::string PathOfSubscription(std::string_view address) {
    address = TrimAddress(address);
    const std::size_t hostAt = address.starts_with(kHttpScheme) ? kHttpScheme.size() : 0;
    return std::string(SplitAddress(address, hostAt).PathBehindSlash());
}

}  // namespace

std::string BuildCreatePullPointSubscription(const CommandRequest& request) {
    CAddressedEnvelope envelope(kCreatePullPointSubscription, "CreatePullPointSubscription");
    envelope.SetNamespace(kEventsNamespace);
    envelope.SetTo(request, "to");
    envelope.Append(request, "timeout", "InitialTerminationTime");
    return envelope.Print();
}

std::string BuildPullMessages(const CommandRequest& request) {
    CAddressedEnvelope envelope(kPullMessages, "PullMessages");
    envelope.SetNamespace(kEventsNamespace);
    envelope.SetTo(request, "token");
    AddReferenceParameter(request, envelope);
    envelope.Append(request, "timeout", "Timeout");
    envelope.Append(request, "messageLimit", "MessageLimit");
    return envelope.Print();
}

std::string BuildRenew(const CommandRequest& request) {
    CAddressedEnvelope envelope(kRenew, "wsn:Renew");
    envelope.SetTo(request, "serverAddr");
    envelope.Append(request, "timeout", "wsn:TerminationTime");
    return envelope.Print();
}

std::string BuildUnsubscribe(const CommandRequest& request) {
    CAddressedEnvelope envelope(kUnsubscribe, "Unsubscribe");
    envelope.SetNamespace(kNotificationNamespace);
    envelope.SetTo(request, "serverAddr");
    return envelope.Print();
}

std::string BuildSubscribe(const CommandRequest& request) {
    CAddressedEnvelope envelope(kSubscribe, "wsn:Subscribe");
    envelope.Copy(request, "clientAddr", "wsn:ConsumerReference/ad:Address");
    envelope.Copy(request, "timeout", "wsn:InitialTerminationTime");
    return envelope.Print();
}

std::string PullPath(const CommandRequest& request) {
    return PathOfSubscription(request.Text("token"));
}

std::string RenewPath(const CommandRequest& request) {
    const std::string path = PathOfSubscription(request.Text("serverAddr"));
    return path.empty() ? "onvif/device_service" : path;
}

}  // namespace onvif_client
