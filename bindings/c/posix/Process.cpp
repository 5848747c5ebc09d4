#include "Process.h"

#include <stdlib.h>
#include <unistd.h>

namespace onvif_client_c {

unsigned long ProcessId() {
    return static_cast<unsigned long>(getpid());
}

bool SetVariable(const char* name, const char* value) {
    return (value == nullptr ? unsetenv(name) : setenv(name, value, 1)) == 0;
}

}  // namespace onvif_client_c
