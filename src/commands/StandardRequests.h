/// @file
/// Request builders of the extension standard-requests: what the official schemas and the services'
/// descriptions want where the plain builders beside them deviate.
///
/// A configuration is sent whole: CommandRequest::answer holds what the device has, where it was
/// read first and shown. Without it goes out what the request says, in the same order.
#ifndef ONVIF_CLIENT_COMMANDS_STANDARDREQUESTS_H
#define ONVIF_CLIENT_COMMANDS_STANDARDREQUESTS_H

#include <string>

#include "commands/CommandRequest.h"
#include "commands/ServiceRequests.h"

namespace onvif_client {

// StandardDeviceRequests.cpp
std::string BuildStandardSetNetworkInterfaces(const CommandRequest& request);
std::string BuildStandardSetDns(const CommandRequest& request);
/// For relays of the device I/O service, which has a form of its own.
std::string BuildSetRelayOutputSettingsOfDeviceIo(const CommandRequest& request);

// StandardEncoderRequests.cpp: one request per item of the command; item and profile are there
std::string BuildReadVideoEncoder10(const CommandRequest& request);
std::string BuildReadVideoEncoder20(const CommandRequest& request);
std::string BuildStandardSetVideoEncoder10(const CommandRequest& request);
std::string BuildStandardSetVideoEncoder20(const CommandRequest& request);

// StandardImagingRequests.cpp
std::string BuildStandardSetImageSettings(const CommandRequest& request);

// StandardOsdRequests.cpp
std::string BuildStandardGetOsds(const CommandRequest& request);
std::string BuildReadOsd(const CommandRequest& request);
std::string BuildStandardCreateOsd(const CommandRequest& request);
std::string BuildStandardSetOsd(const CommandRequest& request);

// StandardTourRequests.cpp
std::string BuildStandardModifyCruise(const CommandRequest& request);

// PtzRequests.cpp, PresetRequests.cpp
std::string BuildStandardContinuousMove(const CommandRequest& request);
std::string BuildStandardDelCruise(const CommandRequest& request);

/// The request of @p Build, or none at all without the token that it is about.
template <std::string (*Token)(const CommandRequest&), RequestBuilder Build>
std::string BuildWithToken(const CommandRequest& request) {
    return Token(request).empty() ? std::string() : Build(request);
}

}  // namespace onvif_client

#endif
