#include "camera_sim/http/Base64.h"

#include <openssl/evp.h>

namespace camera_sim {
namespace {

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

std::string EncodeBase64(std::string_view bytes) {
    // One character more, for the zero byte that the encoder adds.
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), Bytes(bytes),
                    static_cast<int>(bytes.size()));
    text.pop_back();
    return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::string bytes(text.size() / 4 * 3, '\0');
    const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()), Bytes(text),
                                       static_cast<int>(text.size()));
    if (length < 0) {
        return std::nullopt;
    }
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    bytes.resize(static_cast<std::size_t>(length) - padding);
    return bytes;
}

}  // namespace camera_sim
