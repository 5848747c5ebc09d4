/// @file
/// What a command needs of the session that it runs on.
#ifndef ONVIF_CLIENT_COMMANDS_COMMANDSESSION_H
#define ONVIF_CLIENT_COMMANDS_COMMANDSESSION_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "commands/ResponseBuffer.h"
#include "common/Extensions.h"
#include "common/Status.h"
#include "transform/MediaProfile.h"
#include "transform/ServiceAddresses.h"

namespace onvif_client {

/// Whose clock the creation time of a security header shows.
enum class SigningClock {
    kLocal,
    kDevice,  // asked of the device just before the request, unless the session keeps it
};

/// Bytes that are enough for the replies of most operations.
constexpr std::uint32_t kOrdinaryReplyCapacity = 8192;

/// The default time-out of an exchange, in milliseconds.
constexpr std::uint32_t kExchangeTimeoutMs = 8000;

/// The request of one exchange.
struct SignedRequest {
    std::string envelope;                                  // with an empty security header
    std::string_view serviceKey;                           // which service of the device
    std::uint32_t replyCapacity = kOrdinaryReplyCapacity;  // bytes; a longer reply is cut
    SigningClock clock = SigningClock::kLocal;
    std::uint32_t timeoutMs = kExchangeTimeoutMs;
    std::string path = {};  // not empty: posted there instead
};

/// A device's answer.
struct Reply {
    int status = status::kNoReply;
    /// The SOAP text from "<?xml" on; meaningful with status 0 only.
    std::string soap;
    /// When it was sent, in seconds since 1970, as far as its HTTP head says so and the session
    /// keeps the device's clock.
    std::optional<std::int64_t> date = std::nullopt;
};

/// Implemented by the device session. All operations may be called from several threads at once.
class ICommandSession {
 public:
    virtual ~ICommandSession() = default;

    /// Those that the session began with.
    virtual CExtensions Extensions() const { return {}; }

    /// The cached profiles as they stand now; never null.
    virtual std::shared_ptr<const ProfileList> Profiles() const = 0;
    virtual void ReplaceProfiles(ProfileList profiles) = 0;

    virtual ServiceTable Services() const = 0;
    /// True when the device offers the ver20 media service.
    virtual bool HasMedia2() const = 0;
    /// The ranges of the continuous pan, tilt and zoom velocity.
    virtual PtzRanges SpeedRanges() const = 0;

    /// Signs the envelope, posts it and waits for the answer.
    virtual Reply Exchange(const SignedRequest& request) = 0;

    /// The device has just been told to set its clock.
    virtual void NoteClockSet() {}

    /// Fetches a picture over HTTP from the device, whatever host @p address names.
    /// @return 0 when it was tried, also without success (@p picture then has no data); 1 for an
    ///         empty address.
    virtual int DownloadPicture(const std::string& address, ResponseBuffer& picture) = 0;
};

}  // namespace onvif_client

#endif
