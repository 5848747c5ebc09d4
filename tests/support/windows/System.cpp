#include "support/System.h"

#include <winsock2.h>

#include <tlhelp32.h>  // needs it before

#include <string>
#include <vector>

namespace client_test {

namespace {

constexpr std::uintptr_t kHighestHandle = 1U << 14U;

std::wstring Wide(const std::string& utf8) {
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, wide.data(), size);
    return wide;
}

std::size_t Threads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL there = Thread32First(snapshot, &entry); there;
         there = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(snapshot);
    return count;
}

std::size_t Bytes() {
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    std::size_t bytes = 0;
    for (const HANDLE heap : heaps) {
        HeapLock(heap);
        for (PROCESS_HEAP_ENTRY entry = {}; HeapWalk(heap, &entry) != 0;) {
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
        }
        HeapUnlock(heap);
    }
    return bytes;
}

}  // namespace

const char* const kNowhere = "NUL";

bool SetVariable(const char* name, const char* value) {
    return SetEnvironmentVariableW(Wide(name).c_str(),
                                   value == nullptr ? nullptr : Wide(value).c_str()) != 0 ||
           GetLastError() == ERROR_ENVVAR_NOT_FOUND;
}

Holdings Held() {
    Holdings held;
    for (std::uintptr_t handle = sizeof(DWORD); handle < kHighestHandle; handle += sizeof(DWORD)) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags) != 0) {
            int type = 0;
            int size = sizeof type;
            ++held.handles;
            held.inheritable += (flags & HANDLE_FLAG_INHERIT) != 0 ? 1 : 0;
            held.sockets +=
                getsockopt(handle, SOL_SOCKET, SO_TYPE, reinterpret_cast<char*>(&type), &size) == 0
                    ? 1
                    : 0;
        }
    }
    held.threads = Threads();
    held.bytes = Bytes();
    return held;
}

std::chrono::milliseconds ProcessorTime() {
    FILETIME ignored = {};
    FILETIME times[2] = {};  // of the kernel, of the program, in 100 ns
    GetProcessTimes(GetCurrentProcess(), &ignored, &ignored, &times[0], &times[1]);
    std::uint64_t sum = 0;
    for (const FILETIME& each : times) {
        sum += std::uint64_t{each.dwHighDateTime} << 32U | each.dwLowDateTime;
    }
    return std::chrono::milliseconds(sum / 10'000);
}

}  // namespace client_test
