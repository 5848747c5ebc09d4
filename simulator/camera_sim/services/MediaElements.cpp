#include "camera_sim/services/MediaElements.h"

#include <algorithm>
#include <array>

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

void WriteVector(CXmlWriter& out, std::string_view name, const PictureVector& vector) {
    const Scope element(out, Ns::kSchema, name);
    out.Attribute("x", CXmlWriter::NumberText(vector.x));
    out.Attribute("y", CXmlWriter::NumberText(vector.y));
}

void WriteCellLayout(CXmlWriter& out, const AnalyticsItem& module) {
    const Scope item(out, Ns::kSchema, "ElementItem");
    out.Attribute("Name", "Layout");
    const Scope layout(out, Ns::kSchema, "CellLayout");
    out.Attribute("Columns", module.cells->width);
    out.Attribute("Rows", module.cells->height);
    const CellTransformation cells = TransformationOf(module);
    const Scope transformation(out, Ns::kSchema, "Transformation");
    WriteVector(out, "Translate", cells.translate);
    WriteVector(out, "Scale", cells.scale);
}

}  // namespace

CellTransformation TransformationOf(const AnalyticsItem& item) {
    return item.transformation.value_or(
        CellTransformation{{-1, -1}, {2.0 / item.cells->width, 2.0 / item.cells->height}});
}

void WriteAnalyticsItem(CXmlWriter& out, Ns ns, std::string_view name, const AnalyticsItem& item) {
    const Scope element(out, ns, name);
    out.Attribute("Name", item.name);
    out.Attribute("Type", out.QualifiedName(Ns::kSchema, item.type));
    const Scope parameters(out, Ns::kSchema, "Parameters");
    for (const auto& [key, value] : item.parameters) {
        const Scope parameter(out, Ns::kSchema, "SimpleItem");
        out.Attribute("Name", key);
        out.Attribute("Value", value);
    }
    if (item.cells) {
        WriteCellLayout(out, item);
    }
}

int UseCount(const Media& media, std::string Profile::*member, std::string_view token) {
    return static_cast<int>(
        std::count_if(media.profiles.begin(), media.profiles.end(),
                      [&](const Profile& profile) { return profile.*member == token; }));
}

void WriteEntityToken(CXmlWriter& out, std::string_view token) {
    out.Attribute("token", token);
}

void WriteEntityName(CXmlWriter& out, std::string_view name, int useCount) {
    out.Element(Ns::kSchema, "Name", name);
    out.Element(Ns::kSchema, "UseCount", useCount);
}

void WriteMulticast(CXmlWriter& out, const Multicast& multicast) {
    const Scope element(out, Ns::kSchema, "Multicast");
    {
        const Scope address(out, Ns::kSchema, "Address");
        out.Element(Ns::kSchema, "Type", "IPv4");
        out.Element(Ns::kSchema, "IPv4Address", multicast.address);
    }
    out.Element(Ns::kSchema, "Port", multicast.port);
    out.Element(Ns::kSchema, "TTL", multicast.ttl);
    out.Element(Ns::kSchema, "AutoStart", multicast.autoStart);
}

void WriteResolution(CXmlWriter& out, Resolution resolution, std::string_view name) {
    const Scope element(out, Ns::kSchema, name);
    out.Element(Ns::kSchema, "Width", resolution.width);
    out.Element(Ns::kSchema, "Height", resolution.height);
}

void WriteRange(CXmlWriter& out, std::string_view name, Range range) {
    const Scope element(out, Ns::kSchema, name);
    out.Element(Ns::kSchema, "Min", range.minimum);
    out.Element(Ns::kSchema, "Max", range.maximum);
}

void WriteVideoSource(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                      const VideoSourceConfiguration& configuration) {
    const Scope element(out, ns, name);
    WriteEntityToken(out, configuration.token);
    WriteEntityName(out, configuration.name,
                    UseCount(media, &Profile::videoSource, configuration.token));
    out.Element(Ns::kSchema, "SourceToken", configuration.source);
    const Scope bounds(out, Ns::kSchema, "Bounds");
    out.Attribute("x", 0);
    out.Attribute("y", 0);
    out.Attribute("width", configuration.bounds.width);
    out.Attribute("height", configuration.bounds.height);
}

void WriteAudioSource(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                      const AudioSourceConfiguration& configuration) {
    const Scope element(out, ns, name);
    WriteEntityToken(out, configuration.token);
    WriteEntityName(out, configuration.name,
                    UseCount(media, &Profile::audioSource, configuration.token));
    out.Element(Ns::kSchema, "SourceToken", configuration.source);
}

void WriteAnalytics(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                    const AnalyticsConfiguration& configuration) {
    const Scope element(out, ns, name);
    WriteEntityToken(out, configuration.token);
    WriteEntityName(out, configuration.name,
                    UseCount(media, &Profile::analytics, configuration.token));
    {
        const Scope modules(out, Ns::kSchema, "AnalyticsEngineConfiguration");
        for (const AnalyticsItem& item : configuration.modules) {
            WriteAnalyticsItem(out, Ns::kSchema, "AnalyticsModule", item);
        }
    }
    const Scope rules(out, Ns::kSchema, "RuleEngineConfiguration");
    for (const AnalyticsItem& item : configuration.rules) {
        WriteAnalyticsItem(out, Ns::kSchema, "Rule", item);
    }
}

void WritePtz(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
              const PtzConfiguration& configuration) {
    const Scope element(out, ns, name);
    WriteEntityToken(out, configuration.token);
    WriteEntityName(out, configuration.name, UseCount(media, &Profile::ptz, configuration.token));
    out.Element(Ns::kSchema, "NodeToken", configuration.node);
    out.Element(Ns::kSchema, "DefaultAbsolutePantTiltPositionSpace", ptz_space::kPanTiltPosition);
    out.Element(Ns::kSchema, "DefaultAbsoluteZoomPositionSpace", ptz_space::kZoomPosition);
    out.Element(Ns::kSchema, "DefaultRelativePanTiltTranslationSpace",
                ptz_space::kPanTiltTranslation);
    out.Element(Ns::kSchema, "DefaultRelativeZoomTranslationSpace", ptz_space::kZoomTranslation);
    out.Element(Ns::kSchema, "DefaultContinuousPanTiltVelocitySpace", ptz_space::kPanTiltVelocity);
    out.Element(Ns::kSchema, "DefaultContinuousZoomVelocitySpace", ptz_space::kZoomVelocity);
    {
        const Scope speed(out, Ns::kSchema, "DefaultPTZSpeed");
        {
            const Scope panTilt(out, Ns::kSchema, "PanTilt");
            out.Attribute("x", "0.5");
            out.Attribute("y", "0.5");
            out.Attribute("space", ptz_space::kPanTiltSpeed);
        }
        const Scope zoom(out, Ns::kSchema, "Zoom");
        out.Attribute("x", "0.5");
        out.Attribute("space", ptz_space::kZoomSpeed);
    }
    out.Element(Ns::kSchema, "DefaultPTZTimeout", DurationText(configuration.defaultTimeout));
    {
        const Scope limits(out, Ns::kSchema, "PanTiltLimits");
        WriteSpace(out, "Range", ptz_space::kPanTiltPosition, configuration.pan,
                   configuration.tilt);
    }
    const Scope limits(out, Ns::kSchema, "ZoomLimits");
    WriteSpace(out, "Range", ptz_space::kZoomPosition, configuration.zoom);
}

void WriteMetadata(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                   const MetadataConfiguration& configuration) {
    const Scope element(out, ns, name);
    WriteEntityToken(out, configuration.token);
    WriteEntityName(out, configuration.name,
                    UseCount(media, &Profile::metadata, configuration.token));
    {
        const Scope status(out, Ns::kSchema, "PTZStatus");
        out.Element(Ns::kSchema, "Status", false);
        out.Element(Ns::kSchema, "Position", false);
    }
    out.Element(Ns::kSchema, "Analytics", true);
    WriteMulticast(out, configuration.multicast);
    out.Element(Ns::kSchema, "SessionTimeout", "PT60S");
}

EncoderLimits LimitsOf(const VideoEncoder& encoder) {
    std::vector<Resolution> resolutions = {encoder.largest};
    for (const Resolution& each : {Resolution{1920, 1080}, Resolution{1280, 720},
                                   Resolution{704, 576}, Resolution{352, 288}}) {
        if (each.width < encoder.largest.width) {
            resolutions.push_back(each);
        }
    }
    return {std::move(resolutions), {1, 5, 10, 15, 20, 25, 30}, {0, 6}, {1, 300}, {32, 8192}};
}

std::span<const std::string_view> ProfilesOf(std::string_view encoding) {
    static constexpr std::array<std::string_view, 2> kMpeg4 = {"SP", "ASP"};
    static constexpr std::array<std::string_view, 3> kOthers = {"Baseline", "Main", "High"};
    if (encoding == "JPEG") {
        return {};
    }
    if (encoding == "MPEG4") {
        return kMpeg4;
    }
    return kOthers;
}

Range IntervalsOf(std::string_view encoding) {
    return {1, encoding == "JPEG" ? 1.0 : 10.0};
}

std::string DurationText(std::chrono::seconds duration) {
    return "PT" + std::to_string(duration.count()) + "S";
}

void WriteSpace(CXmlWriter& out, std::string_view name, std::string_view uri, Range x, Range y) {
    const Scope element(out, Ns::kSchema, name);
    out.Element(Ns::kSchema, "URI", uri);
    WriteRange(out, "XRange", x);
    WriteRange(out, "YRange", y);
}

void WriteSpace(CXmlWriter& out, std::string_view name, std::string_view uri, Range x) {
    const Scope element(out, Ns::kSchema, name);
    out.Element(Ns::kSchema, "URI", uri);
    WriteRange(out, "XRange", x);
}

}  // namespace camera_sim
