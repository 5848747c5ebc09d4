#include "platform/LineOutput.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>

#include "platform/Mutex.h"
#include "platform/OrNothing.h"
#include "platform/PerProcess.h"
#include "platform/windows/WideText.h"

namespace onvif_client {

namespace {

constexpr UINT kGbk = 936;
constexpr auto kAtOnce = std::chrono::milliseconds(20);

HANDLE Handle(SystemHandle handle) {
    return reinterpret_cast<HANDLE>(handle);
}

/// A program with windows alone may have none.
SystemHandle Standard(DWORD which) {
    const HANDLE handle = GetStdHandle(which);
    return handle == nullptr ? kNoHandle : reinterpret_cast<SystemHandle>(handle);
}

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

std::size_t WriteBytes(HANDLE handle, std::string_view bytes) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(bytes.size());
    return WriteFile(handle, bytes.data(), size, &written, nullptr) != 0 ? written : 0;
}

/// Whatever the console's code page is, but for bytes that are no UTF-8.
std::size_t WriteToConsole(HANDLE handle, std::string_view text) {
    const auto wide = ExactWideText(text);
    if (!wide) {
        return WriteBytes(handle, text);
    }
    DWORD written = 0;
    const auto size = static_cast<DWORD>(wide->size());
    return WriteConsoleW(handle, wide->data(), size, &written, nullptr) != 0 ? text.size() : 0;
}

/// The one line that is on its way to a pipe or console. Who does not read, or has marked text in
/// the window, keeps whoever writes waiting: that is a thread of the system's and not the library's
/// caller.
class CLineOnItsWay {
 public:
    /// @return what was taken; all of it when that is not known yet, nothing while the last one is
    ///         still on its way.
    std::size_t Write(HANDLE handle, std::string_view bytes) {
        const CLockGuard guard(lock_);
        if (busy_) {
            return 0;
        }
        bytes_ = bytes;
        handle_ = handle;
        TP_CALLBACK_ENVIRON environment;
        InitializeThreadpoolEnvironment(&environment);
        if (HMODULE library = ThisLibrary()) {
            SetThreadpoolCallbackLibrary(&environment, library);
        }
        busy_ = TrySubmitThreadpoolCallback(&Run, this, &environment) != 0;
        if (!busy_) {
            return 0;
        }
        taken_ = bytes.size();
        const auto end = std::chrono::steady_clock::now() + kAtOnce;
        while (busy_ && std::chrono::steady_clock::now() < end) {
            changed_.WaitFor(lock_, kAtOnce);
        }
        return taken_;
    }

 private:
    static HMODULE ThisLibrary() {
        HMODULE library = nullptr;
        GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(&Run), &library);
        return library;
    }

    static void CALLBACK Run(PTP_CALLBACK_INSTANCE instance, void* context) {
        CallbackMayRunLong(instance);
        static_cast<CLineOnItsWay*>(context)->Put();
    }

    /// Nobody else touches the bytes while it is busy.
    void Put() NO_THREAD_SAFETY_ANALYSIS {
        const std::size_t taken = OrNothing([this]() NO_THREAD_SAFETY_ANALYSIS {
            return IsConsole(handle_) ? WriteToConsole(handle_, bytes_)
                                      : WriteBytes(handle_, bytes_);
        });
        const CLockGuard guard(lock_);
        taken_ = taken;
        busy_ = false;
        changed_.NotifyAll();
    }

    CMutex lock_;  // leaf
    CCondition changed_;
    bool busy_ GUARDED_BY(lock_) = false;
    std::size_t taken_ GUARDED_BY(lock_) = 0;
    std::string bytes_ GUARDED_BY(lock_);
    HANDLE handle_ GUARDED_BY(lock_) = nullptr;
};

/// Each place has its own: the two standard streams, and a pipe for the log.
class CLinesOnTheirWay {
 public:
    static CLinesOnTheirWay& Instance() {
        static constinit CPerProcess<CLinesOnTheirWay> lines;
        return lines.Get();
    }

    CLineOnItsWay& To(SystemHandle handle) {
        const CLockGuard guard(lock_);
        return lines_[handle];
    }

 private:
    CMutex lock_;  // leaf
    std::map<SystemHandle, CLineOnItsWay> lines_ GUARDED_BY(lock_);
};

}  // namespace

SystemHandle StandardOutput() {
    return Standard(STD_OUTPUT_HANDLE);
}

SystemHandle StandardError() {
    return Standard(STD_ERROR_HANDLE);
}

OpenFileId OpenFileOf(SystemHandle handle) {
    if (handle == kNoHandle || GetFileType(Handle(handle)) == FILE_TYPE_UNKNOWN) {
        return {};
    }
    return {1, static_cast<unsigned long long>(handle)};
}

bool IsSocket(SystemHandle) {
    return false;  // what is given to a standard stream by this system is meant for it
}

bool ShowsGbk(SystemHandle handle) {
    return IsConsole(Handle(handle)) && GetConsoleOutputCP() == kGbk;
}

std::size_t WriteAtOnce(SystemHandle handle, std::string_view bytes) {
    if (handle == kNoHandle) {
        return 0;
    }
    const bool waitsForNobody = GetFileType(Handle(handle)) == FILE_TYPE_DISK;
    return waitsForNobody ? WriteBytes(Handle(handle), bytes)
                          : CLinesOnTheirWay::Instance().To(handle).Write(Handle(handle), bytes);
}

}  // namespace onvif_client
