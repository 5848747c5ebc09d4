#include "platform/Listener.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <ctime>
#include <thread>

#include "platform/Sockets.h"
#include "support/Await.h"

namespace onvif_client {
namespace {

using client_test::WaitUntil;

class CCountingListener final : public CListenSocketObserver {
 public:
    void OnAccept(std::uint32_t) override { ++calls; }

    std::atomic<int> calls = 0;
};

TEST(Listeners, OutOfDescriptorsGoOnLater) {
    CCountingListener observer;
    const auto listener = CListener::Make("127.0.0.1", 0, &observer);
    const CDescriptor client = MakeTcpSocket();
    const auto address = Ipv4Address("127.0.0.1", listener->Port());
    rlimit normal = {};
    getrlimit(RLIMIT_NOFILE, &normal);
    const rlimit none = {0, normal.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_NE(StartConnecting(client.Get(), *address), ConnectState::kFailed);
    const std::clock_t before = std::clock();
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10) << "it tries without a pause";
    EXPECT_EQ(observer.calls, 0);
    setrlimit(RLIMIT_NOFILE, &normal);
    WaitUntil([&] { return observer.calls > 0; });
    listener->Stop();
}

}  // namespace
}  // namespace onvif_client
