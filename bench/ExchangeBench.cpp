// Times the socket layer's exchanges against bare blocking system calls, over connections of their
// own and over one that is kept: the same bytes, the same simulated camera. The difference is the
// floor of every request.
#include <benchmark/benchmark.h>
#include <camera_sim/CameraSim.h>

#include <cstring>
#include <vector>

#include "BareExchange.h"
#include "platform/KeptConnections.h"
#include "platform/Wirelink.h"

namespace {

/// A camera without authentication and a request to it.
struct Bed {
    Bed() {
        onvif_client::WIRELINK_Initial(1, 1, nullptr, 0);
        const std::string body =
            "<?xml version=\"1.0\"?><s:Envelope "
            "xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\"><s:Body><GetDeviceInformation "
            "xmlns=\"http://www.onvif.org/ver10/device/wsdl\"/></s:Body></s:Envelope>";
        request =
            "POST /onvif/device_service HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: "
            "application/soap+xml\r\nContent-Length: " +
            std::to_string(body.size()) + "\r\n\r\n" + body;
    }
    ~Bed() { onvif_client::WIRELINK_Quit(); }
    Bed(const Bed&) = delete;
    Bed& operator=(const Bed&) = delete;

    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera =
        host.Add({.user = "", .keepAlive = camera_sim::KeepAlive::kPolite, .recordLimit = 1});
    std::string request;
    std::vector<char> buffer = std::vector<char>(8192);
};

Bed& TheBed() {
    static Bed bed;
    return bed;
}

void BareSystemCalls(benchmark::State& state) {
    Bed& bed = TheBed();
    for ([[maybe_unused]] const auto _ : state) {
        std::memset(bed.buffer.data(), 0, bed.buffer.size());
        if (BareExchange(bed.camera.Port(), bed.request, bed.buffer.data(), bed.buffer.size()) ==
            0) {
            state.SkipWithError("no reply");
        }
    }
}

void SimpleClientComm(benchmark::State& state) {
    Bed& bed = TheBed();
    for ([[maybe_unused]] const auto _ : state) {
        std::memset(bed.buffer.data(), 0, bed.buffer.size());
        if (onvif_client::WIRELINK_SimpleClientComm(
                "127.0.0.1", bed.camera.Port(), bed.request.data(),
                static_cast<unsigned int>(bed.request.size()), bed.buffer.data(),
                static_cast<unsigned int>(bed.buffer.size()), ":Envelope>", 8000) <= 0) {
            state.SkipWithError("no reply");
        }
    }
}

void BareSystemCallsKept(benchmark::State& state) {
    Bed& bed = TheBed();
    const int kept = BareConnection(bed.camera.Port());
    for ([[maybe_unused]] const auto _ : state) {
        if (BareExchangeOver(kept, bed.request, bed.buffer.data(), bed.buffer.size()) == 0) {
            state.SkipWithError("no reply");
        }
    }
    close(kept);
}

/// Ends with the envelope, and has the connection kept.
class CEnvelope final : public onvif_client::CReplyObserver {
 public:
    std::uint32_t OnReply(const char* data, std::uint32_t length) override {
        text_.append(data, length);
        return text_.ends_with(":Envelope>") ? 0 : onvif_client::kReplyGoesOn;
    }
    std::uint32_t KeepsOpenMs() const override { return onvif_client::kLongestKeptMs; }

 private:
    std::string text_;
};

void ObservedClientCommKept(benchmark::State& state) {
    Bed& bed = TheBed();
    const onvif_client::CKeptConnections connections;
    for ([[maybe_unused]] const auto _ : state) {
        CEnvelope envelope;
        onvif_client::KeptUse kept{connections, onvif_client::kLongestKeptMs};
        if (!onvif_client::WIRELINK_ObservedClientComm(
                "127.0.0.1", bed.camera.Port(), bed.request.data(),
                static_cast<unsigned int>(bed.request.size()), &envelope, 8000, nullptr, &kept)) {
            state.SkipWithError("no reply");
        }
    }
}

BENCHMARK(BareSystemCalls)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(SimpleClientComm)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BareSystemCallsKept)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(ObservedClientCommKept)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
