// Failure injection for tests, one scheme for every subsystem. Each site is a
// place where a service can fail (an allocation, a file close, a hardware
// source with no data). A test arms a site: the next `pass` hits go through,
// then `fail` hits fail (kEveryHit: all later ones). Unarmed sites cost one
// relaxed atomic load.
#pragma once

#include <atomic>

namespace orv::fault {

enum Site : int {
    kTlsAlloc,       // thread-local slot creation
    kTlsSet,         // storing a non-null value in the slot
    kHeapCreate,     // the private heap
    kHeapAlloc,      // a block of the private heap
    kRngAllocation,  // streams, chunk nodes, chunk data, name copies
    kRngFileClose,   // closing a stream file
    kRdrandNoData,   // one RDRAND attempt reports no data
    kSiteCount
};

inline constexpr int kEveryHit = -1;

struct Arming {
    std::atomic<int> pass{0};
    std::atomic<int> fail{0};  // 0: unarmed
};

inline Arming& arming(Site s) {
    static Arming sites[kSiteCount];
    return sites[s];
}

inline void arm(Site s, int pass, int fail = 1) {
    arming(s).pass.store(pass, std::memory_order_relaxed);
    arming(s).fail.store(fail, std::memory_order_relaxed);
}

inline void disarm_all() {
    for (int s = 0; s < kSiteCount; ++s) arm(static_cast<Site>(s), 0, 0);
}

// True when this hit of the site is to fail.
inline bool hit(Site s) {
    Arming& a = arming(s);
    int fail = a.fail.load(std::memory_order_relaxed);
    if (fail == 0) return false;
    int pass = a.pass.load(std::memory_order_relaxed);
    while (pass > 0)
        if (a.pass.compare_exchange_weak(pass, pass - 1, std::memory_order_relaxed)) return false;
    if (fail == kEveryHit) return true;
    while (fail > 0)
        if (a.fail.compare_exchange_weak(fail, fail - 1, std::memory_order_relaxed)) return true;
    return false;
}

// Disarms everything when a test scope ends.
struct DisarmOnExit {
    ~DisarmOnExit() { disarm_all(); }
};

}  // namespace orv::fault
