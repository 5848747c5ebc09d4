#include "fleet/DeviceDocuments.h"

#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"

namespace onvifctl {

namespace {

constexpr const char* kWithoutParameters[] = {
    "devInfo",       "ipv4",   "dns",     "networkProtocols", "serviceUrl", "profiles",
    "imageSettings", "motion", "presets", "streamCount",      "imageOpts",  "alarmin",
    "alarmout",      "osd",    "cruises", "osdoption",
};
constexpr const char* kWithAllProfiles[] = {"profile", "videoEncoderCfg", "videoEncoderCfgOpts"};
constexpr const char* kWithOneProfile[] = {"streamURI"};

}  // namespace

std::vector<DeviceDocument> DeviceDocuments(std::size_t profiles) {
    std::vector<DeviceDocument> documents;
    for (const char* command : kWithoutParameters) {
        documents.push_back({command, MakeRequest("Get", {command})});
    }
    std::vector<std::string> indexes;
    for (std::size_t i = 0; i < profiles; ++i) {
        indexes.push_back("--index=" + std::to_string(i));
    }
    for (const char* command : kWithAllProfiles) {
        std::vector<std::string> words = {command};
        words.insert(words.end(), indexes.begin(), indexes.end());
        documents.push_back({command, MakeRequest("Get", words)});
    }
    for (const char* command : kWithOneProfile) {
        for (std::size_t i = 0; i < profiles; ++i) {
            documents.push_back({std::string(command) + "-" + std::to_string(i),
                                 MakeRequest("Get", {command, indexes[i]})});
        }
    }
    return documents;
}

std::string RequestForAgain(const std::string& document, const std::string& name) {
    tinyxml2::XMLDocument parsed;
    parsed.Parse(document.c_str(), document.size());
    const auto* command = parsed.RootElement()->FirstChildElement();
    std::vector<std::string> words = {command->Name()};
    for (const auto* item = command->FirstChildElement("item"); item != nullptr;
         item = item->NextSiblingElement("item")) {
        const std::string index = TextAt(item, "index");
        if (!index.empty()) {
            words.push_back("--index=" + index);
        }
    }
    const std::size_t dash = name.rfind('-');
    if (words.size() == 1 && dash != std::string::npos &&
        name.find_first_not_of("0123456789", dash + 1) == std::string::npos) {
        words.push_back("--index=" + name.substr(dash + 1));
    }
    return MakeRequest("Get", words);
}

}  // namespace onvifctl
