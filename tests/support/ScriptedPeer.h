/// A TCP server on 127.0.0.1 that does to every connection what a test wants.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_SCRIPTEDPEER_H
#define ONVIF_CLIENT_TESTS_SUPPORT_SCRIPTEDPEER_H

#include <functional>
#include <list>
#include <mutex>
#include <thread>

#include "support/PeerSocket.h"

namespace client_test {

using CPeerConnection = CPeerSocket;  // one that was accepted

class CScriptedPeer {
 public:
    using Script = std::function<void(CPeerConnection&)>;

    /// Runs the script for every connection, each on a thread of its own; then closes it.
    explicit CScriptedPeer(Script script);
    /// Breaks every connection off and waits for the scripts.
    ~CScriptedPeer();
    CScriptedPeer(const CScriptedPeer&) = delete;
    CScriptedPeer& operator=(const CScriptedPeer&) = delete;

    std::uint16_t Port() const { return listener_.Port(); }

 private:
    void Accept();

    const Script script_;
    CPeerSocket listener_;
    std::mutex lock_;  // guards the members below
    bool ended_ = false;
    std::list<CPeerConnection> open_;
    std::list<std::jthread> scripts_;
    std::jthread accepting_;
};

}  // namespace client_test

#endif
