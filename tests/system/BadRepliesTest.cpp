#include <gtest/gtest.h>

#include <future>

#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CCamera;
using camera_sim::Fault;

constexpr const char* kOperation = "GetDeviceInformation";

class BadReplies : public CCameraTest {
 protected:
    /// What Get devInfo gives when the camera answers so: the value of its model, or "failed".
    std::string ModelWith(const Fault& fault) {
        camera_.Inject(kOperation, fault);
        const auto result = Get(id_, "<devInfo/>");
        camera_.ClearFaults();
        if (result && At(*result, "devInfo/status") == "fail") {
            return "fault " + At(*result, "devInfo/status/errorCode");
        }
        return result ? At(*result, "devInfo/model") : "failed";
    }

    std::string ModelWithReply(const std::string& soap) {
        return ModelWith(
            {.kind = Fault::Kind::kRawReply, .reply = "HTTP/1.1 200 OK\r\n\r\n" + soap});
    }

    CCamera& camera_ = host_.Add({});
    unsigned int id_ = Login(camera_);
};

std::string Envelope(const std::string& body) {
    return "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\">"
           "<s:Body>" +
           body + "</s:Body></s:Envelope>";
}

std::string Answer(const std::string& inside) {
    return Envelope("<t:GetDeviceInformationResponse>" + inside +
                    "<t:Model>M</t:Model></t:GetDeviceInformationResponse>");
}

std::string Times(std::size_t count, const std::string& text) {
    std::string repeated;
    while (count-- > 0) {
        repeated += text;
    }
    return repeated;
}

TEST_F(BadReplies, AReplyCutAnywhereIsAFailureOrHasNoValues) {
    const std::string whole = ModelWith({.kind = Fault::Kind::kSegments, .bytes = 100});
    EXPECT_EQ(whole, "SIM-DOME");
    std::size_t length = 1;
    bool complete = false;
    for (; !complete && length < 4000; ++length) {
        const std::string model = ModelWith({.kind = Fault::Kind::kTruncate, .bytes = length});
        complete = model == "SIM-DOME";
        EXPECT_TRUE(complete || model == "failed" || model == "(none)") << length << model;
    }
    EXPECT_TRUE(complete);
    EXPECT_GT(length, 400U);
}

TEST_F(BadReplies, EachHasItsOutcome) {
    const struct {
        const char* what;
        std::string reply;
        const char* model;
    } cases[] = {
        {"as it should be", Answer(""), "M"},
        {"a tag of 64 KB", Answer("<x" + std::string(65536, 'y') + ">"), "(none)"},
        {"an attribute of 64 KB", Answer("<x y=\"" + std::string(65536, 'z') + "\"/>"), "(none)"},
        {"nested too deep", Answer(Times(700, "<n>") + Times(700, "</n>")), "(none)"},
        {"nested deep", Answer(Times(50, "<n>") + Times(50, "</n>")), "M"},
        {"wrong nesting", Answer("<a><b></a></b>"), "(none)"},
        {"unknown entity", Answer("<a>&nonsense;</a>"), "M"},
        {"a fault", Envelope("<s:Fault><s:Code/></s:Fault>"), "fault 6"},
        {"nothing in the body", Envelope(""), "(none)"},
        {"behind the envelope", Answer("") + "\r\n<trailing", "M"},
        {"zero bytes", std::string("\0\0\0<?xml?><s:Envelope>", 22), "failed"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(ModelWithReply(each.reply), each.model) << each.what;
    }
    EXPECT_EQ(ModelWith({.kind = Fault::Kind::kGarbage, .bytes = 60000}), "failed");
    EXPECT_EQ(ModelWith({.kind = Fault::Kind::kSegments, .bytes = 1}), "SIM-DOME");
}

TEST_F(BadReplies, ASilentDeviceEndsWithTheLibrary) {
    camera_.Inject(kOperation, {.kind = Fault::Kind::kSilence});
    camera_.ClearEvidence();
    auto waiting = std::async(std::launch::async, [this] { return Get(id_, "<devInfo/>"); });
    while (camera_.Count(kOperation) == 0) {
        std::this_thread::yield();
    }
    ONVIF_SEARCH_Quit();
    EXPECT_FALSE(waiting.get().has_value());
    camera_.ClearFaults();
    EXPECT_FALSE(Get(id_, "<devInfo/>").has_value());
    ONVIF_CLIENT_Initial();
    EXPECT_TRUE(Get(id_, "<devInfo/>").has_value());
}

}  // namespace
}  // namespace client_test
