// A whole session: login, a command of each table, a picture, a subscription with two pulls, and a
// post. The input is what the device answers to one request after the other.
#include "FuzzInput.h"
#include "FuzzPeer.h"
#include "client/HttpClient.h"
#include "client/SnapshotRequest.h"
#include "events/DeviceExchanges.h"
#include "events/NotificationReceiver.h"
#include "events/NotifyMessage.h"
#include "platform/Clock.h"

namespace {

using namespace onvif_client;
using namespace onvif_client::fuzz;

constexpr std::uint64_t kLargestPicture = 65536;

class COneSession final : public ISessionSource, public INotifySink {
 public:
    CHttpClient* Acquire(std::uint32_t) override { return &client; }
    bool Release(std::uint32_t) override { return true; }
    void OnNotify(std::string_view body) override { ReadNotify(body); }

    CHttpClient client{"user", "password", "127.0.0.1", 80};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [text, choice] = ReadInput(data, size);
    const std::vector<std::string> replies = SplitReplies(text);
    for (const std::string& reply : replies) {
        if (ReadSnapshotHeader(reply).contentLength > kLargestPicture) {
            return 0;
        }
    }
    CFuzzPeer& peer = CFuzzPeer::Instance();
    peer.Answer(replies, text.size() % 512 + 1);
    COneSession session;
    session.client.Login();
    ResponseBuffer response;
    if (session.client.Get(OneCommand(kGetCommands, choice), response) && response.size > 0) {
        Expect(response.data != nullptr);
    }
    std::string result;
    session.client.Set(OneCommand(kSetCommands, choice), result);
    ResponseBuffer picture;
    session.client.DownloadPicture("http://127.0.0.1/p", picture);

    EventDeviceRecord record(session, 1, nullptr, "http://127.0.0.1:6699/subscription_0");
    Resubscribe(record, session);
    for (int pull = 0; pull < 2; ++pull) {
        client_test::network::Sleep(1000);
        record.TakeItems();
        if (record.TakePull(TickCount())) {
            SendPull(record, session);
        }
    }
    record.EndPull();
    CNotificationReceiver(session).OnAccept(peer.Accept());
    Expect(client_test::network::Connections() == 0);
    return 0;
}
