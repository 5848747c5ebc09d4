/// @file
/// The topics of a bridge. docs/bridge.md lists them.
#ifndef ONVIFCTL_BRIDGE_TOPICS_H
#define ONVIFCTL_BRIDGE_TOPICS_H

#include <optional>
#include <string>
#include <vector>

namespace onvifctl {

/// A camera's name as a level of a topic. What MQTT forbids there, '%' and '$' become %XX; two
/// names never become the same, nor one "$bridge".
std::string LevelOf(const std::string& name);

/// The name with letters, digits and '-' alone, anything else as _XX, for those who take no more.
/// Two names never become the same.
std::string IdentifierOf(const std::string& name);

struct BridgeCommand {
    enum class Kind { kRelay, kPreset, kTourStart, kTourStop, kTourPause, kSnapshot };
    Kind kind = Kind::kRelay;
    unsigned int number = 0;  // of a relay
    std::string name;         // "relay/1", "preset" ...
};

/// "input/3" or "relay/3", with a number that the library has for one.
bool IsNumberedState(const std::string& rest);

class CTopics {
 public:
    /// Throws CFailure when the prefix is none.
    CTopics(const std::string& prefix, unsigned int bridge);

    /// What is about the bridge itself.
    std::string OfBridge(const std::string& rest) const { return bridge_ + rest; }
    /// What is about a camera.
    std::string OfCamera(const std::string& name, const std::string& rest) const {
        return prefix_ + LevelOf(name) + "/" + rest;
    }

    /// Whether others believe what stands there: the bridge alone decides what it publishes.
    bool IsOwn(const std::string& topic) const { return topic.starts_with(prefix_); }

    /// For subscriptions to the commands for all cameras.
    std::vector<std::string> CommandFilters() const;
    /// For subscriptions to what may be retained of inputs and relays.
    std::vector<std::string> StateFilters() const;

    /// Splits the topic of a delivery.
    struct Parts {
        std::string level;  // as of LevelOf
        std::string rest;
    };
    std::optional<Parts> PartsOf(const std::string& topic) const;

    /// What the rest of a topic orders; nothing: it is no command.
    static std::optional<BridgeCommand> CommandOf(const std::string& rest);

 private:
    std::string prefix_;
    std::string bridge_;
};

}  // namespace onvifctl

#endif
