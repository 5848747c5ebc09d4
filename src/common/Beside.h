/// @file
/// One piece of work beside that of the calling thread.
#ifndef ONVIF_CLIENT_COMMON_BESIDE_H
#define ONVIF_CLIENT_COMMON_BESIDE_H

#include <exception>
#include <functional>
#include <utility>

#include "platform/Corekit.h"
#include "platform/Mutex.h"

namespace onvif_client {

/// Runs the work on a thread of its own; where none is to be had, on the thread that waits for it.
/// When one of the two, the work and what the other thread does until it waits, is done and the
/// other is not so half a second later, @p late is called. Made, waited for and destroyed by one
/// thread.
class CBeside {
 public:
    CBeside(std::function<void()> work, std::function<void()> late);
    /// Waits.
    ~CBeside();
    CBeside(const CBeside&) = delete;
    CBeside& operator=(const CBeside&) = delete;

    /// Afterwards the work is done. What it threw is thrown here.
    void Wait();

 private:
    static void Run(void* self);
    void Work();
    /// @param own  of the two, which is done now.
    void Finish(bool& own, const bool& other);

    const std::function<void()> work_;
    const std::function<void()> late_;
    std::exception_ptr thrown_;  // the work's, until it is joined
    CMutex lock_;                // leaf
    CCondition changed_;
    bool workDone_ = false;  // both guarded by the lock, which the analysis loses in Finish
    bool callerDone_ = false;
    CorekitThreadHandle thread_;  // null: none, or joined
};

}  // namespace onvif_client

#endif
