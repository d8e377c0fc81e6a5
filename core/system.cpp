// Environment access, process exit and processor tests.
#include <orv/orv_core.h>

#include <cpuid.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

extern "C" {

int orv_serv_getenv(const char* name, char* buf, int buf_len) {
    if (name == nullptr || buf == nullptr || buf_len <= 0) return -1;
    const char* v = getenv(name);
    if (v == nullptr) {
        buf[0] = '\0';
        return 0;
    }
    size_t len = strlen(v);
    size_t room = static_cast<size_t>(buf_len) - 1;
    if (len > room) len = room;
    memcpy(buf, v, len);
    buf[len] = '\0';
    return static_cast<int>(len);
}

void orv_serv_exit(int code) {
    fflush(stderr);
    exit(code);
}

int orv_serv_cpuisicx(void) {
    unsigned a, b, c, d;
    if (!__get_cpuid(1, &a, &b, &c, &d)) return 0;
    if (!(c & (1u << 27))) return 0;  // OSXSAVE
    unsigned lo, hi;
    __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    (void)hi;
    // XMM, YMM, opmask and both halves of the ZMM state enabled by the OS.
    if ((lo & 0xE6u) != 0xE6u) return 0;
    if (!__get_cpuid_count(7, 0, &a, &b, &c, &d)) return 0;
    const bool avx512f = b & (1u << 16);
    const bool vaes = c & (1u << 9);
    return avx512f && vaes ? 1 : 0;
}

}  // extern "C"
