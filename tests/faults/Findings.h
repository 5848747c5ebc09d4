/// @file
/// What the fault matrix calls and what it finds, in its log.
#ifndef ONVIF_CLIENT_TESTS_FAULTS_FINDINGS_H
#define ONVIF_CLIENT_TESTS_FAULTS_FINDINGS_H

#include <atomic>
#include <chrono>
#include <iostream>
#include <mutex>
#include <string>

namespace client_test {

class CFindings {
 public:
    void Add(const std::string& where, const std::string& what) {
        ++found_;
        Write("FINDING: " + where + ": " + what);
    }

    /// A call that has to return within @p seconds and what a busy machine adds. It is written
    /// before, so that the log of a crash ends with what ran.
    template <typename Call>
    void Run(const std::string& name, int seconds, const Call& call) {
        constexpr int kAllowance = 30;
        ++calls_;
        Write(name);
        const auto start = std::chrono::steady_clock::now();
        call();
        if (std::chrono::steady_clock::now() - start > std::chrono::seconds(seconds + kAllowance)) {
            Add(name, "returns too late");
        }
    }

    void Write(const std::string& line) {
        const std::lock_guard guard(lock_);
        std::cerr << line << std::endl;
    }

    unsigned long Calls() const { return calls_; }
    unsigned long Count() const { return found_; }

 private:
    std::mutex lock_;  // guards std::cerr; leaf
    std::atomic<unsigned long> calls_ = 0;
    std::atomic<unsigned long> found_ = 0;
};

}  // namespace client_test

#endif
