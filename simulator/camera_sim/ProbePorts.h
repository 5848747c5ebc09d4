/// @file
/// The UDP ports at which the cameras of a host are searched for.
#ifndef CAMERA_SIM_PROBEPORTS_H
#define CAMERA_SIM_PROBEPORTS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
// Asio uses std::exchange without including it.
#include <boost/asio/io_context.hpp>

#include "camera_sim/CameraSim.h"

namespace camera_sim {

/// What is sent back for a datagram. Called on the context's thread.
using ProbeAnswers = std::function<std::vector<std::string>(std::string_view datagram)>;

/// Takes datagrams while the context runs. Returns the port of 127.0.0.1; nothing on failure, and
/// @p error says why.
std::optional<std::uint16_t> ReceiveProbes(boost::asio::io_context& io,
                                           const DiscoveryOptions& options, ProbeAnswers answers,
                                           std::string& error);

}  // namespace camera_sim

#endif
