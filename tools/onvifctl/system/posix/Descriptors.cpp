#include "system/Descriptors.h"

#include <sys/resource.h>

namespace onvifctl {

void AllowManyDescriptors() {
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace onvifctl
