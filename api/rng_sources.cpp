// Checked calls for quasi-random streams with the caller's numbers and for
// abstract streams. The kernel quietly falls back to built-in numbers when
// user data doesn't fit; these calls refuse such data with a status instead.
#include <orv/orv_rng_sources.h>

#include <algorithm>
#include <vector>

namespace {

constexpr uint32_t kSobolBuiltIn = 40, kNiederrBuiltIn = 318;
// Chunk sizes stay within an int32 byte count.
constexpr uint32_t kSobolUserMax = (0x7FFFFFFFu / 4 - 2048) / 64;
constexpr uint32_t kNiederrUserMax = (0x7FFFFFFFu / 4) / 33;

int degree(uint64_t p) { return p == 0 ? -1 : 63 - __builtin_clzll(p); }

// Degrees of the built-in primitive polynomials of Sobol dimensions 1 to 39.
int sobol_built_in_degree(uint32_t d) {
    static const uint32_t last_of_degree[] = {1, 2, 4, 6, 12, 18, 36, 39};
    int s = 1;
    while (d > last_of_degree[s - 1]) ++s;
    return s;
}

bool polynomial_ok(uint32_t p) { return (p & 1u) != 0 && degree(p) >= 1 && degree(p) <= 31; }

// Initial numbers m_0..m_{s-1}: odd and m_k below 2^(k+1).
bool initial_numbers_ok(const uint32_t* m, int s) {
    for (int k = 0; k < s; ++k)
        if ((m[k] & 1u) == 0 || uint64_t{m[k]} >= (uint64_t{1} << (k + 1))) return false;
    return true;
}

uint64_t gf2_mulmod(uint64_t a, uint64_t b, uint64_t p) {
    const int n = degree(p);
    uint64_t r = 0;
    for (; b != 0; b >>= 1) {
        if (b & 1u) r ^= a;
        a <<= 1;
        if ((a >> n) & 1u) a ^= p;
    }
    return r;
}

uint64_t gf2_gcd(uint64_t a, uint64_t b) {
    while (b != 0) {
        while (a != 0 && degree(a) >= degree(b)) a ^= b << (degree(a) - degree(b));
        std::swap(a, b);
    }
    return a;
}

// Ben-Or's test: p of degree n is irreducible when gcd(x^(2^i) - x, p) = 1
// for i = 1 .. n/2.
bool irreducible(uint32_t p) {
    const int n = degree(p);
    if (n < 1 || n > 31) return false;
    uint64_t x2i = 2;  // x^(2^i) mod p
    for (int i = 1; i <= n / 2; ++i) {
        x2i = gf2_mulmod(x2i, x2i, p);
        if (gf2_gcd(p, x2i ^ 2) != 1) return false;
    }
    return true;
}

int32_t make(void** out, int32_t id, const std::vector<uint32_t>& params) {
    void* s = nullptr;
    const int32_t status = __vstNewStreamEx(&s, id, static_cast<int32_t>(params.size()), params.data());
    if (status != 0) {
        if (s != nullptr) __vstDeleteStream(&s);
        return status;
    }
    *out = s;
    return 0;
}

int32_t sobol_data_ok(uint32_t dim, uint32_t mode, uint64_t nwords, const uint32_t* data) {
    const uint32_t kind = mode & 7u;
    const bool with_first = (mode & 8u) != 0;
    const uint64_t given = with_first ? dim : dim - 1;
    const uint32_t first = with_first ? 0 : 1;
    switch (kind) {
        case 1:
            if (dim > kSobolBuiltIn || nwords != given) return ORV_RNG_ERROR_BAD_ARGUMENT;
            for (uint64_t i = 0; i < given; ++i)
                if (!polynomial_ok(data[i])) return ORV_RNG_ERROR_BAD_ARGUMENT;
            return 0;
        case 2: {
            if (dim > kSobolBuiltIn || nwords < 1) return ORV_RNG_ERROR_BAD_ARGUMENT;
            const uint64_t row = data[0];
            if (nwords != 1 + given * row) return ORV_RNG_ERROR_BAD_ARGUMENT;
            for (uint32_t d = std::max(first, 1u); d < dim; ++d) {
                const int s = sobol_built_in_degree(d);
                if (row < static_cast<uint64_t>(s) || !initial_numbers_ok(data + 1 + (d - first) * row, s))
                    return ORV_RNG_ERROR_BAD_ARGUMENT;
            }
            return 0;
        }
        case 3: {
            if (dim > kSobolUserMax || nwords < given + 1) return ORV_RNG_ERROR_BAD_ARGUMENT;
            const uint64_t max_degree = data[given];
            if (max_degree > 31 || nwords != given + 1 + given * max_degree) return ORV_RNG_ERROR_BAD_ARGUMENT;
            for (uint64_t i = 0; i < given; ++i) {
                const uint32_t p = data[i];
                if (!polynomial_ok(p) || static_cast<uint64_t>(degree(p)) > max_degree ||
                    !initial_numbers_ok(data + given + 1 + i * max_degree, degree(p)))
                    return ORV_RNG_ERROR_BAD_ARGUMENT;
            }
            return 0;
        }
        case 4:
            return dim <= kSobolUserMax && nwords == uint64_t{32} * dim ? 0 : ORV_RNG_ERROR_BAD_ARGUMENT;
        default:
            return ORV_RNG_ERROR_BAD_ARGUMENT;
    }
}

int32_t niederr_data_ok(uint32_t dim, uint32_t mode, uint64_t nwords, const uint32_t* data) {
    if (dim > kNiederrUserMax) return ORV_RNG_ERROR_BAD_ARGUMENT;
    if (mode == 4) return nwords == uint64_t{32} * dim ? 0 : ORV_RNG_ERROR_BAD_ARGUMENT;
    if (mode != 1 || nwords != dim) return ORV_RNG_ERROR_BAD_ARGUMENT;
    std::vector<uint32_t> sorted(data, data + dim);
    std::sort(sorted.begin(), sorted.end());
    if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) return ORV_RNG_ERROR_BAD_ARGUMENT;
    for (uint32_t p : sorted)
        if (!irreducible(p)) return ORV_RNG_ERROR_BAD_ARGUMENT;
    return 0;
}

int32_t quasi(void** out, int32_t id, uint32_t dim, uint32_t mode, int32_t nwords, const uint32_t* data) {
    if (out == nullptr) return ORV_RNG_ERROR_NULL_PTR;
    const uint32_t built_in = id == ORV_BRNG_SOBOL ? kSobolBuiltIn : kNiederrBuiltIn;
    if (dim == 0 || nwords < 0) return ORV_RNG_ERROR_BAD_ARGUMENT;
    if (mode == 0) return dim <= built_in ? make(out, id, {dim}) : ORV_RNG_ERROR_BAD_ARGUMENT;
    if (data == nullptr) return ORV_RNG_ERROR_NULL_PTR;
    if (mode > 15) return ORV_RNG_ERROR_BAD_ARGUMENT;
    const int32_t ok = id == ORV_BRNG_SOBOL ? sobol_data_ok(dim, mode, static_cast<uint64_t>(nwords), data)
                                            : niederr_data_ok(dim, mode, static_cast<uint64_t>(nwords), data);
    if (ok != 0) return ok;
    if (nwords > 0x7FFFFFFF - 3) return ORV_RNG_ERROR_BAD_ARGUMENT;
    std::vector<uint32_t> params = {dim, 1, mode};
    params.insert(params.end(), data, data + nwords);
    return make(out, id, params);
}

}  // namespace

extern "C" {

ORV_API int32_t vstNewSobolStream(void** out, uint32_t dimension, uint32_t mode, int32_t nwords,
                                  const uint32_t* data) {
    return quasi(out, ORV_BRNG_SOBOL, dimension, mode, nwords, data);
}

ORV_API int32_t vstNewNiederrStream(void** out, uint32_t dimension, uint32_t mode, int32_t nwords,
                                    const uint32_t* data) {
    if (mode >= 2 && mode != 4) return out == nullptr ? ORV_RNG_ERROR_NULL_PTR : ORV_RNG_ERROR_BAD_ARGUMENT;
    return quasi(out, ORV_BRNG_NIEDERR, dimension, mode, nwords, data);
}

ORV_API int32_t vstiNewAbstractStream(void** out, int32_t n, uint32_t* buffer, OrvIAbstractRefill refill) {
    return __vstiNewAbstractStream(out, n, buffer, refill);
}

ORV_API int32_t vstdNewAbstractStream(void** out, int32_t n, double* buffer, double c, double d,
                                      OrvDAbstractRefill refill) {
    return __vstdNewAbstractStream(out, n, buffer, c, d, refill);
}

ORV_API int32_t vstsNewAbstractStream(void** out, int32_t n, float* buffer, float c, float d,
                                      OrvSAbstractRefill refill) {
    return __vstsNewAbstractStream(out, n, buffer, c, d, refill);
}

}  // extern "C"
