// The subcommands that send requests as they are: info, get, set and send.
#include <algorithm>
#include <memory>

#include "CommandLine.h"
#include "ResultOutput.h"
#include "documents/EncoderCodec.h"
#include "documents/RequestDocument.h"
#include "documents/RoundTrip.h"
#include "fleet/Fleet.h"
#include "vocabulary/RequestCheck.h"

namespace onvifctl {

namespace {

struct RequestArguments {
    std::string file;
    std::vector<std::string> words;
    bool any = false;
};

/// What is done at each camera that is meant, for its results.
ExitCode AtEach(const CommandLine& line, const std::function<ExitCode(CResultOutput&)>& act) {
    return CFleet(line).Do([&line, &act](const Session& session, std::size_t) {
        return ShowResults(session, line.format, act);
    });
}

ExitCode SendEach(const CommandLine& line, const std::string& request) {
    return AtEach(line, [&request](CResultOutput& output) { return output.Show(request); });
}

/// The document's Set requests without those that would tell the device what it has already.
std::vector<std::string> NeededRequests(const Session& session, const std::string& document) {
    RoundTrip wanted = SetRequestsFrom(document);
    for (const std::string& remark : wanted.remarks) {
        Tell(remark);
    }
    const std::string ask = PresentItemsRequest(document);
    if (ask.empty()) {
        return wanted.requests;
    }
    const std::string shown = SendOrFail(session, ask);
    const auto present = SetRequestsFrom(shown).requests;
    std::erase_if(wanted.requests, [&present](const std::string& request) {
        return std::find(present.begin(), present.end(), request) != present.end();
    });
    std::string profiles;
    for (std::string& request : wanted.requests) {
        if (!SetsEncoder(request)) {
            continue;
        }
        if (profiles.empty()) {
            profiles = SendOrFail(session, MakeRequest("Get", {"profiles"}));
        }
        if (const std::string kept = KeepCodec(request, shown, profiles); !kept.empty()) {
            Tell(kept);
        }
    }
    return wanted.requests;
}

ExitCode SetWhatWasGot(const CommandLine& line, const std::string& document) {
    SetRequestsFrom(document);  // a useless document is no reason for a login
    return AtEach(line, [&document](CResultOutput& output) {
        const auto requests = NeededRequests(output.Asked(), document);
        if (requests.empty()) {
            Tell("nothing to change");
        }
        ExitCode worst = ExitCode::kDone;
        for (const std::string& request : requests) {
            worst = Worse(worst, output.Show(request));
        }
        return worst;
    });
}

/// A command's name has neither dot nor slash.
bool NamesFile(const std::vector<std::string>& words) {
    return words.size() == 1 && words[0].find_first_of("-./") != std::string::npos &&
           !words[0].starts_with("--");
}

/// The request that words make. @p options: of the subcommand, for suggestions.
std::string RequestOf(const std::string& root, const RequestArguments& arguments,
                      const std::vector<std::string>& options) {
    std::string request = MakeRequest(root, arguments.words);
    if (!arguments.any) {
        CheckRequest(request, options);
    }
    return request;
}

ExitCode GetOrSet(const CommandLine& line, const std::string& root, RequestArguments arguments,
                  const std::vector<std::string>& options) {
    if (arguments.file.empty() && NamesFile(arguments.words)) {
        arguments.file = arguments.words[0];
        arguments.words.clear();
    }
    if (!arguments.file.empty() && !arguments.words.empty()) {
        throw CFailure(ExitCode::kUsage, "give either a file or commands");
    }
    if (arguments.file.empty()) {
        return SendEach(line, RequestOf(root, arguments, options));
    }
    if (root == "Get") {
        return SendEach(line, ReadDocument(arguments.file, {root}));
    }
    const std::string document = ReadDocument(arguments.file, {root, "GetResponse"});
    return RootOf(document) == root ? SendEach(line, document) : SetWhatWasGot(line, document);
}

/// A station that the device does not answer hides none of the others.
ExitCode Info(const CommandLine& line) {
    const std::vector<std::string> stations = {
        "devInfo", "ipv4", "dns", "networkProtocols", "dateAndTime", "serviceUrl", "profiles"};
    return AtEach(line, [&line, &stations](CResultOutput& output) {
        if (line.format != Format::kJson) {
            return ShowStations(output.Asked(), stations);
        }
        ExitCode worst = ExitCode::kDone;
        for (const std::string& station : stations) {
            worst = Worse(worst, output.Show(MakeRequest("Get", {station})));
        }
        return worst;
    });
}

void AddInfo(CLI::App& app, CommandLine& line) {
    CLI::App* info = AddCommandForSeveral(
        app, line, "info", "Show what a device is and how it is set up",
        {"onvifctl info 192.168.1.64 -u admin", "onvifctl info gate @outdoor"});
    AddFormatOption(info, line, Formats::kTexts);
    info->callback([&line] { line.code = Info(line); });
}

std::vector<std::string> LongOptionsOf(const CLI::App* command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command->get_options()) {
        names.insert(names.end(), option->get_lnames().begin(), option->get_lnames().end());
    }
    return names;
}

/// What get and set have in common.
void Complete(CLI::App* command, CommandLine& line, const char* root) {
    auto arguments = std::make_shared<RequestArguments>();
    AddFormatOption(command, line);
    command->add_option("-f,--file", arguments->file,
                        "Request document to send, as it is; - for standard input");
    command->add_flag("--any", arguments->any,
                      "Send commands and parameters that 'onvifctl commands' does not list, too");
    auto first = std::make_shared<std::string>();
    command->add_option(
        "HOST", *first,
        "Address with :PORT if not 80, name or @TAG of the hosts file, or a list of\n"
        "them with commas; none with --all or --tag");
    AddChoiceOfHosts(command, line);
    command->allow_extras();
    command->callback([&line, command, root, arguments, first] {
        arguments->words = command->remaining();
        const bool chosen = line.hosts.all || !line.hosts.tags.empty();
        if (chosen && !first->empty()) {
            arguments->words.insert(arguments->words.begin(), *first);
        } else if (!first->empty()) {
            line.hosts.words = {*first};
        }
        line.code = GetOrSet(line, root, *arguments, LongOptionsOf(command));
    });
}

void AddGet(CLI::App& app, CommandLine& line) {
    CLI::App* get = AddCommandForMany(
        app, line, "get",
        "Ask: COMMAND [--NAME VALUE]... any number of times, or a request document.\n"
        "Every --NAME VALUE that is no option of the tool is a parameter of the command before\n"
        "it, and its name may be a path ('onvifctl commands' lists both); behind --/ it is\n"
        "none of the tool's for sure",
        {"onvifctl get 192.168.1.64 devInfo dateAndTime",
         "onvifctl get 192.168.1.64 streamURI --index 1",
         "onvifctl get 192.168.1.64 profiles --format table",
         "onvifctl get 192.168.1.64 presets --format json", "onvifctl get gate,@outdoor devInfo"});
    Complete(get, line, "Get");
}

void AddSet(CLI::App& app, CommandLine& line) {
    CLI::App* set = AddCommandForMany(
        app, line, "set",
        "Change: COMMAND --NAME VALUE..., a request document, or what get has shown (" +
            RoundTripCommands() +
            ").\nOf what is shown as items, only those that differ from the device's go out",
        {"onvifctl set 192.168.1.64 manualAlarmout --token Relay_1 --active 1",
         "onvifctl set 192.168.1.64 networkProtocols --http/port 80",
         "onvifctl set 192.168.1.64 -f request.xml",
         "onvifctl get 192.168.1.64 imageSettings > f.xml; $EDITOR f.xml; "
         "onvifctl set 192.168.1.64 f.xml"});
    Complete(set, line, "Set");
}

void AddSend(CLI::App& app, CommandLine& line) {
    auto arguments = std::make_shared<RequestArguments>();
    CLI::App* send =
        AddCommandForMany(app, line, "send", "Send a request document, Get or Set by its root",
                          {"onvifctl send 192.168.1.64 request.xml"});
    AddFormatOption(send, line);
    auto host = std::make_shared<std::string>();
    send->add_option("HOST", *host, "As for get")->required();
    send->add_option("FILE", arguments->file, "The document; - for standard input")->required();
    send->callback([&line, arguments, host] {
        line.hosts.words = {*host};
        const std::string request = ReadDocument(arguments->file, {"Get", "Set"});
        line.code = SendEach(line, request);
    });
}

}  // namespace

void MarkParameters(std::vector<std::string>& words) {
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        if (words[i] == "--timeout" &&
            words[i + 1].find_first_not_of("0123456789.") != std::string::npos) {
            words[i] = "--/timeout";
        }
    }
}

void AddRequestCommands(CLI::App& app, CommandLine& line) {
    AddInfo(app, line);
    AddGet(app, line);
    AddSet(app, line);
    AddSend(app, line);
}

}  // namespace onvifctl
