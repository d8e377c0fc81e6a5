// Loaded states that no seeding and no stream operation can produce: a
// congruential part stuck at zero, a value at or above its modulus, a ring
// position out of step. A stream file holding one is refused by the loaders,
// since such a state draws one value for ever or leaves the ranges the
// generators' reductions assume.
#pragma once

namespace orv::rng {

bool mcg31m1_state_possible(const void* stream);
bool mcg59_state_possible(const void* stream);
bool mrg32k3a_state_possible(const void* stream);
bool wh_state_possible(const void* stream);
bool r250_state_possible(const void* stream);

// The check of the stream's generator; true for generators without one.
bool state_possible(const void* stream);

}  // namespace orv::rng
