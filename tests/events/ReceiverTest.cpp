#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "events/NotificationReceiver.h"
#include "platform/Clock.h"
#include "platform/Listener.h"
#include "support/Await.h"
#include "support/RawClient.h"

namespace onvif_client {
namespace {

using client_test::CRawClient;

constexpr int kSleepsForASilentDevice = 29;  // between 30 reads in vain

/// Sleeps last until they are allowed to end.
class CHeldClock final : public IClock {
 public:
    std::uint32_t TickCount() const override { return 0; }
    std::int64_t CalendarSeconds() const override { return 0; }
    void Sleep(std::uint32_t milliseconds) const override {
        {
            std::unique_lock guard(lock_);
            const int number = ++begun_;
            milliseconds_ += milliseconds;
            changed_.notify_all();
            changed_.wait(guard, [this, number] { return number <= allowed_; });
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }

    /// From now on the first @p sleeps end.
    void Allow(int sleeps) {
        const std::lock_guard guard(lock_);
        allowed_ = sleeps;
        changed_.notify_all();
    }
    void WaitForSleep(int number) const {
        std::unique_lock guard(lock_);
        EXPECT_TRUE(changed_.wait_for(guard, client_test::kPatience,
                                      [this, number] { return begun_ >= number; }));
    }
    int Begun() const {
        const std::lock_guard guard(lock_);
        return begun_;
    }
    /// Sleeps so far, and forgets them.
    int TakeSleeps() {
        const std::lock_guard guard(lock_);
        EXPECT_EQ(std::exchange(milliseconds_, 0), static_cast<std::uint32_t>(begun_) * 100);
        return std::exchange(begun_, 0);
    }

 private:
    mutable std::mutex lock_;  // guards the members below; leaf
    mutable std::condition_variable changed_;
    mutable int begun_ = 0;
    mutable std::uint32_t milliseconds_ = 0;
    int allowed_ = 0;
};

/// Keeps the bodies; throws at a body "throw".
class CKeepingSink final : public INotifySink {
 public:
    void OnNotify(std::string_view body) override {
        const std::lock_guard guard(lock_);
        bodies_ += "[" + std::string(body) + "]";
        if (body == "throw") {
            throw std::runtime_error("no");
        }
    }
    std::string TakeBodies() {
        const std::lock_guard guard(lock_);
        return std::exchange(bodies_, {});
    }

 private:
    std::mutex lock_;  // guards bodies_; leaf
    std::string bodies_;
};

std::string Post(const std::string& body, const std::string& path = "/subscription_0") {
    return "POST " + path +
           " HTTP/1.1\r\nHost: x\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
           body;
}

std::string Reply(const std::string& type) {
    return "HTTP/1.1 200 OK\r\nContent-type: " + type +
           "\r\nContent-Length: 0\r\nConnection: close\r\nAuthInfo: \r\n\r\n";
}

class Receiver : public testing::Test {
 protected:
    Receiver() {
        WIRELINK_Initial(1, 1, nullptr, 0);
        listener_ = CListener::Make("127.0.0.1", 0, &receiver_);
    }
    ~Receiver() override {
        clock_.Allow(INT_MAX);
        listener_->Stop();
        WIRELINK_Quit();
    }
    std::uint16_t Port() const { return listener_->Port(); }

    CHeldClock clock_;
    const CScopedClock scoped_{clock_};
    CKeepingSink sink_;
    CNotificationReceiver receiver_{sink_};
    std::shared_ptr<CListener> listener_;
};

TEST_F(Receiver, OnePostIsAnsweredPerConnection) {
    const std::string large(20000, 'x');
    const struct {
        std::string sent;
        std::string heard;
        std::string answer;
        bool waitedFor = false;  // for as long as a silent poster is
        bool ends = false;       // the device ends its side of the connection
    } cases[] = {
        {Post("hello"), "[hello]", Reply("text/xml")},
        {Post("hello"), "[hello]", Reply("text/xml"), false, true},
        {Post("hello", "/a.png"), "[hello]", Reply("image/png")},
        {Post("hello", "/"), "[hello]", Reply("text/html")},
        {Post(large), "[" + large + "]", Reply("text/xml")},
        {Post("one") + Post("two") + "POST", "[one]", Reply("text/xml")},
        {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok", "[ok]", Reply("text/html")},
        {Post("throw"), "[throw]", ""},
        {"POST / HTTP/1.1\r\nContent-Length: -5\r\n\r\nhello", "", ""},
        {"POST / HTTP/1.1\r\nContent-Length: 99999999999\r\n\r\nhello", "", ""},
        {Post(""), "", "", true},
        {Post(""), "", "", false, true},
        {"POST / HTTP/1.1\r\nHost: x\r\n\r\nhello", "", "", true},
        {Post("hello").substr(0, 60), "", "", true},
        {Post("hello").substr(0, 60), "", "", false, true},
        {"", "", "", true},
        {"", "", "", false, true},
    };
    for (const auto& each : cases) {
        clock_.Allow(0);
        const CRawClient device(Port());
        device.Send(each.sent);
        if (each.ends) {
            device.EndSending();
        }
        clock_.Allow(INT_MAX);
        EXPECT_EQ(device.ReadToEnd(), each.answer) << each.sent;
        EXPECT_EQ(sink_.TakeBodies(), each.heard) << each.sent;
        EXPECT_EQ(clock_.TakeSleeps() == kSleepsForASilentDevice, each.waitedFor) << each.sent;
    }
}

TEST_F(Receiver, ReadsInVainAreCountedOverTheWholePost) {
    const std::string post = Post("hello");
    for (const bool inTime : {true, false}) {
        clock_.Allow(0);
        const CRawClient device(Port());
        const int pieces = inTime ? 15 : kSleepsForASilentDevice;
        for (int piece = 0; piece < pieces; ++piece) {
            clock_.WaitForSleep(piece + 1);
            const auto at = static_cast<std::size_t>(piece);
            const bool rest = inTime && piece == 14;
            device.Send(std::string_view(post).substr(at, rest ? std::string_view::npos : 1));
            clock_.Allow(piece + 1);
        }
        clock_.Allow(INT_MAX);
        EXPECT_EQ(device.ReadToEnd(), inTime ? Reply("text/xml") : "");
        EXPECT_EQ(sink_.TakeBodies(), inTime ? "[hello]" : "");
        EXPECT_EQ(clock_.TakeSleeps() == kSleepsForASilentDevice, !inTime);
    }
}

TEST_F(Receiver, EndlessPostersAreCutOff) {
    constexpr std::size_t kMost = 16;  // MiB, most of them in the buffers of the system
    const std::string block(1 << 20, 'x');
    clock_.Allow(INT_MAX);
    for (const char* start : {"POST /", "POST / HTTP/1.1\r\n\r\n"}) {
        const CRawClient device(Port());
        device.Send(start);
        std::size_t sent = 0;
        while (sent < kMost && device.Send(block)) {
            ++sent;
        }
        EXPECT_LT(sent, kMost) << start;
    }
    EXPECT_EQ(sink_.TakeBodies(), "");
}

TEST_F(Receiver, ManySilentPostersDelayAPostButDoNotPreventIt) {
    std::vector<std::unique_ptr<CRawClient>> silent;
    const auto more = [&](std::size_t size) {
        while (silent.size() < size) {
            silent.push_back(std::make_unique<CRawClient>(Port()));
            ASSERT_TRUE(silent.back()->Connected());
        }
    };
    more(16);
    clock_.WaitForSleep(16);  // every slot is taken
    const CRawClient good(Port());
    good.Send(Post("hello"));
    more(50);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // whoever is served would be now
    EXPECT_EQ(clock_.Begun(), 16);
    EXPECT_EQ(sink_.TakeBodies(), "");
    clock_.Allow(INT_MAX);
    more(200);
    EXPECT_EQ(good.ReadToEnd(), Reply("text/xml"));
    EXPECT_EQ(sink_.TakeBodies(), "[hello]");
    for (const auto& device : silent) {
        EXPECT_EQ(device->ReadToEnd(), "");
    }
    EXPECT_GE(clock_.TakeSleeps(), 200 * kSleepsForASilentDevice);
}

}  // namespace
}  // namespace onvif_client
