#include "support/System.h"

#include <fcntl.h>
#include <malloc.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <string>

namespace client_test {

const char* const kNowhere = "/dev/null";

bool SetVariable(const char* name, const char* value) {
    return (value == nullptr ? unsetenv(name) : setenv(name, value, 1)) == 0;
}

Holdings Held() {
    using std::filesystem::directory_iterator;
    Holdings held;
    for (const auto& each : directory_iterator("/proc/self/fd")) {
        std::error_code closedMeanwhile;
        const std::string target = read_symlink(each.path(), closedMeanwhile);
        const int flags = fcntl(std::stoi(each.path().filename()), F_GETFD);
        ++held.handles;
        held.inheritable += flags >= 0 && (flags & FD_CLOEXEC) == 0 ? 1 : 0;
        held.sockets += target.starts_with("socket:") ? 1 : 0;
    }
    held.threads =
        static_cast<std::size_t>(std::distance(directory_iterator("/proc/self/task"), {}));
    const struct mallinfo2 memory = mallinfo2();
    held.bytes = memory.uordblks + memory.hblkhd;
    return held;
}

std::chrono::milliseconds ProcessorTime() {
    return std::chrono::milliseconds(std::clock() / (CLOCKS_PER_SEC / 1000));
}

}  // namespace client_test
