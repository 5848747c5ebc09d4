// The subcommand image: picture settings for people.
#include <algorithm>
#include <memory>

#include "CommandLine.h"
#include "ResultOutput.h"
#include "documents/RequestDocument.h"
#include "documents/ResultTable.h"
#include "output/Printable.h"
#include "picture/ImageSettings.h"

namespace onvifctl {

namespace {

std::string Settings(CResultOutput& output) {
    return output.Ask(MakeRequest("Get", {"imageSettings"}));
}

/// Empty when the device does not tell: its settings can be shown and changed all the same.
std::string Options(CResultOutput& output) {
    try {
        return output.Ask(MakeRequest("Get", {"imageOpts"}));
    } catch (const CFailure&) {
        Tell("the device does not tell what it permits");
        return "";
    }
}

/// A device without any has no names to choose from.
void CheckThatThereAre(const std::vector<ImageSetting>& settings) {
    if (settings.empty()) {
        throw CFailure(ExitCode::kRefused, "the device shows no image settings");
    }
}

void ShowSettings(CResultOutput& output) {
    std::vector<std::vector<std::string>> rows = {{"NAME", "VALUE", "RANGE"}};
    const std::string text = Settings(output);
    const auto settings = ReadImageSettings(text, Options(output));
    CheckThatThereAre(settings);
    for (const auto& [path, value, permitted] : settings) {
        rows.push_back({Printable(path), Printable(value), Printable(permitted)});
    }
    output.Write(AlignColumns(rows));
}

std::vector<ImageChange> ReadChanges(const std::vector<std::string>& words) {
    if (words.size() % 2 != 0) {
        throw CFailure(ExitCode::kUsage, "'" + words.back() + "' has no value");
    }
    std::vector<ImageChange> changes;
    for (std::size_t i = 0; i < words.size(); i += 2) {
        changes.push_back({words[i], words[i + 1]});
    }
    return changes;
}

const ImageSetting* Find(const std::vector<ImageSetting>& settings, const std::string& path) {
    const auto found =
        std::find_if(settings.begin(), settings.end(),
                     [&path](const ImageSetting& setting) { return setting.path == path; });
    return found == settings.end() ? nullptr : &*found;
}

void CheckChanges(const std::vector<ImageChange>& changes,
                  const std::vector<ImageSetting>& settings, const std::string& options) {
    for (const ImageChange& change : changes) {
        const ImageSetting* setting = Find(settings, change.path);
        if (setting == nullptr) {
            std::string known;
            for (const ImageSetting& each : settings) {
                known += (known.empty() ? " " : ", ") + each.path;
            }
            throw CFailure(ExitCode::kUsage,
                           "the device has no setting '" + change.path + "'; it has:" + known);
        }
        if (!IsPermitted(change, options)) {
            Tell("warning: the device permits " + setting->permitted + " for " + change.path);
        }
    }
}

/// Tells what the device made of the changes: some say success and keep what they had.
ExitCode Compare(const std::vector<ImageChange>& changes, const std::vector<ImageSetting>& before,
                 const std::vector<ImageSetting>& after) {
    ExitCode code = ExitCode::kDone;
    for (const ImageChange& change : changes) {
        const ImageSetting* now = Find(after, change.path);
        if (now == nullptr || SameValue(now->value, change.value)) {
            continue;
        }
        const bool kept = SameValue(now->value, Find(before, change.path)->value);
        Tell(change.path + (kept ? " stays " : " is now ") + now->value);
        code = kept ? ExitCode::kRefused : code;
    }
    return code;
}

ExitCode Change(const CommandLine& line, const std::vector<std::string>& words) {
    const std::vector<ImageChange> changes = ReadChanges(words);
    ExitCode code = ExitCode::kDone;
    WithResults(line, [&](CResultOutput& output) {
        const std::string settings = Settings(output);
        const std::string options = Options(output);
        const auto before = ReadImageSettings(settings, options);
        CheckThatThereAre(before);
        CheckChanges(changes, before, options);
        output.Ask(ImageRequest(settings, changes));
        code = Compare(changes, before, ReadImageSettings(Settings(output), ""));
    });
    return code;
}

}  // namespace

void AddImageCommands(CLI::App& app, CommandLine& line) {
    CLI::App* image =
        AddCommand(app, line, "image", "Show and change the picture's settings",
                   {"onvifctl image 192.168.1.64 get",
                    "onvifctl image 192.168.1.64 set brightness 60 exposure/mode AUTO"});
    AddFormatOption(image, line, Formats::kTexts);
    AddAction(image, "get", "Show the settings beside what the device permits",
              "onvifctl image 192.168.1.64 get")
        ->callback([&line] { WithResults(line, ShowSettings); });

    auto words = std::make_shared<std::vector<std::string>>();
    CLI::App* set = AddAction(image, "set", "Change settings, by the names that get shows",
                              "onvifctl image 192.168.1.64 set brightness 60 exposure/mode AUTO");
    set->add_option("NAME_VALUE", *words, "NAME VALUE [NAME VALUE]...")->required();
    set->callback([&line, words] { line.code = Change(line, *words); });
}

}  // namespace onvifctl
