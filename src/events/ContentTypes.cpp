#include "events/ContentTypes.h"

#include <algorithm>
#include <iterator>

namespace onvif_client {

namespace {

struct ContentType {
    std::string_view extension;
    std::string_view type;
};

constexpr ContentType kContentTypes[] = {
    {".htm", "text/html"},
    {".html", "text/html"},
    {".xml", "text/xml"},
    {".jpg", "image/jpeg"},
    {".jpeg", "image/jpeg"},
    {".gif", "image/gif"},
    {".png", "image/png"},
    {".txt", "text/plain"},
    {".h", "text/plain"},
    {".c", "text/plain"},
    {".cc", "text/plain"},
    {".cpp", "text/plain"},
    {".css", "text/css"},
    {".wav", "audio/wav"},
    {".avi", "video/x-msvideo"},
    {".qt", "video/quicktime"},
    {".mov", "video/quicktime"},
    {".mpe", "video/mpeg"},
    {".mpeg", "video/mpeg"},
    {".mid", "audio/midi"},
    {".midi", "audio/midi"},
    {".mp3", "audio/mpeg"},
    {".cod", "application/vnd.rim.cod"},
    {".jad", "text/vnd.sun.j2me.app-descriptor"},
};

std::string_view ExtensionOf(std::string_view path) {
    // Such a path names a picture, whatever extension it has.
    if (path.find("queryQRInfo") != std::string_view::npos) {
        return ".png";
    }
    if (path.empty()) {
        return ".html";
    }
    const std::size_t dot = path.rfind('.');
    return dot == std::string_view::npos ? ".xml" : path.substr(dot);
}

}  // namespace

std::string_view ContentTypeOf(std::string_view path) {
    const std::string_view extension = ExtensionOf(path);
    const auto* row =
        std::find_if(std::begin(kContentTypes), std::end(kContentTypes),
                     [extension](const ContentType& each) { return each.extension == extension; });
    return row == std::end(kContentTypes) ? "application/octet-stream" : row->type;
}

std::string BuildEmptyReply(std::string_view path) {
    std::string reply = "HTTP/1.1 200 OK\r\nContent-type: ";
    reply += ContentTypeOf(path);
    reply += "\r\nContent-Length: 0\r\nConnection: close\r\nAuthInfo: \r\n\r\n";
    return reply;
}

}  // namespace onvif_client
