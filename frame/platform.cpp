#include "frame/platform.h"

#include <pthread.h>

#include <cstdlib>
#include <mutex>

#include "frame/fault_injection.h"

namespace orv::frame::platform {

int64_t tls_alloc(ThreadExitFn on_thread_exit) {
    if (fault::hit(fault::kTlsAlloc)) return kNoSlot;
    pthread_key_t key;
    if (pthread_key_create(&key, on_thread_exit) != 0) return kNoSlot;
    return static_cast<int64_t>(key);
}

void tls_free(int64_t slot) { pthread_key_delete(static_cast<pthread_key_t>(slot)); }

void* tls_get(int64_t slot) { return pthread_getspecific(static_cast<pthread_key_t>(slot)); }

bool tls_set(int64_t slot, void* value) {
    if (value != nullptr && fault::hit(fault::kTlsSet)) return false;
    return pthread_setspecific(static_cast<pthread_key_t>(slot), value) == 0;
}

// Each block carries list links in front of the caller's part, so that
// destroying the heap releases the blocks of threads that are still alive.
struct Block {
    Block* prev;
    Block* next;
};
static_assert(sizeof(Block) == 16, "caller's part stays 16-byte aligned");

struct Heap {
    std::mutex lock;
    Block head{&head, &head};
    std::size_t live = 0;
};

Heap* heap_create() {
    if (fault::hit(fault::kHeapCreate)) return nullptr;
    return new (std::nothrow) Heap;
}

void heap_destroy(Heap* heap) {
    if (heap == nullptr) return;
    for (Block* b = heap->head.next; b != &heap->head;) {
        Block* next = b->next;
        std::free(b);
        b = next;
    }
    delete heap;
}

void* heap_alloc(Heap* heap, std::size_t size) {
    if (fault::hit(fault::kHeapAlloc)) return nullptr;
    auto* b = static_cast<Block*>(std::calloc(1, sizeof(Block) + size));
    if (b == nullptr) return nullptr;
    std::lock_guard<std::mutex> g(heap->lock);
    b->next = heap->head.next;
    b->prev = &heap->head;
    heap->head.next->prev = b;
    heap->head.next = b;
    ++heap->live;
    return b + 1;
}

void heap_free(Heap* heap, void* block) {
    if (block == nullptr) return;
    Block* b = static_cast<Block*>(block) - 1;
    {
        std::lock_guard<std::mutex> g(heap->lock);
        b->prev->next = b->next;
        b->next->prev = b->prev;
        --heap->live;
    }
    std::free(b);
}

std::size_t heap_live_blocks(const Heap* heap) {
    if (heap == nullptr) return 0;
    return heap->live;
}

}  // namespace orv::frame::platform
