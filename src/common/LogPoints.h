/// @file
/// The places in log and traces that readers know by a label and a number. The numbers are literals
/// that never change, whatever becomes of the code around them. Other places have a label and say
/// in words what happened.
#ifndef ONVIF_CLIENT_COMMON_LOGPOINTS_H
#define ONVIF_CLIENT_COMMON_LOGPOINTS_H

namespace onvif_client {

namespace loglabel {
inline constexpr const char* kOnvifClient = "OnvifClient";
inline constexpr const char* kHttpClientManager = "HttpClientManager";
inline constexpr const char* kHttpClient = "HttpClient";
inline constexpr const char* kXmlTransform = "XmlTransform";
inline constexpr const char* kOnvifEvent = "OnvifEvent";
inline constexpr const char* kEventParse = "EventParse";
inline constexpr const char* kThreadPool = "ThreadPool";
}  // namespace loglabel

/// A place that writes to the log.
struct LogPoint {
    const char* label;
    int line;
};

namespace logpoint {

/// A login has ended, well or not; the text tells how long it took.
inline constexpr LogPoint kLoginEnded = {loglabel::kHttpClientManager, 75};

/// A session was given back more often than it was taken; the registry's count is wrong.
inline constexpr LogPoint kOverReleased = {loglabel::kHttpClient, 323};
/// A request got no reply at all.
inline constexpr LogPoint kNoReply = {loglabel::kHttpClient, 943};
/// No connection could be started for a picture.
inline constexpr LogPoint kPictureNotConnected = {loglabel::kHttpClient, 1295};
/// The device asks for credentials of a kind that is neither Basic nor Digest.
inline constexpr LogPoint kUnknownChallenge = {loglabel::kHttpClient, 1432};
/// A picture's reply does not say how long it is; 1 MiB is taken as the limit.
inline constexpr LogPoint kNoPictureLength = {loglabel::kHttpClient, 1457};
/// A picture of the length that the device states is too large, or there is no memory for it.
inline constexpr LogPoint kNoPictureMemory = {loglabel::kHttpClient, 1473};
/// A picture is longer than the device said, and is cut.
inline constexpr LogPoint kPictureTooLong = {loglabel::kHttpClient, 1523};

/// The device lists a service of a namespace that is not known; it is passed over.
inline constexpr LogPoint kUnknownService = {loglabel::kXmlTransform, 218};
/// The walk over the network interfaces of a reply lost its place in the result.
inline constexpr LogPoint kInterfaceWalk = {loglabel::kXmlTransform, 247};

/// The thread that looks for events is made.
inline constexpr LogPoint kEventThreadMade = {loglabel::kOnvifEvent, 286};
/// The thread that looks for events is ended.
inline constexpr LogPoint kEventThreadEnded = {loglabel::kOnvifEvent, 307};

}  // namespace logpoint

/// What changes with a device, told once per change behind the device's address.
struct DeviceNews {
    const char* label;
    const char* text;
};

namespace logpoint {

inline constexpr DeviceNews kSubscriptionLost = {loglabel::kOnvifEvent, "the subscription is lost"};
inline constexpr DeviceNews kSubscriptionRegained = {loglabel::kOnvifEvent,
                                                     "the subscription stands again"};
/// The device answers pulls at once and without messages: there are pauses between them now.
inline constexpr DeviceNews kPullsPaced = {loglabel::kOnvifEvent, "pulls are paced"};
inline constexpr DeviceNews kPullsAtOnce = {loglabel::kOnvifEvent, "pulls go on at once"};

}  // namespace logpoint

/// A place that writes a trace, as "label,function:line".
struct TracePoint {
    const char* label;
    const char* function;
    int line;
};

namespace tracepoint {

/// A login has read the list of services.
inline constexpr TracePoint kServicesRead = {loglabel::kHttpClient, "CHttpClient::Login", 108};
/// The device has the second media service.
inline constexpr TracePoint kMedia2 = {loglabel::kHttpClient, "CHttpClient::GetServersUrl", 2619};
/// The device has no second media service.
inline constexpr TracePoint kNoMedia2 = {loglabel::kHttpClient, "CHttpClient::GetServersUrl", 2622};
/// A request is signed by the device's clock; the text tells the time.
inline constexpr TracePoint kDeviceClock = {loglabel::kHttpClient,
                                            "CHttpClient::Authentication_UseIPCTime", 3341};

}  // namespace tracepoint

}  // namespace onvif_client

#endif
