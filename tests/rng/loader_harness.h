// One input to the stream loaders: as a memory image (bounded by its size)
// and as a file. A stream that loads is used, saved and loaded again; the
// second load must give back the same image.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <orv/rng.h>

#include "rng/stream.h"

namespace loader_harness {

inline void exercise(void* s) {
    BrngRow row;
    if (__vstGetBrngProperties(static_cast<int32_t>(__vstGetStreamStateBrng(s)), &row) != 0) std::abort();
    std::vector<char> img(__vstGetStreamSize(s));
    __vstSaveStreamM(s, img.data());
    void* again = nullptr;
    if (orv::rng::load_stream_image(&again, img.data(), img.size()) != 0) std::abort();
    std::vector<char> img2(__vstGetStreamSize(again));
    if (img2.size() != img.size()) std::abort();
    __vstDeleteStream(&again);
    uint32_t words[4 * 64];
    double d[64];
    float f[64];
    row.wordFill(s, 64, words);
    row.doubleFill(s, 64, d, 0.0, 1.0);
    row.floatFill(s, 64, f, 0.0f, 1.0f);
    __vstSkipAheadStream(s, 1000);
    __vstLeapfrogStream(s, 1, 3);
}

inline int run(const uint8_t* data, size_t size, const std::string& path) {
    void* s = nullptr;
    const int32_t m = orv::rng::load_stream_image(&s, reinterpret_cast<const char*>(data), size);
    if ((m == 0) != (s != nullptr)) std::abort();
    if (s != nullptr) {
        exercise(s);
        __vstDeleteStream(&s);
    }
    if (!path.empty()) {
        FILE* f = std::fopen(path.c_str(), "wb");
        if (f == nullptr) return 0;
        if (size != 0) std::fwrite(data, size, 1, f);
        std::fclose(f);
        void* t = reinterpret_cast<void*>(1);
        const int32_t st = __vstLoadStreamF(&t, path.c_str(), -1);
        if ((st == 0) != (t != nullptr)) std::abort();
        if (t != nullptr) __vstDeleteStream(&t);
        std::remove(path.c_str());
    }
    return 0;
}

}  // namespace loader_harness
