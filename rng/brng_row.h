// The generator registry: the row tables, the mapping from a generator
// number to a row, and the export attribute of the random component.
#pragma once

#include <cstdint>

#include <orv/rng.h>

#include "frame/export.h"

namespace orv::rng {

// Row counts of the second table's companions: used rows and, per row, the
// number of sub-generators.
int32_t& registered_rows();
extern int32_t g_sub_generators[ORV_BRNG_TABLE_ROWS];

// Row of a generator number, or null when the number is not valid or the row
// has no functions yet (sub receives the sub-generator).
const BrngRow* find_row(uint32_t id, uint32_t* sub = nullptr);

// Sub-generator number of a stream's generator, as WH picks its parameter set.
inline uint32_t sub_generator(uint32_t id) {
    uint32_t row = 0, sub = 0;
    __vstGetBrngBaseOffset(id, &row, &sub);
    return sub;
}

}  // namespace orv::rng
