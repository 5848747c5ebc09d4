/// @file
/// A request that is sent again and again: everything of it but what is new each time.
#ifndef ONVIF_CLIENT_CLIENT_PREPAREDREQUEST_H
#define ONVIF_CLIENT_CLIENT_PREPAREDREQUEST_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "client/SecurityHeader.h"

namespace onvif_client {

/// An envelope whose security header lacks the digest, the nonce and the creation time.
class CPreparedEnvelope {
 public:
    /// Nothing when the envelope lacks an element of the header, or has others in front of it.
    static std::optional<CPreparedEnvelope> Make(const Credentials& credentials,
                                                 std::string_view envelope);

    /// The whole envelope, created at that time, else by this machine's clock.
    /// @return nothing when there is no nonce or no digest to be had.
    std::optional<std::string> Sign(const Credentials& credentials,
                                    const std::optional<CalendarTime>& created) const;

 private:
    CPreparedEnvelope() = default;

    std::string text_;
    // Where these are missing, ascending.
    std::size_t digestAt_ = 0;
    std::size_t nonceAt_ = 0;
    std::size_t createdAt_ = 0;
};

struct PreparedRequest {
    CPreparedEnvelope envelope;
    std::string path;             // empty: that of the service
    std::string_view serviceKey;  // of a table
};

}  // namespace onvif_client

#endif
