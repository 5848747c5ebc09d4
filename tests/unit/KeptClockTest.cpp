#include <gtest/gtest.h>

#include <mutex>

#include "client/HttpClient.h"
#include "commands/DeviceRequests.h"
#include "platform/Wirelink.h"
#include "support/MovedClock.h"
#include "support/ScriptedPeer.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

/// A device that refuses what is not signed by the minute and second that it shows.
class KeptClock : public testing::Test {
 protected:
    KeptClock() { WIRELINK_Initial(1, 1, nullptr, 0); }
    ~KeptClock() override { WIRELINK_Quit(); }

    void Answer(client_test::CPeerConnection& connection) {
        std::string request;
        while (request.find("</s:Envelope>") == std::string::npos) {
            request += connection.Read(1);
        }
        const std::size_t created = request.find("<wsu:Created>");
        const std::lock_guard guard(lock_);
        const bool isSigned = created != std::string::npos;
        const bool right = isSigned && request.substr(created + 27, 5) == minute_;
        const bool isClock = request.find("GetSystemDateAndTime") != std::string::npos;
        const std::string date = dated_ ? "\r\nDate: Thu, 07 Mar 2019 08:" + minute_ + " GMT" : "";
        log_ += (isClock ? (isSigned ? "C" : "c") : "r") + std::string(right ? "+ " : " ");
        const bool tells = isClock && tells_.find(isSigned ? 'C' : 'c') != std::string::npos;
        const std::string time = "Time{Hour=8 Minute=" + minute_.substr(0, 2) +
                                 " Second=" + minute_.substr(3) + "} Date{Year=2019 Month=3 Day=7}";
        const std::string shown =
            "GetSystemDateAndTimeResponse{SystemDateAndTime{UTCDateTime{" + time + "}}}";
        const std::string services =
            "GetServicesResponse{Service{Namespace=/ver10/media/wsdl XAddr=x} "
            "Service{Namespace=/imaging/wsdl XAddr=x}} GetProfilesResponse{Profiles(token=P)}";
        if (isClock ? tells && (right || !isSigned) : right) {
            connection.Send("HTTP/1.1 200 OK" + date + "\r\n\r\n" +
                            client_test::Reply(isClock ? shown : services));
        } else {
            connection.Send("HTTP/1.1 401 Unauthorized" + date + "\r\n\r\n");
        }
    }
    std::string Log() {
        const std::lock_guard guard(lock_);
        return std::exchange(log_, {});
    }
    void Show(const std::string& minute) {
        const std::lock_guard guard(lock_);
        minute_ = minute;
    }

    client_test::CMovedClock clock_;
    const CScopedClock replaced_{clock_};
    std::mutex lock_;  // guards what follows while the peer lives
    std::string minute_ = "50:00";
    std::string tells_ = "c";  // to whom: "c" bare, "C" signed
    bool dated_ = false;
    std::string log_;
    client_test::CScriptedPeer peer_{
        [this](client_test::CPeerConnection& connection) { Answer(connection); }};
};

TEST_F(KeptClock, IsFoundWhereverADeviceShowsIt) {
    const struct {
        const char* tells;
        bool dated;
        const char* minute;
        int status;
        const char* log;
    } cases[] = {{"c", false, "50:00", 0, "c r+ r+ r+ "},
                 {"C", true, "50:00", 0, "c C+ r+ r+ r+ "},
                 {"", true, "50:00", 0, "c C+ r+ r+ r+ "},
                 {"", false, "05:09", 0, "c C+ r+ r+ r+ "},
                 {"", false, "50:00", 401, "c C r "}};
    for (const auto& each : cases) {
        tells_ = each.tells;
        dated_ = each.dated;
        Show(each.minute);
        CHttpClient session("u", "p", "127.0.0.1", peer_.Port(), {Extension::kKeepClock});
        EXPECT_EQ(session.Login(), each.status) << each.log;
        EXPECT_EQ(Log(), each.log);
    }
    tells_ = "c";
    EXPECT_EQ(CHttpClient("u", "p", "127.0.0.1", peer_.Port()).Login(), 0);
    EXPECT_EQ(Log().substr(0, 8), "c c r+ r");  // as ever: looks, sets, signs by ours
}

TEST_F(KeptClock, IsCarriedOnAndLookedAtAnewWhenItMoved) {
    CHttpClient session("u", "p", "127.0.0.1", peer_.Port(), {Extension::kKeepClock});
    ASSERT_EQ(session.Login(), 0);
    Log();
    const struct {
        std::uint32_t passes;
        const char* shows;
        const char* log;
    } cases[] = {{70999, "51:10", "r+ "},  // our ticks wrap meanwhile
                 {0, "55:00", "r c r+ "},  // it has moved
                 {59000, "20:00", "r "},   // and again, but it was looked at a while ago
                 {1000, "20:01", "r c r+ "},
                 {60000, "21:02", "r c "},  // off by a second: not for that
                 {0, "21:02", "r+ "}};
    for (const auto& each : cases) {
        clock_.ticks += each.passes;
        clock_.calendar += 86400;  // of no account
        Show(each.shows);
        session.Exchange({.envelope = BuildGetDeviceInformation({}),
                          .serviceKey = "device",
                          .clock = SigningClock::kDevice});
        EXPECT_EQ(Log(), each.log) << each.shows;
    }
    Show("30:00");
    session.ReadPullReply("HTTP/1.1 401 Unauthorized\r\n\r\n");
    clock_.ticks += 60000;
    const auto pull = session.PrepareRequest("<Get><pullMessages/></Get>").value();
    EXPECT_NE(session.BuildHttpRequest(pull).find("08:30:00Z"), std::string::npos);
    EXPECT_EQ(Log(), "c ");
    Show("40:00");
    session.NoteClockSet();
    EXPECT_EQ(Log(), "c ");
}

}  // namespace
}  // namespace onvif_client
