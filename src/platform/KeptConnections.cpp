#include "platform/KeptTable.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <map>
#include <utility>

#include "platform/Mutex.h"
#include "platform/PerProcess.h"
#include "platform/Reactor.h"

namespace onvif_client {

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::ptrdiff_t kMostOfAnOwner = 2;

struct Kept {
    CDescriptor descriptor;
    Ipv4Endpoint peer;
    SteadyClock::time_point since;
    SteadyClock::time_point until;
};

bool IsOpenAndSilent(SystemHandle descriptor) {
    char unasked = 0;
    std::size_t received = 0;
    return ReceiveNow(descriptor, &unasked, sizeof unasked, received) == Moved::kWouldWait;
}

/// The kept connections of all owners. What is taken out is closed without the lock. One timer of
/// the reactor closes those whose time is over; an owner's exchanges leave it alone, as a time that
/// is over too early only has it look again.
class CKeptTable {
 public:
    using Owner = const CKeptConnections*;
    using Connections = std::multimap<Owner, Kept>;
    using Node = Connections::node_type;

    static CKeptTable& Instance() { return Table().Get(); }
    /// Null where nothing was ever kept in this process.
    static CKeptTable* Find() { return Table().Find(); }

    /// The owner's youngest one to that peer; empty without any.
    Node TakeYoungest(Owner owner, const Ipv4Endpoint& peer) {
        const CLockGuard guard(lock_);
        const auto [begin, end] = connections_.equal_range(owner);
        auto youngest = end;
        for (auto each = begin; each != end; ++each) {
            if (each->second.peer == peer &&
                (youngest == end || each->second.since > youngest->second.since)) {
                youngest = each;
            }
        }
        return youngest == end ? Node() : connections_.extract(youngest);
    }

    void Add(Owner owner, Kept kept) {
        Node surplus;
        const CLockGuard guard(lock_);
        const auto [begin, end] = connections_.equal_range(owner);
        if (std::distance(begin, end) >= kMostOfAnOwner) {
            surplus = connections_.extract(std::min_element(begin, end, EndsEarlier));
        }
        const auto until = kept.until;
        const auto added = connections_.emplace(owner, std::move(kept));
        if (!armed_ || until < armedFor_) {
            if (!ArmLocked(nullptr, until)) {
                connections_.erase(added);
            }
        }
    }

    Connections TakeAll(Owner owner) {
        Connections taken;
        const CLockGuard guard(lock_);
        for (auto each = connections_.find(owner); each != connections_.end();
             each = connections_.find(owner)) {
            taken.insert(connections_.extract(each));
        }
        return taken;
    }

    Connections TakeAll() {
        const CLockGuard guard(lock_);
        armed_ = false;
        return std::exchange(connections_, {});
    }

 private:
    static CPerProcess<CKeptTable>& Table() {
        static constinit CPerProcess<CKeptTable> table;
        return table;
    }

    static bool EndsEarlier(const Connections::value_type& one,
                            const Connections::value_type& other) {
        return one.second.until < other.second.until;
    }

    /// @param reactor  null: the one in force.
    /// @return false when there is none to be had.
    bool ArmLocked(CReactor* reactor, SteadyClock::time_point time) REQUIRES(lock_) {
        const auto left = std::chrono::ceil<milliseconds>(time - SteadyClock::now());
        try {
            const auto inForce = reactor == nullptr ? CReactor::Get() : nullptr;
            (reactor == nullptr ? *inForce : *reactor)
                .CallAfter(std::max(left, milliseconds(0)),
                           [this](CReactor& calling) { CloseOverdue(calling); });
            armedFor_ = time;
            armed_ = true;
        } catch (const std::exception&) {
            armed_ = false;
        }
        return armed_;
    }

    /// On a thread of the reactor's.
    void CloseOverdue(CReactor& reactor) {
        Connections overdue;
        const CLockGuard guard(lock_);
        const auto now = SteadyClock::now();
        for (auto each = connections_.begin(); each != connections_.end();) {
            const auto next = std::next(each);
            if (each->second.until <= now) {
                overdue.insert(connections_.extract(each));
            }
            each = next;
        }
        const auto first = std::min_element(connections_.begin(), connections_.end(), EndsEarlier);
        armed_ = false;
        if (first != connections_.end() && !ArmLocked(&reactor, first->second.until)) {
            overdue.merge(connections_);
        }
    }

    CMutex lock_;  // before the reactor's
    Connections connections_ GUARDED_BY(lock_);
    bool armed_ GUARDED_BY(lock_) = false;
    SteadyClock::time_point armedFor_ GUARDED_BY(lock_);
};

}  // namespace

void CKeptConnections::Close() const {
    if (CKeptTable* const table = CKeptTable::Find()) {
        table->TakeAll(this);
    }
}

CDescriptor TakeKept(const CKeptConnections& owner, const Ipv4Endpoint& peer,
                     std::uint32_t idleMs) {
    CKeptTable* const table = CKeptTable::Find();
    while (table != nullptr && idleMs > 0) {
        CKeptTable::Node node = table->TakeYoungest(&owner, peer);
        const auto now = SteadyClock::now();
        if (node.empty() || now > node.mapped().since + milliseconds(idleMs)) {
            break;
        }
        Kept& kept = node.mapped();
        if (now < kept.until && IsOpenAndSilent(kept.descriptor.Get())) {
            return std::move(kept.descriptor);
        }
    }
    return CDescriptor(kNoHandle);
}

void Keep(const CKeptConnections& owner, CDescriptor descriptor, const Ipv4Endpoint& peer,
          std::uint32_t forMs) {
    const auto now = SteadyClock::now();
    try {
        CKeptTable::Instance().Add(&owner, {std::move(descriptor), peer, now,
                                            now + milliseconds(std::min(forMs, kLongestKeptMs))});
    } catch (const std::exception&) {
        // Without memory it is closed, as any connection is without this.
        return;
    }
}

void CloseKeptConnections() {
    if (CKeptTable* const table = CKeptTable::Find()) {
        table->TakeAll();
    }
}

CDescriptor MakeTcpSocketForUse() {
    CDescriptor made = MakeTcpSocket();
    if (made) {
        return made;
    }
    CloseKeptConnections();
    return MakeTcpSocket();
}

}  // namespace onvif_client
