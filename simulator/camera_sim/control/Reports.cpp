#include "camera_sim/control/Reports.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "camera_sim/soap/ActiveCells.h"

namespace camera_sim {
namespace {

/// Members stay in the order of writing.
using Json = nlohmann::ordered_json;

std::string TextOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

/// A whole number without a decimal point.
Json Number(double value) {
    constexpr double kLargestWhole = 1e15;
    const bool whole = std::trunc(value) == value && std::abs(value) < kLargestWhole;
    return whole ? Json(static_cast<std::int64_t>(value)) : Json(value);
}

/// An array with what @p convert makes of each entry.
template <typename List, typename Convert>
Json Array(const List& list, const Convert& convert) {
    Json array = Json::array();
    for (const auto& entry : list) {
        array.push_back(convert(entry));
    }
    return array;
}

Json OfNetwork(const Network& network) {
    Json ports = Json::object();
    for (const NetworkProtocol& protocol : network.protocols) {
        ports[protocol.name] = protocol.ports;
    }
    return {
        {"interfaces",
         Array(network.interfaces,
               [](const NetworkInterface& interface) -> Json {
                   return {{"token", interface.token},
                           {"dhcp", interface.dhcp},
                           {"manual", Array(interface.manual, [](const PrefixedAddress& address) {
                                return address.address + "/" + std::to_string(address.prefixLength);
                            })}};
               })},
        {"gateways", network.gatewaysIpv4},
        {"ports", std::move(ports)},
    };
}

/// For relays and inputs, which look the same here.
template <typename List>
Json OfConnectors(const List& list) {
    return Array(list, [](const auto& connector) -> Json {
        return {{"token", connector.token},
                {"idleState", connector.idleState},
                {"active", connector.active}};
    });
}

Json OfSwitched(const SwitchedLevel& setting) {
    return {{"mode", setting.mode}, {"level", Number(setting.level)}};
}

Json OfExposure(const ExposureSettings& exposure) {
    return {
        {"mode", exposure.mode},
        {"priority", exposure.priority},
        {"window",
         {{"left", Number(exposure.window.left)},
          {"top", Number(exposure.window.top)},
          {"right", Number(exposure.window.right)},
          {"bottom", Number(exposure.window.bottom)}}},
        {"minimumTime", Number(exposure.minimumTime)},
        {"maximumTime", Number(exposure.maximumTime)},
        {"minimumGain", Number(exposure.minimumGain)},
        {"maximumGain", Number(exposure.maximumGain)},
        {"minimumIris", Number(exposure.minimumIris)},
        {"maximumIris", Number(exposure.maximumIris)},
        {"time", Number(exposure.time)},
        {"gain", Number(exposure.gain)},
        {"iris", Number(exposure.iris)},
    };
}

Json OfFocus(const VideoSource& source) {
    const FocusSettings& focus = source.imaging.focus;
    return {
        {"mode", focus.mode},
        {"defaultSpeed", Number(focus.defaultSpeed)},
        {"nearLimit", Number(focus.nearLimit)},
        {"farLimit", Number(focus.farLimit)},
        {"position", Number(source.lens.Position(std::chrono::steady_clock::now()))},
    };
}

Json OfImaging(const VideoSource& source) {
    const ImagingSettings& settings = source.imaging;
    const WhiteBalanceSettings& whiteBalance = settings.whiteBalance;
    Json imaging = {
        {"token", source.token},
        {"backlightCompensation", OfSwitched(settings.backlight)},
        {"brightness", Number(settings.brightness)},
        {"colorSaturation", Number(settings.saturation)},
        {"contrast", Number(settings.contrast)},
        {"sharpness", Number(settings.sharpness)},
        {"exposure", OfExposure(settings.exposure)},
    };
    if (source.motorizedFocus) {
        imaging["focus"] = OfFocus(source);
    }
    imaging["irCutFilter"] = settings.irCutFilter;
    imaging["wideDynamicRange"] = OfSwitched(settings.wideDynamicRange);
    imaging["whiteBalance"] = {{"mode", whiteBalance.mode},
                               {"crGain", Number(whiteBalance.crGain)},
                               {"cbGain", Number(whiteBalance.cbGain)}};
    return imaging;
}

Json OfOsd(const Osd& osd) {
    Json text = {
        {"token", osd.token},           {"position", osd.position},
        {"x", Number(osd.x)},           {"y", Number(osd.y)},
        {"type", osd.textType},         {"plainText", osd.plainText},
        {"dateFormat", osd.dateFormat}, {"timeFormat", osd.timeFormat},
    };
    if (osd.channelName) {
        text["channelName"] = *osd.channelName;
    }
    return text;
}

/// The cells as a text a row ('#': active); nothing for a text that does not fit the layout.
Json OfCells(std::string_view packed, Resolution layout) {
    Json rows = Json::array();
    const auto cells = DecodeCells(packed, layout);
    if (!cells) {
        return rows;
    }
    const auto columns = static_cast<std::size_t>(layout.width);
    for (std::size_t start = 0; start < cells->size(); start += columns) {
        std::string row;
        for (std::size_t i = start; i < start + columns; ++i) {
            row += (*cells)[i] ? '#' : '.';
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

Json OfAnalyticsItem(const AnalyticsItem& item, Resolution layout) {
    Json object = {{"name", item.name}, {"type", item.type}};
    if (item.cells) {
        object["columns"] = item.cells->width;
        object["rows"] = item.cells->height;
    }
    for (const auto& [name, value] : item.parameters) {
        object.emplace(name, value);
        if (name == "ActiveCells") {
            object.emplace("cells", OfCells(value, layout));
        }
    }
    return object;
}

/// The motion modules and rules.
Json OfMotionCells(const Media& media) {
    Json items = Json::array();
    for (const AnalyticsConfiguration& configuration : media.analytics) {
        const Resolution layout = LayoutOf(configuration);
        for (const AnalyticsItem& item : configuration.modules) {
            items.push_back(OfAnalyticsItem(item, layout));
        }
        for (const AnalyticsItem& item : configuration.rules) {
            items.push_back(OfAnalyticsItem(item, layout));
        }
    }
    return items;
}

}  // namespace

std::string ReportState(const IControlledCamera& camera) {
    const CameraState state = camera.State();
    const CameraOptions& options = camera.Options();
    Json motion = Json::object();
    for (const VideoSource& source : state.media.videoSources) {
        motion[source.token] = source.motion;
    }
    return TextOf({
        {"model", options.model},
        {"port", options.port},
        {"clockOffset", state.clock.offset.count()},
        {"dateTimeType", state.clock.type},
        {"daylightSavings", state.clock.daylightSavings},
        {"timeZone", state.clock.timeZone},
        {"network", OfNetwork(state.network)},
        {"relays", OfConnectors(state.relays)},
        {"inputs", OfConnectors(state.inputs)},
        {"imaging", Array(state.media.videoSources, OfImaging)},
        {"osds", Array(state.media.osds, OfOsd)},
        {"motionCells", OfMotionCells(state.media)},
        {"motion", std::move(motion)},
        {"profiles",
         Array(state.media.profiles, [](const Profile& profile) { return profile.token; })},
    });
}

std::string ReportCounters(const IControlledCamera& camera) {
    Json counters = Json::object();
    for (const auto& [operation, count] : camera.AllCounts()) {
        counters[operation] = count;
    }
    return TextOf(counters);
}

std::string ReportRequests(const IControlledCamera& camera) {
    return TextOf(Array(camera.Requests(), [](const RecordedRequest& request) -> Json {
        return {{"service", request.service}, {"operation", request.operation},
                {"path", request.path},       {"authenticated", request.authenticated},
                {"refusal", request.refusal}, {"status", request.status},
                {"head", request.head},       {"body", request.body}};
    }));
}

std::string ReportFaults(const IControlledCamera& camera) {
    return TextOf(Array(camera.Faults(), [](const PlannedFault& planned) -> Json {
        return {{"operation", planned.operation},
                {"kind", KindName(planned.fault.kind)},
                {"remaining", planned.fault.remaining}};
    }));
}

std::string ReportSubscriptions(const IControlledCamera& camera) {
    return TextOf(Array(camera.Subscriptions(), [](const SubscriptionInfo& info) -> Json {
        return {{"id", info.id},
                {"consumer", info.consumer},
                {"restMilliseconds", info.rest.count()},
                {"waitingPulls", info.waitingPulls},
                {"queued", info.queued},
                {"delivered", info.delivered},
                {"dropped", info.dropped}};
    }));
}

}  // namespace camera_sim
