// Chunks: typed blocks hung on a stream, and the process-wide table of
// shared read-only blocks with reference counts.
#pragma once

#include <cstdint>

#include <orv/rng.h>

namespace orv::rng {

struct ChunkNode {
    int32_t type;
    int32_t size;
    void* data;
    ChunkNode* next;
    OrvChunkId id;
};

inline constexpr int kGlobTableEntries = 128;

// Count of used entries of the shared table (for tests).
int32_t glob_table_count();

}  // namespace orv::rng
