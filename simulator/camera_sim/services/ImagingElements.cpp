#include "camera_sim/services/ImagingElements.h"

#include <algorithm>
#include <array>
#include <string>

#include "camera_sim/services/MediaElements.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;
using Words = std::span<const std::string_view>;

constexpr std::array<std::string_view, 2> kSwitch = {"OFF", "ON"};
constexpr std::array<std::string_view, 2> kAutoOrManual = {"AUTO", "MANUAL"};
constexpr std::array<std::string_view, 2> kPriorities = {"LowNoise", "FrameRate"};
constexpr std::array<std::string_view, 3> kFilterModes = {"ON", "OFF", "AUTO"};

constexpr Range kPercent{0, 100};
constexpr Range kGain{0, 48};
constexpr Range kIris{0, 24};
constexpr Range kExposureTime{20, 40000};

/// A setting that is one of some words; the options name it differently in places.
template <typename Part>
struct Choice {
    std::string_view name;
    std::string_view optionName;
    std::string Part::*value;
    Words words;
};

template <typename Part>
struct Number {
    std::string_view name;
    std::string_view optionName;
    double Part::*value;
    Range range;
};

constexpr std::array kSwitchChoices = {
    Choice<SwitchedLevel>{"Mode", "Mode", &SwitchedLevel::mode, kSwitch},
};
constexpr std::array kSwitchNumbers = {
    Number<SwitchedLevel>{"Level", "Level", &SwitchedLevel::level, kPercent},
};

constexpr std::array kExposureChoices = {
    Choice<ExposureSettings>{"Mode", "Mode", &ExposureSettings::mode, kAutoOrManual},
    Choice<ExposureSettings>{"Priority", "Priority", &ExposureSettings::priority, kPriorities},
};

constexpr Number<ExposureSettings> Exposure(std::string_view name, double ExposureSettings::*value,
                                            Range range) {
    return {name, name, value, range};
}
constexpr std::array kExposureNumbers = {
    Exposure("MinExposureTime", &ExposureSettings::minimumTime, kExposureTime),
    Exposure("MaxExposureTime", &ExposureSettings::maximumTime, kExposureTime),
    Exposure("MinGain", &ExposureSettings::minimumGain, kGain),
    Exposure("MaxGain", &ExposureSettings::maximumGain, kGain),
    Exposure("MinIris", &ExposureSettings::minimumIris, kIris),
    Exposure("MaxIris", &ExposureSettings::maximumIris, kIris),
    Exposure("ExposureTime", &ExposureSettings::time, kExposureTime),
    Exposure("Gain", &ExposureSettings::gain, kGain),
    Exposure("Iris", &ExposureSettings::iris, kIris),
};

constexpr std::array kFocusChoices = {
    Choice<FocusSettings>{"AutoFocusMode", "AutoFocusModes", &FocusSettings::mode, kAutoOrManual},
};
constexpr std::array kFocusNumbers = {
    Number<FocusSettings>{"DefaultSpeed", "DefaultSpeed", &FocusSettings::defaultSpeed, {0, 1}},
    Number<FocusSettings>{"NearLimit", "NearLimit", &FocusSettings::nearLimit, {0.1, 10}},
    Number<FocusSettings>{"FarLimit", "FarLimit", &FocusSettings::farLimit, {0, 1000}},
};

constexpr std::array kWhiteBalanceChoices = {
    Choice<WhiteBalanceSettings>{"Mode", "Mode", &WhiteBalanceSettings::mode, kAutoOrManual},
};
constexpr std::array kWhiteBalanceNumbers = {
    Number<WhiteBalanceSettings>{"CrGain", "YrGain", &WhiteBalanceSettings::crGain, kPercent},
    Number<WhiteBalanceSettings>{"CbGain", "YbGain", &WhiteBalanceSettings::cbGain, kPercent},
};

constexpr std::array kPictureChoices = {
    Choice<ImagingSettings>{"IrCutFilter", "IrCutFilterModes", &ImagingSettings::irCutFilter,
                            kFilterModes},
};

constexpr Number<ImagingSettings> Picture(std::string_view name, double ImagingSettings::*value) {
    return {name, name, value, kPercent};
}
// The protocol's order has other elements between the two.
constexpr std::array kToneNumbers = {
    Picture("Brightness", &ImagingSettings::brightness),
    Picture("ColorSaturation", &ImagingSettings::saturation),
    Picture("Contrast", &ImagingSettings::contrast),
};
constexpr std::array kSharpnessNumbers = {
    Picture("Sharpness", &ImagingSettings::sharpness),
};

struct Edge {
    const char* name;
    double PictureArea::*value;
};
constexpr std::array kEdges = {
    Edge{"bottom", &PictureArea::bottom},
    Edge{"top", &PictureArea::top},
    Edge{"right", &PictureArea::right},
    Edge{"left", &PictureArea::left},
};

bool IsIn(Range range, double value) {
    return value >= range.minimum && value <= range.maximum;
}

template <typename Rows, typename Part>
void WriteChoices(CXmlWriter& out, const Rows& rows, const Part& part) {
    for (const auto& row : rows) {
        out.Element(Ns::kSchema, row.name, std::string_view(part.*row.value));
    }
}

template <typename Rows, typename Part>
void WriteNumbers(CXmlWriter& out, const Rows& rows, const Part& part) {
    for (const auto& row : rows) {
        out.Element(Ns::kSchema, row.name, part.*row.value);
    }
}

template <typename Rows>
void WriteWords(CXmlWriter& out, const Rows& rows) {
    for (const auto& row : rows) {
        for (const std::string_view word : row.words) {
            out.Element(Ns::kSchema, row.optionName, word);
        }
    }
}

template <typename Rows>
void WriteRanges(CXmlWriter& out, const Rows& rows) {
    for (const auto& row : rows) {
        WriteRange(out, row.optionName, row.range);
    }
}

template <typename Choices, typename Numbers, typename Part>
void WriteGroup(CXmlWriter& out, std::string_view name, const Choices& choices,
                const Numbers& numbers, const Part& part) {
    const Scope group(out, Ns::kSchema, name);
    WriteChoices(out, choices, part);
    WriteNumbers(out, numbers, part);
}

template <typename Choices, typename Numbers>
void WriteGroupOptions(CXmlWriter& out, std::string_view name, const Choices& choices,
                       const Numbers& numbers) {
    const Scope group(out, Ns::kSchema, name);
    WriteWords(out, choices);
    WriteRanges(out, numbers);
}

void WriteExposure(CXmlWriter& out, const ExposureSettings& exposure) {
    const Scope group(out, Ns::kSchema, "Exposure");
    WriteChoices(out, kExposureChoices, exposure);
    {
        const Scope window(out, Ns::kSchema, "Window");
        for (const Edge& edge : kEdges) {
            out.Attribute(edge.name, CXmlWriter::NumberText(exposure.window.*edge.value));
        }
    }
    WriteNumbers(out, kExposureNumbers, exposure);
}

template <typename Rows, typename Part>
Answer ReadChoices(const XmlElement* given, const Rows& rows, Part& part) {
    for (const auto& row : rows) {
        const XmlElement* element = Child(given, row.name);
        if (element == nullptr) {
            continue;
        }
        const std::string_view word = Text(element);
        if (std::find(row.words.begin(), row.words.end(), word) == row.words.end()) {
            return InvalidSettings(row.name);
        }
        part.*row.value = word;
    }
    return kDone;
}

template <typename Rows, typename Part>
Answer ReadNumbers(const XmlElement* given, const Rows& rows, Part& part) {
    for (const auto& row : rows) {
        const XmlElement* element = Child(given, row.name);
        if (element == nullptr) {
            continue;
        }
        const auto value = ToDouble(Text(element));
        if (!value || !IsIn(row.range, *value)) {
            return InvalidSettings(row.name);
        }
        part.*row.value = *value;
    }
    return kDone;
}

template <typename Choices, typename Numbers, typename Part>
Answer ReadGroup(const XmlElement* given, const Choices& choices, const Numbers& numbers,
                 Part& part) {
    if (auto fault = ReadChoices(given, choices, part)) {
        return fault;
    }
    return ReadNumbers(given, numbers, part);
}

Answer ReadWindow(const XmlElement* given, PictureArea& window) {
    if (given == nullptr) {
        return kDone;
    }
    for (const Edge& edge : kEdges) {
        const char* text = given->Attribute(edge.name);
        const auto value = ToDouble(text == nullptr ? "" : text);
        if (!value || !IsIn({-1, 1}, *value)) {
            return InvalidSettings("Window");
        }
        window.*edge.value = *value;
    }
    if (window.left >= window.right || window.bottom >= window.top) {
        return InvalidSettings("Window");
    }
    return kDone;
}

Answer ReadExposure(const XmlElement* given, ExposureSettings& exposure) {
    if (auto fault = ReadGroup(given, kExposureChoices, kExposureNumbers, exposure)) {
        return fault;
    }
    if (auto fault = ReadWindow(Child(given, "Window"), exposure.window)) {
        return fault;
    }
    if (exposure.minimumTime > exposure.maximumTime) {
        return InvalidSettings("MinExposureTime");
    }
    if (exposure.minimumGain > exposure.maximumGain) {
        return InvalidSettings("MinGain");
    }
    if (exposure.minimumIris > exposure.maximumIris) {
        return InvalidSettings("MinIris");
    }
    return kDone;
}

Answer ReadFocus(const XmlElement* given, const VideoSource& source, FocusSettings& focus) {
    if (given == nullptr) {
        return kDone;
    }
    if (!source.motorizedFocus) {
        return InvalidSettings("Focus");
    }
    if (auto fault = ReadGroup(given, kFocusChoices, kFocusNumbers, focus)) {
        return fault;
    }
    const bool infinite = focus.farLimit == 0;
    if (!infinite && focus.nearLimit > focus.farLimit) {
        return InvalidSettings("NearLimit");
    }
    return kDone;
}

}  // namespace

SoapFault InvalidSettings(std::string_view what) {
    return InvalidArgument("SettingsInvalid",
                           std::string(what) + " cannot be set to what was requested");
}

void WriteImagingSettings(CXmlWriter& out, const VideoSource& source) {
    const ImagingSettings& settings = source.imaging;
    WriteGroup(out, "BacklightCompensation", kSwitchChoices, kSwitchNumbers, settings.backlight);
    WriteNumbers(out, kToneNumbers, settings);
    WriteExposure(out, settings.exposure);
    if (source.motorizedFocus) {
        WriteGroup(out, "Focus", kFocusChoices, kFocusNumbers, settings.focus);
    }
    WriteChoices(out, kPictureChoices, settings);
    WriteNumbers(out, kSharpnessNumbers, settings);
    WriteGroup(out, "WideDynamicRange", kSwitchChoices, kSwitchNumbers, settings.wideDynamicRange);
    WriteGroup(out, "WhiteBalance", kWhiteBalanceChoices, kWhiteBalanceNumbers,
               settings.whiteBalance);
}

void WriteImagingOptions(CXmlWriter& out, const VideoSource& source) {
    WriteGroupOptions(out, "BacklightCompensation", kSwitchChoices, kSwitchNumbers);
    WriteRanges(out, kToneNumbers);
    WriteGroupOptions(out, "Exposure", kExposureChoices, kExposureNumbers);
    if (source.motorizedFocus) {
        WriteGroupOptions(out, "Focus", kFocusChoices, kFocusNumbers);
    }
    WriteWords(out, kPictureChoices);
    WriteRanges(out, kSharpnessNumbers);
    WriteGroupOptions(out, "WideDynamicRange", kSwitchChoices, kSwitchNumbers);
    WriteGroupOptions(out, "WhiteBalance", kWhiteBalanceChoices, kWhiteBalanceNumbers);
}

Answer ReadImagingSettings(const XmlElement* given, const VideoSource& source,
                           ImagingSettings& settings) {
    if (auto fault = ReadGroup(given, kPictureChoices, kToneNumbers, settings)) {
        return fault;
    }
    if (auto fault = ReadNumbers(given, kSharpnessNumbers, settings)) {
        return fault;
    }
    if (auto fault = ReadGroup(Child(given, "BacklightCompensation"), kSwitchChoices,
                               kSwitchNumbers, settings.backlight)) {
        return fault;
    }
    if (auto fault = ReadExposure(Child(given, "Exposure"), settings.exposure)) {
        return fault;
    }
    if (auto fault = ReadFocus(Child(given, "Focus"), source, settings.focus)) {
        return fault;
    }
    if (auto fault = ReadGroup(Child(given, "WideDynamicRange"), kSwitchChoices, kSwitchNumbers,
                               settings.wideDynamicRange)) {
        return fault;
    }
    return ReadGroup(Child(given, "WhiteBalance"), kWhiteBalanceChoices, kWhiteBalanceNumbers,
                     settings.whiteBalance);
}

}  // namespace camera_sim
