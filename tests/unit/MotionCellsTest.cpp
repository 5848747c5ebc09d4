#include <gtest/gtest.h>

#include <random>

#include "platform/Digests.h"
#include "transform/MotionCells.h"

namespace onvif_client {
namespace {

CellRows Filled(std::size_t columns, std::size_t rows, char state) {
    return CellRows(rows, std::string(columns, state));
}

TEST(MotionCells, AreTheTextsOfTheStandard) {
    CellRows halves(3, "11111111");
    halves.resize(6, "11110000");
    const std::pair<CellRows, const char*> cases[] = {
        {{"1111100000", "1111100000", "0000000000", "0000011111"}, "BPg+AAAf"},
        {halves, "/v/+8A=="},
        {Filled(22, 18, '1'), "0P8A8A=="},
        {Filled(22, 18, '0'), "zwA="},
        {{"11111", "00000", "10101"}, "Afgq"},
        {Filled(80, 60, '1'), "gf+B/4H/gf+p/w=="},
        {{}, ""},
    };
    for (const auto& [rows, text] : cases) {
        EXPECT_EQ(EncodeActiveCells(rows), text);
        if (!rows.empty()) {
            EXPECT_EQ(DecodeActiveCells(text, static_cast<int>(rows[0].size()),
                                        static_cast<int>(rows.size())),
                      rows);
        }
    }
}

TEST(MotionCells, SurviveBothWays) {
    std::mt19937 random(20260307);
    for (int round = 0; round < 10000; ++round) {
        CellRows rows(1 + random() % 40, std::string(1 + random() % 60, '0'));
        const auto density = random() % 100;  // also long runs of either kind
        for (std::string& row : rows) {
            for (char& cell : row) {
                cell = random() % 100 < density ? '1' : '0';
            }
        }
        const std::string text = EncodeActiveCells(rows);
        ASSERT_EQ(DecodeActiveCells(text, static_cast<int>(rows[0].size()),
                                    static_cast<int>(rows.size())),
                  rows)
            << text;
    }
}

TEST(MotionCells, UnderstandAnyPackBitsStream) {
    const struct {
        std::string packed;
        int columns;
        int rows;
        std::optional<CellRows> expected;
    } cases[] = {
        {std::string("\x80\x00\xF0\x80\xFF\x0F", 6), 4, 6,
         CellRows{"1111", "0000", "0000", "1111", "0000", "1111"}},
        {"\xFF", 4, 2, Filled(4, 2, '0')},                     // a run without its byte
        {"\x05\xFF", 8, 2, CellRows{"11111111", "00000000"}},  // fewer bytes than announced
        {"", 3, 1, CellRows{"000"}},
        {"\x81\xFF", 1, 1, CellRows{"1"}},  // more than the grid holds
        {"\x81\xFF", 0, 1, std::nullopt},
        {"\x81\xFF", 1, 1025, std::nullopt},
        {"\x81\xFF", 1024, 65, std::nullopt},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(DecodeActiveCells(Base64(Bytes(each.packed)), each.columns, each.rows),
                  each.expected)
            << LowerHex(Bytes(each.packed));
    }
    EXPECT_EQ(DecodeActiveCells(" BPg+\r\nAAAf ", 10, 4)->front(), "1111100000");
    for (const char* bad : {"B", "BPg+A", "BPg=AAAf", "BP*+", "===="}) {
        EXPECT_EQ(DecodeActiveCells(bad, 10, 4), std::nullopt) << bad;
    }
}

TEST(MotionCells, AreArrangedFromWhatSomebodyWrote) {
    const struct {
        std::vector<std::string> items;
        CellRows expected;
    } cases[] = {
        {{"101", "1", "11111", "000"}, {"101", "100"}},  // too short, too long, too many
        {{" 1,0\n1 "}, {"101", "000"}},
        {{"1", "0", "", "1", "1"}, {"101", "100"}},  // single cells
        {{"1", "1", "1", "1", "1", "1", "1"}, {"111", "111"}},
        {{}, {"000", "000"}},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(ArrangeCells(each.items, 3, 2), each.expected);
    }
    EXPECT_EQ(ArrangeCells(cases[0].items, 0, 2), CellRows{});
}

}  // namespace
}  // namespace onvif_client
