#include "system/windows/Utf16.h"

#include <windows.h>

namespace onvifctl {

std::wstring ToUtf16(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');  // never more units than bytes
    const int length =
        text.empty() ? 0 : MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

std::string ToUtf8(std::wstring_view text) {
    const std::size_t most = 3 * text.size();  // bytes of a unit, half a pair among them
    std::string narrow(most, '\0');
    const int length =
        text.empty() ? 0
                     : WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                           narrow.data(), static_cast<int>(most), nullptr, nullptr);
    narrow.resize(static_cast<std::size_t>(length));
    return narrow;
}

}  // namespace onvifctl
