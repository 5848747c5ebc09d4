/// The library as an application uses it, against simulated cameras.
#ifndef ONVIF_CLIENT_TESTS_SYSTEM_CLIENT_H
#define ONVIF_CLIENT_TESTS_SYSTEM_CLIENT_H

#include <camera_sim/CameraSim.h>
#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <optional>
#include <string>

#include "onvif_client/OnvifClient.h"

namespace client_test {

/// The library, started while it lives.
struct CStartedLibrary {
    CStartedLibrary() { ONVIF_CLIENT_Initial(); }
    ~CStartedLibrary() { ONVIF_CLIENT_Quit(); }
    CStartedLibrary(const CStartedLibrary&) = delete;
    CStartedLibrary& operator=(const CStartedLibrary&) = delete;
};

/// A test with the library and with cameras, which go first.
class CCameraTest : public testing::Test {
 protected:
    CStartedLibrary library_;
    camera_sim::CCameraHost host_;
};

inline unsigned int LoginAt(unsigned short port, const char* password, unsigned int& error) {
    return ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1", port, "admin", password,
                              &error);
}

inline unsigned int Login(const camera_sim::CCamera& camera) {
    unsigned int error = 0;
    return LoginAt(camera.Port(), "camera-1", error);
}

/// The result document of a Get request with these commands; nothing when it failed.
inline std::optional<std::string> Get(unsigned int id, const std::string& commands) {
    char* response = nullptr;
    int length = 7;
    const std::string request = "<Get version=\"1.0\" systemType=\"ipc\">" + commands + "</Get>";
    const bool success = ONVIF_CLIENT_GetCfg(id, request.c_str(), response, &length);
    EXPECT_TRUE(success || length == 0);
    std::optional<std::string> result;
    if (success) {
        result.emplace(response == nullptr ? "" : response);
    }
    ONVIF_CLIENT_DelResponseBuff(response);
    return result;
}

inline std::optional<std::string> Set(unsigned int id, const std::string& commands) {
    char* response = nullptr;
    const std::string request = "<Set version=\"1.0\" systemType=\"ipc\">" + commands + "</Set>";
    std::optional<std::string> result;
    if (ONVIF_CLIENT_SetCfg(id, request.c_str(), response)) {
        result.emplace(response);
    }
    ONVIF_CLIENT_DelResponseBuff(response);
    return result;
}

/// The text at a path of element names below the document's root ("ipv4/item/ip"); a last step
/// "@name" is an attribute, "*" stands for any element. "(none)" when there is no such element.
inline std::string At(const std::string& document, std::string path) {
    tinyxml2::XMLDocument parsed;
    parsed.Parse(document.c_str());
    const tinyxml2::XMLElement* element = parsed.RootElement();
    for (path += '/'; element != nullptr && !path.empty(); path.erase(0, path.find('/') + 1)) {
        const std::string step = path.substr(0, path.find('/'));
        if (step.front() == '@') {
            const char* value = element->Attribute(step.c_str() + 1);
            return value == nullptr ? "(none)" : value;
        }
        element = element->FirstChildElement(step == "*" ? nullptr : step.c_str());
    }
    if (element == nullptr) {
        return "(none)";
    }
    return element->GetText() == nullptr ? "" : element->GetText();
}

}  // namespace client_test

#endif
