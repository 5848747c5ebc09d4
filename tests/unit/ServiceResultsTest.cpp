#include <gtest/gtest.h>

#include <span>

#include "transform/ImagingResults.h"
#include "transform/MediaResults.h"
#include "transform/MotionResults.h"
#include "transform/PtzResults.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

using client_test::Compact;
using client_test::Envelope;

struct ResultCase {
    const ResultFrame* frame;
    std::string body;
    const char* element;
    std::string values;
};

void ExpectGetResults(std::span<const ResultCase> cases) {
    for (const ResultCase& each : cases) {
        CResultDocument result;
        BuildResult(*each.frame, Envelope(each.body), {7, "T"}, result);
        std::string expected = "<GetResponse><@><status>success</status></@></GetResponse>";
        expected.insert(expected.find("</@>"), each.values);
        for (auto at = expected.find('@'); at != std::string::npos; at = expected.find('@')) {
            expected.replace(at, 1, each.element);
        }
        EXPECT_EQ(Compact(result.Print()), expected);
    }
}

TEST(ServiceResults, ShowTours) {
    const ResultCase cases[] = {
        {&kCruisesResult,
         "<a:GetPresetToursResponse><a:PresetTour token='T1'><t:Name>round</t:Name><t:Status>"
         "<t:State>Idle</t:State></t:Status><t:AutoStart>false</t:AutoStart><t:StartingCondition"
         " RandomPresetOrder='true'><t:RecurringTime>3</t:RecurringTime><t:RecurringDuration>PT1H"
         "</t:RecurringDuration><t:Direction>Forward</t:Direction></t:StartingCondition>"
         "<t:TourSpot><t:PresetDetail><t:PresetToken>3</t:PresetToken></t:PresetDetail><t:StayTime>"
         "PT1M30S</t:StayTime></t:TourSpot><t:TourSpot><t:PresetDetail><t:Home>true</t:Home>"
         "</t:PresetDetail></t:TourSpot></a:PresetTour><a:PresetTour/></a:GetPresetToursResponse>",
         "cruises",
         "<item><token>T1</token><name>round</name><state>Idle</state><autoStart>false</autoStart>"
         "<startingCondition><randomOrder>true</randomOrder><recurringTime>3</recurringTime>"
         "<recurringDuration>3600</recurringDuration><direction>Forward</direction>"
         "</startingCondition><presets><item><token>3</token><stayTime>90</stayTime></item><item>"
         "<home>true</home></item></presets></item><item><presets/></item>"},
    };
    ExpectGetResults(cases);
}

TEST(ServiceResults, ShowThePictureAndItsOptions) {
    const ResultCase cases[] = {
        {&kImageSettingsResult,
         "<GetImagingSettingsResponse><ImagingSettings><BacklightCompensation><Mode>ON</Mode>"
         "</BacklightCompensation><Brightness>50</Brightness><ColorSaturation/><Exposure><Mode>AUTO"
         "</Mode><Priority>LowNoise</Priority><Window bottom='1' top='2' right='3' left='4'/>"
         "<MinExposureTime>10</MinExposureTime><MaxGain>100</MaxGain><Iris>5</Iris></Exposure>"
         "<Focus><AutoFocusMode>MANUAL</AutoFocusMode><FarLimit>9</FarLimit></Focus><IrCutFilter>"
         "AUTO</IrCutFilter><Sharpness>3</Sharpness><WhiteBalance><CrGain>1.50</CrGain>"
         "</WhiteBalance></ImagingSettings></GetImagingSettingsResponse>",
         "imageSettings",
         "<backlightcompensation><mode>ON</mode></backlightcompensation><brightness>50</brightness>"
         "<saturation/><exposure><mode>AUTO</mode><priority>LowNoise</priority><window><bottom>1"
         "</bottom><top>2</top><right>3</right><left>4</left></window><minExposureTime>10"
         "</minExposureTime><maxGain>100</maxGain><iris>5</iris></exposure><focus><autoFocusMode>"
         "MANUAL</autoFocusMode><farLimit>9</farLimit></focus><irCutFilter>AUTO</irCutFilter>"
         "<sharpness>3</sharpness><whiteBalance><crGain>1.50</crGain></whiteBalance>"},
        {&kImageOptionsResult,
         "<GetOptionsResponse><ImagingOptions><Brightness><Min>0</Min><Max>100</Max></Brightness>"
         "<Exposure><Mode>AUTO</Mode><Mode>MANUAL</Mode><Gain><Min>0</Min></Gain></Exposure><Focus>"
         "<AutoFocusModes>AUTO</AutoFocusModes><AutoFocusModes>MANUAL</AutoFocusModes></Focus>"
         "<IrCutFilterModes>ON</IrCutFilterModes><IrCutFilterModes>OFF</"
         "IrCutFilterModes><Sharpness>"
         "<Max>9</Max></Sharpness><WhiteBalance><Mode>AUTO</Mode><YrGain><Min>1</Min></YrGain>"
         "<YbGain><Max>2</Max></YbGain></WhiteBalance></ImagingOptions></GetOptionsResponse>",
         "imageOpts",
         "<brightness><min>0</min><max>100</max></brightness><exposure><mode>AUTO</mode><mode>"
         "MANUAL</mode><gain><min>0</min></gain></exposure><focus><autoFocusMode>AUTO"
         "</autoFocusMode><autoFocusMode>MANUAL</autoFocusMode></focus><irCutFilter>ON"
         "</irCutFilter><irCutFilter>OFF</irCutFilter><sharpness><max>9</max></sharpness>"
         "<whiteBalance><mode>AUTO</mode><crGain><min>1</min></crGain><cbGain><max>2</max></cbGain>"
         "</whiteBalance>"},
    };
    ExpectGetResults(cases);
}

TEST(ServiceResults, ShowTextsOnThePicture) {
    const std::string color = "<Color X='1' Y='2' Z='3' Colorspace='c'/>";
    const ResultCase cases[] = {
        {&kOsdResult,
         "<GetOSDsResponse><OSDs token='O1'><VideoSourceConfigurationToken>V"
         "</VideoSourceConfigurationToken><Type>Text</Type><Position><Type>Custom</Type><Pos"
         " x='-0.9' y='0.85'/></Position><TextString IsPersistentText='true'><Type>Plain</Type>"
         "<FontSize>20</FontSize><FontColor Transparent='1'>" +
             color +
             "</FontColor><PlainText>Gate</PlainText><Extension><ChannelName>in text</ChannelName>"
             "</Extension></TextString><Extension><ChannelName>on</ChannelName></Extension></OSDs>"
             "<OSDs><Type>Image</Type><TextString><Extension><ChannelName>in text</ChannelName>"
             "</Extension></TextString><Image><ImgPath>p</ImgPath></Image></OSDs></"
             "GetOSDsResponse>",
         "osd",
         "<item><token>O1</token><videoSourceCfgToken>V</videoSourceCfgToken><osdType>Text"
         "</osdType><pos><type>Custom</type><x>-0.9</x><y>0.85</y></pos><type>Plain</type>"
         "<plainText>Gate</plainText><persistentText>true</persistentText><fontSize>20</fontSize>"
         "<fontColor><transparent>1</transparent><x>1</x><y>2</y><z>3</z><colorspace>c</colorspace>"
         "</fontColor><extensionswitch>on</extensionswitch></item><item><osdType>Image</osdType>"
         "<imgPath>p</imgPath><extensionswitch>in text</extensionswitch></item>"},
        {&kOsdOptionsResult,
         "<GetOSDOptionsResponse><OSDOptions><MaximumNumberOfOSDs Total='4' DateAndTime='1'/><Type>"
         "Text</Type><Type>Image</Type><PositionOption>UpperLeft</PositionOption><PositionOption>"
         "Custom</PositionOption><TextOption><Type>Plain</Type><Type>Date</Type><FontSizeRange>"
         "<Min>16</Min><Max>64</Max></FontSizeRange><DateFormat>d1</DateFormat><TimeFormat>t1"
         "</TimeFormat><FontColor><Transparent><Min>0</Min></Transparent></FontColor>"
         "<BackgroundColor/></TextOption><ImageOption><ImagePath>i</ImagePath></ImageOption>"
         "</OSDOptions></GetOSDOptionsResponse>",
         "osdoption",
         "<maximumNumber><total>4</total><dateAndTime>1</dateAndTime></maximumNumber><osdType>Text"
         "</osdType><osdType>Image</osdType><pos><type>UpperLeft</type><type>Custom</type></pos>"
         "<type>Plain</type><type>Date</type><dateFormat>d1</dateFormat><timeFormat>t1</timeFormat>"
         "<fontSize><min>16</min><max>64</max></fontSize><fontColor><transparent><min>0</min>"
         "</transparent></fontColor><imgPath>i</imgPath>"},
    };
    ExpectGetResults(cases);
}

TEST(ServiceResults, ShowMotionInTwoSteps) {
    const std::string modules =
        "<a:GetAnalyticsModulesResponse><a:AnalyticsModule Name='other' Type='t:LineCounter'/>"
        "<a:AnalyticsModule Name='m' Type='x:CellMotionEngine'><t:Parameters><t:SimpleItem"
        " Name='Sensitivity' Value='60'/><t:ElementItem Name='Layout'><t:CellLayout Columns='10'"
        " Rows='ROWS'/></t:ElementItem></t:Parameters></a:AnalyticsModule>"
        "</a:GetAnalyticsModulesResponse>";
    const std::string rules =
        "<a:GetRulesResponse><a:Rule Name='r' Type='CellMotionDetector'><t:Parameters><t:SimpleItem"
        " Name='MinCount' Value='4'/><t:SimpleItem Name='ActiveCells' Value='BPg+AAAf'/>"
        "</t:Parameters></a:Rule></a:GetRulesResponse>";
    const auto result = [&](const std::string& rowCount, const std::string& second) {
        std::string first = modules;
        first.replace(first.find("ROWS"), 4, rowCount);
        CResultDocument text;
        BuildResult(kMotionModuleResult, Envelope(first), {0, "A"}, text);
        BuildResult(kMotionRuleResult, Envelope(second), {}, text);
        return Compact(text.Print());
    };
    const auto expected = [](const std::string& rowCount, const std::string& behind) {
        return "<GetResponse><motion><status>success</status><token>A</token><name>m</name>"
               "<sensitivity>60</sensitivity><columns>10</columns><rows>" +
               rowCount + "</rows>" + behind + "</motion></GetResponse>";
    };
    const std::string rule =
        "<ruleStatus><status>success</status></ruleStatus><ruleName>r"
        "</ruleName><minCount>4</minCount>";
    const std::string cells = "<activeCells>BPg+AAAf</activeCells>";
    EXPECT_EQ(result("4", rules),
              expected("4", rule +
                                "<area><item>1111100000</item><item>1111100000</item><item>"
                                "0000000000</item><item>0000011111</item></area>" +
                                cells));
    const std::string noArea = rule + "<area/>" + cells;
    for (const char* rowCount : {"0", "x", "1025", "100000000"}) {
        EXPECT_EQ(result(rowCount, rules), expected(rowCount, noArea));
    }
    EXPECT_EQ(
        result("4", "<Fault/>"),
        expected("4", "<ruleStatus><status>fail<errorCode>6</errorCode></status></ruleStatus>"));
    EXPECT_EQ(result("4", "<GetRulesResponse/>"),
              expected("4", "<ruleStatus><status>success</status></ruleStatus>"));
}

TEST(ServiceResults, TellThePicturesAddress) {
    const std::string reply =
        "<GetSnapshotUriResponse><MediaUri><Uri>http://h/p</Uri></MediaUri>"
        "</GetSnapshotUriResponse>";
    CResultDocument result;
    BuildResult(kSnapshotUriResult, Envelope(reply), {}, result);
    EXPECT_EQ(SnapshotAddressIn(result.Print()), "http://h/p");
    EXPECT_EQ(SnapshotAddressIn("<GetResponse><snapshotURI/></GetResponse>"), "");
}

}  // namespace
}  // namespace onvif_client
