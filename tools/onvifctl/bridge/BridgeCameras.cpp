// The bridge and its cameras: their states, and commands for them.
#include <nlohmann/json.hpp>
#include <utility>

#include "bridge/Bridge.h"
#include "bridge/CommandAtCamera.h"
#include "bridge/HomeAssistant.h"
#include "output/Notices.h"

namespace onvifctl {

namespace {

using std::chrono::seconds;

constexpr const char* kAvailability = "availability";

const char* TextOf(bool active) {
    return active ? "ON" : "OFF";
}

/// "input/3"; the library counts relays from 1001 on.
std::string StateName(const AlarmChange& change) {
    constexpr unsigned int kRelays = 1000;
    if (!change.input) {
        return "motion";
    }
    return *change.input > kRelays ? "relay/" + std::to_string(*change.input - kRelays)
                                   : "input/" + std::to_string(*change.input);
}

std::string TypeOf(const std::string& picture) {
    return picture.starts_with("\xFF\xD8") ? "image/jpeg" : "application/octet-stream";
}

}  // namespace

void CBridge::Set(const Camera& camera, const std::string& rest, const std::string& payload,
                  CRetainedStates::Order order) {
    states_.Set(topics_.OfCamera(camera.name, rest), payload, options_.expiry, order);
}

void CBridge::TakeCameraNews() {
    if (!watch_) {
        return;
    }
    const WatchNews news = watch_->Take();
    if (news.lost > 0) {
        // Rather no picture than a wrong one: whoever runs the bridge starts it again.
        throw CFailure(ExitCode::kNoOutput, "changes were lost: the states may be wrong");
    }
    for (const News& each : news.items) {
        std::visit([this](const auto& change) { Note(change); }, each);
    }
}

void CBridge::Note(const ConnectionChange& change) {
    Camera& camera = cameras_[change.camera];
    if (change.state == WatchState::kWatched || change.state == WatchState::kBack) {
        if (change.state == WatchState::kBack) {
            Tell(camera.name + " is back");
        }
        BeginStates(change.camera);
        return;
    }
    Tell(change.reason);
    EndStates(camera);
}

void CBridge::Note(const AlarmChange& change) {
    Camera& camera = cameras_[change.camera];
    const std::string name = StateName(change);
    if (camera.online) {
        camera.states.insert(name);
        Set(camera, name, TextOf(change.active));
    }
}

void CBridge::BeginStates(std::size_t number) {
    Camera& camera = cameras_[number];
    camera.online = true;
    for (const std::string& state : camera.states) {
        Set(camera, state, TextOf(false));
    }
    Set(camera, kAvailability, "online", CRetainedStates::Order::kLast);
    if (!std::exchange(camera.inventoryAsked, true)) {
        work_->Enter({number, std::nullopt, "", "", ""});
    }
}

void CBridge::EndStates(Camera& camera) {
    camera.online = false;
    Set(camera, kAvailability, "offline");
    for (const std::string& state : camera.states) {
        Set(camera, state, "");
    }
}

void CBridge::Order(const BridgeCommand& command, std::size_t camera, const Delivery& delivery) {
    CameraJob job = {camera, command, delivery.payload, delivery.responseTopic,
                     delivery.correlation};
    const std::string& discovery = options_.discoveryPrefix;
    const bool forged = topics_.IsOwn(job.responseTopic) ||
                        (!discovery.empty() && job.responseTopic.starts_with(discovery + "/"));
    if (forged) {
        job.responseTopic.clear();
    }
    try {
        CheckPayload(command, delivery.payload, delivery.size);
    } catch (const CFailure& failure) {
        Answer(job, failure.what());
        return;
    }
    // Where credentials are refused, further attempts would lock the account.
    if (!cameras_[camera].online) {
        Answer(job, "the camera is offline");
    } else if (!work_->Enter(job)) {
        Answer(job, "refused: too many commands are waiting");
    }
}

void CBridge::TakeWorkDone() {
    if (!work_) {
        return;
    }
    for (CameraJobDone& done : work_->Take()) {
        Camera& camera = cameras_[done.job.camera];
        if (!done.job.command) {
            camera.inventoryAsked = done.error.empty();  // else again when the camera is back
            TakeInventory(camera, done.inventory);
            continue;
        }
        if (!done.picture.empty()) {
            const bool asked = !done.job.responseTopic.empty();
            std::string type = TypeOf(done.picture);
            Reply({asked ? done.job.responseTopic : topics_.OfCamera(camera.name, "snapshot"),
                   std::move(done.picture), false, seconds(0), std::move(type),
                   done.job.correlation});
            if (asked) {
                continue;
            }
        }
        Answer(done.job, done.error);
    }
}

void CBridge::TakeInventory(Camera& camera, const Inventory& inventory) {
    for (unsigned int input = 1; input <= inventory.inputs; ++input) {
        const std::string name = "input/" + std::to_string(input);
        if (camera.states.insert(name).second) {
            Set(camera, name, camera.online ? TextOf(false) : "");
        }
    }
    if (options_.discoveryPrefix.empty()) {
        return;
    }
    constexpr std::chrono::hours kLong(24);  // entities outlive a bridge that is away
    for (const auto& [topic, message] :
         DiscoveryMessages(options_.discoveryPrefix, topics_, camera.name, inventory)) {
        states_.Set(topic, message, kLong);
    }
}

void CBridge::Answer(const CameraJob& job, const std::string& error) {
    using Json = nlohmann::ordered_json;
    const std::string& name = cameras_[job.camera].name;
    const Json result = {{"camera", name},
                         {"command", job.command->name},
                         {"ok", error.empty()},
                         {"error", error.empty() ? Json(nullptr) : Json(error)}};
    Reply({job.responseTopic.empty() ? topics_.OfCamera(name, "result") : job.responseTopic,
           result.dump(-1, ' ', false, Json::error_handler_t::replace), false, seconds(0),
           "application/json", job.correlation});
}

}  // namespace onvifctl
