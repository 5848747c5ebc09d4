#include "system/Tool.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <filesystem>
#include <iomanip>
#include <sstream>
#include <utility>

namespace client_test {

namespace {

std::wstring Wide(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end())).native();
}

/// Programs that are started inherit it.
HANDLE HandleOf(int descriptor) {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return handle;
}

}  // namespace

CRunningTool::CRunningTool(const std::string& arguments, const std::string& environment,
                           const std::string& errors, const std::string& program) {
    int pipe[2] = {};
    _pipe(pipe, 1 << 16, _O_BINARY | _O_NOINHERIT);
    output_ = _fdopen(pipe[0], "rb");
    int input = _open(kNowhere, _O_RDONLY);
    const bool joined = errors == "&1";
    const int error =
        joined ? pipe[1] : _open(errors.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC, _S_IWRITE);
    std::string line = program;
    std::istringstream words(arguments);
    for (std::string word; words >> std::quoted(word, '\'');) {
        if (word.starts_with('<')) {
            _close(input);
            input = _open(word.c_str() + 1, _O_RDONLY);
        } else {
            line.append(" \"").append(word).append("\"");
        }
    }
    std::istringstream variables(environment);
    for (std::string name, value;
         std::getline(variables >> std::ws, name, '=') && variables >> value;) {
        SetEnvironmentVariableW(Wide(name).c_str(), Wide(value).c_str());
    }
    // Nobody's hosts file has a say in the tests.
    SetEnvironmentVariableW(L"APPDATA", Wide(testing::TempDir() + "none").c_str());
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = HandleOf(input);
    startup.hStdOutput = HandleOf(pipe[1]);
    startup.hStdError = HandleOf(error);
    PROCESS_INFORMATION started = {};
    // With a console of its own, which nobody sees.
    CreateProcessW(nullptr, Wide(line).data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                   nullptr, &startup, &started);
    process_ = reinterpret_cast<std::intptr_t>(started.hProcess);
    CloseHandle(started.hThread);
    _close(input);
    _close(pipe[1]);
    if (!joined) {
        _close(error);
    }
    for (const wchar_t* name : {L"ONVIF_USER", L"ONVIF_PASSWORD", L"TZ"}) {
        SetEnvironmentVariableW(name, nullptr);
    }
}

CRunningTool::~CRunningTool() {
    if (process_ != 0) {
        TerminateProcess(reinterpret_cast<HANDLE>(process_), 1);
        Wait();
    }
}

int CRunningTool::Wait() {
    const auto ending = reinterpret_cast<HANDLE>(std::exchange(process_, 0));
    DWORD code = ~0U;
    WaitForSingleObject(ending, INFINITE);
    GetExitCodeProcess(ending, &code);
    CloseHandle(ending);
    fclose(output_);  // NOLINT(cppcoreguidelines-owning-memory): the tests' own
    return static_cast<int>(code);
}

/// A console has it for all its programs, this one among them.
bool CRunningTool::Signal(int) {
    SetConsoleCtrlHandler([](DWORD) -> BOOL { return TRUE; }, TRUE);
    FreeConsole();
    const DWORD id = GetProcessId(reinterpret_cast<HANDLE>(process_));
    const bool sent = AttachConsole(id) != 0 && GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0;
    FreeConsole();
    return sent;
}

}  // namespace client_test
