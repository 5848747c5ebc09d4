#include "CameraProcess.h"

#include <camera_sim/CameraSim.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int kReadEnd = 0;
constexpr int kWriteEnd = 1;

}  // namespace

struct CCameraProcess::Page {
    std::uint16_t port;
    std::uint64_t messages;
    Clock::rep changeTimes[1];  // as many as there are changes
};

void CCameraProcess::Unmap::operator()(std::byte* memory) const {
    munmap(memory, size);
}

std::unique_ptr<std::byte, CCameraProcess::Unmap> CCameraProcess::Map(std::size_t size) {
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no shared memory");
    }
    return {static_cast<std::byte*>(memory), Unmap{size}};
}

CCameraProcess::CPipe::CPipe() {
    if (pipe(ends_) != 0) {
        throw std::runtime_error("no pipe");
    }
}

CCameraProcess::CPipe::~CPipe() {
    Close(kReadEnd);
    Close(kWriteEnd);
}

void CCameraProcess::CPipe::Close(int end) {
    if (ends_[end] >= 0) {
        close(std::exchange(ends_[end], -1));
    }
}

bool CCameraProcess::CPipe::Send() const {
    return write(ends_[kWriteEnd], "", 1) == 1;
}

bool CCameraProcess::CPipe::Await() const {
    char ignored = 0;
    return read(ends_[kReadEnd], &ignored, 1) == 1;
}

CCameraProcess::CCameraProcess(std::size_t cameras, std::size_t changes, Clock::duration period,
                               bool keepAlive)
    : cameras_(cameras),
      changes_(changes),
      period_(period),
      keepAlive_(keepAlive),
      pageSize_(sizeof(Page) + changes * sizeof(Clock::rep)),
      shared_(Map(cameras * pageSize_)) {
    process_ = fork();
    if (process_ == 0) {
        commands_.Close(kWriteEnd);
        answers_.Close(kReadEnd);
        Child();
        _exit(0);
    }
    commands_.Close(kReadEnd);
    answers_.Close(kWriteEnd);
    if (process_ < 0 || !answers_.Await()) {
        throw std::runtime_error("the cameras cannot be started");
    }
}

CCameraProcess::~CCameraProcess() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

CCameraProcess::Page& CCameraProcess::PageOf(std::size_t camera) const {
    return *reinterpret_cast<Page*>(shared_.get() + camera * pageSize_);
}

std::uint16_t CCameraProcess::Port(std::size_t camera) const {
    return PageOf(camera).port;
}

CCameraProcess::Clock::time_point CCameraProcess::ChangeTime(std::size_t camera,
                                                             std::size_t change) const {
    return Clock::time_point(Clock::duration(PageOf(camera).changeTimes[change]));
}

std::uint64_t CCameraProcess::Messages(std::size_t camera) const {
    return PageOf(camera).messages;
}

void CCameraProcess::StartChanges() {
    if (!commands_.Send()) {
        throw std::runtime_error("the cameras are gone");
    }
}

void CCameraProcess::AwaitChanges() {
    if (!answers_.Await()) {
        throw std::runtime_error("the cameras are gone");
    }
}

void CCameraProcess::Child() const try {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    camera_sim::CCameraHost host;
    std::vector<camera_sim::CCamera*> cameras;
    camera_sim::CameraOptions options{.recordLimit = 1};
    options.keepAlive = keepAlive_ ? camera_sim::KeepAlive::kPolite : camera_sim::KeepAlive::kNever;
    for (std::size_t i = 0; i < cameras_; ++i) {
        cameras.push_back(&host.Add(options));
        PageOf(i).port = cameras.back()->Port();
    }
    if (!answers_.Send() || !commands_.Await()) {
        return;
    }
    std::vector<std::pair<Clock::duration, std::size_t>> turns;  // when, and whose
    const Clock::duration lasts = std::min<Clock::duration>(period_ / 2, std::chrono::seconds(1));
    for (std::size_t i = 0; i < cameras_ * changes_ / 2; ++i) {
        const Clock::duration begins = period_ * i / cameras_;
        turns.emplace_back(begins, i % cameras_);
        turns.emplace_back(begins + lasts, i % cameras_);
    }
    std::sort(turns.begin(), turns.end());
    std::vector<std::size_t> made(cameras_);
    const Clock::time_point start = Clock::now();
    for (const auto& [when, camera] : turns) {
        std::this_thread::sleep_until(start + when);
        Page& page = PageOf(camera);
        page.changeTimes[made[camera]++] = Clock::now().time_since_epoch().count();
        cameras[camera]->Change([](camera_sim::CameraState& state) {
            bool& motion = state.media.videoSources.front().motion;
            motion = !motion;
        });
        page.messages = cameras[camera]->Count("event:messages");
    }
    if (answers_.Send()) {
        commands_.Await();  // until the process is ended
    }
} catch (const std::exception& failure) {
    std::fprintf(stderr, "cameras: %s\n", failure.what());
}
