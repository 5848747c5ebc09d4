/// @file
/// Texts known at compile time, to be joined and to be given to templates.
#ifndef ONVIF_CLIENT_COMMON_FIXEDTEXT_H
#define ONVIF_CLIENT_COMMON_FIXEDTEXT_H

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace onvif_client {

/// A text of N characters.
template <std::size_t N>
struct FixedText {
    char text[N + 1] = {};

    constexpr FixedText() = default;
    // NOLINTNEXTLINE: made from literals without ceremony.
    constexpr FixedText(const char (&literal)[N + 1]) { std::copy_n(literal, N, text); }

    // NOLINTNEXTLINE: used wherever a text is wanted.
    constexpr operator std::string_view() const { return {text, N}; }
};

template <std::size_t M>
FixedText(const char (&)[M]) -> FixedText<M - 1>;

template <std::size_t A, std::size_t B>
consteval FixedText<A + B> operator+(const FixedText<A>& a, const FixedText<B>& b) {
    FixedText<A + B> sum;
    std::copy_n(b.text, B, std::copy_n(a.text, A, sum.text));
    return sum;
}

}  // namespace onvif_client

#endif
