// Pack and unpack for the four element types and both integer widths.
#include <gtest/gtest.h>

#include <xmmintrin.h>

#include <cstring>
#include <thread>
#include <vector>

#include <orv/vtm.h>

#include "frame/thread_record.h"

namespace {

template <typename T>
struct Kit;
#define KIT(L, CT)                                                                          \
    template <>                                                                             \
    struct Kit<CT> {                                                                        \
        static constexpr auto packI = _vtm##L##PackI;                                       \
        static constexpr auto packM = _vtm##L##PackM;                                       \
        static constexpr auto packV = _vtm##L##PackV;                                       \
        static constexpr auto unpackI = _vtm##L##UnpackI;                                   \
        static constexpr auto unpackM = _vtm##L##UnpackM;                                   \
        static constexpr auto unpackV = _vtm##L##UnpackV;                                   \
    };
KIT(s, float)
KIT(d, double)
KIT(c, OrvComplex8)
KIT(z, OrvComplex16)

// Element i gets a distinct bit pattern; 0x7FA00000 style signalling NaNs
// are among them, to show that nothing is quieted.
template <typename T>
T make(int i) {
    T v;
    unsigned char* b = reinterpret_cast<unsigned char*>(&v);
    for (size_t k = 0; k < sizeof(T); ++k) b[k] = static_cast<unsigned char>(i * 31 + k * 7 + 1);
    if (i % 5 == 0) {
        const uint32_t snan = 0x7FA00001u;
        std::memcpy(b + sizeof(T) - 4, &snan, 4);
    }
    return v;
}
template <typename T>
bool same(const T& x, const T& y) { return std::memcmp(&x, &y, sizeof(T)) == 0; }

template <typename T>
class Pack : public testing::Test {};
using Types = testing::Types<float, double, OrvComplex8, OrvComplex16>;
TYPED_TEST_SUITE(Pack, Types);

TYPED_TEST(Pack, ByIncrementBothWaysAtBothWidths) {
    using T = TypeParam;
    for (int width : {1, 0, 2}) {
        for (long long inc : {1LL, 2LL, 3LL, -1LL}) {
            for (int n : {0, 1, 7, 8, 9, 20}) {
                const size_t span = size_t(std::max(n, 1)) * size_t(std::llabs(inc));
                std::vector<T> a(span), y(n + 1, make<T>(99));
                for (size_t i = 0; i < span; ++i) a[i] = make<T>(int(i));
                const T* base = a.data() + (inc < 0 && n > 0 ? n - 1 : 0);
                Kit<T>::packI(n, base, inc, y.data(), width);
                for (int i = 0; i < n; ++i) ASSERT_TRUE(same(y[i], base[i * inc])) << n << " " << inc;
                ASSERT_TRUE(same(y[n], make<T>(99)));
                // Unpack into a fresh array: the gaps stay as they were.
                std::vector<T> z(span, make<T>(77));
                T* zb = z.data() + (inc < 0 && n > 0 ? n - 1 : 0);
                Kit<T>::unpackI(n, y.data(), zb, inc, width);
                std::vector<bool> hit(span);
                for (int i = 0; i < n; ++i) {
                    ASSERT_TRUE(same(zb[i * inc], y[i]));
                    hit[size_t(&zb[i * inc] - z.data())] = true;
                }
                for (size_t j = 0; j < span; ++j)
                    if (!hit[j]) { ASSERT_TRUE(same(z[j], make<T>(77))); }
            }
        }
    }
}

TYPED_TEST(Pack, ByMaskAndByIndex) {
    using T = TypeParam;
    std::vector<T> a(10);
    for (int i = 0; i < 10; ++i) a[i] = make<T>(i);
    const int32_t m32[10] = {0, 1, 1, 0, -5, 0, 0, 7, 0, 1};
    const int64_t m64[10] = {0, 1, 1, 0, -5, 0, 0, 1LL << 40, 0, 1};
    const int picked[6] = {1, 2, 4, 7, 9};
    for (int width : {1, 0}) {
        const void* mask = width == 1 ? static_cast<const void*>(m32) : static_cast<const void*>(m64);
        std::vector<T> y(10, make<T>(99));
        Kit<T>::packM(10, a.data(), mask, y.data(), width);
        for (int j = 0; j < 5; ++j) EXPECT_TRUE(same(y[j], a[picked[j]]));
        EXPECT_TRUE(same(y[5], make<T>(99)));
        std::vector<T> z(10, make<T>(55));
        Kit<T>::unpackM(10, y.data(), z.data(), mask, width);
        for (int i = 0; i < 10; ++i) EXPECT_TRUE(same(z[i], m32[i] ? a[i] : make<T>(55))) << i;
    }
    const int32_t i32[4] = {9, 0, 9, 3};
    const int64_t i64[4] = {9, 0, 9, 3};
    for (int width : {1, 2}) {
        const void* idx = width == 1 ? static_cast<const void*>(i32) : static_cast<const void*>(i64);
        std::vector<T> y(4);
        Kit<T>::packV(4, a.data(), idx, y.data(), width);
        for (int j = 0; j < 4; ++j) EXPECT_TRUE(same(y[j], a[i32[j]]));
        std::vector<T> z(10, make<T>(55));
        const T src[4] = {make<T>(40), make<T>(41), make<T>(42), make<T>(43)};
        Kit<T>::unpackV(4, src, z.data(), idx, width);
        EXPECT_TRUE(same(z[9], src[2])) << "the later duplicate wins";
        EXPECT_TRUE(same(z[0], src[1]));
        EXPECT_TRUE(same(z[3], src[3]));
        EXPECT_TRUE(same(z[5], make<T>(55)));
    }
}

TYPED_TEST(Pack, NothingWrittenForEmptyOrNegativeCounts) {
    using T = TypeParam;
    std::vector<T> a(4, make<T>(1)), y(4, make<T>(2));
    const int32_t mask[4] = {0, 0, 0, 0};
    const int64_t idx[4] = {0, 1, 2, 3};
    for (long long n : {0LL, -1LL, -100LL}) {
        for (int width : {1, 0}) {
            Kit<T>::packI(n, a.data(), 1, y.data(), width);
            Kit<T>::unpackI(n, a.data(), y.data(), 1, width);
            Kit<T>::packV(n, a.data(), idx, y.data(), width);
            Kit<T>::unpackV(n, a.data(), y.data(), idx, width);
            Kit<T>::packM(n, a.data(), mask, y.data(), width);
            Kit<T>::unpackM(n, a.data(), y.data(), mask, width);
        }
    }
    // An all-zero mask selects nothing in either direction.
    Kit<T>::packM(4, a.data(), mask, y.data(), 1);
    Kit<T>::unpackM(4, a.data(), y.data(), mask, 1);
    for (const T& v : y) EXPECT_TRUE(same(v, make<T>(2)));
}

TEST(PackWidth, MaskMemoryReadAtTheSelectedWidth) {
    // As 32-bit entries this selects element 1; as 64-bit entries, entry 0
    // (0x100000000) selects element 0.
    const int32_t mask[4] = {0, 1, 0, 0};
    const double a[4] = {10, 11, 12, 13};
    double y[4] = {0, 0, 0, 0};
    using V = std::vector<double>;
    _vtmdPackM(4, a, mask, y, 1);
    EXPECT_EQ(V(y, y + 2), (V{11, 0}));
    y[0] = 0;
    _vtmdPackM(2, a, mask, y, 0);
    EXPECT_EQ(V(y, y + 2), (V{10, 0}));
    // At width 1 only the low half of n counts.
    _vtmdPackI((1LL << 32) + 3, a, 1, y, 1);
    EXPECT_EQ(V(y + 2, y + 4), (V{12, 0}));
}

TEST(PackWidth, NoThreadRecordAndNoFloatingPointState) {
    std::thread t([] {
        const unsigned before = _mm_getcsr();
        const float a[3] = {1, 2, 3};
        float y[3];
        _vtmsPackI(3, a, 1, y, 1);
        _vtmsUnpackI(3, a, y, 1, 1);
        EXPECT_EQ(orv::frame::peek_thread_record(), nullptr);
        EXPECT_EQ(_mm_getcsr(), before);
    });
    t.join();
}

}  // namespace
