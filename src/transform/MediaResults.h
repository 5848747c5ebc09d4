/// @file
/// Result builders of the media services, ver10 and ver20.
#ifndef ONVIF_CLIENT_TRANSFORM_MEDIARESULTS_H
#define ONVIF_CLIENT_TRANSFORM_MEDIARESULTS_H

#include <string>
#include <string_view>

#include "transform/ResultFrame.h"

namespace onvif_client {

// ProfileResults.cpp
extern const ResultFrame kProfilesResult;
extern const ResultFrame kProfileResult;

// StreamResults.cpp
extern const ResultFrame kStreamUriResult;
extern const ResultFrame kSnapshotUriResult;
// The same of replies of the ver20 media service.
extern const ResultFrame kStreamUri20Result;
extern const ResultFrame kSnapshotUri20Result;
/// The picture's address in a result document of snapshotURI; empty when the device gave none.
std::string SnapshotAddressIn(const std::string& result);

// OsdResults.cpp
extern const ResultFrame kOsdResult;
extern const ResultFrame kOsdOptionsResult;
extern const ResultFrame kCreateOsdResult;

// EncoderOptionsResults.cpp
/// The same shape for both media services.
extern const ResultFrame kVideoEncoderOptionsResult;

// EncoderResults.cpp
extern const ResultFrame kVideoEncoderResult;
/// Writes the values of a video encoder configuration of either media service below @p item.
void CopyVideoEncoderConfiguration(const XMLElement* configuration, XMLElement* item);

}  // namespace onvif_client

#endif
