// Aligned allocation, bounded copy and lock objects.
#include <orv/orv_core.h>

#include <errno.h>
#include <sched.h>
#include <stdlib.h>
#include <string.h>

extern "C" {

void* orv_serv_allocate(size_t size, size_t alignment) {
    if (size == 0) return nullptr;
    if (alignment == 0) alignment = 64;
    if ((alignment & (alignment - 1)) != 0) return nullptr;
    if (alignment < sizeof(void*)) alignment = sizeof(void*);
    void* p = nullptr;
    if (posix_memalign(&p, alignment, size) != 0) return nullptr;
    return p;
}

void orv_serv_deallocate(void* block) { free(block); }

int orv_serv_memcpy_s(void* dest, size_t dest_size, const void* src, size_t count) {
    if (count == 0) return 0;
    if (dest == nullptr) return EINVAL;
    if (src == nullptr) {
        memset(dest, 0, dest_size);
        return EINVAL;
    }
    if (count > dest_size) {
        memset(dest, 0, dest_size);
        return ERANGE;
    }
    memmove(dest, src, count);
    return 0;
}

// A test-and-test-and-set lock that yields while it waits: the locks guard
// one-time creations, so waiting is rare and short.
void orv_serv_lock(orv_lock_t* lock) {
    int32_t* s = const_cast<int32_t*>(&lock->state);
    for (;;) {
        if (__atomic_exchange_n(s, 1, __ATOMIC_ACQUIRE) == 0) return;
        while (__atomic_load_n(s, __ATOMIC_RELAXED) != 0) sched_yield();
    }
}

void orv_serv_unlock(orv_lock_t* lock) {
    __atomic_store_n(const_cast<int32_t*>(&lock->state), 0, __ATOMIC_RELEASE);
}

}  // extern "C"
