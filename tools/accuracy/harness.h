// Accuracy harness. The rows come from the generated list of present
// functions (vtm_rows.inc: table, shape, per-tier bounds); what this
// directory adds by hand is, per type and base name, an MPFR reference, the
// input domain and the points where the function's paths change. A present
// function without that description fails the run. The driver feeds every
// tier slot special, windowed and random inputs and measures the error in
// ULP against the reference.
#pragma once

#include <mpfr.h>

#include <random>
#include <string>
#include <vector>

namespace accuracy {

enum class Shape { Unary, Binary, TwoResults, LinearFrac, ScalarParam };
// Random inputs: all finite values and sign, positive ones, or positive
// denormals only (to reach a callout).
enum class Domain { All, Positive, Denormal };

// The reference writes the exact result (to the precision of r) of the
// function at a (and b). TwoResults writes both r and r2.
using Reference = void (*)(mpfr_t r, mpfr_t r2, const mpfr_t a, const mpfr_t b);

// Random inputs of a power: the exponent y, then a base x for it (so that
// y log2 x falls over the binades of the result rather than mostly beyond
// them). single is true for float. For ScalarParam (Powx) one y serves a
// chunk of random inputs.
struct PairDraw {
    double (*y)(std::mt19937_64& g, bool single);
    double (*x)(std::mt19937_64& g, double y, bool single);
};

// Error bounds in ULP; 0.5 means correctly rounded, 0 means exact.
inline constexpr double kExact = 0.0;
inline constexpr double kCorrectlyRounded = 0.5;

struct Function {
    std::string name;      // "sSqrt"
    char type;             // 's' or 'd'
    Shape shape;
    const void* ttab;      // the function's kernel table, three slots
    Reference ref;
    Domain domain;
    double bound[3];       // per slot LA, HA, EP
    std::vector<double> thresholds;  // range thresholds: tried with neighbours and a window
    std::vector<double> edges = {};  // reduction-table row edges: a window each
    std::vector<double> deep = {};   // edges where results cancel: a deeper window
    bool strided = false;  // the I table, run with increments 3: specials and a tenth
                           // of the random inputs, no windows (same kernels as plain)
    const PairDraw* pair = nullptr;  // random pairs of a power (else y as x's domain)
};

// The hand-written part of a function's row, keyed by type and base name.
struct Known {
    std::string key;  // "sExp"
    Reference ref;
    Domain domain;
    std::vector<double> thresholds = {};
    std::vector<double> edges = {};
    std::vector<double> deep = {};
    const PairDraw* pair = nullptr;
};
std::vector<Known>& knowns();
struct Describe {
    explicit Describe(std::vector<Known> ks) {
        for (auto& k : ks) knowns().push_back(std::move(k));
    }
};

// Row edges of a periodic reduction n = round(x / step): (j + 1/2) step for
// j in [-count, count).
inline std::vector<double> periodic_edges(double step, int count) {
    std::vector<double> v;
    for (int j = -count; j < count; ++j) v.push_back((j + 0.5) * step);
    return v;
}

// Row edges of the 128-row logarithm table: z from 0x1.5fp-1 in rows of
// 2^45 units of the bits, shifted by 'shift' (x = z + shift), over two
// binades of z.
std::vector<double> log_row_edges(double shift = 0.0);

// Rows measured beside the generated ones (a path that random inputs of the
// function's domain would seldom reach).
std::vector<Function>& registry();
struct Register {
    explicit Register(std::vector<Function> fs) {
        for (auto& f : fs) registry().push_back(std::move(f));
    }
};

}  // namespace accuracy
