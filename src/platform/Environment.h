/// @file
/// What the environment says.
#ifndef ONVIF_CLIENT_PLATFORM_ENVIRONMENT_H
#define ONVIF_CLIENT_PLATFORM_ENVIRONMENT_H

#include <string>

namespace onvif_client {

/// An environment variable, or @p otherwise where it is not set. In a program that runs with more
/// rights than whoever started it (set-user-id) none is: they would be that user's.
std::string EnvironmentText(const char* name, const char* otherwise);

}  // namespace onvif_client

#endif
