// Driver of the accuracy harness. For each registered function and tier
// slot it runs the kernel over special inputs (zeros, denormals, extreme
// normals, infinities, quiet and signalling NaNs, the function's thresholds
// and their neighbours, and all pairs of these for two arguments) and over
// random inputs spread evenly over the binades of the domain, and compares
// each result with the MPFR reference rounded to the element type.
//
//   orv_accuracy [--samples N] [--window N] [--check] [--write FILE] [--only NAME] [--seed S] [--part K/N]
//
// Around every threshold and reduction-table row edge of a function it also
// runs a dense window (--window random values per side and distance, 512
// times more where the function's results cancel), since a random sweep
// over the binades almost never lands on a row edge.
//
// --check makes the exit status 1 when a row passes its bound or a special
// input gives another result than the reference.
#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <orv/vtm.h>

#include "harness.h"

namespace accuracy {

std::vector<Function>& registry() {
    static std::vector<Function> r;
    return r;
}
std::vector<Known>& knowns() {
    static std::vector<Known> k;
    return k;
}

std::vector<double> log_row_edges(double shift) {
    std::vector<double> v;
    for (uint64_t j = 0; j < 128; ++j)
        v.push_back(std::bit_cast<double>(0x3FE5F00000000000ull + (j << 45)) + shift);
    return v;
}

namespace {

constexpr mpfr_prec_t kRefPrec = 160;
const char* const kSlotName[3] = {"LA", "HA", "EP"};

template <typename T>
struct Fmt {
    static constexpr int kPrec = std::numeric_limits<T>::digits;
    static constexpr int kMinExp = std::numeric_limits<T>::min_exponent - 1;  // of min normal
    using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
    static constexpr int kExpBits = sizeof(T) == 4 ? 8 : 11;
    static T get(const mpfr_t x) {
        if constexpr (sizeof(T) == 4)
            return mpfr_get_flt(x, MPFR_RNDN);
        else
            return mpfr_get_d(x, MPFR_RNDN);
    }
    static void set(mpfr_t x, T v) {
        if (std::isnan(v)) {  // keep the sign bit of a NaN, which CopySign reads
            mpfr_set_nan(x);
            mpfr_setsign(x, x, std::signbit(v), MPFR_RNDN);
            return;
        }
        if constexpr (sizeof(T) == 4)
            mpfr_set_flt(x, v, MPFR_RNDN);
        else
            mpfr_set_d(x, v, MPFR_RNDN);
    }
    static T signalling_nan() {
        return std::bit_cast<T>(sizeof(T) == 4 ? Bits(0x7FA00000u) : Bits(0x7FF4000000000000ull));
    }
};

template <typename T>
bool same_bits(T x, T y) { return std::memcmp(&x, &y, sizeof(T)) == 0; }

template <typename T>
std::vector<T> special_values(const Function& f) {
    using L = std::numeric_limits<T>;
    std::vector<T> v = {T(0), L::denorm_min(), L::min() - L::denorm_min(), L::min(), L::max(),
                        L::infinity(), T(1), T(0.5), T(1.5), T(2.5), T(3), T(0.75)};
    for (double t : f.thresholds) {
        const T x = T(t);
        v.push_back(x);
        v.push_back(std::nextafter(x, T(0)));
        v.push_back(std::nextafter(x, L::infinity()));
    }
    const size_t n = v.size();
    for (size_t i = 0; i < n; ++i) v.push_back(-v[i]);
    v.push_back(L::quiet_NaN());
    v.push_back(Fmt<T>::signalling_nan());
    v.push_back(-L::quiet_NaN());
    return v;
}

// Sign at random (or positive), biased exponent uniform over all binades
// including the denormal one, fraction bits uniform.
template <typename T>
T random_value(std::mt19937_64& g, Domain d) {
    using B = typename Fmt<T>::Bits;
    constexpr int mant = Fmt<T>::kPrec - 1;
    const B e = d == Domain::Denormal ? 0 : B(g() % ((1u << Fmt<T>::kExpBits) - 1));
    const B frac = B(g()) & ((B(1) << mant) - 1);
    const B s = d == Domain::All ? B(g() & 1) << (sizeof(T) * 8 - 1) : 0;
    return std::bit_cast<T>(B(s | (e << mant) | frac));
}

struct Stats {
    long inputs = 0;
    double max_ulp = 0;
    double sum_ulp = 0;
    long special_fail = 0;
    long bound_fail = 0;
    std::string first_failure;
};

template <typename T>
struct Evaluator {
    const Function& f;
    double bound;
    mpfr_t a, b, r, r2, got, ulp;
    Evaluator(const Function& fn, double bd) : f(fn), bound(bd) {
        mpfr_inits2(kRefPrec, a, b, r, r2, got, ulp, (mpfr_ptr)nullptr);
    }
    ~Evaluator() { mpfr_clears(a, b, r, r2, got, ulp, (mpfr_ptr)nullptr); }

    // Error of got against the reference r, in ULP of the element type;
    // infinity when a rounded result differs in class (NaN, zero, infinity).
    double error(T g, mpfr_t ref) {
        const T want = Fmt<T>::get(ref);
        if (std::isnan(want) || std::isnan(g)) return std::isnan(want) && std::isnan(g) ? 0 : INFINITY;
        if (want == 0 || std::isinf(want) || g == 0 || std::isinf(g))
            return same_bits(g, want) ? 0 : INFINITY;
        Fmt<T>::set(got, g);
        mpfr_sub(got, got, ref, MPFR_RNDN);
        mpfr_abs(got, got, MPFR_RNDN);
        const int e = std::max(std::ilogb(want), Fmt<T>::kMinExp);
        mpfr_div_2si(got, got, e - (Fmt<T>::kPrec - 1), MPFR_RNDN);
        double err = mpfr_get_d(got, MPFR_RNDN);
        // Rounded right is always within the bound, whatever the ULP figure.
        if (same_bits(g, want) && err > bound) err = std::min(err, 0.5);
        return err;
    }

    void record(Stats& st, bool special, T x, T y, T g, double err) {
        ++st.inputs;
        const bool ok = err <= bound || (bound <= 0.5 && err <= 0.5);
        if (std::isfinite(err)) {
            st.max_ulp = std::max(st.max_ulp, err);
            st.sum_ulp += err;
        }
        if (!ok) {
            (special ? st.special_fail : st.bound_fail)++;
            if (st.first_failure.empty()) {
                char buf[200];
                std::snprintf(buf, sizeof buf, "(%a, %a) gave %a", double(x), double(y), double(g));
                st.first_failure = buf;
            }
        }
    }

    // Runs the kernel of one slot on inputs x (and y) and scores each result.
    void run(int slot, const std::vector<T>& x, const std::vector<T>& y, bool special, Stats& st) {
        const int n = int(x.size());
        std::vector<T> out(n), out2(n);
        const T sa = T(1.5), ha = T(-0.25), sb = T(-0.75), hb = T(2);
        if (f.strided) {
            // Increment 3 on every array; the gaps must stay as they were.
            constexpr int inc = 3;
            std::vector<T> xs(size_t(n) * inc + 1, T(-7)), ys(xs), rs(xs), rs2(xs);
            for (int i = 0; i < n; ++i) xs[size_t(i) * inc] = x[i], ys[size_t(i) * inc] = y[i];
            switch (f.shape) {
                case Shape::Unary:
                    reinterpret_cast<void (*const*)(int, const T*, int, T*, int)>(f.ttab)[slot](
                        n, xs.data(), inc, rs.data(), inc);
                    break;
                case Shape::Binary:
                    reinterpret_cast<void (*const*)(int, const T*, int, const T*, int, T*, int)>(
                        f.ttab)[slot](n, xs.data(), inc, ys.data(), inc, rs.data(), inc);
                    break;
                case Shape::TwoResults:
                    reinterpret_cast<void (*const*)(int, const T*, int, T*, int, T*, int)>(f.ttab)[slot](
                        n, xs.data(), inc, rs.data(), inc, rs2.data(), inc);
                    break;
                case Shape::LinearFrac:
                    reinterpret_cast<void (*const*)(int, const T*, int, const T*, int, T, T, T, T, T*,
                                                    int)>(f.ttab)[slot](n, xs.data(), inc, ys.data(), inc,
                                                                         sa, ha, sb, hb, rs.data(), inc);
                    break;
                    break;
                case Shape::ScalarParam:
                    for (int i = 0, j; i < n; i = j) {  // one call a run of equal exponents
                        for (j = i + 1; j < n && same_bits(y[j], y[i]); ++j) {}
                        reinterpret_cast<void (*const*)(int, const T*, int, T, T*, int)>(f.ttab)[slot](
                            j - i, xs.data() + size_t(i) * inc, inc, y[i], rs.data() + size_t(i) * inc, inc);
                    }
                    break;
            }
            for (size_t j = 0; j < rs.size(); ++j)
                if (j % inc != 0 || j / inc >= size_t(n)) {
                    if (rs[j] != T(-7) || rs2[j] != T(-7)) ++st.special_fail;
                } else {
                    out[j / inc] = rs[j];
                    out2[j / inc] = rs2[j];
                }
        } else {
            switch (f.shape) {
                case Shape::Unary:
                    reinterpret_cast<void (*const*)(int, const T*, T*)>(f.ttab)[slot](n, x.data(), out.data());
                    break;
                case Shape::Binary:
                    reinterpret_cast<void (*const*)(int, const T*, const T*, T*)>(f.ttab)[slot](
                        n, x.data(), y.data(), out.data());
                    break;
                case Shape::TwoResults:
                    reinterpret_cast<void (*const*)(int, const T*, T*, T*)>(f.ttab)[slot](
                        n, x.data(), out.data(), out2.data());
                    break;
                case Shape::LinearFrac:
                    reinterpret_cast<void (*const*)(int, const T*, const T*, T, T, T, T, T*)>(f.ttab)[slot](
                        n, x.data(), y.data(), sa, ha, sb, hb, out.data());
                    break;
                    break;
                case Shape::ScalarParam:
                    for (int i = 0, j; i < n; i = j) {
                        for (j = i + 1; j < n && same_bits(y[j], y[i]); ++j) {}
                        reinterpret_cast<void (*const*)(int, const T*, T, T*)>(f.ttab)[slot](
                            j - i, x.data() + i, y[i], out.data() + i);
                    }
                    break;
            }
        }
        for (int i = 0; i < n; ++i) {
            Fmt<T>::set(a, x[i]);
            Fmt<T>::set(b, y[i]);
            if (f.shape == Shape::LinearFrac) {
                // The numerator and denominator are single IEEE steps each.
                volatile T num = x[i] * sa;
                volatile T den = y[i] * sb;
                Fmt<T>::set(a, T(num + ha));
                Fmt<T>::set(b, T(den + hb));
            }
            f.ref(r, r2, a, b);
            double err = error(out[i], r);
            if (f.shape == Shape::TwoResults) err = std::max(err, error(out2[i], r2));
            record(st, special, x[i], y[i], out[i], err);
        }
    }
};

// A dense window around c: the 64 neighbours on each side, and n random
// values on each side at three relative distances (2^-8, 2^-20, 2^-40 for
// double; 2^-6, 2^-12, 2^-18 for single), where a row's rounding errors meet.
template <typename T>
void add_window(std::vector<T>& v, double centre, long n, std::mt19937_64& g, Domain d) {
    using B = typename Fmt<T>::Bits;
    const T c = T(centre);
    if (!std::isfinite(c) || c == T(0) || (d != Domain::All && c < T(0))) return;
    const B cb = std::bit_cast<B>(c);
    const B mag = cb & (std::numeric_limits<B>::max() >> 1);
    for (int k = -64; k <= 64; ++k)
        if (k >= 0 || mag >= B(-k)) v.push_back(std::bit_cast<T>(B(cb + B(k))));
    const int scales[3] = {sizeof(T) == 4 ? 6 : 8, sizeof(T) == 4 ? 12 : 20, sizeof(T) == 4 ? 18 : 40};
    std::uniform_real_distribution<double> u(0.0, 1.0);
    for (int s : scales)
        for (int side = -1; side <= 1; side += 2)
            for (long i = 0; i < n; ++i)
                v.push_back(T(double(c) + side * std::ldexp(u(g), -s) * std::fabs(double(c))));
}

template <typename T>
Stats measure(const Function& f, int slot, double bound, long samples, long window, uint64_t seed) {
    Stats st;
    Evaluator<T> ev(f, bound);
    const bool two = f.shape == Shape::Binary || f.shape == Shape::LinearFrac ||
                     f.shape == Shape::ScalarParam;
    const bool single = sizeof(T) == 4;
    // Special inputs, and every pair of them for two arguments.
    const std::vector<T> sp = special_values<T>(f);
    std::vector<T> x, y;
    for (T u : sp) {
        if (two) {
            for (T v : sp) {
                x.push_back(u);
                y.push_back(v);
            }
        } else {
            x.push_back(u);
            y.push_back(u);
        }
    }
    ev.run(slot, x, y, true, st);
    std::mt19937_64 g(seed);
    const long chunk = 4096;
    // Dense windows at the thresholds, row edges and (deeper) where results
    // cancel; a second argument, if any, at random.
    if (!f.strided && window > 0) {
        std::vector<std::pair<double, long>> centres;
        for (double c : f.thresholds) centres.push_back({c, window});
        for (double c : f.edges) centres.push_back({c, window});
        for (double c : f.deep) centres.push_back({c, window * 512});
        for (const auto& [c, n] : centres) {
            x.clear();
            add_window<T>(x, c, n, g, f.domain);
            for (size_t at = 0; at < x.size(); at += chunk) {
                std::vector<T> xs(x.begin() + long(at), x.begin() + long(std::min(x.size(), at + chunk)));
                std::vector<T> ys(xs);
                if (two)
                    for (T& v : ys) v = f.pair ? T(f.pair->y(g, single)) : random_value<T>(g, Domain::All);
                if (f.shape == Shape::ScalarParam) std::fill(ys.begin(), ys.end(), ys[0]);
                ev.run(slot, xs, ys, false, st);
            }
        }
    }
    // Random inputs in chunks.
    if (f.strided) samples /= 10;
    for (long done = 0; done < samples; done += chunk) {
        const long m = std::min(chunk, samples - done);
        x.resize(m);
        y.resize(m);
        const T chunk_y = f.pair ? T(f.pair->y(g, single)) : T(0);
        for (long i = 0; i < m; ++i) {
            if (f.pair) {
                y[i] = f.shape == Shape::ScalarParam ? chunk_y : T(f.pair->y(g, single));
                x[i] = T(f.pair->x(g, double(y[i]), single));
                continue;
            }
            x[i] = random_value<T>(g, f.domain);
            y[i] = two ? random_value<T>(g, Domain::All) : x[i];
        }
        ev.run(slot, x, y, false, st);
    }
    return st;
}

std::string fmt_bound(double b) {
    if (b == kExact) return "exact";
    if (b == kCorrectlyRounded) return "correctly rounded";
    char buf[32];
    std::snprintf(buf, sizeof buf, "%g ULP", b);
    return buf;
}

// The measured rows: one for each present real function of a shape the
// harness runs, from the generated list, joined with its description.
// Rows without a description come back with ref == nullptr.
std::vector<Function> rows() {
    struct Gen {
        const char* name;
        const char* base;
        char type;
        bool strided;
        const char* shape;
        const void* ttab;
        double bound[3];
    };
#define X(NAME, BASE, TYPE, STRIDED, FAMILY, SHAPE, B0, B1, B2) \
    Gen{#NAME, #BASE, TYPE, STRIDED, #SHAPE, (const void*)orv_vtm_kernel_##NAME##_ttab, {B0, B1, B2}},
    static const Gen gen[] = {
#include "vtm_rows.inc"
    };
#undef X
    const std::map<std::string, Shape> shapes = {{"unary", Shape::Unary},
                                                 {"binary", Shape::Binary},
                                                 {"two_results", Shape::TwoResults},
                                                 {"linear_frac", Shape::LinearFrac},
                                                 {"scalar_param", Shape::ScalarParam}};
    std::vector<Function> out;
    for (const Gen& g : gen) {
        const auto sh = shapes.find(g.shape);
        if (sh == shapes.end() || (g.type != 's' && g.type != 'd')) continue;
        const std::string key = std::string(1, g.type) + g.base;
        Function f{g.name, g.type, sh->second, g.ttab, nullptr, Domain::All,
                   {g.bound[0], g.bound[1], g.bound[2]}, {}};
        for (const Known& k : knowns())
            if (k.key == key) {
                f.ref = k.ref;
                f.domain = k.domain;
                f.thresholds = k.thresholds;
                f.pair = k.pair;
                if (!g.strided) f.edges = k.edges, f.deep = k.deep;
            }
        f.strided = g.strided;
        out.push_back(std::move(f));
    }
    for (const Function& f : registry()) out.push_back(f);
    return out;
}

}  // namespace
}  // namespace accuracy

int main(int argc, char** argv) {
    using namespace accuracy;
    long samples = 100000;
    long window = 256;
    bool check = false;
    const char* write = nullptr;
    std::string only;
    uint64_t seed = 20261121;
    long part = 0, parts = 1;  // --part K/N: one of N disjoint shares of the rows, so ctest can run N in parallel
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--samples" && i + 1 < argc) samples = std::atol(argv[++i]);
        else if (a == "--window" && i + 1 < argc) window = std::atol(argv[++i]);
        else if (a == "--check") check = true;
        else if (a == "--write" && i + 1 < argc) write = argv[++i];
        else if (a == "--only" && i + 1 < argc) only = argv[++i];
        else if (a == "--seed" && i + 1 < argc) seed = std::strtoull(argv[++i], nullptr, 0);
        else if (a == "--part" && i + 1 < argc &&
                 std::sscanf(argv[++i], "%ld/%ld", &part, &parts) == 2 && parts > 0 && part >= 0 && part < parts) {
        } else {
            std::fprintf(stderr, "usage: %s [--samples N] [--window N] [--check] [--write FILE] [--only NAME] [--seed S] [--part K/N]\n", argv[0]);
            return 2;
        }
    }
    // Errors are recorded but no callback, errno or printing runs.
    _vtmSetMode(VTM_ERRMODE_IGNORE | VTM_FTZDAZ_OFF);

    std::string table =
        "| Function | Slot | Inputs | Max ULP | Mean ULP | Bound | Special mismatches | Result |\n"
        "|---|---|---|---|---|---|---|---|\n";
    int failures = 0;
    for (const Function& f : rows()) {
        // Rows of one family and form lie side by side and cost alike: deal them by a hash of the name.
        uint64_t h = 1469598103934665603ull;  // FNV-1a
        for (unsigned char c : f.name) h = (h ^ c) * 1099511628211ull;
        if (long(h % uint64_t(parts)) != part) continue;
        if (!only.empty() && f.name != only) continue;
        if (!f.ref) {
            std::printf("| %s | - | 0 | - | - | - | - | FAIL |\n    no reference in tools/accuracy\n",
                        f.name.c_str());
            ++failures;
            continue;
        }
        std::map<const void*, Stats> by_kernel;  // one kernel in several slots is measured once
        for (int slot = 0; slot < 3; ++slot) {
            const void* kernel = reinterpret_cast<void* const*>(f.ttab)[slot];
            auto it = by_kernel.find(kernel);
            Stats st;
            if (it != by_kernel.end() && f.bound[slot] == f.bound[1]) {
                st = it->second;
            } else {
                st = f.type == 's' ? measure<float>(f, slot, f.bound[slot], samples, window, seed)
                                   : measure<double>(f, slot, f.bound[slot], samples, window, seed);
                by_kernel[kernel] = st;
            }
            const bool pass = st.special_fail == 0 && st.bound_fail == 0;
            failures += !pass;
            char row[400];
            std::snprintf(row, sizeof row, "| %s | %s | %ld | %.4g | %.3g | %s | %ld | %s |\n",
                          f.name.c_str(), kSlotName[slot], st.inputs, st.max_ulp,
                          st.inputs ? st.sum_ulp / double(st.inputs) : 0.0,
                          fmt_bound(f.bound[slot]).c_str(), st.special_fail,
                          pass ? "pass" : "FAIL");
            table += row;
            std::fputs(row, stdout);
            if (!pass) std::printf("    first failure: %s\n", st.first_failure.c_str());
        }
    }
    if (write) {
        FILE* o = std::fopen(write, "w");
        if (!o) {
            std::perror(write);
            return 2;
        }
        char date[32];
        const std::time_t now = std::time(nullptr);
        std::strftime(date, sizeof date, "%Y-%m-%d", std::gmtime(&now));
        std::fprintf(o,
                     "# Accuracy of the vector functions\n\n"
                     "Written by `orv_accuracy --samples %ld --window %ld --write docs/accuracy.md` on %s.\n"
                     "Each row: the kernel in that tier slot against an MPFR reference at %d bits\n"
                     "rounded to the element type. Inputs are the special values (both zeros,\n"
                     "denormals, smallest and largest normals, infinities, quiet and signalling\n"
                     "NaNs, the thresholds of the function and their neighbours; all pairs for\n"
                     "two arguments), %ld random inputs spread evenly over the binades, and a\n"
                     "dense window around every threshold and reduction-table row edge: the 64\n"
                     "neighbours on each side and %ld random values on each side at three\n"
                     "relative distances, %ld where the results cancel (the logarithms' rows\n"
                     "next to 1). Strided rows run the same kernels and skip the windows.\n"
                     "ULP errors are of the result against the exact value; a correctly rounded\n"
                     "result has at most 0.5. Where several slots hold the same kernel, the\n"
                     "figures are those of one run of that kernel.\n\n%s",
                     samples, window, date, int(kRefPrec), samples, window, window * 512,
                     table.c_str());
        std::fclose(o);
    }
    std::printf("%d row(s) failed\n", failures);
    return check && failures ? 1 : 0;
}
