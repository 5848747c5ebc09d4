// On-screen displays: the same in both media services, which differ in their namespaces.
#include <algorithm>
#include <array>

#include "camera_sim/services/MediaOperations.h"
#include "camera_sim/services/Services.h"

namespace camera_sim {
namespace {

using Scope = CXmlWriter::CScope;

constexpr int kMostOsds = 4;
/// In bytes.
constexpr std::size_t kLongestText = 256;

constexpr std::string_view kCustom = "Custom";
constexpr std::array<std::string_view, 5> kPositions = {"UpperLeft", "UpperRight", "LowerLeft",
                                                        "LowerRight", kCustom};
constexpr std::array<std::string_view, 4> kDateFormats = {"MM/dd/yyyy", "dd/MM/yyyy", "yyyy/MM/dd",
                                                          "yyyy-MM-dd"};
constexpr std::array<std::string_view, 4> kTimeFormats = {"HH:mm:ss", "H:mm:ss", "hh:mm:ss tt",
                                                          "h:mm:ss tt"};

/// What a kind of text shows.
struct TextType {
    std::string_view name;
    bool plain;
    bool date;
    bool time;
};
constexpr std::array kTextTypes = {
    TextType{"Plain", true, false, false},
    TextType{"Date", false, true, false},
    TextType{"Time", false, false, true},
    TextType{"DateAndTime", false, true, true},
};

const TextType* FindTextType(std::string_view name) {
    const auto found = std::find_if(kTextTypes.begin(), kTextTypes.end(),
                                    [name](const TextType& type) { return type.name == name; });
    return found == kTextTypes.end() ? nullptr : &*found;
}

template <typename List>
bool Has(const List& list, std::string_view word) {
    return std::find(list.begin(), list.end(), word) != list.end();
}

SoapFault NoSuchOsd() {
    return InvalidArgument("NoConfig", "No such OSD");
}
SoapFault NoSuchSource() {
    return InvalidArgument("NoConfig", "No such video source configuration");
}
SoapFault BadOsd(std::string_view what) {
    return InvalidArgument("ConfigModify", std::string(what) + " of the OSD is not valid");
}

bool HasSource(const Media& media, std::string_view token) {
    return FindByToken(media.videoSourceConfigurations, token) != nullptr;
}

void WriteText(CXmlWriter& out, const Osd& osd) {
    const Scope text(out, Ns::kSchema, "TextString");
    out.Element(Ns::kSchema, "Type", osd.textType);
    const TextType* type = FindTextType(osd.textType);
    if (type == nullptr) {
        return;
    }
    if (type->date) {
        out.Element(Ns::kSchema, "DateFormat", osd.dateFormat);
    }
    if (type->time) {
        out.Element(Ns::kSchema, "TimeFormat", osd.timeFormat);
    }
    if (type->plain) {
        out.Element(Ns::kSchema, "PlainText", osd.plainText);
    }
}

void WriteOsd(CXmlWriter& out, Ns ns, std::string_view name, const Osd& osd) {
    const Scope element(out, ns, name);
    out.Attribute("token", osd.token);
    out.Element(Ns::kSchema, "VideoSourceConfigurationToken", osd.source);
    out.Element(Ns::kSchema, "Type", "Text");
    {
        const Scope position(out, Ns::kSchema, "Position");
        out.Element(Ns::kSchema, "Type", osd.position);
        if (osd.position == kCustom) {
            const Scope place(out, Ns::kSchema, "Pos");
            out.Attribute("x", CXmlWriter::NumberText(osd.x));
            out.Attribute("y", CXmlWriter::NumberText(osd.y));
        }
    }
    WriteText(out, osd);
    if (!osd.channelName) {
        return;
    }
    const Scope extension(out, Ns::kSchema, "Extension");
    out.Element(Ns::kSchema, "ChannelName", *osd.channelName);
}

void ReadWord(const XmlElement* parent, std::string_view name, std::string& word) {
    if (const XmlElement* element = Child(parent, name)) {
        word = Text(element);
    }
}

Answer ReadPosition(const XmlElement* given, Osd& osd) {
    ReadWord(given, "Type", osd.position);
    if (!Has(kPositions, osd.position)) {
        return BadOsd("Position");
    }
    if (given == nullptr || osd.position != kCustom) {
        return kDone;
    }
    const XmlElement* place = Child(given, "Pos");
    for (const auto& [name, value] : {std::pair{"x", &osd.x}, std::pair{"y", &osd.y}}) {
        const char* text = place == nullptr ? nullptr : place->Attribute(name);
        const auto share = ToDouble(text == nullptr ? "" : text);
        if (!share || *share < -1 || *share > 1) {
            return BadOsd("Pos");
        }
        *value = *share;
    }
    return kDone;
}

Answer ReadText(const XmlElement* given, Osd& osd) {
    ReadWord(given, "Type", osd.textType);
    ReadWord(given, "DateFormat", osd.dateFormat);
    ReadWord(given, "TimeFormat", osd.timeFormat);
    ReadWord(given, "PlainText", osd.plainText);
    if (FindTextType(osd.textType) == nullptr) {
        return BadOsd("TextString");
    }
    if (!Has(kDateFormats, osd.dateFormat)) {
        return BadOsd("DateFormat");
    }
    if (!Has(kTimeFormats, osd.timeFormat)) {
        return BadOsd("TimeFormat");
    }
    if (osd.plainText.size() > kLongestText) {
        return BadOsd("PlainText");
    }
    return kDone;
}

const XmlElement* FindDescendant(const XmlElement* parent, std::string_view localName) {
    const XmlElement* child = parent == nullptr ? nullptr : parent->FirstChildElement();
    for (; child != nullptr; child = child->NextSiblingElement()) {
        if (LocalName(*child) == localName) {
            return child;
        }
        if (const XmlElement* found = FindDescendant(child, localName)) {
            return found;
        }
    }
    return nullptr;
}

/// Takes over what @p given has; with a fault, @p osd may be changed in part.
Answer ReadOsd(const Media& media, const XmlElement* given, Osd& osd) {
    ReadWord(given, "VideoSourceConfigurationToken", osd.source);
    if (!HasSource(media, osd.source)) {
        return NoSuchSource();
    }
    if (ChildText(given, "Type") != "Text") {
        return BadOsd("Type");
    }
    if (auto fault = ReadPosition(Child(given, "Position"), osd)) {
        return fault;
    }
    if (auto fault = ReadText(Child(given, "TextString"), osd)) {
        return fault;
    }
    if (const XmlElement* channel = FindDescendant(given, "ChannelName")) {
        osd.channelName = Text(channel);
    }
    return osd.channelName && osd.channelName->size() > kLongestText ? Answer(BadOsd("ChannelName"))
                                                                     : kDone;
}

int CountOf(const Media& media, std::string_view source) {
    return static_cast<int>(
        std::count_if(media.osds.begin(), media.osds.end(),
                      [source](const Osd& osd) { return osd.source == source; }));
}

SoapFault TooManyOsds() {
    return {"Receiver", "Action", "MaxOSDs", "No more OSDs for this video source configuration"};
}

Answer GetOsds(Call& call) {
    const std::string_view source = call.Argument("ConfigurationToken");
    const bool all = Child(&call.request, "ConfigurationToken") == nullptr;
    if (!all && !HasSource(call.state.media, source)) {
        return NoSuchSource();
    }
    const XmlElement* wanted = Child(&call.request, "OSDToken");
    if (wanted != nullptr && FindByToken(call.state.media.osds, Text(wanted)) == nullptr) {
        return NoSuchOsd();
    }
    for (const Osd& osd : call.state.media.osds) {
        if ((all || osd.source == source) && (wanted == nullptr || osd.token == Text(wanted))) {
            WriteOsd(call.out, call.Service(), "OSDs", osd);
        }
    }
    return kDone;
}

template <typename List>
void WriteWords(CXmlWriter& out, std::string_view name, const List& words) {
    for (const std::string_view word : words) {
        out.Element(Ns::kSchema, name, word);
    }
}

Answer GetOsdOptions(Call& call) {
    if (!HasSource(call.state.media, call.Argument("ConfigurationToken"))) {
        return NoSuchSource();
    }
    CXmlWriter& out = call.out;
    const Scope options(out, call.Service(), "OSDOptions");
    {
        const Scope most(out, Ns::kSchema, "MaximumNumberOfOSDs");
        out.Attribute("Total", kMostOsds);
        out.Attribute("Image", 0);
        out.Attribute("PlainText", kMostOsds);
        out.Attribute("Date", kMostOsds);
        out.Attribute("Time", kMostOsds);
        out.Attribute("DateAndTime", kMostOsds);
    }
    out.Element(Ns::kSchema, "Type", "Text");
    WriteWords(out, "PositionOption", kPositions);
    const Scope text(out, Ns::kSchema, "TextOption");
    for (const TextType& type : kTextTypes) {
        out.Element(Ns::kSchema, "Type", type.name);
    }
    WriteWords(out, "DateFormat", kDateFormats);
    WriteWords(out, "TimeFormat", kTimeFormats);
    return kDone;
}

// The camera makes the token itself, whatever the request proposes.
Answer CreateOsd(Call& call) {
    Media& media = call.state.media;
    Osd osd;
    osd.position.clear();
    osd.textType.clear();
    if (auto fault = ReadOsd(media, Child(&call.request, "OSD"), osd)) {
        return fault;
    }
    if (CountOf(media, osd.source) >= kMostOsds) {
        return TooManyOsds();
    }
    osd.token = "OSD_" + std::to_string(++media.lastOsdNumber);
    call.out.Element(call.Service(), "OSDToken", osd.token);
    media.osds.push_back(std::move(osd));
    return kDone;
}

Answer SetOsd(Call& call) {
    Media& media = call.state.media;
    const XmlElement* given = Child(&call.request, "OSD");
    const char* token = given == nullptr ? nullptr : given->Attribute("token");
    Osd* osd = FindByToken(media.osds, token == nullptr ? "" : token);
    if (osd == nullptr) {
        return NoSuchOsd();
    }
    Osd changed = *osd;
    if (auto fault = ReadOsd(media, given, changed)) {
        return fault;
    }
    if (changed.source != osd->source && CountOf(media, changed.source) >= kMostOsds) {
        return TooManyOsds();
    }
    *osd = std::move(changed);
    return kDone;
}

Answer DeleteOsd(Call& call) {
    const std::string_view token = call.Argument("OSDToken");
    const auto removed = std::erase_if(call.state.media.osds,
                                       [token](const Osd& osd) { return osd.token == token; });
    if (removed == 0) {
        return NoSuchOsd();
    }
    return kDone;
}

constexpr std::array kOperations = {
    Operation{"GetOSDs", GetOsds},     Operation{"GetOSDOptions", GetOsdOptions},
    Operation{"CreateOSD", CreateOsd}, Operation{"SetOSD", SetOsd},
    Operation{"DeleteOSD", DeleteOsd},
};

}  // namespace

Answer AnswerOsd(Call& call) {
    const Osd* osd = FindByToken(call.state.media.osds, call.Argument("OSDToken"));
    if (osd == nullptr) {
        return NoSuchOsd();
    }
    WriteOsd(call.out, call.Service(), "OSD", *osd);
    return kDone;
}

std::span<const Operation> OsdOperations() {
    return kOperations;
}

}  // namespace camera_sim
