#include <gtest/gtest.h>

#include <set>

#include "commands/CommandTable.h"

namespace onvif_client {
namespace {

/// Every row of both tables is one that a request can reach and a device can understand.
TEST(CommandTables, EveryRowIsComplete) {
    const std::set<std::string_view> keys = {"device",  "media",  "media2",    "ptz",
                                             "imaging", "events", "analytics", "deviceIO"};
    const CXmlDocument request("<command><index>0</index></command>");
    const MediaProfile profile{"P", "S", "V", "E", "N", "Z", "A"};
    for (const CommandTable* table : {&kGetCommands, &kSetCommands}) {
        std::set<std::string_view> names;
        for (const CommandRow& row : table->rows) {
            EXPECT_TRUE(names.insert(row.name).second) << row.name << " stands twice";
            EXPECT_EQ(FindCommand(*table, row.name), &row);
            EXPECT_NE(row.answerLocally != nullptr, row.steps[0].build != nullptr) << row.name;
            std::vector<CommandStep> steps(row.steps.begin(), row.steps.end());
            if (row.media2 != nullptr) {
                steps.insert(steps.end(), row.media2->begin(), row.media2->end());
            }
            for (const CommandStep& step : steps) {
                if (step.build == nullptr) {
                    continue;
                }
                EXPECT_TRUE(keys.contains(step.serviceKey)) << row.name << step.serviceKey;
                CXmlDocument envelope;
                ASSERT_TRUE(envelope.Load(step.build({request.Root(), &profile, request.Root()})))
                    << row.name;
                for (const char* path :
                     {"s:Envelope/s:Header/wsse:Security/wsse:UsernameToken/wsse:Username",
                      "s:Envelope/s:Header/wsse:Security/wsse:UsernameToken/wsse:Password",
                      "s:Envelope/s:Header/wsse:Security/wsse:UsernameToken/wsse:Nonce",
                      "s:Envelope/s:Header/wsse:Security/wsse:UsernameToken/wsu:Created"}) {
                    EXPECT_NE(envelope.Find(path), nullptr) << row.name << " lacks " << path;
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
