#include <csignal>
#include <set>

#include "support/PeerSocket.h"
#include "system/Tool.h"

namespace client_test {
namespace {

using Texts = std::vector<std::string>;

/// What is shown where all probes, twice three, get these texts, with their identifier for "@".
std::string FoundAmong(Texts (*answers)(std::size_t probe), const std::string& options) {
    const CPeerSocket peer(CPeerSocket::Kind::kDatagrams);
    peer.Bind();
    CRunningTool tool("discover --timeout 100 --to " + LocalAddress(peer.Port()) + options, "");
    std::set<std::string> probes;
    for (std::size_t i = 0; i < 6; ++i) {
        std::uint16_t port = 0;
        const std::string probe = peer.ReceiveFrom(port);
        const std::string id = probe.substr(std::min(probe.find("urn:uuid:"), probe.size()), 45);
        probes.insert(probe);
        for (std::string& text : answers(i)) {
            peer.SendTo(port, text.replace(std::min(text.find('@'), text.size()), 1, id));
        }
    }
    EXPECT_EQ(probes.size(), 2U) << "they are repeated as they were";
    EXPECT_TRUE(tool.Signal(SIGINT));
    Outcome outcome = tool.End();
    EXPECT_EQ(outcome.code, 0);
    return outcome.output;
}

std::string Match(const std::string& endpoint, const std::string& rest = "") {
    return "<ProbeMatch><q:EndpointReference><Address>" + endpoint +
           "</Address></q:EndpointReference>" + rest + "</ProbeMatch>";
}

std::string Answer(const std::string& matches, const std::string& relatesTo = "@") {
    return "<s:Envelope><s:Header><RelatesTo> " + relatesTo + "\n</RelatesTo></s:Header><s:Body>" +
           "<ProbeMatches>" + matches + "</ProbeMatches></s:Body></s:Envelope>";
}

Texts OddAnswers(std::size_t) {
    std::string deep;
    for (int i = 0; i < 7000; ++i) {
        deep.insert(0, "<a>").append("</a>");
    }
    const std::string scope = " ONVIF://www.onvif.org/";
    const std::string name = "<Scopes>" + scope + "name/G%1B%zz/1" + scope;
    return {std::string(60000, '<'),
            Answer(Match("urn:other"), "urn:uuid:1"),
            Answer(Match("")),
            "<a>" + Answer(Match("urn:inner")) + "</a>",
            Answer(Match("urn:deep", deep)),
            Answer(Match("urn:b", "<d:Types>q:Device</d:Types>" + name + "location/Hall" + scope +
                                      "location/2%20b</Scopes><XAddrs>https://192.0.2.1 "
                                      "http://169.254.1.1 http://192.0.2.20:8000/x</XAddrs>") +
                   Match("urn:c", "<XAddrs>http://192.0.2.300 http://[fe80::1]</XAddrs>")),
            Answer(Match("urn:b", "<XAddrs>http://192.0.2.9</XAddrs>") +
                   Match("urn:\x9B", name + std::string(30000, 'x') +
                                         "</Scopes><XAddrs>HTTP://192.0.2.3</XAddrs>"))};
}

TEST(Discover, ShowsEveryDeviceOnceAndWhatIsNoAnswerNever) {
    EXPECT_EQ(FoundAmong(OddAnswers, ""),
              "  ADDRESS          NAME        HARDWARE  LOCATION   TYPES   ENDPOINT\n"
              "  192.0.2.3:80     G\\x1B%zz/1  -         -          -       urn:\\x9B\n"
              "  192.0.2.20:8000  G\\x1B%zz/1  -         Hall, 2 b  Device  urn:b\n"
              "  -                -           -         -          -       urn:c\n");
    EXPECT_EQ(FoundAmong(OddAnswers, " --format hosts"),
              "[G-zz-1]\naddress = \"192.0.2.3:80\"\n\n"
              "[G-zz-1-2]\naddress = \"192.0.2.20:8000\"\n");
    const std::string json = FoundAmong(OddAnswers, " --format json");
    EXPECT_NE(json.find(R"({"camera":"192.0.2.20:8000","endpoint":"urn:b","addresses":[)"
                        R"("https://192.0.2.1","http://169.254.1.1","http://192.0.2.20:8000/x",)"
                        R"("http://192.0.2.9"],"name":"G\u001b%zz/1","hardware":null,"location":)"),
              std::string::npos);
}

Texts ManyAnswers(std::size_t probe) {
    Texts answers(4);
    for (std::size_t i = 0; i < 2000; ++i) {
        answers[i / 500] += Match(std::to_string(probe * 2000 + i));
    }
    return {Answer(answers[0]), Answer(answers[1]), Answer(answers[2]), Answer(answers[3])};
}

TEST(Discover, TakesTenThousandDevicesAtMostAndEndsWithoutAny) {
    const std::string many = FoundAmong(ManyAnswers, " --format json");
    EXPECT_EQ(std::count(many.begin(), many.end(), '\n'), 10000);
    ExpectRuns({{"discover --timeout 0 --to 127.0.0.1:1", 4, "no device"},
                {"discover --to 127.0.0.1:0", 2, "HOST:PORT"},
                {"discover --interface no-such", 2, "no-such"}});
}

}  // namespace
}  // namespace client_test
