#include "client/SoapExchange.h"

#include <algorithm>

#include "common/HttpAddress.h"
#include "common/LogText.h"
#include "common/Status.h"

namespace onvif_client {

namespace {

struct TelltaleText {
    std::string_view text;
    int status;
};

// The first text that a reply contains decides, wherever it stands: status line or fault.
constexpr TelltaleText kTelltaleTexts[] = {
    {"NotAuthorized", status::kNotAuthorized},
    {"401 Unauthorized", status::kNotAuthorized},
    {"not be authenticated", status::kNotAuthorized},
    {"Bad Request", status::kBadRequest},
};

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

}  // namespace

std::string BuildPost(std::string_view path, std::string_view host, std::string_view body,
                      std::size_t largest) {
    const auto tabs = static_cast<std::size_t>(std::count(body.begin(), body.end(), '\t'));
    std::string request;
    request.reserve(path.size() + host.size() + body.size() + 192);
    request += "POST /";
    request += HeadText(path);
    request +=
        " HTTP/1.1\r\nContent-Type: application/soap+xml; charset=utf-8\r\nUser-Agent: ApiTool\r\n"
        "Host: ";
    request += HeadText(host);
    if (body.size() > tabs) {
        request += "\r\nContent-Length: ";
        request += std::to_string(body.size() - tabs);
    }
    request += "\r\n\r\n";
    while (!body.empty()) {
        const std::size_t tab = std::min(body.find('\t'), body.size());
        request += body.substr(0, tab);
        body.remove_prefix(std::min(tab + 1, body.size()));
    }
    request.resize(std::min(request.size(), largest));
    return request;
}

int ClassifyReply(std::string_view host, std::uint16_t port, std::string_view reply,
                  std::string_view& soap) {
    if (reply.empty()) {
        LogNormal(logpoint::kNoReply,
                  "************************************%s:%d  no data return \r\n",
                  std::string(host).c_str(), int{port});
        return status::kNoReply;
    }
    const auto* telltale =
        std::find_if(std::begin(kTelltaleTexts), std::end(kTelltaleTexts),
                     [reply](const TelltaleText& each) { return Contains(reply, each.text); });
    if (telltale != std::end(kTelltaleTexts)) {
        return telltale->status;
    }
    if (!Contains(reply, kEnvelopeName)) {
        return status::kBadRequest;
    }
    const std::size_t prolog = reply.find("<?xml");
    if (prolog == std::string_view::npos) {
        return status::kNoXml;
    }
    soap = reply.substr(prolog);
    return status::kSuccess;
}

}  // namespace onvif_client
