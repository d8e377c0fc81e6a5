// Chunks on a stream's list, and the process-wide table of shared read-only
// blocks. The table is guarded by a one-word spin lock; chunk lists belong
// to their stream and are not locked.
#include "rng/chunks.h"

#include <x86intrin.h>

#include <cstring>

#include <orv/orv_core.h>

#include "rng/brng_row.h"
#include "rng/stream.h"

namespace {

using orv::rng::ChunkNode;
using orv::rng::header;
using orv::rng::kGlobTableEntries;

// sizes[i] is the byte size of entry i's block when a chunk brought it, or
// -1 when it came from __vstCreateGlobRODataTableEntry without a size.
struct GlobTable {
    int32_t count;
    OrvGlobRODataEntry entries[kGlobTableEntries];
    int32_t sizes[kGlobTableEntries];
};
GlobTable g_table;
uint32_t g_table_lock;

void lock_table() {
    uint32_t expected = 0;
    while (!__atomic_compare_exchange_n(&g_table_lock, &expected, 1u, false, __ATOMIC_ACQUIRE,
                                        __ATOMIC_RELAXED)) {
        expected = 0;
        _mm_pause();
    }
}
void unlock_table() { __atomic_store_n(&g_table_lock, 0u, __ATOMIC_RELEASE); }

bool is_zero(const OrvChunkId& id) { return id.word[0] == 0 && id.word[1] == 0; }
bool same(const OrvChunkId& a, const OrvChunkId& b) {
    return a.word[0] == b.word[0] && a.word[1] == b.word[1];
}

// Entry of id, searched with the lock held.
OrvGlobRODataEntry* search_locked(const OrvChunkId& id) {
    for (int32_t i = 0; i < g_table.count; ++i)
        if (same(g_table.entries[i].id, id)) return &g_table.entries[i];
    return nullptr;
}

// Drops one reference of every entry with that id; at zero the block is
// released and the last entry moves into the free place. Lock held.
void drop_reference_locked(const OrvChunkId& id) {
    for (int32_t i = 0; i < g_table.count; ++i) {
        OrvGlobRODataEntry& e = g_table.entries[i];
        if (!same(e.id, id)) continue;
        if (--e.references <= 0) {
            if (e.data != nullptr) orv_serv_deallocate(e.data);
            --g_table.count;
            e = g_table.entries[g_table.count];
            g_table.sizes[i] = g_table.sizes[g_table.count];
            g_table.entries[g_table.count] = OrvGlobRODataEntry{};
        }
    }
}

void release_node(ChunkNode* node) {
    OrvGlobRODataEntry* entry = nullptr;
    if (__vstFindGlobRODataTableEntry(&entry, &node->id) == 0) {
        lock_table();
        drop_reference_locked(node->id);
        unlock_table();
    } else if (node->data != nullptr) {
        orv_serv_deallocate(node->data);
    }
    orv_serv_deallocate(node);
}

}  // namespace

namespace orv::rng {
int32_t glob_table_count() {
    lock_table();
    const int32_t n = g_table.count;
    unlock_table();
    return n;
}
}  // namespace orv::rng

ORV_EXPORT int32_t __vstAddChunk(void* stream, int32_t type, const OrvChunkId* id, void* data,
                                     int32_t size) {
    auto* node = static_cast<ChunkNode*>(orv::rng::allocate_block(sizeof(ChunkNode)));
    if (node == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    node->type = type;
    node->size = size;
    node->data = data;
    node->next = nullptr;
    node->id = id != nullptr ? *id : OrvChunkId{};

    OrvGlobRODataEntry* entry = nullptr;
    bool shared = false;
    if (__vstFindGlobRODataTableEntry(&entry, &node->id) == 0) {
        // Searched again under the lock: the entry may have gone meanwhile.
        lock_table();
        if (OrvGlobRODataEntry* e = search_locked(node->id)) {
            ++e->references;
            node->data = e->data;
            // The chunk describes the block it now uses.
            if (g_table.sizes[e - g_table.entries] >= 0) node->size = g_table.sizes[e - g_table.entries];
            shared = true;
        }
        unlock_table();
    }
    if (!shared) {
        // The count is read without the lock for this first test.
        if (__atomic_load_n(&g_table.count, __ATOMIC_RELAXED) < kGlobTableEntries - 1) {
            if (!is_zero(node->id)) {
                lock_table();
                if (g_table.count < kGlobTableEntries) {
                    g_table.sizes[g_table.count] = data != nullptr && size > 0 ? size : 0;
                    g_table.entries[g_table.count++] = OrvGlobRODataEntry{node->id, 1, data};
                }
                unlock_table();
            }
        } else {
            node->id = OrvChunkId{};  // no room to share: the chunk becomes private
        }
    }
    node->next = header(stream)->chunks;
    header(stream)->chunks = node;
    return 0;
}

ORV_EXPORT void* __vstSearchChunk(const void* stream, int32_t type) {
    for (ChunkNode* n = header(stream)->chunks; n != nullptr; n = n->next)
        if (n->type == type) return n->data;
    return nullptr;
}

ORV_EXPORT int32_t __vstGetNumChunks(const void* stream) {
    int32_t count = 0;
    for (ChunkNode* n = header(stream)->chunks; n != nullptr; n = n->next) ++count;
    return count;
}

ORV_EXPORT int32_t __vstDeleteChunks(void* stream) {
    ChunkNode* n = header(stream)->chunks;
    while (n != nullptr) {
        ChunkNode* next = n->next;
        release_node(n);
        n = next;
    }
    header(stream)->chunks = nullptr;
    return 0;
}

// Drops the chunks of one type; the others stay in their order.
ORV_EXPORT int32_t __vstDeleteChunksById(void* stream, int32_t type) {
    ChunkNode** link = &header(stream)->chunks;
    while (*link != nullptr) {
        ChunkNode* n = *link;
        if (n->type == type) {
            *link = n->next;
            release_node(n);
        } else {
            link = &n->next;
        }
    }
    return 0;
}

// Each source chunk is pushed at the head of dst, so the copy's list is in
// reverse order. Shared blocks are reused; private ones are copied.
ORV_EXPORT int32_t __vstCopyChunks(void* dst, const void* src) {
    for (const ChunkNode* n = header(src)->chunks; n != nullptr; n = n->next) {
        OrvGlobRODataEntry* entry = nullptr;
        void* block = nullptr;
        bool owned = false;
        if (__vstFindGlobRODataTableEntry(&entry, &n->id) == 0) {
            block = entry->data;
        } else if (n->size > 0 && n->data != nullptr) {
            block = orv::rng::allocate_block(static_cast<size_t>(n->size));
            if (block == nullptr) {
                __vstDeleteChunks(dst);
                return ORV_RNG_ERROR_MEM_FAILURE;
            }
            std::memcpy(block, n->data, static_cast<size_t>(n->size));
            owned = true;
        }
        const int32_t status = __vstAddChunk(dst, n->type, &n->id, block, n->size);
        if (status != 0) {
            if (owned) orv_serv_deallocate(block);
            __vstDeleteChunks(dst);
            return status;
        }
    }
    return 0;
}

ORV_EXPORT int32_t __vstFindGlobRODataTableEntry(OrvGlobRODataEntry** out, const OrvChunkId* id) {
    if (id == nullptr || is_zero(*id)) return ORV_RNG_ERROR_NO_TABLE_ENTRY;
    lock_table();
    OrvGlobRODataEntry* e = search_locked(*id);
    unlock_table();
    if (e == nullptr) return ORV_RNG_ERROR_NO_TABLE_ENTRY;
    *out = e;
    return 0;
}

ORV_EXPORT int32_t __vstCreateGlobRODataTableEntry(OrvGlobRODataEntry** out,
                                                       const OrvChunkId* id, void* data) {
    lock_table();
    if (g_table.count >= kGlobTableEntries) {
        unlock_table();
        return ORV_RNG_ERROR_TABLE_FULL;
    }
    g_table.sizes[g_table.count] = -1;
    OrvGlobRODataEntry* e = &g_table.entries[g_table.count++];
    *e = OrvGlobRODataEntry{id != nullptr ? *id : OrvChunkId{}, 1, data};
    unlock_table();
    *out = e;
    return 0;
}

ORV_EXPORT int32_t __vstRegisterGlobRODataReference(void** out, const OrvChunkId* id) {
    if (id == nullptr || is_zero(*id)) return ORV_RNG_ERROR_NO_TABLE_ENTRY;
    lock_table();
    OrvGlobRODataEntry* e = search_locked(*id);
    if (e != nullptr) {
        ++e->references;
        out[0] = e;
        out[1] = e->data;
    }
    unlock_table();
    return e != nullptr ? 0 : ORV_RNG_ERROR_NO_TABLE_ENTRY;
}

ORV_EXPORT int32_t __vstUnregisterGlobRODataReference(const OrvChunkId* id) {
    if (id == nullptr || is_zero(*id)) return ORV_RNG_ERROR_NO_TABLE_ENTRY;
    lock_table();
    const bool found = search_locked(*id) != nullptr;
    if (found) drop_reference_locked(*id);
    unlock_table();
    return found ? 0 : ORV_RNG_ERROR_NO_TABLE_ENTRY;
}

// The second word is the caller's; while the id is in use, the first word
// takes the processor's time-stamp counter, so the loop ends with a free id.
ORV_EXPORT int32_t __vstGenerateNewGlobalRODataTableEntryId(OrvChunkId* id, uint64_t second) {
    id->word[1] = second;
    OrvGlobRODataEntry* entry = nullptr;
    while (__vstFindGlobRODataTableEntry(&entry, id) == 0) id->word[0] = __rdtsc();
    return 0;
}
