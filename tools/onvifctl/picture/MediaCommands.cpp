// The subcommands about pictures and streams: snapshot and stream.
#include <cstdlib>
#include <memory>
#include <optional>

#include "CommandLine.h"
#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"
#include "documents/ResultTable.h"
#include "output/OutputFile.h"
#include "output/Printable.h"
#include "system/StandardStreams.h"

namespace onvifctl {

namespace {

struct SnapshotArguments {
    std::string file;
    unsigned int index = 0;
};

void Snapshot(const CommandLine& line, const SnapshotArguments& arguments) {
    const bool toOutput = arguments.file == "-";
    if (toOutput && OutputIsTerminal()) {
        throw CFailure(ExitCode::kUsage, "a picture is nothing for a terminal: name a file");
    }
    const Session session(line.connection);
    const std::string picture = session.connection.Picture(arguments.index);
    if (toOutput) {
        session.output.Write(picture);
    } else {
        WriteWholeFile(arguments.file, picture);
    }
    Tell(std::to_string(picture.size()) + " bytes");
}

std::string StreamAddress(const Session& session, unsigned int index) {
    const std::string result =
        SendOrFail(session, MakeRequest("Get", {"streamURI", "--index", std::to_string(index)}));
    const std::string address = TextAt(CResultDocument(result).Command("streamURI"), "uri");
    if (address.empty()) {
        throw CFailure(ExitCode::kRefused, "the device gave no address");
    }
    return Printable(address);
}

void AddSnapshot(CLI::App& app, CommandLine& line) {
    auto arguments = std::make_shared<SnapshotArguments>();
    CLI::App* snapshot = AddCommand(app, line, "snapshot", "Save a picture",
                                    {"onvifctl snapshot 192.168.1.64 -o picture.jpg",
                                     "onvifctl snapshot 192.168.1.64 -o - --index 1 | display"});
    snapshot->add_option("-o,--output", arguments->file, "Where to; - for standard output")
        ->required();
    snapshot->add_option("--index", arguments->index, "The profile, from 0 (default)");
    snapshot->callback([&line, arguments] { Snapshot(line, *arguments); });
}

void AddStream(CLI::App& app, CommandLine& line) {
    auto index = std::make_shared<std::optional<unsigned int>>();
    CLI::App* stream = AddCommand(
        app, line, "stream", "Show the stream addresses: index, profile token and name, address",
        {"onvifctl stream 192.168.1.64", "ffplay \"$(onvifctl stream 192.168.1.64 --index 0)\""});
    stream->add_option("--index", *index, "Only the address of this profile, and nothing else");
    stream->callback([&line, index] {
        const Session session(line.connection);
        if (*index) {
            session.output.Write(StreamAddress(session, **index) + "\n");
        } else {
            line.code = ShowStreams(session);
        }
    });
}

}  // namespace

/// One line per profile; a profile without an address does not hide the others.
ExitCode ShowStreams(const Session& session) {
    const CResultDocument result(
        SendOrFail(session, MakeRequest("Get", {"profiles", "streamCount"})));
    const auto profiles = result.Items("profiles");
    const std::size_t count =
        std::strtoul(TextAt(result.Command("streamCount"), "").c_str(), nullptr, 10);
    ExitCode code = ExitCode::kDone;
    std::vector<std::vector<std::string>> rows;
    for (unsigned int index = 0; index < count; ++index) {
        const auto* profile = index < profiles.size() ? profiles[index] : nullptr;
        try {
            rows.push_back({std::to_string(index), Printable(TextAt(profile, "token")),
                            Printable(TextAt(profile, "name")), StreamAddress(session, index)});
        } catch (const CFailure& failure) {
            Tell("profile " + std::to_string(index) + ": " + failure.what());
            code = Worse(code, failure.Code());
        }
    }
    session.output.Write(AlignColumns(rows));
    return code;
}

void AddMediaCommands(CLI::App& app, CommandLine& line) {
    AddSnapshot(app, line);
    AddStream(app, line);
}

}  // namespace onvifctl
