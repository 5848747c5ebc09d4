#include "common/Beside.h"

#include <chrono>

#include "common/LogText.h"

namespace onvif_client {

namespace {

constexpr int kNoNumber = 0;
constexpr auto kPatience = std::chrono::milliseconds(500);

}  // namespace

CBeside::CBeside(std::function<void()> work, std::function<void()> late)
    : work_(std::move(work)),
      late_(std::move(late)),
      thread_(COREKIT_CreateRunOneThread(&CBeside::Run, this, true, loglabel::kHttpClient,
                                         kNoNumber, "##Beside##")) {
    COREKIT_ResumeThread(thread_);
}

CBeside::~CBeside() {
    COREKIT_DestroyThread(thread_, loglabel::kHttpClient, kNoNumber);
}

void CBeside::Run(void* self) {
    auto& beside = *static_cast<CBeside*>(self);
    beside.Work();
    beside.Finish(beside.workDone_, beside.callerDone_);
}

void CBeside::Work() {
    try {
        work_();
    } catch (...) {
        thrown_ = std::current_exception();
    }
}

void CBeside::Finish(bool& own, const bool& other) {
    bool late = false;
    {
        const CLockGuard guard(lock_);
        own = true;
        changed_.NotifyAll();
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (!other && std::chrono::steady_clock::now() < end) {
            changed_.WaitFor(lock_, kPatience);
        }
        late = !other;
    }
    if (late) {
        late_();
    }
}

void CBeside::Wait() {
    if (thread_ == nullptr) {
        Work();
    } else {
        Finish(callerDone_, workDone_);
        COREKIT_DestroyThread(std::exchange(thread_, nullptr), loglabel::kHttpClient, kNoNumber);
    }
    if (thrown_) {
        std::rethrow_exception(std::exchange(thrown_, nullptr));
    }
}

}  // namespace onvif_client
