#include "camera_sim/hostile/Spoiler.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace camera_sim {
namespace {

constexpr std::size_t kMostReplies = 50;
constexpr std::size_t kMostBytes = std::size_t{256} * 1024;
constexpr std::size_t kMostOperations = 1000;
constexpr std::size_t kDrops = 200;
constexpr std::size_t kLongestPause = 4;  // milliseconds, exclusive

std::vector<const SpoilKind*> FindKinds(std::string_view name) {
    std::vector<const SpoilKind*> found;
    for (const SpoilKind& kind : SpoilKinds()) {
        if (name == kind.name || name == "all") {
            found.push_back(&kind);
        }
    }
    return found;
}

template <typename Number>
bool ReadNumber(std::string_view text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end;
}

/// The first or the last bytes one at a time.
void Drip(Reply& reply, CChance& chance) {
    const std::size_t size = reply.bytes.size();
    reply.segment = 1;
    reply.pause = std::chrono::milliseconds(chance.Below(kLongestPause));
    reply.segmentsBegin = chance.OnceIn(2) && size > kDrops ? size - kDrops : 0;
    reply.segmentsEnd = reply.segmentsBegin + kDrops;
}

}  // namespace

std::optional<Spoiling> ParseSpoiling(std::string_view text, std::string& error) {
    Spoiling spoiling;
    const std::size_t colon = std::min(text.find(':'), text.size());
    spoiling.kind = text.substr(0, colon);
    if (FindKinds(spoiling.kind).empty()) {
        error = "unknown kind of spoiling \"" + spoiling.kind + "\"";
        return std::nullopt;
    }
    if (colon == text.size()) {
        return spoiling;
    }
    const std::string_view numbers = text.substr(colon + 1);
    const std::size_t second = numbers.find(':');
    if (!ReadNumber(numbers.substr(0, second), spoiling.seed) ||
        (second != std::string_view::npos &&
         !ReadNumber(numbers.substr(second + 1), spoiling.oneIn))) {
        error = "what follows the kind is no SEED[:N] of whole numbers";
        return std::nullopt;
    }
    return spoiling;
}

std::string_view SpoilingSyntax() {
    return R"(KIND[:SEED[:N]]
KIND is one way in which whole replies are wrong, as bytes and to their end; all: any of them.
SEED (1) decides which replies are spoiled, and how: the same requests get the same replies.
N (1): one of so many requests is met.
)";
}

bool CSpoiler::Begin(const Spoiling& spoiling) {
    auto kinds = FindKinds(spoiling.kind);
    if (kinds.empty()) {
        return false;
    }
    kinds_ = std::move(kinds);
    seed_ = spoiling.seed;
    oneIn_ = spoiling.oneIn;
    asked_.clear();
    return true;
}

CChance CSpoiler::NextChance(std::string_view operation) {
    if (asked_.size() >= kMostOperations) {
        asked_.clear();
    }
    std::string name(operation);
    const std::uint64_t times = asked_[name]++;
    return CChance(std::to_string(seed_) + " " + std::move(name) + " " + std::to_string(times));
}

const SpoilKind* CSpoiler::Draw(CChance& chance) const {
    return chance.OnceIn(oneIn_) ? kinds_[chance.Below(kinds_.size())] : nullptr;
}

const std::string& CSpoiler::OtherThan(const std::string& reply, CChance& chance) {
    if (replies_.size() < kMostReplies && reply.size() <= kMostBytes) {
        replies_.push_back(reply);
    }
    const std::size_t start = chance.Below(replies_.size());
    for (std::size_t i = 0; i < replies_.size(); ++i) {
        const std::string& other = replies_[(start + i) % replies_.size()];
        if (other != reply) {
            return other;
        }
    }
    return reply;
}

std::optional<Reply::Ending> CSpoiler::AtConnection() {
    if (kinds_.empty()) {
        return std::nullopt;
    }
    CChance chance = NextChance("");
    const SpoilKind* kind = Draw(chance);
    return kind != nullptr && kind->reach == SpoilKind::Reach::kConnected
               ? std::optional(kind->ending)
               : std::nullopt;
}

void CSpoiler::Spoil(std::string_view operation, Reply& reply) {
    using Reach = SpoilKind::Reach;
    if (kinds_.empty() || reply.ending != Reply::Ending::kSend) {
        return;
    }
    CChance chance = NextChance(operation.empty() ? "?" : operation);
    const SpoilKind* kind = Draw(chance);
    const std::string other = OtherThan(reply.bytes, chance);
    if (kind == nullptr || kind->reach == Reach::kConnected) {
        return;
    }
    if (kind->spoil != nullptr) {
        const std::string& value = kind->values[chance.Below(kind->values.size())];
        kind->spoil({reply.bytes, other, chance, value});
    }
    if (kind->reach == Reach::kAsked) {
        reply.bytes.clear();
    } else if (kind->reach == Reach::kHalfAnswered) {
        reply.bytes.resize(chance.Below(reply.bytes.size()));
    } else if (kind->reach == Reach::kDripped) {
        Drip(reply, chance);
    }
    reply.ending = kind->ending;
    reply.keepOpen = reply.keepOpen && kind->name == "none";
}

}  // namespace camera_sim
