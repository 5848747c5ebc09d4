// The subcommand demo: a guided tour of a device, which changes it only when told to.
#include <algorithm>
#include <memory>
#include <utility>

#include "CommandLine.h"
#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"
#include "output/OutputFile.h"
#include "ptz/NamedItems.h"
#include "system/FilePath.h"

namespace onvifctl {

namespace {

void Head(const Session& session, const std::string& heading) {
    session.output.Write("\n--- " + heading + "\n");
}

ExitCode ShowAround(const Session& session) {
    const struct {
        const char* heading;
        std::vector<std::string> commands;
    } sections[] = {
        {"Who are you?", {"devInfo"}},
        {"How are you connected?", {"ipv4", "dns", "networkProtocols"}},
        {"What time is it?", {"dateAndTime"}},
        {"Which services do you offer?", {"serviceUrl"}},
        {"Which inputs and relays do you have?", {"alarmin", "alarmout"}},
        {"Which streams?", {"streamCount", "profiles"}},
    };
    ExitCode worst = ExitCode::kDone;
    for (const auto& section : sections) {
        Head(session, section.heading);
        worst = Worse(worst, Show(session, MakeRequest("Get", section.commands), true));
    }
    Head(session, "Where are the streams?");
    return Worse(worst, ShowStreams(session));
}

void SavePicture(const Session& session, const std::string& folder, const char* name) {
    const std::string file = TextOf(PathOf(folder) / name);
    const std::string picture = session.connection.Picture(0);
    WriteWholeFile(file, picture);
    session.output.Write(file + ": " + std::to_string(picture.size()) + " bytes\n");
}

/// Turns a dome to its last preset.
ExitCode GoToAPreset(const Session& session) {
    const CNamedItems presets(session, kPresetKind);
    if (presets.Items().empty()) {
        session.output.Write("There is none.\n");
        return ExitCode::kDone;
    }
    const std::string token = TextAt(presets.Items().back(), kPresetKind.token);
    return Show(session, MakeRequest("Set", {"gotoPreset", "--presetToken", token}), true);
}

ExitCode MakeItBrighter(const Session& session) {
    return Show(session, MakeRequest("Set", {"imageSettings", "--brightness", "80"}), true);
}

/// Writes another text in the place of the first one on the picture, or a new one.
ExitCode WriteOnThePicture(const Session& session) {
    const CResultDocument result(SendOrFail(session, MakeRequest("Get", {"osd"})));
    const auto texts = result.Items("osd");
    std::vector<std::string> words = {"createOsd"};
    if (!texts.empty()) {
        words = {"setOsd", "--token", TextAt(texts.front(), "token")};
    }
    const std::vector<std::string> text = {"--pos/type", "UpperLeft",   "--type",
                                           "Plain",      "--plainText", "Hello from onvifctl"};
    words.insert(words.end(), text.begin(), text.end());
    return Show(session, MakeRequest("Set", words), true);
}

ExitCode ChangeThePicture(const Session& session, const std::string& folder) {
    std::filesystem::create_directories(PathOf(folder));
    Head(session, "A picture before");
    SavePicture(session, folder, "before.jpg");
    constexpr std::pair<const char*, ExitCode (*)(const Session&)> kSteps[] = {
        {"Go to a preset", GoToAPreset},
        {"Make it brighter", MakeItBrighter},
        {"Write on the picture", WriteOnThePicture},
    };
    ExitCode worst = ExitCode::kDone;
    for (const auto& [heading, step] : kSteps) {
        Head(session, heading);
        try {
            worst = Worse(worst, step(session));
        } catch (const CFailure& failure) {
            // What one camera cannot do is no reason not to show the rest.
            session.output.Write(std::string(failure.what()) + "\n");
        }
    }
    Head(session, "A picture afterwards");
    SavePicture(session, folder, "after.jpg");
    return worst;
}

}  // namespace

void AddDemo(CLI::App& app, CommandLine& line) {
    auto folder = std::make_shared<std::string>();
    CLI::App* demo = AddCommand(app, line, "demo", "A guided tour of a device",
                                {"onvifctl demo 127.0.0.1:8080 -u admin -p secret",
                                 "onvifctl demo 127.0.0.1:8080 --change pictures"});
    demo->add_option("--change", *folder,
                     "Change the device too: turn it to a preset, make the picture brighter and\n"
                     "write on it, with a picture before and one afterwards in this folder");
    demo->callback([&line, folder] {
        const Session session(line.connection);
        session.output.Write("Logged in to " + line.connection.host + " as '" +
                             line.connection.user + "'.\n");
        line.code = ShowAround(session);
        if (!folder->empty()) {
            line.code = Worse(line.code, ChangeThePicture(session, *folder));
        }
    });
}

}  // namespace onvifctl
