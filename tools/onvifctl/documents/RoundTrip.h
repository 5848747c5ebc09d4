/// @file
/// From what a device has shown to the requests that set it: get, edit, set.
#ifndef ONVIFCTL_DOCUMENTS_ROUNDTRIP_H
#define ONVIFCTL_DOCUMENTS_ROUNDTRIP_H

#include <string>
#include <vector>

namespace onvifctl {

struct RoundTrip {
    std::vector<std::string> requests;  // request documents with one Set command each
    std::vector<std::string> remarks;   // what was left out, and why
};

/// The requests that bring a device to what a GetResponse document says, in the document's order.
/// The library takes the parameters of equal commands in one request from the first of them;
/// therefore every command has its own. Throws CFailure when the document is not a GetResponse,
/// tells of a failure or has commands that no Set matches.
RoundTrip SetRequestsFrom(const std::string& getResponse);

/// A Get request for those commands of the document whose items should be set only when they differ
/// from the device's: setting them takes along what the document does not say, such as where a
/// preset points. Empty when there are none. Throws CFailure as SetRequestsFrom.
std::string PresentItemsRequest(const std::string& getResponse);

/// The Get commands that can be set again, for people.
std::string RoundTripCommands();

}  // namespace onvifctl

#endif
