#include "platform/windows/WideText.h"

#include <windows.h>

#include <algorithm>
#include <climits>

namespace onvif_client {

namespace {

template <typename Text>
int Length(const Text& text) {
    return static_cast<int>(std::min<std::size_t>(text.size(), INT_MAX));
}

std::optional<std::wstring> Widen(std::string_view utf8, DWORD flags) {
    const int length = MultiByteToWideChar(CP_UTF8, flags, utf8.data(), Length(utf8), nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, flags, utf8.data(), Length(utf8), wide.data(), length);
    return length > 0 || utf8.empty() ? std::optional(std::move(wide)) : std::nullopt;
}

}  // namespace

std::wstring WideText(std::string_view utf8) {
    return Widen(utf8, 0).value_or(L"");
}

std::optional<std::wstring> ExactWideText(std::string_view utf8) {
    return Widen(utf8, MB_ERR_INVALID_CHARS);
}

std::string Utf8Text(std::wstring_view wide) {
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), Length(wide), nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), Length(wide), utf8.data(), length, nullptr,
                        nullptr);
    return utf8;
}

}  // namespace onvif_client
