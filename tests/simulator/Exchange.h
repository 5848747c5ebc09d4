// A client that knows nothing of HTTP.
#ifndef TESTS_SIMULATOR_EXCHANGE_H
#define TESTS_SIMULATOR_EXCHANGE_H

#include "support/RawClient.h"

/// All that comes back until the camera closes.
inline std::string Exchange(std::uint16_t port, const std::string& bytes) {
    const client_test::CRawClient connection(port);
    connection.Send(bytes);
    return connection.ReadToEnd();
}

#endif
