#include <gtest/gtest.h>

#include <vector>

#include "system/Client.h"

namespace client_test {
namespace {

using camera_sim::CCamera;

class RoundTrips : public CCameraTest {};

/// What stands inside the element at a path of names below the document's root.
std::string InsideOf(const std::string& document, const std::vector<const char*>& path) {
    tinyxml2::XMLDocument parsed;
    parsed.Parse(document.c_str());
    const tinyxml2::XMLElement* element = parsed.RootElement();
    for (const char* step : path) {
        element = element == nullptr ? nullptr : element->FirstChildElement(step);
    }
    tinyxml2::XMLPrinter printer(nullptr, true);
    const auto* child = element == nullptr ? nullptr : element->FirstChildElement();
    for (; child != nullptr; child = child->NextSiblingElement()) {
        child->Accept(&printer);
    }
    return printer.CStr();
}

std::string Element(const std::string& name, const std::string& inside) {
    return "<" + name + ">" + inside + "</" + name + ">";
}

struct RoundTrip {
    const char* query;  // a command without parameters
    const char* parameters;
    std::vector<const char*> taken;  // what is sent back, by its path in the result
    const char* change;              // the command that it is sent as
    const char* from;                // the value that is changed ...
    const char* to;                  // ... and what to
    bool domeOnly = false;
};

TEST_F(RoundTrips, WhatIsReadCanBeSentBackWithOneValueChanged) {
    const RoundTrip cases[] = {
        {"imageSettings",
         "",
         {"imageSettings"},
         "imageSettings",
         "<brightness>50<",
         "<brightness>61<"},
        {"imageSettings", "", {"imageSettings"}, "imageSettings", "<crGain>50<", "<crGain>7<"},
        {"videoEncoderCfg",
         "<index>1</index>",
         {"videoEncoderCfg"},
         "videoEncodeCfg",
         "<quality>4<",
         "<quality>6<"},
        {"videoEncoderCfg",
         "<index>1</index>",
         {"videoEncoderCfg"},
         "videoEncodeCfg",
         "<profile>Main<",
         "<profile>Baseline<"},
        {"osd",
         "",
         {"osd", "item"},
         "setOsd",
         "<plainText>SIM-DOME<",
         "<plainText>A &amp; B<",
         true},
        {"osd", "", {"osd", "item"}, "setOsd", "<type>UpperLeft<", "<type>LowerRight<", true},
        {"cruises",
         "",
         {"cruises", "item"},
         "modifyCruise",
         "<stayTime>20<",
         "<stayTime>95<",
         true},
        {"motion",
         "",
         {"motion"},
         "motion",
         "<item>0000001111111111100000</item><item>0000000",
         "<item>0000001111111111100011</item><item>0000000"},
        {"motion", "", {"motion"}, "motion", "<sensitivity>60<", "<sensitivity>61<"},
        {"presets",
         "",
         {"presets", "item"},
         "modifyPresetName",
         "<presetName>Entrance<",
         "<presetName>Door<",
         true},
    };
    for (const char* model : {"dome", "fixed"}) {
        CCamera& camera = host_.Add({.model = model});
        const unsigned int id = Login(camera);
        // A preset that gets another name also gets the place where the dome looks.
        Set(id, "<gotoPreset><presetToken>Preset_1</presetToken></gotoPreset>");
        for (const RoundTrip& each : cases) {
            if (each.domeOnly && model == std::string("fixed")) {
                continue;
            }
            const auto ask = [&] {
                return Get(id, Element(each.query, each.parameters)).value_or("");
            };
            const auto read = [&] { return InsideOf(ask(), {each.query}); };
            const auto sendBack = [&](const std::string& inside) {
                const auto result = Set(id, Element(each.change, inside));
                return result ? At(*result, "*/status") : "(failed)";
            };
            const std::string before = read();
            const std::string values = InsideOf(ask(), each.taken);
            EXPECT_EQ(sendBack(values), "success") << model << each.change;
            EXPECT_EQ(read(), before) << model << each.change << " unchanged";

            const auto edit = [&](std::string text) {
                const std::size_t at = text.find(each.from);
                if (at != std::string::npos) {
                    text.replace(at, std::string(each.from).size(), each.to);
                }
                return text;
            };
            const std::string edited = edit(values);
            ASSERT_NE(edited, values) << model << each.from;
            EXPECT_EQ(sendBack(edited), "success") << model << each.change;
            std::string expected = edit(before);
            if (each.query == std::string("motion")) {
                // The packed form of the cells follows them.
                const auto packed = [](const std::string& text) {
                    const std::size_t start = text.find("<activeCells>");
                    return text.substr(start, text.find("</activeCells>") - start);
                };
                expected.replace(expected.find(packed(expected)), packed(expected).size(),
                                 packed(read()));
            }
            EXPECT_EQ(read(), expected) << model << each.change << " " << each.to;
        }
    }
}

TEST_F(RoundTrips, WhatIsMadeCanBeNamedByItsToken) {
    const unsigned int id = Login(host_.Add({}));
    const struct {
        const char* make;
        const char* token;
        const char* use;
    } cases[] = {
        {"<addPreset><presetName>n</presetName></addPreset>", "addPreset/presetToken",
         "<gotoPreset><presetToken>@</presetToken></gotoPreset>"},
        {"<addCruise/>", "addCruise/token", "<startCruise><token>@</token></startCruise>"},
        {"<createOsd><pos><type>UpperRight</type></pos><type>Plain</type><plainText>p</plainText>"
         "</createOsd>",
         "createosd/token", "<deleteOsd><token>@</token></deleteOsd>"},
    };
    for (const auto& each : cases) {
        const auto made = Set(id, each.make);
        std::string use = each.use;
        use.replace(use.find('@'), 1, At(made.value_or(""), each.token));
        EXPECT_EQ(At(Set(id, use).value_or(""), "*/status"), "success") << use;
    }
}

}  // namespace
}  // namespace client_test
