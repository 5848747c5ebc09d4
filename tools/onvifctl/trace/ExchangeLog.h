/// @file
/// What the library has exchanged with devices, as its trace tells it.
#ifndef ONVIFCTL_TRACE_EXCHANGELOG_H
#define ONVIFCTL_TRACE_EXCHANGELOG_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "system/SharedFile.h"
#include "trace/ExchangeLine.h"

namespace onvifctl {

/// The one of this run. The trace is the user's file, where one is named, else a scratch file. Any
/// thread, but for Prepare, Begin and End.
class CExchangeLog {
 public:
    static CExchangeLog& Instance();

    CExchangeLog(const CExchangeLog&) = delete;
    CExchangeLog& operator=(const CExchangeLog&) = delete;

    /// Before the library is started. @p file: empty: the one that the environment names, if any.
    void Prepare(const std::string& file);
    /// Once it runs. @p shows: exchanges are told on standard error. Throws CFailure when the file
    /// that Prepare was given cannot be written.
    void Begin(bool shows);
    /// Once it is stopped.
    void End();

    /// A place between two exchanges.
    std::uint64_t Now() const;
    /// The exchanges with a device since then; nothing when the trace cannot be read.
    std::optional<std::vector<ExchangeLine>> Since(std::uint64_t then,
                                                   const std::string& device) const;

    /// Tells what was not told yet, if that is wanted.
    void Show();

 private:
    CExchangeLog() = default;
    ~CExchangeLog() = default;

    void ShowNowAndThen(const std::stop_token& end);

    std::optional<CScratchFile> scratch_;
    std::string file_;
    std::string asked_;        // the file that the user wants
    std::uint64_t start_ = 0;  // of this run in the file
    std::atomic<bool> shows_ = false;

    std::mutex lock_;          // held while it tells
    std::uint64_t shown_ = 0;  // up to there
    std::jthread showing_;
};

}  // namespace onvifctl

#endif
