/// A port of 127.0.0.1 that leaves attempts to connect unanswered, as a device without power does.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_DROPPINGPORT_H
#define ONVIF_CLIENT_TESTS_SUPPORT_DROPPINGPORT_H

#include <list>

#include "support/PeerSocket.h"

namespace client_test {

/// Its queue of connections is full, so that Linux drops further ones, also those of Wine's
/// programs. (Windows itself would refuse them.)
class CDroppingPort {
 public:
    /// @param port  0: the system chooses.
    explicit CDroppingPort(std::uint16_t port = 0)
        : drops_(listener_.Bind(port) && listener_.Listen(0)) {
        listener_.BePatientForAMinute();  // also with what is accepted
        while (drops_ && fillers_.emplace_back().ConnectsSoon(Port())) {
        }
        if (drops_) {
            fillers_.pop_back();
        }
    }
    ~CDroppingPort() { Answer(); }
    CDroppingPort(const CDroppingPort&) = delete;
    CDroppingPort& operator=(const CDroppingPort&) = delete;

    bool Drops() const { return drops_; }
    std::uint16_t Port() const { return listener_.Port(); }

    /// From now on the next attempt comes about.
    void Answer() {
        for (; !fillers_.empty(); fillers_.pop_front()) {
            listener_.Accept();
        }
    }
    /// Waits for the next connection, not for ever.
    CPeerSocket Accept() const { return listener_.Accept(); }

 private:
    const CPeerSocket listener_;
    const bool drops_;
    std::list<CPeerSocket> fillers_;
};

}  // namespace client_test

#endif
