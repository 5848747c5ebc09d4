#include "platform/WirelinkHandle.h"

#include "platform/Clock.h"
#include "platform/Wirelink.h"

namespace onvif_client {

CWirelinkHandle& CWirelinkHandle::operator=(CWirelinkHandle&& other) noexcept {
    if (this != &other) {
        Close();
        handle_ = std::exchange(other.handle_, 0);
    }
    return *this;
}

void CWirelinkHandle::Close() noexcept {
    if (const std::uint32_t handle = std::exchange(handle_, 0)) {
        WIRELINK_DestroyHNetCommunication(handle);
    }
}

bool AwaitConnected(std::uint32_t handle, int looks, std::uint32_t pauseMs) {
    int result = 0;
    for (int look = 0; look < looks; ++look) {
        if (!WIRELINK_PopConnectResult(handle, result, 0) || result != 0) {
            break;
        }
        SleepMilliseconds(pauseMs);
    }
    return result > 0;
}

}  // namespace onvif_client
