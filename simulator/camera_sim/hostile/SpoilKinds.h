/// @file
/// The ways in which a camera's reply can be wrong.
#ifndef CAMERA_SIM_HOSTILE_SPOILKINDS_H
#define CAMERA_SIM_HOSTILE_SPOILKINDS_H

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/http/Http.h"

namespace camera_sim {

/// What is drawn by lot: the same for the same seed.
class CChance {
 public:
    explicit CChance(const std::string& seed) : engine_(std::hash<std::string>()(seed)) {}

    /// 0 for a @p count of 0.
    std::size_t Below(std::size_t count) { return count == 0 ? 0 : engine_() % count; }
    /// True once in @p count times; never for a @p count of 0.
    bool OnceIn(std::size_t count) { return count != 0 && Below(count) == 0; }

 private:
    std::mt19937_64 engine_;
};

/// A whole HTTP reply that is to be spoiled.
struct Spoiled {
    std::string& text;
    const std::string& other;  ///< the reply to another request
    CChance& chance;
    const std::string& value;  ///< one of the kind's
};

/// One way to be wrong: what becomes of the bytes, how many of them go out, and how it ends then.
struct SpoilKind {
    enum class Reach {
        kConnected,     ///< the request is not read
        kAsked,         ///< the request is carried out and not answered
        kHalfAnswered,  ///< a part of the reply goes out
        kDripped,       ///< the first or last bytes go out one at a time
        kAnswered,
    };
    std::string_view name;
    std::string_view help;
    void (*spoil)(Spoiled reply) = nullptr;
    std::vector<std::string> values = {""};
    Reach reach = Reach::kAnswered;
    Reply::Ending ending = Reply::Ending::kSend;

    /// Whether an exchange takes seconds, for a client that waits.
    bool IsSlow() const { return ending == Reply::Ending::kSilence || reach == Reach::kDripped; }
};

/// All of them; the first one, "none", spoils nothing.
const std::vector<SpoilKind>& SpoilKinds();
/// The names and what they mean, a line each.
std::string SpoilKindList();

}  // namespace camera_sim

#endif
