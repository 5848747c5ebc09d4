/// Runs of onvifctl against simulated cameras.
#ifndef ONVIF_CLIENT_TESTS_SYSTEM_TOOL_H
#define ONVIF_CLIENT_TESTS_SYSTEM_TOOL_H

#include <camera_sim/CameraSim.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/OwnFile.h"

namespace client_test {

struct Outcome {
    int code = -1;
    std::string output;  // standard output, then standard error
};

inline Outcome RunTool(const std::string& arguments, const std::string& environment) {
    const std::string errors = OwnFile("onvifctl-errors.txt");
    const std::string command = environment + " " + ONVIFCTL + " " + arguments + " 2>" + errors;
    Outcome outcome;
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> block = {};
    while (const std::size_t read = std::fread(block.data(), 1, block.size(), pipe)) {
        outcome.output.append(block.data(), read);
    }
    outcome.code = WEXITSTATUS(pclose(pipe));
    std::ifstream stream(errors);
    outcome.output.append(std::istreambuf_iterator<char>(stream), {});
    std::remove(errors.c_str());
    return outcome;
}

/// The credentials of every simulated camera.
inline constexpr const char* kRight = "ONVIF_USER=admin ONVIF_PASSWORD=camera-1";

struct Run {
    std::string arguments;
    int code;
    std::string shows;  // somewhere in the output
    std::string environment = kRight;
};

inline void ExpectRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        const Outcome outcome = RunTool(run.arguments, run.environment);
        EXPECT_EQ(outcome.code, run.code) << run.arguments << "\n" << outcome.output;
        EXPECT_NE(outcome.output.find(run.shows), std::string::npos) << run.arguments << "\n"
                                                                     << outcome.output;
        EXPECT_EQ(outcome.output.find("CHttpClient::"), std::string::npos) << run.arguments;
    }
}

inline std::string LocalAddress(std::uint16_t port) {
    return "127.0.0.1:" + std::to_string(port);
}
inline std::string AddressOf(const camera_sim::CCamera& camera) {
    return LocalAddress(camera.Port());
}

/// The tool while it runs, standard error among its output; what remains of it is killed.
class CRunningTool {
 public:
    CRunningTool(const std::string& arguments, const std::string& environment)
        : pipe_(popen((environment + " " + ONVIFCTL + " " + arguments +
                       " 2>&1 & echo $!; wait $!; echo ended $?")
                          .c_str(),
                      "r")),
          id_(std::stoi(Line())) {}

    ~CRunningTool() {
        if (!ended_) {
            kill(id_, SIGKILL);
        }
        pclose(pipe_);
    }

    CRunningTool(const CRunningTool&) = delete;
    CRunningTool& operator=(const CRunningTool&) = delete;

    /// Waits for a line.
    std::string Line() {
        std::array<char, 4096> line = {};
        if (std::fgets(line.data(), static_cast<int>(line.size()), pipe_) == nullptr) {
            return kNoMore;
        }
        ended_ = ended_ || std::string(line.data()).starts_with("ended ");
        return line.data();
    }

    /// Waits for the last line, "ended CODE". The library may log an exchange that was broken off
    /// before it.
    std::string LastLine() {
        std::string line = Line();
        while (!ended_ && line != kNoMore) {
            line = Line();
        }
        return line;
    }

    /// False when it has ended already.
    bool Signal(int signal) { return !ended_ && kill(id_, signal) == 0; }

 private:
    static constexpr const char* kNoMore = "(no more)";

    FILE* pipe_;
    bool ended_ = false;
    int id_;
};

}  // namespace client_test

#endif
