/// @file
/// What tests ask of the system that runs them.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_SYSTEM_H
#define ONVIF_CLIENT_TESTS_SUPPORT_SYSTEM_H

#include <chrono>
#include <cstddef>

namespace client_test {

/// The system's file that keeps nothing.
extern const char* const kNowhere;

/// Sets a variable of this process's environment; null removes it.
/// @return true when that was done.
bool SetVariable(const char* name, const char* value);

/// What this process holds at the moment.
struct Holdings {
    std::size_t handles = 0;      ///< file descriptors
    std::size_t inheritable = 0;  ///< those that a program which it starts would get
    std::size_t sockets = 0;
    std::size_t threads = 0;
    std::size_t bytes = 0;  ///< of allocated memory; 0 under a sanitizer
};
Holdings Held();

/// What this process's threads have taken of the processors until now.
std::chrono::milliseconds ProcessorTime();

}  // namespace client_test

#endif
