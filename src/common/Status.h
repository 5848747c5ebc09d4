/// @file
/// The outcome of an exchange with a device, passed upward unchanged: from the reply's
/// classification over senders and dispatch to the login's error code. Any other non-zero value is
/// a failure as well.
#ifndef ONVIF_CLIENT_COMMON_STATUS_H
#define ONVIF_CLIENT_COMMON_STATUS_H

namespace onvif_client::status {

constexpr int kSuccess = 0;
/// Nothing was sent: the request could not be prepared.
constexpr int kNotSent = 1;
/// Not answered, but the requests that follow may go on.
constexpr int kNotAnswered = 2;
/// The reply holds an envelope but no XML declaration.
constexpr int kNoXml = 4;
/// No reply at all.
constexpr int kNoReply = 5;
/// "Bad Request", or a reply without an envelope.
constexpr int kBadRequest = 7;
/// The device refused the credentials.
constexpr int kNotAuthorized = 401;

/// True when the commands that follow in the same request may still run.
constexpr bool LetsRequestGoOn(int value) {
    return value == kSuccess || value == kNotAnswered;
}

}  // namespace onvif_client::status

#endif
