#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Corekit.h"
#include "platform/Environment.h"
#include "platform/Immortal.h"

namespace onvif_client {

namespace {

constexpr std::size_t kLargestFile = std::size_t{5} << 20U;  // 5 MiB
constexpr std::size_t kOldFiles = 3;

spdlog::level::level_enum LevelFromEnvironment() {
    const std::string level = EnvironmentText("ONVIF_CLIENT_LOG", "info");
    if (level == "off") {
        return spdlog::level::off;
    }
    return level == "error" ? spdlog::level::err : spdlog::level::info;
}

spdlog::sink_ptr MakeSink() {
    if (const std::string file = EnvironmentText("ONVIF_CLIENT_LOG_FILE", ""); !file.empty()) {
        try {
            return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(file, kLargestFile,
                                                                          kOldFiles);
        } catch (const spdlog::spdlog_ex&) {
            // Standard error serves instead.
        }
    }
    return std::make_shared<spdlog::sinks::stderr_sink_mt>();
}

/// The logger as the environment wants it.
class CLogger final : public spdlog::logger {
 public:
    CLogger() : spdlog::logger("onvif_client", MakeSink()) {
        set_level(LevelFromEnvironment());
        flush_on(spdlog::level::err);
        set_pattern("%Y-%m-%d %H:%M:%S.%e %l %v");
    }
};

std::string_view Text(const char* text) {
    return text == nullptr ? "" : text;
}

template <typename... Arguments>
void Write(spdlog::level::level_enum level, spdlog::format_string_t<Arguments...> format,
           Arguments&&... arguments) noexcept {
    try {
        static CLogger& logger = MakeImmortal<CLogger>();
        logger.log(level, format, std::forward<Arguments>(arguments)...);
    } catch (...) {
        // Without memory for a log line the program goes on without it.
    }
}

void WriteText(spdlog::level::level_enum level, const char* text, const char* source, int line) {
    std::string_view shown = Text(text);
    while (shown.ends_with('\n') || shown.ends_with('\r')) {
        shown.remove_suffix(1);
    }
    if (line > 0) {
        Write(level, "{}:{} {}", Text(source), line, shown);
    } else {
        Write(level, "{} {}", Text(source), shown);
    }
}

}  // namespace

void COREKIT_NormalOutput(const char* text, const char* source, int line) {
    WriteText(spdlog::level::info, text, source, line);
}

void COREKIT_AbnormalOutput(const char* kind, const char* source, int line) {
    WriteText(spdlog::level::err, kind, source, line);
}

void COREKIT_AbnormalOutput(const char* kind, const char* source, const char* what) {
    Write(spdlog::level::err, "{} {}: {}", Text(source), Text(kind), Text(what));
}

}  // namespace onvif_client
