#include "events/SourceItems.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "events/SourceTopics.h"

namespace onvif_client {

namespace {

// A device's states are many, and each is kept by its texts. What differs behind that is one.
constexpr std::size_t kLongestTopic = 256;
constexpr std::size_t kLongestSource = 512;

struct SimpleItem {
    std::string_view name;
    std::string_view value;
};
using SimpleItems = std::vector<SimpleItem>;

SimpleItems ReadItems(const XMLElement* notifyMessage, std::string_view path) {
    SimpleItems items;
    for (const XMLElement* each : Children(FindElement(notifyMessage, path), "item")) {
        items.push_back({TextAt(each, "name"), TextAt(each, "val")});
    }
    return items;
}

std::optional<bool> ReadState(const SimpleItems& items) {
    std::size_t best = std::numeric_limits<std::size_t>::max();
    std::optional<bool> state;
    for (const SimpleItem& each : items) {
        const auto rank = StateRank(each.name);
        const auto value = ReadStateValue(each.value);
        if (rank && value && *rank <= best) {
            state = *value || (*rank == best && *state);
            best = *rank;
        }
    }
    return state;
}

std::string Identity(const SimpleItems& source, const SimpleItems& key) {
    std::vector<std::string> parts;
    const auto add = [&](const SimpleItem& each) {
        parts.push_back(std::string(each.name) + "=" + std::string(each.value) + "\n");
    };
    std::for_each(source.begin(), source.end(), add);
    for (const SimpleItem& each : key) {
        if (IdentifiesRule(each.name)) {
            add(each);
        }
    }
    std::sort(parts.begin(), parts.end());
    std::string identity;
    for (const std::string& each : parts) {
        identity += each;
    }
    identity.resize(std::min(identity.size(), kLongestSource));
    return identity;
}

}  // namespace

AlarmItem ReadSourceItem(const XMLElement* notifyMessage) {
    AlarmItem item;
    const std::string_view operation = TextAt(notifyMessage, "message/propertyOper");
    item.initial = operation == "Initialized";
    std::string topic = PlainTopic(TextAt(notifyMessage, "topic"));
    const TopicMeaning meaning = MeaningOf(topic);
    const SimpleItems key = ReadItems(notifyMessage, "message/key");
    const SimpleItems data = ReadItems(notifyMessage, "message/data");
    const auto state = ReadState(data.empty() ? key : data);
    if (operation == "Deleted") {
        item.news = AlarmNews::kGone;
    } else if (state) {
        item.state = *state;
    } else if (meaning.pulses && !item.initial) {
        item.news = AlarmNews::kPulse;
    } else {
        return item;
    }
    item.type = meaning.type;
    if (item.type != AlarmType::kNone) {
        topic.resize(std::min(topic.size(), kLongestTopic));
        item.topic = std::move(topic);
        item.source = Identity(ReadItems(notifyMessage, "message/source"), key);
    }
    return item;
}

}  // namespace onvif_client
