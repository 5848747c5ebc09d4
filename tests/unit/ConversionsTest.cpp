#include "common/Extensions.h"
#include "transform/Conversions.h"

#include <gtest/gtest.h>

#include <utility>

namespace onvif_client {
namespace {

TEST(Conversions, NetmasksAndPrefixLengths) {
    const std::pair<int, const char*> masks[] = {
        {24, "255.255.255.0"}, {20, "255.255.240.0"},      {32, "255.255.255.255"},
        {0, "0.0.0.0"},        {25, "255.255.255.128"},    {1, "128.0.0.0"},
        {8, "255.0.0.0"},      {40, "255.255.255.255.255"}};
    for (const auto& [length, mask] : masks) {
        EXPECT_EQ(PrefixLengthToNetmask(length), mask) << length;
    }
    EXPECT_LT(PrefixLengthToNetmask(2147483647).size(), 100U);
    EXPECT_EQ(PrefixLengthToNetmask(-5), "0.0.0.0");

    const std::pair<const char*, int> lengths[] = {
        {"255.255.255.0", 24}, {"255.0.255.0", 16}, {"", -1},          {"255.255.240.0", 20},
        {"255.255", 16},       {"x.y", 0},          {"255.x.255", 8},  {" 255.255.0.0", 16},
        {"-1.0.0.0", 8},       {"256.0.0.0", 0},    {"99999999999", 8}};
    for (const auto& [mask, length] : lengths) {
        EXPECT_EQ(NetmaskToPrefixLength(mask), length) << mask;
    }
}

TEST(Conversions, DurationsInSeconds) {
    const std::pair<const char*, std::int64_t> cases[] = {
        {"PT10S", 10},   {"P1DT2H", 93600},
        {"PT1M30S", 90}, {"P1M", 60},
        {"", -1},        {"10S", 0},
        {"PT", 0},       {"PT0S", 0},
        {"PT5.9S", 5},   {"P99999999999D", 185542587100800}};
    for (const auto& [duration, seconds] : cases) {
        EXPECT_EQ(DurationToSeconds(duration), seconds) << duration;
    }
}

TEST(Conversions, NumbersAsScanfReadsThem) {
    const std::pair<const char*, int> cases[] = {{"7", 7},
                                                 {"07", 7},
                                                 {" -3x", -3},
                                                 {"+4", 4},
                                                 {"", 0},
                                                 {"x", 0},
                                                 {"--1", 0},
                                                 {"99999999999", 2147483647},
                                                 {"-99999999999", -2147483647 - 1}};
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(ToInt(text), value) << text;
    }
}

TEST(Conversions, TruthIsWrittenInThreeWays) {
    const std::pair<const char*, bool> cases[] = {{"true", true},  {"TRUE", true},  {"1", true},
                                                  {"True", false}, {"on", false},   {"", false},
                                                  {"11", false},   {" true", false}};
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(IsTrue(text), value) << text;
    }
}

TEST(Conversions, RealNumbers) {
    const std::pair<const char*, double> read[] = {{" +0.5x", 0.5}, {"-1e2", -100}, {"", 0},
                                                   {"x", 0},        {"inf", 0},     {"1e999", 0}};
    for (const auto& [text, value] : read) {
        EXPECT_EQ(ToReal(text), value) << text;
    }
    const std::tuple<double, int, const char*> written[] = {
        {0.5, 8, "0.50000000"}, {-2.0 / 3, 6, "-0.666667"}, {0, 6, "0.000000"}};
    for (const auto& [value, decimals, text] : written) {
        EXPECT_EQ(DecimalText(value, decimals), text);
    }
}

TEST(Extensions, AreReadFromAList) {
    CExtensions all;
    for (const ExtensionRow& row : ExtensionTable()) {
        if (row.name != "no-basic") {
            all.Add(row.extension);
        }
    }
    const struct {
        std::string_view list;
        CExtensions on;
        std::vector<std::string> unknown;
        std::string lacking = {};
    } cases[] = {
        {"", {}, {}},
        {"open-faults", {Extension::kOpenFaults}, {}},
        {" no-basic ,,keep-clock", {Extension::kNoBasic, Extension::kKeepClock}, {}},
        {"all", all, {}},
        {"Keep-clock,keep,own-parameters", {Extension::kOwnParameters}, {"Keep-clock", "keep"}},
        {"keep-alive", {}, {}, "keep-alive"},
        {"keep-alive,http-framing", {Extension::kKeepAlive, Extension::kHttpFraming}, {}},
    };
    for (const auto& each : cases) {
        std::vector<std::string> unknown;
        std::vector<const ExtensionRow*> lacking;
        EXPECT_TRUE(ReadExtensions(each.list, unknown, lacking) == each.on) << each.list;
        EXPECT_EQ(unknown, each.unknown);
        EXPECT_EQ(lacking.empty() ? "" : lacking[0]->name, each.lacking);
    }
}

}  // namespace
}  // namespace onvif_client
