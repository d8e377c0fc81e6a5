// A stream owned by a test: made from a generator number and seed words (or
// adopted, or left empty for a call that makes one), deleted at the end of
// its scope, read through its row.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include <orv/rng.h>

namespace rngtest {

struct Stream {
    void* s = nullptr;
    BrngRow row{};
    int per = 1;  // 32-bit words per output of the word fill
    Stream() = default;
    Stream(int32_t id, const std::vector<uint32_t>& seed) {
        EXPECT_EQ(__vstNewStreamEx(&s, id, static_cast<int32_t>(seed.size()), seed.data()), 0);
        adopt();
    }
    explicit Stream(void* made) : s(made) { adopt(); }
    Stream(const Stream&) = delete;
    ~Stream() {
        if (s != nullptr) __vstDeleteStream(&s);
    }
    void adopt() {
        if (s == nullptr) return;
        __vstGetBrngProperties(static_cast<int32_t>(__vstGetStreamStateBrng(s)), &row);
        per = row.wordBytes / 4;
    }
    std::vector<uint32_t> words(int n);
    void discard(uint64_t n) {
        for (int k; n > 0; n -= static_cast<uint64_t>(k)) words(k = static_cast<int>(std::min<uint64_t>(n, 100000)));
    }
};

// The next n outputs of stream s as words (room for one more: some fills
// write one output for a count of 0).
inline std::vector<uint32_t> words(void* s, int n) {
    BrngRow row;
    __vstGetBrngProperties(static_cast<int32_t>(__vstGetStreamStateBrng(s)), &row);
    std::vector<uint32_t> out(static_cast<size_t>(n + 1) * (row.wordBytes / 4));
    EXPECT_EQ(row.wordFill(s, n, out.data()), 0);
    out.resize(static_cast<size_t>(n) * (row.wordBytes / 4));
    return out;
}
inline std::vector<uint32_t> Stream::words(int n) { return rngtest::words(s, n); }

// The memory image of a stream.
inline std::vector<char> image(void* s) {
    std::vector<char> img(__vstGetStreamSize(s));
    EXPECT_EQ(__vstSaveStreamM(s, img.data()), 0);
    return img;
}

}  // namespace rngtest
