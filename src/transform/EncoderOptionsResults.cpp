#include <algorithm>
#include <string>
#include <vector>

#include "transform/Conversions.h"
#include "transform/MediaResults.h"

namespace onvif_client {

namespace {

constexpr CopiedValue kRange[] = {{"Min", "min"}, {"Max", "max"}};
constexpr CopiedValue kSize[] = {{"Width", "width"}, {"Height", "height"}};

constexpr CopiedValue kQuality[] = {{"QualityRange", "quality", kRange}};
constexpr CopiedValue kResolutions[] = {{"ResolutionsAvailable*", "resolution", kSize}};
constexpr CopiedValue kBitrate[] = {{"BitrateRange", "bitrate", kRange}};
// Of a codec in the answer of a ver10 service.
constexpr CopiedValue kFrameRates[] = {{"FrameRateRange", "frameRate", kRange},
                                       {"EncodingIntervalRange", "encodingInterval", kRange}};
constexpr CopiedValue kStreamForm[] = {{"GovLengthRange", "IFrameInterval", kRange},
                                       {"H264ProfilesSupported*", "profile"},
                                       {"Mpeg4ProfilesSupported*", "profile"}};

/// A list separated by blanks.
std::vector<std::string> Entries(const char* list) {
    std::vector<std::string> entries;
    std::string_view rest = list == nullptr ? "" : list;
    for (;;) {
        rest.remove_prefix(std::min(rest.find_first_not_of(" \t\r\n"), rest.size()));
        if (rest.empty()) {
            return entries;
        }
        const std::size_t end = std::min(rest.find_first_of(" \t\r\n"), rest.size());
        entries.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end);
    }
}

/// The bounds of a list of numbers, as written, and its entries.
void AddFrameRates(const std::vector<std::string>& rates, XMLElement* option) {
    if (rates.empty()) {
        return;
    }
    const auto less = [](const std::string& a, const std::string& b) {
        return ToReal(a) < ToReal(b);
    };
    const auto [least, greatest] = std::minmax_element(rates.begin(), rates.end(), less);
    XMLElement* frameRate = Append(option, "frameRate");
    Append(frameRate, "min", *least);
    Append(frameRate, "max", *greatest);
    for (const std::string& rate : rates) {
        Append(frameRate, "value", rate);
    }
}

/// The options of one encoding as a ver20 service gives them.
void CopyOption20(const XMLElement* options, XMLElement* item) {
    constexpr CopiedValue kEncoding[] = {{"Encoding", "encode"}};
    XMLElement* option = Append(item, "option");
    CopyValues(options, option, kEncoding);
    CopyValues(options, option, kQuality);
    CopyValues(options, option, kResolutions);
    AddFrameRates(Entries(AttributeOf(options, "FrameRatesSupported")), option);
    CopyValues(options, option, kBitrate);
    if (const auto range = Entries(AttributeOf(options, "GovLengthRange")); !range.empty()) {
        XMLElement* interval = Append(option, "IFrameInterval");
        Append(interval, "min", range[0]);
        if (range.size() > 1) {
            Append(interval, "max", range[1]);
        }
    }
    for (const std::string& profile : Entries(AttributeOf(options, "ProfilesSupported"))) {
        Append(option, "profile", profile);
    }
}

/// The options of one codec as a ver10 service gives them: some stand in an extension.
void CopyOption10(const XMLElement* options, std::string_view codec, XMLElement* item) {
    const XMLElement* source = FirstChild(options, codec);
    if (source == nullptr) {
        return;
    }
    XMLElement* option = Append(item, "option");
    Append(option, "encode", codec);
    CopyValues(options, option, kQuality);
    CopyValues(source, option, kResolutions);
    CopyValues(source, option, kFrameRates);
    CopyValues(FirstChild(FirstChild(options, "Extension"), codec), option, kBitrate);
    CopyValues(source, option, kStreamForm);
}

void CopyVideoEncoderOptions(const ReplyValues& reply, XMLElement* command) {
    constexpr std::string_view kOptions = "Options";
    const XMLElement* options = FindElement(
        reply.envelope, "Envelope/Body/GetVideoEncoderConfigurationOptionsResponse/Options");
    if (options == nullptr) {
        return;
    }
    XMLElement* item = Append(command, "item");
    Append(item, "index", reply.subject.index);
    if (FirstChild(options, "Encoding") == nullptr) {
        for (const std::string_view codec : {"JPEG", "MPEG4", "H264"}) {
            CopyOption10(options, codec, item);
        }
        return;
    }
    for (; options != nullptr; options = NextSibling(options, kOptions)) {
        CopyOption20(options, item);
    }
}

}  // namespace

constinit const ResultFrame kVideoEncoderOptionsResult = {"GetResponse", "videoEncoderCfgOpts",
                                                          CopyVideoEncoderOptions};

}  // namespace onvif_client
