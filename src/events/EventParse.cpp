#include "events/EventParse.h"

#include <cstring>
#include <string>

#include "common/LogText.h"

namespace onvif_client {

CEventParse::CEventParse(IPullSink& sink, ISessionSource& sessions, std::uint32_t loginId)
    : sink_(sink),
      sessions_(sessions),
      loginId_(loginId),
      buffer_(std::make_unique<char[]>(kCapacity)) {}

std::uint32_t CEventParse::OnData(std::uint32_t handle, const char* data, std::uint32_t length,
                                  std::uint32_t* wanted) {
    if (wanted != nullptr) {
        *wanted = 0;
    }
    if (!sink_.Pulls()) {
        return length;
    }
    const bool isBehindTheReply = handled_;
    if (data == nullptr || length == 0) {
        LogAssert(loglabel::kEventParse, "a block of a reply is empty");
    } else if (!isBehindTheReply && Accumulate({data, length})) {
        handled_ = true;
        HandleReply();
    }
    if (isBehindTheReply || !GoesOn()) {
        WIRELINK_Stop(handle);
    }
    return length;
}

void CEventParse::Reset() {
    Forget();
    readInAll_ = 0;
    impossible_ = false;
    handled_ = false;
}

void CEventParse::Forget() {
    std::memset(buffer_.get(), 0, kCapacity);
    received_ = 0;
    frame_ = {};
}

bool CEventParse::GoesOn() const {
    return !impossible_ && readInAll_ <= kLargestMessage;
}

bool CEventParse::Accumulate(std::string_view block) {
    readInAll_ += block.size();
    if (!GoesOn()) {
        return false;
    }
    if (block.size() > kCapacity - received_) {
        Forget();
        return false;
    }
    std::memcpy(buffer_.get() + received_, block.data(), block.size());
    received_ += block.size();
    const MessageState state = CutMessage({buffer_.get(), received_}, frame_);
    impossible_ = state == MessageState::kImpossible;
    if (impossible_ || (frame_.headerSize > 0 && !frame_.announced)) {
        Forget();
        return false;
    }
    return state == MessageState::kComplete;
}

void CEventParse::HandleReply() {
    PullReply reply;
    {
        const CSessionReference reference(sessions_, loginId_);
        if (reference.Session() != nullptr) {
            // What came behind the reply in its last block is none of it.
            const std::size_t size = frame_.headerSize + frame_.bodySize;
            reply = reference.Session()->ReadPullReply({buffer_.get(), size});
        }
    }
    sink_.OnPullAnswer(ReadPull(reply));
}

}  // namespace onvif_client
