#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "support/RawClient.h"
#include "system/AlarmObserver.h"
#include "system/Client.h"

namespace client_test {
namespace {

constexpr std::uint16_t kPort = 6699;

std::string Post(const std::string& body) {
    return "POST /subscription_0 HTTP/1.1\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + body;
}

const std::string kReply =
    "HTTP/1.1 200 OK\r\nContent-type: text/xml\r\nContent-Length: 0\r\nConnection: close\r\n"
    "AuthInfo: \r\n\r\n";

TEST(Listener, AnswersPostsFromInitialToQuit) {
    EXPECT_FALSE(CRawClient(kPort).Connected());
    for (int round = 0; round < 2; ++round) {
        {
            const CStartedLibrary library;
            const CRawClient client(kPort);
            ASSERT_TRUE(client.Connected());
            client.Send(Post("<s:Envelope/>"));
            EXPECT_EQ(client.ReadToEnd(), kReply);
        }
        EXPECT_FALSE(CRawClient(kPort).Connected());
    }
}

TEST(Listener, SilentPostersDelayNoAlarm) {
    const CStartedLibrary library;
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    CAlarmObserver observer;
    const unsigned int id = Login(camera);
    ONVIF_CLIENT_AddAlarmStateObserver(id, &observer);
    std::vector<std::unique_ptr<CRawClient>> silent;
    for (int i = 0; i < 200; ++i) {
        silent.push_back(std::make_unique<CRawClient>(kPort));
        EXPECT_TRUE(silent.back()->Connected());
    }
    const CRawClient poster(kPort);
    poster.Send(Post("<s:Envelope/>"));
    for (const char* changes : {"M+", "M+M-", "M+M-M+"}) {
        SetMotion(camera, std::string(changes).ends_with('+'));
        EXPECT_TRUE(observer.Hears(id, changes));
    }
    silent.clear();
    EXPECT_EQ(poster.ReadToEnd(), kReply) << "its turn comes";
    ONVIF_CLIENT_DelAlarmStateObserver(id);
}

}  // namespace
}  // namespace client_test
