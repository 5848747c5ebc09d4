/**
 * @file
 * onvif_client for C, and for every language that calls C: the functions of OnvifClient.h behind
 * plain names. A small library of its own, libonvif_client_c, which uses the C++ library and adds
 * nothing to it.
 *
 * @code
 *   onvif_client_id camera;
 *   char* result;
 *   size_t size;
 *   onvif_client_start();
 *   int error = onvif_client_login("192.168.1.64", 80, "admin", "secret", &camera);
 *   if (error == onvif_client_success) {
 *       error = onvif_client_get(camera, "<Get><devInfo/></Get>", &result, &size);
 *   }
 *   if (error == onvif_client_success) {
 *       puts(result);
 *       onvif_client_free(result);
 *   } else {
 *       fprintf(stderr, "%s\n", onvif_client_error_text(error));
 *   }
 *   onvif_client_stop();
 * @endcode
 *
 * Errors: functions that can fail return 0 (onvif_client_success) or an error code. No exception
 * leaves the library. A null pointer is never dereferenced.
 *
 * Threads: onvif_client_start, onvif_client_stop and the functions onvif_client_set_... are called
 * from one thread, not at the same time as each other. All others may be called from any number of
 * threads at once, and all of them from inside the callbacks of onvif_client_observe. A call
 * runs wholly on its calling thread, network traffic included, and is bounded in time: an exchange
 * with a device ends after 8 seconds at the latest.
 *
 * Processes: a forked child has none of its parent's sessions and observers. It may call exec,
 * _exit or exit, or onvif_client_start to begin anew. The parent goes on undisturbed.
 *
 * Texts are UTF-8 and end in a zero byte. What is said of commands, results, alarms, extensions,
 * the log and the traces in OnvifClient.h and docs/ holds here, too.
 */
#ifndef ONVIF_CLIENT_ONVIF_CLIENT_C_H
#define ONVIF_CLIENT_ONVIF_CLIENT_C_H

#include <stddef.h>
#include <stdint.h>

#if defined(ONVIF_CLIENT_C_STATIC)
#define ONVIF_CLIENT_C_API
#elif defined(_WIN32)
#if defined(ONVIF_CLIENT_C_BUILDING)
#define ONVIF_CLIENT_C_API __declspec(dllexport)
#else
#define ONVIF_CLIENT_C_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define ONVIF_CLIENT_C_API __attribute__((visibility("default")))
#else
#define ONVIF_CLIENT_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A session with a device: 1, 2, 3 ... in the order of successful logins, never used again in a
 * process. */
typedef uint32_t onvif_client_id;

/** What functions return. Positive codes come from a login; a device can also cause another
 * positive one. Take every value that is not 0 as a failure. */
enum onvif_client_error {
    onvif_client_success = 0,
    /** A login: a request could not be prepared for sending. */
    onvif_client_not_sent = 1,
    /** A login: the device answered something that is not XML. */
    onvif_client_no_xml = 4,
    /** A login: the device did not answer: unreachable, refused, or silent until the time-out. */
    onvif_client_no_reply = 5,
    /** A login: the device called the request bad, or its answer holds no SOAP envelope. */
    onvif_client_bad_request = 7,
    /** A login: the device refused the user name or the password. */
    onvif_client_not_authorized = 401,
    /** A request: a command failed. The device did not answer, answered something else, refused the
     * credentials, or nothing could be sent. Which of these, the trace file tells. */
    onvif_client_failed = -1,
    /** There is no session with this id, or none any more. */
    onvif_client_unknown_id = -2,
    /** A pointer is null that must not be. */
    onvif_client_bad_argument = -3,
    /** Memory or another means of the system has run out. */
    onvif_client_no_memory = -4
};

/** What an observer is told with. */
enum onvif_client_alarm {
    /** Motion on the device. */
    onvif_client_motion = 0,
    /** An alarm input or a relay. */
    onvif_client_alarm_input = 1
};

/**
 * Hears of the alarms of a device. All callbacks of all observers run on one thread of the
 * library's, one after the other: one that takes long delays the others. It must return normally:
 * neither an exception nor longjmp may leave it.
 *
 * @param context  What onvif_client_observe was given.
 * @param id       The session.
 * @param alarm    An onvif_client_alarm.
 * @param input    The number of the alarm input; 0 for motion.
 * @param active   1: it began; 0: it ended. An active state that the device does not confirm is
 *                 told again and again, about a hundred times a second, from the sixth second on,
 *                 and told as inactive after a minute (not with the extension per-source-alarms).
 */
typedef void (*onvif_client_observer)(void* context, onvif_client_id id, int alarm,
                                      unsigned int input, int active);

/** The version of this library and of the one behind it, like "0.1.0". Never freed. */
ONVIF_CLIENT_C_API const char* onvif_client_version(void);

/** What an error code means, in English. Never null, never freed. */
ONVIF_CLIENT_C_API const char* onvif_client_error_text(int error);

/**
 * Choose what real devices need beyond the default: "all", or names with commas between them
 * (docs/real-cameras.md). Counts for the sessions of the next onvif_client_start. An unknown name
 * is logged there and passed over.
 *
 * This writes the variable ONVIF_CLIENT_EXTENSIONS into the environment of the process. No other
 * thread may use the environment meanwhile, and programs that are started later inherit it.
 *
 * @param names  Null takes the variable away: no extensions.
 */
ONVIF_CLIENT_C_API int onvif_client_set_extensions(const char* names);

/**
 * Choose where the library's traces go from the next onvif_client_start on: "stdout", which is the
 * default, "stderr", "log" or "off". Writes ONVIF_CLIENT_TRACE into the environment, as
 * onvif_client_set_extensions does. Null takes the variable away.
 */
ONVIF_CLIENT_C_API int onvif_client_set_traces(const char* where);

/**
 * Choose what is logged ("info", which is the default, "error" or "off") and into which file (null:
 * standard error). Counts when it comes before the process's first call of another function.
 * Writes ONVIF_CLIENT_LOG and ONVIF_CLIENT_LOG_FILE into the environment, as
 * onvif_client_set_extensions does. Null takes a variable away.
 */
ONVIF_CLIENT_C_API int onvif_client_set_log(const char* level, const char* file);

/** Start the library. Call it before anything but the functions above, and again after
 * onvif_client_stop to go on. @return onvif_client_success always. */
ONVIF_CLIENT_C_API int onvif_client_start(void);

/**
 * Stop the library. Calls that run on other threads are broken off and fail, and so does every
 * exchange after it until the next onvif_client_start. Sessions stay logged in and observers
 * registered, but none is called any more once this has returned: a callback that runs is waited
 * for, unless it is the caller. A process may end without it.
 */
ONVIF_CLIENT_C_API void onvif_client_stop(void);

/**
 * Log in to a device: 5 to 10 exchanges. By default this sets the device's clock to this machine's
 * time, not with the extension keep-clock. Every login makes a session of its own.
 *
 * @param address   The device's address, dotted IPv4.
 * @param port      The device's HTTP port.
 * @param user      User name, at most 64 bytes count. May be empty.
 * @param password  Password, at most 64 bytes count. May be empty. Both empty: requests go out
 *                  unsigned.
 * @param id        Receives the session, 0 on failure. End it with onvif_client_logout.
 */
ONVIF_CLIENT_C_API int onvif_client_login(const char* address, uint16_t port, const char* user,
                                          const char* password, onvif_client_id* id);

/** Take the observer of a session away, as onvif_client_forget does, and end it. Requests that
 * still run on it finish with their results. An unknown id is ignored. */
ONVIF_CLIENT_C_API void onvif_client_logout(onvif_client_id id);

/**
 * Ask a device: run a request document with the root "Get" (docs/commands.md). A device that
 * refuses a command with a SOAP fault has answered: that is in the result, not an error.
 *
 * @param id       A session.
 * @param request  The request document.
 * @param result   Receives the result document, or the bytes of a picture (snapshotURI). Null on
 *                 failure, and when there is no picture. Give it back with onvif_client_free and
 *                 nothing else.
 * @param size     Receives the number of bytes, without the zero byte that ends a document; behind
 *                 a picture there is none. May be null.
 */
ONVIF_CLIENT_C_API int onvif_client_get(onvif_client_id id, const char* request, char** result,
                                        size_t* size);

/** Change a device: as onvif_client_get, with the root "Set". A command that fails ends the
 * request; what earlier commands changed stays changed. Without any result it has failed. */
ONVIF_CLIENT_C_API int onvif_client_set(onvif_client_id id, const char* request, char** result,
                                        size_t* size);

/** Free what onvif_client_get or onvif_client_set gave. Null is ignored. */
ONVIF_CLIENT_C_API void onvif_client_free(char* result);

/**
 * Hear of the alarms of a device, in the place of an earlier observer of that session, which is not
 * called any more once this has returned.
 *
 * Subscribes at the device before it returns, which takes an exchange or two, but with the
 * extension background-subscription it returns at once. A device that does not answer is tried
 * again every 100 seconds. The observer may be called before this has returned.
 *
 * @param id        A session.
 * @param observer  What to call. Not null.
 * @param context   Passed on. The library never looks at it or frees it; it must live until
 *                  onvif_client_forget, onvif_client_logout or another onvif_client_observe for
 *                  the session has returned.
 */
ONVIF_CLIENT_C_API int onvif_client_observe(onvif_client_id id, onvif_client_observer observer,
                                            void* context);

/**
 * Take the observer of a session away. It is not called any more once this has returned: a callback
 * of the same session that runs is waited for, unless it is the caller. So hold no lock here that
 * the callback takes. An id without an observer is ignored.
 */
ONVIF_CLIENT_C_API void onvif_client_forget(onvif_client_id id);

#ifdef __cplusplus
}
#endif

#endif
