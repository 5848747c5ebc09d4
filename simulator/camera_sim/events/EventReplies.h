/// @file
/// The parts that answers of the event service and notifications are made of.
#ifndef CAMERA_SIM_EVENTS_EVENTREPLIES_H
#define CAMERA_SIM_EVENTS_EVENTREPLIES_H

#include <cstddef>
#include <string>
#include <string_view>

#include "camera_sim/events/EventHub.h"
#include "camera_sim/soap/SoapFault.h"
#include "camera_sim/soap/SoapRequest.h"
#include "camera_sim/soap/XmlWriter.h"
#include "camera_sim/state/CameraOptions.h"
#include "camera_sim/state/CameraState.h"

namespace camera_sim {

inline constexpr std::string_view kSubscriptionPath = "/onvif/subscription";

/// Fills the envelope's header of an answer to a request with addressing headers.
/// @param action of the answer; empty: writes nothing
/// @param relatesTo the request's identifier, empty for none
void WriteAddressing(CXmlWriter& out, std::string_view action, std::string_view relatesTo);
/// The action of the answer to a request with that header; empty when the request has none.
std::string AnswerAction(const XmlElement* header);

/// CurrentTime and TerminationTime.
void WriteTimes(CXmlWriter& out, Ns ns, const CameraState& state, const Subscription& subscription);
void WriteTerminationTime(CXmlWriter& out, Ns ns, const CameraState& state,
                          const Subscription& subscription);
void WriteReference(CXmlWriter& out, Ns ns, const CameraOptions& options, std::uint64_t id);
/// The content of a PullMessagesResponse; takes at most @p limit messages out of the queue and
/// returns how many.
std::size_t WritePulled(CXmlWriter& out, const CameraState& state, Subscription& subscription,
                        std::size_t limit);
/// A whole notification, with the oldest message of the queue, which it takes out.
void WriteNotify(CXmlWriter& out, const CameraOptions& options, Subscription& subscription);

/// A fault of the notification or resource framework: @p name with a usual prefix.
/// @param extra elements at the end of the detail, in its namespace
SoapFault BaseFault(const CameraState& state, std::string_view name, std::string reason,
                    std::string_view extra = {});
SoapFault NoSuchSubscription(const CameraState& state);

}  // namespace camera_sim

#endif
