// Feeds texts that a device or an application could send to everything that reads them.
// Run it by hand: build/fuzz/fuzz_texts -max_total_time=60 -max_len=4096
#include <cstdint>
#include <string_view>

#include "client/SecurityHeader.h"
#include "client/SnapshotRequest.h"
#include "client/SoapExchange.h"
#include "commands/GetCmd.h"
#include "common/HttpHead.h"
#include "events/ContentTypes.h"
#include "events/EventDocuments.h"
#include "events/HttpMessage.h"
#include "events/NotifyMessage.h"
#include "transform/FaultReaders.h"
#include "transform/MotionCells.h"
#include "transform/TimeResults.h"

namespace {

using namespace onvif_client;

/// A session that gives the same reply to everything.
class CEchoSession final : public ICommandSession {
 public:
    explicit CEchoSession(std::string_view reply) : reply_(reply) {}

    std::shared_ptr<const ProfileList> Profiles() const override { return profiles_; }
    void ReplaceProfiles(ProfileList profiles) override {
        profiles_ = std::make_shared<ProfileList>(std::move(profiles));
    }
    ServiceTable Services() const override {
        ServiceTable services;
        EventCapabilities events;
        ReadServices(reply_, services);
        ReadCapabilities(reply_, services, events);
        return services;
    }
    bool HasMedia2() const override { return reply_.size() % 2 == 0; }
    PtzRanges SpeedRanges() const override { return {}; }
    int DownloadPicture(const std::string&, ResponseBuffer&) override { return status::kSuccess; }
    Reply Exchange(const SignedRequest&) override { return {0, reply_}; }

 private:
    std::string reply_;
    std::shared_ptr<const ProfileList> profiles_ = std::make_shared<ProfileList>();
};

/// Every command of a table, each without parameters.
std::string AllCommands(const CommandTable& table) {
    std::string request = "<" + std::string(table.root) + ">";
    for (const CommandRow& row : table.rows) {
        request += "<" + std::string(row.name) + "/>";
    }
    return request + "</" + std::string(table.root) + ">";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    std::string_view soap;
    ClassifyReply("127.0.0.1", 80, text, soap);
    CEchoSession session(text);
    std::string result;
    RunGet(session, AllCommands(kGetCommands));
    RunSet(session, AllCommands(kSetCommands), result);
    ParsePullMessagesFault(text, nullptr);
    TransGetSystemDateAndTimeForAuthentication(text, result);
    PtzRanges ranges;
    ReadPtzRanges(text, ranges);

    BuildSnapshotRequest(ParseSnapshotAddress(text), {"user", "password"},
                         ReadSnapshotHeader(text).challenge.value_or(HttpChallenge{}));
    DecodeActiveCells(text, 22, 18);

    MessageFrame frame;
    if (CutMessage(text, frame) == MessageState::kComplete) {
        ReadNotify(text.substr(frame.headerSize, frame.bodySize));
        BuildEmptyReply(RequestPath(text.substr(0, frame.headerSize)));
    }
    ReadNotify(text);
    ReadSubscription(text);
    ReadPull(text);
    FirstRequest(session, PullDocument({std::string(text)}));

    RunGet(session, text);
    RunSet(session, text, result);
    CXmlTransform envelope(text);
    AddSecurityHeader({"user", "password"}, envelope);
    return 0;
}
