/// @file
/// SOAP envelopes. All requests share one envelope with the WS-Security header; a request names its
/// namespaces and its body. Templates are constants, put together by the compiler.
#ifndef ONVIF_CLIENT_COMMANDS_ENVELOPE_H
#define ONVIF_CLIENT_COMMANDS_ENVELOPE_H

#include <cstddef>

#include "common/FixedText.h"

namespace onvif_client {

// Namespace declarations, for the root of an envelope.
inline constexpr FixedText kTds = " xmlns:tds=\"http://www.onvif.org/ver10/device/wsdl\"";
inline constexpr FixedText kTt = " xmlns:tt=\"http://www.onvif.org/ver10/schema\"";
inline constexpr FixedText kDio = " xmlns:dio=\"http://www.onvif.org/ver10/deviceIO/wsdl\"";
inline constexpr FixedText kMdw = " xmlns:mdw=\"http://www.onvif.org/ver10/media/wsdl\"";
inline constexpr FixedText kTrt = " xmlns:trt=\"http://www.onvif.org/ver10/media/wsdl\"";
inline constexpr FixedText kTrt2 = " xmlns:trt2=\"http://www.onvif.org/ver20/media/wsdl\"";
inline constexpr FixedText kPtzw = " xmlns:ptzw=\"http://www.onvif.org/ver20/ptz/wsdl\"";
inline constexpr FixedText kImg = " xmlns:img=\"http://www.onvif.org/ver20/imaging/wsdl\"";
inline constexpr FixedText kAna = " xmlns:ana=\"http://www.onvif.org/ver20/analytics/wsdl\"";
inline constexpr FixedText kAd = " xmlns:ad=\"http://www.w3.org/2005/08/addressing\"";
inline constexpr FixedText kWsn = " xmlns:wsn=\"http://docs.oasis-open.org/wsn/b-2\"";
inline constexpr FixedText kSchemaInstance =
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"";

// Namespaces that stand as the default one on an element of a body.
inline constexpr const char* kDeviceNamespace = "http://www.onvif.org/ver10/device/wsdl";
inline constexpr const char* kMediaNamespace = "http://www.onvif.org/ver10/media/wsdl";
inline constexpr const char* kMedia2Namespace = "http://www.onvif.org/ver20/media/wsdl";
inline constexpr const char* kSchemaNamespace = "http://www.onvif.org/ver10/schema";
inline constexpr const char* kEventsNamespace = "http://www.onvif.org/ver10/events/wsdl";
inline constexpr const char* kNotificationNamespace = "http://docs.oasis-open.org/wsn/b-2";

/// Filled by the session just before sending (WS-Security UsernameToken Profile 1.0).
inline constexpr FixedText kSecurity =
    "<wsse:Security s:mustUnderstand=\"1\"><wsse:UsernameToken><wsse:Username/>"
    "<wsse:Password Type=\"http://docs.oasis-open.org/wss/2004/01/"
    "oasis-200401-wss-username-token-profile-1.0#PasswordDigest\"/>"
    "<wsse:Nonce EncodingType=\"http://docs.oasis-open.org/wss/2004/01/"
    "oasis-200401-wss-soap-message-security-1.0#Base64Binary\"/>"
    "<wsu:Created/></wsse:UsernameToken></wsse:Security>";

inline constexpr FixedText kEnvelopeStart =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
    "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\""
    " xmlns:wsse=\"http://docs.oasis-open.org/wss/2004/01/"
    "oasis-200401-wss-wssecurity-secext-1.0.xsd\""
    " xmlns:wsu=\"http://docs.oasis-open.org/wss/2004/01/"
    "oasis-200401-wss-wssecurity-utility-1.0.xsd\"";

/// An envelope with the security header, its elements empty.
template <std::size_t A, std::size_t B>
consteval auto SoapEnvelope(const FixedText<A>& namespaces, const FixedText<B>& body) {
    return kEnvelopeStart + namespaces + FixedText("><s:Header>") + kSecurity +
           FixedText("</s:Header><s:Body>") + body + FixedText("</s:Body></s:Envelope>");
}

/// The same with the headers of WS-Addressing; "ad:To" is empty.
template <std::size_t A, std::size_t B, std::size_t C>
consteval auto AddressedSoapEnvelope(const FixedText<A>& action, const FixedText<B>& namespaces,
                                     const FixedText<C>& body) {
    return kEnvelopeStart + kAd + namespaces +
           FixedText("><s:Header><ad:Action s:mustUnderstand=\"1\">") + action +
           FixedText(
               "</ad:Action><ad:MessageID/><ad:ReplyTo><ad:Address>"
               "http://www.w3.org/2005/08/addressing/anonymous"
               "</ad:Address></ad:ReplyTo>") +
           kSecurity + FixedText("<ad:To s:mustUnderstand=\"1\"/></s:Header><s:Body>") + body +
           FixedText("</s:Body></s:Envelope>");
}

/// An envelope without header, for the one request that devices answer to everybody.
template <std::size_t A, std::size_t B>
consteval auto BareSoapEnvelope(const FixedText<A>& namespaces, const FixedText<B>& body) {
    return kEnvelopeStart + namespaces + FixedText("><s:Body>") + body +
           FixedText("</s:Body></s:Envelope>");
}

}  // namespace onvif_client

#endif
