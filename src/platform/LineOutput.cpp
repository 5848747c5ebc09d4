#include "platform/LineOutput.h"

namespace onvif_client {

void CLineOutput::Put(SystemHandle handle, std::string line) {
    if (line.size() > kLongestLine) {
        std::size_t end = kLongestLine - 1;
        while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0U) == 0x80U) {
            --end;  // the next character begins before
        }
        line.resize(end);
        line += '\n';
    }
    if (dropped_ > 0) {
        if (!Write(handle, (torn_ ? "\n" : "") + note_(dropped_))) {
            ++dropped_;
            return;
        }
        dropped_ = 0;
    }
    if (!Write(handle, line)) {
        ++dropped_;
    }
}

bool CLineOutput::Write(SystemHandle handle, const std::string& line) {
    const std::size_t taken = WriteAtOnce(handle, line);
    if (taken > 0) {
        torn_ = taken < line.size();
    }
    return taken == line.size();
}

}  // namespace onvif_client
