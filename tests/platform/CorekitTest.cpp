#include "platform/Corekit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <stdexcept>
#include <string>

#include "platform/LineOutput.h"
#include "platform/LogFile.h"
#include "platform/ManualResetEvent.h"
#include "support/OwnFile.h"
#include "support/System.h"

namespace onvif_client {
namespace {

using client_test::SetVariable;

/// Before the first line, whose test reads what standard error gets.
const bool kLogIsOrdinary =
    SetVariable("ONVIF_CLIENT_LOG", nullptr) && SetVariable("ONVIF_CLIENT_LOG_FILE", nullptr) &&
    SetVariable("ONVIF_CLIENT_LOG_CHARSET", nullptr) && SetVariable("ONVIF_CLIENT_TRACE", nullptr);

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
    // Where there is no fork, a child is the program once more: it is told its parent's file.
    constexpr const char* kFile = "CHOSEN_FILE";
    const char* ofParent = std::getenv(kFile);
    const std::string file = ofParent != nullptr ? ofParent : client_test::OwnFile("chosen.txt");
    SetVariable(kFile, file.c_str());
    const std::string info = "\\S+ \\S+ info T \u7EBF\n";
    const std::string error = "\\S+ \\S+ error T ASSERT: words\n";
    const struct {
        const char* variable;  // without ONVIF_CLIENT_
        std::string value;
        std::string shown;  // on standard error
    } cases[] = {
        {"LOG", "info", info + error},
        {"LOG", "error", error},
        {"LOG", "off", ""},
        {"LOG_CHARSET", "raw", "\\S+ \\S+ info T \xCF\xDF\n" + error},
        {"LOG_FILE", file, ""},
        {"TRACE", "stderr", info + error + "\ntrace\n"},
        {"TRACE", "log", info + error + "\\S+ \\S+ info trace\n"},
    };
    for (const auto& [variable, value, shown] : cases) {
        const auto child = [variable = variable, value = value] {
            SetVariable(("ONVIF_CLIENT_" + std::string(variable)).c_str(), value.c_str());
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

TEST(CorekitLog, AFileIsFollowedByThree) {
    const std::string folder = client_test::OwnFile("logs");
    {
        CLogFile file(folder + "/log.txt");
        ASSERT_TRUE(file.IsOpen());
        const std::size_t held = client_test::Held().handles;
        for (const char each : std::string("abcde")) {
            EXPECT_EQ(WriteAtOnce(file.HandleFor(1), {&each, 1}), 1U);
            std::filesystem::resize_file(folder + "/log.txt", std::size_t{5} << 20U);
        }
        EXPECT_EQ(client_test::Held().handles, held) << "an old file is still open";
    }
    std::string kept;
    for (const char* name : {"log.txt", "log.1.txt", "log.2.txt", "log.3.txt", "log.4.txt"}) {
        kept += static_cast<char>(std::ifstream(folder + "/" + name).get());
    }
    EXPECT_EQ(kept, "edcb\xFF");
    const std::string line = folder + "/line.txt";
    CLineOutput([](auto) {
        return "";
    }).Put(CLogFile(line).HandleFor(0), std::string(4093, 'x') + "\u7EBF\n");
    EXPECT_EQ(std::filesystem::file_size(line), 4094U) << "a character was cut";
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace onvif_client
