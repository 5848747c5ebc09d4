#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <random>

#include "commands/GetCmd.h"
#include "support/Outline.h"
#include "transform/Conversions.h"

namespace onvif_client {
namespace {

/// A session without sockets: answers with the statuses it is given and notes what it was asked.
class CScriptedSession : public ICommandSession {
 public:
    std::shared_ptr<const ProfileList> Profiles() const override { return profiles; }
    void ReplaceProfiles(ProfileList list) override {
        profiles = std::make_shared<ProfileList>(std::move(list));
    }
    ServiceTable Services() const override { return {{"device", "d"}, {"ptz", ""}}; }
    bool HasMedia2() const override { return false; }
    CExtensions Extensions() const override { return extensions; }
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
    CExtensions extensions;
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
    const char* outcome;  // g: Get succeeds, d: it has a document, s: Set succeeds
    const char* log;      // what was sent
    Statuses statuses = {};
    const char* getLog = nullptr;  // the same for Get, when it differs
};

TEST(Dispatch, WalksTheCommandsByTheirRules) {
    const DispatchCase cases[] = {
        {"<one/><two/>", "gds", "one@device two@device "},
        {"", "--s", ""},
        {"<unknown/><one/>", "--s", "one@device ", {}, ""},
        {"<one/><unknown/><two/>", "gds", "one@device two@device "},
        {"<One/>", "--s", ""},
        {"<one/><two/>", "---", "one@device ", {{"one", 5}}},
        {"<one/><two/>", "---", "one@device two@device ", {{"two", 401}}},
        {"<one/><two/>", "gds", "one@device two@device ", {{"one", 2}}},
        {"<one/><two/>", "-ds", "one@device two@device ", {{"two", 2}}},
        {"<silent/>", "g-s", "one@ptz "},
        {"<clock/>", "g-s", "one*@device "},
        {"<unlessFailed/>", "g-s", "one@a two@b ", {{"one", 2}}},
        {"<unlessFailed/>", "---", "one@a ", {{"one", 7}}},
        {"<unlessFailed/>", "---", "one@a two@b ", {{"two", 4}}},
        {"<onSuccess/><local/>", "gds", "one@a ", {{"one", 2}}},
        {"<onSuccess/>", "---", "one@a ", {{"one", 5}}},
        {"<onSuccess/>", "--s", "one@a two@b ", {{"two", 2}}},
        {"<optional><x/></optional>", "g-s", "one@a two@b ", {{"one", 5}}},
        {"<optional/>", "g-s", "two@b "},
        {"<optional/><optional><x/></optional><optional/>", "g-s", "two@b one@a two@b two@b "},
        {"<indexed><index>1</index></indexed>", "g-s",
         "index=1;profiletoken=P1;multicast=false;transport=tcp;@m "},
        {"<indexed><index>2</index></indexed>", "--s", ""},
        {"<indexed><index>-1</index></indexed>", "--s", ""},
        {"<indexed/>", "--s", ""},
        {"<indexed><index>one</index></indexed>", "--s", ""},
        {"<one/><indexed/>", "gds", "one@device "},
        {"<first/>", "g-s", "profileToken=P0;@m "},
        {"<source/>", "g-s", "videoSourcetoken=S0;@m "},
        {"<needsProfile><x>1</x></needsProfile>", "g-s", "x=1;@m "},
        {"<media/>", "g-s", "one@media "},
        {"<indexes><index>1</index><index>9</index><index>0</index></indexes>", "g-s",
         "P1@m P0@m "},
        {"<indexes><index>1</index><index>0</index></indexes>", "--s", "P1@m ", {{"P1", 2}}},
        {"<indexes><index>7</index></indexes><one/>", "gds", "one@device "},
        {"<indexes/>", "--s", ""},
        {"<items><item><index>1</index></item><item/><item><index>0</index></item></items>", "g-s",
         "P1E1@m P0E0@m "},
        {"<local/>", "gds", ""},
    };
    for (const DispatchCase& each : cases) {
        CScriptedSession session;
        session.statuses = each.statuses;
        const std::string commands = each.commands;
        const GetAnswer answer = RunGet(session, "<Get>" + commands + "</Get>", kGetTable);
        EXPECT_EQ(session.log, each.getLog == nullptr ? each.log : each.getLog) << commands;
        session.log.clear();
        std::string result;
        const bool set = RunSet(session, "<Set>" + commands + "</Set>", result, kSetTable);
        EXPECT_EQ(std::string(answer.success ? "g" : "-") + (answer.document.empty() ? "-" : "d") +
                      (set ? "s" : "-"),
                  each.outcome)
            << commands;
        EXPECT_EQ(session.log, each.log) << commands;
    }
}

TEST(Dispatch, CommandsOfOneNameReadTheFirstOnesParametersOrTheirOwn) {
    const std::pair<const char*, const char*> cases[] = {
        {"<needsProfile><x>1</x></needsProfile><needsProfile><y>2</y></needsProfile>",
         "x=1;@m y=2;@m "},
        {"<indexed><index>1</index></indexed><indexed><index>0</index></indexed>",
         "index=1;profiletoken=P1;multicast=false;transport=tcp;@m "
         "index=0;profiletoken=P0;multicast=false;transport=tcp;@m "},
        {"<items><item><index>1</index></item></items><items><item><index>0</index></item></items>",
         "P1E1@m P0E0@m "},
    };
    for (const auto& [commands, own] : cases) {
        for (const CommandTable& table : {kGetTable, kSetTable}) {
            const std::string root(table.root);
            std::string request = "<" + root + ">";
            request.append(commands).append("</").append(root).append(">");
            const auto run = [&](CExtensions extensions) {
                CScriptedSession session;
                session.extensions = extensions;
                std::string result;
                root == "Get" ? void(RunGet(session, request, table))
                              : void(RunSet(session, request, result, table));
                return session.log;
            };
            EXPECT_EQ(run({Extension::kOwnParameters}), own);
            const std::string first = std::string(own).substr(0, std::string(own).find("@m ") + 3);
            EXPECT_EQ(run({}), first + first);
        }
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

/// A device by what its media services answer; one that is not here is not there.
class CMediaSession final : public CScriptedSession {
 public:
    CExtensions Extensions() const override { return extensions; }
    ServiceTable Services() const override { return services; }
    bool HasMedia2() const override { return services.contains("media2"); }
    Reply Exchange(const SignedRequest& request) override {
        log += std::string(request.serviceKey) + " ";
        const auto found = services.find(request.serviceKey);
        const std::string outline = found == services.end() ? "Fault" : found->second;
        const int failed = ToInt(outline);
        return {failed, failed != 0 ? "" : client_test::Xml("Envelope{Body{" + outline + "}}")};
    }
    CExtensions extensions;
    ServiceTable services;
};

TEST(Dispatch, TheOtherMediaServiceIsAskedWhereOneDoesNotServe) {
    const std::string profiles = "<profiles/>";
    const std::string stream = "<streamURI><index>0</index></streamURI>";
    const std::string list = "GetProfilesResponse{Profiles(token=found)}";
    const std::string uri10 = "GetStreamUriResponse{MediaUri{Uri=rtsp://found}}";
    const std::string uri20 = "GetStreamUriResponse{Uri=rtsp://found}";
    const std::string picture = "<snapshotURI><index>0</index></snapshotURI>";
    const std::string shot = "GetSnapshotUriResponse{Uri=http://found}";
    const std::string relays = "<alarmout/>";
    const std::string relay = "GetRelayOutputsResponse{RelayOutputs(token=found)}";
    const CExtensions both = {Extension::kMediaFallback, Extension::kStandardRequests};
    const struct {
        std::string command;
        ServiceTable services;  // and what they answer: an outline, or a status
        std::string log, literalLog;
        bool found, foundLiterally = false;
    } cases[] = {
        {profiles, {{"media", "Fault"}, {"media2", list}}, "media2 ", "media2 ", true, true},
        {profiles, {{"media", list}, {"media2", "Fault"}}, "media2 media ", "media2 ", true},
        {profiles, {{"media", list}, {"media2", "5"}}, "media2 media ", "media2 ", true},
        {profiles, {{"media", list}, {"media2", "x"}}, "media2 media ", "media2 ", true},
        {profiles, {{"media", list}, {"media2", "401"}}, "media2 ", "media2 ", false},
        {profiles, {{"media2", "Fault"}}, "media2 ", "media2 ", false},
        {profiles, {{"media", list}}, "media ", "media ", true, true},
        {stream, {{"media", uri10}, {"media2", uri20}}, "media ", "media ", true, true},
        {stream, {{"media", "Fault"}, {"media2", uri20}}, "media media2 ", "media ", true},
        {stream, {{"media", "7"}, {"media2", uri20}}, "media media2 ", "media ", true},
        {stream, {{"media2", uri20}}, "media2 ", "media ", true},
        {stream, {{"media", "Fault"}}, "media ", "media ", false},
        {picture, {{"media", "Fault"}, {"media2", shot}}, "media media2 ", "media ", true},
        // Beside it, with standard-requests: a device without an answer has no other service.
        {relays, {{"device", "Fault"}, {"deviceIO", relay}}, "device deviceIO ", "device ", true},
        {relays, {{"device", "5"}, {"deviceIO", relay}}, "device ", "device ", false},
    };
    for (const auto& each : cases) {
        for (const bool literal : {false, true}) {
            CMediaSession session;
            session.services = each.services;
            session.extensions = literal ? CExtensions() : both;
            const GetAnswer answer = RunGet(session, "<Get>" + each.command + "</Get>");
            EXPECT_EQ(session.log, literal ? each.literalLog : each.log) << each.command;
            EXPECT_EQ(answer.success && (answer.picture.size > 0 ||
                                         answer.document.find("found") != std::string::npos),
                      literal ? each.foundLiterally : each.found)
                << each.command << each.log << answer.document;
        }
    }
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
    const std::string pattern = client_test::Xml(
        "Envelope{Body{GetDeviceInformationResponse{Manufacturer=@ Model=@} "
        "GetNetworkInterfacesResponse{NetworkInterfaces(token=@){IPv4{Config{DHCP=false "
        "Manual{Address=@}}}}} GetNetworkDefaultGatewayResponse{NetworkGateway{IPv4Address=@}} "
        "SetNetworkInterfacesResponse{RebootNeeded=@} "
        "GetPresetsResponse{Preset(token=@){Name=@}}}}");
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
    CScriptedSession session;
    session.soap = [] { return SoapWith([] { return "a&#13;b"; }); };
    std::string result;
    EXPECT_TRUE(RunSet(session, "<Set><ipv4/><ipv4/><ipv4/></Set>", result));
    EXPECT_NE(result.find("<status>success<rebootNeeded>a\nb</rebootNeeded>\n            "
                          "<rebootNeeded>a\nb</rebootNeeded>\n            "
                          "<rebootNeeded>a\rb</rebootNeeded>\n"),
              std::string::npos)
        << result;
}

TEST(Dispatch, GivesTheFirstRequestOfWhatBeginsWithOne) {
    const std::pair<const char*, const char*> cases[] = {
        {"<two/><one/>", "two"}, {"<indexed><index>1</index></indexed>", "none"},
        {"<unknown/>", "none"},  {"<indexes><index>1</index></indexes>", "none"},
        {"<local/>", "none"},    {"<items><item><index>1</index></item></items>", "none"},
    };
    CScriptedSession session;
    session.profiles = std::make_shared<ProfileList>();
    for (const auto& [commands, envelope] : cases) {
        const auto first =
            FirstRequest(session, "<Get>" + std::string(commands) + "</Get>", kGetTable);
        EXPECT_EQ(first ? first->envelope : "none", envelope) << commands;
    }
}

}  // namespace
}  // namespace onvif_client
