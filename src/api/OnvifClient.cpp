#include "onvif_client/OnvifClient.h"

#include <cstring>
#include <string>
#include <vector>

#include "api/Singletons.h"
#include "common/LogText.h"
#include "platform/Environment.h"
#include "platform/TraceFile.h"
#include "platform/Wirelink.h"

namespace {

using onvif_client::EventController;
using onvif_client::SessionRegistry;

/// The boundary of every export: nothing is thrown across it.
template <typename Work, typename Result>
Result Guarded(Result onFailure, const Work& work) noexcept {
    try {
        return work();
    } catch (...) {
        onvif_client::LogAssert(onvif_client::loglabel::kOnvifClient,
                                "an exception reached an export");
        return onFailure;
    }
}

std::string TextOf(const char* text) {
    return text == nullptr ? "" : text;
}

onvif_client::CExtensions ChosenExtensions() {
    std::vector<std::string> unknown;
    std::vector<const onvif_client::ExtensionRow*> lacking;
    const auto chosen = onvif_client::ReadExtensions(
        onvif_client::EnvironmentText("ONVIF_CLIENT_EXTENSIONS", ""), unknown, lacking);
    for (const std::string& name : unknown) {
        onvif_client::LogNormal(onvif_client::loglabel::kOnvifClient, "there is no extension %s",
                                name.c_str());
    }
    for (const onvif_client::ExtensionRow* row : lacking) {
        const std::string needed(onvif_client::ExtensionName(*row->needs));
        onvif_client::LogNormal(onvif_client::loglabel::kOnvifClient,
                                "the extension %s does nothing without %s",
                                std::string(row->name).c_str(), needed.c_str());
    }
    return chosen;
}

}  // namespace

bool ONVIF_CLIENT_Initial() {
    return Guarded(true, [] {
        onvif_client::COREKIT_BeginTraces();
        if (onvif_client::StateOfTraceFile() == onvif_client::TraceFile::kRefused) {
            onvif_client::LogNormal(onvif_client::loglabel::kOnvifClient, "%s",
                                    "the file of ONVIF_CLIENT_TRACE_FILE cannot be written");
        }
        onvif_client::WIRELINK_Initial(1, 1, nullptr, 8989);
        SessionRegistry().UseExtensions(ChosenExtensions());
        EventController().Start();
        return true;
    });
}

bool ONVIF_CLIENT_Quit() {
    return Guarded(true, [] {
        onvif_client::WIRELINK_Quit();
        SessionRegistry();
        EventController().Stop();
        return true;
    });
}

unsigned int ONVIF_CLIENT_Login(unsigned int loginId, const char* ip, unsigned short port,
                                const char* user, const char* password, unsigned int* errorCode) {
    return Guarded(onvif_client::kNoLoginId, [&] {
        unsigned int ignored = 0;
        return SessionRegistry().Login(loginId, ip, port, user, password,
                                       errorCode == nullptr ? ignored : *errorCode);
    });
}

bool ONVIF_CLIENT_Logout(unsigned int loginId) {
    return Guarded(true, [&] {
        SessionRegistry().Logout(loginId);
        return true;
    });
}

bool ONVIF_CLIENT_GetCfg(unsigned int loginId, const char* request, char*& response,
                         int* responseLength) {
    return Guarded(false, [&] {
        int ignored = 0;
        return SessionRegistry().Get(loginId, TextOf(request), response,
                                     responseLength == nullptr ? ignored : *responseLength);
    });
}

bool ONVIF_CLIENT_SetCfg(unsigned int loginId, const char* request, char*& response) {
    response = nullptr;
    return Guarded(false, [&] {
        std::string result;
        const bool success = SessionRegistry().Set(loginId, TextOf(request), result);
        if (!success || result.empty()) {
            return false;
        }
        auto buffer = std::make_unique<char[]>(result.size() + 1);
        std::memcpy(buffer.get(), result.c_str(), result.size() + 1);
        response = buffer.release();
        return true;
    });
}

void ONVIF_CLIENT_DelResponseBuff(char*& buffer) {
    const std::unique_ptr<char[]> freed(buffer);
    buffer = nullptr;
}

bool ONVIF_CLIENT_AddAlarmStateObserver(unsigned int loginId, CONVIFAlarmStateObserver* observer) {
    return Guarded(true, [&] {
        EventController().AddDevice(loginId, observer, SessionRegistry().DeviceAddress(loginId));
        return true;
    });
}

void ONVIF_CLIENT_DelAlarmStateObserver(unsigned int loginId) {
    Guarded(true, [&] {
        SessionRegistry();
        EventController().DeleteDevice(loginId);
        return true;
    });
}

bool ONVIF_SEARCH_Initial(void (*)(const char*, int, const char*, void*), void*, unsigned int) {
    return true;
}

bool ONVIF_SEARCH_Set_Config(const char*, const char*) {
    return true;
}

bool ONVIF_SEARCH_StartManual() {
    return true;
}

void ONVIF_SEARCH_Quit() {
    Guarded(true, [] {
        onvif_client::WIRELINK_Quit();
        return true;
    });
}
