// What every subsystem shares at the library's boundary: the attribute that
// exports a C entry point (all else is hidden), and the alignment of the
// blocks the library allocates (streams, chunks, tasks, work areas).
#pragma once

#include <cstddef>

#define ORV_EXPORT extern "C" __attribute__((visibility("default")))

namespace orv {
inline constexpr std::size_t kAlignment = 128;
}
