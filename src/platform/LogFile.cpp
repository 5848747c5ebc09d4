#include "platform/LogFile.h"

#include <fcntl.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace onvif_client {

namespace {

constexpr std::size_t kLargestFile = std::size_t{5} << 20U;  // 5 MiB
constexpr std::size_t kOldFiles = 3;

int OpenToAppend(const std::string& path) {
    constexpr int kFlags = O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | kFlags, S_IRUSR | S_IWUSR);
    // A named pipe that nobody reads yet opens for who could read it himself.
    return descriptor < 0 && errno == ENXIO ? open(path.c_str(), O_RDWR | kFlags) : descriptor;
}

}  // namespace

CLogFile::CLogFile(std::string path) : path_(std::move(path)) {
    std::error_code ignored;  // opening fails then
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path(), ignored);
    descriptor_ = OpenToAppend(path_);
}

CLogFile::~CLogFile() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

int CLogFile::DescriptorFor(std::size_t size) {
    struct stat file = {};
    if (fstat(descriptor_, &file) == 0 && S_ISREG(file.st_mode) && file.st_size > 0 &&
        static_cast<std::size_t>(file.st_size) + size > kLargestFile) {
        Rotate();
    }
    return descriptor_;
}

void CLogFile::Rotate() {
    using spdlog::sinks::rotating_file_sink_st;
    bool moved = true;
    for (std::size_t number = kOldFiles; number > 0; --number) {
        const std::string from = rotating_file_sink_st::calc_filename(path_, number - 1);
        const std::string to = rotating_file_sink_st::calc_filename(path_, number);
        moved = std::rename(from.c_str(), to.c_str()) == 0;
    }
    const int next = moved ? OpenToAppend(path_) : -1;
    if (next < 0) {
        // Better no old lines than a file without end.
        [[maybe_unused]] const int emptied = ftruncate(descriptor_, 0);
        return;
    }
    close(std::exchange(descriptor_, next));
}

}  // namespace onvif_client
