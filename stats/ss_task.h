// Internal helpers shared by the statistics task functions and compute
// entries: integer access through the record, the variable mask, buffers.
#pragma once

#include <orv/orv_core.h>
#include <orv/stats.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <sys/mman.h>

#include "frame/export.h"

// Table-based square root used by the finishing steps of the compute entries.
extern "C" __attribute__((visibility("hidden"))) double __vstdSqrt(double x);

namespace orv::ss {

inline constexpr uint8_t kTypeTag = 2;

// An integer reached through the record: 32- or 64-bit by int_is_64.
inline int64_t read_int(const void* p, int is64) {
    if (is64) return *static_cast<const int64_t*>(p);
    return *static_cast<const int32_t*>(p);
}

// Entry j of a caller's integer array, read with a stride of int_is_64 + 1
// 32-bit words.
inline int64_t read_int_at(const void* p, int is64, int64_t j) {
    return read_int(static_cast<const int32_t*>(p) + j * (is64 + 1), is64);
}

// a * b elements of `elem` bytes from a caller's counts: false when the count
// or its size in bytes cannot be represented, so that no wrapped size ever
// reaches an allocation or an index.
inline bool checked_count(int64_t a, int64_t b, std::size_t elem, int64_t* out) {
    int64_t c = 0;
    std::size_t bytes = 0;
    if (a < 0 || b < 0 || __builtin_mul_overflow(a, b, &c) ||
        __builtin_mul_overflow(static_cast<std::size_t>(c), elem, &bytes) ||
        bytes > static_cast<std::size_t>(INT64_MAX))
        return false;
    *out = c;
    return true;
}

// The variable mask: all variables take part when indices is null.
struct Mask {
    const void* indices;
    int is64;
    bool admits(int64_t j) const { return !indices || read_int_at(indices, is64, j) != 0; }
};

// Fresh pages cost a fault each at first touch (10 microseconds and more on
// a busy machine); a large work area asks for transparent huge pages, 512
// times fewer faults. Only the whole 2 MiB pages inside the block are advised.
inline void advise_huge_pages(void* p, std::size_t bytes) {
    constexpr std::uintptr_t kHuge = std::uintptr_t(2) << 20;
    if (bytes < 4 * kHuge) return;
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(p) + kHuge - 1) & ~(kHuge - 1);
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(p) + bytes) & ~(kHuge - 1);
    if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

// A buffer from orv_serv_allocate at the subsystem's alignment, released at
// scope exit unless handed over.
template <typename T>
class Buffer {
public:
    Buffer() = default;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() { reset(); }
    // False on failure; the contents are cleared when zero is set.
    bool allocate(std::size_t count, bool zero) {
        reset();
        if (count == 0) count = 1;
        if (count > SIZE_MAX / sizeof(T)) return false;
        ptr_ = static_cast<T*>(orv_serv_allocate(count * sizeof(T), orv::kAlignment));
        if (ptr_) advise_huge_pages(ptr_, count * sizeof(T));
        if (ptr_ && zero) std::memset(static_cast<void*>(ptr_), 0, count * sizeof(T));
        return ptr_ != nullptr;
    }
    void reset() {
        if (ptr_) orv_serv_deallocate(ptr_);
        ptr_ = nullptr;
    }
    T* get() const { return ptr_; }

private:
    T* ptr_ = nullptr;
};

}  // namespace orv::ss
