#include "platform/Thread.h"

#include <pthread.h>

#include <csignal>
#include <initializer_list>
#include <thread>
#include <utility>

namespace onvif_client {

namespace {

constexpr std::size_t kLongestName = 15;  // what Linux keeps of a thread's name

/// Around the making of a thread, which inherits what is blocked: no handler of the application's
/// runs on it. What a thread does to itself stays open, so that crashes are seen.
class CBlockedSignals {
 public:
    CBlockedSignals() {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
            sigdelset(&blocked, own);
        }
        pthread_sigmask(SIG_SETMASK, &blocked, &before_);
    }
    ~CBlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    CBlockedSignals(const CBlockedSignals&) = delete;
    CBlockedSignals& operator=(const CBlockedSignals&) = delete;

 private:
    sigset_t before_ = {};
};

}  // namespace

// The library is never unloaded: it is linked so.
struct CThread::System {
    std::thread thread;
};

CThread::CThread() = default;
CThread::~CThread() = default;
CThread::CThread(CThread&& other) noexcept = default;
CThread& CThread::operator=(CThread&& other) noexcept = default;

CThread::CThread(std::function<void()> run) : system_(std::make_unique<System>()) {
    const CBlockedSignals blocked;
    system_->thread = std::thread(std::move(run));
}

void CThread::Join() {
    system_->thread.join();
}

void CThread::Detach() {
    system_->thread.detach();
}

bool CThread::IsCurrent() const {
    return system_->thread.get_id() == std::this_thread::get_id();
}

void NameThisThread(const std::string& name) {
    pthread_setname_np(pthread_self(), name.substr(0, kLongestName).c_str());
}

}  // namespace onvif_client
