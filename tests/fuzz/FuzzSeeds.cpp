// Writes what the fuzz targets start from: fuzz_seeds DOCUMENT FOLDER makes FOLDER/results,
// requests, http, alarms and session, and a dictionary beside each. The requests are the examples
// of the document (docs/commands.md); the replies are what simulated cameras answer to them.
#include <camera_sim/CameraSim.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "FuzzInput.h"
#include "client/HttpClient.h"
#include "events/EventDocuments.h"
#include "platform/Wirelink.h"
#include "support/RawClient.h"

namespace {

using namespace onvif_client;
using namespace onvif_client::fuzz;

/// Seeds of one target, and the words in them.
class CCorpus {
 public:
    CCorpus(const std::string& folder, const std::string& name) : path_(folder + "/" + name) {
        std::filesystem::create_directories(path_);
    }
    ~CCorpus() {
        std::ofstream dictionary(path_ + ".dict");
        for (const std::string& word : words_) {
            dictionary << "\"" << word << "\"\n";
        }
    }
    CCorpus(const CCorpus&) = delete;
    CCorpus& operator=(const CCorpus&) = delete;

    void Add(std::string_view text, std::size_t choice) {
        std::ofstream(path_ + "/" + std::to_string(count_++), std::ios::binary)
            << text << static_cast<char>(choice);
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t size =
                std::min(text.find_first_not_of(kLetters, at), text.size()) - at;
            const std::string word(text.substr(at, size));
            if (size >= 2 && size <= 40) {
                words_.insert(word);
                if (at > 0 && text[at - 1] == '<') {
                    std::string element = "<";
                    element.append(word).append(">1</").append(word).append(">");
                    words_.insert(std::move(element));
                }
            }
            at += size + 1;
        }
    }

 private:
    static constexpr const char* kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789:-_.";

    const std::string path_;
    std::size_t count_ = 0;
    std::set<std::string> words_;
};

/// What the exchanges since the last look gave.
std::vector<std::string> heard;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

std::vector<std::string> Examples(const char* document) {
    std::ifstream stream(document);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    const std::string fence = "```xml\n";
    std::vector<std::string> examples;
    for (auto at = text.find(fence); at != std::string::npos; at = text.find(fence, at)) {
        at += fence.size();
        if (text[at + 1] == 'G' || text[at + 1] == 'S') {
            examples.push_back(text.substr(at, text.find("```", at) - at));
        }
    }
    return examples;
}

std::string AllCommands(const CommandTable& table) {
    std::string request = "<" + std::string(table.root) + ">";
    for (const CommandRow& row : table.rows) {
        request += row.fetchPicture != nullptr ? "" : "<" + std::string(row.name) + "/>";
    }
    return request + "</" + std::string(table.root) + ">";
}

/// Every reply to a step's request goes to all steps of its command, a reply of the login to the
/// readers.
void AddReplies(const std::string& request, CCorpus& results, CCorpus& http, CCorpus& alarms) {
    const std::vector<ResultStep> steps = ResultSteps();
    const std::set<std::string> replies(heard.begin(), heard.end());
    heard.clear();
    for (const std::string& reply : replies) {
        const std::size_t start = std::min(reply.find("<?xml"), reply.size());
        const std::string soap = reply.substr(start);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            if (request.find("<" + std::string(steps[i].row->name)) != std::string::npos) {
                results.Add(soap, i);
            }
        }
        for (std::size_t i = 0; request.empty() && i < 4; ++i) {
            results.Add(soap, steps.size() + i);
        }
        http.Add(request.empty() ? reply : reply.substr(0, start), 0);
        if (request.find("<pullMessages") != std::string::npos) {
            alarms.Add(reply, 0);
        }
    }
}

void AskCamera(const camera_sim::CameraOptions& options, const std::vector<std::string>& examples,
               CCorpus& results, CCorpus& http, CCorpus& alarms) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add(options);
    CHttpClient client("admin", "camera-1", "127.0.0.1", camera.Port());
    client.Login();
    AddReplies({}, results, http, alarms);
    const auto ask = [&](const std::string& request) {
        ResponseBuffer response;
        std::string result;
        request.find("<Get") == 0 ? client.Get(request, response) : client.Set(request, result);
        AddReplies(request, results, http, alarms);
        alarms.Add(result, 2);
    };
    camera.Change([](auto& state) {
        state.media.videoSources.front().motion = true;
        state.inputs.front().active = true;
    });
    ask("<Set><createPullPointSubscription/></Set>");
    for (const std::string& example : examples) {
        ask(example);
    }
    camera.Inject("*", {.kind = camera_sim::Fault::Kind::kSoapFault,
                        .soapFault = {.subcode = "InvalidArgVal", .reason = "no"}});
    ask(AllCommands(kGetCommands));
    ask(AllCommands(kSetCommands));
}

/// Whole sessions in the order of fuzz_session.
void AddSessions(const camera_sim::CameraOptions& options, CCorpus& sessions) {
    camera_sim::CCameraHost host;
    const std::uint16_t port = host.Add(options).Port();
    const std::size_t rows = std::max(kGetCommands.rows.size(), kSetCommands.rows.size());
    for (std::size_t i = 0; i < rows; ++i) {
        heard.clear();
        CHttpClient client("admin", "camera-1", "127.0.0.1", port);
        client.Login();
        ResponseBuffer response;
        std::string result;
        client.Get(OneCommand(kGetCommands, i), response);
        client.Set(OneCommand(kSetCommands, i), result);
        heard.emplace_back("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\npixels");
        client.Set("<Set><unsubscribe/></Set>", result);
        client.Set("<Set><createPullPointSubscription/></Set>", result);
        const std::string pull = PullDocument(
            {.address = ReadSubscription(result).value_or(SubscriptionAnswer{}).address,
             .timeout = "PT1S"});
        client.Get(pull, response);
        client.Get(pull, response);
        heard.emplace_back("POST /subscription_0 HTTP/1.1\r\nContent-Length: 4\r\n\r\n<a/>");
        std::string text;
        for (const std::string& each : std::exchange(heard, {})) {
            text += each + kBetweenReplies;
        }
        sessions.Add(text, i);
    }
}

void AddTexts(CCorpus& results, CCorpus& http, CCorpus& alarms) {
    results.Add("0P8A8A==", ResultSteps().size() + 5);
    for (const char* address :
         {"http://127.0.0.1:8080/onvif/snapshot?x=1", "https://u:p@h", "/p"}) {
        http.Add(address, 1);
    }
    const std::string refused =
        "HTTP/1.1 401 Unauthorized\r\nContent-Length: 0\r\nWWW-Authenticate: ";
    for (const char* challenge :
         {"Digest realm=\"a\", nonce=\"b\",\r\n qop=\"auth,auth-int\", opaque=\"c\", stale=FALSE",
          "Basic realm=\"a\"", "Bearer"}) {
        http.Add(refused + challenge + "\r\n\r\n", 2);
        http.Add(refused + challenge + "\r\n\r\n", 3);
    }
    http.Add("HTTP/1.1 200 OK\r\nContent-Type: image/jpeg\r\nContent-Length: 4\r\n\r\npixels", 3);
    http.Add("HTTP/1.1 200 OK\r\n\r\npixels", 3);
    http.Add("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4;x\r\npixe\r\n0\r\n\r\n", 4);
    const std::string notify =
        "<?xml version=\"1.0\"?><s:Envelope><s:Header><ad:To>http://h:6699/subscription_1</ad:To>"
        "</s:Header><s:Body><wsn:Notify><wsn:NotificationMessage><wsn:SubscriptionReference>"
        "<ad:Address>http://h/s</ad:Address></wsn:SubscriptionReference><wsn:Topic>"
        "tns1:RuleEngine/CellMotionDetector/Motion</wsn:Topic><wsn:Message><tt:Message><tt:Data>"
        "<tt:SimpleItem Name=\"IsMotion\" Value=\"true\"/></tt:Data></tt:Message></wsn:Message>"
        "</wsn:NotificationMessage></wsn:Notify></s:Body></s:Envelope>";
    alarms.Add("POST /subscription_1 HTTP/1.1\r\nHost: h\r\nContent-Length: " +
                   std::to_string(notify.size()) + "\r\n\r\n" + notify,
               1);
    alarms.Add("POST /a.png HTTP/1.1\r\nContent-Length: 2\r\n\r\nhi", 1);
}

}  // namespace

/// In the place of the socket layer's: keeps the reply.
int onvif_client::WIRELINK_SimpleClientComm(const char*, unsigned short port, const char* request,
                                            unsigned int requestLength, char* replyBuffer,
                                            unsigned int replyCapacity, const char*, unsigned int,
                                            ExchangeEnd*) {
    const client_test::CRawClient connection(port);
    connection.Send({request, requestLength});
    heard.push_back(connection.ReadToEnd());
    return static_cast<int>(heard.back().copy(replyBuffer, replyCapacity));
}

/// No session here has extensions.
bool onvif_client::WIRELINK_ObservedClientComm(const char*, unsigned short, const char*,
                                               unsigned int, CReplyObserver*, unsigned int,
                                               ExchangeEnd*, KeptUse*) {
    return false;
}

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    WIRELINK_Initial(1, 1, nullptr, 0);
    CCorpus results(argv[2], "results");
    CCorpus requests(argv[2], "requests");
    CCorpus http(argv[2], "http");
    CCorpus alarms(argv[2], "alarms");
    CCorpus sessions(argv[2], "session");
    const std::vector<std::string> examples = Examples(argv[1]);
    for (const std::string& request : examples) {
        // Both media services; then with extensions, and a device that shows what it has.
        for (const std::size_t choice : {0U, 1U, 36U, 37U}) {
            requests.Add(request, choice);
        }
    }
    requests.Add(AllCommands(kGetCommands), 0);
    requests.Add(AllCommands(kSetCommands), 2);
    for (const camera_sim::CameraOptions& options :
         {camera_sim::CameraOptions{
              .senderFaultStatus = 500, .topicStyle = "qualified", .subscriptionStyle = "id"},
          camera_sim::CameraOptions{
              .model = "fixed", .senderFaultStatus = 500, .prefixStyle = "s", .prettyXml = true}}) {
        AskCamera(options, examples, results, http, alarms);
        AddSessions(options, sessions);
    }
    for (const std::string& topics : camera_sim::TopicStyleNames()) {
        AskCamera({.model = "fixed", .topicStyle = topics}, {"<Get><pullMessages/></Get>"}, results,
                  http, alarms);
    }
    AddTexts(results, http, alarms);
    WIRELINK_Quit();
    return examples.empty() ? 1 : 0;
}
