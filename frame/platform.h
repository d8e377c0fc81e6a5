// The operating-system services behind the thread records: a thread-local
// slot (a pthread key whose destructor plays thread detach) and a private
// heap (a locked list of zero-filled blocks, destroyed as a whole). Tests
// reach the failure paths through the sites of frame/fault_injection.h.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orv::frame::platform {

inline constexpr int64_t kNoSlot = -1;

using ThreadExitFn = void (*)(void* value);

int64_t tls_alloc(ThreadExitFn on_thread_exit);  // kNoSlot on failure
void tls_free(int64_t slot);
void* tls_get(int64_t slot);
bool tls_set(int64_t slot, void* value);

struct Heap;
Heap* heap_create();  // null on failure
void heap_destroy(Heap* heap);
void* heap_alloc(Heap* heap, std::size_t size);  // zero-filled; null on failure
void heap_free(Heap* heap, void* block);
std::size_t heap_live_blocks(const Heap* heap);

}  // namespace orv::frame::platform
