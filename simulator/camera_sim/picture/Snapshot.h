/// @file
/// The pictures under /snapshot/: their addresses, their protection, what they show.
#ifndef CAMERA_SIM_PICTURE_SNAPSHOT_H
#define CAMERA_SIM_PICTURE_SNAPSHOT_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/http/Http.h"
#include "camera_sim/http/HttpAuthentication.h"
#include "camera_sim/picture/TestCard.h"
#include "camera_sim/state/CameraOptions.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// What evidence and faults call a request for a picture.
inline constexpr std::string_view kSnapshotService = "http";
inline constexpr std::string_view kSnapshotOperation = "snapshot";

bool IsSnapshotRequest(std::string_view target);
/// The path of a profile's picture.
std::string SnapshotPath(std::string_view profileToken);
/// Of a camera made with @p options, which must be complete.
HttpAuthenticationSettings SnapshotAuthentication(const CameraOptions& options);

/// The points in time at which a picture is taken.
struct SnapshotTime {
    std::chrono::sys_seconds system;  ///< of this machine
    std::chrono::steady_clock::time_point steady;
};

/// What the picture of @p profile shows; nothing when it has no video encoder.
std::optional<TestCard> MakeTestCard(const CameraState& state, const CameraOptions& options,
                                     const Profile& profile, SnapshotTime time);
/// The answer to an admitted request.
Reply SnapshotReply(const CameraState& state, const CameraOptions& options, std::string_view method,
                    std::string_view path, SnapshotTime time);

}  // namespace camera_sim

#endif
