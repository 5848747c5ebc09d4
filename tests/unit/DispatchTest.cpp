#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <random>

#include "commands/GetCmd.h"

namespace onvif_client {
namespace {

/// A session without sockets: answers with the statuses it is given and notes what it was asked.
class CScriptedSession final : public ICommandSession {
 public:
    std::shared_ptr<const ProfileList> Profiles() const override { return profiles; }
    void ReplaceProfiles(ProfileList list) override {
        profiles = std::make_shared<ProfileList>(std::move(list));
    }
    ServiceTable Services() const override { return {{"device", "d"}, {"ptz", ""}}; }
    bool HasMedia2() const override { return media2; }
    PtzRanges SpeedRanges() const override { return {}; }
    int DownloadPicture(const std::string& address, ResponseBuffer& picture) override {
        picture.data = std::make_unique<char[]>(1);
        picture.size = 1;
        return address.empty() ? status::kNotSent : status::kSuccess;
    }
    Reply Exchange(const SignedRequest& request) override {
        log += std::string(request.envelope) + (request.clock == SigningClock::kDevice ? "*" : "") +
               "@" + std::string(request.serviceKey) + " ";
        const auto found = statuses.find(std::string(request.envelope));
        return {found == statuses.end() ? 0 : found->second, soap()};
    }

    std::shared_ptr<const ProfileList> profiles = std::make_shared<ProfileList>(
        ProfileList{{"P0", "S0", "V0", "E0", "", "", ""}, {"P1", "S1", "V1", "E1", "", "", ""}});
    bool media2 = false;
    std::map<std::string, int> statuses;
    std::function<std::string()> soap = [] { return "<Envelope/>"; };
    std::string log;
};

// Builders that show what they were given.
std::string BuildOne(const CommandRequest&) {
    return "one";
}
std::string BuildTwo(const CommandRequest&) {
    return "two";
}
std::string BuildChildren(const CommandRequest& request) {
    std::string built;
    for (const auto* each = request.command->FirstChildElement(); each != nullptr;
         each = each->NextSiblingElement()) {
        built += std::string(each->Name()) + "=" + std::string(TextOf(each)) + ";";
    }
    return built;
}
std::string BuildChosen(const CommandRequest& request) {
    return request.profile->token + std::string(TextAt(request.item, "encodeToken"));
}

void AnswerLocally(const ICommandSession&, CResultDocument& result) {
    result.AddCommand("Response", "local");
}

int FetchPicture(ICommandSession&, const std::string& result, ResponseBuffer& picture) {
    picture.data = std::make_unique<char[]>(3);
    std::memcpy(picture.data.get(), "pic", 3);
    picture.size = 3;
    return result.find("two") == std::string::npos ? 4 : 0;
}

constexpr ResultFrame kOneResult = {"GetResponse", "one"};
constexpr ResultFrame kTwoResult = {"GetResponse", "two"};
constexpr FixedChild kStreamChildren[] = {{"multicast", "false"}, {"transport", "tcp"}};
constexpr CommandSteps kSecondMedia = {{{.build = BuildTwo, .serviceKey = "media2"}}};

constexpr CommandRow kRows[] = {
    {.name = "one", .steps = {{{BuildOne, "device", &kOneResult}}}},
    {.name = "two", .steps = {{{BuildTwo, "device", &kTwoResult}}}},
    {.name = "silent", .steps = {{{BuildOne, "ptz"}}}},
    {.name = "clock",
     .steps = {{{.build = BuildOne, .serviceKey = "device", .clock = SigningClock::kDevice}}}},
    {.name = "unlessFailed", .steps = {{{BuildOne, "a"}, {BuildTwo, "b"}}}},
    {.name = "onSuccess",
     .steps = {{{.build = BuildOne, .serviceKey = "a", .goOn = GoOn::kOnSuccess},
                {BuildTwo, "b"}}}},
    {.name = "optional",
     .steps = {{{.build = BuildOne, .serviceKey = "a", .onlyWith = "x", .goOn = GoOn::kAlways},
                {BuildTwo, "b"}}}},
    {.name = "indexed",
     .completion = {TokenSource::kIndexedProfile, "profiletoken", kStreamChildren},
     .steps = {{{BuildChildren, "m"}}}},
    {.name = "first",
     .completion = {TokenSource::kFirstProfile, "profileToken"},
     .steps = {{{BuildChildren, "m"}}}},
    {.name = "source",
     .completion = {TokenSource::kFirstVideoSource, "videoSourcetoken"},
     .steps = {{{BuildChildren, "m"}}}},
    {.name = "needsProfile",
     .completion = {TokenSource::kFirstVideoSource},
     .steps = {{{BuildChildren, "m"}}}},
    {.name = "media", .steps = {{{BuildOne, "media"}}}, .media2 = &kSecondMedia},
    {.name = "indexes", .steps = {{{BuildChosen, "m"}}}, .loop = ProfileLoop::kIndexes},
    {.name = "items", .steps = {{{BuildChosen, "m"}}}, .loop = ProfileLoop::kItems},
    {.name = "local", .answerLocally = AnswerLocally},
    {.name = "picture",
     .steps = {{{BuildTwo, "device", &kTwoResult}}},
     .fetchPicture = FetchPicture},
};
constexpr CommandTable kGetTable = {"Get", kRows};
constexpr CommandTable kSetTable = {"Set", kRows};

using Statuses = std::map<std::string, int>;

struct DispatchCase {
    const char* commands;
    Statuses statuses;
    bool getSucceeds;
    bool hasDocument;
    bool setSucceeds;
    const char* log;               // what was sent
    const char* getLog = nullptr;  // the same for Get, when it differs
};

TEST(Dispatch, WalksTheCommandsByTheirRules) {
    const DispatchCase cases[] = {
        {"<one/><two/>", {}, true, true, true, "one@device two@device "},
        {"", {}, false, false, true, ""},
        {"<unknown/><one/>", {}, false, false, true, "one@device ", ""},
        {"<one/><unknown/><two/>", {}, true, true, true, "one@device two@device "},
        {"<One/>", {}, false, false, true, ""},
        {"<one/><two/>", {{"one", 5}}, false, false, false, "one@device "},
        {"<one/><two/>", {{"two", 401}}, false, false, false, "one@device two@device "},
        {"<one/><two/>", {{"one", 2}}, true, true, true, "one@device two@device "},
        {"<one/><two/>", {{"two", 2}}, false, true, true, "one@device two@device "},
        {"<silent/>", {}, true, false, true, "one@ptz "},
        {"<clock/>", {}, true, false, true, "one*@device "},
        {"<unlessFailed/>", {{"one", 2}}, true, false, true, "one@a two@b "},
        {"<unlessFailed/>", {{"one", 7}}, false, false, false, "one@a "},
        {"<unlessFailed/>", {{"two", 4}}, false, false, false, "one@a two@b "},
        {"<onSuccess/><local/>", {{"one", 2}}, true, true, true, "one@a "},
        {"<onSuccess/>", {{"one", 5}}, false, false, false, "one@a "},
        {"<onSuccess/>", {{"two", 2}}, false, false, true, "one@a two@b "},
        {"<optional><x/></optional>", {{"one", 5}}, true, false, true, "one@a two@b "},
        {"<optional/>", {}, true, false, true, "two@b "},
        {"<optional/><optional><x/></optional><optional/>",
         {},
         true,
         false,
         true,
         "two@b one@a two@b two@b "},
        {"<indexed><index>1</index></indexed>",
         {},
         true,
         false,
         true,
         "index=1;profiletoken=P1;multicast=false;transport=tcp;@m "},
        {"<indexed><index>2</index></indexed>", {}, false, false, true, ""},
        {"<indexed><index>-1</index></indexed>", {}, false, false, true, ""},
        {"<indexed/>", {}, false, false, true, ""},
        {"<indexed><index>one</index></indexed>", {}, false, false, true, ""},
        {"<one/><indexed/>", {}, true, true, true, "one@device "},
        {"<first/>", {}, true, false, true, "profileToken=P0;@m "},
        {"<source/>", {}, true, false, true, "videoSourcetoken=S0;@m "},
        {"<needsProfile><x>1</x></needsProfile>", {}, true, false, true, "x=1;@m "},
        {"<media/>", {}, true, false, true, "one@media "},
        {"<indexes><index>1</index><index>9</index><index>0</index></indexes>",
         {},
         true,
         false,
         true,
         "P1@m P0@m "},
        {"<indexes><index>1</index><index>0</index></indexes>",
         {{"P1", 2}},
         false,
         false,
         true,
         "P1@m "},
        {"<indexes><index>7</index></indexes><one/>", {}, true, true, true, "one@device "},
        {"<indexes/>", {}, false, false, true, ""},
        {"<items><item><index>1</index></item><item/><item><index>0</index></item></items>",
         {},
         true,
         false,
         true,
         "P1E1@m P0E0@m "},
        {"<local/>", {}, true, true, true, ""},
    };
    for (const DispatchCase& each : cases) {
        CScriptedSession session;
        session.statuses = each.statuses;
        const GetAnswer answer =
            RunGet(session, "<Get>" + std::string(each.commands) + "</Get>", kGetTable);
        EXPECT_EQ(answer.success, each.getSucceeds) << each.commands;
        EXPECT_EQ(!answer.document.empty(), each.hasDocument) << each.commands;

        EXPECT_EQ(session.log, each.getLog == nullptr ? each.log : each.getLog) << each.commands;
        session.log.clear();
        std::string result;
        EXPECT_EQ(
            RunSet(session, "<Set>" + std::string(each.commands) + "</Set>", result, kSetTable),
            each.setSucceeds)
            << each.commands;
        EXPECT_EQ(session.log, each.log) << each.commands;
    }
}

TEST(Dispatch, UnreadableRequestsSendNothing) {
    for (const char* request : {"", "garbage", "<Get><one/>", "<get><one/></get>", "<a/>"}) {
        CScriptedSession session;
        EXPECT_FALSE(RunGet(session, request, kGetTable).success) << request;
        std::string result;
        EXPECT_TRUE(RunSet(session, request, result, kSetTable)) << request;
        EXPECT_EQ(session.log + result, "") << request;
    }
}

TEST(Dispatch, WithoutProfilesCompletedCommandsArePassedOver) {
    CScriptedSession session;
    session.profiles = std::make_shared<ProfileList>();
    EXPECT_TRUE(RunGet(session,
                       "<Get><one/><first/><indexes><index>0</index></indexes><source/>"
                       "<needsProfile/><two/></Get>",
                       kGetTable)
                    .success);
    EXPECT_EQ(session.log, "one@device two@device ");
    EXPECT_FALSE(RunGet(session, "<Get><first/></Get>", kGetTable).success);
}

TEST(Dispatch, DevicesWithMedia2GetTheOtherRequest) {
    CScriptedSession session;
    session.media2 = true;
    EXPECT_TRUE(RunGet(session, "<Get><media/></Get>", kGetTable).success);
    EXPECT_EQ(session.log, "two@media2 ");
}

TEST(Dispatch, APictureEndsTheRequest) {
    CScriptedSession session;
    const GetAnswer answer = RunGet(session, "<Get><one/><picture/><one/></Get>", kGetTable);
    EXPECT_TRUE(answer.success);
    EXPECT_EQ(answer.document, "");
    EXPECT_EQ(std::string(answer.picture.data.get(), 3), "pic");
    EXPECT_EQ(session.log, "one@device two@device ");
    session.statuses["two"] = 5;
    EXPECT_EQ(RunGet(session, "<Get><picture/></Get>", kGetTable).picture.size, 0);
}

/// A reply to every operation below, with @p value () in the place of each value.
std::string SoapWith(const std::function<std::string()>& value) {
    const std::string_view pattern =
        "<Envelope><Body><GetDeviceInformationResponse><Manufacturer>@</Manufacturer><Model>@"
        "</Model></GetDeviceInformationResponse><GetNetworkInterfacesResponse><NetworkInterfaces"
        " token='@'><IPv4><Config><DHCP>false</DHCP><Manual><Address>@</Address></Manual></Config>"
        "</IPv4></NetworkInterfaces></"
        "GetNetworkInterfacesResponse><GetNetworkDefaultGatewayResponse"
        "><NetworkGateway><IPv4Address>@</IPv4Address></NetworkGateway>"
        "</GetNetworkDefaultGatewayResponse><SetNetworkInterfacesResponse><RebootNeeded>@"
        "</RebootNeeded></SetNetworkInterfacesResponse><GetPresetsResponse><Preset "
        "token='@'><Name>@"
        "</Name></Preset></GetPresetsResponse></Body></Envelope>";
    std::string soap;
    for (const char each : pattern) {
        soap += each == '@' ? value() : std::string(1, each);
    }
    return soap;
}

/// Printing and parsing between two answers is what shows in a result: a further command that adds
/// nothing makes the same of it.
TEST(Dispatch, EveryAnswerPrintsAndParsesTheEarlierOnes) {
    const std::string commands[] = {"<devInfo/>", "<ipv4/>", "<presets/>", "<serviceUrl/>"};
    const std::string pieces[] = {"a",     " ",     "\t",     "\n",   "\r\n",   "&#13;",    "&#10;",
                                  "&#32;", "&amp;", "&copy;", "&lt;", "&quot;", "\x01\xFF", ""};
    const auto run = [&](unsigned int seed, const std::string& request) {
        CScriptedSession session;
        std::mt19937 random(seed);
        session.soap = [&] {
            return SoapWith([&] {
                std::string value;
                for (auto left = random() % 4; left != 0; --left) {
                    value += pieces[random() % std::size(pieces)];
                }
                return value;
            });
        };
        return RunGet(session, "<Get><streamCount/>" + request + "</Get>").document;
    };
    int changed = 0;
    for (unsigned int seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        std::string request;
        for (auto left = random() % 5; left != 0; --left) {
            request += commands[random() % std::size(commands)];
        }
        const std::string before = run(seed, request);
        const std::string behind = run(seed, request + "<streamCount/>");
        EXPECT_EQ(behind, CXmlDocument(before).Print()) << request;
        changed += behind == before ? 0 : 1;
    }
    EXPECT_GT(changed, 20);
}

TEST(Dispatch, OnlyTheLastAnswerIsAsItWasCopied) {
    const struct {
        const char* request;
        const char* result;  // without line ends and indentation
    } cases[] = {
        {"<Get><devInfo/><devInfo/></Get>",
         "<devInfo><status>success</status><manufacturer>a\nb</manufacturer><model/><status>success"
         "</status><manufacturer>a\rb</manufacturer><model> </model></devInfo>"},
        {"<Get><ipv4/></Get>",
         "<ipv4><status>success</status><item token=\"a\nb\"><dhcp>false</dhcp><ip/></item>"
         "<gatewayStatus><status>success</status></gatewayStatus><gateway>a\rb</gateway></ipv4>"},
        {"<Set><ipv4/><ipv4/><ipv4/></Set>",
         "<ipv4><status>success<rebootNeeded>a\nb</rebootNeeded><rebootNeeded>a\nb</rebootNeeded>"
         "<rebootNeeded>a\rb</rebootNeeded></status><status>success</status><status>success"
         "</status></ipv4>"},
    };
    for (const auto& each : cases) {
        CScriptedSession session;
        session.soap = [] {
            int count = 0;
            return SoapWith(
                [count]() mutable { return ++count == 2 || count == 4 ? "&#32;" : "a&#13;b"; });
        };
        std::string result = RunGet(session, each.request).document;
        if (result.empty()) {
            EXPECT_TRUE(RunSet(session, each.request, result));
        }
        result.erase(0, result.find("Response>") + std::string_view("Response>").size());
        result.erase(result.rfind("</"));
        for (auto at = result.find("\n    "); at != std::string::npos; at = result.find("\n    ")) {
            result.erase(at, 1);
            result.erase(at, result.find_first_not_of(' ', at) - at);
        }
        EXPECT_EQ(result, std::string(each.result) + "\n") << each.request;
    }
}

TEST(Dispatch, LocalAnswersComeFromTheSession) {
    CScriptedSession session;
    const GetAnswer answer =
        RunGet(session, "<Get><streamCount/><serviceUrl/><streamCount/></Get>");
    EXPECT_TRUE(answer.success);
    CXmlDocument document(answer.document);
    EXPECT_EQ(TextAt(document.Root(), "streamCount"), "2");
    EXPECT_EQ(NextSibling(document.Find("streamCount"), "streamCount"), nullptr);
    const XMLElement* item = document.Find("serviceUrl/item");
    EXPECT_STREQ(AttributeOf(item, "service"), "device");
    EXPECT_EQ(TextOf(item), "d");
    EXPECT_STREQ(AttributeOf(NextSibling(item, "item"), "service"), "ptz");
    EXPECT_EQ(session.log, "");
}

}  // namespace
}  // namespace onvif_client
