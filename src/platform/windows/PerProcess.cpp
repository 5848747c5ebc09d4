#include "platform/PerProcess.h"

#include <windows.h>

namespace onvif_client {

std::uint32_t ProcessGeneration() {
    return 1;  // no process is forked
}

bool OtherThreadsHaveEnded() {
    using InProgress = BOOLEAN(NTAPI*)();
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    const FARPROC found =
        system == nullptr ? nullptr : GetProcAddress(system, "RtlDllShutdownInProgress");
    return found != nullptr &&
           reinterpret_cast<InProgress>(reinterpret_cast<void*>(found))() != FALSE;
}

}  // namespace onvif_client
