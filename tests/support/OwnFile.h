/// @file
/// Files of a test's own.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_OWNFILE_H
#define ONVIF_CLIENT_TESTS_SUPPORT_OWNFILE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace client_test {

/// A name that the tests which run beside this one, the same test among them, do not use.
inline std::string OwnFile(const char* name) {
    return testing::TempDir() + std::to_string(getpid()) + "-" + name;
}

}  // namespace client_test

#endif
