#include "events/EventParse.h"

#include <algorithm>
#include <utility>

#include "common/HttpPersistence.h"
#include "common/LogText.h"
#include "platform/KeptConnections.h"
#include "platform/OrNothing.h"

namespace onvif_client {

CEventParse::CEventParse(IPullSink& sink, ISessionSource& sessions, std::uint32_t loginId,
                         CExtensions extensions, std::string device)
    : sink_(sink),
      sessions_(sessions),
      loginId_(loginId),
      device_(std::move(device)),
      perSource_(extensions.Has(Extension::kPerSourceAlarms)),
      framed_(extensions.Has(Extension::kHttpFraming)),
      capacity_(extensions.Has(Extension::kLargeMessages) ? kExtendedCapacity : kCapacity),
      mostRead_(std::max(capacity_, kLargestMessage)) {}

std::uint32_t CEventParse::OnData(std::uint32_t handle, const char* data, std::uint32_t length,
                                  std::uint32_t* wanted) {
    if (wanted != nullptr) {
        *wanted = 0;
    }
    if (!sink_.Pulls()) {
        return length;
    }
    if (data == nullptr || length == 0) {
        LogAssert(loglabel::kEventParse, "a block of a reply is empty", device_);
    } else if (!handled_ && Accumulate({data, length})) {
        HandleReply(framed_ ? buffer_.size() : frame_.headerSize + frame_.bodySize);
    }
    if (handled_ || !GoesOn()) {
        WIRELINK_Stop(handle);
    }
    return length;
}

void CEventParse::OnEnd(std::uint32_t) {
    if (framed_ && !handled_ && sink_.Pulls() && framing_ &&
        framing_->State() == ReplyState::kUntilEnd) {
        HandleReply(buffer_.size());
    }
    if (!handled_) {
        sink_.OnPullReply(ExchangeEnd::kClosed, buffer_);
    }
    if (readInAll_ == 0) {
        sink_.OnNoReply();
    }
}

void CEventParse::Reset() {
    Forget();
    readInAll_ = 0;
    impossible_ = false;
    handled_ = false;
    whole_ = false;
    leavesOpen_ = false;
}

void CEventParse::Forget() {
    std::string().swap(buffer_);  // an assignment keeps the memory
    frame_ = {};
    framing_.reset();
}

bool CEventParse::GoesOn() const {
    return !impossible_ && readInAll_ <= mostRead_;
}

bool CEventParse::Accumulate(std::string_view block) {
    readInAll_ += block.size();
    if (!GoesOn()) {
        Forget();
        return false;
    }
    impossible_ = true;  // should there be no memory
    const bool complete =
        OrNothing([&] { return framed_ ? AddFramed(block) : AddAnnounced(block); });
    if (impossible_) {
        Forget();
    }
    return complete;
}

bool CEventParse::AddAnnounced(std::string_view block) {
    if (block.size() > capacity_ - buffer_.size()) {
        impossible_ = false;
        Forget();
        return false;
    }
    buffer_ += block;
    const MessageState state = CutMessage(buffer_, frame_, mostRead_);
    impossible_ = state == MessageState::kImpossible;
    if (frame_.headerSize > 0 && !frame_.announced) {
        Forget();
        return false;
    }
    return state == MessageState::kComplete;
}

bool CEventParse::AddFramed(std::string_view block) {
    if (!framing_) {
        framing_.emplace();
    }
    const ReplyState state = framing_->Add(block, buffer_);
    // Behind the last chunk an empty line belongs to the frame.
    whole_ = state == ReplyState::kComplete && block == (framing_->Chunked() ? "\r\n" : "");
    impossible_ = buffer_.size() > capacity_ || state == ReplyState::kBroken ||
                  state == ReplyState::kUnframed;
    return state == ReplyState::kComplete && !impossible_;
}

void CEventParse::HandleReply(std::size_t size) {
    handled_ = true;
    leavesOpen_ = whole_ && PersistsForMs(buffer_, kLongestKeptMs) > 0;
    sink_.OnPullReply(ExchangeEnd::kReplied, std::string_view(buffer_).substr(0, size));
    PullReply reply;
    {
        const CSessionReference reference(sessions_, loginId_);
        if (reference.Session() != nullptr) {
            // What came behind the reply in its last block is none of it.
            reply = reference.Session()->ReadPullReply(std::string_view(buffer_).substr(0, size));
        }
    }
    Forget();
    sink_.OnPullAnswer(ReadPull(reply, perSource_));
}

}  // namespace onvif_client
