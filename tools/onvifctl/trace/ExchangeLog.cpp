#include "trace/ExchangeLog.h"

#include <chrono>
#include <condition_variable>

#include "CommandLine.h"
#include "ExitCode.h"
#include "system/Environment.h"

namespace onvifctl {

namespace {

constexpr const char* kVariable = "ONVIF_CLIENT_TRACE_FILE";

}  // namespace

CExchangeLog& CExchangeLog::Instance() {
    static CExchangeLog log;
    return log;
}

void CExchangeLog::Prepare(const std::string& file) {
    asked_ = file;
    file_ = file.empty() ? Variable(kVariable) : file;
    if (file_.empty()) {
        scratch_.emplace();
        file_ = scratch_->Path();
    }
    SetVariable(kVariable, file_);
    start_ = Now();
    shown_ = start_;
}

void CExchangeLog::Begin(bool shows) {
    if (!asked_.empty() && !IsWritableFile(asked_)) {
        throw CFailure(ExitCode::kNoOutput,
                       "cannot write '" + asked_ + "', or it is no regular file");
    }
    if (shows) {
        shows_ = true;
        showing_ = std::jthread([this](const std::stop_token& end) { ShowNowAndThen(end); });
    }
}

void CExchangeLog::End() {
    showing_ = {};
    Show();
    shows_ = false;
}

std::uint64_t CExchangeLog::Now() const {
    return SizeOfFile(file_).value_or(0);
}

std::optional<std::vector<ExchangeLine>> CExchangeLog::Since(std::uint64_t then,
                                                             const std::string& device) const {
    const auto trace = ReadOn(file_, then);
    if (!trace || Now() == start_) {  // every session has begun with exchanges
        return std::nullopt;
    }
    std::vector<ExchangeLine> exchanges;
    std::string_view rest = *trace;
    while (const auto exchange = TakeExchange(rest)) {
        if (exchange->device == device) {
            exchanges.push_back(*exchange);
        }
    }
    return exchanges;
}

void CExchangeLog::Show() {
    if (!shows_) {
        return;
    }
    const std::lock_guard guard(lock_);
    const auto trace = ReadOn(file_, shown_);
    std::string_view rest = trace ? *trace : std::string_view();
    while (const auto exchange = TakeExchange(rest)) {
        Tell(TextOf(*exchange));
    }
    shown_ -= rest.size();
}

void CExchangeLog::ShowNowAndThen(const std::stop_token& end) {
    std::mutex unused;
    std::unique_lock guard(unused);
    while (!end.stop_requested()) {
        std::condition_variable_any().wait_for(guard, end, std::chrono::milliseconds(200),
                                               [] { return false; });
        Show();
    }
}

}  // namespace onvifctl
