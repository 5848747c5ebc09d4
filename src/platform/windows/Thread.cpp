#include "platform/Thread.h"

#include <process.h>
#include <windows.h>

#include <system_error>
#include <utility>

#include "platform/windows/WideText.h"

namespace onvif_client {

namespace {

/// What a thread begins with.
struct Start {
    std::function<void()> run;
    HMODULE library = nullptr;
};

/// The last instruction of the library's that a thread runs gives its hold on the library back.
unsigned __stdcall Run(void* begun) {
    HMODULE library = nullptr;
    {
        const std::unique_ptr<Start> start(static_cast<Start*>(begun));
        library = start->library;
        start->run();
    }
    FreeLibraryAndExitThread(library, 0);
}

/// The DLL or program that this code is part of, held once more.
HMODULE HoldLibrary() {
    HMODULE library = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&Run),
                       &library);
    return library;
}

[[noreturn]] void ThrowNoThread() {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
}

}  // namespace

struct CThread::System {
    HANDLE thread = nullptr;
    unsigned id = 0;
};

CThread::CThread() = default;
CThread::~CThread() = default;
CThread::CThread(CThread&& other) noexcept = default;
CThread& CThread::operator=(CThread&& other) noexcept = default;

CThread::CThread(std::function<void()> run) : system_(std::make_unique<System>()) {
    auto start = std::make_unique<Start>(Start{std::move(run), HoldLibrary()});
    if (start->library == nullptr) {
        ThrowNoThread();
    }
    system_->thread =
        reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, &Run, start.get(), 0, &system_->id));
    if (system_->thread == nullptr) {
        FreeLibrary(start->library);
        ThrowNoThread();
    }
    start.release();  // NOLINT(bugprone-unused-return-value): the thread has it
}

void CThread::Join() {
    WaitForSingleObject(system_->thread, INFINITE);
    Detach();
}

void CThread::Detach() {
    CloseHandle(std::exchange(system_->thread, nullptr));
}

bool CThread::IsCurrent() const {
    return system_->id == GetCurrentThreadId();
}

void NameThisThread(const std::string& name) {
    // Windows 10 has it from 1607 on.
    using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    const FARPROC found =
        kernel == nullptr ? nullptr : GetProcAddress(kernel, "SetThreadDescription");
    if (found != nullptr) {
        reinterpret_cast<SetDescription>(reinterpret_cast<void*>(found))(GetCurrentThread(),
                                                                         WideText(name).c_str());
    }
}

}  // namespace onvif_client
