// The per-thread mode word: option table, environment parser, lazy default
// and merge rule.
#pragma once

#include <cstdint>

namespace orv::frame {

struct ModeOption {
    const char* name;
    int length;
    uint32_t value;
};
inline constexpr int kModeOptionCount = 18;
extern const ModeOption kModeOptions[kModeOptionCount];

// Union of the tokens of ORV_VTM_MODE, or -1 when the variable is unset or
// unusable. All or nothing: one bad token discards the whole value.
int64_t parse_mode_environment();
// Parser over a given value (the same buffer rules), for tests.
int64_t parse_mode_text(const char* text);

// The calling thread's mode word after the lazy default.
uint32_t current_mode();

// Field masks in merge order.
inline constexpr uint32_t kMergeMasks[5] = {0xF, 0xFF00, 0x3C0000, 0xF000000, 0x30000};
uint32_t merge_mode(uint32_t current, uint32_t update);

}  // namespace orv::frame
