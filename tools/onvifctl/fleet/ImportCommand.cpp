// The subcommand import: brings cameras to what exported documents say.
#include <tinyxml2.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>

#include "CommandLine.h"
#include "documents/RequestDocument.h"
#include "documents/ResultTable.h"
#include "documents/RoundTrip.h"
#include "fleet/DeviceDocuments.h"
#include "fleet/Differences.h"
#include "fleet/Fleet.h"
#include "picture/FilePattern.h"
#include "system/FilePath.h"

namespace onvifctl {

namespace {

namespace fs = std::filesystem;

struct ImportArguments {
    std::vector<std::string> words;  // folders and files, and the camera last
    bool dryRun = false;
    bool yes = false;
};

/// A document with one command.
struct Wanted {
    std::string name;
    std::string text;
};

void AddCommandsOf(const fs::path& file, std::vector<Wanted>& wanted) {
    const std::string text = ReadDocument(TextOf(file), {"GetResponse"});
    tinyxml2::XMLDocument document;
    document.Parse(text.c_str(), text.size());
    for (const auto* command = document.RootElement()->FirstChildElement(); command != nullptr;
         command = command->NextSiblingElement()) {
        tinyxml2::XMLPrinter printer(nullptr, true);
        command->Accept(&printer);
        wanted.push_back({TextOf(file.stem()),
                          "<GetResponse>" + std::string(printer.CStr()) + "</GetResponse>"});
    }
}

/// Those of a folder, or of what it has for this camera, in the order of their names.
std::vector<fs::path> FilesOf(const fs::path& place, const std::string& camera) {
    std::error_code error;
    if (!fs::is_directory(place, error)) {
        return {place};
    }
    const fs::path own = place / PathOf(SafeFileName(camera));
    std::vector<fs::path> files;
    for (const auto& entry :
         fs::directory_iterator(fs::is_directory(own, error) ? own : place, error)) {
        if (entry.path().extension() == ".xml") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<Wanted> WantedOf(const std::vector<std::string>& places, const std::string& camera) {
    std::vector<Wanted> wanted;
    for (const std::string& place : places) {
        for (const fs::path& file : FilesOf(PathOf(place), camera)) {
            AddCommandsOf(file, wanted);
        }
    }
    if (wanted.empty()) {
        throw CFailure(ExitCode::kUsage, "there are no documents for '" + camera + "'");
    }
    return wanted;
}

/// The requests that set a document of one command; none when no Set matches it.
std::vector<std::string> Settable(const std::string& document) {
    try {
        return SetRequestsFrom(document).requests;
    } catch (const CFailure&) {
        return {};
    }
}

/// Shows in what the device differs from the document. @return the requests that change it.
std::vector<std::string> Compare(const Session& session, const Wanted& wanted) {
    const std::string present = SendOrFail(session, RequestForAgain(wanted.text, wanted.name));
    const auto lines = Differences(present, wanted.text);
    std::vector<std::string> requests = Settable(wanted.text);
    const auto needless = Settable(present);
    std::erase_if(requests, [&needless](const std::string& request) {
        return std::find(needless.begin(), needless.end(), request) != needless.end();
    });
    for (const std::string& difference : lines) {
        session.output.Write(difference + (requests.empty() ? " (cannot be set)\n" : "\n"));
    }
    return lines.empty() ? std::vector<std::string>() : requests;
}

/// @param plan  becomes the requests that change the device.
ExitCode CompareAll(const Session& session, const std::vector<Wanted>& wanted,
                    std::vector<std::string>& plan) {
    ExitCode worst = ExitCode::kDone;
    for (const Wanted& each : wanted) {
        try {
            const auto requests = Compare(session, each);
            plan.insert(plan.end(), requests.begin(), requests.end());
        } catch (const CFailure& failure) {
            if (failure.Code() != ExitCode::kRefused) {
                throw;
            }
            Tell(each.name + ": " + failure.what());
            worst = Worse(worst, failure.Code());
        }
    }
    return worst;
}

ExitCode SetAll(const Session& session, const std::vector<std::string>& plan) {
    std::size_t done = 0;
    for (const std::string& request : plan) {
        try {
            SendOrFail(session, request);
            ++done;
        } catch (const CFailure& failure) {
            if (failure.Code() != ExitCode::kRefused) {
                throw;
            }
            Tell(failure.what());
        }
    }
    if (!plan.empty()) {
        Tell(std::to_string(done) + " of " + std::to_string(plan.size()) + " changes made");
    }
    return done == plan.size() ? ExitCode::kDone : ExitCode::kRefused;
}

bool Confirmed(std::size_t changes, const ImportArguments& arguments) {
    if (arguments.yes) {
        return true;
    }
    std::cerr << "Make " << changes << (changes == 1 ? " change? [y/N] " : " changes? [y/N] ")
              << std::flush;
    char answer = '\0';
    std::cin.get(answer);
    return answer == 'y' || answer == 'Y';
}

ExitCode Import(CommandLine& line, const ImportArguments& arguments) {
    if (!arguments.dryRun && !arguments.yes && !InputIsTerminal()) {
        throw CFailure(ExitCode::kUsage, "nobody can be asked: give --yes or --dry-run");
    }
    auto places = arguments.words;
    if (!line.hosts.all && line.hosts.tags.empty()) {
        line.hosts.words = {places.back()};
        places.pop_back();
    }
    CFleet fleet(line, CFleet::Sessions::kKeep);
    std::vector<std::vector<Wanted>> wanted;
    for (const ConnectionOptions& camera : fleet.Cameras()) {
        wanted.push_back(WantedOf(places, camera.name));
    }
    std::vector<std::vector<std::string>> plans(wanted.size());
    const ExitCode compared = fleet.Do([&](const Session& session, std::size_t place) {
        return CompareAll(session, wanted[place], plans[place]);
    });
    std::size_t changes = 0;
    for (const auto& plan : plans) {
        changes += plan.size();
    }
    if (changes == 0) {
        Tell("nothing to change");
    }
    if (changes == 0 || arguments.dryRun || !Confirmed(changes, arguments)) {
        return compared;
    }
    return fleet.Do([&plans](const Session& session, std::size_t place) {
        return SetAll(session, plans[place]);
    });
}

}  // namespace

void AddImport(CLI::App& app, CommandLine& line) {
    auto arguments = std::make_shared<ImportArguments>();
    CLI::App* command = AddCommandForMany(
        app, line, "import",
        "Show in what cameras differ from exported documents, and set what can be set (" +
            RoundTripCommands() + ")",
        {"onvifctl import backup 192.168.1.64 --dry-run",
         "onvifctl import fleet/gate/osd.xml @outdoor --yes", "onvifctl import today --all --yes"});
    command
        ->add_option("FOLDER|FILE... HOST", arguments->words,
                     "Documents; of a folder with one of the camera's name in it those there.\n"
                     "The last word is the camera, or a list with commas; none with --all or --tag")
        ->required();
    AddChoiceOfHosts(command, line);
    command->add_flag("--dry-run", arguments->dryRun, "Show the differences and set nothing");
    command->add_flag("-y,--yes", arguments->yes, "Set without asking");
    command->callback([&line, arguments] { line.code = Import(line, *arguments); });
}

}  // namespace onvifctl
