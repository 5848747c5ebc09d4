/// A DLL that is loaded while the program runs, and a program without standard streams.
#include <windows.h>

#include <thread>

#include "system/Application.h"

namespace client_test {
namespace {

/// A second library, from a copy of the DLL's file: this program itself keeps the first one.
class CLoadedCopy {
 public:
    CLoadedCopy() {
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           reinterpret_cast<LPCWSTR>(&ONVIF_CLIENT_Initial), &original_);
        Require(copy_ != nullptr && copy_ != original_);
    }

    /// The same function there.
    template <typename Function>
    Function* Its(Function* ours) const {
        const auto distance = reinterpret_cast<char*>(ours) - reinterpret_cast<char*>(original_);
        return reinterpret_cast<Function*>(reinterpret_cast<char*>(copy_) + distance);
    }
    void Start() const {
        Its(ONVIF_CLIENT_Initial)();
        const unsigned int id = Its(ONVIF_CLIENT_Login)(ONVIF_CLIENT_NO_LOGIN_ID, "127.0.0.1",
                                                        Port(), "admin", "camera-1", nullptr);
        Its(ONVIF_CLIENT_AddAlarmStateObserver)(id, &Observer());
        RequireCalls();
    }
    bool IsLoaded() const { return GetModuleHandleW(kFile) != nullptr; }
    void Free() const { Require(FreeLibrary(copy_) != 0); }

 private:
    static constexpr const wchar_t* kFile = L"copied_library.dll";

    HMODULE original_ = nullptr;
    const HMODULE copy_ = LoadLibraryW(kFile);
};

/// Until the library's threads wait for the camera.
void WaitAMoment() {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

void EndWhileTheLibraryWaits() {
    Start();
    WaitAMoment();
}

void EndFromACallback() {
    EndFrom(
        [] {
            WaitAMoment();
            End();
        },
        Start);
}

void UnloadAfterQuit() {
    const CLoadedCopy library;
    library.Start();
    Require(library.Its(ONVIF_CLIENT_Quit)());
    library.Free();
    Require(Await([&] { return !library.IsLoaded(); }));
}

/// Its threads keep it.
void UnloadWithoutQuit() {
    const CLoadedCopy library;
    library.Start();
    library.Free();
    RequireCalls();
    Require(library.IsLoaded());
    WaitAMoment();
}

void DoWithoutStandardStreams() {
    for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        Require(SetStdHandle(stream, nullptr) != 0);
    }
    EndWhileTheLibraryWaits();
}

}  // namespace

Modes SystemModes() {
    return {{"waiting", EndWhileTheLibraryWaits},
            {"waiting-callback", EndFromACallback},
            {"unload-after-quit", UnloadAfterQuit},
            {"unload-without-quit", UnloadWithoutQuit},
            {"no-streams", DoWithoutStandardStreams}};
}

}  // namespace client_test
