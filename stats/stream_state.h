// The summaries that _vstdSSStreamQuantiles keeps in the task between calls:
// one record per variable, each with a growing array of chunk records. A
// chunk summarises one stretch of the stream (each twice as long as the one
// before) in levels of sorted values with rank bounds (Zhang and Wang).
#pragma once

#include <cstdint>

namespace orv::ss {

template <typename T>
struct StreamChunk {
    int64_t seen;         // observations taken into this chunk
    int64_t block_size;   // b, the size of a level-0 block
    int64_t level_count;  // L; levels 0 to L exist
    int64_t top_level;    // highest level used so far
    int64_t fill;         // elements now in level 0
    int64_t* occupied;    // L + 1 flags; one allocation with the rows below
    T* values;            // (L + 1) rows of b + 1, sorted in each row
    int64_t* rmin;        // lowest possible rank of each value in its row's stretch
    int64_t* rmax;        // highest possible rank
};

struct StreamVariable {
    int64_t chunk_count;
    int64_t current_chunk;  // -1 before the first
    int64_t active;         // fixed by the first call
    void* chunks;           // StreamChunk<T>[chunk_count]
};

// Ahead of the records, in the same allocation: the number of records, so
// that a later call with another p and the release never read past them.
struct StreamHeader {
    int64_t p;
    int64_t reserved;
};

inline StreamHeader* stream_header(void* state) {
    return reinterpret_cast<StreamHeader*>(static_cast<char*>(state) - sizeof(StreamHeader));
}

// Bytes of one chunk's level storage: flags, two rank rows and one value row
// per level.
template <typename T>
inline int64_t chunk_bytes(int64_t b, int64_t levels) {
    return (levels + 1) * 8 + (levels + 1) * (b + 1) * (16 + static_cast<int64_t>(sizeof(T)));
}

}  // namespace orv::ss
