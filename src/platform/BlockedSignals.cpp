#include "platform/BlockedSignals.h"

#include <initializer_list>

namespace onvif_client {

CBlockedSignals::CBlockedSignals() : before_() {
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
        sigdelset(&blocked, own);
    }
    pthread_sigmask(SIG_SETMASK, &blocked, &before_);
}

CBlockedSignals::~CBlockedSignals() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace onvif_client
