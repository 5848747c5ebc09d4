#include "system/Program.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>

namespace onvifctl {

std::optional<std::string> FirstLineOf(const std::string& command) {
    // Standard input belongs to the tool, which may read a document from it.
    FILE* output = popen(("exec </dev/null\n" + command).c_str(), "re");
    if (output == nullptr) {
        return std::nullopt;
    }
    std::array<char, 4096> line = {};
    const bool read = fgets(line.data(), line.size(), output) != nullptr;
    std::array<char, 4096> rest = {};  // the command need not notice that nobody wants more
    for (int i = 0; i < 16 && fread(rest.data(), 1, rest.size(), output) == rest.size(); ++i) {
    }
    if (pclose(output) != 0) {
        return std::nullopt;
    }
    std::string text = read ? line.data() : "";
    text.erase(std::min(text.find_first_of("\r\n"), text.size()));
    return text;
}

std::optional<std::string> FindProgram(const std::string& name) {
    const char* path = getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::string program = folder + "/" + name;
        if (!folder.empty() && access(program.c_str(), X_OK) == 0 &&
            std::filesystem::is_regular_file(program)) {
            return program;
        }
    }
    return std::nullopt;
}

std::optional<int> ContinueAs(const std::string& program,
                              const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    signal(SIGPIPE, SIG_DFL);  // it would inherit what the tool ignores
    signal(SIGXFSZ, SIG_DFL);
    execv(program.c_str(), pointers.data());
    return std::nullopt;
}

}  // namespace onvifctl
