// Module lifetime and per-thread records. The module handler keeps the
// reason codes of the operating system's entry convention; on Linux the ELF
// constructor calls it for the load, the ELF destructor at process end, and
// the thread key's destructor plays thread detach.
#include "frame/thread_record.h"

#include <atomic>

#include <orv/orv_core.h>

#include "frame/platform.h"

namespace orv::frame {
namespace {

namespace pf = platform;

std::atomic<int64_t> g_slot{pf::kNoSlot};
std::atomic<pf::Heap*> g_heap{nullptr};
orv_lock_t g_slot_lock{0};
orv_lock_t g_heap_lock{0};

constexpr int kMessageNoThreadState = 773;

void thread_detach_value(void* value) {
    if (value != nullptr) pf::heap_free(g_heap.load(std::memory_order_acquire), value);
}

// Thread exit through the key's destructor: the key's value is already
// null, so only the block goes back to the heap.
void on_thread_exit(void* value) { thread_detach_value(value); }

void thread_detach() {
    const int64_t slot = g_slot.load(std::memory_order_acquire);
    if (slot == pf::kNoSlot) return;
    thread_detach_value(pf::tls_get(slot));
    pf::tls_set(slot, nullptr);
}

}  // namespace

VtmThreadRecord* create_thread_record() {
    pf::Heap* heap = g_heap.load(std::memory_order_acquire);
    if (heap == nullptr) {
        orv_serv_lock(&g_heap_lock);
        heap = g_heap.load(std::memory_order_acquire);
        if (heap == nullptr) {
            heap = pf::heap_create();
            g_heap.store(heap, std::memory_order_release);
        }
        orv_serv_unlock(&g_heap_lock);
    }
    if (heap != nullptr) {
        auto* rec = static_cast<VtmThreadRecord*>(pf::heap_alloc(heap, sizeof(VtmThreadRecord)));
        if (rec != nullptr) {
            if (pf::tls_set(g_slot.load(std::memory_order_acquire), rec)) {
                // interfInputVectorPointer keeps what the heap block holds.
                rec->mode = 0;
                rec->errStatus = 0;
                rec->errorCallBack = nullptr;
                return rec;
            }
            pf::heap_free(heap, rec);
        }
    }
    orv_serv_print(1, kMessageNoThreadState, 0);
    return nullptr;
}

int module_initialize() {
    orv_serv_lock(&g_slot_lock);
    if (g_slot.load(std::memory_order_acquire) != pf::kNoSlot) {
        orv_serv_unlock(&g_slot_lock);
        return 1;
    }
    const int64_t slot = pf::tls_alloc(on_thread_exit);
    g_slot.store(slot, std::memory_order_release);
    orv_serv_unlock(&g_slot_lock);
    if (slot == pf::kNoSlot) {
        orv_serv_print(1, kMessageNoThreadState, 0);
        return 0;
    }
    return create_thread_record() != nullptr ? 1 : 0;
}

VtmThreadRecord* thread_record() {
    int64_t slot = g_slot.load(std::memory_order_acquire);
    if (slot == pf::kNoSlot) {
        module_initialize();
        slot = g_slot.load(std::memory_order_acquire);
    }
    if (slot != pf::kNoSlot) {
        if (auto* rec = static_cast<VtmThreadRecord*>(pf::tls_get(slot))) return rec;
        if (VtmThreadRecord* rec = create_thread_record()) return rec;
    } else {
        // No slot could be made: nothing can hold a record for this thread.
        orv_serv_print(1, kMessageNoThreadState, 0);
    }
    orv_serv_exit(3);
}

int module_entry(void* module, uint32_t reason, void* reserved) {
    (void)module;
    switch (reason) {
        case kProcessAttach:
            return module_initialize() != 0 ? 1 : 0;
        case kThreadAttach:
            return 1;
        case kThreadDetach:
            thread_detach();
            return 1;
        case kProcessDetach: {
            if (reserved != nullptr) return 1;  // the process is ending
            thread_detach();
            const int64_t old = g_slot.exchange(pf::kNoSlot, std::memory_order_acq_rel);
            if (old != pf::kNoSlot) pf::tls_free(old);
            pf::Heap* heap = g_heap.exchange(nullptr, std::memory_order_acq_rel);
            if (heap != nullptr) pf::heap_destroy(heap);
            return 1;
        }
        default:
            return 1;
    }
}

bool has_slot() { return g_slot.load(std::memory_order_acquire) != pf::kNoSlot; }

VtmThreadRecord* peek_thread_record() {
    const int64_t slot = g_slot.load(std::memory_order_acquire);
    return slot == pf::kNoSlot ? nullptr : static_cast<VtmThreadRecord*>(pf::tls_get(slot));
}

std::size_t live_records() { return pf::heap_live_blocks(g_heap.load(std::memory_order_acquire)); }

namespace {

// Load: run process attach. A refused load cannot be expressed on Linux;
// message 773 has been printed, and the first call that needs a record
// tries again and ends the process if it still fails.
__attribute__((constructor)) void on_load() { module_entry(nullptr, kProcessAttach, nullptr); }

// The library is never unmapped before the process ends (it is linked with
// nodelete), so the destructor runs only at process end: nothing to do.
__attribute__((destructor)) void on_unload() {
    static int process_ending = 1;
    module_entry(nullptr, kProcessDetach, &process_ending);
}

}  // namespace
}  // namespace orv::frame

extern "C" {

__attribute__((visibility("default"))) void* orv_vtm_kernel_SetInterfInputVectorPointer(void* base) {
    orv::frame::thread_record()->interfInputVectorPointer = static_cast<unsigned char*>(base);
    return base;
}

__attribute__((visibility("default"), alias("orv_vtm_kernel_SetInterfInputVectorPointer"))) void*
_vtmSetInterfInputVectorPointer(void* base);

}  // extern "C"
