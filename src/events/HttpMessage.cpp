#include "events/HttpMessage.h"

#include "common/HttpHead.h"

namespace onvif_client {

MessageState CutMessage(std::string_view buffer, MessageFrame& frame, std::size_t largest) {
    if (frame.headerSize == 0) {
        const std::size_t headerSize = HeadSize(buffer, frame.searched);
        if (headerSize == 0) {
            return buffer.size() < largest ? MessageState::kIncomplete : MessageState::kImpossible;
        }
        const auto announced = FieldValue(buffer.substr(0, headerSize), "Content-Length");
        const auto bodySize = announced ? StrictNumber(*announced) : 0;
        if (!bodySize || headerSize > largest || *bodySize > largest - headerSize) {
            return MessageState::kImpossible;
        }
        frame.headerSize = headerSize;
        frame.bodySize = *bodySize;
        frame.announced = announced.has_value();
    }
    return buffer.size() - frame.headerSize >= frame.bodySize ? MessageState::kComplete
                                                              : MessageState::kIncomplete;
}

}  // namespace onvif_client
