/// @file
/// Waiting for what another thread or a peer does, for a bounded time.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_AWAIT_H
#define ONVIF_CLIENT_TESTS_SUPPORT_AWAIT_H

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace client_test {

/// Far more than anything takes here.
constexpr auto kPatience = std::chrono::seconds(30);

template <typename Condition>
bool Await(const Condition& condition, std::chrono::steady_clock::duration patience = kPatience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

template <typename Condition>
void WaitUntil(const Condition& condition) {
    EXPECT_TRUE(Await(condition)) << "waited in vain";
}

}  // namespace client_test

#endif
