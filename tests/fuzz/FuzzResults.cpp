// One reply of a device, read by one result builder or by one of the readers of a login.
#include <span>

#include "FuzzInput.h"
#include "client/PreparedRequest.h"
#include "transform/MotionCells.h"
#include "transform/TimeResults.h"

namespace {

using namespace onvif_client;
using namespace onvif_client::fuzz;

void ReadServiceTable(std::string_view reply) {
    ServiceTable services;
    EventCapabilities events;
    ReadServices(reply, services);
    ReadCapabilities(reply, services, events);
    for (const CapabilityCategory& category : CapabilityCategories()) {
        ReadCapability(reply, category);
    }
}

void ReadLoginRecords(std::string_view reply) {
    ProfileList profiles;
    const bool read = ReadProfiles(reply, profiles);
    Expect(read || profiles.empty());
    PtzRanges ranges;
    ReadPtzRanges(reply, ranges);
    FocusSpeedRange focus;
    ReadFocusSpeedRange(reply, focus);
}

void ReadClock(std::string_view reply) {
    std::string result;
    const std::string time = TransGetSystemDateAndTimeForAuthentication(reply, result);
    Expect(time.empty() == result.empty());
    Expect(time.empty() || CreatedFromDeviceTime(result) == time);
}

void SignEnvelope(std::string_view text) {
    const Credentials credentials{"user", "password"};
    if (const auto prepared = CPreparedEnvelope::Make(credentials, text)) {
        Expect(CXmlDocument().Load(prepared->Sign(credentials, std::nullopt).value()));
    }
}

void TrimText(std::string_view text) {
    Expect(CXmlTransform::TrimXmlNamespace(text).size() == text.size());
}

void ReadCells(std::string_view text) {
    if (const auto rows = DecodeActiveCells(text, 22, 18)) {
        Expect(DecodeActiveCells(EncodeActiveCells(*rows), 22, 18) == rows);
    }
    CreatedFromDeviceTime(std::string(text));
}

constexpr void (*kReaders[])(std::string_view) = {ReadServiceTable, ReadLoginRecords, ReadClock,
                                                  SignEnvelope,     TrimText,         ReadCells};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<ResultStep> steps = ResultSteps();
    const auto [text, choice] = ReadInput(data, size);
    const std::size_t chosen = choice % (steps.size() + std::size(kReaders));
    if (chosen >= steps.size()) {
        kReaders[chosen - steps.size()](text);
        return 0;
    }
    CResultDocument result;
    BuildResult(*steps[chosen].step->result, text, {3, "token"}, result);
    ExpectDocument(result.Print());
    return 0;
}
