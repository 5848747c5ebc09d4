#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Corekit.h"
#include "platform/Environment.h"
#include "platform/LineOutput.h"
#include "platform/LogLines.h"
#include "platform/Mutex.h"
#include "platform/OrNothing.h"
#include "platform/PerProcess.h"
#include "platform/ShownText.h"

namespace onvif_client {

namespace {

constexpr std::string_view kLineBreaks = "\r\n";

enum class TraceTarget { kStandardOutput, kStandardError, kLog, kNowhere };

TraceTarget TargetFromEnvironment() {
    const std::string target = EnvironmentText("ONVIF_CLIENT_TRACE", "stdout");
    if (target == "off") {
        return TraceTarget::kNowhere;
    }
    if (target == "log") {
        return TraceTarget::kLog;
    }
    return target == "stderr" ? TraceTarget::kStandardError : TraceTarget::kStandardOutput;
}

std::string DroppedNote(unsigned long long count) {
    return "onvif_client: traces that could not be written at once: " + std::to_string(count) +
           "\n";
}

class CTraces {
 public:
    static CTraces& Instance() {
        static constinit CPerProcess<CTraces> traces;
        return traces.Get();
    }

    void Begin() {
        const CLockGuard guard(lock_);
        standardOutput_ = OpenFileOf(StandardOutput());
    }

    void Write(std::string_view text) {
        if (target_ == TraceTarget::kNowhere) {
            return;
        }
        const std::size_t begin = std::min(text.find_first_not_of(kLineBreaks), text.size());
        const std::size_t end = std::max(text.find_last_not_of(kLineBreaks) + 1, begin);
        const std::string shown = ShownText(text.substr(begin, end - begin));
        if (target_ == TraceTarget::kLog) {
            WriteLogLine(shown);
            return;
        }
        std::string line(text.substr(0, begin));
        line += shown;
        line += text.substr(end);
        Put(std::move(line));
    }

 private:
    void Put(std::string line) {
        const CLockGuard guard(lock_);
        if (target_ == TraceTarget::kStandardError) {
            output_.Put(StandardError(), std::move(line));
            return;
        }
        const bool unchanged = OpenFileOf(StandardOutput()) == standardOutput_;
        if (unchanged || (standardOutput_ != OpenFileId{} && !IsSocket(StandardOutput()))) {
            output_.Put(StandardOutput(), std::move(line));
        } else {
            output_.Drop();
        }
    }

    const TraceTarget target_ = TargetFromEnvironment();
    CMutex lock_;  // leaf
    OpenFileId standardOutput_ GUARDED_BY(lock_) = OpenFileOf(StandardOutput());
    CLineOutput output_ GUARDED_BY(lock_){DroppedNote};
};

}  // namespace

void COREKIT_BeginTraces() {
    OrNothing([] {
        CTraces::Instance().Begin();
        return true;
    });
}

void COREKIT_Trace(const char* text) {
    // Without memory for a trace the program goes on without it.
    OrNothing([text] {
        CTraces::Instance().Write(text == nullptr ? "" : text);
        return true;
    });
}

}  // namespace onvif_client
