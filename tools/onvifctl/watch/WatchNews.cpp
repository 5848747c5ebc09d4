#include "watch/WatchNews.h"

namespace onvifctl {

namespace {

std::size_t SizeOf(const DeviceEvent::Items& items) {
    std::size_t size = 0;
    for (const auto& [name, value] : items) {
        size += sizeof items.front() + name.size() + value.size();
    }
    return size;
}

std::size_t SizeOf(const News& news) {
    const auto* event = std::get_if<DeviceEvent>(&news);
    return sizeof news + (event == nullptr ? 0
                                           : event->topic.size() + SizeOf(event->source) +
                                                 SizeOf(event->key) + SizeOf(event->data));
}

}  // namespace

const CameraMoment& MomentOf(const News& news) {
    return std::visit([](const CameraMoment& moment) -> const CameraMoment& { return moment; },
                      news);
}

void CWatchNews::Add(News news) {
    constexpr std::size_t kMostBytes = std::size_t{16} << 20U;
    const std::lock_guard guard(lock_);
    bytes_ += SizeOf(news);
    waiting_.items.push_back(std::move(news));
    while (bytes_ > kMostBytes) {
        bytes_ -= SizeOf(waiting_.items.front());
        waiting_.items.pop_front();
        ++waiting_.lost;
    }
    if (!woken_) {
        woken_ = true;
        wake_();
    }
}

WatchNews CWatchNews::Take() {
    const std::lock_guard guard(lock_);
    woken_ = false;
    bytes_ = 0;
    return std::exchange(waiting_, {});
}

}  // namespace onvifctl
