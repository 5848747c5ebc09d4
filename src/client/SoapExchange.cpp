#include "client/SoapExchange.h"

#include <algorithm>

#include "common/HttpAddress.h"
#include "common/HttpHead.h"
#include "common/LogText.h"
#include "common/Status.h"
#include "transform/FaultReaders.h"
#include "transform/XmlTransform.h"

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

int ReportNoReply(std::string_view host, std::uint16_t port) {
    LogNormal(logpoint::kNoReply, "************************************%s:%d  no data return \r\n",
              std::string(host).c_str(), int{port});
    return status::kNoReply;
}

/// Where the start tag of an envelope begins, with whatever prefix.
std::size_t FindEnvelope(std::string_view text) {
    constexpr std::string_view kName = "Envelope";
    constexpr std::string_view kNotInPrefix = "<>:/\"' \t\r\n";
    for (std::size_t at = text.find(kName); at != std::string_view::npos;
         at = text.find(kName, at + kName.size())) {
        const std::string_view behind = text.substr(at + kName.size(), 1);
        std::size_t tag = at - 1;
        if (at > 1 && text[tag] == ':') {
            tag = text.find_last_of(kNotInPrefix, at - 2);
        }
        if (tag < at && text[tag] == '<' && !behind.empty() && Contains(" \t\r\n>", behind)) {
            return tag;
        }
    }
    return std::string_view::npos;
}

bool HoldsRefusal(std::string_view soap) {
    if (!Contains(soap, "Fault")) {
        return false;
    }
    CXmlDocument document;
    CXmlTransform::LoadTrimmed(soap, document);
    return RefusesCredentials(document.Root());
}

}  // namespace

std::string_view HttpStatus(std::string_view reply) {
    while (reply.starts_with("HTTP/")) {
        const std::string_view status = StatusCode(reply.substr(0, reply.find_first_of("\r\n")));
        if (!status.starts_with('1')) {
            return status;
        }
        TakeUntil(reply, kHeadEnd);
    }
    return {};
}

bool OnlyReads(std::string_view envelope) {
    std::string_view rest = envelope.substr(std::min(envelope.find("<s:Body"), envelope.size()));
    TakeUntil(rest, ">");
    TakeUntil(rest, "<");
    const std::string_view name = rest.substr(0, rest.find_first_of(" />\t\r\n"));
    const std::size_t colon = name.find(':');
    return name.substr(colon == std::string_view::npos ? 0 : colon + 1).starts_with("Get");
}

std::string PostTarget(std::string_view path) {
    return "/" + HeadText(path);
}

std::string BuildPost(std::string_view path, std::string_view host, std::string_view body,
                      std::string_view authorization, std::size_t largest,
                      std::string_view persistence) {
    const auto tabs = static_cast<std::size_t>(std::count(body.begin(), body.end(), '\t'));
    std::string request;
    request.reserve(path.size() + host.size() + body.size() + authorization.size() + 192);
    request += "POST ";
    request += PostTarget(path);
    request +=
        " HTTP/1.1\r\nContent-Type: application/soap+xml; charset=utf-8\r\nUser-Agent: ApiTool\r\n"
        "Host: ";
    request += HeadText(host);
    request += persistence;
    if (!authorization.empty()) {
        request.append("\r\nAuthorization: ").append(authorization);
    }
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
        return ReportNoReply(host, port);
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

int ClassifyOpenly(std::string_view host, std::uint16_t port, std::string_view reply,
                   std::string_view& soap) {
    if (reply.empty()) {
        return ReportNoReply(host, port);
    }
    if (HttpStatus(reply) == "401") {
        return status::kNotAuthorized;
    }
    const std::size_t envelope = FindEnvelope(reply);
    if (envelope == std::string_view::npos) {
        return status::kBadRequest;
    }
    const std::size_t prolog = reply.substr(0, envelope).find("<?xml");
    const std::string_view answer = reply.substr(std::min(prolog, envelope));
    if (HoldsRefusal(answer)) {
        return status::kNotAuthorized;
    }
    soap = answer;
    return status::kSuccess;
}

void JoinEnvelopeTag(std::string& soap) {
    const std::size_t begin = std::min(FindEnvelope(soap), soap.size());
    const std::size_t end = std::min(soap.find('>', begin), soap.size());
    std::replace_if(
        soap.begin() + static_cast<std::ptrdiff_t>(begin),
        soap.begin() + static_cast<std::ptrdiff_t>(end),
        [](char c) { return c == '\t' || c == '\r' || c == '\n'; }, ' ');
}

}  // namespace onvif_client
