#include "camera_sim/http/Http.h"

#include <algorithm>
#include <array>

namespace camera_sim {
namespace {

struct Status {
    unsigned code;
    std::string_view phrase;
};
constexpr std::array kStatuses = {
    Status{200, "OK"},
    Status{400, "Bad Request"},
    Status{401, "Unauthorized"},
    Status{403, "Forbidden"},
    Status{404, "Not Found"},
    Status{405, "Method Not Allowed"},
    Status{411, "Length Required"},
    Status{413, "Payload Too Large"},
    Status{431, "Request Header Fields Too Large"},
    Status{500, "Internal Server Error"},
    Status{503, "Service Unavailable"},
};

std::string_view Phrase(unsigned code) {
    const auto row = std::find_if(kStatuses.begin(), kStatuses.end(),
                                  [code](const Status& known) { return known.code == code; });
    return row == kStatuses.end() ? "Unknown" : row->phrase;
}

}  // namespace

Reply HttpReply(unsigned status, std::string_view fields, std::string_view contentType,
                std::string_view body) {
    constexpr std::size_t kHeadSize = 256;
    Reply reply;
    reply.status = status;
    std::string& out = reply.bytes;
    out.reserve(kHeadSize + fields.size() + body.size());
    out.append("HTTP/1.1 ").append(std::to_string(status)).append(" ").append(Phrase(status));
    out.append("\r\nServer: onvif-camera-sim\r\n").append(fields);
    if (!contentType.empty()) {
        out.append("Content-Type: ").append(contentType).append("\r\n");
    }
    out.append("Content-Length: ").append(std::to_string(body.size()));
    out.append("\r\nConnection: close\r\n\r\n").append(body);
    return reply;
}

Reply HttpReply(unsigned status, std::string_view contentType, std::string_view body) {
    std::string_view fields;
    if (status == 401) {
        fields = "WWW-Authenticate: Digest realm=\"onvif\", qop=\"auth\", nonce=\"0\"\r\n";
    }
    if (status == 405) {
        fields = "Allow: POST\r\n";
    }
    return HttpReply(status, fields, contentType, body);
}

Reply HttpReply(unsigned status) {
    return HttpReply(status, {}, {});
}

std::string_view PathOf(std::string_view target) {
    return target.substr(0, target.find('?'));
}

}  // namespace camera_sim
