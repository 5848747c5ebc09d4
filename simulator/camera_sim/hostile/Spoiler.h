/// @file
/// A camera's replies on their way out, where some are spoiled.
#ifndef CAMERA_SIM_HOSTILE_SPOILER_H
#define CAMERA_SIM_HOSTILE_SPOILER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/hostile/SpoilKinds.h"

namespace camera_sim {

/// Which replies are spoiled, and how.
struct Spoiling {
    std::string kind = "none";  ///< one that SpoilKinds() names, or "all": any of them
    std::uint64_t seed = 1;     ///< the same requests in the same order: the same replies
    std::size_t oneIn = 1;      ///< one of so many requests is met; 0: none
};

/// Reads KIND[:SEED[:N]]. Nothing when @p text is not of that form; @p error then says why.
std::optional<Spoiling> ParseSpoiling(std::string_view text, std::string& error);

/// Explains that form.
std::string_view SpoilingSyntax();

/// Not safe for use by several threads at once.
class CSpoiler {
 public:
    /// From now on. False, and nothing changes, when there is no such kind.
    bool Begin(const Spoiling& spoiling);

    /// How a new connection ends at once, if it does.
    std::optional<Reply::Ending> AtConnection();
    /// Spoils what was to be sent. The seed, the operation and how often it has been asked for
    /// since Begin decide whether and how.
    void Spoil(std::string_view operation, Reply& reply);

 private:
    /// The kind that meets the next request; null: none.
    const SpoilKind* Draw(CChance& chance) const;
    CChance NextChance(std::string_view operation);
    /// One of the replies that are kept, with this one from now on; itself if there is no other.
    const std::string& OtherThan(const std::string& reply, CChance& chance);

    std::vector<const SpoilKind*> kinds_;  // those that are drawn from; empty: nothing is spoiled
    std::uint64_t seed_ = 0;
    std::size_t oneIn_ = 0;
    std::map<std::string, std::uint64_t, std::less<>> asked_;  // by operation
    std::vector<std::string> replies_;  // some, to answer other requests with
};

}  // namespace camera_sim

#endif
