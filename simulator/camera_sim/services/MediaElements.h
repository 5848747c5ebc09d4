/// @file
/// The media configurations that several services show.
#ifndef CAMERA_SIM_SERVICES_MEDIAELEMENTS_H
#define CAMERA_SIM_SERVICES_MEDIAELEMENTS_H

#include <span>
#include <string_view>
#include <vector>

#include "camera_sim/soap/XmlWriter.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

/// How many profiles use the configuration that @p member names.
int UseCount(const Media& media, std::string Profile::*member, std::string_view token);

/// The attribute and the children that every configuration starts with; its element is open.
void WriteEntityToken(CXmlWriter& out, std::string_view token);
void WriteEntityName(CXmlWriter& out, std::string_view name, int useCount);

void WriteMulticast(CXmlWriter& out, const Multicast& multicast);
void WriteResolution(CXmlWriter& out, Resolution resolution, std::string_view name = "Resolution");
void WriteRange(CXmlWriter& out, std::string_view name, Range range);

/// Each writes the element @p ns:@p name with its content.
void WriteVideoSource(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                      const VideoSourceConfiguration& configuration);
void WriteAudioSource(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                      const AudioSourceConfiguration& configuration);
/// Encoders as the first and the second media service have them.
void WriteVideoEncoder10(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                         const VideoEncoder& encoder);
void WriteVideoEncoder20(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                         const VideoEncoder& encoder);
void WriteAudioEncoder10(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                         const AudioEncoder& encoder);
void WriteAudioEncoder20(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                         const AudioEncoder& encoder);
void WriteAnalytics(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                    const AnalyticsConfiguration& configuration);
/// Only for an item that has cells.
CellTransformation TransformationOf(const AnalyticsItem& item);
void WriteAnalyticsItem(CXmlWriter& out, Ns ns, std::string_view name, const AnalyticsItem& item);
void WritePtz(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
              const PtzConfiguration& configuration);
void WriteMetadata(CXmlWriter& out, Ns ns, std::string_view name, const Media& media,
                   const MetadataConfiguration& configuration);

/// What a video encoder can be set to.
struct EncoderLimits {
    std::vector<Resolution> resolutions;
    std::vector<double> frameRates;  ///< ascending
    Range quality;
    Range govLength;
    Range bitrate;
};
EncoderLimits LimitsOf(const VideoEncoder& encoder);
/// Empty for an encoding without profiles.
std::span<const std::string_view> ProfilesOf(std::string_view encoding);
/// The encoding intervals of the first media service.
Range IntervalsOf(std::string_view encoding);

/// "PT10S".
std::string DurationText(std::chrono::seconds duration);

/// How PTZ positions, translations and velocities are named.
namespace ptz_space {
inline constexpr std::string_view kPanTiltPosition =
    "http://www.onvif.org/ver10/tptz/PanTiltSpaces/PositionGenericSpace";
inline constexpr std::string_view kZoomPosition =
    "http://www.onvif.org/ver10/tptz/ZoomSpaces/PositionGenericSpace";
inline constexpr std::string_view kPanTiltTranslation =
    "http://www.onvif.org/ver10/tptz/PanTiltSpaces/TranslationGenericSpace";
inline constexpr std::string_view kZoomTranslation =
    "http://www.onvif.org/ver10/tptz/ZoomSpaces/TranslationGenericSpace";
inline constexpr std::string_view kPanTiltVelocity =
    "http://www.onvif.org/ver10/tptz/PanTiltSpaces/VelocityGenericSpace";
inline constexpr std::string_view kZoomVelocity =
    "http://www.onvif.org/ver10/tptz/ZoomSpaces/VelocityGenericSpace";
inline constexpr std::string_view kPanTiltSpeed =
    "http://www.onvif.org/ver10/tptz/PanTiltSpaces/GenericSpeedSpace";
inline constexpr std::string_view kZoomSpeed =
    "http://www.onvif.org/ver10/tptz/ZoomSpaces/ZoomGenericSpeedSpace";
}  // namespace ptz_space

/// A space of two or one dimensions below @p name.
void WriteSpace(CXmlWriter& out, std::string_view name, std::string_view uri, Range x, Range y);
void WriteSpace(CXmlWriter& out, std::string_view name, std::string_view uri, Range x);

}  // namespace camera_sim

#endif
