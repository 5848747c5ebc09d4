/// @file
/// HTTP replies cut out of the bytes of a connection, in whatever pieces they come (RFC 9112).
#ifndef ONVIF_CLIENT_COMMON_HTTPREPLYFRAMING_H
#define ONVIF_CLIENT_COMMON_HTTPREPLYFRAMING_H

#include <cstddef>
#include <string>
#include <string_view>

namespace onvif_client {

enum class ReplyState {
    kGoesOn,    ///< more bytes belong to it
    kUntilEnd,  ///< it states no length: it ends with the connection
    kUnframed,  ///< no HTTP reply, or one whose length is none: its bytes are passed on as they
                ///< come
    kComplete,  ///< whatever follows is none of it
    kBroken,    ///< a chunk has no proper size: nothing completes it any more
};

/// Cuts the reply at the front of a connection: interim replies (1xx) before it are passed over,
/// its head stays as it is, the frames of chunks are taken off its body. It keeps no more than a
/// head (at most 64 KiB, a longer one is unframed) and never the body. One thread at a time.
///
/// A body that is announced as chunked, but begins with no size, is unframed.
class CHttpReplyFraming {
 public:
    /// Takes what came next.
    /// @param bytes  keeps what stands behind the reply, once that is complete.
    /// @param reply  is appended to: what the bytes add to the reply.
    ReplyState Add(std::string_view& bytes, std::string& reply);

    /// As the last Add said.
    ReplyState State() const;
    /// Whether its body is chunked; known once its head is complete.
    bool Chunked() const { return chunked_; }

 private:
    enum class Stage {
        kStatusLine,  // until it is known whether the reply is an interim one
        kInterimHead,
        kHead,
        kSizeLine,  // of a chunk
        kChunk,
        kCounted,
        kUntilEnd,
        kUnframed,
        kComplete,
        kBroken,
    };

    void TakeStatusLine(std::string_view& bytes, std::string& reply);
    void TakeHead(std::string_view& bytes, std::string& reply);
    void TakeSizeLine(std::string_view& bytes, std::string& reply);
    void TakeBody(std::string_view& bytes, std::string& reply);
    void BeginBody();
    void EndSizeLine(std::string& reply);
    /// For a size line that is none.
    void Break(std::string& reply);

    Stage stage_ = Stage::kStatusLine;
    std::string text_;           // of the head or size line that is being read
    std::size_t searched_ = 0;   // of the head
    std::size_t remaining_ = 0;  // bytes of the body or chunk
    bool chunked_ = false;
    bool chunkSeen_ = false;
    bool behindChunk_ = false;  // where an empty line stands
};

}  // namespace onvif_client

#endif
