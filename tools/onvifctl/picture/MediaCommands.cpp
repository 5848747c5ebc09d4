// The subcommands about pictures and streams: snapshot and stream.
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "CommandLine.h"
#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"
#include "documents/ResultTable.h"
#include "fleet/Fleet.h"
#include "output/OutputFile.h"
#include "output/Printable.h"
#include "picture/FilePattern.h"
#include "picture/StreamAddress.h"
#include "system/StandardStreams.h"

namespace onvifctl {

namespace {

struct SnapshotArguments {
    std::string file;
    unsigned int index = 0;
    std::optional<double> every;
    std::optional<double> seconds;
};

void CheckOutput(const std::vector<ConnectionOptions>& cameras, const CFilePattern& pattern,
                 const SnapshotArguments& arguments) {
    const bool toOutput = arguments.file == "-";
    if (cameras.size() > 1 && !pattern.Has('h')) {
        throw CFailure(ExitCode::kUsage, "the pictures of several cameras need names: -o '%h.jpg'");
    }
    if (toOutput && arguments.every) {
        throw CFailure(ExitCode::kUsage, "--every needs a file's name");
    }
    std::vector<std::string> names;
    for (const ConnectionOptions& camera : cameras) {
        names.push_back(camera.name);
    }
    CheckFileNames(names);
}

ExitCode Snapshot(const CommandLine& line, const SnapshotArguments& arguments) {
    const bool toOutput = arguments.file == "-";
    if (toOutput && OutputIsTerminal()) {
        throw CFailure(ExitCode::kUsage, "a picture is nothing for a terminal: name a file");
    }
    const CFilePattern pattern(arguments.file);
    CFleet fleet(line, arguments.every ? CFleet::Sessions::kKeep : CFleet::Sessions::kEnd);
    CheckOutput(fleet.Cameras(), pattern, arguments);
    const auto save = [&](const Session& session, std::size_t) {
        const std::string picture = session.connection.Picture(arguments.index);
        std::string told = std::to_string(picture.size()) + " bytes";
        if (toOutput) {
            session.output.Write(picture);
        } else {
            const std::string file = pattern.Name(session.options.name, arguments.index);
            WriteWholeFile(file, picture);
            told = pattern.IsPlain() ? told : file + ": " + told;
        }
        Tell(told);
        return ExitCode::kDone;
    };
    if (!arguments.every) {
        return fleet.Do(save);
    }
    return fleet.Repeat(save, *arguments.every, arguments.seconds);
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
    CLI::App* snapshot =
        AddCommandForSeveral(app, line, "snapshot", "Save pictures",
                             {"onvifctl snapshot 192.168.1.64 -o picture.jpg",
                              "onvifctl snapshot 192.168.1.64 -o - --index 1 | display",
                              "onvifctl snapshot @outdoor -o '%h-%t.jpg' --every 60"});
    snapshot
        ->add_option("-o,--output", arguments->file,
                     "Where to; - for standard output. %h is the camera's name, %t the time\n"
                     "(20261122-140509), %i the profile's index, %% a percent sign")
        ->required();
    snapshot->add_option("--index", arguments->index, "The profile, from 0 (default)");
    auto* every = snapshot
                      ->add_option("--every", arguments->every,
                                   "Again and again, a picture in so many seconds, until Ctrl-C")
                      ->check(CheckSeconds(0.1));
    snapshot->add_option("--for", arguments->seconds, "End that after so many seconds")
        ->check(CheckSeconds())
        ->needs(every);
    every->excludes(snapshot->get_option("--timeout"));
    snapshot->callback([&line, arguments] { line.code = Snapshot(line, *arguments); });
}

struct StreamArguments {
    std::optional<unsigned int> index;
    bool credentials = false;
    bool play = false;
};

std::string AddressWith(const Session& session, const std::string& address) {
    return WithCredentials(address, session.options.user, session.options.password.value_or(""));
}

ExitCode PlayStream(const CommandLine& line, unsigned int index) {
    const std::string player = FindPlayer();
    const auto cameras = Targets(line.hosts, line.connection);
    if (cameras.size() != 1) {
        throw CFailure(ExitCode::kUsage, "--play is for one camera");
    }
    std::string address;
    {
        const Session session(cameras.front());
        const std::string plain = StreamAddress(session, index);
        Tell(player + " " + plain);
        address = AddressWith(session, plain);
    }
    const bool played = Play(player, address) == 0;
    return played ? ExitCode::kDone : ExitCode::kRefused;
}

/// The stream of a profile, or why there is none.
struct ProfileStream {
    unsigned int index = 0;
    std::string token;
    std::string name;
    std::string address;
    std::string error;
    ExitCode code = ExitCode::kDone;
};

ProfileStream StreamOf(const Session& session, unsigned int index,
                       const tinyxml2::XMLElement* profile, bool credentials) {
    ProfileStream stream{index, TextAt(profile, "token"), TextAt(profile, "name"), {}, {}};
    try {
        const std::string address = StreamAddress(session, index);
        stream.address = credentials ? AddressWith(session, address) : address;
    } catch (const CFailure& failure) {
        stream.error = failure.what();
        stream.code = failure.Code();
        Tell("profile " + std::to_string(index) + ": " + failure.what());
    }
    return stream;
}

/// A profile without an address does not hide the others.
std::vector<ProfileStream> StreamsOf(const Session& session, std::optional<unsigned int> only,
                                     bool credentials) {
    const CResultDocument result(
        SendOrFail(session, MakeRequest("Get", {"profiles", "streamCount"})));
    const auto profiles = result.Items("profiles");
    const auto count = static_cast<unsigned int>(
        std::strtoul(TextAt(result.Command("streamCount"), "").c_str(), nullptr, 10));
    std::vector<ProfileStream> streams;
    const unsigned int end = only ? *only + 1 : count;
    for (unsigned int index = only.value_or(0); index < end; ++index) {
        const auto* profile = index < profiles.size() ? profiles[index] : nullptr;
        streams.push_back(StreamOf(session, index, profile, credentials));
    }
    return streams;
}

std::string TableOf(const std::vector<ProfileStream>& streams) {
    std::vector<std::vector<std::string>> rows;
    for (const ProfileStream& stream : streams) {
        if (stream.error.empty()) {
            rows.push_back({std::to_string(stream.index), Printable(stream.token),
                            Printable(stream.name), stream.address});
        }
    }
    return AlignColumns(rows);
}

std::string JsonOf(const std::string& camera, const std::vector<ProfileStream>& streams) {
    using Json = nlohmann::ordered_json;
    const auto textOrNull = [](const std::string& text) {
        return text.empty() ? Json(nullptr) : Json(text);
    };
    Json line = {{"camera", camera}, {"streams", Json::array()}};
    for (const ProfileStream& stream : streams) {
        line["streams"].push_back({{"index", stream.index},
                                   {"token", textOrNull(stream.token)},
                                   {"name", textOrNull(stream.name)},
                                   {"address", textOrNull(stream.address)},
                                   {"error", textOrNull(stream.error)}});
    }
    return line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

ExitCode WorstOf(const std::vector<ProfileStream>& streams) {
    ExitCode worst = ExitCode::kDone;
    for (const ProfileStream& stream : streams) {
        worst = Worse(worst, stream.code);
    }
    return worst;
}

ExitCode ShowStreamsOf(const CommandLine& line, const StreamArguments& arguments) {
    if (arguments.play) {
        return PlayStream(line, arguments.index.value_or(0));
    }
    return CFleet(line).Do([&line, &arguments](const Session& session, std::size_t) {
        if (line.format == Format::kJson) {
            const auto streams = StreamsOf(session, arguments.index, arguments.credentials);
            session.output.Write(JsonOf(session.options.name, streams));
            return WorstOf(streams);
        }
        if (!arguments.index) {
            return ShowStreams(session, arguments.credentials);
        }
        const std::string address = StreamAddress(session, *arguments.index);
        session.output.Write((arguments.credentials ? AddressWith(session, address) : address) +
                             "\n");
        return ExitCode::kDone;
    });
}

void AddStream(CLI::App& app, CommandLine& line) {
    auto arguments = std::make_shared<StreamArguments>();
    CLI::App* stream = AddCommandForSeveral(
        app, line, "stream", "Show the stream addresses: index, profile token and name, address",
        {"onvifctl stream 192.168.1.64", "onvifctl stream 192.168.1.64 --play",
         "ffplay \"$(onvifctl stream 192.168.1.64 --index 0 --with-credentials)\""});
    stream->add_option("--index", arguments->index,
                       "Only the address of this profile, and nothing else");
    AddFormatOption(stream, line, Formats::kTexts);
    stream->add_flag("--with-credentials", arguments->credentials,
                     "Addresses with user and password");
    stream->add_flag(
        "--play", arguments->play,
        "Play the stream of the profile --index (default: 0) with ffplay, mpv or vlc,\n"
        "which get user and password with the address");
    stream->callback([&line, arguments] { line.code = ShowStreamsOf(line, *arguments); });
}

}  // namespace

ExitCode ShowStreams(const Session& session, bool credentials) {
    const auto streams = StreamsOf(session, std::nullopt, credentials);
    session.output.Write(TableOf(streams));
    return WorstOf(streams);
}

void AddMediaCommands(CLI::App& app, CommandLine& line) {
    AddSnapshot(app, line);
    AddStream(app, line);
}

}  // namespace onvifctl
