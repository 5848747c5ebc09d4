/// @file
/// Image settings by path ("exposure/mode") beside what the device permits. Pure functions of
/// result documents.
#ifndef ONVIFCTL_PICTURE_IMAGESETTINGS_H
#define ONVIFCTL_PICTURE_IMAGESETTINGS_H

#include <string>
#include <vector>

namespace onvifctl {

struct ImageSetting {
    std::string path;
    std::string value;
    std::string permitted;  // "0 to 100" or "ON, OFF, AUTO"; empty when the device does not tell
};

struct ImageChange {
    std::string path;
    std::string value;
};

/// The settings in a result of imageSettings, with what a result of imageOpts permits. @p options
/// may be empty.
std::vector<ImageSetting> ReadImageSettings(const std::string& settings,
                                            const std::string& options);

/// Whether a result of imageOpts permits a change; true when it says nothing about it.
bool IsPermitted(const ImageChange& change, const std::string& options);

/// Whether two values are the same, as numbers if they are some.
bool SameValue(const std::string& one, const std::string& other);

/// The Set request for the changes. What stands beside a changed value in its group goes along:
/// devices want a group as a whole ("wideDynamicRange" with mode and level).
std::string ImageRequest(const std::string& settings, const std::vector<ImageChange>& changes);

}  // namespace onvifctl

#endif
