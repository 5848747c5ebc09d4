#include "trace/ExchangeLine.h"

#include <algorithm>

namespace onvifctl {

namespace {

/// Up to the next blank, which goes too.
std::string TakeWord(std::string_view& text) {
    const std::size_t end = std::min(text.find(' '), text.size());
    std::string word(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

std::optional<ExchangeLine> Read(std::string_view line) {
    for (int word = 0; word < 3; ++word) {  // the mark, date and time
        TakeWord(line);
    }
    ExchangeLine read;
    for (std::string* part :
         {&read.device, &read.operation, &read.path, &read.outcome, &read.milliseconds}) {
        *part = TakeWord(line);
    }
    const bool whole = TakeWord(line) == "ms";
    read.remark = line;
    return whole ? std::optional(read) : std::nullopt;
}

}  // namespace

std::optional<ExchangeLine> TakeExchange(std::string_view& trace) {
    std::optional<ExchangeLine> found;
    for (std::size_t end = trace.find('\n'); end != std::string_view::npos && !found;
         end = trace.find('\n')) {
        const std::string_view line = trace.substr(0, end);
        trace.remove_prefix(end + 1);
        found = line.starts_with("== ") ? Read(line) : std::nullopt;
    }
    return found;
}

std::string TextOf(const ExchangeLine& line) {
    return line.device + " " + line.operation + " " + line.path + " " + line.outcome + " " +
           line.milliseconds + " ms" + (line.remark.empty() ? "" : " " + line.remark);
}

}  // namespace onvifctl
