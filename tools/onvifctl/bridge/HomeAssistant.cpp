#include "bridge/HomeAssistant.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace onvifctl {

namespace {

using Json = nlohmann::ordered_json;

/// Makes the messages of one camera.
class CMessages {
 public:
    CMessages(const std::string& prefix, const CTopics& topics, const std::string& camera)
        : prefix_(prefix),
          topics_(topics),
          camera_(camera),
          identifier_("onvif_" + IdentifierOf(topics.OfCamera(camera, ""))) {}

    /// @p object: what of the camera it is, as a level of a topic ("input_1").
    void Add(const std::string& component, const std::string& object, const std::string& name,
             const Json& details) {
        const Json::array_t availability = {{{"topic", topics_.OfBridge("availability")}},
                                            {{"topic", topics_.OfCamera(camera_, "availability")}}};
        Json message = {{"name", name},
                        {"unique_id", identifier_ + "_" + object},
                        {"availability", availability},
                        {"availability_mode", "all"},
                        {"device", {{"identifiers", {identifier_}}, {"name", camera_}}}};
        message.update(details);
        messages.emplace_back(
            prefix_ + "/" + component + "/" + identifier_ + "/" + object + "/config",
            message.dump(-1, ' ', false, Json::error_handler_t::replace));
    }

    std::string Topic(const std::string& rest) const { return topics_.OfCamera(camera_, rest); }

    std::vector<std::pair<std::string, std::string>> messages;

 private:
    const std::string& prefix_;
    const CTopics& topics_;
    const std::string& camera_;
    const std::string identifier_;
};

}  // namespace

std::vector<std::pair<std::string, std::string>> DiscoveryMessages(const std::string& prefix,
                                                                   const CTopics& topics,
                                                                   const std::string& camera,
                                                                   const Inventory& inventory) {
    CMessages all(prefix, topics, camera);
    all.Add("binary_sensor", "motion", "Motion",
            {{"state_topic", all.Topic("motion")}, {"device_class", "motion"}});
    for (unsigned int i = 1; i <= inventory.inputs; ++i) {
        const std::string number = std::to_string(i);
        all.Add("binary_sensor", "input_" + number, "Input " + number,
                {{"state_topic", all.Topic("input/" + number)}});
    }
    for (unsigned int i = 1; i <= inventory.relays; ++i) {
        const std::string number = std::to_string(i);
        all.Add("switch", "relay_" + number, "Relay " + number,
                {{"state_topic", all.Topic("relay/" + number)},
                 {"command_topic", all.Topic("relay/" + number + "/set")}});
    }
    all.Add("camera", "snapshot", "Snapshot", {{"topic", all.Topic("snapshot")}});
    all.Add("button", "snapshot", "Take snapshot",
            {{"command_topic", all.Topic("snapshot/get")}, {"payload_press", ""}});
    return std::move(all.messages);
}

}  // namespace onvifctl
