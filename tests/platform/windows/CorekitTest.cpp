#include "platform/Corekit.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "support/Await.h"

namespace onvif_client {
namespace {

TEST(CorekitLog, LinesAndTracesWaitForNobodyWhoReadsAPipe) {
    const std::string kNote = "that could not be written at once: ";
    const std::pair<DWORD, std::function<void()>> cases[] = {
        {STD_ERROR_HANDLE, [] { COREKIT_NormalOutput("text", "T", 0); }},
        {STD_OUTPUT_HANDLE, [] { COREKIT_Trace("\ntext\n"); }}};
    for (const auto& [stream, put] : cases) {
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        const std::string page(4096, 'x');
        ASSERT_TRUE(CreatePipe(&readEnd, &writeEnd, nullptr, static_cast<DWORD>(page.size())));
        DWORD moved = 0;
        WriteFile(writeEnd, page.data(), static_cast<DWORD>(page.size()), &moved, nullptr);
        EXPECT_EQ(moved, page.size());
        const HANDLE before = GetStdHandle(stream);
        SetStdHandle(stream, writeEnd);
        COREKIT_BeginTraces();
        for (int i = 0; i < 100; ++i) {
            put();
        }
        std::mutex lock;
        std::string all;
        {
            const std::jthread reader([&, end = readEnd] {
                char block[512];
                DWORD read = 0;
                while (ReadFile(end, block, sizeof block, &read, nullptr) != 0 && read > 0) {
                    const std::lock_guard guard(lock);
                    all.append(block, read);
                }
            });
            client_test::WaitUntil([&, &put = put] {
                put();
                const std::lock_guard guard(lock);
                return all.find(kNote) != std::string::npos;
            });
            SetStdHandle(stream, before);
            CloseHandle(writeEnd);
        }
        CloseHandle(readEnd);
        EXPECT_TRUE(all.starts_with(page)) << all;
        EXPECT_GE(std::stoi(all.substr(all.find(kNote) + kNote.size())), 99);
        put();  // and nobody waits for what is gone
    }
}

}  // namespace
}  // namespace onvif_client
