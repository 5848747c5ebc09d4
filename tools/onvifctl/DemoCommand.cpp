// The subcommand demo: a guided tour of a device, which changes it only when told to.
#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

#include "CommandLine.h"
#include "ResultOutput.h"
#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"
#include "output/OutputFile.h"
#include "output/Printable.h"
#include "ptz/NamedItems.h"
#include "system/FilePath.h"

namespace onvifctl {

namespace {

void Head(const Session& session, const std::string& heading) {
    session.output.Write("\n--- " + heading + "\n");
}

/// What one camera cannot do is no reason not to show the rest.
ExitCode Try(const Session& session, const std::string& heading,
             const std::function<ExitCode(const Session&)>& step) {
    Head(session, heading);
    try {
        return step(session);
    } catch (const CFailure& failure) {
        session.output.Write("not available: " + Printable(failure.what()) + "\n");
        return failure.Code();
    }
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
        worst = Worse(worst, ShowStations(session, section.commands));
    }
    return Worse(worst, Try(session, "Where are the streams?",
                            [](const Session& asked) { return ShowStreams(asked); }));
}

ExitCode SavePicture(const Session& session, const std::string& folder, const char* name) {
    const std::string file = TextOf(PathOf(folder) / name);
    const std::string picture = session.connection.Picture(0);
    WriteWholeFile(file, picture);
    session.output.Write(file + ": " + std::to_string(picture.size()) + " bytes\n");
    return ExitCode::kDone;
}

ExitCode Change(const Session& session, const std::vector<std::string>& words) {
    return CResultOutput(session, Format::kTable).Show(MakeRequest("Set", words));
}

/// Turns a dome to its last preset.
ExitCode GoToAPreset(const Session& session) {
    CResultOutput output(session, Format::kTable);
    const CNamedItems presets(output, kPresetKind);
    if (presets.Items().empty()) {
        session.output.Write("There is none.\n");
        return ExitCode::kDone;
    }
    const std::string token = TextAt(presets.Items().back(), kPresetKind.token);
    return Change(session, {"gotoPreset", "--presetToken", token});
}

ExitCode MakeItBrighter(const Session& session) {
    return Change(session, {"imageSettings", "--brightness", "80"});
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
    return Change(session, words);
}

ExitCode ChangeThePicture(const Session& session, const std::string& folder) {
    std::filesystem::create_directories(PathOf(folder));
    const auto save = [&folder](const char* name) {
        return [&folder, name](const Session& with) { return SavePicture(with, folder, name); };
    };
    const std::pair<const char*, std::function<ExitCode(const Session&)>> steps[] = {
        {"A picture before", save("before.jpg")},    {"Go to a preset", GoToAPreset},
        {"Make it brighter", MakeItBrighter},        {"Write on the picture", WriteOnThePicture},
        {"A picture afterwards", save("after.jpg")},
    };
    ExitCode worst = ExitCode::kDone;
    for (const auto& [heading, step] : steps) {
        worst = Worse(worst, Try(session, heading, step));
    }
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
