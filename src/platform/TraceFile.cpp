#include "platform/TraceFile.h"

#include <spdlog/pattern_formatter.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "platform/Environment.h"
#include "platform/LineOutput.h"
#include "platform/LogFile.h"
#include "platform/Mutex.h"
#include "platform/OrNothing.h"
#include "platform/PerProcess.h"

namespace onvif_client {

namespace {

class CTraceFile {
 public:
    static CTraceFile& Instance() {
        static constinit CPerProcess<CTraceFile> file;
        return file.Get();
    }

    CTraceFile() {
        const std::string path = EnvironmentText("ONVIF_CLIENT_TRACE_FILE", "");
        if (path.empty()) {
            return;
        }
        state_ = TraceFile::kRefused;
        auto file = std::make_unique<CLogFile>(path);
        std::error_code ignored;
        if (file->IsOpen() && std::filesystem::is_regular_file(PathOf(path), ignored)) {
            file_ = std::move(file);
            state_ = TraceFile::kWritten;
        }
    }

    TraceFile State() const { return state_; }

    void Write(std::string_view entry) {
        const CLockGuard guard(lock_);
        // A disk that was full may have taken only the front of the one before.
        const std::string whole = (torn_ ? "\n" : "") + std::string(entry);
        const std::size_t taken = WriteAtOnce(file_->HandleFor(whole.size()), whole);
        torn_ = taken < whole.size() && (taken > 0 || torn_);
    }

 private:
    TraceFile state_ = TraceFile::kNone;
    CMutex lock_;  // leaf
    std::unique_ptr<CLogFile> file_ GUARDED_BY(lock_);
    bool torn_ GUARDED_BY(lock_) = false;
};

std::string Entry(std::uint32_t millisecondsAgo, std::string_view text) {
    spdlog::pattern_formatter formatter("%Y-%m-%d %H:%M:%S.%e %v", spdlog::pattern_time_type::local,
                                        "");
    const spdlog::details::log_msg message(
        spdlog::log_clock::now() - std::chrono::milliseconds(millisecondsAgo), {}, "",
        spdlog::level::info, spdlog::string_view_t(text.data(), text.size()));
    spdlog::memory_buf_t formatted;
    formatter.format(message, formatted);
    std::string entry(kEntryMark);
    return entry.append(formatted.data(), formatted.size());
}

}  // namespace

TraceFile StateOfTraceFile() {
    return OrNothing([] { return CTraceFile::Instance().State(); });
}

void WriteTraceEntry(std::uint32_t millisecondsAgo, std::string_view text) {
    OrNothing([&] {
        CTraceFile::Instance().Write(Entry(millisecondsAgo, text));
        return true;
    });
}

}  // namespace onvif_client
