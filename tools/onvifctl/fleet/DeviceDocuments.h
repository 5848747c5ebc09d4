/// @file
/// What Get can ask any device without knowing more of it than how many profiles it has.
#ifndef ONVIFCTL_FLEET_DEVICEDOCUMENTS_H
#define ONVIFCTL_FLEET_DEVICEDOCUMENTS_H

#include <cstddef>
#include <string>
#include <vector>

namespace onvifctl {

struct DeviceDocument {
    std::string name;     // "osd", "streamURI-1"
    std::string request;  // that asks for it
};

/// The documents that say the same as long as nobody changes the device. Missing are dateAndTime,
/// pictures, and messages that are there once.
std::vector<DeviceDocument> DeviceDocuments(std::size_t profiles);

/// The request for a document that has been got before, by its one command. What the document does
/// not say of the index that it was asked with, its name says ("streamURI-1").
std::string RequestForAgain(const std::string& document, const std::string& name);

}  // namespace onvifctl

#endif
