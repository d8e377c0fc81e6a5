// What every compute entry of the statistics shares: a typed view of the
// task's fields with the statuses of missing ones (from the one parameter
// list), the list of admitted variables, and the runners over the caller's
// threading table. Each entry's own file holds only what is particular to it.
#pragma once

#include "stats/ss_task.h"

#include <orv/threading.h>

#include <algorithm>
#include <cstddef>

namespace orv::ss {

// The task's parameter fields, in the order of the parameter list.
enum class Field : int {
#define SS_PARAM(no, field, side, status, compute_status) field,
#include <orv/ss_params.def>
#undef SS_PARAM
};

inline constexpr std::size_t kFieldOffset[] = {
#define SS_PARAM(no, field, side, status, compute_status) offsetof(SsTask, field),
#include <orv/ss_params.def>
#undef SS_PARAM
};

// Status of a compute entry that needs the field and finds it null.
inline constexpr int32_t kFieldMissing[] = {
#define SS_PARAM(no, field, side, status, compute_status) compute_status,
#include <orv/ss_params.def>
#undef SS_PARAM
};

// The task as an entry of element type T reads it.
template <typename T>
struct TaskView {
    SsTask* task;

    int is64() const { return task->int_is_64; }
    void* ptr(Field f) const {
        void* v;
        std::memcpy(&v, reinterpret_cast<const char*>(task) + kFieldOffset[static_cast<int>(f)],
                    sizeof v);
        return v;
    }
    T* real(Field f) const { return static_cast<T*>(ptr(f)); }
    int64_t integer(Field f) const { return read_int(ptr(f), is64()); }
    static int32_t missing(Field f) { return kFieldMissing[static_cast<int>(f)]; }
    Mask mask() const { return Mask{task->indices, is64()}; }
    // A record made by a creator holds its precision; the entry of the other
    // precision would read and write its arrays with the wrong element size.
    // A cleared record filled by the library's own code carries no tag.
    bool precision_matches() const {
        return task->type_tag != kTypeTag || task->is_double == (sizeof(T) == 8);
    }
};

// The numbers of the admitted variables in ascending order: results of
// several entries are compact, row a belonging to the a-th admitted variable.
struct Admitted {
    Buffer<int64_t> list;
    int64_t count = 0;
    bool build(const Mask& mask, int64_t p) {
        if (!list.allocate(static_cast<std::size_t>(p), false)) return false;
        count = 0;
        for (int64_t j = 0; j < p; ++j)
            if (mask.admits(j)) list.get()[count++] = j;
        return true;
    }
    int64_t operator[](int64_t a) const { return list.get()[a]; }
};

// Threads the caller's table offers; a missing table or slot counts as one.
inline int64_t max_threads(const SsThreadingTable* t) {
    const int64_t m = t && t->max_threads ? t->max_threads() : 1;
    return std::max<int64_t>(1, m);
}

// Pieces through slot 2, items through slot 0; on the calling thread when
// the table lacks the slot.
inline void run_pieces(const SsThreadingTable* t, int npieces, void* ctx, SsPieceFn fn) {
    if (t && t->run_pieces)
        t->run_pieces(npieces, ctx, fn);
    else
        for (int i = 0; i < npieces; ++i) fn(i, 0, npieces, ctx);
}
inline void run_items(const SsThreadingTable* t, int count, int threads, void* ctx, SsItemFn fn) {
    if (t && t->run_items)
        t->run_items(count, threads, ctx, fn);
    else
        for (int i = 0; i < count; ++i) fn(i, 0, 1, ctx);
}

}  // namespace orv::ss
