// A client that knows next to nothing of HTTP and SOAP.
#ifndef TESTS_SIMULATOR_EXCHANGE_H
#define TESTS_SIMULATOR_EXCHANGE_H

#include "support/RawClient.h"

/// All that comes back until the camera closes.
inline std::string Exchange(std::uint16_t port, const std::string& bytes) {
    const client_test::CRawClient connection(port);
    connection.Send(bytes);
    return connection.ReadToEnd();
}

/// A request; @p fields are whole header lines.
inline std::string Http(const std::string& method, const std::string& path, const std::string& body,
                        const std::string& fields = "Connection: close\r\n") {
    return method + " " + path + " HTTP/1.1\r\nHost: camera\r\n" + fields +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

inline std::string Envelope(const std::string& ns, const std::string& operation,
                            const std::string& arguments = "", const std::string& header = "") {
    return "<e:Envelope xmlns:e='http://www.w3.org/2003/05/soap-envelope'><e:Header>" + header +
           "</e:Header><e:Body><" + operation + " xmlns='" + ns + "'>" + arguments + "</" +
           operation + "></e:Body></e:Envelope>";
}

inline bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// What stands between the first @p begin and the next @p end; empty where there is none.
inline std::string Between(const std::string& text, const std::string& begin,
                           const std::string& end) {
    const auto from = text.find(begin);
    if (from == std::string::npos) return "";
    return text.substr(from + begin.size(),
                       text.find(end, from + begin.size()) - from - begin.size());
}

inline constexpr const char* kDeviceNamespace = "http://www.onvif.org/ver10/device/wsdl";

#endif
