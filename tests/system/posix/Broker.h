/// A real broker of the test's own, and a client of it that remembers what it hears.
#ifndef ONVIF_CLIENT_TESTS_SYSTEM_POSIX_BROKER_H
#define ONVIF_CLIENT_TESTS_SYSTEM_POSIX_BROKER_H

#include <camera_sim/CameraSim.h>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/Await.h"
#include "support/OwnFile.h"
#include "system/Tool.h"

namespace client_test {

/// Listens on 127.0.0.1, at a port that the system gives nobody by itself: who tries to connect
/// while the broker is away could be connected with himself.
class CBroker {
 public:
    explicit CBroker(const std::string& settings = "allow_anonymous true\n")
        : settings_(settings + "user root\npersistence true\npersistence_location " + folder_.name +
                    "\nlog_dest stderr\nconnection_messages false\n") {
        for (port = 10000 + getpid() * 10 % 20000; !Start(); ++port) {
            if (port % 10 == 9) {
                throw std::runtime_error("no broker: " MOSQUITTO);
            }
        }
    }

    /// @return whether it could have the port.
    bool Start() {
        const std::string text = "listener " + std::to_string(port) + " 127.0.0.1\n" + settings_;
        process_ = std::make_unique<CRunningTool>("-c " + folder_.File("broker.conf", text), "",
                                                  "&1", MOSQUITTO);
        std::string line = process_->Line();
        while (line != "(no more)" && line.find(" running") == std::string::npos) {
            line = process_->Line();
        }
        return line != "(no more)";
    }

    /// After SIGTERM it knows again what was retained; after SIGKILL it knows what it knew before.
    void Stop(int signal) {
        EXPECT_TRUE(process_->Signal(signal));
        process_->End();
    }

    std::string Address() const { return "mqtt://127.0.0.1:" + std::to_string(port); }

    int port = 0;

 private:
    const COwnFolder folder_;
    const std::string settings_;
    std::unique_ptr<CRunningTool> process_;
};

/// Hears everything, first what is retained.
class CSubscriber {
 public:
    struct Message {
        std::string topic;
        std::string payload;
        std::string correlation;
    };

    explicit CSubscriber(const CBroker& broker) : client_(mosquitto_new(nullptr, true, this)) {
        mosquitto_int_option(client_, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
        mosquitto_connect_callback_set(client_, [](mosquitto* client, void*, int) {
            mosquitto_subscribe(client, nullptr, "#", 0);
        });
        mosquitto_message_v5_callback_set(client_, OnMessage);
        mosquitto_connect(client_, "127.0.0.1", broker.port, 10);
        mosquitto_loop_start(client_);
        const std::string mark = "mark/" + std::to_string(reinterpret_cast<std::uintptr_t>(this));
        EXPECT_TRUE(Await([&] {
            Publish(mark, "now");
            usleep(10000);
            return Latest(mark) == "now";
        }));
    }
    ~CSubscriber() {
        mosquitto_disconnect(client_);
        mosquitto_loop_stop(client_, false);
        mosquitto_destroy(client_);
    }

    /// The latest payload; empty when there is none.
    std::string Latest(const std::string& topic) const {
        const auto all = All();
        const auto found = all.find(topic);
        return found == all.end() ? "" : found->second;
    }
    bool Hears(const std::string& topic, const std::string& payload) const {
        return Await([&] { return Latest(topic) == payload; });
    }
    std::map<std::string, std::string> All() const {
        const std::lock_guard guard(lock_);
        return latest_;
    }
    std::vector<Message> Messages() const {
        const std::lock_guard guard(lock_);
        return messages_;
    }

    void Publish(const std::string& topic, const std::string& payload, bool retained = false,
                 const char* responseTopic = nullptr, const std::string& correlation = "") {
        mosquitto_property* properties = nullptr;
        if (responseTopic != nullptr) {
            mosquitto_property_add_string(&properties, MQTT_PROP_RESPONSE_TOPIC, responseTopic);
            mosquitto_property_add_binary(&properties, MQTT_PROP_CORRELATION_DATA,
                                          correlation.data(),
                                          static_cast<std::uint16_t>(correlation.size()));
        }
        mosquitto_publish_v5(client_, nullptr, topic.c_str(), static_cast<int>(payload.size()),
                             payload.data(), 1, retained, properties);
        mosquitto_property_free_all(&properties);
    }

 private:
    static void OnMessage(mosquitto*, void* self, const mosquitto_message* message,
                          const mosquitto_property* properties) {
        const auto text = [](const void* bytes, int length) {
            return bytes == nullptr ? ""
                                    : std::string(static_cast<const char*>(bytes),
                                                  static_cast<std::size_t>(length));
        };
        void* data = nullptr;
        std::uint16_t length = 0;
        mosquitto_property_read_binary(properties, MQTT_PROP_CORRELATION_DATA, &data, &length,
                                       false);
        const std::unique_ptr<void, decltype(&std::free)> owner(data, std::free);
        const Message heard = {message->topic, text(message->payload, message->payloadlen),
                               text(data, length)};
        auto& subscriber = *static_cast<CSubscriber*>(self);
        const std::lock_guard guard(subscriber.lock_);
        subscriber.latest_[heard.topic] = heard.payload;
        subscriber.messages_.push_back(heard);
    }

    mosquitto* const client_;
    mutable std::mutex lock_;  // guards what follows; a leaf
    std::vector<Message> messages_;
    std::map<std::string, std::string> latest_;
};

}  // namespace client_test

#endif
