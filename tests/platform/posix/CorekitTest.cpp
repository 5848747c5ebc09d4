#include "platform/Corekit.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <regex>
#include <string>

#include "platform/LineOutput.h"
#include "platform/LogFile.h"
#include "support/OwnFile.h"

namespace onvif_client {
namespace {

/// What a device could send to who looks at a terminal, and how it is shown.
const std::string kHostile =
    "a\r\n\x1B[2J\t\x7F \xC2\x9B\x9B \xC0\x8A \xED\xA0\x80 \xF4\x90\x80\x80 \xE7\xBA "
    "\xC2\xA0\u7EBF\U0001F600";
const std::string kShown =
    R"(a\x0D\x0A\x1B[2J\x09\x7F \xC2\x9B\x9B \xC0\x8A \xED\xA0\x80 \xF4\x90\x80\x80 \xE7\xBA )"
    "\u00A0\u7EBF\U0001F600";

TEST(CorekitLog, LinesAndTracesWaitForNobodyAndShowControlCharacters) {
    const auto logIt = [] { COREKIT_NormalOutput(kHostile.c_str(), "HttpClient", 943); };
    const auto traceIt = [] { COREKIT_Trace(("\n\n" + kHostile + ".\r\n").c_str()); };
    const struct {
        int stream;
        std::function<void()> put;
        std::string shown;  // without its times
    } cases[] = {
        {STDERR_FILENO, logIt,
         "error Corekit lines that could not be written at once: 100\ninfo HttpClient:943 " +
             kShown + "\n"},
        {STDOUT_FILENO, traceIt,
         "onvif_client: traces that could not be written at once: 100\n\n\n" + kShown + ".\r\n"},
    };
    const std::string page(4096, 'x');
    for (const auto& [stream, put, shown] : cases) {
        int ends[2] = {};
        ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
        while (write(ends[1], page.data(), page.size()) > 0) {
        }
        fcntl(ends[1], F_SETFL, 0);
        const int before = dup(stream);
        dup2(ends[1], stream);
        COREKIT_BeginTraces();
        for (int i = 0; i < 100; ++i) {
            put();
        }
        std::string all(1U << 20U, ' ');
        EXPECT_GT(read(ends[0], all.data(), all.size()), 0);
        put();
        all.resize(static_cast<std::size_t>(read(ends[0], all.data(), all.size())));
        close(ends[0]);
        put();  // and no signal ends the test
        fcntl(stream, F_SETFL, O_NONBLOCK);
        put();
        dup2(before, stream);
        close(before);
        close(ends[1]);
        EXPECT_EQ(std::regex_replace(all, std::regex("[0-9-]{10} [0-9:.]{12} "), ""), shown);
    }
    int connection[2] = {};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, connection), 0);
    const int before = dup(STDOUT_FILENO);
    dup2(connection[0], STDOUT_FILENO);
    traceIt();
    int ends[2] = {};
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    dup2(ends[1], STDOUT_FILENO);
    traceIt();
    dup2(before, STDOUT_FILENO);
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 1) << "the application has sent its output elsewhere";
    EXPECT_EQ(recv(connection[1], &byte, 1, MSG_DONTWAIT), -1) << "a connection got the number";
    for (const int each : {before, connection[0], connection[1], ends[0], ends[1]}) {
        close(each);
    }
}

TEST(CorekitLog, BothSidesOfATerminalCanBeWrittenTo) {
    const int near = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(grantpt(near) == 0 && unlockpt(near) == 0);
    const int far = ioctl(near, TIOCGPTPEER, O_RDWR | O_NOCTTY);
    EXPECT_EQ(WriteAtOnce(near, "x\n"), 2U);
    pollfd arrived = {far, POLLIN, 0};
    EXPECT_EQ(poll(&arrived, 1, 10000), 1) << "it went to another terminal";
    EXPECT_EQ(WriteAtOnce(far, "x\n"), 2U);
    while (WriteAtOnce(far, std::string(4000, 'x')) == 4000) {
    }  // until it is full; nobody waits for who reads it
    close(far);
    close(near);
}

TEST(CorekitLog, AFileIsPrivateAndWaitsForNobody) {
    const std::string folder = client_test::OwnFile("private");
    EXPECT_TRUE(CLogFile(folder + "/log.txt").IsOpen());
    EXPECT_EQ(std::filesystem::status(folder + "/log.txt").permissions(),
              std::filesystem::perms(0600));
    ASSERT_EQ(mkfifo((folder + "/pipe").c_str(), 0600), 0);
    EXPECT_TRUE(CLogFile(folder + "/pipe").IsOpen());
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace onvif_client
