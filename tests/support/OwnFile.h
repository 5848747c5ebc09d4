/// @file
/// Files of a test's own.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_OWNFILE_H
#define ONVIF_CLIENT_TESTS_SUPPORT_OWNFILE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace client_test {

/// A name that the tests which run beside this one, the same test among them, do not use.
inline std::string OwnFile(const char* name) {
    return testing::TempDir() + std::to_string(getpid()) + "-" + name;
}

/// A folder while one lives. Its files are for their owner alone.
struct COwnFolder {
    COwnFolder() { std::filesystem::create_directory(name); }
    ~COwnFolder() { std::filesystem::remove_all(name); }
    std::string File(const char* file, const std::string& text) const {
        std::ofstream(name + file, std::ios::binary) << text;
        std::filesystem::permissions(name + file, std::filesystem::perms(0600));
        return name + file;
    }
    const std::string name = OwnFile("folder/");
};

}  // namespace client_test

#endif
