#include "platform/Descriptor.h"

#include <winsock2.h>

namespace onvif_client {

CDescriptor::CDescriptor(SystemHandle descriptor) : descriptor_(descriptor) {}

CDescriptor::~CDescriptor() {
    if (descriptor_ != kNoHandle) {
        closesocket(static_cast<SOCKET>(descriptor_));
    }
}

void ForgetDescriptor(SystemHandle) {}

// Standard streams are no numbers that a socket could get, and no process is forked.
void WithHeldStandardStreams(const std::function<void()>& make) {
    make();
}

void CloseInheritedDescriptors() noexcept {}

}  // namespace onvif_client
