#include "platform/NativeLocks.h"

#include <windows.h>

#include <algorithm>

namespace onvif_client {

namespace {

// The system promises that both are as large as a pointer, and zero when they begin.
static_assert(sizeof(SRWLOCK) == sizeof(void*) && sizeof(CONDITION_VARIABLE) == sizeof(void*));

SRWLOCK* Slim(void*& lock) {
    return reinterpret_cast<SRWLOCK*>(&lock);
}

CONDITION_VARIABLE* Condition(void*& condition) {
    return reinterpret_cast<CONDITION_VARIABLE*>(&condition);
}

}  // namespace

void CNativeMutex::Lock() {
    AcquireSRWLockExclusive(Slim(lock_));
}

void CNativeMutex::Unlock() {
    ReleaseSRWLockExclusive(Slim(lock_));
}

void CNativeRecursiveMutex::Lock() {
    const DWORD own = GetCurrentThreadId();
    if (owner_ != own) {
        mutex_.Lock();
        owner_ = own;
    }
    ++depth_;
}

void CNativeRecursiveMutex::Unlock() {
    if (--depth_ == 0) {
        owner_ = 0;
        mutex_.Unlock();
    }
}

void CNativeCondition::Wait(CNativeMutex& mutex) {
    SleepConditionVariableSRW(Condition(condition_), Slim(mutex.lock_), INFINITE, 0);
}

void CNativeCondition::WaitFor(CNativeMutex& mutex, std::chrono::milliseconds duration) {
    // One below what the system takes for no end.
    constexpr std::chrono::milliseconds::rep kLongest = INFINITE - 1;
    const auto wait = std::clamp<std::chrono::milliseconds::rep>(duration.count(), 0, kLongest);
    SleepConditionVariableSRW(Condition(condition_), Slim(mutex.lock_), static_cast<DWORD>(wait),
                              0);
}

void CNativeCondition::NotifyAll() {
    WakeAllConditionVariable(Condition(condition_));
}

}  // namespace onvif_client
