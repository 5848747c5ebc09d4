/// @file
/// The broker as the bridge sees it. Another kind of broker, or another client of it, is another
/// file that makes one of these.
#ifndef ONVIFCTL_BRIDGE_BROKER_H
#define ONVIFCTL_BRIDGE_BROKER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bridge/BrokerAddress.h"

namespace onvifctl {

struct Publication {
    std::string topic;
    std::string payload;
    bool retained = false;
    std::chrono::seconds expiry{0};  // after which the broker forgets it; 0: never
    std::string contentType;
    std::string correlation;
};

/// Who the bridge is at the broker.
struct BrokerOptions {
    BrokerAddress address;
    std::string user;
    std::string password;
    std::string authorities;  // a file with certificates; empty: the system's
    std::string certificate;  // of the bridge, with its key in another file; empty: none
    std::string key;
    std::string clientId;
    std::chrono::seconds keepAlive{20};
    Publication lastWill;
};

/// A message that the broker has delivered.
struct Delivery {
    std::string topic;
    std::string payload;    // its beginning alone when it is larger than kMostPayload
    std::size_t size = 0;   // of the whole payload
    bool retained = false;  // as it was published
    std::string responseTopic;
    std::string correlation;

    static constexpr std::size_t kMostPayload = 1024;
};

struct BrokerNews {
    /// In their order: an end of a connection comes before what belongs to the next one.
    struct Item {
        enum class Kind { kConnected, kLost, kRemark, kDelivery } kind;
        std::string text{};  // the reason, or a remark for people
        Delivery delivery{};
    };
    std::vector<Item> items;
    std::size_t dropped = 0;  // deliveries that nobody took in time
};

enum class Retained { kSend, kNever };

/// Connects, again and again, in the background. Nobody waits for the broker but its own thread:
/// what is handed over while there is no connection, or is not acknowledged when that ends, is
/// gone. For one thread.
class IBroker {
 public:
    virtual ~IBroker() = default;

    /// Whether something can be handed over: there is a connection, and not too much on its way.
    virtual bool Takes() = 0;
    virtual void Publish(Publication publication) = 0;
    /// @p retained: whether the broker is to send what it keeps. Deliveries say how they were
    /// published.
    virtual void Subscribe(const std::string& filter, Retained retained) = 0;
    virtual void Unsubscribe(const std::string& filter) = 0;

    /// Whether everything that was handed over has arrived.
    virtual bool IsIdle() = 0;
    virtual BrokerNews Take() = 0;

    /// Ends the connection: in order, or so that the broker publishes the last will.
    /// @return false when that does not happen within @p patience; the broker must live on then.
    virtual bool End(bool inOrder, std::chrono::milliseconds patience) = 0;
};

/// Throws CFailure in a build that has no client of a broker.
void CheckBrokerClient();

/// @param wake  is called, on any thread, when there are news or, after a no, Takes may say yes.
std::unique_ptr<IBroker> MakeBroker(const BrokerOptions& options, std::function<void()> wake);

}  // namespace onvifctl

#endif
