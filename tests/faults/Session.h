/// @file
/// An application at one camera whose replies are spoiled.
#ifndef ONVIF_CLIENT_TESTS_FAULTS_SESSION_H
#define ONVIF_CLIENT_TESTS_FAULTS_SESSION_H

#include <camera_sim/CameraSim.h>
#include <tinyxml2.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <nlohmann/json.hpp>

#include "faults/Findings.h"
#include "onvif_client/OnvifClient.h"

namespace client_test {

inline constexpr const char* kLogin = "login";
inline constexpr const char* kObserver = "observer";

inline camera_sim::CameraOptions Options() {
    camera_sim::CameraOptions options;
    options.createdWindow = std::chrono::hours(24 * 36500);  // a request sets the clock
    options.maxSubscriptions = 100000;
    options.messageQueueLimit = 10;
    options.motionPeriod = options.inputPeriod = std::chrono::milliseconds(20);
    options.recordLimit = 0;
    options.keepAlive = camera_sim::KeepAlive::kPolite;  // where the reply is whole
    return options;
}

/// "Get devInfo"
inline std::string NameOf(const std::string& step) {
    const std::size_t at = step.find('<', 1) + 1;
    return at == 0 ? step : step.substr(1, 4) + step.substr(at, step.find_first_of("/>", at) - at);
}

/// @return what is wrong with a result document; empty: nothing.
inline std::string FaultOf(const std::string& document) {
    tinyxml2::XMLDocument parsed;
    parsed.Parse(document.c_str(), document.size());
    const auto* root = parsed.RootElement();
    if (parsed.Error() || root == nullptr ||
        !std::string_view(root->Name()).ends_with("Response")) {
        return "no result document";
    }
    tinyxml2::XMLPrinter printer;
    parsed.Print(&printer);  // shows references as what they stand for
    const std::string all = document + printer.CStr();
    const bool forbidden = std::ranges::any_of(all, [](char each) {
        return each >= 0 && each < ' ' && each != '\t' && each != '\n' && each != '\r';
    });
    if (forbidden || all.find("\xEF\xBF\xBE") != all.npos || all.find("\xEF\xBF\xBF") != all.npos) {
        return "characters that XML forbids";
    }
    try {
        return nlohmann::json(all).dump().empty() ? "nothing" : "";
    } catch (const nlohmann::json::exception&) {
        return "no UTF-8";
    }
}

/// What can be done: the requests of the document, and what needs none.
inline std::vector<std::string> Steps() {
    std::ifstream stream(DOCUMENTS_FOLDER "/commands.md");
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    const std::string fence = "```xml\n";
    std::vector<std::string> steps = {kLogin, kLogin, kLogin, kObserver, kObserver, kObserver};
    for (auto at = text.find(fence); at != std::string::npos; at = text.find(fence, at)) {
        at += fence.size();
        if (text[at + 1] == 'G' || text[at + 1] == 'S') {
            steps.push_back(text.substr(at, text.find("```", at) - at));
        }
    }
    return steps;
}

class CSession {
 public:
    CSession(const camera_sim::SpoilKind& kind, std::uint64_t seed, CFindings& findings)
        : kind_(kind),
          name_("seed " + std::to_string(seed) + ", kind " + std::string(kind.name)),
          findings_(findings),
          camera_(host_.Add(Options())) {
        camera_.Spoil({.kind = std::string(kind.name), .oneIn = 0});  // keeps replies for others
    }

    /// Takes a third of the steps in an order that the seed chooses, until @p end.
    void Run(std::vector<std::string> steps, const std::atomic<bool>& end) {
        camera_sim::CChance chance(name_);
        id_ = Login(name_ + ", the first login");
        const std::size_t count = kind_.IsSlow() ? 3 : steps.size() / 3;
        for (std::size_t i = 0; i < count && !end; ++i) {
            std::swap(steps[i], steps[i + chance.Below(steps.size() - i)]);
            const std::size_t seed = chance.Below(1'000'000);
            camera_.Spoil({std::string(kind_.name), seed, 1 + chance.Below(3)});
            Take(steps[i], name_ + ", " + NameOf(steps[i]));
        }
        Observe(name_ + ", the end", false);
        findings_.Run(name_ + ", logout", 1, [&] { ONVIF_CLIENT_Logout(id_); });
        if (!end && kind_.name == "none" && succeeded_ < count / 2) {
            findings_.Add(name_, "few calls succeed: " + std::to_string(succeeded_));
        }
    }

 private:
    struct CObserver final : CONVIFAlarmStateObserver {
        void OnMotionAlarmState(unsigned int, bool) override { late = late || !expected; }
        void OnAlarmInState(unsigned int, unsigned int, bool) override { late = late || !expected; }

        std::atomic<bool> expected = false;
        std::atomic<bool> late = false;
    };

    void Take(const std::string& step, const std::string& name) {
        if (step == kObserver) {
            Observe(name, !observer_.expected);
        } else if (step == kLogin) {
            ONVIF_CLIENT_Logout(Login(name));
        } else {
            Send(step, name);
        }
    }

    unsigned int Login(const std::string& name) {
        unsigned int id = 0;
        findings_.Run(name, 90, [&] {
            id = ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1", camera_.Port(), "admin",
                                    "camera-1", nullptr);
        });
        return id;
    }

    void Observe(const std::string& name, bool observed) {
        observer_.expected = observer_.expected || observed;
        findings_.Run(name, 20, [&] {
            observed ? void(ONVIF_CLIENT_AddAlarmStateObserver(id_, &observer_))
                     : ONVIF_CLIENT_DelAlarmStateObserver(id_);
        });
        observer_.expected = observed;
        if (observer_.late) {
            findings_.Add(name, "a removed observer is called");
        }
    }

    void Send(const std::string& request, const std::string& name) {
        const bool get = request.starts_with("<Get");
        const bool picture = request.find("<snapshotURI") != std::string::npos;
        char* response = nullptr;
        int length = 0;
        bool success = false;
        findings_.Run(name, picture ? 30 : 16, [&] {
            success = get ? ONVIF_CLIENT_GetCfg(id_, request.c_str(), response, &length)
                          : ONVIF_CLIENT_SetCfg(id_, request.c_str(), response);
        });
        succeeded_ += success ? 1 : 0;
        if (response != nullptr) {
            const std::string result =
                get ? std::string(response, static_cast<std::size_t>(length)) : response;
            const std::string fault =
                picture ? "" : FaultOf(result.substr(0, result.size() - (get ? 1 : 0)));
            if (!success || !fault.empty()) {
                findings_.Add(name, fault + " in\n" + result);
            }
        }
        ONVIF_CLIENT_DelResponseBuff(response);
    }

    const camera_sim::SpoilKind& kind_;
    const std::string name_;
    CFindings& findings_;
    CObserver observer_;
    camera_sim::CCameraHost host_;
    camera_sim::CCamera& camera_;
    unsigned int id_ = 0;
    std::size_t succeeded_ = 0;
};

}  // namespace client_test

#endif
