/// Forks, limits, signals and descriptors; and a program whose operator new is the library's, too.
/// There is never any entropy.
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <random>

#include "support/RawClient.h"
#include "support/System.h"
#include "system/Application.h"

namespace client_test {
namespace {

using std::filesystem::directory_iterator;

const pid_t kFirstProcess = getpid();
std::atomic<int> allocationsLeft = -1;  // the one that finds 0 fails

void RunOutOfDescriptors() {
    const std::size_t before = Held().handles;
#ifndef __SANITIZE_ADDRESS__  // whose sister needs descriptors to look at objects
    rlimit normal = {};
    getrlimit(RLIMIT_NOFILE, &normal);
    const rlimit none = {0, normal.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    ONVIF_CLIENT_Initial();
    Require(LoginAtCamera() == ONVIF_CLIENT_NO_LOGIN_ID);
    setrlimit(RLIMIT_NOFILE, &normal);
#endif
    Start();
    ONVIF_CLIENT_Quit();
    Require(Held().handles == before);
}

void RunOutOfThreads() {
    constexpr uid_t kNobody = 65534;  // who may do all has no limit
    Require(getuid() != 0 || setuid(kNobody) == 0);
    prctl(PR_SET_DUMPABLE, 1);
    rlimit normal = {};
    getrlimit(RLIMIT_NPROC, &normal);
    const rlimit none = {0, normal.rlim_max};
    setrlimit(RLIMIT_NPROC, &none);
    for (int round = 0; round < 2; ++round) {
        ONVIF_CLIENT_Initial();
        const unsigned int id = LoginAtCamera();
        Require(Get(id, "<devInfo/>").has_value());
        ONVIF_CLIENT_AddAlarmStateObserver(id, &Observer());
        ONVIF_CLIENT_DelAlarmStateObserver(id);
        ONVIF_CLIENT_Quit();
    }
    ONVIF_CLIENT_Initial();
    setrlimit(RLIMIT_NPROC, &normal);
    Start();
}

void CloseStandardStreams() {
    for (int stream = 0; stream < 3; ++stream) {
        close(stream);
    }
    Start();
    for (int stream = 0; stream < 3; ++stream) {
        Require(fcntl(stream, F_GETFD) == -1);
    }
}

/// No signal may come to a thread of the library's, one that serves a poster included.
void LookAtSignals() {
    Start();
    const CRawClient poster(6699);
    for (const auto& thread : directory_iterator("/proc/self/task")) {
        std::ifstream status(thread.path() / "status");
        for (std::string word; status >> word && word != "SigBlk:";) {
        }
        unsigned long blocked = 0;
        Require(!(status >> std::hex >> blocked) || (blocked >> (SIGTERM - 1U) & 1U) != 0 ||
                thread.path().filename() == std::to_string(getpid()));
    }
}

/// The n-th allocation of the whole program fails, for every n until the operation needs no more.
void FailAllocations(const std::function<void()>& operation) {
    bool failed = true;
    for (int nth = 0; failed; nth += 1 + nth / 8) {
        allocationsLeft = nth;
        try {
            operation();
        } catch (const std::bad_alloc&) {  // the operation's own
        }
        failed = allocationsLeft.exchange(-1) < 0;
    }
}

void RunOutOfMemory() {
    Start();
    const unsigned int id = LoginAtCamera();
    FailAllocations([] { ONVIF_CLIENT_Logout(LoginAtCamera()); });
    FailAllocations([id] { Get(id, "<devInfo/>"); });
    FailAllocations([id] {
        ONVIF_CLIENT_AddAlarmStateObserver(id, &Observer());
        Await([last = Observer().calls + 20] {
            return Observer().calls > last || allocationsLeft < 0;
        });
    });
    ONVIF_CLIENT_DelAlarmStateObserver(id);
    Start();
}

void RequireOfChild(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        End();
    }
    int status = 0;
    Require(waitpid(child, &status, 0) == child && status == 7 << 8);
}

void Fork() {
    SetVariable("ONVIF_CLIENT_LOG", "off");
    const std::size_t most = Held().handles + 3;  // Asio's own
    const auto first = static_cast<unsigned int>(dup(1));
    while (dup(1) < 100) {
    }
    ONVIF_CLIENT_Initial();
    close_range(first, 100, 0);  // its own have the numbers of large programs
    RequireOfChild([=] { Require(Held().handles <= most); });
    StartAndKeepAsking();
    for (int round = 0; round < 10; ++round) {
        RequireOfChild([] {});
        // There one sanitizer takes new threads for the parent's, and the other's locks stay held.
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
        RequireOfChild(Start);
#endif
        RequireCalls();
    }
}

}  // namespace

Modes SystemModes() {
    return {{"descriptors", RunOutOfDescriptors}, {"threads", RunOutOfThreads},
            {"streams", CloseStandardStreams},    {"signals", LookAtSignals},
            {"memory", RunOutOfMemory},           {"fork", Fork}};
}

}  // namespace client_test

// The stacks of the threads that a child does not have hold nothing there.
extern "C" int __lsan_is_turned_off() {  // NOLINT: its name
    return getpid() == client_test::kFirstProcess ? 0 : 1;
}

std::random_device::result_type std::random_device::_M_getval() {
    throw std::runtime_error("no entropy");
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc, cppcoreguidelines-owning-memory): what else
void* operator new(std::size_t size) {
    void* made = client_test::allocationsLeft >= 0 && --client_test::allocationsLeft < 0
                     ? nullptr
                     : std::malloc(size);
    return made == nullptr ? throw std::bad_alloc() : made;
}
void operator delete(void* freed) noexcept {
    std::free(freed);
}
void operator delete(void* freed, std::size_t) noexcept {
    std::free(freed);
}
// NOLINTEND(cppcoreguidelines-no-malloc, cppcoreguidelines-owning-memory)
