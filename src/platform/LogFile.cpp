#include "platform/LogFile.h"

#include <system_error>
#include <utility>

namespace onvif_client {

namespace {

constexpr std::size_t kLargestFile = std::size_t{5} << 20U;  // 5 MiB
constexpr std::size_t kOldFiles = 3;

/// "log.2.txt" of "log.txt"; 0 is the file itself.
std::filesystem::path OldFile(const std::filesystem::path& path, std::size_t number) {
    if (number == 0) {
        return path;
    }
    std::filesystem::path old = path;
    old.replace_extension(std::to_string(number));
    old += path.extension();
    return old;
}

}  // namespace

CLogFile::CLogFile(const std::string& path) : path_(PathOf(path)) {
    std::error_code ignored;  // opening fails then
    std::filesystem::create_directories(path_.parent_path(), ignored);
    file_ = CAppendedFile(path_);
}

SystemHandle CLogFile::HandleFor(std::size_t size) {
    const std::uint64_t present = file_.Size();
    if (present > 0 && present + size > kLargestFile) {
        Rotate();
    }
    return file_.Get();
}

void CLogFile::Rotate() {
    bool moved = true;
    for (std::size_t number = kOldFiles; number > 0; --number) {
        moved = MoveFileTo(OldFile(path_, number - 1), OldFile(path_, number));
    }
    CAppendedFile next = moved ? CAppendedFile(path_) : CAppendedFile();
    if (next) {
        file_ = std::move(next);
    } else {
        // Better no old lines than a file without end.
        file_.Empty();
    }
}

}  // namespace onvif_client
