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

bool CWirelinkHandle::AwaitConnected(int looks, std::uint32_t pauseMs) const {
    int result = 0;
    for (int look = 0; look < looks; ++look) {
        if (!WIRELINK_PopConnectResult(handle_, result, 0) || result != 0) {
            break;
        }
        SleepMilliseconds(pauseMs);
    }
    return result > 0;
}

void CWirelinkHandle::Close() noexcept {
    if (const std::uint32_t handle = std::exchange(handle_, 0)) {
        WIRELINK_DestroyHNetCommunication(handle);
    }
}

}  // namespace onvif_client
