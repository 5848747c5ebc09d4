#include "system/Descriptors.h"

namespace onvifctl {

void AllowManyDescriptors() {
    // There is no such limit.
}

}  // namespace onvifctl
