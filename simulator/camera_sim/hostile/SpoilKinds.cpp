#include "camera_sim/hostile/SpoilKinds.h"

#include <algorithm>
#include <iterator>

#include "camera_sim/hostile/Damage.h"

namespace camera_sim {
namespace {

using Kinds = std::vector<SpoilKind>;

Kinds OfBytesAndHead() {
    return {
        {"none", "nothing is spoiled"},
        {"cut", "the reply ends anywhere", Cut},
        {"bit-flips", "one to eight bits are wrong", FlipBits},
        {"length-wrong",
         "Content-Length is too small or too large, or there are two",
         ChangeLength,
         {"0", "1", "9", "999", "99999", "9\r\nContent-Length: 99999"}},
        {"length-huge",
         "Content-Length beyond 31, 32 or 64 bits",
         ChangeLength,
         {"2147483647", "2147483648", "4294967297", "18446744073709551616"}},
        {"length-no-number",
         "Content-Length is none",
         ChangeLength,
         {"-1", "-2147483648", "x", "", "0x10", "1 2", "+9"}},
        {"chunked", "chunks, some with a wrong size", Chunk, {"", "fffffffffffffffff", "-1", "zz"}},
        {"head",
         "lines and words in the head, one or 100000",
         GrowHead,
         {"h", "h: 1\r\n", "\r\n", ":", "HTTP/1.1 100 Continue\r\n\r\n"}},
        {"status",
         "another status line",
         ChangeStatus,
         {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK",
          "HTTP/1.1 301 Moved\r\nLocation: http://h/", "HTTP/1.1 400 Bad Request",
          "HTTP/1.1 404 No", "HTTP/1.1 500 No", "HTTP/1.1 99999", ""}},
        {"unauthorized",
         "status 401 with a challenge that is sound, broken or missing",
         ChangeStatus,
         {"HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Digest realm=\"r\", nonce=\"n\"",
          "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"r\"",
          "HTTP/1.1 401 No\r\nWWW-Authenticate: Digest nonce=,qop=\"" + std::string(5000, 'r'),
          "HTTP/1.1 401 No\r\nWWW-Authenticate:", "HTTP/1.1 401 Unauthorized"}},
        {"other-answer", "the reply to an earlier request", TakeOther},
        {"second-reply", "another reply follows", AddSecond},
    };
}

Kinds OfBody() {
    return {
        {"giant", "up to megabytes of text anywhere", GrowBody, {"g", "g ", " g=\"g\"", "&amp;"}},
        {"many",
         "up to 100000 elements more",
         GrowBody,
         {"<m/>", "<m>1</m>", "<!---->", "<tt:Profiles token=\"m\"/>"}},
        {"deep", "elements up to 100000 deep", GrowBody, {"<d>", "<d e=\"1\"><e/>", "</d>"}},
        {"nul-bytes", "one zero byte or many", GrowBody, {std::string(1, '\0')}},
        {"declarations",
         "document types, entities, comments and sections, some without an end",
         GrowBody,
         {"<!DOCTYPE a [<!ENTITY b \"bb\"><!ENTITY c \"&b;&b;\">]>", "&c;", "<![CDATA[<x>]]>",
          "<!--", "<![CDATA[", "<?x ?>", "<?xml version=\"1.0\"?>"}},
        {"elements", "parts are missing or come again elsewhere", MoveElements},
        {"prefixes",
         "namespace prefixes are changed, undeclared or ill-formed",
         ChangePrefix,
         {"", "zz9:", "tt:", "a:b:", ":", "xmlns:"}},
        {"other-body",
         "nothing, a declaration alone, an empty or a proper SOAP fault",
         ChangeBody,
         {"", "<?xml?>",
          "<?xml version=\"1.0\"?><s:Envelope><s:Body><s:Fault/></s:Body></s:Envelope>",
          "<?xml version=\"1.0\"?><s:Envelope><s:Body><s:Fault><s:Code><s:Subcode><s:Value>ter:"
          "InvalidArgVal</s:Value></s:Subcode></s:Code><s:Reason><s:Text>no</s:Text></s:Reason>"
          "</s:Fault></s:Body></s:Envelope>"}},
    };
}

Kinds OfValues() {
    constexpr std::size_t kLong = 300;
    constexpr std::size_t kVeryLong = 9000;
    return {
        {"bad-utf8",
         "texts that are no UTF-8",
         FillTexts,
         {"\xff\xfe", "\xc0\xaf", "\xed\xa0\x80", "\xf5\x80\x80\x80", "x\xe9", "\xe2\x82", "\x80"}},
        {"controls",
         "characters that XML forbids, as they are or as references",
         FillTexts,
         {"\x01", "\x1b[2J", "\b", "&#0;", "&#1;", "&#xFFFE;", "&#xD800;", "\xef\xbf\xbf"}},
        {"numbers",
         "numbers out of range or of another form",
         FillNumbers,
         {"99999999999999999999", "-1", "2147483648", "-2147483649", "4294967295", "NaN", "+5",
          "1e999", "-inf", "0x10", " 7 ", "PT99999999S"}},
        {"wrong-types",
         "texts of another type than expected",
         FillTexts,
         {"true", "-7", "rtsp://[::1", "http://h:99999/%", "<a/>", "H99", "/", "&lt;&#9;&quot;"}},
        {"empty-texts", "texts are missing", FillTexts},
        {"giant-texts",
         "texts of 300 or 9000 characters",
         FillTexts,
         {std::string(kLong, 'g'), std::string(kVeryLong, 'g')}},
    };
}

Kinds OfConnections() {
    using enum SpoilKind::Reach;
    using enum Reply::Ending;
    const auto row = [](std::string_view name, std::string_view help, SpoilKind::Reach reach,
                        Reply::Ending ending) {
        return SpoilKind{.name = name, .help = help, .reach = reach, .ending = ending};
    };
    return {
        row("close-connected", "closes before the request is read", kConnected, kClose),
        row("close-asked", "closes without a reply", kAsked, kClose),
        row("reset-connected", "resets before the request is read", kConnected, kReset),
        row("reset-asked", "resets without a reply", kAsked, kReset),
        row("reset-halfway", "resets within the reply", kHalfAnswered, kReset),
        row("reset-answered", "resets behind the reply", kAnswered, kReset),
        row("drip", "200 bytes of the reply come one at a time", kDripped, kSend),
        row("silence-connected", "never reads the request, stays connected", kConnected, kSilence),
        row("silence-asked", "never answers, stays connected", kAsked, kSilence),
        row("silence-halfway", "stops within the reply, stays connected", kHalfAnswered, kSilence),
        row("silence-answered", "stays connected behind the reply", kAnswered, kSilence),
    };
}

}  // namespace

const std::vector<SpoilKind>& SpoilKinds() {
    static const Kinds all = [] {
        Kinds kinds;
        for (Kinds (*const part)() : {OfBytesAndHead, OfBody, OfValues, OfConnections}) {
            std::ranges::move(part(), std::back_inserter(kinds));
        }
        return kinds;
    }();
    return all;
}

std::string SpoilKindList() {
    constexpr std::size_t kColumn = 20;
    std::string list;
    for (const SpoilKind& kind : SpoilKinds()) {
        list.append(kind.name).append(kColumn - kind.name.size(), ' ').append(kind.help) += '\n';
    }
    return list;
}

}  // namespace camera_sim
