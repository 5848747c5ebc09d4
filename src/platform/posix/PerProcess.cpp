#include "platform/PerProcess.h"

#include <pthread.h>

#include "platform/Descriptor.h"

namespace onvif_client {

namespace {

constinit std::atomic<std::uint32_t> generation = 1;

void BecomeAChild() {
    ++generation;
    CloseInheritedDescriptors();
}

/// Without memory for it, children are as ill off as they would be anyway.
[[maybe_unused]] const int kRegistered = pthread_atfork(nullptr, nullptr, &BecomeAChild);

}  // namespace

std::uint32_t ProcessGeneration() {
    return generation;
}

bool OtherThreadsHaveEnded() {
    return false;
}

}  // namespace onvif_client
