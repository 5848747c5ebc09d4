#include <gtest/gtest.h>

#include <regex>

#include "support/ClosedPort.h"
#include "system/AlarmObserver.h"
#include "system/Tool.h"

namespace client_test {
namespace {

TEST(Watch, ATableShowsWholeValuesHoweverNarrowTheTerminal) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({.model = "fixed"});
    SetMotion(camera, true);
    const CClosedPort nobody;
    const std::string time = "[0-9]{2}:[0-9]{2}:[0-9]{2}";
    const struct {
        std::size_t columns;
        std::vector<std::string> shows;  // whole lines
    } kCases[] = {
        {60,
         {"CAMERA +MOTION  ALARM INPUT  LAST CHANGE", "127.* active  - +" + time,
          "127.*  lost since " + time + ": does not answer.*[.]{3}"}},
        {40, {"CAMERA +MOTION  ALARM INPUT", "127.* active  -", "127.*  lost since [0-9:]+[.]{3}"}},
        {30, {"[.]{3}[0-9.:]+  active  -"}}};
    for (const auto& each : kCases) {
        const std::string terminal = " TERM=xterm sh -c 'exec script -qec \"stty cols " +
                                     std::to_string(each.columns) +
                                     " rows 12; $*\" /dev/null </dev/null' sh";
        CRunningTool tool("watch " + AddressOf(camera) + " " + LocalAddress(nobody.Port()),
                          kRight + terminal);
        for (const std::string& text : each.shows) {
            std::string line;
            do {
                line = tool.Line();
                line.erase(0, line.find_last_of('J') + 1);  // what clears the table before it
                EXPECT_LE(line.size(), each.columns - 1 + 2) << line;
            } while (!std::regex_search(line, std::regex(text + "\r\n")) && line != "(no more)");
            EXPECT_NE(line, "(no more)") << text;
        }
    }
}

}  // namespace
}  // namespace client_test
