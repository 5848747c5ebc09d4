// The subcommand ptz: moving a dome, and its presets.
#include <chrono>
#include <memory>
#include <optional>

#include "CommandLine.h"
#include "ResultOutput.h"
#include "documents/RequestDocument.h"
#include "documents/ResultTable.h"
#include "output/Printable.h"
#include "ptz/NamedItems.h"
#include "ptz/PtzTours.h"
#include "system/Interruption.h"

namespace onvifctl {

namespace {

struct MoveArguments {
    int x = 0;
    int y = 0;
    int zoom = 0;
    std::optional<double> seconds;
};

struct PresetArguments {
    std::string preset;
    std::string name;
};

void Stop(CResultOutput& output) {
    output.Ask(MakeRequest("Set", {"ptzStop"}));
}

void StopIfPossible(CResultOutput& output) {
    try {
        Stop(output);
    } catch (const CFailure&) {  // there is a failure to tell of already
    }
}

void Start(CResultOutput& output, const MoveArguments& move) {
    const std::string velocity = "--ptz/velocity/";
    output.Ask(MakeRequest(
        "Set", {"continuousMove", velocity + "x", std::to_string(move.x), velocity + "y",
                std::to_string(move.y), velocity + "zoom", std::to_string(move.zoom)}));
}

/// @return the signal that ended the move early, or 0.
int MoveFor(CResultOutput& output, const MoveArguments& move) {
    const CInterruption interruption;
    try {
        Start(output, move);
    } catch (const CFailure&) {
        // A device that did not answer may move all the same.
        StopIfPossible(output);
        throw;
    }
    const int signal = interruption.Wait(
        std::chrono::milliseconds(static_cast<std::int64_t>(*move.seconds * 1000)));
    try {
        Stop(output);
    } catch (const CFailure&) {
        Tell("the dome could not be stopped and may move on");
        throw;
    }
    return signal;
}

void Move(const CommandLine& line, const MoveArguments& move) {
    int signal = 0;
    WithResults(line, [&](CResultOutput& output) {
        if (move.seconds) {
            signal = MoveFor(output, move);
        } else {
            Start(output, move);
        }
    });
    if (signal != 0) {
        Tell("stopped by a signal");
        EndBySignal(signal);  // now that the dome stands, end as the signal wants
    }
}

void ListPresets(CResultOutput& output) {
    std::vector<std::vector<std::string>> rows = {{"TOKEN", "NAME", "PAN", "TILT", "ZOOM"}};
    const CNamedItems presets(output, kPresetKind);
    for (const auto* item : presets.Items()) {
        auto& row = rows.emplace_back();
        for (const char* path :
             {"presetToken", "presetName", "position/x", "position/y", "position/zoom"}) {
            row.push_back(Printable(TextAt(item, path)));
        }
    }
    output.Write(AlignColumns(rows));
}

/// Some devices say success and keep nothing.
void AddPreset(CResultOutput& output, const std::string& name) {
    const CResultDocument result(
        output.Ask(MakeRequest("Set", {"addPreset", "--presetName", name})));
    const std::string token = TextAt(result.Command("addPreset"), "presetToken");
    if (CNamedItems(output, kPresetKind).ItemOf(token) == nullptr) {
        output.Fail("addPreset", "the device says that it keeps the preset '" + name +
                                     "', but lists no such one");
    }
    output.Write(Printable(token) + "\n");
}

/// Sends a Set command for a preset that may be called by its name.
void OperatePreset(CResultOutput& output, const char* command, const PresetArguments& arguments) {
    const std::string token = CNamedItems(output, kPresetKind).TokenOf(arguments.preset);
    std::vector<std::string> words = {command, "--presetToken", token};
    if (!arguments.name.empty()) {
        words.insert(words.end(), {"--presetName", arguments.name});
    }
    output.Ask(MakeRequest("Set", words));
}

void AddMove(CLI::App* ptz, CommandLine& line) {
    auto move = std::make_shared<MoveArguments>();
    CLI::App* action = AddAction(ptz, "move", "Move: percents of the full speed, -100 to 100",
                                 "onvifctl ptz 192.168.1.64 move -50 20 --for 1.5");
    const CLI::Range percents(-100, 100);
    action->add_option("X", move->x, "To the left (negative) or right")
        ->required()
        ->check(percents);
    action->add_option("Y", move->y, "Down (negative) or up")->required()->check(percents);
    action->add_option("ZOOM", move->zoom, "Out (negative) or in")->check(percents);
    constexpr double kLongest = 3600;
    action
        ->add_option("--for", move->seconds,
                     "Stop after so many seconds, or when interrupted; without it the dome moves "
                     "on until it is stopped")
        ->check(CheckSeconds(0, kLongest));
    action->callback([&line, move] { Move(line, *move); });
}

void AddPresets(CLI::App* ptz, CommandLine& line) {
    CLI::App* preset = AddAction(ptz, "preset", "List, keep, visit, rename and forget presets",
                                 "onvifctl ptz 192.168.1.64 preset list");
    AddAction(preset, "list", "List the presets", "onvifctl ptz 192.168.1.64 preset list")
        ->callback([&line] { WithResults(line, ListPresets); });

    auto arguments = std::make_shared<PresetArguments>();
    CLI::App* add = AddAction(preset, "add", "Keep where the dome looks; shows the new token",
                              "onvifctl ptz 192.168.1.64 preset add Gate");
    add->add_option("NAME", arguments->name, "Its name")->required();
    add->callback([&line, arguments] {
        WithResults(line, [&](CResultOutput& output) { AddPreset(output, arguments->name); });
    });

    const struct {
        const char* action;
        const char* description;
        const char* command;
    } operations[] = {
        {"goto", "Turn the dome to a preset", "gotoPreset"},
        {"rename", "Give a preset another name; the device takes its position anew",
         "modifyPresetName"},
        {"remove", "Forget a preset", "removePreset"},
    };
    for (const auto& each : operations) {
        const bool renames = each.action == std::string("rename");
        CLI::App* action = AddAction(preset, each.action, each.description,
                                     std::string("onvifctl ptz 192.168.1.64 preset ") +
                                         each.action + " Gate" + (renames ? " 'Main gate'" : ""));
        action->add_option("PRESET", arguments->preset, "Its token or its name")->required();
        if (renames) {
            action->add_option("NEWNAME", arguments->name, "The new name")->required();
        }
        action->callback([&line, arguments, command = each.command] {
            WithResults(line,
                        [&](CResultOutput& output) { OperatePreset(output, command, *arguments); });
        });
    }
}

}  // namespace

void AddPtzCommands(CLI::App& app, CommandLine& line) {
    CLI::App* ptz = AddCommand(app, line, "ptz", "Move a dome, its presets and tours",
                               {"onvifctl ptz 192.168.1.64 move -50 20 --for 1.5",
                                "onvifctl ptz 192.168.1.64 preset goto Gate",
                                "onvifctl ptz 192.168.1.64 tour add Night Gate:20 Yard:30",
                                "onvifctl ptz 192.168.1.64 preset list --format json"});
    AddFormatOption(ptz, line, Formats::kTexts);
    AddMove(ptz, line);
    AddAction(ptz, "stop", "Stop what moves", "onvifctl ptz 192.168.1.64 stop")->callback([&line] {
        WithResults(line, Stop);
    });
    AddPresets(ptz, line);
    AddTours(ptz, line);
}

}  // namespace onvifctl
