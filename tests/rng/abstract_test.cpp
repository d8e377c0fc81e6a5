// Abstract streams: values come from the caller's buffer in order across
// refills, the interval kinds map [c, d) onto the fill's interval, the
// missing forms and the jumps give their statuses, and images from another
// process are refused (bad arguments: tests/api/rng_sources_test.cpp).
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include <orv/rng.h>

#include "stream_util.h"

namespace {

using rngtest::Stream;

int g_refills = 0;
int32_t g_fail = 0;

template <typename T>
int32_t count_on(void*, int32_t n, T* buffer) {
    if (g_fail != 0) return g_fail;
    ++g_refills;
    for (int32_t i = 0; i < n; ++i) buffer[i] = static_cast<T>(g_refills * 100 + i);
    return 0;
}
template <typename T>
int32_t unit_steps(void*, int32_t n, T* buffer) {  // k/8 for k = 0..7, again
    for (int32_t i = 0; i < n; ++i) buffer[i] = static_cast<T>(i % 8) / 8;
    return 0;
}

TEST(Abstract, WordsComeFromTheBufferAcrossRefills) {
    g_refills = 0;
    g_fail = 0;
    uint32_t buffer[5] = {1, 2, 3, 4, 5};
    Stream s, c;
    ASSERT_EQ(__vstiNewAbstractStream(&s.s, 5, buffer, &count_on<uint32_t>), 0);
    s.adopt();
    const BrngRow row = s.row;
    std::vector<uint32_t> w(12);
    ASSERT_EQ(row.wordFill(s.s, 3, w.data()), 0);
    ASSERT_EQ(row.wordFill(s.s, 9, w.data() + 3), 0);
    EXPECT_EQ(w, (std::vector<uint32_t>{1, 2, 3, 4, 5, 100, 101, 102, 103, 104, 200, 201}));
    // A copy shares the buffer and goes on from the same place.
    ASSERT_EQ(__vstCopyStream(&c.s, s.s), 0);
    uint32_t x[2] = {0, 0};
    row.wordFill(c.s, 1, &x[0]);
    row.wordFill(s.s, 1, &x[1]);
    EXPECT_TRUE(x[0] == 202u && x[1] == 202u) << x[0] << " " << x[1];
    // A failing refill ends the fill with its status, keeping what it wrote.
    g_fail = -77;
    std::vector<uint32_t> r(5, 0);
    EXPECT_EQ(row.wordFill(s.s, 5, r.data()), -77);
    EXPECT_EQ(r, (std::vector<uint32_t>{203, 204, 0, 0, 0}));
    g_fail = 0;
    // The forms and jumps it lacks.
    float f;
    double d;
    EXPECT_EQ(row.floatFill(s.s, 1, &f, 0, 1), ORV_RNG_ERROR_ABSTRACT_FORM);
    EXPECT_EQ(row.doubleFill(s.s, 1, &d, 0, 1), ORV_RNG_ERROR_ABSTRACT_FORM);
    const uint64_t one = 1;
    EXPECT_EQ(__vstLeapfrogStream(s.s, 0, 2), ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED);
    EXPECT_EQ(__vstSkipAheadStream(s.s, 1), ORV_RNG_ERROR_SKIPAHEAD_UNSUPPORTED);
    EXPECT_EQ(__vstSkipAheadStreamEx(s.s, 1, &one), ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED);
}

TEST(Abstract, IntervalKindsMapTheirNumbers) {
    double dbuf[8];
    float sbuf[8];
    unit_steps<double>(nullptr, 8, dbuf);
    unit_steps<float>(nullptr, 8, sbuf);
    Stream ds, ss, wide;
    ASSERT_EQ(__vstdNewAbstractStream(&ds.s, 8, dbuf, 0.0, 1.0, &unit_steps<double>), 0);
    ASSERT_EQ(__vstsNewAbstractStream(&ss.s, 8, sbuf, 0.0f, 1.0f, &unit_steps<float>), 0);
    ds.adopt(), ss.adopt();
    std::vector<double> d(12);
    std::vector<float> f(12);
    ASSERT_EQ(ds.row.doubleFill(ds.s, 12, d.data(), 2.0, 4.0), 0);
    ASSERT_EQ(ss.row.floatFill(ss.s, 12, f.data(), -1.0f, 1.0f), 0);
    for (int i = 0; i < 12; ++i)
        EXPECT_TRUE(d[i] == 2.0 + 2.0 * (i % 8) / 8 && f[i] == -1.0f + 2.0f * static_cast<float>(i % 8) / 8) << i;
    uint32_t w;
    EXPECT_EQ(ds.row.wordFill(ds.s, 1, &w), ORV_RNG_ERROR_ABSTRACT_FORM);
    EXPECT_EQ(ds.row.floatFill(ds.s, 1, f.data(), 0, 1), ORV_RNG_ERROR_ABSTRACT_FORM);
    EXPECT_EQ(ss.row.wordFill(ss.s, 1, &w), ORV_RNG_ERROR_ABSTRACT_FORM);
    EXPECT_EQ(ss.row.doubleFill(ss.s, 1, d.data(), 0, 1), ORV_RNG_ERROR_ABSTRACT_FORM);
    // Numbers on [-4, 4) onto [0, 1).
    for (double& x : dbuf) x = x * 8 - 4;
    ASSERT_EQ(__vstdNewAbstractStream(&wide.s, 8, dbuf, -4.0, 4.0, &unit_steps<double>), 0);
    wide.adopt();
    ASSERT_EQ(wide.row.doubleFill(wide.s, 2, d.data(), 0.0, 1.0), 0);
    EXPECT_TRUE(d[0] == 0.0 && d[1] == 0.125) << d[0] << " " << d[1];
}

// An image loaded in this process works; one whose pointers do not belong to
// this process (simulated by changing the buffer pointer) is refused before
// anything is called.
TEST(Abstract, ImagesFromAnotherProcessAreRefused) {
    uint32_t buffer[4] = {7, 8, 9, 10};
    Stream s, same, foreign;
    ASSERT_EQ(__vstiNewAbstractStream(&s.s, 4, buffer, &count_on<uint32_t>), 0);
    std::vector<char> image = rngtest::image(s.s);
    ASSERT_EQ(__vstLoadStreamM(&same.s, image.data()), 0);
    same.adopt();
    uint32_t w = 0;
    EXPECT_EQ(same.row.wordFill(same.s, 1, &w), 0);
    EXPECT_EQ(w, 7u);
    uint32_t other[4] = {0, 0, 0, 0};
    uint32_t* p = other;
    std::memcpy(image.data() + 24, &p, sizeof p);  // state begins behind the 24-byte header
    ASSERT_EQ(__vstLoadStreamM(&foreign.s, image.data()), 0);
    foreign.adopt();
    EXPECT_EQ(foreign.row.wordFill(foreign.s, 1, &w), ORV_RNG_ERROR_ABSTRACT_FOREIGN);
}

}  // namespace
