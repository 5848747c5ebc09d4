#include "camera_sim/hostile/Damage.h"

#include <algorithm>

namespace camera_sim {
namespace {

/// Where the body begins.
std::size_t BodyOf(const std::string& reply) {
    const std::size_t end = reply.find("\r\n\r\n");
    return end == std::string::npos ? reply.size() : end + 4;
}

std::string Body(const Spoiled& reply) {
    return reply.text.substr(BodyOf(reply.text));
}

void SetLength(std::string& reply, const std::string& value) {
    const std::string field = "Content-Length: ";
    const std::size_t at = reply.find(field);
    if (at < BodyOf(reply)) {
        reply.replace(at, reply.find("\r\n", at) - at, field + value);
    }
}

/// The body in the place of the old one, with its length in the head.
void SetBody(const Spoiled& reply, const std::string& body) {
    reply.text.replace(BodyOf(reply.text), std::string::npos, body);
    SetLength(reply.text, std::to_string(body.size()));
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

std::string Grown(std::string text, const Spoiled& reply) {
    constexpr std::size_t kMostDoublings = 18;
    std::size_t at = reply.chance.Below(text.size());
    at = reply.chance.OnceIn(2) ? std::min(text.find('<', at), text.size()) : at;
    std::string grown;
    for (std::size_t i = std::size_t{1} << reply.chance.Below(kMostDoublings); i > 0; --i) {
        grown += reply.value;
    }
    return text.insert(at, grown);
}

/// The value in about half of the texts and attributes of the SOAP body that @p fits names.
void Fill(const Spoiled& reply, bool (*fits)(const std::string& text)) {
    const std::string body = Body(reply);
    std::size_t from = std::min(body.find("Body"), body.size());
    std::string filled = body.substr(0, from);
    while (from < body.size()) {
        const std::size_t start = std::min(body.find_first_of(">\"", from), body.size() - 1) + 1;
        const std::size_t end = std::min(body.find_first_of("<\"", start), body.size());
        const std::string old = body.substr(start, end - start);
        filled.append(body, from, start - from);
        filled += fits(old) && reply.chance.OnceIn(2) ? reply.value : old;
        from = end;
    }
    SetBody(reply, filled);
}

}  // namespace

void Cut(Spoiled reply) {
    reply.text.resize(reply.chance.Below(reply.text.size()));
}

void FlipBits(Spoiled reply) {
    constexpr std::size_t kBits = 8;
    for (std::size_t i = reply.chance.Below(kBits); i < kBits && !reply.text.empty(); ++i) {
        char& byte = reply.text[reply.chance.Below(reply.text.size())];
        byte = static_cast<char>(byte ^ (1 << reply.chance.Below(kBits)));
    }
}

void ChangeLength(Spoiled reply) {
    SetLength(reply.text, reply.value);
}

void ChangeStatus(Spoiled reply) {
    reply.text.replace(0, reply.text.find("\r\n"), reply.value);
}

void GrowHead(Spoiled reply) {
    reply.text = Grown(reply.text.substr(0, BodyOf(reply.text)), reply) + Body(reply);
}

void Chunk(Spoiled reply) {
    constexpr std::size_t kLargest = 900;
    constexpr std::size_t kSoundOnes = 20;
    const std::string body = Body(reply);
    SetLength(reply.text, "\r\nTransfer-Encoding: chunked");
    reply.text.resize(BodyOf(reply.text));
    const std::size_t size = 1 + reply.chance.Below(kLargest);
    for (std::size_t at = 0; at < body.size(); at += size) {
        constexpr const char* kDigits = "0123456789abcdef";
        const std::size_t length = std::min(size, body.size() - at);
        const std::string digits{kDigits[length / 256], kDigits[length / 16 % 16],
                                 kDigits[length % 16]};
        reply.text += (reply.chance.OnceIn(kSoundOnes) ? reply.value : digits) + "\r\n" +
                      body.substr(at, size) + "\r\n";
    }
    reply.text += "0\r\n\r\n";
}

void ChangeBody(Spoiled reply) {
    SetBody(reply, reply.value);
}

void GrowBody(Spoiled reply) {
    SetBody(reply, Grown(Body(reply), reply));
}

void FillTexts(Spoiled reply) {
    Fill(reply, [](const std::string& text) {
        return text.find_first_not_of(" \r\n/?>") != std::string::npos;
    });
}

void FillNumbers(Spoiled reply) {
    Fill(reply, [](const std::string& text) {
        return text.find_first_not_of("0123456789+-.PTSMH") == std::string::npos;
    });
}

void ChangePrefix(Spoiled reply) {
    constexpr std::string_view kDeclaration = "xmlns:";
    std::string body = Body(reply);
    const std::size_t at = body.find(kDeclaration, reply.chance.Below(body.size() / 2));
    if (at == std::string::npos) {
        return;
    }
    const std::size_t start = at + kDeclaration.size();
    const std::string prefix = body.substr(start, body.find('=', start) - start);
    ReplaceAll(body, "<" + prefix + ":", "<" + reply.value);
    ReplaceAll(body, "</" + prefix + ":", "</" + reply.value);
    if (reply.chance.OnceIn(2)) {
        ReplaceAll(body, "xmlns:" + prefix + "=", "xmlns:q=");
    }
    SetBody(reply, body);
}

void MoveElements(Spoiled reply) {
    std::string body = Body(reply);
    const auto from = std::min(body.find('<', reply.chance.Below(body.size())), body.size());
    const auto to = body.find('<', from + 1 + reply.chance.Below(body.size() / 4 + 1));
    const std::string part = body.substr(from, to == std::string::npos ? to : to - from);
    body.erase(from, part.size());
    body.insert(reply.chance.Below(from), reply.chance.OnceIn(2) ? part : "");
    SetBody(reply, body);
}

void TakeOther(Spoiled reply) {
    reply.text = reply.other;
}

void AddSecond(Spoiled reply) {
    const std::string second = reply.chance.OnceIn(2) ? reply.text : reply.other;
    reply.text += second;
}

}  // namespace camera_sim
