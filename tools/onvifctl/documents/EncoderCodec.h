/// @file
/// The codec of encoders that have been shown by the first media service.
#ifndef ONVIFCTL_DOCUMENTS_ENCODERCODEC_H
#define ONVIFCTL_DOCUMENTS_ENCODERCODEC_H

#include <string>

namespace onvifctl {

/// Whether a Set request is about an encoder as videoEncoderCfg shows it.
bool SetsEncoder(const std::string& request);

/// The first media service has no name for H265 and shows something else. Puts the codec that a
/// result of profiles shows into a request of SetsEncoder, unless somebody has changed what
/// @p shown, a result of videoEncoderCfg, said of it.
/// @return what was kept, for people; empty when the request stays as it is.
std::string KeepCodec(std::string& request, const std::string& shown, const std::string& profiles);

}  // namespace onvifctl

#endif
