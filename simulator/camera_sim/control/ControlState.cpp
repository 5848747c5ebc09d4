#include "camera_sim/control/ControlState.h"

#include "camera_sim/soap/ActiveCells.h"

namespace camera_sim {
namespace {

void WriteSwitched(JsonWriter& json, std::string_view name, const SwitchedLevel& setting) {
    json.Key(name);
    const auto object = json.Object();
    json.Key("mode").Value(setting.mode);
    json.Key("level").Value(setting.level);
}

void WriteExposure(JsonWriter& json, const ExposureSettings& exposure) {
    json.Key("exposure");
    const auto object = json.Object();
    json.Key("mode").Value(exposure.mode);
    json.Key("priority").Value(exposure.priority);
    json.Key("window");
    {
        const auto window = json.Object();
        json.Key("left").Value(exposure.window.left);
        json.Key("top").Value(exposure.window.top);
        json.Key("right").Value(exposure.window.right);
        json.Key("bottom").Value(exposure.window.bottom);
    }
    json.Key("minimumTime").Value(exposure.minimumTime);
    json.Key("maximumTime").Value(exposure.maximumTime);
    json.Key("minimumGain").Value(exposure.minimumGain);
    json.Key("maximumGain").Value(exposure.maximumGain);
    json.Key("minimumIris").Value(exposure.minimumIris);
    json.Key("maximumIris").Value(exposure.maximumIris);
    json.Key("time").Value(exposure.time);
    json.Key("gain").Value(exposure.gain);
    json.Key("iris").Value(exposure.iris);
}

void WriteFocus(JsonWriter& json, const VideoSource& source) {
    const FocusSettings& focus = source.imaging.focus;
    json.Key("focus");
    const auto object = json.Object();
    json.Key("mode").Value(focus.mode);
    json.Key("defaultSpeed").Value(focus.defaultSpeed);
    json.Key("nearLimit").Value(focus.nearLimit);
    json.Key("farLimit").Value(focus.farLimit);
    json.Key("position").Value(source.lens.Position(std::chrono::steady_clock::now()));
}

void WriteWhiteBalance(JsonWriter& json, const WhiteBalanceSettings& whiteBalance) {
    json.Key("whiteBalance");
    const auto object = json.Object();
    json.Key("mode").Value(whiteBalance.mode);
    json.Key("crGain").Value(whiteBalance.crGain);
    json.Key("cbGain").Value(whiteBalance.cbGain);
}

/// The cells as a text a row; nothing for a text that does not fit the layout.
void WriteCells(JsonWriter& json, std::string_view packed, Resolution layout) {
    const auto rows = json.Array();
    const auto cells = DecodeCells(packed, layout);
    if (!cells) return;
    const auto columns = static_cast<std::size_t>(layout.width);
    for (std::size_t start = 0; start < cells->size(); start += columns) {
        std::string row;
        for (std::size_t i = start; i < start + columns; ++i) row += (*cells)[i] ? '#' : '.';
        json.Value(row);
    }
}

void WriteItem(JsonWriter& json, const AnalyticsItem& item, Resolution layout) {
    const auto object = json.Object();
    json.Key("name").Value(item.name);
    json.Key("type").Value(item.type);
    if (item.cells) {
        json.Key("columns").Value(item.cells->width);
        json.Key("rows").Value(item.cells->height);
    }
    for (const auto& [name, value] : item.parameters) {
        json.Key(name).Value(value);
        if (name != "ActiveCells") continue;
        json.Key("cells");
        WriteCells(json, value, layout);
    }
}

}  // namespace

void WriteImaging(JsonWriter& json, const Media& media) {
    const auto sources = json.Array();
    for (const VideoSource& source : media.videoSources) {
        const ImagingSettings& settings = source.imaging;
        const auto object = json.Object();
        json.Key("token").Value(source.token);
        WriteSwitched(json, "backlightCompensation", settings.backlight);
        json.Key("brightness").Value(settings.brightness);
        json.Key("colorSaturation").Value(settings.saturation);
        json.Key("contrast").Value(settings.contrast);
        json.Key("sharpness").Value(settings.sharpness);
        WriteExposure(json, settings.exposure);
        if (source.motorizedFocus) WriteFocus(json, source);
        json.Key("irCutFilter").Value(settings.irCutFilter);
        WriteSwitched(json, "wideDynamicRange", settings.wideDynamicRange);
        WriteWhiteBalance(json, settings.whiteBalance);
    }
}

void WriteOsds(JsonWriter& json, const Media& media) {
    const auto osds = json.Array();
    for (const Osd& osd : media.osds) {
        const auto object = json.Object();
        json.Key("token").Value(osd.token);
        json.Key("position").Value(osd.position);
        json.Key("x").Value(osd.x);
        json.Key("y").Value(osd.y);
        json.Key("type").Value(osd.textType);
        json.Key("plainText").Value(osd.plainText);
        json.Key("dateFormat").Value(osd.dateFormat);
        json.Key("timeFormat").Value(osd.timeFormat);
        if (osd.channelName) json.Key("channelName").Value(*osd.channelName);
    }
}

void WriteMotion(JsonWriter& json, const Media& media) {
    const auto items = json.Array();
    for (const AnalyticsConfiguration& configuration : media.analytics) {
        const Resolution layout = LayoutOf(configuration);
        for (const AnalyticsItem& item : configuration.modules) WriteItem(json, item, layout);
        for (const AnalyticsItem& item : configuration.rules) WriteItem(json, item, layout);
    }
}

}  // namespace camera_sim
