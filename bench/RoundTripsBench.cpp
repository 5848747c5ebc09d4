// Times logins and requests with and without the extensions that save round trips, and bare
// exchanges of the same bytes, over loopback or through a proxy that takes its time. All ways take
// turns; a round gives the mean of each, and its ratio to the way that it is compared with in the
// same round.
#include <camera_sim/CameraSim.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "BareExchange.h"
#include "DelayProxy.h"
#include "onvif_client/OnvifClient.h"

namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr const char* kBefore =
    "http-framing,large-messages,open-faults,keep-clock,http-digest,media-fallback,"
    "per-source-alarms,standard-requests,own-parameters,background-subscription";

/// A session at the camera, with the extensions that it began with.
class CBenchSession {
 public:
    CBenchSession(std::string extensions, std::uint16_t port)
        : extensions_(std::move(extensions)), port_(port), id_(Login()) {}

    bool LogInAndOut() const {
        const unsigned int id = Login();
        return id != ONVIF_CLIENT_NO_LOGIN_ID && ONVIF_CLIENT_Logout(id);
    }
    bool Ask() const {
        char* response = nullptr;
        int length = 0;
        const bool success = ONVIF_CLIENT_GetCfg(
            id_, "<Get version=\"1.0\" systemType=\"ipc\"><devInfo/></Get>", response, &length);
        ONVIF_CLIENT_DelResponseBuff(response);
        return success;
    }

 private:
    unsigned int Login() const {
        setenv("ONVIF_CLIENT_EXTENSIONS", extensions_.c_str(), 1);
        ONVIF_CLIENT_Initial();
        unsigned int error = 0;
        return ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1", port_, "admin", "camera-1",
                                  &error);
    }

    const std::string extensions_;
    const std::uint16_t port_;
    const unsigned int id_;
};

struct Way {
    std::string name;
    int times;                   // in a round
    std::size_t comparedWith;    // the number of another
    std::function<bool()> work;  // false: it failed
    std::vector<double> means = {};
};

struct Spread {
    double least;
    double median;
    double most;
};

Spread SpreadOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return {values.front(), values[values.size() / 2], values.back()};
}

bool Measure(Way& way) {
    const auto began = Clock::now();
    for (int i = 0; i < way.times; ++i) {
        if (!way.work()) {
            std::fprintf(stderr, "%s failed\n", way.name.c_str());
            return false;
        }
    }
    way.means.push_back(Microseconds(Clock::now() - began).count() / way.times);
    return true;
}

void Show(const std::vector<Way>& ways) {
    std::fprintf(stderr, "%-34s %26s   %s\n", "", "microseconds: min median max",
                 "ratio: min median max");
    for (const Way& way : ways) {
        const Way& other = ways[way.comparedWith];
        std::vector<double> ratios;
        for (std::size_t round = 0; round < way.means.size(); ++round) {
            ratios.push_back(way.means[round] / other.means[round]);
        }
        const Spread time = SpreadOf(way.means);
        const Spread ratio = SpreadOf(ratios);
        std::fprintf(stderr, "%-34s %8.0f %8.0f %8.0f   %.2f %.2f %.2f  of %s\n", way.name.c_str(),
                     time.least, time.median, time.most, ratio.least, ratio.median, ratio.most,
                     other.name.c_str());
    }
}

int Run(std::chrono::microseconds roundTrip, int rounds) {
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add(
        {.refuseReplays = false, .keepAlive = camera_sim::KeepAlive::kPolite, .recordLimit = 1});
    std::optional<CDelayProxy> proxy;
    if (roundTrip.count() > 0) {
        proxy.emplace(camera.Port(), roundTrip);
    }
    const std::uint16_t port = proxy ? proxy->Port() : camera.Port();
    const std::string before = kBefore;
    const CBenchSession literal("", port);
    const CBenchSession old(before, port);
    const CBenchSession keeping(before + ",keep-alive", port);
    const CBenchSession quick(before + ",quick-login", port);
    const CBenchSession all("all", port);
    literal.Ask();
    const auto request = camera.Requests().back();
    const std::string bytes = request.head + request.body;
    const int kept = BareConnection(port);
    std::vector<char> buffer(8192);
    const int asked = proxy ? 10 : 400;
    const int logins = proxy ? 3 : 40;
    std::vector<Way> ways = {
        {"bare exchange", asked, 0,
         [&] { return BareExchange(port, bytes, buffer.data(), buffer.size()) > 0; }},
        {"bare exchange, kept connection", asked, 0,
         [&] { return BareExchangeOver(kept, bytes, buffer.data(), buffer.size()) > 0; }},
        {"devInfo, no extension", asked, 0, [&] { return literal.Ask(); }},
        {"devInfo, all but the two", asked, 0, [&] { return old.Ask(); }},
        {"devInfo, all (to bare, kept)", asked, 1, [&] { return all.Ask(); }},
        {"devInfo, all", asked, 3, [&] { return all.Ask(); }},
        {"login, no extension", logins, 0, [&] { return literal.LogInAndOut(); }},
        {"login, all but the two", logins, 6, [&] { return old.LogInAndOut(); }},
        {"login, with keep-alive", logins, 7, [&] { return keeping.LogInAndOut(); }},
        {"login, with quick-login", logins, 7, [&] { return quick.LogInAndOut(); }},
        {"login, all", logins, 7, [&] { return all.LogInAndOut(); }},
        {"login, all (to no extension)", logins, 6, [&] { return all.LogInAndOut(); }},
    };
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < ways.size(); ++i) {
            // Each round begins with another one.
            if (!Measure(ways[(i + static_cast<std::size_t>(round)) % ways.size()])) {
                return 1;
            }
        }
    }
    close(kept);
    std::fprintf(stderr, "round trip %+.1f ms, %d rounds in turns\n",
                 static_cast<double>(roundTrip.count()) / 1000, rounds);
    Show(ways);
    ONVIF_CLIENT_Quit();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    setenv("ONVIF_CLIENT_LOG", "off", 0);
    setenv("ONVIF_CLIENT_TRACE", "off", 0);
    double milliseconds = 0;
    int rounds = 9;
    CLI::App app("What round trips cost");
    app.add_option("--round-trip", milliseconds, "Milliseconds that a proxy adds to a round trip");
    app.add_option("--rounds", rounds)->check(CLI::PositiveNumber);
    CLI11_PARSE(app, argc, argv);
    return Run(std::chrono::microseconds(static_cast<long>(milliseconds * 1000)), rounds);
}
