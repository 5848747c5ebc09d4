/// @file
/// The program's options for what troublesome devices do.
#ifndef SIMULATOR_ODDOPTIONS_H
#define SIMULATOR_ODDOPTIONS_H

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "camera_sim/state/CameraOptions.h"

/// An option that takes the name of a scheme.
void AddHttpScheme(CLI::App& app, const std::string& name, const std::string& help,
                   std::function<void(camera_sim::HttpScheme)> set);

/// @p camera must outlive the parsing.
void AddOddOptions(CLI::App& app, camera_sim::CameraOptions& camera);

#endif
