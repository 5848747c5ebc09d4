/// @file
/// Result builders of the device management and device I/O services.
#ifndef ONVIF_CLIENT_TRANSFORM_DEVICERESULTS_H
#define ONVIF_CLIENT_TRANSFORM_DEVICERESULTS_H

#include "transform/ResultFrame.h"

namespace onvif_client {

// NetworkResults.cpp
extern const ResultFrame kNetworkInterfacesResult;
extern const ResultFrame kDefaultGatewayResult;
extern const ResultFrame kDnsResult;
/// An invalid argument is told apart by the error code 31.
extern const ResultFrame kNetworkProtocolsResult;
/// "rebootNeeded" stands inside the status.
extern const ResultFrame kSetNetworkInterfacesResult;
/// Reports nothing: the status of the interface setting that follows counts.
extern const ResultFrame kSetDefaultGatewayResult;

// DeviceResults.cpp
extern const ResultFrame kDeviceInformationResult;
extern const ResultFrame kRelayOutputsResult;
extern const ResultFrame kDigitalInputsResult;

// TimeResults.cpp
extern const ResultFrame kDateAndTimeResult;

}  // namespace onvif_client

#endif
