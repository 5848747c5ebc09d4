#include "client/SnapshotDownload.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "common/HttpHead.h"
#include "common/LogText.h"
#include "platform/Clock.h"
#include "platform/Wirelink.h"

namespace onvif_client {

namespace {

constexpr int kAttempts = 2;
constexpr int kConnectPolls = 15;
constexpr std::uint32_t kConnectPollMs = 50;
constexpr std::uint32_t kReceivePollMs = 250;
constexpr std::uint32_t kAttemptMs = 5000;
constexpr std::size_t kChunk = 8191;
constexpr std::uint64_t kLimitWithoutLength = 1048576;
constexpr std::uint64_t kLargestPicture = 67108864;

}  // namespace

CSnapshotDownload::CSnapshotDownload(const std::string& ip, const Credentials& credentials,
                                     std::string_view address, CExtensions extensions,
                                     std::atomic<bool>& digestAsked)
    : ip_(ip),
      credentials_(credentials),
      address_(ParseSnapshotAddress(address)),
      digestKinds_(extensions.Has(Extension::kHttpDigest) ? DigestKinds::kAll : DigestKinds::kMd5),
      noBasic_(extensions.Has(Extension::kNoBasic)),
      digestAsked_(digestAsked),
      request_(BuildSnapshotRequest(address_, credentials, {})),
      framed_(extensions.Has(Extension::kHttpFraming)) {}

void CSnapshotDownload::Run(ResponseBuffer& picture) {
    for (int attempt = 0; attempt < kAttempts && !final_; ++attempt) {
        Attempt(picture);
    }
}

void CSnapshotDownload::Attempt(ResponseBuffer& picture) {
    const CWirelinkHandle connection(WIRELINK_AddConnect(0, ip_.c_str(), address_.port));
    if (!connection) {
        LogAssert(logpoint::kPictureNotConnected, DeviceName(ip_, address_.port));
    }
    const auto trace = CExchangeTrace::Begin(ip_, address_.port, credentials_, request_);
    AwaitConnected(connection.Get(), kConnectPolls, kConnectPollMs);
    Received received;
    if (SendRequest(connection, request_, received.end)) {
        Receive(connection, received, picture);
    }
    if (trace != nullptr) {
        trace->End(OutcomeOf(received, picture));
    }
}

CExchangeTrace::Outcome CSnapshotDownload::OutcomeOf(const Received& received,
                                                     const ResponseBuffer& picture) const {
    const std::string_view text = received.head.text;
    std::size_t searched = 0;
    const std::size_t size = HeadSize(text, searched);
    if (size == 0) {
        return {received.end, text};
    }
    const bool begun = final_ && picture.data != nullptr;
    return {received.end, text.substr(0, size),
            begun ? static_cast<std::uint64_t>(picture.size) : text.size() - size};
}

bool CSnapshotDownload::SendRequest(const CWirelinkHandle& connection, std::string_view request,
                                    ExchangeEnd& end) {
    const std::uint32_t began = TickCount();
    std::size_t sent = 0;
    while (sent < request.size()) {
        bool error = false;
        sent += static_cast<std::size_t>(
            WIRELINK_Send_Immediate(connection.Get(), request.data() + sent,
                                    static_cast<std::uint32_t>(request.size() - sent), error));
        if (error || TickCount() - began > kAttemptMs) {
            end = ExchangeEnd::kNoConnection;
            return false;
        }
    }
    return true;
}

void CSnapshotDownload::Receive(const CWirelinkHandle& connection, Received& taken,
                                ResponseBuffer& picture) {
    const std::uint32_t began = TickCount();
    CollectedHead& head = taken.head;
    if (framed_) {
        head.framing.emplace();
    }
    char chunk[kChunk];
    for (bool goesOn = true; goesOn;) {
        bool closed = false;
        const int received = WIRELINK_Recv_Immediate(connection.Get(), chunk, kChunk, &closed);
        if (received >= 1) {
            const std::string_view bytes(chunk, static_cast<std::size_t>(received));
            goesOn = Add(bytes, head, picture);
        } else if (closed || TickCount() - began > kAttemptMs) {
            taken.end = closed ? ExchangeEnd::kClosed : ExchangeEnd::kTimeout;
            goesOn = false;
        } else {
            SleepMilliseconds(kReceivePollMs);
        }
    }
}

bool CSnapshotDownload::Add(std::string_view bytes, CollectedHead& head, ResponseBuffer& picture) {
    std::string cut;
    ReplyState state = ReplyState::kGoesOn;
    if (head.framing) {
        state = head.framing->Add(bytes, cut);
        chunked_ = head.framing->Chunked();
        bytes = cut;
    }
    return (final_ ? AddToPicture(bytes, picture) : AddToHeader(bytes, head, picture)) &&
           state != ReplyState::kComplete && state != ReplyState::kBroken;
}

bool CSnapshotDownload::AddToHeader(std::string_view bytes, CollectedHead& head,
                                    ResponseBuffer& picture) {
    head.text += bytes;
    const std::size_t size = HeadSize(head.text, head.searched);
    if (size == 0) {
        return head.text.size() <= kLongestHead;
    }
    const std::string_view text = head.text;
    return ReadHeader(text.substr(0, size - kHeadEnd.size()), picture) &&
           AddToPicture(text.substr(size), picture);
}

void CSnapshotDownload::Answer(const std::vector<HttpChallenge>& challenges) {
    bool refused = false;
    for (const HttpChallenge& each : challenges) {
        const bool digest = each.scheme == AuthorizationScheme::kDigest;
        refused = !digest && (digestAsked_ || noBasic_);
        std::string request =
            refused ? std::string()
                    : BuildSnapshotRequest(address_, credentials_, each, digestKinds_);
        if (!request.empty()) {
            if (digest) {
                digestAsked_ = true;
            }
            request_ = std::move(request);
            return;
        }
    }
    final_ = true;
    LogNormal(loglabel::kHttpClient, "no picture: device %s %s", ip_.c_str(),
              !refused   ? "asks for credentials with texts that cannot be answered"
              : noBasic_ ? "asks for Basic credentials, which are switched off (no-basic)"
                         : "asks for Basic credentials after Digest");
}

bool CSnapshotDownload::ReadHeader(std::string_view header, ResponseBuffer& picture) {
    const SnapshotHeader read = ReadSnapshotHeader(header, digestKinds_);
    if (read.unauthorized) {
        // Basic beside Digest is the device's own offer; Basic alone afterwards may be another's.
        const bool basicToo = std::ranges::any_of(read.challenges, [](const HttpChallenge& each) {
            return each.scheme == AuthorizationScheme::kBasic;
        });
        if (read.asksForDigest && !basicToo) {
            digestAsked_ = true;
        }
        if (!read.challenges.empty()) {
            Answer(read.challenges);
        } else {
            // The text's host is the one that the device has named.
            LogNormalOf(DeviceName(ip_, address_.port), logpoint::kUnknownChallenge,
                        "unkown authenticate:%s. \n", address_.host.c_str());
        }
        return false;
    }
    if (read.notFound) {
        return false;
    }
    return PrepareFor(read.contentLength, picture);
}

bool CSnapshotDownload::PrepareFor(std::uint64_t contentLength, ResponseBuffer& picture) {
    limit_ = contentLength;
    if (chunked_) {
        limit_ = kLargestPicture;
    } else if (limit_ == 0) {
        LogNormal(logpoint::kNoPictureLength, " can't pare content-length from device : %s. \n",
                  ip_.c_str());
        limit_ = kLimitWithoutLength;
    }
    final_ = true;
    picture.size = 0;
    return Grow(chunked_ ? kLimitWithoutLength : limit_, picture);
}

bool CSnapshotDownload::Grow(std::uint64_t size, ResponseBuffer& picture) {
    ResponseBuffer grown;
    if (size <= kLargestPicture) {
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): without memory there is no picture
        grown.data.reset(new (std::nothrow) char[static_cast<std::size_t>(size)]);
    }
    if (grown.data == nullptr) {
        LogAssert(logpoint::kNoPictureMemory, DeviceName(ip_, address_.port));
        return false;
    }
    std::copy_n(picture.data.get(), picture.size, grown.data.get());
    picture.data = std::move(grown.data);
    room_ = size;
    return true;
}

bool CSnapshotDownload::AddToPicture(std::string_view bytes, ResponseBuffer& picture) {
    const auto size = static_cast<std::size_t>(picture.size);
    const std::size_t left = static_cast<std::size_t>(limit_) - size;
    if (bytes.size() > left) {
        LogNormal(logpoint::kPictureTooLong, "device : %s, pic data more than content-length. \n",
                  ip_.c_str());
        bytes = bytes.substr(0, left);
    }
    if (size + bytes.size() > room_ && !Grow(std::min(limit_, 2 * room_), picture)) {
        return false;
    }
    std::memcpy(picture.data.get() + size, bytes.data(), bytes.size());
    picture.size += static_cast<int>(bytes.size());
    return bytes.size() < left;
}

}  // namespace onvif_client
