/// @file
/// What the files of the PTZ service share.
#ifndef CAMERA_SIM_SERVICES_PTZOPERATIONS_H
#define CAMERA_SIM_SERVICES_PTZOPERATIONS_H

#include <array>
#include <chrono>
#include <cstddef>
#include <string_view>

#include "camera_sim/services/Operation.h"

namespace camera_sim {

inline constexpr std::size_t kMostPresets = 256;
inline constexpr std::size_t kMostTours = 16;

/// What can be done with a tour, and its state then.
struct TourOrder {
    std::string_view operation;
    const char* state;
};
inline constexpr std::array kTourOrders = {TourOrder{"Start", "Touring"}, TourOrder{"Stop", "Idle"},
                                           TourOrder{"Pause", "Paused"}};

/// The fault for a profile that cannot move; nothing for one that can.
Answer CheckProfile(const Call& call);

std::chrono::steady_clock::time_point PtzNow();
/// Whatever moves the head ends the tour that it is on.
void MoveOn(PtzHead& head, const PtzPosition& velocity);
/// How fast it moves by the latest order, unless the time of that is over.
PtzPosition VelocityOf(const PtzHead& head);
void JumpTo(PtzHead& head, const PtzPosition& position);
void WritePtzPosition(CXmlWriter& out, std::string_view name, const PtzPosition& position);

}  // namespace camera_sim

#endif
