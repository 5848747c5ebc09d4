/// @file
/// The socket layer: one-shot exchanges, connections and listeners over TCP/IPv4.
///
/// State. WIRELINK_Initial starts the layer, WIRELINK_Quit stops it; before the first start and
/// after a stop every operation fails at once. Quit may be called at any time, from any thread and
/// twice: it breaks off the exchanges and waits of other threads, destroys every connection and
/// listener and returns when no callback runs any more (called from a callback, it does not wait
/// for that one).
///
/// Handles are non-zero and ascending; behind the largest they start over with those that are free.
/// Every call on a dead or unknown handle fails quietly. Nothing in a send or receive waits without
/// a bound.
///
/// Callbacks. The data callbacks of one handle are serial and run on the layer's own threads. Once
/// WIRELINK_UnRegisterNode has returned, none runs or will run for that handle; called from that
/// very callback it returns at once, and the callback is the last one. Accepted connections are
/// served on a few threads of their own, so that a slow poster never delays data callbacks. Nothing
/// waits for the callback of another handle. Observers are not owned and must outlive their
/// registration.
///
/// All operations may be called from any thread. Nothing throws.
#ifndef ONVIF_CLIENT_PLATFORM_WIRELINK_H
#define ONVIF_CLIENT_PLATFORM_WIRELINK_H

#include <cstdint>

namespace onvif_client {

/// Hears of connections that a listener accepts.
class CListenSocketObserver {
 public:
    virtual ~CListenSocketObserver() = default;
    /// A connection was accepted: @p handle answers the immediate operations, and the observer
    /// ends it with WIRELINK_DestroyHNetCommunication. At most 16 of these calls run at once;
    /// further connections wait in the backlog.
    virtual void OnAccept(std::uint32_t handle) = 0;
};

/// Hears of bytes on a registered connection.
class CSocketDataObserver {
 public:
    virtual ~CSocketDataObserver() = default;
    /// @p length bytes arrived. @p wanted receives 0.
    /// @return how many bytes were consumed: all of them.
    virtual std::uint32_t OnData(std::uint32_t handle, const char* data, std::uint32_t length,
                                 std::uint32_t* wanted) = 0;
    /// The peer has closed, or the connection is broken: no bytes follow.
    virtual void OnEnd(std::uint32_t /*handle*/) {}
};

/// Takes the reply of an exchange as it comes.
class CReplyObserver {
 public:
    virtual ~CReplyObserver() = default;
    /// @p length bytes came.
    /// @return how long the exchange may go on from now, in milliseconds, if that ends it earlier
    ///         than it would end already; kReplyGoesOn: as long; 0: nothing more is wanted.
    virtual std::uint32_t OnReply(const char* data, std::uint32_t length) = 0;
    /// Asked once nothing more is wanted.
    /// @return how long the connection can serve another exchange, in milliseconds; 0: not at all.
    virtual std::uint32_t KeepsOpenMs() const { return 0; }
};

constexpr std::uint32_t kReplyGoesOn = UINT32_MAX;

/// What ended an exchange.
enum class ExchangeEnd {
    kReplied,       ///< what was wanted of the reply is there
    kRefused,       ///< nobody listens at the port
    kNoConnection,  ///< it could not be made, or not in time
    kClosed,        ///< the device closed or broke the connection before
    kTimeout,       ///< the connection stood, and the time was over
    kStopped,       ///< the layer does not run, or was stopped meanwhile
};

class CKeptConnections;

/// What became of an exchange that might go over a connection that was kept.
enum class OverKept {
    kNot,       ///< it went over a new one
    kAnswered,  ///< something of a reply came
    kUnsent,    ///< it was closed already: nothing of the request went out
    kClosed,    ///< it was closed without a reply; whether that was before or behind the request's
                ///< arrival, nobody can tell
    kSilent,    ///< it stood, and nothing came in time
};

/// Lets an exchange go over a connection that was kept, and has its own kept when the observer says
/// so.
struct KeptUse {
    const CKeptConnections& connections;
    std::uint32_t idleMs;  ///< for how long a connection may have been idle; 0: a new one is made
    OverKept outcome = OverKept::kNot;  ///< becomes what came of it
};

/// Hears when a connection takes bytes.
class CSendableObserver {
 public:
    virtual ~CSendableObserver() = default;
    /// @param ready  true: the connection stands, and there is room for bytes. False: it could not
    ///               be made, is broken, or the time is over.
    virtual void OnSendable(std::uint32_t handle, bool ready) = 0;
};

/// Error code of WIRELINK_GetLastError: the system has no socket for the process.
constexpr std::uint32_t kWirelinkNoSocket = 0x20000002;
/// Error code of WIRELINK_GetLastError: the send queue of the system is full, try again.
constexpr std::uint32_t kWirelinkWouldBlock = 0x20000009;

/// Starts the layer; a layer that runs already stays as it is. The arguments are of no effect.
/// @return true when the layer runs.
bool WIRELINK_Initial(int, int, const char* configuration, unsigned int);

/// Stops the layer, see above.
void WIRELINK_Quit();

/// One exchange: connect to @p ip (dotted IPv4) : @p port, send the request, read into
/// @p replyBuffer until @p endMarker has arrived (in whatever segments), the peer closes,
/// @p replyCapacity bytes are filled or @p timeoutMs have passed since the call; close. Bytes
/// behind the first complete marker are not delivered. What was read before an error stays in the
/// buffer. A refused connection returns at once. Runs on the calling thread.
/// @param endMarker  null or empty: no marker.
/// @param end        becomes what ended it; may be null.
/// @return the number of bytes in the buffer, or -1 when no connection was made or the request
///         could not be sent.
int WIRELINK_SimpleClientComm(const char* ip, unsigned short port, const char* request,
                              unsigned int requestLength, char* replyBuffer,
                              unsigned int replyCapacity, const char* endMarker,
                              unsigned int timeoutMs, ExchangeEnd* end = nullptr);

/// The same, but the observer takes the reply, in blocks of any size, and says when it ends. Called
/// on this thread. One that throws ends the exchange.
/// @param kept  may be null: the connection is a new one, and closed.
/// @return false when no connection was made or the request could not be sent.
bool WIRELINK_ObservedClientComm(const char* ip, unsigned short port, const char* request,
                                 unsigned int requestLength, CReplyObserver* observer,
                                 unsigned int timeoutMs, ExchangeEnd* end = nullptr,
                                 KeptUse* kept = nullptr);

/// Starts a connection to @p ip (dotted IPv4) : @p port; it completes in the background.
/// @return a handle, or 0: WIRELINK_GetLastError is kWirelinkNoSocket where that is why.
std::uint32_t WIRELINK_AddConnect(std::uint32_t, const char* ip, unsigned short port);

/// Asks for the outcome of a connection without waiting: @p result becomes 1 once it stands, -1
/// when it failed, 0 while it is being made.
/// @return false for an unknown handle.
bool WIRELINK_PopConnectResult(std::uint32_t handle, int& result, std::uint32_t);

/// Waits in the background until a connection stands and takes bytes, at most @p timeoutMs, and
/// then calls the observer, once. Its callbacks count as data callbacks of the handle: they are
/// serial with those, and WIRELINK_UnRegisterNode and WIRELINK_DestroyHNetCommunication end the
/// wait as they end a registration.
/// @return false when there is no such wait to be had: an unknown handle, one that is waited for
///         already, or no memory.
bool WIRELINK_AwaitSendable(std::uint32_t handle, CSendableObserver* observer,
                            std::uint32_t timeoutMs);

/// Breaks a connection off (its handle stays until WIRELINK_DestroyHNetCommunication).
bool WIRELINK_DelConnect(std::uint32_t handle);

/// Sends what the system takes at once, waiting at most 100 ms for room.
/// @param error  set to true when the connection is broken, else to false.
/// @return the number of bytes sent, 0 for none.
int WIRELINK_Send_Immediate(std::uint32_t handle, const char* data, std::uint32_t length,
                            bool& error);

/// Receives what is there, without waiting.
/// @param closed  set to true when the peer has closed or the connection is broken and nothing is
///                left to read, else to false. May be null.
/// @return the number of bytes received, 0 for none.
int WIRELINK_Recv_Immediate(std::uint32_t handle, char* buffer, std::uint32_t capacity,
                            bool* closed);

/// Registers the observer for the bytes of a connection that stands; they flow from WIRELINK_Start
/// on. @p listener is kept for symmetry with the data observer and never called.
bool WIRELINK_RegisterNode(std::uint32_t handle, CSocketDataObserver* observer,
                           CSocketDataObserver* listener, int, int);

/// Starts the data callbacks of a registered connection.
bool WIRELINK_Start(std::uint32_t handle);

/// Stops reading; callbacks that run go on.
bool WIRELINK_Stop(std::uint32_t handle);

/// Ends the registration, see above.
bool WIRELINK_UnRegisterNode(std::uint32_t handle);

/// Sends what the system takes at once on a registered connection, without waiting.
/// @return the number of bytes sent, or -1: WIRELINK_GetLastError then tells why.
int WIRELINK_Send(std::uint32_t handle, const char* data, std::uint32_t length);

/// The reason of the calling thread's last failed WIRELINK_Send or WIRELINK_AddConnect: one of the
/// codes above or another value. Behind an exchange: kWirelinkNoSocket where that was the reason.
std::uint32_t WIRELINK_GetLastError();

/// Closes a connection and forgets its handle. Also ends a registration, as
/// WIRELINK_UnRegisterNode does.
bool WIRELINK_DestroyHNetCommunication(std::uint32_t handle);

/// Listens on @p port and hands accepted connections to the observer. The environment variable
/// ONVIF_CLIENT_LISTEN_ADDRESS, read here, chooses the address (dotted IPv4); without it all IPv4
/// addresses are listened on.
/// @return false when the port cannot be had, or the variable names no address of this machine.
bool WIRELINK_StartListen(unsigned short port, CListenSocketObserver* observer, std::uint32_t,
                          bool);

/// Ends a listener; returns when no accept callback of it runs any more (called from one, it does
/// not wait for that one).
bool WIRELINK_StopListen(unsigned short port);

}  // namespace onvif_client

#endif
