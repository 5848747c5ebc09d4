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

std::uint32_t CEventParse::OnData(std::uint32_t, const char* data, std::uint32_t length,
                                  std::uint32_t* wanted) {
    if (wanted != nullptr) {
        *wanted = 0;
    }
    if (!sink_.Pulls()) {
        return length;
    }
    if (data == nullptr || length == 0) {
        LogAssert(loglabel::kEventParse, "a block of a reply is empty");
    } else if (!handled_ && Accumulate({data, length})) {
        handled_ = true;
        HandleReply();
    }
    return length;
}

void CEventParse::Reset() {
    std::memset(buffer_.get(), 0, kCapacity);
    received_ = 0;
    frame_ = {};
    handled_ = false;
}

bool CEventParse::Accumulate(std::string_view block) {
    if (block.size() > kCapacity - received_) {
        Reset();
        return false;
    }
    std::memcpy(buffer_.get() + received_, block.data(), block.size());
    received_ += block.size();
    const MessageState state = CutMessage({buffer_.get(), received_}, frame_);
    if (state == MessageState::kImpossible || (frame_.headerSize > 0 && !frame_.announced)) {
        Reset();
        return false;
    }
    return state == MessageState::kComplete;
}

void CEventParse::HandleReply() {
    std::string result;
    {
        const CSessionReference reference(sessions_, loginId_);
        if (reference.Session() != nullptr) {
            // What came behind the reply in its last block is none of it.
            const std::size_t size = frame_.headerSize + frame_.bodySize;
            result = reference.Session()->ReadPullReply({buffer_.get(), size});
        }
    }
    sink_.OnPullAnswer(ReadPull(result));
}

}  // namespace onvif_client
