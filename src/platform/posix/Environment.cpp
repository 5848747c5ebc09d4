#include "platform/Environment.h"

#include <cstdlib>

namespace onvif_client {

std::string EnvironmentText(const char* name, const char* otherwise) {
    const char* value = secure_getenv(name);
    return value == nullptr ? otherwise : value;
}

}  // namespace onvif_client
