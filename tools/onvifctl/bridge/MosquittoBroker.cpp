// The broker by libmosquitto. Its own queues are not used for what may wait: an instance lives as
// long as a connection, so that nothing old is sent on the next one, and gets no more than the
// window. One thread makes all calls of an instance; it waits by poll, since the library's own loop
// waits by select, which knows no descriptors beyond 1023.
#include <mosquitto.h>
#include <mqtt_protocol.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <variant>

#include "ExitCode.h"
#include "bridge/Broker.h"
#include "system/SocketWait.h"

namespace onvifctl {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

/// On their way at once: many enough for a fleet, few enough for any broker.
constexpr std::size_t kMostOnTheWay = 64;
constexpr std::size_t kMostBytesOnTheWay = std::size_t{8} << 20U;
/// Deliveries that wait to be taken.
constexpr std::size_t kMostWaiting = std::size_t{8} << 20U;
/// The broker keeps what is larger to itself.
constexpr std::uint32_t kLargestPacket = 1U << 20U;
constexpr int kQuality = 1;

/// The properties of a packet while it is made.
class CProperties {
 public:
    ~CProperties() { mosquitto_property_free_all(&list_); }
    CProperties() = default;
    CProperties(const CProperties&) = delete;
    CProperties& operator=(const CProperties&) = delete;

    explicit CProperties(const Publication& publication) {
        if (publication.expiry > seconds(0)) {
            mosquitto_property_add_int32(&list_, MQTT_PROP_MESSAGE_EXPIRY_INTERVAL,
                                         static_cast<std::uint32_t>(publication.expiry.count()));
        }
        if (!publication.contentType.empty()) {
            mosquitto_property_add_string(&list_, MQTT_PROP_CONTENT_TYPE,
                                          publication.contentType.c_str());
        }
        if (!publication.correlation.empty()) {
            mosquitto_property_add_binary(
                &list_, MQTT_PROP_CORRELATION_DATA, publication.correlation.data(),
                static_cast<std::uint16_t>(publication.correlation.size()));
        }
    }

    void AddNumber(int what, std::uint32_t value) {
        mosquitto_property_add_int32(&list_, what, value);
    }
    mosquitto_property* Get() const { return list_; }
    mosquitto_property* Release() { return std::exchange(list_, nullptr); }

 private:
    mosquitto_property* list_ = nullptr;
};

std::string TextOfError(int code) {
    if (code == MOSQ_ERR_ERRNO) {
        return std::strerror(errno);
    }
    std::string text = mosquitto_strerror(code);
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text;
}

/// What the library has allocated for its caller.
using CAllocated = std::unique_ptr<void, decltype(&std::free)>;

struct Subscription {
    std::string filter;
    bool begins;
    Retained retained = Retained::kNever;
};

class CMosquittoBroker : public IBroker {
 public:
    CMosquittoBroker(const BrokerOptions& options, std::function<void()> wake)
        : options_(options), wake_(std::move(wake)) {
        mosquitto_lib_init();
        thread_ = std::jthread([this] { Run(); });
    }

    ~CMosquittoBroker() override {
        Stop(false);
        thread_.join();
        mosquitto_lib_cleanup();
    }

    CMosquittoBroker(const CMosquittoBroker&) = delete;
    CMosquittoBroker& operator=(const CMosquittoBroker&) = delete;

    bool Takes() override {
        const std::lock_guard guard(lock_);
        const bool takes = connected_ && todo_.size() + onTheWay_.size() < kMostOnTheWay &&
                           bytes_ < kMostBytesOnTheWay;
        refused_ = refused_ || !takes;
        return takes;
    }

    void Publish(Publication publication) override { Enter(std::move(publication)); }

    void Subscribe(const std::string& filter, Retained retained) override {
        Enter(Subscription{filter, true, retained});
    }

    void Unsubscribe(const std::string& filter) override { Enter(Subscription{filter, false}); }

    bool IsIdle() override {
        const std::lock_guard guard(lock_);
        return todo_.empty() && onTheWay_.empty();
    }

    BrokerNews Take() override {
        const std::lock_guard guard(lock_);
        woken_ = false;
        waitingBytes_ = 0;
        return std::exchange(news_, {});
    }

    bool End(bool inOrder, milliseconds patience) override {
        Stop(inOrder);
        std::unique_lock lock(lock_);
        return endedSignal_.wait_for(lock, patience, [this] { return ended_; });
    }

 private:
    using Task = std::variant<Publication, Subscription>;
    struct Sent {
        std::string topic;
        std::size_t bytes;
    };

    void Stop(bool inOrder) {
        {
            const std::lock_guard guard(lock_);
            inOrder_ = inOrder_ || inOrder;
            stopped_ = true;
        }
        wait_.Wake();
    }

    void Enter(Task task) {
        {
            const std::lock_guard guard(lock_);
            if (!connected_) {
                return;
            }
            if (const auto* publication = std::get_if<Publication>(&task)) {
                bytes_ += publication->payload.size();
            }
            todo_.push_back(std::move(task));
        }
        wait_.Wake();
    }

    bool IsStopped() {
        const std::lock_guard guard(lock_);
        return stopped_;
    }

    bool IsInOrder() {
        const std::lock_guard guard(lock_);
        return inOrder_;
    }

    void Run() {
        constexpr milliseconds kFirstPause(500);
        constexpr milliseconds kLongestPause(15000);
        milliseconds pause = kFirstPause;
        while (!IsStopped()) {
            wasConnected_ = false;
            const std::string reason = HoldConnection();
            Lose(reason);
            pause = wasConnected_ ? kFirstPause : std::min(pause * 2, kLongestPause);
            const auto end = Clock::now() + pause;
            while (!IsStopped() && Clock::now() < end) {
                wait_.Wait(-1, false, std::chrono::ceil<milliseconds>(end - Clock::now()));
            }
        }
        const std::lock_guard guard(lock_);
        ended_ = true;
        endedSignal_.notify_all();
    }

    /// @return why it ended.
    std::string HoldConnection() {
        const std::unique_ptr<mosquitto, decltype(&mosquitto_destroy)> client(
            mosquitto_new(options_.clientId.c_str(), true, this), mosquitto_destroy);
        if (client == nullptr) {
            return "no memory for a connection";
        }
        if (const int code = Prepare(client.get()); code != MOSQ_ERR_SUCCESS) {
            return TextOfError(code);
        }
        CProperties properties;
        properties.AddNumber(MQTT_PROP_MAXIMUM_PACKET_SIZE, kLargestPacket);
        refusal_.clear();
        int code = mosquitto_connect_bind_v5(
            client.get(), options_.address.host.c_str(), options_.address.port,
            static_cast<int>(options_.keepAlive.count()), nullptr, properties.Get());
        const auto began = Clock::now();
        while (code == MOSQ_ERR_SUCCESS) {
            if (IsStopped()) {
                return EndConnection(client.get());
            }
            HandOver(client.get());
            constexpr seconds kPatience(15);
            if (!wasConnected_ && Clock::now() > began + kPatience) {
                return "it does not answer";
            }
            code = Turn(client.get());
        }
        return refusal_.empty() ? TextOfError(code) : refusal_;
    }

    int Prepare(mosquitto* client) const {
        mosquitto_int_option(client, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
        mosquitto_int_option(client, MOSQ_OPT_TCP_NODELAY, 1);
        mosquitto_connect_v5_callback_set(client, OnConnect);
        mosquitto_disconnect_v5_callback_set(client, OnDisconnect);
        mosquitto_publish_v5_callback_set(client, OnPublish);
        mosquitto_message_v5_callback_set(client, OnMessage);
        const Publication& will = options_.lastWill;
        CProperties properties(will);
        int code = mosquitto_will_set_v5(client, will.topic.c_str(),
                                         static_cast<int>(will.payload.size()), will.payload.data(),
                                         kQuality, will.retained, properties.Release());
        if (code == MOSQ_ERR_SUCCESS && !options_.user.empty()) {
            code =
                mosquitto_username_pw_set(client, options_.user.c_str(), options_.password.c_str());
        }
        return code == MOSQ_ERR_SUCCESS && options_.address.secure ? PrepareSecurity(client) : code;
    }

    int PrepareSecurity(mosquitto* client) const {
        if (options_.authorities.empty()) {
            return mosquitto_int_option(client, MOSQ_OPT_TLS_USE_OS_CERTS, 1);
        }
        const auto orNull = [](const std::string& text) {
            return text.empty() ? nullptr : text.c_str();
        };
        // A key with a passphrase is of no use to a service.
        const auto noPassphrase = [](char*, int, int, void*) { return 0; };
        return mosquitto_tls_set(client, options_.authorities.c_str(), nullptr,
                                 orNull(options_.certificate), orNull(options_.key), noPassphrase);
    }

    /// Waits for the socket once, and does what it is ready for.
    int Turn(mosquitto* client) {
        constexpr milliseconds kBetweenPings(500);
        constexpr int kAtOnce = 64;
        const auto ready =
            wait_.Wait(mosquitto_socket(client), mosquitto_want_write(client), kBetweenPings);
        int code = MOSQ_ERR_SUCCESS;
        if (ready.reading) {
            code = mosquitto_loop_read(client, kAtOnce);
        }
        if (code == MOSQ_ERR_SUCCESS && ready.writing) {
            code = mosquitto_loop_write(client, kAtOnce);
        }
        return code == MOSQ_ERR_SUCCESS ? mosquitto_loop_misc(client) : code;
    }

    std::string EndConnection(mosquitto* client) {
        HandOver(client);
        if (IsInOrder()) {
            mosquitto_disconnect_v5(client, MQTT_RC_NORMAL_DISCONNECTION, nullptr);
            for (int turns = 0; turns < 10 && mosquitto_want_write(client); ++turns) {
                Turn(client);
            }
        }
        return "";
    }

    /// Passes on what was entered since.
    /// Without the lock: the library locks, too, and holds that while it calls back.
    void HandOver(mosquitto* client) {
        std::unique_lock lock(lock_);
        while (connected_ && !todo_.empty()) {
            const Task& task = todo_.front();  // stays in its place while others are added
            lock.unlock();
            std::visit([&](const auto& each) { HandOver(client, each); }, task);
            lock.lock();
            todo_.pop_front();
        }
    }

    void HandOver(mosquitto* client, const Publication& publication) {
        const CProperties properties(publication);
        int id = 0;
        const int code = mosquitto_publish_v5(
            client, &id, publication.topic.c_str(), static_cast<int>(publication.payload.size()),
            publication.payload.data(), kQuality, publication.retained, properties.Get());
        const std::lock_guard guard(lock_);
        if (code == MOSQ_ERR_SUCCESS) {
            onTheWay_[id] = {publication.topic, publication.payload.size()};
            return;
        }
        bytes_ -= publication.payload.size();
        if (code != MOSQ_ERR_NO_CONN && code != MOSQ_ERR_CONN_LOST) {
            RemarkLocked(publication.topic + " cannot be published: " + TextOfError(code));
        }
    }

    static void HandOver(mosquitto* client, const Subscription& subscription) {
        if (!subscription.begins) {
            mosquitto_unsubscribe_v5(client, nullptr, subscription.filter.c_str(), nullptr);
            return;
        }
        // What is retained comes without a quality: else the broker would drop what exceeds the
        // queue that it keeps for a client.
        const bool sends = subscription.retained == Retained::kSend;
        const int options =
            MQTT_SUB_OPT_RETAIN_AS_PUBLISHED |
            (sends ? MQTT_SUB_OPT_SEND_RETAIN_ALWAYS : MQTT_SUB_OPT_SEND_RETAIN_NEVER);
        mosquitto_subscribe_v5(client, nullptr, subscription.filter.c_str(), sends ? 0 : kQuality,
                               options, nullptr);
    }

    void Lose(const std::string& reason) {
        const std::lock_guard guard(lock_);
        connected_ = false;
        todo_.clear();
        onTheWay_.clear();
        bytes_ = 0;
        AddLocked({BrokerNews::Item::Kind::kLost, reason});
    }

    /// The same remark is not made twice.
    void RemarkLocked(const std::string& text) {
        constexpr std::size_t kMostRemarks = 100;
        if (remarks_.size() < kMostRemarks && remarks_.insert(text).second) {
            AddLocked({BrokerNews::Item::Kind::kRemark, text});
        }
    }

    void AddLocked(BrokerNews::Item item) {
        news_.items.push_back(std::move(item));
        WakeLocked();
    }

    void WakeLocked() {
        if (!woken_) {
            woken_ = true;
            wake_();
        }
    }

    static void OnConnect(mosquitto*, void* self, int code, int, const mosquitto_property*) {
        auto& broker = *static_cast<CMosquittoBroker*>(self);
        const std::lock_guard guard(broker.lock_);
        if (code != MQTT_RC_SUCCESS) {
            broker.refusal_ = std::string("it refuses: ") + mosquitto_reason_string(code);
            return;
        }
        broker.connected_ = broker.wasConnected_ = true;
        broker.AddLocked({BrokerNews::Item::Kind::kConnected});
    }

    static void OnDisconnect(mosquitto*, void* self, int code, const mosquitto_property*) {
        if (code >= MQTT_RC_UNSPECIFIED) {
            static_cast<CMosquittoBroker*>(self)->refusal_ = mosquitto_reason_string(code);
        }
    }

    static void OnPublish(mosquitto*, void* self, int id, int code, const mosquitto_property*) {
        auto& broker = *static_cast<CMosquittoBroker*>(self);
        const std::lock_guard guard(broker.lock_);
        const auto sent = broker.onTheWay_.extract(id);
        if (sent.empty()) {
            return;
        }
        broker.bytes_ -= sent.mapped().bytes;
        if (code >= MQTT_RC_UNSPECIFIED) {
            broker.RemarkLocked("the broker refuses " + sent.mapped().topic + ": " +
                                mosquitto_reason_string(code));
        }
        // Not for each: half a window at a time.
        const bool free = broker.onTheWay_.size() <= kMostOnTheWay / 2;
        if (free && std::exchange(broker.refused_, false)) {
            broker.WakeLocked();
        }
    }

    static void OnMessage(mosquitto*, void* self, const mosquitto_message* message,
                          const mosquitto_property* properties) {
        auto& broker = *static_cast<CMosquittoBroker*>(self);
        Delivery delivery;
        delivery.topic = message->topic;
        delivery.size = static_cast<std::size_t>(std::max(message->payloadlen, 0));
        if (delivery.size > 0) {
            delivery.payload.assign(static_cast<const char*>(message->payload),
                                    std::min(delivery.size, Delivery::kMostPayload));
        }
        delivery.retained = message->retain;
        char* response = nullptr;
        mosquitto_property_read_string(properties, MQTT_PROP_RESPONSE_TOPIC, &response, false);
        const CAllocated responseOwner(response, std::free);
        if (response != nullptr && mosquitto_pub_topic_check(response) == MOSQ_ERR_SUCCESS) {
            delivery.responseTopic = response;
        }
        void* data = nullptr;
        std::uint16_t length = 0;
        mosquitto_property_read_binary(properties, MQTT_PROP_CORRELATION_DATA, &data, &length,
                                       false);
        const CAllocated dataOwner(data, std::free);
        if (data != nullptr) {
            delivery.correlation.assign(static_cast<const char*>(data), length);
        }
        broker.Deliver(std::move(delivery));
    }

    void Deliver(Delivery delivery) {
        const std::lock_guard guard(lock_);
        const std::size_t size = sizeof delivery + delivery.topic.size() + delivery.payload.size() +
                                 delivery.responseTopic.size() + delivery.correlation.size();
        if (waitingBytes_ + size > kMostWaiting) {
            ++news_.dropped;
            return;
        }
        waitingBytes_ += size;
        AddLocked({BrokerNews::Item::Kind::kDelivery, "", std::move(delivery)});
    }

    const BrokerOptions options_;
    const std::function<void()> wake_;
    const CSocketWait wait_;
    bool wasConnected_ = false;  // the thread's own, as the next one
    std::string refusal_;

    std::mutex lock_;  // guards what follows; a leaf
    std::condition_variable endedSignal_;
    std::deque<Task> todo_;
    std::map<int, Sent> onTheWay_;
    std::size_t bytes_ = 0;  // of both
    BrokerNews news_;
    std::size_t waitingBytes_ = 0;
    std::set<std::string> remarks_;
    bool connected_ = false;
    bool refused_ = false;  // Takes has said no since
    bool woken_ = false;
    bool inOrder_ = false;
    bool stopped_ = false;
    bool ended_ = false;
    std::jthread thread_;
};

}  // namespace

void CheckBrokerClient() {}

std::unique_ptr<IBroker> MakeBroker(const BrokerOptions& options, std::function<void()> wake) {
    return std::make_unique<CMosquittoBroker>(options, std::move(wake));
}

}  // namespace onvifctl
