#include "common/HttpReplyFraming.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "common/AsciiText.h"
#include "common/HttpHead.h"

namespace onvif_client {

namespace {

constexpr std::string_view kVersionBegin = "HTTP/";
constexpr std::size_t kLongestVersion = 16;
constexpr std::size_t kLongestSizeLine = 256;

std::string_view TakeFront(std::string_view& bytes, std::size_t size) {
    const std::string_view taken = bytes.substr(0, size);
    bytes.remove_prefix(taken.size());
    return taken;
}

bool EndsWithChunked(std::string_view codings) {
    constexpr std::string_view kChunked = "chunked";
    codings = Trim(codings);
    return codings.size() >= kChunked.size() &&
           SameLetters(codings.substr(codings.size() - kChunked.size()), kChunked);
}

/// The hexadecimal number at the front; only an extension may follow it.
std::optional<std::size_t> ChunkSize(std::string_view line) {
    std::size_t size = 0;
    const char* end = line.data() + line.size();
    const auto [parsed, error] = std::from_chars(line.data(), end, size, 16);
    const std::string_view rest = Trim(line.substr(static_cast<std::size_t>(parsed - line.data())));
    return error == std::errc() && (rest.empty() || rest.starts_with(';')) ? std::optional(size)
                                                                           : std::nullopt;
}

}  // namespace

ReplyState CHttpReplyFraming::Add(std::string_view& bytes, std::string& reply) {
    while (!bytes.empty() && stage_ != Stage::kComplete && stage_ != Stage::kBroken) {
        switch (stage_) {
            case Stage::kStatusLine:
                TakeStatusLine(bytes, reply);
                break;
            case Stage::kInterimHead:
            case Stage::kHead:
                TakeHead(bytes, reply);
                break;
            case Stage::kSizeLine:
                TakeSizeLine(bytes, reply);
                break;
            default:
                TakeBody(bytes, reply);
        }
    }
    return State();
}

ReplyState CHttpReplyFraming::State() const {
    switch (stage_) {
        case Stage::kUntilEnd:
            return ReplyState::kUntilEnd;
        case Stage::kUnframed:
            return ReplyState::kUnframed;
        case Stage::kComplete:
            return ReplyState::kComplete;
        case Stage::kBroken:
            return ReplyState::kBroken;
        default:
            return ReplyState::kGoesOn;
    }
}

void CHttpReplyFraming::TakeStatusLine(std::string_view& bytes, std::string& reply) {
    text_ += TakeFront(bytes, 1);
    const std::string_view begin = std::string_view(text_).substr(0, kVersionBegin.size());
    const std::size_t blank = text_.find(' ');
    if (!kVersionBegin.starts_with(begin) || text_.size() > kLongestVersion) {
        stage_ = Stage::kUnframed;
        reply += std::exchange(text_, {});
    } else if (blank != std::string::npos && blank + 1 < text_.size()) {
        const bool interim = text_.back() == '1';
        stage_ = interim ? Stage::kInterimHead : Stage::kHead;
        reply += interim ? "" : text_;
    }
}

void CHttpReplyFraming::TakeHead(std::string_view& bytes, std::string& reply) {
    const bool interim = stage_ == Stage::kInterimHead;
    const std::size_t before = text_.size();
    text_ += bytes;
    const std::size_t size = HeadSize(text_, searched_);
    const std::string_view taken = TakeFront(bytes, (size == 0 ? text_.size() : size) - before);
    reply += interim ? "" : taken;
    if (size == 0) {
        if (text_.size() > kLongestHead) {
            stage_ = Stage::kUnframed;
            text_ = std::string();
        }
        return;
    }
    text_.resize(size);
    stage_ = Stage::kStatusLine;
    if (!interim) {
        BeginBody();
    }
    text_ = std::string();
    searched_ = 0;
}

void CHttpReplyFraming::BeginBody() {
    const std::string_view head = text_;
    const std::string_view status = StatusCode(head.substr(0, head.find(kHeadLineEnd)));
    const auto codings = FieldValue(head, "Transfer-Encoding");
    const auto length = FieldValue(head, "Content-Length");
    const auto size = length ? StrictNumber(*length) : 0;
    if (status == "204" || status == "304") {
        stage_ = Stage::kComplete;
    } else if (codings && EndsWithChunked(*codings)) {
        chunked_ = true;
        stage_ = Stage::kSizeLine;
    } else if (!length || !size) {
        stage_ = length ? Stage::kUnframed : Stage::kUntilEnd;
    } else {
        remaining_ = *size;
        stage_ = remaining_ == 0 ? Stage::kComplete : Stage::kCounted;
    }
}

void CHttpReplyFraming::TakeSizeLine(std::string_view& bytes, std::string& reply) {
    const std::size_t lineFeed = bytes.find('\n');
    const std::size_t size = lineFeed == std::string_view::npos ? bytes.size() : lineFeed + 1;
    text_ += TakeFront(bytes, std::min(size, kLongestSizeLine + 1 - text_.size()));
    if (text_.ends_with('\n')) {
        EndSizeLine(reply);
    } else if (text_.size() > kLongestSizeLine || text_.starts_with('<')) {
        Break(reply);
    }
}

void CHttpReplyFraming::EndSizeLine(std::string& reply) {
    std::string_view line = text_;
    line = line.substr(0, line.find_last_not_of("\r\n") + 1);
    if (line.empty() && std::exchange(behindChunk_, false)) {
        text_.clear();
        return;
    }
    const auto size = ChunkSize(line);
    if (!size) {
        Break(reply);
        return;
    }
    remaining_ = *size;
    chunkSeen_ = behindChunk_ = true;
    stage_ = remaining_ == 0 ? Stage::kComplete : Stage::kChunk;
    text_.clear();
}

void CHttpReplyFraming::Break(std::string& reply) {
    stage_ = chunkSeen_ ? Stage::kBroken : Stage::kUnframed;
    reply += chunkSeen_ ? "" : text_;
    text_ = std::string();
}

void CHttpReplyFraming::TakeBody(std::string_view& bytes, std::string& reply) {
    if (stage_ == Stage::kUntilEnd || stage_ == Stage::kUnframed) {
        reply += TakeFront(bytes, bytes.size());
        return;
    }
    const std::string_view taken = TakeFront(bytes, remaining_);
    reply += taken;
    remaining_ -= taken.size();
    if (remaining_ == 0) {
        stage_ = chunked_ ? Stage::kSizeLine : Stage::kComplete;
    }
}

}  // namespace onvif_client
