// One request document, run on a session that has profiles, ranges and an answer for everything.
#include "FuzzInput.h"
#include "client/PreparedRequest.h"
#include "commands/GetCmd.h"

namespace {

using namespace onvif_client;
using namespace onvif_client::fuzz;

const std::string kStart = "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"e\"><s:Body>";
const std::string kEnd = "</s:Body></s:Envelope>";

/// What the device answers to every exchange.
const Reply kReplies[] = {
    {status::kSuccess, kStart + kEnd},
    {status::kSuccess, kStart +
                           "<s:Fault><s:Code><s:Value>s:Sender</s:Value></s:Code><s:Reason>"
                           "<s:Text>no</s:Text></s:Reason></s:Fault>" +
                           kEnd},
    {status::kSuccess, kStart +
                           "<x:GetProfilesResponse xmlns:x=\"x\"><x:Profiles token=\"A\"/>"
                           "</x:GetProfilesResponse>"
                           // What commands read before they set it.
                           "<GetVideoEncoderConfigurationResponse><Configuration token=\"D\">"
                           "<Name>&lt;</Name><H264/></Configuration>"
                           "</GetVideoEncoderConfigurationResponse>"
                           "<GetImagingSettingsResponse><ImagingSettings><Exposure><Window top=\"\""
                           "/></Exposure></ImagingSettings></GetImagingSettingsResponse>"
                           "<GetOSDResponse><OSD><Type>Image</Type><Extension><ChannelName/>"
                           "</Extension></OSD></GetOSDResponse><GetPresetToursResponse>"
                           "<PresetTour token=\"T\"><TourSpot/></PresetTour>"
                           "</GetPresetToursResponse>" +
                           kEnd},
    {status::kNotAnswered, {}},
};

class CScriptedSession final : public ICommandSession {
 public:
    explicit CScriptedSession(std::uint8_t choice) : choice_(choice) {
        if (choice % 16 != 15) {
            profiles_ = {{"A", "B", "C", "D", "E", "F", "G"}, {"H", "I", "J", "K", "L", "", ""}};
        }
    }

    std::shared_ptr<const ProfileList> Profiles() const override {
        return std::make_shared<ProfileList>(profiles_);
    }
    void ReplaceProfiles(ProfileList profiles) override { profiles_ = std::move(profiles); }
    ServiceTable Services() const override { return {{"device", "onvif/device_service"}}; }
    bool HasMedia2() const override { return choice_ % 2 == 1; }
    CExtensions Extensions() const override {
        return choice_ / 32 % 2 == 0
                   ? CExtensions{}
                   : CExtensions{Extension::kStandardRequests, Extension::kOwnParameters};
    }
    PtzRanges SpeedRanges() const override { return {{-1, 1}, {0, 0}, {-100, 7}}; }
    int DownloadPicture(const std::string&, ResponseBuffer&) override { return status::kSuccess; }

    Reply Exchange(const SignedRequest& request) override {
        if (choice_ % 8 == 7) {
            const Credentials credentials{"user\1", "password"};
            const auto prepared = CPreparedEnvelope::Make(credentials, request.envelope);
            ExpectDocument(prepared.value().Sign(credentials, std::nullopt).value());
        } else {
            ExpectDocument(request.envelope);
            const CXmlDocument envelope(request.envelope);
            const XMLElement* body = envelope.Find("s:Envelope/s:Body");
            Expect(body != nullptr && body->FirstChildElement() != nullptr);
        }
        return kReplies[choice_ / 2 % std::size(kReplies)];
    }

 private:
    const std::uint8_t choice_;
    ProfileList profiles_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [text, choice] = ReadInput(data, size);
    CScriptedSession session(choice);
    std::string result;
    if (text.find("<Set") != std::string_view::npos) {
        RunSet(session, text, result);
    } else if (choice >= 128) {
        FirstRequest(session, text);
    } else {
        result = RunGet(session, text).document;
    }
    if (!result.empty()) {
        ExpectDocument(result);
    }
    return 0;
}
