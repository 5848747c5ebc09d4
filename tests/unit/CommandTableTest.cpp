#include <gtest/gtest.h>

#include <map>
#include <set>

#include "commands/CommandTable.h"

namespace onvif_client {
namespace {

/// Every row of both tables is one that a request can reach and a device can understand.
TEST(CommandTables, EveryRowIsComplete) {
    const std::set<std::string_view> keys = {"device",  "media",  "media2",    "ptz",
                                             "imaging", "events", "analytics", "deviceIO"};
    const CXmlDocument request("<command><index>0</index></command>");
    using Room = std::pair<std::uint32_t, std::uint32_t>;  // of a reply: bytes, milliseconds
    const std::map<std::string_view, Room> rooms = {{"profiles", {46080, 8000}},
                                                    {"videoEncoderCfgOpts", {15360, 8000}},
                                                    {"profile", {10240, 8000}},
                                                    {"presets", {40960, 8000}},
                                                    {"renew", {8192, 2500}}};
    const MediaProfile profile{"P", "S", "V", "E", "N", "Z", "A"};
    for (const CommandTable* table : {&kGetCommands, &kSetCommands}) {
        std::set<std::string_view> names;
        for (const CommandRow& row : table->rows) {
            EXPECT_TRUE(names.insert(row.name).second) << row.name << " stands twice";
            EXPECT_EQ(FindCommand(*table, row.name), &row);
            EXPECT_NE(row.answerLocally != nullptr, row.steps[0].build != nullptr) << row.name;
            std::vector<CommandStep> steps(row.steps.begin(), row.steps.end());
            for (const CommandSteps* others : {row.media2, row.standard, row.standardMedia2}) {
                if (others != nullptr) {
                    steps.insert(steps.end(), others->begin(), others->end());
                }
            }
            for (std::size_t at = 0, own = steps.size(); at < own; ++at) {
                if (const CommandStep* other = steps[at].elsewhere.step) {
                    EXPECT_EQ(other->result == nullptr, steps[at].result == nullptr) << row.name;
                    steps.push_back(*other);
                }
            }
            for (const CommandStep& step : steps) {
                if (step.build == nullptr) {
                    continue;
                }
                EXPECT_TRUE(keys.contains(step.serviceKey)) << row.name << step.serviceKey;
                const auto room = rooms.find(row.name);
                EXPECT_TRUE(step.readsFirst ||
                            Room(step.replyCapacity, step.timeoutMs) ==
                                (room == rooms.end() ? Room(8192, 8000) : room->second))
                    << row.name;
                CXmlDocument envelope;
                ASSERT_TRUE(envelope.Load(step.build({request.Root(), &profile, request.Root()})))
                    << row.name;
                const XMLElement* token =
                    envelope.Find("s:Envelope/s:Header/wsse:Security/wsse:UsernameToken");
                for (const char* name :
                     {"wsse:Username", "wsse:Password", "wsse:Nonce", "wsu:Created"}) {
                    EXPECT_NE(FirstChild(token, name), nullptr) << row.name << " lacks " << name;
                }
                const XMLElement* body = envelope.Find("s:Envelope/s:Body");
                ASSERT_NE(body, nullptr) << row.name;
                EXPECT_NE(body->FirstChildElement(), nullptr) << row.name;
            }
        }
    }
    EXPECT_EQ(FindCommand(kGetCommands, "IPV4"), nullptr);
}

}  // namespace
}  // namespace onvif_client
