#include "support/ScriptedPeer.h"

#include <utility>

namespace client_test {

CScriptedPeer::CScriptedPeer(Script script) : script_(std::move(script)) {
    listener_.Bind();
    listener_.Listen(128);
    accepting_ = std::jthread([this] { Accept(); });
}

CScriptedPeer::~CScriptedPeer() {
    {
        const std::lock_guard guard(lock_);
        ended_ = true;
        for (const CPeerConnection& connection : open_) {
            connection.BreakOff();
        }
    }
    CPeerSocket().Connect(Port());  // not everywhere does it end who waits for a connection
    accepting_.join();
    scripts_.clear();
}

void CScriptedPeer::Accept() {
    for (;;) {
        CPeerSocket accepted = listener_.Accept();
        const std::lock_guard guard(lock_);
        if (!accepted || ended_) {
            return;
        }
        const auto connection = open_.insert(open_.end(), std::move(accepted));
        scripts_.emplace_back([this, connection] {
            script_(*connection);
            const std::lock_guard finished(lock_);
            open_.erase(connection);
        });
    }
}

}  // namespace client_test
