// The stream record: a 16-byte header with the generator's state behind it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/export.h"
#include "rng/chunks.h"

namespace orv::rng {

struct StreamHeader {
    uint32_t brngId;
    uint32_t mark;
    ChunkNode* chunks;
};
static_assert(sizeof(StreamHeader) == 16, "state starts at offset 16");

inline constexpr std::size_t kStateOffset = 16;

inline StreamHeader* header(void* s) { return static_cast<StreamHeader*>(s); }
inline const StreamHeader* header(const void* s) { return static_cast<const StreamHeader*>(s); }

template <typename State>
State* state(void* s) {
    return reinterpret_cast<State*>(static_cast<unsigned char*>(s) + kStateOffset);
}

// Allocation of streams, chunk nodes, chunk data and name copies.
void* allocate_block(std::size_t bytes);

// Loading with an upper bound on the bytes that can be read from the image
// (the exported loader trusts the image and passes SIZE_MAX).
int32_t load_stream_image(void** out, const char* memory, std::size_t limit);

}  // namespace orv::rng
