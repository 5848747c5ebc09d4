#include "system/Interruption.h"

#include <windows.h>

#include <algorithm>
#include <csignal>
#include <mutex>
#include <utility>

#include "ExitCode.h"

namespace onvifctl {

namespace {

constexpr int kHangUp = 1;  // as POSIX numbers SIGHUP, which has no name here

/// What the console tells, on threads of the system's, and the wait for it.
struct Console {
    std::mutex lock;  // guards what follows; a leaf
    bool held = false;
    int signal = 0;
    // Never closed: the handler may run as long as the process.
    const HANDLE wake = CreateEventW(nullptr, FALSE, FALSE, nullptr);
};

Console& TheConsole() {
    static Console& console = *std::make_unique<Console>().release();
    return console;
}

bool Hold(int signal) {
    Console& console = TheConsole();
    const std::lock_guard guard(console.lock);
    if (console.held) {
        console.signal = signal;
        SetEvent(console.wake);
    }
    return console.held;
}

// It stays for good, since taking it away waits for one that runs. A Ctrl-C that the tool is to
// ignore, by what it inherited, never comes here.
BOOL WINAPI OnEvent(DWORD event) {
    const bool interrupts = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    const int signal = interrupts ? SIGINT : kHangUp;
    if (!Hold(signal)) {
        EndBySignal(signal);
    }
    if (!interrupts) {
        Sleep(INFINITE);  // returning would end the process
    }
    return TRUE;
}

}  // namespace

void PrepareSignals() {
    SetConsoleCtrlHandler(OnEvent, TRUE);
}

void EndBySignal(int signal) {
    constexpr UINT kSignalled = 128;
    TerminateProcess(GetCurrentProcess(), kSignalled + static_cast<UINT>(signal));
}

struct CInterruption::Meanings {};

CInterruption::CInterruption() {
    Console& console = TheConsole();
    if (console.wake == nullptr) {
        throw CFailure(ExitCode::kUsage, "no more events can be made");
    }
    const std::lock_guard guard(console.lock);
    console.held = true;
    console.signal = 0;
    ResetEvent(console.wake);
}

CInterruption::~CInterruption() {
    LetSignalsGo();
}

void CInterruption::Wake() const {
    SetEvent(TheConsole().wake);
}

bool CInterruption::WasIgnored(int) const {
    return false;
}

void CInterruption::LetSignalsGo() {
    Console& console = TheConsole();
    const std::lock_guard guard(console.lock);
    console.held = false;
    holdsSignals_ = false;
}

int CInterruption::Wait(std::chrono::milliseconds time) const {
    constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24);
    Console& console = TheConsole();
    WaitForSingleObject(console.wake, static_cast<DWORD>(std::clamp(time, {}, kLongest).count()));
    const std::lock_guard guard(console.lock);
    return std::exchange(console.signal, 0);
}

}  // namespace onvifctl
