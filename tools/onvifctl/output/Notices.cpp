#include "output/Notices.h"

#include <iostream>
#include <mutex>

#include "output/Printable.h"
#include "system/StandardStreams.h"

namespace onvifctl {

namespace {

thread_local std::string camera;

std::mutex lock;          // guards standard error and what follows; a leaf
std::size_t columns = 0;  // of the status that is shown

void ClearLocked() {
    if (columns > 0) {
        std::cerr << '\r' << std::string(columns, ' ') << '\r';
        columns = 0;
    }
}

}  // namespace

void Tell(const std::string& message) {
    const std::string text = (camera.empty() ? "" : camera + ": ") + message;
    const std::lock_guard guard(lock);
    ClearLocked();
    std::cerr << "onvifctl: " + Printable(text) + '\n';
}

CTellsOf::CTellsOf(const std::string& name) {
    camera = name;
}

CTellsOf::~CTellsOf() {
    camera.clear();
}

void ShowStatus(const std::string& text) {
    const std::lock_guard guard(lock);
    if (ErrorsAreTerminal()) {
        ClearLocked();
        std::cerr << text << std::flush;
        columns = text.size();
    }
}

}  // namespace onvifctl
