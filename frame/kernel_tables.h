// Private view of the generated kernel tables: kernel declarations, error
// names and the slot a strided kernel forwards to.
#pragma once

#include "vtm_kernels.h"

namespace orv::frame {

inline constexpr int kSlotHA = 1;  // slot order LA, HA, EP

// A strided kernel with unit increments calls the plain table: its own
// tier's slot where the plain table holds different kernels, else slot 1.
constexpr int forward_slot(bool plain_slots_shared, int own_slot) {
    return plain_slots_shared ? kSlotHA : own_slot;
}

}  // namespace orv::frame
