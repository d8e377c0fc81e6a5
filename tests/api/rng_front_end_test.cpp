// Checked stream calls: each bad argument is refused with its named status
// and changes nothing; good calls reach the same streams as the kernel.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include <orv/orv.h>

#include "../rng/stream_util.h"

namespace {

using Owned = rngtest::Stream;
using rngtest::words;

TEST(RngFrontEnd, CreationRefusalsLeaveTheOutputUntouched) {
    void* const sentinel = reinterpret_cast<void*>(0x1234);
    const uint32_t seeds[2] = {1, 2};
    struct Case { int status; int brng, n; const uint32_t* params; };
    const Case cases[] = {
        {ORV_RNG_ERROR_BAD_COUNT, ORV_BRNG_MT19937, -1, seeds},
        {ORV_RNG_ERROR_NULL_ARRAY, ORV_BRNG_MT19937, 2, nullptr},
        {ORV_RNG_ERROR_INVALID_BRNG, 0x7FFFFFFF, 2, seeds},
        {ORV_RNG_ERROR_INVALID_BRNG, -5, 2, seeds},
        {ORV_RNG_ERROR_INVALID_BRNG, 279, 2, seeds},
        {ORV_RNG_ERROR_INVALID_BRNG, ORV_BRNG_DABSTRACT, 2, seeds},
        {ORV_RNG_ERROR_INVALID_BRNG, ORV_BRNG_MT2203, 2, seeds},
    };
    for (const Case& c : cases) {
        OrvStreamPtr s = sentinel;
        EXPECT_EQ(vstNewStreamEx(&s, c.brng, c.n, c.params), c.status) << c.brng << " " << c.n;
        EXPECT_EQ(s, sentinel);
    }
    OrvStreamPtr s = sentinel;
    EXPECT_EQ(vstNewStream(&s, 0x7FFFFFFF, 1), ORV_RNG_ERROR_INVALID_BRNG);
    EXPECT_EQ(s, sentinel);
    EXPECT_EQ(vstNewStream(nullptr, ORV_BRNG_MT19937, 1), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstNewStreamEx(nullptr, ORV_BRNG_MT19937, 0, nullptr), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstDeleteStream(nullptr), ORV_RNG_ERROR_NULL_STREAM);
    OrvStreamPtr none = nullptr;
    EXPECT_EQ(vstDeleteStream(&none), ORV_RNG_ERROR_NULL_STREAM);
}

TEST(RngFrontEnd, StreamCallRefusalsDrawNothing) {
    Owned a, b, m;
    ASSERT_EQ(vstNewStream(&a.s, ORV_BRNG_SFMT19937, 7), 0);
    ASSERT_EQ(vstNewStream(&b.s, ORV_BRNG_SFMT19937, 7), 0);
    ASSERT_EQ(vstNewStream(&m.s, ORV_BRNG_MCG31M1, 7), 0);
    const uint64_t count[1] = {3};
    char memory[8] = {};
    BrngRow row{};
    void* const sentinel = reinterpret_cast<void*>(0x1234);
    OrvStreamPtr out = sentinel;
    // Each refused call on a, checked against b which gets no calls.
    EXPECT_EQ(vstSkipAheadStream(a.s, -1), ORV_RNG_ERROR_BAD_COUNT);
    EXPECT_EQ(vstSkipAheadStream(nullptr, 5), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstSkipAheadStreamEx(a.s, -1, count), ORV_RNG_ERROR_BAD_COUNT);
    EXPECT_EQ(vstSkipAheadStreamEx(a.s, 1, nullptr), ORV_RNG_ERROR_NULL_ARRAY);
    EXPECT_EQ(vstSkipAheadStreamEx(nullptr, 1, count), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstLeapfrogStream(a.s, 0, 0), ORV_RNG_ERROR_LEAPFROG_NSTREAMS);
    EXPECT_EQ(vstLeapfrogStream(m.s, 2, 2), ORV_RNG_ERROR_LEAPFROG_INDEX);
    EXPECT_EQ(vstLeapfrogStream(m.s, -1, 2), ORV_RNG_ERROR_LEAPFROG_INDEX);
    EXPECT_EQ(vstLeapfrogStream(nullptr, 0, 1), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstCopyStream(&out, nullptr), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstCopyStream(nullptr, a.s), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstCopyStreamState(a.s, m.s), ORV_RNG_ERROR_STREAMS_DIFFER);
    EXPECT_EQ(vstCopyStreamState(nullptr, a.s), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstCopyStreamState(a.s, nullptr), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstSaveStreamF(a.s, nullptr), ORV_RNG_ERROR_NULL_ARRAY);
    EXPECT_EQ(vstSaveStreamF(nullptr, "x"), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstLoadStreamF(&out, nullptr), ORV_RNG_ERROR_NULL_ARRAY);
    EXPECT_EQ(vstLoadStreamF(nullptr, "x"), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstSaveStreamM(a.s, nullptr), ORV_RNG_ERROR_NULL_ARRAY);
    EXPECT_EQ(vstSaveStreamM(nullptr, memory), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstLoadStreamM(&out, nullptr), ORV_RNG_ERROR_NULL_ARRAY);
    EXPECT_EQ(vstLoadStreamM(nullptr, memory), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstGetStreamSize(nullptr), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstGetStreamStateBrng(nullptr), ORV_RNG_ERROR_NULL_STREAM);
    EXPECT_EQ(vstGetBrngProperties(ORV_BRNG_MT19937, nullptr), ORV_RNG_ERROR_NULL_ARRAY);
    EXPECT_EQ(vstGetBrngProperties(0x7FFFFFFF, &row), ORV_RNG_ERROR_INVALID_BRNG);
    EXPECT_EQ(row.streamBytes, 0);
    EXPECT_EQ(vstRegisterBrng(nullptr), ORV_RNG_ERROR_NULL_ARRAY);
    EXPECT_EQ(out, sentinel);
    EXPECT_EQ(memory[0], 0);
    EXPECT_EQ(words(a.s, 9), words(b.s, 9));
    // A record that names no usable generator is refused, not called through.
    alignas(16) unsigned char fake[64] = {};
    fake[0] = fake[1] = fake[2] = fake[3] = 0xFF;  // generator number -1
    EXPECT_EQ(vstSkipAheadStream(fake, 1), ORV_RNG_ERROR_INVALID_BRNG);
    EXPECT_EQ(vstGetStreamSize(fake), ORV_RNG_ERROR_INVALID_BRNG);
}

TEST(RngFrontEnd, GoodCallsContinueOneSequence) {
    Owned a, b, c, d, e;
    const uint32_t key[4] = {0x123, 0x234, 0x345, 0x456};
    ASSERT_EQ(vstNewStreamEx(&a.s, ORV_BRNG_MT19937, 4, key), 0);
    ASSERT_EQ(vstNewStreamEx(&b.s, ORV_BRNG_MT19937, 4, key), 0);
    EXPECT_EQ(words(a.s, 1)[0], 1067595299u);  // the published first word for this key
    words(b.s, 1);
    ASSERT_EQ(vstSkipAheadStream(a.s, 2000000), 0);
    words(b.s, 1000000);
    words(b.s, 1000000);
    ASSERT_EQ(vstCopyStream(&c.s, a.s), 0);
    std::vector<char> image(static_cast<size_t>(vstGetStreamSize(a.s)));
    ASSERT_EQ(vstSaveStreamM(a.s, image.data()), 0);
    ASSERT_EQ(vstLoadStreamM(&d.s, image.data()), 0);
    const std::string file = testing::TempDir() + "orv_rng_front_end.stream";
    ASSERT_EQ(vstSaveStreamF(a.s, file.c_str()), 0);
    ASSERT_EQ(vstLoadStreamF(&e.s, file.c_str()), 0);
    std::remove(file.c_str());
    const auto want = words(b.s, 50);
    for (OrvStreamPtr s : {a.s, c.s, d.s, e.s}) EXPECT_EQ(words(s, 50), want);
    ASSERT_EQ(vstCopyStreamState(c.s, b.s), 0);
    EXPECT_EQ(words(c.s, 5), words(b.s, 5));
    EXPECT_EQ(vstGetStreamStateBrng(a.s), ORV_BRNG_MT19937);
    EXPECT_GE(vstGetNumRegBrngs(), 16);
    // Leapfrog: the second of three streams takes every third output.
    Owned f, g;
    ASSERT_EQ(vstNewStream(&f.s, ORV_BRNG_MCG31M1, 9), 0);
    ASSERT_EQ(vstNewStream(&g.s, ORV_BRNG_MCG31M1, 9), 0);
    ASSERT_EQ(vstLeapfrogStream(f.s, 1, 3), 0);
    const auto all = words(g.s, 9);
    EXPECT_EQ(words(f.s, 3), (std::vector<uint32_t>{all[1], all[4], all[7]}));
    EXPECT_EQ(vstLeapfrogStream(a.s, 0, 2), ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED);
    EXPECT_EQ(vstDeleteStream(&f.s), 0);
    EXPECT_EQ(f.s, nullptr);
}

}  // namespace
