// Parameter sets of the four-part Wichmann-Hill generator.
#pragma once

#include <cstdint>

namespace orv::rng {

struct WhParameters {
    uint32_t m[4];        // prime moduli near 2^24
    uint32_t multipliers; // four multipliers below 256, the first in the low byte
};

extern const WhParameters kWhParameters[273];
extern const double kWhReciprocals[273][4];  // 1.0 / m[i]

}  // namespace orv::rng
