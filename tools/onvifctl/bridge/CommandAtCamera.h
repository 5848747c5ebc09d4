/// @file
/// What a command of the broker does at a camera.
#ifndef ONVIFCTL_BRIDGE_COMMANDATCAMERA_H
#define ONVIFCTL_BRIDGE_COMMANDATCAMERA_H

#include <memory>
#include <string>

#include "Connection.h"
#include "bridge/CameraWork.h"

namespace onvifctl {

/// Whether a payload can be one of this command, without asking the camera. Throws CFailure.
/// @p size: of the whole payload, of which a beginning is enough.
void CheckPayload(const BridgeCommand& command, const std::string& payload, std::size_t size);

/// A session of its own beside the one that listens. For one thread at a time.
class CCommandSession {
 public:
    /// Logs in. Throws CFailure.
    explicit CCommandSession(const ConnectionOptions& options);
    ~CCommandSession();
    CCommandSession(const CCommandSession&) = delete;
    CCommandSession& operator=(const CCommandSession&) = delete;

    /// @return the picture that was asked for. Throws CFailure: kUsage where the camera lists no
    /// such thing.
    std::string Do(const BridgeCommand& command, const std::string& payload);

    /// What a camera does not tell of, it does not have.
    Inventory TakeInventory();

 private:
    struct Talk;
    const std::unique_ptr<Talk> talk_;
};

}  // namespace onvifctl

#endif
