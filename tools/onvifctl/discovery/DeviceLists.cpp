#include "discovery/DeviceLists.h"

#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "documents/ResultTable.h"
#include "output/Printable.h"

namespace onvifctl {

namespace {

using Json = nlohmann::ordered_json;

std::string Joined(const std::vector<std::string>& words) {
    std::string joined;
    for (const std::string& word : words) {
        joined += (joined.empty() ? "" : " ") + word;
    }
    return joined;
}

Json OrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

/// The text with '-' in the place of what a bare key of TOML does not have.
std::string BareKey(const std::string& text) {
    std::string key;
    for (const char c : text) {
        const bool fits = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                          (c >= '0' && c <= '9') || c == '_' || c == '-';
        if (fits || (!key.empty() && key.back() != '-')) {
            key += fits ? c : '-';
        }
    }
    return key.substr(0, key.find_last_not_of('-') + 1);
}

}  // namespace

std::string DeviceTable(const std::vector<FoundDevice>& devices) {
    std::vector<std::vector<std::string>> rows = {
        {"ADDRESS", "NAME", "HARDWARE", "LOCATION", "TYPES", "ENDPOINT"}};
    for (const FoundDevice& device : devices) {
        const auto address = device.Address();
        auto& row = rows.emplace_back(std::vector<std::string>{
            address ? address->Text() : "", device.Scope("name"), device.Scope("hardware"),
            device.Scope("location"), Joined(device.types), device.endpoint});
        for (std::string& cell : row) {
            cell = cell.empty() ? "-" : Printable(cell);
        }
    }
    return AlignColumns(rows);
}

std::string DeviceJson(const std::vector<FoundDevice>& devices) {
    std::string lines;
    for (const FoundDevice& device : devices) {
        const auto address = device.Address();
        const Json line = {{"camera", OrNull(address ? address->Text() : "")},
                           {"endpoint", OrNull(device.endpoint)},
                           {"addresses", device.addresses},
                           {"name", OrNull(device.Scope("name"))},
                           {"hardware", OrNull(device.Scope("hardware"))},
                           {"location", OrNull(device.Scope("location"))},
                           {"types", device.types},
                           {"scopes", device.scopes}};
        lines += line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    }
    return lines;
}

std::string DeviceHosts(const std::vector<FoundDevice>& devices) {
    std::string tables;
    std::set<std::string> taken;
    std::map<std::string, int> numbers;  // the next for a name that is taken
    for (const FoundDevice& device : devices) {
        const auto address = device.Address();
        if (!address) {
            continue;
        }
        std::string name = BareKey(device.Scope("name"));
        if (name.empty()) {
            name = "camera-" + BareKey(address->HostText());
        }
        const std::string base = name;
        for (int& number = numbers.try_emplace(base, 2).first->second; !taken.insert(name).second;
             ++number) {
            name = base + "-" + std::to_string(number);
        }
        tables +=
            (tables.empty() ? "[" : "\n[") + name + "]\naddress = \"" + address->Text() + "\"\n";
    }
    return tables;
}

}  // namespace onvifctl
