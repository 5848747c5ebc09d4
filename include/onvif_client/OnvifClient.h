/// @file
/// onvif_client: talk to IP cameras and recorders over ONVIF.
///
/// An application starts the library, logs in to a device and gets a login id, sends request
/// documents in a small XML command language and receives result documents:
///
/// @code
///   ONVIF_CLIENT_Initial();
///   unsigned int error = 0;
///   unsigned int id = ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, "192.168.1.64", 80,
///                                        "admin", "secret", &error);
///   char* response = NULL;
///   int length = 0;
///   if (ONVIF_CLIENT_GetCfg(id, "<Get version=\"1.0\" systemType=\"ipc\"><devInfo/></Get>",
///                           response, &length)) {
///       puts(response);
///   }
///   ONVIF_CLIENT_DelResponseBuff(response);
///   ONVIF_CLIENT_Logout(id);
///   ONVIF_CLIENT_Quit();
/// @endcode
///
/// Threads: ONVIF_CLIENT_Initial and ONVIF_CLIENT_Quit are called from one thread, not at the same
/// time as each other. Every other function may be called from any number of threads at once, and
/// all of them from inside the callbacks of an alarm observer. A call runs wholly on its calling
/// thread, network traffic included, and is bounded in time: an exchange with a device ends after 8
/// seconds at the latest (2.5 seconds for the service search of a login). Most commands make one or
/// two exchanges, some one or two for every profile that they name; a picture is given up after
/// about ten seconds without data. Once the exchanges of a login have taken 40 seconds together,
/// the next one without a reply ends it.
///
/// Signals: the library's own threads leave them to the application's. Its handlers run there
/// alone, those of a crash aside.
///
/// Unloading: on Windows a program that has loaded the DLL itself may free it after
/// ONVIF_CLIENT_Quit, when no thread is inside any more; sessions and what else was kept are lost
/// memory then. Without Quit the library's threads keep it loaded. Elsewhere it is never unloaded.
///
/// Processes: a forked child may call exec, _exit or exit, or ONVIF_CLIENT_Initial to begin anew.
/// It has none of its parent's sessions and observers, and until that call every exchange fails at
/// once. The parent goes on undisturbed. In a child that was forked inside a callback of an
/// observer, that callback must not return. This is so for fork and what calls it: other ways to
/// copy a process (vfork, _Fork, clone) leave exec and _exit alone.
///
/// Errors are return values; no exception leaves the library. Texts are UTF-8 and end in a zero
/// byte. A null pointer is never dereferenced.
///
/// Alarms: a CONVIFAlarmStateObserver hears of motion and of a device's alarm inputs. For devices
/// that post notifications the library listens on TCP port 6699 while it is started, on all
/// addresses or on the one that the environment variable ONVIF_CLIENT_LISTEN_ADDRESS names (dotted
/// IPv4). The observers need no port: the library pulls for messages.
///
/// Extensions: what real devices need beyond the default is off unless the environment variable
/// ONVIF_CLIENT_EXTENSIONS, read by ONVIF_CLIENT_Initial, switches it on: "all", or names with
/// commas between them: http-framing, large-messages, open-faults, keep-clock, http-digest,
/// media-fallback, per-source-alarms, standard-requests, own-parameters, background-subscription,
/// keep-alive, quick-login, no-basic (which "all" leaves out). docs/real-cameras.md says what each
/// changes.
///
/// Diagnostics: the library logs to standard error. The environment variable ONVIF_CLIENT_LOG
/// chooses what ("off", "error", "info"; "info" when it is not set), ONVIF_CLIENT_LOG_FILE names a
/// file to use instead (rotated at 5 MiB, three old ones are kept). Some traces go to standard
/// output, or where ONVIF_CLIENT_TRACE says ("stdout", "stderr", "log", "off"). Neither waits for a
/// reader: what cannot be written at once is dropped and counted. ONVIF_CLIENT_TRACE_FILE names a
/// file for every exchange with a device, requests and replies in full, without credentials
/// (rotated in the same way; not set: none).
#ifndef ONVIF_CLIENT_ONVIF_CLIENT_H
#define ONVIF_CLIENT_ONVIF_CLIENT_H

#if defined(ONVIF_CLIENT_STATIC)
#define ONVIF_CLIENT_API
#elif defined(_WIN32)
#if defined(ONVIF_CLIENT_BUILDING)
#define ONVIF_CLIENT_API __declspec(dllexport)
#else
#define ONVIF_CLIENT_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define ONVIF_CLIENT_API __attribute__((visibility("default")))
#else
#define ONVIF_CLIENT_API
#endif

/// No login id: asks ONVIF_CLIENT_Login for a new session, and is its result on failure.
#define ONVIF_CLIENT_NO_LOGIN_ID 0xFFFFFFFFu

/// What *errorCode holds after ONVIF_CLIENT_Login: 0, or why the login failed. A device can also
/// cause another non-zero code: take every value that is not 0 as a failure.
enum ONVIF_CLIENT_ErrorCode {
    ONVIF_CLIENT_OK = 0,
    /// A request could not be prepared for sending.
    ONVIF_CLIENT_NOT_SENT = 1,
    /// The device answered something that is not XML.
    ONVIF_CLIENT_NO_XML = 4,
    /// The device did not answer: unreachable, refused, or silent until the time-out.
    ONVIF_CLIENT_NO_REPLY = 5,
    /// The device called the request bad, or its answer holds no SOAP envelope.
    ONVIF_CLIENT_BAD_REQUEST = 7,
    /// The device refused the user name or the password.
    ONVIF_CLIENT_NOT_AUTHORIZED = 401
};

/// The application's ear for alarm states. Derive from it and register an object with
/// ONVIF_CLIENT_AddAlarmStateObserver.
///
/// What is told: every state that differs from the last one told (inactive at first), in the
/// device's order. An active state that the device does not confirm is told again and again, about
/// a hundred times a second, from the sixth second on, and told as inactive after a minute. A state
/// counts as active when the device says "true", "TRUE" or "1".
///
/// With the extension per-source-alarms every source and rule of the device has a state of its own,
/// and motion is active while any is. Changes are told once: nothing is repeated, and nothing ends
/// by time as long as the device answers and does not forget the state.
///
/// All callbacks of all observers run on one thread of the library's, one after the other: one that
/// takes long delays the others. They may call every function of this library; ONVIF_CLIENT_Quit
/// then makes that callback the last one. They should throw nothing (what they throw is logged and
/// dropped).
///
/// The library stores the pointer and never owns or deletes the object: it must outlive its
/// registration, which ends with ONVIF_CLIENT_DelAlarmStateObserver for the same login id or with
/// the registration of another observer for it.
class CONVIFAlarmStateObserver {
 public:
    virtual ~CONVIFAlarmStateObserver() {}

    /// Motion on the device began (@p state true) or ended.
    virtual void OnMotionAlarmState(unsigned int loginId, bool state) = 0;

    /// An alarm input of the device became active (@p state true) or inactive. The inputs of a
    /// device are not told apart: @p alarmIn is always 1. Relays count as well. With the extension
    /// per-source-alarms inputs are 1, 2, 3 ... in the order of the device's list (the command
    /// alarmin), those that it does not list behind them, and relays 1001, 1002 ...; at most 2000.
    virtual void OnAlarmInState(unsigned int loginId, unsigned int alarmIn, bool state) = 0;
};

/// Start the library. Call it once before anything else, and again after ONVIF_CLIENT_Quit to go
/// on. Where the system has no descriptor left, exchanges fail until another call finds one.
/// @return true always.
ONVIF_CLIENT_API bool ONVIF_CLIENT_Initial();

/// Stop the library. Exchanges that run on other threads are broken off and fail; every exchange
/// after it fails at once until the next ONVIF_CLIENT_Initial. Sessions stay logged in and
/// observers registered, but none is called any more once this has returned; a callback that runs
/// is waited for. A process may end without it.
/// @return true always.
ONVIF_CLIENT_API bool ONVIF_CLIENT_Quit();

/// Log in to a device, or ask whether a login id is in use.
///
/// A login checks the device's answer and the credentials, sets the device's clock to this
/// machine's time (UTC), learns the addresses of the device's services and fetches its media
/// profiles: 7 to 10 exchanges on an ordinary device. With the extension keep-clock it reads the
/// clock and does not set it, 5 to 7 exchanges. With quick-login some of them go side by side, on a
/// second thread that ends before this returns. Every login makes a session of its own, also
/// for a device that is logged in already.
///
/// @param loginId    ONVIF_CLIENT_NO_LOGIN_ID for a new session. Any other value only asks whether
///                   that id is logged in: no network traffic, and *errorCode is not written.
/// @param ip         The device's address, dotted IPv4; at most 64 bytes count.
/// @param port       The device's HTTP port.
/// @param user       User name, at most 64 bytes count. May be empty.
/// @param password   Password, at most 64 bytes count. May be empty. User name and password both
///                   empty: requests go out unsigned.
/// @param errorCode  Receives an ONVIF_CLIENT_ErrorCode when a new session was tried. May be null.
/// @return The login id (1, 2, 3 ... in the order of successful logins, never reused in a process),
///         or ONVIF_CLIENT_NO_LOGIN_ID when the login failed or ip, user or password is null.
ONVIF_CLIENT_API unsigned int ONVIF_CLIENT_Login(unsigned int loginId, const char* ip,
                                                 unsigned short port, const char* user,
                                                 const char* password, unsigned int* errorCode);

/// End a session. Requests that still run on it finish with their results; the session goes when
/// the last of them has ended.
/// @return true always, also for an unknown id.
ONVIF_CLIENT_API bool ONVIF_CLIENT_Logout(unsigned int loginId);

/// Run a Get request document: ask the device.
///
/// The document's root is "Get", each child element is one command ("devInfo", "ipv4", ...). The
/// commands run in order; the result document, root "GetResponse", holds all their answers. A
/// command that fails ends the request, and nothing of it is returned.
///
/// A device that answers with a SOAP fault has answered: the command's element then holds the
/// status "fail" with an errorCode and the device's description, and this function returns true.
///
/// The command snapshotURI gives no document but the picture's bytes, without a zero byte behind
/// them, and ends the request. It returns true when the picture was asked for; none came when the
/// response is null or the length 0. A picture that the device cut short is shorter than it should
/// be, one longer than the device announced is cut, and one announced with more than 64 MiB is not
/// taken.
///
/// A picture can disclose the password: it is fetched by plain HTTP, and where a device asks for
/// Basic credentials, user name and password go out in clear. Digest (MD5) is answered in
/// preference, and once a device has asked for it, Basic is not answered any more in that session:
/// the picture is missing then.
///
/// @param loginId         A login id.
/// @param request         The request document. Null counts as empty.
/// @param response        Receives the result in a buffer of the library's, or null. Give it back
///                        with ONVIF_CLIENT_DelResponseBuff and nothing else. Not written for an
///                        unknown login id; the earlier value is overwritten, not freed.
/// @param responseLength  Receives the buffer's size in bytes: a result document's length plus one
///                        for the zero byte that ends it, or a picture's length. Not written for an
///                        unknown login id. May be null.
/// @return true when the last command succeeded, and for an unknown login id.
ONVIF_CLIENT_API bool ONVIF_CLIENT_GetCfg(unsigned int loginId, const char* request,
                                          char*& response, int* responseLength);

/// Run a Set request document: change the device.
///
/// As ONVIF_CLIENT_GetCfg, with the root "Set". Commands that the library does not know are passed
/// over. A command that fails ends the request; what earlier commands changed stays changed.
///
/// @param loginId   A login id.
/// @param request   The request document. Null counts as empty.
/// @param response  Receives the result document (root "SetResponse", or "CreateResponse" and
///                  "DeleteResponse" for on-screen texts) in a buffer that goes back
///                  through ONVIF_CLIENT_DelResponseBuff, or null when the function returns false.
/// @return false for an unknown login id, when a command failed, and when no command gave a result.
ONVIF_CLIENT_API bool ONVIF_CLIENT_SetCfg(unsigned int loginId, const char* request,
                                          char*& response);

/// Free a buffer from ONVIF_CLIENT_GetCfg or ONVIF_CLIENT_SetCfg and set the pointer to null. A
/// null pointer is ignored.
ONVIF_CLIENT_API void ONVIF_CLIENT_DelResponseBuff(char*& buffer);

/// Register the alarm observer of a device, in the place of an earlier one.
///
/// Subscribes at the device before it returns, which takes an exchange (two with the extension
/// per-source-alarms). A device that does not answer, and a login id that is unknown yet, are tried
/// again every 100 seconds. The observer may be called before this has returned. With the extension
/// background-subscription this sends nothing and returns at once.
/// @return true always, also for an unknown id or a null observer.
ONVIF_CLIENT_API bool ONVIF_CLIENT_AddAlarmStateObserver(unsigned int loginId,
                                                         CONVIFAlarmStateObserver* observer);

/// Remove the alarm observer of a device. It is not called any more once this has returned: a
/// callback of the same login id that runs on the library's thread is waited for, so do not hold a
/// lock here that the callback takes. An id without an observer is ignored. A line with the time
/// that it took goes to the traces.
ONVIF_CLIENT_API void ONVIF_CLIENT_DelAlarmStateObserver(unsigned int loginId);

/// Device discovery is not part of this library; its functions stand here for applications that
/// link against them. This one ignores its arguments, never calls @p callback and returns true.
ONVIF_CLIENT_API bool ONVIF_SEARCH_Initial(void (*callback)(const char*, int, const char*, void*),
                                           void* context, unsigned int flags);

/// Ignores its arguments and returns true.
ONVIF_CLIENT_API bool ONVIF_SEARCH_Set_Config(const char* name, const char* value);

/// Does nothing and returns true.
ONVIF_CLIENT_API bool ONVIF_SEARCH_StartManual();

/// Shuts the socket layer down under the whole library, as ONVIF_CLIENT_Quit does first: every
/// exchange fails until the next ONVIF_CLIENT_Initial.
ONVIF_CLIENT_API void ONVIF_SEARCH_Quit();

#endif
