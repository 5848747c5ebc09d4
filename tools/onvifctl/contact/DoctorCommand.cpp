// The subcommand doctor: first contact with a device, step by step.
#include <memory>
#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "contact/Examination.h"
#include "documents/ResultTable.h"
#include "output/Printable.h"

namespace onvifctl {

namespace {

struct DoctorArguments {
    bool json = false;
    bool setClock = false;
};

std::string AsTable(const Examination& done) {
    std::vector<std::vector<std::string>> rows;
    for (const Step& step : done.steps) {
        rows.push_back({step.isWell ? "ok" : "!!", step.name,
                        std::to_string(step.time.count()) + " ms", Printable(step.finding)});
        if (!step.advice.empty()) {
            rows.push_back({"", "", "", "-> " + Printable(step.advice)});
        }
    }
    std::string text = AlignColumns(rows) + "\n" + Printable(done.conclusion) + ".\n";
    rows.clear();
    for (const NeededExtension& each : done.extensions) {
        rows.push_back({each.name, Printable(each.reason)});
    }
    return rows.empty() ? text
                        : text + "Extensions for it (docs/real-cameras.md):\n" + AlignColumns(rows);
}

std::string AsJson(const Examination& done, const std::string& camera) {
    using Json = nlohmann::ordered_json;
    Json steps = Json::array();
    for (const Step& step : done.steps) {
        steps.push_back({{"step", step.name},
                         {"ok", step.isWell},
                         {"ms", step.time.count()},
                         {"finding", step.finding},
                         {"advice", step.advice.empty() ? Json() : Json(step.advice)}});
    }
    Json extensions = Json::array();
    for (const NeededExtension& each : done.extensions) {
        extensions.push_back({{"name", each.name}, {"reason", each.reason}});
    }
    const Json all = {{"camera", camera},
                      {"code", static_cast<int>(done.code)},
                      {"conclusion", done.conclusion},
                      {"clockDifference", done.clock ? Json(done.clock->count()) : Json()},
                      {"extensions", extensions},
                      {"steps", steps}};
    return all.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

void AddDoctor(CLI::App& app, CommandLine& line) {
    auto arguments = std::make_shared<DoctorArguments>();
    CLI::App* doctor = AddCommand(
        app, line, "doctor",
        "Find out why a device does not work, and which extensions it needs: name, connection,\n"
        "HTTP, clock, login, services, profiles, stream, picture, subscription and pull",
        {"onvifctl doctor 192.168.1.64 -u admin", "onvifctl doctor 192.168.1.64 --format json"});
    doctor
        ->add_option_function<std::string>(
            "--format",
            [arguments](const std::string& format) { arguments->json = format == "json"; },
            "table (default), or json: an object in one line")
        ->check(CLI::IsMember({"table", "json"}));
    doctor->add_flag("--set-clock", arguments->setClock,
                     "Try a login without keep-clock, too, which sets the device's clock");
    doctor->callback([&line, arguments] {
        const CDataOutput output{};
        const Examination done = Examine(line.connection, arguments->setClock);
        output.Write(arguments->json ? AsJson(done, line.connection.host) : AsTable(done));
        line.code = done.code;
    });
}

}  // namespace onvifctl
