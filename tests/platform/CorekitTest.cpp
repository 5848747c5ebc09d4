#include "platform/Corekit.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <stdexcept>
#include <string>

#include "platform/LogFile.h"
#include "platform/ManualResetEvent.h"
#include "support/OwnFile.h"

namespace onvif_client {
namespace {

/// Before the first line, whose test reads what standard error gets.
const bool kLogIsOrdinary =
    unsetenv("ONVIF_CLIENT_LOG") == 0 && unsetenv("ONVIF_CLIENT_LOG_FILE") == 0 &&
    unsetenv("ONVIF_CLIENT_LOG_CHARSET") == 0 && unsetenv("ONVIF_CLIENT_TRACE") == 0;

/// What a device could send to who looks at a terminal, and how it is shown.
const std::string kHostile =
    "a\r\n\x1B[2J\t\x7F \xC2\x9B\x9B \xC0\x8A \xED\xA0\x80 \xF4\x90\x80\x80 \xE7\xBA "
    "\xC2\xA0\u7EBF\U0001F600";
const std::string kShown =
    R"(a\x0D\x0A\x1B[2J\x09\x7F \xC2\x9B\x9B \xC0\x8A \xED\xA0\x80 \xF4\x90\x80\x80 \xE7\xBA )"
    "\u00A0\u7EBF\U0001F600";

struct Noted {
    std::atomic<std::uint64_t> id = 0;
    CManualResetEvent ran;
};

void NoteId(void* context) {
    auto* noted = static_cast<Noted*>(context);
    noted->id = COREKIT_CurrentThreadID();
    noted->ran.Set();
}

CorekitThreadHandle Create(CorekitThreadFunction function, void* context, bool suspended) {
    return COREKIT_CreateRunOneThread(function, context, suspended, "CorekitTest", 1,
                                      "a name that is longer than systems take");
}

TEST(CorekitThreads, RunWhenTheyMayAndKnowTheirIds) {
    Noted first;
    Noted second;
    Noted never;
    CorekitThreadHandle running = Create(NoteId, &first, false);
    CorekitThreadHandle suspended = Create(NoteId, &second, true);
    CorekitThreadHandle unresumed = Create(NoteId, &never, true);
    EXPECT_LT(COREKIT_GetThreadID(running), COREKIT_GetThreadID(suspended));
    EXPECT_LT(COREKIT_GetThreadID(suspended), COREKIT_GetThreadID(unresumed));
    first.ran.Wait();
    EXPECT_EQ(first.id, COREKIT_GetThreadID(running));
    EXPECT_FALSE(COREKIT_ResumeThread(running));

    EXPECT_EQ(second.id, 0U);
    EXPECT_TRUE(COREKIT_ResumeThread(suspended));
    EXPECT_FALSE(COREKIT_ResumeThread(suspended));
    second.ran.Wait();
    EXPECT_EQ(second.id, COREKIT_GetThreadID(suspended));

    for (CorekitThreadHandle each : {running, suspended, unresumed}) {
        COREKIT_DestroyThread(each, "CorekitTest", 2);
    }
    EXPECT_EQ(never.id, 0U);
    EXPECT_EQ(COREKIT_CurrentThreadID(), 0U);
}

TEST(CorekitThreads, BadArgumentsAndExceptionsAreContained) {
    EXPECT_EQ(Create(nullptr, nullptr, false), nullptr);
    EXPECT_EQ(COREKIT_GetThreadID(nullptr), 0U);
    EXPECT_FALSE(COREKIT_ResumeThread(nullptr));
    COREKIT_DestroyThread(nullptr, nullptr, 0);
    COREKIT_DestroyThread(Create([](void*) { throw std::runtime_error("x"); }, nullptr, false),
                          "CorekitTest", 3);
    COREKIT_NormalOutput(nullptr, nullptr, 0);
}

TEST(CorekitLog, NamesThePlaceByNumberOrByWords) {
    ASSERT_TRUE(kLogIsOrdinary);
    testing::internal::CaptureStderr();
    COREKIT_NormalOutput(" text: %d {} \r\n", "HttpClient", 943);
    COREKIT_NormalOutput("text", "ThreadPool", 0);
    COREKIT_AbnormalOutput("ASSERT", "HttpClient", 1295);
    COREKIT_AbnormalOutput("ASSERT", "OnvifEvent", "an observer threw");
    COREKIT_AbnormalOutput("ASSERT", "HttpClient", 323, "10.0.0.1:80");
    COREKIT_NormalOutput(CorekitText{"\xCF\xDF", "\u7EBF"}, "ThreadPool", 0);
    const std::string time = "[0-9]{4}(-[0-9]{2}){2} [0-9]{2}(:[0-9]{2}){2}\\.[0-9]{3} ";
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(std::regex_match(
        log, std::regex(time + "info HttpClient:943  text: %d \\{\\} \n" + time +
                        "info ThreadPool text\n" + time + "error HttpClient:1295 ASSERT\n" + time +
                        "error OnvifEvent ASSERT: an observer threw\n" + time +
                        "error HttpClient:323 ASSERT \\(10.0.0.1:80\\)\n" + time +
                        "info ThreadPool \u7EBF\n")))
        << log;
}

TEST(CorekitLog, TheEnvironmentChoosesWhatGoesWhere) {
    const std::string file = client_test::OwnFile("chosen.txt");
    const std::string info = "[^\n]+ info T \u7EBF\n";
    const std::string error = "[^\n]+ error T ASSERT: words\n";
    const struct {
        const char* variable;  // without ONVIF_CLIENT_
        std::string value;
        std::string shown;  // on standard error
    } cases[] = {
        {"LOG", "info", info + error},
        {"LOG", "error", error},
        {"LOG", "off", ""},
        {"LOG_CHARSET", "raw", "[^\n]+ info T \xCF\xDF\n" + error},
        {"LOG_FILE", file, ""},
        {"TRACE", "stderr", info + error + "\ntrace\n"},
        {"TRACE", "log", info + error + "[^\n]+ info trace\n"},
    };
    for (const auto& [variable, value, shown] : cases) {
        const auto child = [variable = variable, value = value] {
            setenv(("ONVIF_CLIENT_" + std::string(variable)).c_str(), value.c_str(), 1);
            COREKIT_BeginTraces();
            COREKIT_NormalOutput(CorekitText{"\xCF\xDF", "\u7EBF"}, "T", 0);
            COREKIT_AbnormalOutput("ASSERT", "T", "words");
            COREKIT_Trace("\ntrace\n");
            std::_Exit(0);
        };
        EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^" + shown + "$") << variable;
    }
    EXPECT_GT(std::filesystem::file_size(file), 40U);
    std::filesystem::remove(file);
}

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
    dup2(before, STDOUT_FILENO);
    char byte = 0;
    EXPECT_EQ(recv(connection[1], &byte, 1, MSG_DONTWAIT), -1) << "a connection got the number";
    for (const int each : {before, connection[0], connection[1]}) {
        close(each);
    }
}

TEST(CorekitLog, AFileIsPrivateIsFollowedByThreeAndWaitsForNobody) {
    const std::string folder = client_test::OwnFile("logs");
    CLogFile file(folder + "/log.txt");
    ASSERT_TRUE(file.IsOpen());
    EXPECT_EQ(std::filesystem::status(folder + "/log.txt").permissions(),
              std::filesystem::perms(0600));
    for (const char each : std::string("abcde")) {
        EXPECT_EQ(write(file.DescriptorFor(1), &each, 1), 1);
        std::filesystem::resize_file(folder + "/log.txt", std::size_t{5} << 20U);
    }
    std::string kept;
    for (const char* name : {"log.txt", "log.1.txt", "log.2.txt", "log.3.txt", "log.4.txt"}) {
        kept += static_cast<char>(std::ifstream(folder + "/" + name).get());
    }
    EXPECT_EQ(kept, "edcb\xFF");
    ASSERT_EQ(mkfifo((folder + "/pipe").c_str(), 0600), 0);
    EXPECT_TRUE(CLogFile(folder + "/pipe").IsOpen());
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace onvif_client
