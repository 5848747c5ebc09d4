#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Corekit.h"
#include "platform/Environment.h"
#include "platform/LineOutput.h"
#include "platform/LogFile.h"
#include "platform/LogLines.h"
#include "platform/OrNothing.h"
#include "platform/PerProcess.h"
#include "platform/ShownText.h"

namespace onvif_client {

namespace {

spdlog::level::level_enum LevelFromEnvironment() {
    const std::string level = EnvironmentText("ONVIF_CLIENT_LOG", "info");
    if (level == "off") {
        return spdlog::level::off;
    }
    return level == "error" ? spdlog::level::err : spdlog::level::info;
}

std::unique_ptr<CLogFile> FileFromEnvironment() {
    const std::string path = EnvironmentText("ONVIF_CLIENT_LOG_FILE", "");
    auto file = path.empty() ? nullptr : std::make_unique<CLogFile>(path);
    return file != nullptr && file->IsOpen() ? std::move(file) : nullptr;
}

/// Standard error or the log file. The base's lock, a leaf, is held in the functions below.
class CLogSink final : public spdlog::sinks::base_sink<std::mutex> {
 protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        std::string line = Line(message);
        const SystemHandle handle =
            file_ == nullptr ? StandardError() : file_->HandleFor(line.size());
        output_.Put(handle, std::move(line));
    }
    void flush_() override {}  // nothing is kept back

 private:
    std::string Line(const spdlog::details::log_msg& message) {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        return {line.data(), line.size()};
    }

    const std::unique_ptr<CLogFile> file_ = FileFromEnvironment();  // null: standard error
    CLineOutput output_{[this](unsigned long long count) {
        const std::string text =
            "Corekit lines that could not be written at once: " + std::to_string(count);
        return Line({"onvif_client", spdlog::level::err, text});
    }};
};

/// Whether old texts go out as the bytes that they once were: where the environment says so, and on
/// a console that shows these bytes as characters.
bool AsInOldLogsFromEnvironment() {
    const std::string charset = EnvironmentText("ONVIF_CLIENT_LOG_CHARSET", "");
    return charset == "raw" || (charset.empty() && ShowsGbk(StandardError()) &&
                                EnvironmentText("ONVIF_CLIENT_LOG_FILE", "").empty());
}

/// The logger as the environment wants it.
class CLogger final : public spdlog::logger {
 public:
    CLogger() : spdlog::logger("onvif_client", std::make_shared<CLogSink>()) {
        set_level(LevelFromEnvironment());
        set_error_handler([](const std::string&) {});  // the library's own writes and waits
        set_pattern("%Y-%m-%d %H:%M:%S.%e %l %v");
    }

    bool AsInOldLogs() const { return asInOldLogs_; }

 private:
    const bool asInOldLogs_ = AsInOldLogsFromEnvironment();
};

CLogger& Logger() {
    static constinit CPerProcess<CLogger> logger;
    return logger.Get();
}

std::string_view Text(const char* text) {
    return text == nullptr ? "" : text;
}

/// A line for the log: "source:number text (device)". @p text is written as it is.
void Write(spdlog::level::level_enum level, std::string_view text, const char* source, int line,
           const char* device) {
    std::string whole(Text(source));
    if (line > 0) {
        whole += ":" + std::to_string(line);
    }
    whole += " ";
    whole += text;
    if (device != nullptr) {
        whole += " (" + ShownText(device) + ")";
    }
    Logger().log(level, spdlog::string_view_t(whole));
}

/// A text from anywhere.
void WriteText(spdlog::level::level_enum level, std::string_view text, const char* source, int line,
               const char* device) {
    const std::size_t end = text.find_last_not_of("\r\n") + 1;
    Write(level, ShownText(text.substr(0, end)), source, line, device);
}

void WriteText(spdlog::level::level_enum level, const CorekitText& text, const char* source,
               int line) {
    Write(level, Logger().AsInOldLogs() ? text.gbk : text.utf8, source, line, nullptr);
}

/// Without memory for a log line the program goes on without it.
template <typename Output>
void IfThereIsMemory(const Output& output) {
    OrNothing([&output] {
        output();
        return true;
    });
}

}  // namespace

void WriteLogLine(std::string_view text) {
    Logger().log(spdlog::level::info, spdlog::string_view_t(text.data(), text.size()));
}

void COREKIT_NormalOutput(const char* text, const char* source, int line, const char* device) {
    IfThereIsMemory([&] { WriteText(spdlog::level::info, Text(text), source, line, device); });
}

void COREKIT_NormalOutput(const CorekitText& text, const char* source, int line) {
    IfThereIsMemory([&] { WriteText(spdlog::level::info, text, source, line); });
}

void COREKIT_AbnormalOutput(const char* kind, const char* source, int line, const char* device) {
    IfThereIsMemory([&] { WriteText(spdlog::level::err, Text(kind), source, line, device); });
}

void COREKIT_AbnormalOutput(const CorekitText& kind, const char* source, int line) {
    IfThereIsMemory([&] { WriteText(spdlog::level::err, kind, source, line); });
}

void COREKIT_AbnormalOutput(const char* kind, const char* source, const char* what,
                            const char* device) {
    IfThereIsMemory([&] {
        const std::string text = std::string(Text(kind)) + ": " + std::string(Text(what));
        WriteText(spdlog::level::err, text, source, 0, device);
    });
}

}  // namespace onvif_client
