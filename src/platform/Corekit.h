/// @file
/// Shared services: log lines, traces and threads.
///
/// Log lines go to standard error through spdlog, or to the rotating file that the environment
/// variable ONVIF_CLIENT_LOG_FILE names (5 MiB, three old files). ONVIF_CLIENT_LOG chooses the
/// level: "off", "error", "info" (the default). All variables are read at the first line. A log
/// file that cannot be opened leaves the lines on standard error. Nothing here throws.
///
/// Lines and traces wait for nobody: one that cannot be written at once, because nobody reads the
/// pipe or the terminal, is dropped; how many were is told in front of the next that can. Control
/// characters within a text, and bytes that are not UTF-8, are shown as \xNN. A line is cut to
/// PIPE_BUF bytes.
#ifndef ONVIF_CLIENT_PLATFORM_COREKIT_H
#define ONVIF_CLIENT_PLATFORM_COREKIT_H

#include <cstdint>

namespace onvif_client {

/// A text of ours that readers of old logs know as bytes of the GBK code page (936).
struct CorekitText {
    const char* gbk;   // written when ONVIF_CLIENT_LOG_CHARSET is "raw"
    const char* utf8;  // written otherwise
};

/// Information. @p source is the source unit's label, @p line a literal of the trace text's own; 0:
/// it has none, and none is written. Trailing line breaks of @p text are not written twice. @p
/// device, when it is not null, follows in brackets: what the line is about, where a fixed text
/// does not say it. Any thread.
void COREKIT_NormalOutput(const char* text, const char* source, int line,
                          const char* device = nullptr);
void COREKIT_NormalOutput(const CorekitText& text, const char* source, int line);

/// A broken invariant (@p kind is "ASSERT") or a failure; the program goes on. Any thread.
void COREKIT_AbnormalOutput(const char* kind, const char* source, int line,
                            const char* device = nullptr);
void COREKIT_AbnormalOutput(const CorekitText& kind, const char* source, int line);
/// The same at a place without a number, which says in words what happened.
void COREKIT_AbnormalOutput(const char* kind, const char* source, const char* what,
                            const char* device = nullptr);

/// Looks what descriptor 1 leads to. Traces follow it when it leads elsewhere later, but not to a
/// connection, and nowhere when it is closed now: what is then given its number is the
/// application's. Without a call, the first trace does it.
void COREKIT_BeginTraces();

/// A trace: one or more whole lines, with their line breaks in front and behind. They go where the
/// environment variable ONVIF_CLIENT_TRACE says: "stdout" (the default; by the descriptor, past the
/// application's stdio buffer), "stderr", "log" (as information), "off". Any thread.
void COREKIT_Trace(const char* text);

/// A thread made by COREKIT_CreateRunOneThread.
struct CorekitThread;
using CorekitThreadHandle = CorekitThread*;
using CorekitThreadFunction = void (*)(void* context);

/// Creates a thread that runs @p function (@p context). @p suspended true: it does not run the
/// function until COREKIT_ResumeThread. @p name is what debuggers show, cut to what the system
/// takes. An exception that leaves the function ends the thread, not the process.
/// @return a handle that COREKIT_DestroyThread releases; null on failure.
CorekitThreadHandle COREKIT_CreateRunOneThread(CorekitThreadFunction function, void* context,
                                               bool suspended, const char* source, int line,
                                               const char* name);

/// The thread's id: ids ascend in the order of creation and are never reused. 0 for null.
std::uint64_t COREKIT_GetThreadID(CorekitThreadHandle thread);

/// The id of the calling thread, equal to COREKIT_GetThreadID of its handle; 0 on a thread that
/// COREKIT_CreateRunOneThread did not make.
std::uint64_t COREKIT_CurrentThreadID();

/// Lets a suspended thread run. False for null and for one that runs already.
bool COREKIT_ResumeThread(CorekitThreadHandle thread);

/// Waits for the thread's function to return and releases the handle. A thread that was never
/// resumed ends without running its function. Null is ignored. Must not be called by the thread
/// itself.
void COREKIT_DestroyThread(CorekitThreadHandle thread, const char* source, int line);

}  // namespace onvif_client

#endif
