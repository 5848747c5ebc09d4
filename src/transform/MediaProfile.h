/// @file
/// What a session remembers of a device's media profiles and of the options that its later
/// commands need.
#ifndef ONVIF_CLIENT_TRANSFORM_MEDIAPROFILE_H
#define ONVIF_CLIENT_TRANSFORM_MEDIAPROFILE_H

#include <string>
#include <string_view>
#include <vector>

namespace onvif_client {

/// One media profile; a text is empty where the device gives none.
struct MediaProfile {
    std::string token;
    std::string videoSourceToken;
    std::string videoSourceConfigurationToken;
    std::string videoEncoderConfigurationToken;
    std::string videoEncoderConfigurationName;
    std::string ptzConfigurationToken;
    std::string videoAnalyticsConfigurationToken;
};

/// In the device's order.
using ProfileList = std::vector<MediaProfile>;

/// The profiles of a reply to GetProfiles, of either media service.
/// @return false for a fault; @p profiles then stays as it was.
bool ReadProfiles(std::string_view reply, ProfileList& profiles);

struct SpeedRange {
    int minimum = -1;
    int maximum = 1;
    // With their fractions, which standard requests do not cut off.
    double exactMinimum = -1;
    double exactMaximum = 1;
};

/// Ranges of the continuous pan, tilt and zoom velocity, in the units of the PTZ node.
struct PtzRanges {
    SpeedRange pan;
    SpeedRange tilt;
    SpeedRange zoom;
};

/// Reads a reply to the PTZ service's GetConfigurationOptions; a missing value leaves the default.
void ReadPtzRanges(std::string_view reply, PtzRanges& ranges);

/// Range of the continuous focus speed, as the device writes it.
struct FocusSpeedRange {
    std::string minimum;
    std::string maximum;
};

/// Reads a reply to the imaging service's GetMoveOptions; a missing value leaves the default.
void ReadFocusSpeedRange(std::string_view reply, FocusSpeedRange& range);

}  // namespace onvif_client

#endif
