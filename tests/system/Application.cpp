/// An application that ends or forks while the library is at work, or that its machine fails:
/// test_application PORT MODE, for a busy camera. There is never any entropy. Its exit status is 7.
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
#include "system/AlarmObserver.h"
#include "system/Client.h"

namespace {

using client_test::Await;
using client_test::Get;
using std::filesystem::directory_iterator;

constexpr int kStatus = 7;

const pid_t kFirstProcess = getpid();
unsigned short port = 0;
std::atomic<int> allocationsLeft = -1;  // the one that finds 0 fails
void (*inCallback)() = [] {};

/// Never destroyed: exit() would do that under the threads that use it.
client_test::CAlarmObserver& observer =
    *std::make_unique<client_test::CAlarmObserver>([](unsigned int) { inCallback(); }).release();

void Require(bool holds, int line = __builtin_LINE()) {
    if (!holds) {
        std::_Exit(line);
    }
}

void End() {
    std::exit(kStatus);  // NOLINT(concurrency-mt-unsafe): that is the point
}

void QuitAndEnd() {
    ONVIF_CLIENT_Quit();
    End();
}

unsigned int Login() {
    unsigned int error = 0;
    return client_test::LoginAt(port, "camera-1", error);
}

void RequireCalls() {
    Require(Await([calls = observer.calls + 5] { return observer.calls > calls; }));
}

/// Requires that all works.
void Start() {
    ONVIF_CLIENT_Initial();
    const unsigned int id = Login();
    Require(Get(id, "<devInfo/>").has_value());
    ONVIF_CLIENT_AddAlarmStateObserver(id, &observer);
    RequireCalls();
}

void StartAndKeepAsking() {
    Start();
    for (int i = 0; i < 2; ++i) {
        std::thread([id = Login()] {
            for (;;) {
                Get(id, "<devInfo/>");
            }
        }).detach();
    }
}

void EndFrom(void (*callback)()) {
    inCallback = callback;
    StartAndKeepAsking();
    pause();
}

std::ptrdiff_t Descriptors() {
    return std::distance(directory_iterator("/proc/self/fd"), {});
}

void RunOutOfDescriptors() {
    const std::ptrdiff_t before = Descriptors();
#ifndef __SANITIZE_ADDRESS__  // whose sister needs descriptors to look at objects
    rlimit normal = {};
    getrlimit(RLIMIT_NOFILE, &normal);
    const rlimit none = {0, normal.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    ONVIF_CLIENT_Initial();
    Require(Login() == ONVIF_CLIENT_NO_LOGIN_ID);
    setrlimit(RLIMIT_NOFILE, &normal);
#endif
    Start();
    ONVIF_CLIENT_Quit();
    Require(Descriptors() == before);
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
        const unsigned int id = Login();
        Require(Get(id, "<devInfo/>").has_value());
        ONVIF_CLIENT_AddAlarmStateObserver(id, &observer);
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
    const client_test::CRawClient poster(6699);
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
    const unsigned int id = Login();
    FailAllocations([] { ONVIF_CLIENT_Logout(Login()); });
    FailAllocations([id] { Get(id, "<devInfo/>"); });
    FailAllocations([id] {
        ONVIF_CLIENT_AddAlarmStateObserver(id, &observer);
        Await(
            [last = observer.calls + 20] { return observer.calls > last || allocationsLeft < 0; });
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
    Require(waitpid(child, &status, 0) == child && status == kStatus << 8);
}

void Fork() {
    setenv("ONVIF_CLIENT_LOG", "off", 1);
    const std::ptrdiff_t most = Descriptors() + 3;  // Asio's own
    ONVIF_CLIENT_Initial();
    RequireOfChild([=] { Require(Descriptors() <= most); });
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

// The stacks of the threads that a child does not have hold nothing there.
extern "C" int __lsan_is_turned_off() {  // NOLINT: its name
    return getpid() == kFirstProcess ? 0 : 1;
}

std::random_device::result_type std::random_device::_M_getval() {
    throw std::runtime_error("no entropy");
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc, cppcoreguidelines-owning-memory): what else
void* operator new(std::size_t size) {
    void* made = allocationsLeft >= 0 && --allocationsLeft < 0 ? nullptr : std::malloc(size);
    return made == nullptr ? throw std::bad_alloc() : made;
}
void operator delete(void* freed) noexcept {
    std::free(freed);
}
void operator delete(void* freed, std::size_t) noexcept {
    std::free(freed);
}
// NOLINTEND(cppcoreguidelines-no-malloc, cppcoreguidelines-owning-memory)

int main(int, char** arguments) {
    const std::map<std::string, void (*)()> modes = {
        {"main", StartAndKeepAsking},
        {"callback", [] { EndFrom(End); }},
        {"callback-after-quit", [] { EndFrom(QuitAndEnd); }},
        {"descriptors", RunOutOfDescriptors},
        {"threads", RunOutOfThreads},
        {"streams", CloseStandardStreams},
        {"signals", LookAtSignals},
        {"memory", RunOutOfMemory},
        {"fork", Fork}};
    port = static_cast<unsigned short>(std::strtoul(arguments[1], nullptr, 10));
    modes.at(arguments[2])();
    return kStatus;
}
