#include "platform/Corekit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>

#include "platform/ManualResetEvent.h"

namespace onvif_client {
namespace {

/// Before the first line, whose test reads what standard error gets.
const bool logIsOrdinary =
    unsetenv("ONVIF_CLIENT_LOG") == 0 && unsetenv("ONVIF_CLIENT_LOG_FILE") == 0;

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
    ASSERT_TRUE(logIsOrdinary);
    testing::internal::CaptureStderr();
    COREKIT_NormalOutput(" text: %d {} \r\n", "HttpClient", 943);
    COREKIT_NormalOutput("text", "ThreadPool", 0);
    COREKIT_AbnormalOutput("ASSERT", "HttpClient", 1295);
    COREKIT_AbnormalOutput("ASSERT", "OnvifEvent", "an observer threw");
    const std::string time = "[0-9]{4}(-[0-9]{2}){2} [0-9]{2}(:[0-9]{2}){2}\\.[0-9]{3} ";
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(std::regex_match(
        log, std::regex(time + "info HttpClient:943  text: %d \\{\\} \n" + time +
                        "info ThreadPool text\n" + time + "error HttpClient:1295 ASSERT\n" + time +
                        "error OnvifEvent ASSERT: an observer threw\n")))
        << log;
}

TEST(ManualResetEvent, StaysSetUntilItIsReset) {
    CManualResetEvent event;
    event.Set();
    event.Wait();
    event.Wait();
    event.Reset();
    std::atomic<bool> passed = false;
    std::jthread waiting([&] {
        event.Wait();
        passed = true;
    });
    EXPECT_FALSE(passed);
    event.Set();
    waiting.join();
    EXPECT_TRUE(passed);
}

}  // namespace
}  // namespace onvif_client
