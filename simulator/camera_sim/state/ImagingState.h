/// @file
/// What a video source's image is set to, and where its lens stands. Plain data; numbers have no
/// unit unless one is named. Enumerated values are kept in the words of the protocol.
#ifndef CAMERA_SIM_STATE_IMAGINGSTATE_H
#define CAMERA_SIM_STATE_IMAGINGSTATE_H

#include <chrono>
#include <string>

namespace camera_sim {

/// Backlight compensation and wide dynamic range.
struct SwitchedLevel {
    std::string mode = "OFF";  ///< "OFF" or "ON"
    double level = 50;
};

/// In the coordinates of the picture: -1 to 1, left to right and bottom to top.
struct PictureArea {
    double left = -1;
    double top = 1;
    double right = 1;
    double bottom = -1;
};

/// Times in microseconds, gains and iris in dB.
struct ExposureSettings {
    std::string mode = "AUTO";           ///< "AUTO" or "MANUAL"
    std::string priority = "FrameRate";  ///< "LowNoise" or "FrameRate"
    PictureArea window;
    double minimumTime = 100;
    double maximumTime = 40000;
    double minimumGain = 0;
    double maximumGain = 36;
    double minimumIris = 0;
    double maximumIris = 20;
    double time = 10000;
    double gain = 12;
    double iris = 4;
};

struct FocusSettings {
    std::string mode = "AUTO";  ///< "AUTO" or "MANUAL"
    double defaultSpeed = 0.5;
    double nearLimit = 0.5;  ///< metres
    double farLimit = 0;     ///< metres; 0 is infinite
};

struct WhiteBalanceSettings {
    std::string mode = "AUTO";  ///< "AUTO" or "MANUAL"
    double crGain = 50;
    double cbGain = 50;
};

struct ImagingSettings {
    SwitchedLevel backlight;
    double brightness = 50;
    double saturation = 50;
    double contrast = 50;
    ExposureSettings exposure;
    FocusSettings focus;
    std::string irCutFilter = "AUTO";  ///< "ON", "OFF" or "AUTO"
    double sharpness = 50;
    SwitchedLevel wideDynamicRange;
    WhiteBalanceSettings whiteBalance;
};

/// A motorised focus: 0 is near, 1 is far. It moves on by itself: ask Position.
struct FocusLens {
    double start = 0.5;        ///< where it was when it last got an order
    double destination = 0.5;  ///< where it stops by itself
    double speed = 0;          ///< units per second, never negative
    std::chrono::steady_clock::time_point since{};

    double Position(std::chrono::steady_clock::time_point now) const;
};

}  // namespace camera_sim

#endif
