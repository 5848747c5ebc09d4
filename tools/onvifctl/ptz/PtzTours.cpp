#include "ptz/PtzTours.h"

#include <memory>

#include "ResultOutput.h"
#include "documents/RequestDocument.h"
#include "documents/ResultTable.h"
#include "output/Printable.h"
#include "ptz/NamedItems.h"

namespace onvifctl {

namespace {

constexpr const char* kDefaultStay = "10";

struct TourArguments {
    std::string tour;
    std::vector<std::string> spots;
};

struct Spot {
    std::string token;
    std::string seconds;
};

/// "Gate" or "Gate:20". Names may have colons of their own.
Spot ReadSpot(const CNamedItems& presets, const std::string& text) {
    constexpr std::size_t kMostDigits = 6;
    const std::size_t colon = text.rfind(':');
    if (presets.Has(text) || colon == std::string::npos) {
        return {presets.TokenOf(text), kDefaultStay};
    }
    const std::string seconds = text.substr(colon + 1);
    if (seconds.empty() || seconds.size() > kMostDigits ||
        seconds.find_first_not_of("0123456789") != std::string::npos) {
        throw CFailure(ExitCode::kUsage, "'" + text + "' is not PRESET or PRESET:SECONDS");
    }
    return {presets.TokenOf(text.substr(0, colon)), seconds};
}

std::string ModifyRequest(const std::string& token, const std::string& name,
                          const std::vector<Spot>& spots) {
    tinyxml2::XMLDocument document;
    document.Parse(MakeRequest("Set", {"modifyCruise", "--token", token, "--name", name}).c_str());
    auto* presets = document.RootElement()->FirstChildElement()->InsertNewChildElement("presets");
    for (const Spot& spot : spots) {
        auto* item = presets->InsertNewChildElement("item");
        item->InsertNewChildElement("token")->SetText(spot.token.c_str());
        item->InsertNewChildElement("stayTime")->SetText(spot.seconds.c_str());
    }
    tinyxml2::XMLPrinter printer;
    document.Print(&printer);
    return printer.CStr();
}

/// Some devices say success and keep nothing, or an empty tour.
void CheckTour(CResultOutput& output, const std::string& token, const TourArguments& wanted) {
    const CNamedItems tours(output, kTourKind);
    const auto* tour = tours.ItemOf(token);
    if (tour == nullptr) {
        output.Fail("addCruise", "the device says that it keeps the tour '" + wanted.tour +
                                     "', but lists no such one");
    }
    std::size_t kept = 0;
    for (const auto* spot = ElementAt(tour, "presets/item"); spot != nullptr;
         spot = spot->NextSiblingElement("item")) {
        ++kept;
    }
    if (kept < wanted.spots.size()) {
        output.Fail("modifyCruise", "the device says success, but the new tour " + token + " has " +
                                        std::to_string(kept) + " of " +
                                        std::to_string(wanted.spots.size()) + " presets");
    }
}

void AddTour(CResultOutput& output, const TourArguments& arguments) {
    const CNamedItems presets(output, kPresetKind);
    std::vector<Spot> spots;
    for (const std::string& text : arguments.spots) {
        spots.push_back(ReadSpot(presets, text));
    }
    const CResultDocument added(output.Ask(MakeRequest("Set", {"addCruise"})));
    const std::string token = TextAt(added.Command("addCruise"), "token");
    try {
        output.Ask(ModifyRequest(token, arguments.tour, spots));
    } catch (const CFailure&) {
        Tell("the new tour " + token + " is there, but empty");
        throw;
    }
    CheckTour(output, token, arguments);
    output.Write(Printable(token) + "\n");
}

void ListTours(CResultOutput& output) {
    std::vector<std::vector<std::string>> rows = {{"TOKEN", "NAME", "STATE", "PRESETS"}};
    const CNamedItems tours(output, kTourKind);
    for (const auto* tour : tours.Items()) {
        std::string spots;
        for (const auto* spot = ElementAt(tour, "presets/item"); spot != nullptr;
             spot = spot->NextSiblingElement("item")) {
            const std::string token = TextAt(spot, "token");
            spots += (spots.empty() ? "" : " ") + (token.empty() ? "home" : token) + ":" +
                     TextAt(spot, "stayTime");
        }
        rows.push_back({Printable(TextAt(tour, "token")), Printable(TextAt(tour, "name")),
                        Printable(TextAt(tour, "state")), Printable(spots)});
    }
    output.Write(AlignColumns(rows));
}

void OperateTour(CResultOutput& output, const char* command, const std::string& tour) {
    const std::string token = CNamedItems(output, kTourKind).TokenOf(tour);
    output.Ask(MakeRequest("Set", {command, "--token", token}));
}

}  // namespace

void AddTours(CLI::App* ptz, CommandLine& line) {
    CLI::App* tour =
        AddAction(ptz, "tour", "List, make, start, stop, pause and remove tours of presets",
                  "onvifctl ptz 192.168.1.64 tour list");
    AddAction(tour, "list", "List the tours: each preset with the seconds to stay there",
              "onvifctl ptz 192.168.1.64 tour list")
        ->callback([&line] { WithResults(line, ListTours); });

    auto arguments = std::make_shared<TourArguments>();
    CLI::App* add = AddAction(tour, "add", "Make a tour; shows the new token",
                              "onvifctl ptz 192.168.1.64 tour add Night Gate:20 Yard:30");
    add->add_option("NAME", arguments->tour, "Its name")->required();
    add->add_option("PRESET", arguments->spots,
                    std::string("PRESET or PRESET:SECONDS, the preset by token or name; ") +
                        kDefaultStay + " seconds when not said")
        ->required();
    add->callback([&line, arguments] {
        WithResults(line, [&](CResultOutput& output) { AddTour(output, *arguments); });
    });

    const struct {
        const char* action;
        const char* description;
        const char* command;
    } operations[] = {
        {"start", "Start a tour", "startCruise"},
        {"stop", "End a tour", "stopCruise"},
        {"pause", "Let a tour wait where it is", "pauseCruise"},
        {"remove", "Forget a tour (by the extension standard-requests)", "delCruise"},
    };
    for (const auto& each : operations) {
        CLI::App* action =
            AddAction(tour, each.action, each.description,
                      std::string("onvifctl ptz 192.168.1.64 tour ") + each.action + " Night");
        action->add_option("TOUR", arguments->tour, "Its token or its name")->required();
        action->callback([&line, arguments, command = each.command] {
            WithResults(line, [&](CResultOutput& output) {
                OperateTour(output, command, arguments->tour);
            });
        });
    }
}

}  // namespace onvifctl
