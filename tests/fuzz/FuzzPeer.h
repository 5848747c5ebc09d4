/// @file
/// The device of the fuzz targets: a target chooses what it answers.
#ifndef ONVIF_CLIENT_TESTS_FUZZ_FUZZPEER_H
#define ONVIF_CLIENT_TESTS_FUZZ_FUZZPEER_H

#include <string>
#include <utility>
#include <vector>

#include "support/VirtualNetwork.h"

namespace onvif_client::fuzz {

/// At 127.0.0.1. Each request gets the next reply, in pieces, and the end of the connection.
class CFuzzPeer final : public client_test::IVirtualDevice {
 public:
    static CFuzzPeer& Instance() {
        static CFuzzPeer peer;
        return peer;
    }

    void Answer(std::vector<std::string> replies, std::size_t pieceSize) {
        replies_ = std::move(replies);
        pieceSize_ = pieceSize;
        sent_.clear();
        next_ = 0;
    }
    /// A connection of the device's that brings the next reply.
    std::uint32_t Accept() {
        const auto lock = client_test::network::Hold();
        const std::uint32_t connection = client_test::network::Accept(*this);
        Give(connection);
        return connection;
    }
    /// What came from the library since Answer.
    const std::string& Sent() const { return sent_; }

    void OnRequest(std::uint32_t connection, std::string_view request) override {
        sent_ += request;
        Give(connection);
        client_test::network::Close(connection);
    }

 private:
    CFuzzPeer() {
        client_test::network::Start(1);
        client_test::network::Place("127.0.0.1", *this);
    }
    void Give(std::uint32_t connection) {
        if (next_ < replies_.size()) {
            client_test::network::Give(
                connection, replies_[next_++], [] {}, pieceSize_);
        }
    }

    std::vector<std::string> replies_;
    std::size_t pieceSize_ = 1;
    std::size_t next_ = 0;
    std::string sent_;
};

}  // namespace onvif_client::fuzz

#endif
