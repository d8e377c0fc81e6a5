#include "frame/mode_word.h"
#include "frame/export.h"

#include <cstring>
#include <string>

#include <orv/orv_core.h>
#include <orv/vtm.h>

#include "frame/thread_record.h"

namespace orv::frame {

namespace {
// A row with its name's length, counted here rather than kept by hand.
constexpr ModeOption option(const char* name, uint32_t value) {
    return ModeOption{name, static_cast<int>(std::char_traits<char>::length(name)), value};
}
}  // namespace

// Row 6 holds 16 characters on purpose: the complete word "DOUBLE_CONSISTENT"
// is refused by the test on the byte behind the match.
const ModeOption kModeOptions[kModeOptionCount] = {
    option("LA", 0x1),
    option("HA", 0x2),
    option("EP", 0x3),
    option("DEFAULT_PRECISION", 0x0),
    option("FLOAT_CONSISTENT", 0x10),
    option("DOUBLE_CONSISTEN", 0x20),
    option("RESTORE", 0x30),
    option("ERRMODE_IGNORE", 0x100),
    option("ERRMODE_ERRNO", 0x200),
    option("ERRMODE_STDERR", 0x400),
    option("ERRMODE_EXCEPT", 0x800),
    option("ERRMODE_CALLBACK", 0x1000),
    option("ERRMODE_NOERR", 0x2000),
    option("ERRMODE_DEFAULT", 0x1A00),
    option("TRAP_INVALID", 0x1000000),
    option("TRAP_DIVBYZERO", 0x2000000),
    option("TRAP_OVERFLOW", 0x4000000),
    option("TRAP_UNDERFLOW", 0x8000000),
};

namespace {

constexpr int kBufferSize = 256;
orv_lock_t g_env_lock{0};

// Byte-wise compare that stops at the first difference, so it never reads
// past the NUL that ends the buffer's text.
bool same_bytes(const char* p, const char* name, int length) {
    for (int i = 0; i < length; ++i)
        if (p[i] != name[i]) return false;
    return true;
}

int64_t parse_buffer(const char* buf, int length) {
    if (length <= 0) return -1;
    int64_t acc = 0;
    int pos = 0;
    for (;;) {
        if (!same_bytes(buf + pos, "VTM_", 4)) return -1;
        pos += 4;
        const ModeOption* hit = nullptr;
        for (const ModeOption& row : kModeOptions) {
            if (pos + row.length > kBufferSize - 1) continue;
            if (same_bytes(buf + pos, row.name, row.length)) {
                hit = &row;
                break;
            }
        }
        if (hit == nullptr) return -1;
        const char behind = buf[pos + hit->length];
        acc |= hit->value;
        if (behind == ',') {
            pos += hit->length + 1;
        } else if (behind == '\0') {
            return acc;
        } else {
            return -1;
        }
    }
}

uint32_t lazy_default() {
    const int64_t parsed = parse_mode_environment();
    if (parsed == -1) return VTM_MODE_BUILTIN_DEFAULT;
    uint32_t w = static_cast<uint32_t>(parsed);
    if ((w & VTM_ACCURACY_MASK) == 0) w += VTM_HA;
    if ((w & VTM_ERRMODE_MASK) == 0) w += VTM_ERRMODE_DEFAULT;
    return w;
}

uint32_t decided_mode(VtmThreadRecord* rec) {
    if (rec->mode == 0) rec->mode = lazy_default();
    return rec->mode;
}

}  // namespace

int64_t parse_mode_environment() {
    char buf[kBufferSize];
    orv_serv_lock(&g_env_lock);
    const int length = orv_serv_getenv("ORV_VTM_MODE", buf, kBufferSize);
    orv_serv_unlock(&g_env_lock);
    return parse_buffer(buf, length);
}

int64_t parse_mode_text(const char* text) {
    char buf[kBufferSize];
    std::size_t n = std::strlen(text);
    if (n > kBufferSize - 1) n = kBufferSize - 1;
    std::memcpy(buf, text, n);
    buf[n] = '\0';
    return parse_buffer(buf, static_cast<int>(n));
}

uint32_t current_mode() { return decided_mode(thread_record()); }

uint32_t merge_mode(uint32_t current, uint32_t update) {
    for (uint32_t mask : kMergeMasks)
        if (update & mask) current = (current & ~mask) | (update & mask);
    return current;
}

}  // namespace orv::frame

using orv::frame::current_mode;
using orv::frame::thread_record;


ORV_EXPORT uint32_t orv_vtm_kernel_GetMode(void) { return current_mode(); }
ORV_EXPORT uint32_t _vtmGetMode(void) __attribute__((alias("orv_vtm_kernel_GetMode")));

ORV_EXPORT uint32_t orv_vtm_kernel_SetMode(uint32_t mode) {
    const uint32_t before = current_mode();
    orv::frame::VtmThreadRecord* rec = thread_record();
    rec->mode = orv::frame::merge_mode(before, mode);
    return before;
}

ORV_EXPORT uint32_t _vtmSetMode(uint32_t mode) { return orv_vtm_kernel_SetMode(mode); }

ORV_EXPORT int32_t orv_vtm_kernel_GetTTableIndex(void) {
    return static_cast<int32_t>(current_mode() & VTM_ACCURACY_MASK) - 1;
}

ORV_EXPORT int32_t orv_vtm_kernel_GetTTableIndexM(int32_t, uint32_t mode) {
    return static_cast<int32_t>(mode & VTM_ACCURACY_MASK) - 1;
}
