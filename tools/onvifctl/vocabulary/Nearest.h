/// @file
/// Suggestions for words that were mistyped.
#ifndef ONVIFCTL_VOCABULARY_NEAREST_H
#define ONVIFCTL_VOCABULARY_NEAREST_H

#include <string>
#include <string_view>
#include <vector>

namespace onvifctl {

/// The word that somebody most likely meant, whatever the case of its letters; empty when none is
/// near.
std::string Nearest(std::string_view typed, const std::vector<std::string>& words);

/// ": did you mean WORD?", or nothing.
std::string DidYouMean(std::string_view typed, const std::vector<std::string>& words);

}  // namespace onvifctl

#endif
