/// Runs of onvifctl against simulated cameras.
#ifndef ONVIF_CLIENT_TESTS_SYSTEM_TOOL_H
#define ONVIF_CLIENT_TESTS_SYSTEM_TOOL_H

#include <camera_sim/CameraSim.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/OwnFile.h"
#include "support/System.h"

namespace client_test {

struct Outcome {
    int code = -1;
    std::string output;  // standard output, then standard error
};

/// The tool, or another program, while it runs; what remains of it is killed.
class CRunningTool {
 public:
    /// @p arguments: words, in '' where they hold blanks, and <FILE. @p environment: NAME=VALUE ...
    /// Where there is a shell, both may be anything for it. @p errors: where standard error goes.
    CRunningTool(const std::string& arguments, const std::string& environment,
                 const std::string& errors = "&1", const std::string& program = ONVIFCTL);
    ~CRunningTool();
    CRunningTool(const CRunningTool&) = delete;
    CRunningTool& operator=(const CRunningTool&) = delete;

    /// Waits for a line.
    std::string Line() {
        std::array<char, 4096> line = {};
        return std::fgets(line.data(), line.size(), output_) == nullptr ? "(no more)" : line.data();
    }

    /// Waits for its end, which shows 128 and the number as the code of a signal. The library may
    /// log an exchange that was broken off before it.
    Outcome End() {
        Outcome rest;
        std::array<char, 4096> block = {};
        while (const std::size_t read = std::fread(block.data(), 1, block.size(), output_)) {
            rest.output.append(block.data(), read);
        }
        rest.code = Wait();
        return rest;
    }

    /// On Windows every signal is a Ctrl-C, since Wine knows no Ctrl-Break.
    bool Signal(int signal);

 private:
    int Wait();

    FILE* output_ = nullptr;
    std::intptr_t process_ = 0;  // 0: it has ended
};

inline Outcome RunTool(const std::string& arguments, const std::string& environment) {
    static int runs = 0;  // Windows keeps a name as long as anybody has the file open
    const std::string errors = OwnFile((std::to_string(++runs) + "-errors.txt").c_str());
    Outcome outcome = CRunningTool(arguments, environment, errors).End();
    std::ifstream stream(errors);
    outcome.output.append(std::istreambuf_iterator<char>(stream), {});
    stream.close();
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

}  // namespace client_test

#endif
