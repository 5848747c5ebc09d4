/// A TCP server on 127.0.0.1 that does to every connection what a test wants.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_SCRIPTEDPEER_H
#define ONVIF_CLIENT_TESTS_SUPPORT_SCRIPTEDPEER_H

#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace client_test {

/// One accepted connection.
class CPeerConnection {
 public:
    explicit CPeerConnection(int descriptor) : descriptor_(descriptor) {}

    /// Reads until at least @p length bytes are there or the other side closes.
    std::string Read(std::size_t length) const;
    /// False once the connection is broken.
    bool Send(std::string_view bytes) const;
    /// Waits until the other side closes or the peer ends.
    void WaitForClose() const;

 private:
    int descriptor_;
};

class CScriptedPeer {
 public:
    using Script = std::function<void(CPeerConnection&)>;

    /// Runs the script for every connection, each on a thread of its own; then closes it.
    explicit CScriptedPeer(Script script);
    /// Breaks every connection off and waits for the scripts.
    ~CScriptedPeer();
    CScriptedPeer(const CScriptedPeer&) = delete;
    CScriptedPeer& operator=(const CScriptedPeer&) = delete;

    std::uint16_t Port() const { return port_; }

 private:
    void Accept();

    const Script script_;
    int listener_;
    std::uint16_t port_ = 0;
    std::mutex lock_;  // guards the members below
    bool ended_ = false;
    std::list<int> open_;
    std::list<std::jthread> scripts_;
    std::jthread accepting_;
};

}  // namespace client_test

#endif
