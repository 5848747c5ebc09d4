// The subcommand export: what Get shows of cameras, as files that can be compared.
#include <filesystem>
#include <memory>

#include "CommandLine.h"
#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"
#include "documents/ResultTable.h"
#include "fleet/DeviceDocuments.h"
#include "fleet/Fleet.h"
#include "output/OutputFile.h"
#include "picture/FilePattern.h"
#include "system/FilePath.h"

namespace onvifctl {

namespace {

std::size_t ProfilesOf(const Session& session) {
    constexpr std::size_t kMost = 1000;
    const CResultDocument result(SendOrFail(session, MakeRequest("Get", {"streamCount"})));
    return std::min<std::size_t>(
        std::strtoul(TextAt(result.Command("streamCount"), "").c_str(), nullptr, 10), kMost);
}

/// What the device answers to a request; empty when it refuses any of it.
std::string Answer(const Session& session, const std::string& request) {
    try {
        std::string result = session.connection.Send(request);
        return Refusals(result).empty() ? result : "";
    } catch (const CFailure& failure) {
        if (failure.Code() != ExitCode::kRefused) {
            throw;
        }
        return "";
    }
}

ExitCode ExportOne(const Session& session, const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        throw CFailure(ExitCode::kNoOutput, "cannot make the folder '" + TextOf(folder) + "'");
    }
    std::size_t written = 0;
    std::string missing;
    for (const DeviceDocument& document : DeviceDocuments(ProfilesOf(session))) {
        const std::string answer = Answer(session, document.request);
        if (answer.empty()) {
            missing += (missing.empty() ? "" : ", ") + document.name;
        } else {
            WriteWholeFile(TextOf(folder / PathOf(document.name + ".xml")), answer);
            ++written;
        }
    }
    Tell(std::to_string(written) + " documents in " + TextOf(folder) +
         (missing.empty() ? "" : "; it does not answer " + missing));
    return ExitCode::kDone;
}

}  // namespace

void AddExport(CLI::App& app, CommandLine& line) {
    auto folder = std::make_shared<std::string>();
    CLI::App* command = AddCommandForSeveral(
        app, line, "export",
        "Write what get shows into FOLDER/NAME/COMMAND.xml, for import and for diff -r.\n"
        "Left out is what changes by itself: times, pictures and messages",
        {"onvifctl export 192.168.1.64 -d backup", "onvifctl export --all -d today"});
    command->add_option("-d,--directory", *folder, "Where to")->required()->type_name("FOLDER");
    command->callback([&line, folder] {
        CFleet fleet(line);
        std::vector<std::string> names;
        for (const ConnectionOptions& camera : fleet.Cameras()) {
            names.push_back(camera.name);
        }
        CheckFileNames(names);
        line.code = fleet.Do([&folder](const Session& session, std::size_t) {
            return ExportOne(session, PathOf(*folder) / PathOf(SafeFileName(session.options.name)));
        });
    });
}

}  // namespace onvifctl
