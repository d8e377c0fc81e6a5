// The block conventions shared by the vector kernels: lengths through block
// and tail, the slow path in lane order, the mode's denormal field, the
// caller's rounding direction, and the strided forms.
#include <gtest/gtest.h>

#include <xmmintrin.h>

#include <mpfr.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cfenv>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <tuple>
#include <vector>

#include "capture.h"
#include "kernels.h"

namespace {

// Inputs of both signs over several magnitudes, with halves and integers.
double input(int i, int salt) {
    const double v = std::ldexp(1.0 + ((i * 7 + salt) % 13) / 8.0, (i * 5 + salt) % 17 - 6);
    return (i + salt) % 3 == 0 ? -v : v;
}

// Every present unary and binary function: each length to 40 gives the
// results of the longest call (block, tail and filler lanes agree) and
// writes nothing past n. Values against MPFR are the accuracy sample's, run
// on every function over every binade.
template <typename T>
void check_prefixes(const Kernels& k) {
    const int m = 40;
    std::vector<T> x(m), y(m), full(m);
    for (int i = 0; i < m; ++i) x[i] = T(8 * input(i, 3)), y[i] = T(input(i, 4));
    call(k, m, x.data(), y.data(), full.data());
    for (int n = 0; n < m; ++n) {
        std::vector<T> r(m, T(-7));
        call(k, n, x.data(), y.data(), r.data());
        for (int i = 0; i < n; ++i) ASSERT_TRUE(same_value(r[i], full[i])) << k.name << " n=" << n << " i=" << i;
        ASSERT_EQ(r[n], T(-7)) << k.name << " wrote past n=" << n;
    }
}
TEST(Lengths, EveryKernelAgreesOverPrefixes) {
    ErrorCapture cap;
    for (const Kernels& k : all_kernels()) {
        check_prefixes<float>(k);
        check_prefixes<double>(k);
    }
}

TEST(SlowPath, Lanes2And9ReachTheEntryInOrder) {
    for (int order = 0; order < 2; ++order) {
        ErrorCapture cap;
        std::vector<double> x(32, 4.0), r(32);
        x[2] = order ? 0.0 : -1.0;  // status 2 or 1
        x[9] = order ? -1.0 : 0.0;
        _vtmdInvSqrt(32, x.data(), r.data());
        ASSERT_EQ(cap.errors().size(), 2u);
        EXPECT_EQ(cap.errors()[0].index, 2);
        EXPECT_EQ(cap.errors()[1].index, 9);
        EXPECT_EQ(_vtmGetErrStatus(), order ? 1 : 2);  // lane 9's status stays
        EXPECT_EQ(r[0], 0.5);
        EXPECT_EQ(r[31], 0.5);
    }
}

TEST(SlowPath, CallbackReplacesTheResult) {
    ErrorCapture cap;
    _vtmSetErrorCallBack([](VtmErrorContext* c) -> int32_t {
        c->res1 = 42.0;
        return 0;
    });
    std::vector<float> x(20, 1.0f), r(20);
    x[17] = -4.0f;  // a tail lane
    _vtmsSqrt(20, x.data(), r.data());
    EXPECT_EQ(r[17], 42.0f);
    EXPECT_EQ(r[16], 1.0f);
}

// Denormals are flushed only when the mode's field is exactly 0x280000, and
// only by the kernels that read the mode.
struct FlushCase { uint32_t field; bool flushes; };
class Denormals : public testing::TestWithParam<FlushCase> {};
TEST_P(Denormals, FlushedOnlyUnderTheExactField) {
    const FlushCase c = GetParam();
    ErrorCapture cap(VTM_ERRMODE_CALLBACK | c.field);
    const unsigned before = _mm_getcsr();
    const double den[2] = {0x1p-1060, 0x1p-1060};
    const float dens[1] = {0x1p-140f};
    double r[2];
    float rs[1];
    _vtmdSqrt(1, den, r);  // reads the mode
    EXPECT_EQ(r[0], c.flushes ? 0.0 : 0x1p-530);
    _vtmsSqrt(1, dens, rs);
    EXPECT_EQ(rs[0], c.flushes ? 0.0f : 0x1p-70f);
    _vtmdFrac(1, den, r);
    EXPECT_EQ(r[0], c.flushes ? 0.0 : 0x1p-1060);
    _vtmsLn(1, dens, rs);  // a flushed input is a pole
    EXPECT_EQ(rs[0] == -INFINITY && _vtmGetErrStatus() == 2, c.flushes);
    _vtmsExpm1(1, dens, rs);  // keeps the caller's state: never flushed
    EXPECT_EQ(rs[0], 0x1p-140f);
    const double tiny[3] = {0x1p-530, 0, 0x1p-530};
    _vtmdSqr(1, tiny, r);  // keeps the caller's state: never flushed
    EXPECT_EQ(r[0], 0x1p-1060);
    _vtmdSqrI(2, tiny, 2, r, 1);  // the strided form reads the mode
    EXPECT_EQ(r[0], c.flushes ? 0.0 : 0x1p-1060);
    EXPECT_EQ(_mm_getcsr() & 0xFFC0u, before & 0xFFC0u) << "control bits restored";
}
INSTANTIATE_TEST_SUITE_P(Conventions, Denormals,
                         testing::Values(FlushCase{VTM_FTZDAZ_ON, true}, FlushCase{VTM_FTZDAZ_OFF, false},
                                         FlushCase{0x3C0000u, false}, FlushCase{0x080000u, false}));

// Kernels that read the mode round to nearest whatever the caller set;
// the others run in the caller's direction. Each input rounds differently
// upward and to nearest (the rounding family's directions are tested below).
TEST(Rounding, CallerDirectionIgnoredOrHonoured) {
    ErrorCapture cap;
    struct R {
        const char* fn;
        double x, y;
        double (*op)(double, double);
        bool honours;
    };
    const R rows[] = {{"Sqrt", 3, 0, [](double x, double) { return std::sqrt(x); }, false},
                      {"Fdim", 1, -0x1p-60, [](double x, double y) { return x - y; }, false},
                      {"Add", 1, 0x1p-60, [](double x, double y) { return x + y; }, true},
                      {"Inv", 3, 0, [](double x, double) { return 1 / x; }, true}};
    for (const R& r : rows) {
        volatile double x = r.x, y = r.y;  // read at run time, in the direction set
        const double near = r.op(x, y);
        ASSERT_EQ(std::fesetround(FE_UPWARD), 0);
        const double up = r.op(x, y);
        double got;
        call(kernels(r.fn), 1, &r.x, &r.y, &got);
        const unsigned csr = _mm_getcsr();
        std::fesetround(FE_TONEAREST);
        ASSERT_NE(up, near) << r.fn;
        EXPECT_EQ(got, r.honours ? up : near) << r.fn;
        EXPECT_EQ(csr & 0x6000u, 0x4000u) << r.fn << ": the caller's direction is back";
    }
}

// Strided forms of every present unary and binary function against the plain
// form on the elements gathered by hand: the results, the gaps left alone,
// and the same error records by ordinal. The inputs have both signs and many
// magnitudes, with a zero, -1 and an infinity planted so that every reporting
// kernel reports; with an increment other than 1 a record carries the error
// name of the strided row in vector/functions.def.
struct Stride { int inca, incb, incr; };
void PrintTo(const Stride& s, std::ostream* os) { *os << s.inca << "_" << s.incb << "_" << s.incr; }
class Strided : public testing::TestWithParam<Stride> {};

std::string strided_errname(const std::string& fn) {
    static const std::map<std::string, std::string> names = [] {
        std::map<std::string, std::string> m;
        std::ifstream in(ORV_FUNCTIONS_DEF);
        for (std::string line, name, w; std::getline(in, line);) {
            std::istringstream f(line);
            for (int col = 0; f >> w; ++col) name = col ? name : w;
            if (name[0] != '#') m[name] = w;  // the last column
        }
        return m;
    }();
    return names.at(fn);
}

template <typename T>
void check_strided(const Kernels& k, const Stride& s, int n) {
    auto span = [n](int inc) { return size_t(std::max(n, 1)) * size_t(std::abs(inc)) + 1; };
    std::vector<T> abuf(span(s.inca)), bbuf(span(s.incb)), rbuf(span(s.incr), T(-5));
    auto base = [n](std::vector<T>& v, int inc) { return v.data() + (inc < 0 ? long(n - 1) * -inc : 0); };
    T* a = base(abuf, s.inca);
    T* b = base(bbuf, s.incb);
    T* r = base(rbuf, s.incr);
    std::vector<T> ga(n), gb(n), gr(n);
    for (int i = 0; i < n; ++i) {
        ga[i] = T(i == 3 ? 0.0 : i == 5 ? -1.0 : i == 6 ? INFINITY : 8 * input(i, 1));
        gb[i] = T(i == 4 ? 0.0 : input(i, 2));
        a[long(i) * s.inca] = ga[i], b[long(i) * s.incb] = gb[i];
    }
    const bool unit = s.inca == 1 && s.incb == 1 && s.incr == 1;
    std::vector<SeenError> want;
    {
        ErrorCapture plain;
        call(k, n, ga.data(), gb.data(), gr.data());
        want = plain.errors();
    }
    ErrorCapture cap;
    call_strided(k, n, a, s.inca, b, s.incb, r, s.incr);
    std::vector<bool> written(rbuf.size());
    for (int i = 0; i < n; ++i) {
        ASSERT_TRUE(same_value(r[long(i) * s.incr], gr[i])) << k.name << " n=" << n << " i=" << i;
        written[size_t(&r[long(i) * s.incr] - rbuf.data())] = true;
    }
    for (size_t j = 0; j < rbuf.size(); ++j)
        if (!written[j]) { ASSERT_EQ(rbuf[j], T(-5)) << "touched a gap"; }
    ASSERT_EQ(cap.errors().size(), want.size()) << k.name << " n=" << n;
    for (size_t e = 0; e < want.size(); ++e) {
        const SeenError& got = cap.errors()[e];
        EXPECT_EQ(std::tie(got.index, got.code), std::tie(want[e].index, want[e].code)) << k.name;
        EXPECT_TRUE(same_value(got.arg1, want[e].arg1)) << k.name;
        EXPECT_EQ(got.name, unit ? want[e].name : strided_errname((sizeof(T) == 4 ? "s" : "d") + k.name + "I"));
    }
}

TEST_P(Strided, EveryKernelAgreesWithItsPlainForm) {
    for (const Kernels& k : all_kernels())
        for (int n : {0, 1, 3, 7, 16, 17, 37}) {
            check_strided<float>(k, GetParam(), n);
            check_strided<double>(k, GetParam(), n);
        }
}
INSTANTIATE_TEST_SUITE_P(Conventions, Strided,
                         testing::Values(Stride{1, 1, 1}, Stride{2, 3, 1}, Stride{3, 1, 2},
                                         Stride{-1, 2, -1}, Stride{1, -1, 3}, Stride{2, 2, 2}));

// The rounding family keeps the caller's direction: Ceil, Floor, Trunc,
// Round and Frac give the same results in every direction, Rint and
// NearbyInt round in it; zeros keep the sign of x throughout. The reference
// is MPFR, whose integral roundings keep the sign of a zero as IEEE 754
// asks (the C library's floor and rint give -0 for 0.5 when rounding down).
struct Dir { int fe; mpfr_rnd_t rnd; };
void PrintTo(const Dir& d, std::ostream* os) { *os << d.fe; }
class Directions : public testing::TestWithParam<Dir> {};

template <typename T>
T mpfr_ref(int op, T x, mpfr_rnd_t rnd) {
    mpfr_t m;
    mpfr_init2(m, 64);
    mpfr_set_d(m, double(x), MPFR_RNDN);
    switch (op) {
        case 0: mpfr_ceil(m, m); break;
        case 1: mpfr_floor(m, m); break;
        case 2: mpfr_trunc(m, m); break;
        case 3: mpfr_round(m, m); break;
        default: mpfr_rint(m, m, rnd); break;
    }
    const T r = T(mpfr_get_d(m, MPFR_RNDN));
    mpfr_clear(m);
    return r;
}

template <typename T>
std::string check_directions(const Dir& d) {
    const double src[] = {0.0, -0.0, 0.5, -0.5, 1.5, -1.5, 2.5, -2.5, 0x1p-1074, -0x1p-149,
                          0.75, -0.99, 4503599627370495.5, -8388607.5, 0x1p52, 1e300, 3.5};
    const int n = int(std::size(src));
    std::vector<T> x(src, src + n), got(n);
    const char* fns[6] = {"Ceil", "Floor", "Trunc", "Round", "Rint", "NearbyInt"};
    std::string msg;
    for (int op = 0; op < 6; ++op) {
        std::fesetround(d.fe);
        call(kernels(fns[op]), n, x.data(), x.data(), got.data());
        std::fesetround(FE_TONEAREST);
        for (int i = 0; i < n; ++i)
            if (!same_value(got[i], mpfr_ref(op, x[i], d.rnd)))
                msg += std::string(fns[op]) + "(" + std::to_string(double(x[i])) + ") ";
    }
    return msg;
}

TEST_P(Directions, RoundingFamilyInEveryDirection) {
    EXPECT_EQ(check_directions<double>(GetParam()), "");
    EXPECT_EQ(check_directions<float>(GetParam()), "");
}
INSTANTIATE_TEST_SUITE_P(Conventions, Directions,
                         testing::Values(Dir{FE_TONEAREST, MPFR_RNDN}, Dir{FE_UPWARD, MPFR_RNDU},
                                         Dir{FE_DOWNWARD, MPFR_RNDD}, Dir{FE_TOWARDZERO, MPFR_RNDZ}));

// Every present real unary function, from the generated list: a signalling
// NaN comes back as a quiet NaN (C Annex F), in block and tail lanes, plain
// and strided, in every slot. Abs only clears the sign bit, which IEEE 754
// allows to keep a NaN signalling.
template <typename T>
bool quiet_nan(T v) {
    using B = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
    const B quiet = sizeof(T) == 4 ? B(0x400000u) : B(0x8000000000000ull);
    return v != v && (std::bit_cast<B>(v) & quiet);
}

template <typename T>
int signalling_in(const void* ttab, bool strided) {
    using B = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
    const B snan[3] = {sizeof(T) == 4 ? B(0x7F800001u) : B(0x7FF0000000000001ull),
                       sizeof(T) == 4 ? B(0xFFA00000u) : B(0xFFF4000000000000ull),
                       sizeof(T) == 4 ? B(0x7FBFFFFFu) : B(0x7FF7FFFFFFFFFFFFull)};
    const int inc = strided ? 2 : 1, n = 19;
    std::vector<T> x(n * inc, T(1)), r(n * inc);
    for (int i = 0; i < n; ++i) x[i * inc] = std::bit_cast<T>(snan[i % 3]);
    int bad = 0;
    for (int slot = 0; slot < 3; ++slot) {
        if (strided)
            reinterpret_cast<void (*const*)(int, const T*, int, T*, int)>(ttab)[slot](n, x.data(), inc, r.data(), inc);
        else
            reinterpret_cast<void (*const*)(int, const T*, T*)>(ttab)[slot](n, x.data(), r.data());
        for (int i = 0; i < n; ++i)
            bad += !quiet_nan(r[i * inc]);
    }
    return bad;
}

TEST(SignallingNaN, UnaryFunctionsReturnQuietNaN) {
    ErrorCapture cap;
    int tried = 0;
    for (const Kernels& k : all_kernels()) {
        if (k.arity != 1 || k.name == "Abs") continue;
        ++tried;
        EXPECT_EQ(signalling_in<float>(k.tab[0], false) + signalling_in<double>(k.tab[1], false) +
                      signalling_in<float>(k.tab[2], true) + signalling_in<double>(k.tab[3], true),
                  0)
            << k.name << ": lanes not quiet, of 228";
    }
    EXPECT_GE(tried, 40);
}

}  // namespace
