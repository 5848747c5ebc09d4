// HTTP as devices write it: replies and their heads, addresses, challenges, pictures.
#include "FuzzInput.h"
#include "FuzzPeer.h"
#include "client/SnapshotDownload.h"
#include "client/SoapExchange.h"
#include "common/HttpReplyFraming.h"
#include "events/NotifyMessage.h"

namespace {

using namespace onvif_client;
using namespace onvif_client::fuzz;

constexpr std::uint64_t kLargestPicture = 65536;

const Credentials kCredentials = {"user", "password"};

void ReadReply(std::string_view text, std::size_t) {
    std::string_view soap;
    if (ClassifyReply("127.0.0.1", 80, text, soap) == status::kSuccess) {
        Expect(text.ends_with(soap) && soap.starts_with("<?xml"));
    }
    if (ClassifyOpenly("127.0.0.1", 80, text, soap) == status::kSuccess) {
        std::string joined(soap);
        JoinEnvelopeTag(joined);
        Expect(text.ends_with(soap) && soap.starts_with('<') && joined.size() == soap.size());
    }
}

/// What framing keeps of a reply in such pieces, how it ends, and what is behind it.
std::string Frame(std::string_view text, std::size_t pieceSize) {
    CHttpReplyFraming framing;
    std::string reply;
    std::string behind;
    for (; !text.empty(); text.remove_prefix(std::min(pieceSize, text.size()))) {
        std::string_view piece = text.substr(0, pieceSize);
        framing.Add(piece, reply);
        behind += piece;
    }
    return reply + '\0' + std::to_string(static_cast<int>(framing.State())) + behind;
}

void FrameInPieces(std::string_view text, std::size_t pieceSize) {
    Expect(Frame(text, pieceSize) == Frame(text, text.size()));
}

void ReadAddress(std::string_view text, std::size_t pieceSize) {
    const std::string path = PathOfAddress(text);
    Expect(BuildPost(path, text, text).size() <= kLargestRequest);
    HttpChallenge basic;
    basic.scheme = AuthorizationScheme::kBasic;
    const std::string request =
        BuildSnapshotRequest(ParseSnapshotAddress(text), kCredentials, basic);
    Expect(request.starts_with("GET ") && request.size() <= kLargestRequest);
    AddressesAgree(text, text.substr(0, pieceSize));
}

void AnswerChallenge(std::string_view text, std::size_t) {
    for (const HttpChallenge& each : ReadSnapshotHeader(text).challenges) {
        BuildSnapshotRequest({"h", "/p"}, kCredentials, each);
    }
}

std::string Download(std::string_view reply, std::size_t pieceSize, CExtensions extensions) {
    // As often as it is asked.
    CFuzzPeer::Instance().Answer({std::string(reply), std::string(reply)}, pieceSize);
    ResponseBuffer picture;
    std::atomic<bool> digest = false;
    CSnapshotDownload("127.0.0.1", kCredentials, "http://127.0.0.1/picture", extensions, digest)
        .Run(picture);
    Expect(picture.data != nullptr || picture.size == 0);
    return {picture.data.get(), static_cast<std::size_t>(picture.size)};
}

void DownloadInPieces(std::string_view text, std::size_t pieceSize) {
    if (ReadSnapshotHeader(text).contentLength > kLargestPicture) {
        return;
    }
    for (const CExtensions each : {CExtensions{}, CExtensions{Extension::kHttpFraming}}) {
        Expect(Download(text, pieceSize, each) == Download(text, text.size(), each));
    }
}

constexpr void (*kReaders[])(std::string_view, std::size_t) = {
    ReadReply, ReadAddress, AnswerChallenge, DownloadInPieces, FrameInPieces};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [text, choice] = ReadInput(data, size);
    kReaders[choice % std::size(kReaders)](text, choice / std::size(kReaders) + 1);
    return 0;
}
