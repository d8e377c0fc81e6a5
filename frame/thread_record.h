// Per-thread state of the vector-math component and the module handler.
#pragma once

#include <cstdint>

#include <orv/vtm.h>

namespace orv::frame {

struct VtmThreadRecord {
    uint32_t mode;                     // 0: not decided yet
    int32_t errStatus;
    VtmErrorCallBack errorCallBack;
    unsigned char* interfInputVectorPointer;
};

// Reason codes of the module handler.
inline constexpr uint32_t kProcessDetach = 0;
inline constexpr uint32_t kProcessAttach = 1;
inline constexpr uint32_t kThreadAttach = 2;
inline constexpr uint32_t kThreadDetach = 3;

// The calling thread's record; never null (the process ends instead).
VtmThreadRecord* thread_record();
int module_initialize();
VtmThreadRecord* create_thread_record();
int module_entry(void* module, uint32_t reason, void* reserved);

// For tests: whether a slot exists, the calling thread's slot value
// without creating a record, and the number of records in the heap.
bool has_slot();
VtmThreadRecord* peek_thread_record();
std::size_t live_records();

}  // namespace orv::frame
