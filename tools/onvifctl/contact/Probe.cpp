#include "contact/Probe.h"

#include <algorithm>
#include <string_view>

namespace onvifctl {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostBytes = 65536;
constexpr milliseconds kPatienceForGreeting{200};
constexpr milliseconds kPatienceForTls{1500};
constexpr milliseconds kPatienceForEnd{200};

/// What a server of TLS answers, be it by an alert: a ClientHello of TLS 1.2 with some ciphers.
constexpr std::string_view kClientHello(
    "\x16\x03\x01\x00\x37\x01\x00\x00\x33\x03\x03"
    "onvifctl looks whether it is TLS"
    "\x00\x00\x0C\xC0\x2F\xC0\x30\x00\x9C\x00\x2F\x00\x35\x13\x01\x01\x00",
    60);

bool IsTlsRecord(std::string_view bytes) {
    return bytes.size() >= 2 && (bytes[0] == '\x15' || bytes[0] == '\x16') && bytes[1] == '\x03';
}

/// How servers of HTTPS put it when plain HTTP comes.
bool SpeaksOfHttps(const HttpReply& reply) {
    return reply.status == 400 && (reply.body.find("HTTPS port") != std::string::npos ||
                                   reply.body.find("HTTPS server") != std::string::npos);
}

class CLook {
 public:
    CLook(std::string ip, unsigned short port, const std::function<bool()>& goesOn)
        : ip_(std::move(ip)), port_(port), goesOn_(goesOn) {}

    FirstContact Run() {
        AskForClock();
        const bool mayBeTls = contact_.reply.status == 0 && contact_.bytes.empty();
        if (contact_.reach == Reach::kConnected && mayBeTls) {
            CTcpConnection connection(ip_, port_);
            std::string answer;
            if (Asks(connection, kClientHello)) {
                Read(connection, answer, kPatienceForTls, IsTlsRecord);
            }
            contact_.isTls = IsTlsRecord(answer);
        }
        if (KindOf(contact_.reply) == BodyKind::kEnvelope && contact_.clock) {
            AskWithoutCredentials();
        }
        return contact_;
    }

 private:
    Reach ReachOf(CTcpConnection& connection) const {
        const auto end = Clock::now() + kContactPatience;
        Reach reach = Reach::kPending;
        while (reach == Reach::kPending && Clock::now() < end && goesOn_()) {
            reach = connection.AwaitConnection(kSlice);
        }
        return reach;
    }

    bool Asks(CTcpConnection& connection, std::string_view request) const {
        return ReachOf(connection) == Reach::kConnected && connection.Send(request);
    }

    std::string Request(const std::string& operation) const {
        const std::string body =
            R"(<?xml version="1.0" encoding="UTF-8"?>)"
            R"(<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope"><s:Body><)" +
            operation +
            R"( xmlns="http://www.onvif.org/ver10/device/wsdl"/></s:Body></s:Envelope>)";
        return "POST /onvif/device_service HTTP/1.1\r\nHost: " + ip_ + ":" + std::to_string(port_) +
               "\r\nContent-Type: application/soap+xml; charset=utf-8\r\nContent-Length: " +
               std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
    }

    /// Until @p isEnough, the connection ends or @p patience is over.
    template <typename Enough>
    Heard Read(const CTcpConnection& connection, std::string& bytes, milliseconds patience,
               Enough isEnough) const {
        const auto end = Clock::now() + patience;
        Heard heard = Heard::kNothing;
        while (heard != Heard::kEnd && !isEnough(bytes) && bytes.size() < kMostBytes &&
               Clock::now() < end && goesOn_()) {
            heard = connection.Read(bytes, std::min(kSlice, patience));
        }
        return heard;
    }

    void AskForClock() {
        CTcpConnection connection(ip_, port_);
        auto begin = Clock::now();
        const auto time = [&begin] {
            return std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
        };
        contact_.reach = ReachOf(connection);
        contact_.connecting = time();
        contact_.reachError = contact_.reach == Reach::kFailed ? connection.Error() : "";
        if (contact_.reach != Reach::kConnected) {
            return;
        }
        std::string bytes;
        Heard heard = Read(connection, bytes, kPatienceForGreeting,
                           [](const std::string& text) { return !text.empty(); });
        contact_.speaksFirst = !bytes.empty();
        begin = Clock::now();
        if (heard == Heard::kNothing && connection.Send(Request("GetSystemDateAndTime"))) {
            heard = Read(connection, bytes, kContactPatience,
                         [](const std::string& text) { return ParseReply(text).isWhole; });
        }
        contact_.asking = time();
        contact_.hangsUp = bytes.empty() && heard == Heard::kEnd;
        contact_.reply = ParseReply(bytes);
        if (contact_.reply.status == 0) {
            contact_.isTls = IsTlsRecord(bytes);
            contact_.bytes = bytes.substr(0, 60);
        }
        contact_.isTls = contact_.isTls || SpeaksOfHttps(contact_.reply);
        if (const auto clock = ClockIn(contact_.reply.body)) {
            // It was read midway and shows no parts of a second.
            contact_.clock = std::chrono::round<std::chrono::seconds>(
                *clock + milliseconds(500) - std::chrono::system_clock::now() +
                contact_.asking / 2);
        }
        NoteWhetherOpen(connection, contact_.reply, heard);
    }

    void AskWithoutCredentials() {
        CTcpConnection connection(ip_, port_);
        std::string bytes;
        if (!Asks(connection, Request("GetDeviceInformation"))) {
            return;
        }
        const Heard heard = Read(connection, bytes, kContactPatience,
                                 [](const std::string& text) { return ParseReply(text).isWhole; });
        contact_.toUnsigned = ParseReply(bytes);
        NoteWhetherOpen(connection, contact_.toUnsigned, heard);
    }

    void NoteWhetherOpen(const CTcpConnection& connection, const HttpReply& reply, Heard heard) {
        std::string more;
        if (reply.status != 0 && KindOf(reply) != BodyKind::kEnvelope && heard != Heard::kEnd) {
            contact_.staysOpen |= Read(connection, more, kPatienceForEnd,
                                       [](const std::string&) { return false; }) != Heard::kEnd;
        }
    }

    static constexpr milliseconds kSlice{100};

    const std::string ip_;
    const unsigned short port_;
    const std::function<bool()>& goesOn_;
    FirstContact contact_;
};

}  // namespace

FirstContact LookAt(const std::string& ip, unsigned short port,
                    const std::function<bool()>& goesOn) {
    return CLook(ip, port, goesOn).Run();
}

}  // namespace onvifctl
