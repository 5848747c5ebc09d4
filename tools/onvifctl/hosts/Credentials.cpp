#include "hosts/Credentials.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string_view>

#include "ExitCode.h"
#include "system/FilePath.h"
#include "system/Program.h"
#include "system/StandardStreams.h"

namespace onvifctl {

namespace {

/// A line without what ends it; nothing when there is none or one that is too long.
std::optional<std::string> LineOf(std::istream& stream) {
    std::array<char, 4096> line = {};
    if (!stream.getline(line.data(), line.size())) {
        return std::nullopt;
    }
    std::string text = line.data();
    if (text.ends_with('\r')) {
        text.pop_back();
    }
    return text;
}

std::string PasswordOfInput() {
    const auto password = InputIsTerminal() ? AskForPassword("Password: ") : LineOf(std::cin);
    if (!password) {
        throw CFailure(ExitCode::kUsage, "standard input has no line with a password");
    }
    return *password;
}

/// The password that a word holds, or points to in the next one ("-p"); null for other words.
char* PasswordIn(char* word, char* next) {
    constexpr std::string_view kLong = "--password";
    const std::string_view text = word;
    if (text.starts_with(kLong)) {
        const std::string_view rest = text.substr(kLong.size());
        return rest.empty() ? next : rest[0] == '=' ? word + kLong.size() + 1 : nullptr;
    }
    const std::size_t letter = text.find_first_not_of('v', 1);  // -vp is -v -p
    if (!text.starts_with('-') || letter == std::string_view::npos || text[letter] != 'p') {
        return nullptr;
    }
    return letter + 1 == text.size() ? next : word + letter + 1;
}

}  // namespace

void GivenLogin::ReadPassword() {
    if (!passwordFile.empty()) {
        password = PasswordOfFile(passwordFile);
    } else if (password == "-") {
        password = PasswordOfInput();
    }
    passwordFile.clear();
}

std::string PasswordOfFile(const std::string& file) {
    std::ifstream stream(PathOf(file), std::ios::binary);
    const auto password = LineOf(stream);
    if (!password) {
        throw CFailure(ExitCode::kUsage, "cannot read a password from '" + file + "'");
    }
    return *password;
}

std::string PasswordOfCommand(const std::string& command) {
    const auto password = FirstLineOf(command);
    if (!password || password->empty()) {
        throw CFailure(ExitCode::kUsage, password ? "its password-command wrote no password"
                                                  : "its password-command failed");
    }
    return *password;
}

void HidePasswords(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        char* password = PasswordIn(argv[i], i + 1 < argc ? argv[i + 1] : nullptr);
        if (password != nullptr) {
            std::fill_n(password, std::strlen(password), 'x');
        }
    }
}

}  // namespace onvifctl
