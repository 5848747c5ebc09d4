/// @file
/// How many connections the process may have.
#ifndef ONVIFCTL_SYSTEM_DESCRIPTORS_H
#define ONVIFCTL_SYSTEM_DESCRIPTORS_H

namespace onvifctl {

/// Allows the process as many descriptors as the system lets it have. For commands that start no
/// other programs afterwards: some of those cannot count beyond what is usual.
void AllowManyDescriptors();

}  // namespace onvifctl

#endif
