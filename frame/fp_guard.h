// Floating-point entry and exit guard of the vector kernels. At entry the
// x87 control word is guarded first, then MXCSR; at exit the x87 word is
// put back first, then MXCSR with the status flags raised inside kept.
#pragma once

#include <cstdint>

#include <orv/vtm.h>

namespace orv::frame {

inline uint16_t x87_control() {
    uint16_t cw;
    __asm__ volatile("fnstcw %0" : "=m"(cw));
    return cw;
}
inline void x87_set_control(uint16_t cw) { __asm__ volatile("fldcw %0" : : "m"(cw) : "memory"); }
inline void x87_clear_exceptions() { __asm__ volatile("fnclex" ::: "memory"); }
inline uint16_t x87_status() {
    uint16_t sw;
    __asm__ volatile("fnstsw %0" : "=m"(sw));
    return sw;
}
inline uint32_t mxcsr() {
    uint32_t m;
    __asm__ volatile("stmxcsr %0" : "=m"(m));
    return m;
}
inline void set_mxcsr(uint32_t m) { __asm__ volatile("ldmxcsr %0" : : "m"(m) : "memory"); }

inline constexpr uint32_t kMxcsrFlags = 0x3F;
inline constexpr uint32_t kMxcsrMasks = 0x1F80;
inline constexpr uint32_t kMxcsrControl = 0xFFC0;  // DAZ, masks, rounding, FZ
inline constexpr uint32_t kMxcsrNearest = 0x1F80;  // all masked, nearest
inline constexpr uint32_t kMxcsrNearestFtz = 0x9FC0;  // and FTZ, DAZ

class FpGuard {
public:
    // Entry of the kernels that keep the caller's rounding and flush bits.
    static FpGuard keep_rounding() {
        FpGuard g;
        g.guard_x87();
        g.saved_mxcsr_ = mxcsr();
        if ((g.saved_mxcsr_ & kMxcsrMasks) != kMxcsrMasks) {
            set_mxcsr(g.saved_mxcsr_ | kMxcsrMasks);
            g.mxcsr_changed_ = true;
        }
        return g;
    }

    // Entry of the kernels that read the mode word: round to nearest, all
    // exceptions masked, flush-to-zero only for the exact field 0x280000.
    static FpGuard from_mode(uint32_t mode) {
        FpGuard g;
        g.guard_x87();
        g.saved_mxcsr_ = mxcsr();
        const uint32_t target =
            (mode & VTM_DENORMAL_MASK) == VTM_FTZDAZ_ON ? kMxcsrNearestFtz : kMxcsrNearest;
        if ((g.saved_mxcsr_ & kMxcsrControl) != target) {
            set_mxcsr((g.saved_mxcsr_ & ~kMxcsrControl) | target);
            g.mxcsr_changed_ = true;
        }
        return g;
    }

    FpGuard(const FpGuard&) = delete;
    FpGuard& operator=(const FpGuard&) = delete;
    FpGuard(FpGuard&& o) noexcept
        : saved_x87_(o.saved_x87_), saved_mxcsr_(o.saved_mxcsr_),
          x87_changed_(o.x87_changed_), mxcsr_changed_(o.mxcsr_changed_) {
        o.x87_changed_ = o.mxcsr_changed_ = false;
    }

    ~FpGuard() {
        if (x87_changed_) x87_set_control(saved_x87_);
        if (mxcsr_changed_) set_mxcsr(saved_mxcsr_ | (mxcsr() & kMxcsrFlags));
    }

private:
    FpGuard() = default;
    void guard_x87() {
        saved_x87_ = x87_control();
        if ((saved_x87_ & 0x3F) != 0x3F) {
            x87_clear_exceptions();
            x87_set_control(static_cast<uint16_t>(saved_x87_ | 0x3F));
            x87_changed_ = true;
        }
    }

    uint16_t saved_x87_ = 0;
    uint32_t saved_mxcsr_ = 0;
    bool x87_changed_ = false;
    bool mxcsr_changed_ = false;
};

}  // namespace orv::frame
