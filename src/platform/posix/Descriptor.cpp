#include "platform/Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace onvif_client {

namespace {

constexpr int kFirstOwn = 3;
constexpr std::size_t kWordBits = 64;
constexpr std::size_t kMostTracked = std::size_t{1} << 20U;  // what Linux allows a process
using Word = std::atomic<std::uint64_t>;

/// A bit for each descriptor that has an owner. No lock: a fork may come at any moment. Pages of it
/// that nobody touches take no memory.
constinit std::array<Word, kMostTracked / kWordBits> owned = {};
constinit std::atomic<std::size_t> highestWord = 0;

void Track(SystemHandle descriptor) {
    const auto number = static_cast<std::size_t>(descriptor);
    if (descriptor < 0 || number >= kMostTracked) {
        return;
    }
    const std::size_t word = number / kWordBits;
    std::size_t highest = highestWord;
    while (highest < word && !highestWord.compare_exchange_weak(highest, word)) {
    }
    owned[word] |= std::uint64_t{1} << number % kWordBits;
}

SystemHandle AboveStandardStreams(SystemHandle descriptor) {
    if (descriptor < 0 || descriptor >= kFirstOwn) {
        return descriptor;
    }
    const int low = static_cast<int>(descriptor);
    const int moved = fcntl(low, F_DUPFD_CLOEXEC, kFirstOwn);
    close(low);
    return moved;
}

class CHeldStandardStreams {
 public:
    CHeldStandardStreams() {
        for (int stream = 0; stream < kStreams; ++stream) {
            if (fcntl(stream, F_GETFD) >= 0) {
                continue;
            }
            const int taken = open("/dev/null", O_RDWR | O_CLOEXEC);
            if (taken >= 0 && taken < kStreams) {
                held_[taken] = true;
            } else if (taken >= 0) {
                close(taken);
            }
        }
    }
    ~CHeldStandardStreams() {
        for (int stream = 0; stream < kStreams; ++stream) {
            if (held_[stream]) {
                close(stream);
            }
        }
    }
    CHeldStandardStreams(const CHeldStandardStreams&) = delete;
    CHeldStandardStreams& operator=(const CHeldStandardStreams&) = delete;

 private:
    static constexpr int kStreams = 3;
    bool held_[kStreams] = {};
};

}  // namespace

CDescriptor::CDescriptor(SystemHandle descriptor) : descriptor_(AboveStandardStreams(descriptor)) {
    Track(descriptor_);
}

CDescriptor::~CDescriptor() {
    if (descriptor_ >= 0) {
        ForgetDescriptor(descriptor_);
        close(static_cast<int>(descriptor_));
    }
}

void ForgetDescriptor(SystemHandle descriptor) {
    const auto number = static_cast<std::size_t>(descriptor);
    if (descriptor >= 0 && number < kMostTracked) {
        owned[number / kWordBits] &= ~(std::uint64_t{1} << number % kWordBits);
    }
}

void WithHeldStandardStreams(const std::function<void()>& make) {
    const CHeldStandardStreams held;
    make();
}

void CloseInheritedDescriptors() noexcept {
    for (std::size_t word = 0; word <= highestWord; ++word) {
        for (std::uint64_t bits = owned[word].exchange(0); bits != 0; bits &= bits - 1) {
            close(static_cast<int>(word * kWordBits) + std::countr_zero(bits));
        }
    }
    highestWord = 0;
}

}  // namespace onvif_client
