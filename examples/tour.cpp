// The tour: a Monte Carlo valuation of European call options, done through
// the public calls of the library.
//
//  1. Terminal prices of 2^21 geometric Brownian motion paths, drawn on four
//     streams made independent by skip-ahead, in four threads, exponentiated
//     with the vector functions; the same paths drawn again on one stream
//     must come out bit for bit the same.
//  2. A statistics task summarises the prices and discounted payoffs in one
//     compute call: mean, variance, extremes, quantiles and the sorted
//     prices; each is checked against the closed-form answer.
//  3. Call prices for a grid of strikes, from the sorted prices, are fitted by
//     a cubic spline; the spline is evaluated between the strikes (against
//     Black-Scholes), differentiated twice (against the density of the
//     terminal price) and integrated (against a quadrature of Black-Scholes).
#include <orv/orv.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

// Market and contract.
constexpr double kSpot = 100, kRate = 0.03, kVol = 0.25, kYears = 1;
constexpr int64_t kPaths = int64_t(1) << 21;
constexpr int kWorkers = 4;
constexpr int kChunk = 1 << 15;  // paths per vector call
constexpr uint32_t kSeed = 20261122;
constexpr double kPi = 3.14159265358979323846;

using Clock = std::chrono::steady_clock;
double since(Clock::time_point t0) { return std::chrono::duration<double>(Clock::now() - t0).count(); }

int g_failures = 0;
void check(bool ok, const char* what, double got, double want, double tol) {
    std::printf("  %-44s %14.6f  expected %14.6f  (within %.2g)  %s\n", what, got, want, tol,
                ok ? "ok" : "FAILED");
    if (!ok) ++g_failures;
}
void check_near(const char* what, double got, double want, double tol) {
    check(std::fabs(got - want) <= tol, what, got, want, tol);
}

double normal_cdf(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }

double black_scholes_call(double strike) {
    const double sd = kVol * std::sqrt(kYears);
    const double d1 = (std::log(kSpot / strike) + (kRate + 0.5 * kVol * kVol) * kYears) / sd;
    return kSpot * normal_cdf(d1) - strike * std::exp(-kRate * kYears) * normal_cdf(d1 - sd);
}

// Density of the terminal price (log-normal).
double terminal_density(double s) {
    const double sd = kVol * std::sqrt(kYears);
    const double m = std::log(kSpot) + (kRate - 0.5 * kVol * kVol) * kYears;
    const double z = (std::log(s) - m) / sd;
    return std::exp(-0.5 * z * z) / (s * sd * std::sqrt(2 * kPi));
}

// Terminal prices of paths [first, first + count) from one stream: Gaussian
// log-returns drawn by Box-Muller with both values of each pair kept (one
// uniform a path, so the streams skipped ahead by whole shares never
// overlap), then exponentiated by the vector call.
int simulate(OrvStreamPtr stream, int64_t count, double* out, std::atomic<int64_t>* done) {
    const double drift = (kRate - 0.5 * kVol * kVol) * kYears, sd = kVol * std::sqrt(kYears);
    for (int64_t start = 0; start < count; start += kChunk) {
        const int n = static_cast<int>(std::min<int64_t>(kChunk, count - start));
        double* x = out + start;
        if (int st = vstdRngGaussian(ORV_RNG_METHOD_GAUSSIAN_BOXMULLER2, stream, n, x, drift, sd)) return st;
        vtmdExp(n, x, x);
        for (int i = 0; i < n; ++i) x[i] *= kSpot;
        done->fetch_add(n, std::memory_order_relaxed);
    }
    return 0;
}

// All paths on `workers` streams, stream w skipped ahead to path w * share.
bool simulate_all(int workers, double* out, double* seconds) {
    const int64_t share = kPaths / workers;
    std::vector<OrvStreamPtr> streams(workers, nullptr);
    for (int w = 0; w < workers; ++w)
        if (vstNewStream(&streams[w], ORV_BRNG_MRG32K3A, kSeed) != 0 ||
            vstSkipAheadStream(streams[w], w * share) != 0)
            return false;
    std::atomic<int64_t> done{0};
    std::vector<int> status(workers, 0);
    const auto t0 = Clock::now();
    std::vector<std::thread> pool;
    for (int w = 0; w < workers; ++w)
        pool.emplace_back([&, w] { status[w] = simulate(streams[w], share, out + w * share, &done); });
    // Progress line while the workers run (on a terminal).
    const bool tty = isatty(1);
    while (tty && done.load() < kPaths && std::none_of(status.begin(), status.end(), [](int s) { return s; })) {
        std::printf("\r  %d stream(s): %3.0f%% of %lld paths", workers,
                    100.0 * double(done.load()) / double(kPaths), static_cast<long long>(kPaths));
        std::fflush(stdout);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    for (std::thread& t : pool) t.join();
    *seconds = since(t0);
    std::printf("%s  %d stream(s): 100%% of %lld paths in %.3f s\n", tty ? "\r" : "", workers,
                static_cast<long long>(kPaths), *seconds);
    for (OrvStreamPtr& s : streams) vstDeleteStream(&s);
    return std::all_of(status.begin(), status.end(), [](int s) { return s == 0; });
}

}  // namespace

int main() {
    std::printf("orv tour: Monte Carlo valuation of European calls\n");
    std::printf("spot %.0f, rate %.2f, volatility %.2f, %.0f year, %lld paths\n\n", kSpot, kRate,
                kVol, kYears, static_cast<long long>(kPaths));

    // 1. Paths.
    std::printf("1. Terminal prices (MRG32k3a, skip-ahead streams, Gaussian draws, vector Exp)\n");
    std::vector<double> data(2 * kPaths);  // variable 0: price, variable 1: discounted payoff
    std::vector<double> serial(kPaths);
    double t_par = 0, t_ser = 0;
    if (!simulate_all(kWorkers, data.data(), &t_par) || !simulate_all(1, serial.data(), &t_ser)) {
        std::printf("stream or draw failed\n");
        return 1;
    }
    const bool same = std::equal(serial.begin(), serial.end(), data.begin());
    std::printf("  %d streams against one: %s; %.2fx the speed of one stream (%u hardware threads)\n",
                kWorkers, same ? "bit for bit the same paths" : "DIFFERENT paths", t_ser / t_par,
                std::thread::hardware_concurrency());
    if (!same) ++g_failures;
    const double strike = 105, discount = std::exp(-kRate * kYears);
    for (int64_t i = 0; i < kPaths; ++i)
        data[kPaths + i] = discount * std::max(data[i] - strike, 0.0);

    // 2. Summary statistics, one compute call.
    std::printf("\n2. Statistics task: one compute call, default (running) method\n");
    int64_t p = 2, n = kPaths, layout = SS_STORAGE_BY_VARIABLE, nq = 3;
    double mean[2], raw2[2], var[2], lo[2], hi[2], orders[3] = {0.05, 0.5, 0.95}, q[6];
    std::vector<double> sorted(2 * kPaths);
    SsTask* task = nullptr;
    int st = vstdSSNewTask(&task, &p, &n, &layout, data.data(), nullptr, nullptr);
    if (st == 0) st = vstdSSEditMoments(task, mean, raw2, nullptr, nullptr, var, nullptr, nullptr);
    if (st == 0) st = vstdSSEditTask(task, SS_ED_minimum, lo);
    if (st == 0) st = vstdSSEditTask(task, SS_ED_maximum, hi);
    if (st == 0) st = vstdSSEditQuantiles(task, &nq, orders, q, nullptr, nullptr);
    if (st == 0) st = vstdSSEditTask(task, SS_ED_sorted, sorted.data());
    if (st == 0) st = vstiSSEditTask(task, SS_ED_sorted_storage, &layout);
    auto t0 = Clock::now();
    if (st == 0)
        st = vstdSSCompute(task, SS_EST_MEAN | SS_EST_CENTRAL2 | SS_EST_MIN | SS_EST_MAX |
                                     SS_EST_QUANTILES | SS_EST_SORTED, 0);
    const double t_stats = since(t0);
    vstSSDeleteTask(&task);
    if (st != 0) {
        std::printf("statistics refused: status %d\n", st);
        return 1;
    }
    std::printf("  computed in %.3f s; price range [%.2f, %.2f]\n", t_stats, lo[0], hi[0]);
    const double se_price = std::sqrt(var[0] / double(kPaths));
    const double se_call = std::sqrt(var[1] / double(kPaths));
    const double growth = std::exp(kRate * kYears);
    check_near("mean terminal price (4 standard errors)", mean[0], kSpot * growth, 4 * se_price);
    const double true_var = kSpot * kSpot * growth * growth * (std::exp(kVol * kVol * kYears) - 1);
    check_near("variance of the terminal price (1%)", var[0], true_var, 0.01 * true_var);
    const double z[3] = {-1.6448536269514722, 0.0, 1.6448536269514722};
    for (int k = 0; k < 3; ++k) {
        const double want = kSpot * std::exp((kRate - 0.5 * kVol * kVol) * kYears +
                                             kVol * std::sqrt(kYears) * z[k]);
        char what[64];
        std::snprintf(what, sizeof what, "quantile %.2f of the price (0.5%%)", orders[k]);
        check_near(what, q[k], want, 0.005 * want);
    }
    check_near("call price, strike 105 (4 standard errors)", mean[1], black_scholes_call(strike),
               4 * se_call);
    check(lo[0] == sorted[0] && hi[0] == sorted[kPaths - 1], "min and max are the sorted ends",
          hi[0], sorted[kPaths - 1], 0);

    // 3. Price curve: calls for 21 strikes from the sorted prices, then a spline.
    std::printf("\n3. Spline through the call prices of strikes 60, 65, ..., 160\n");
    t0 = Clock::now();
    std::vector<double> tail(kPaths + 1, 0.0);  // tail[i]: sum of sorted prices from i on
    for (int64_t i = kPaths - 1; i >= 0; --i) tail[i] = tail[i + 1] + sorted[i];
    constexpr int kStrikes = 21;
    double ks[kStrikes], calls[kStrikes], coeff[4 * (kStrikes - 1)];
    for (int j = 0; j < kStrikes; ++j) {
        ks[j] = 60 + 5 * j;
        const int64_t i = std::upper_bound(sorted.begin(), sorted.begin() + kPaths, ks[j]) -
                          sorted.begin();
        calls[j] = discount * (tail[i] - ks[j] * double(kPaths - i)) / double(kPaths);
    }
    DFTask* spline = nullptr;
    st = orv_df_dnew_task(&spline, kStrikes, ks, DF_X_NON_UNIFORM, 1,
                          calls, DF_Y_ROWS);
    if (st == 0)
        st = orv_df_dedit_spline(spline, DF_PP_CUBIC, ORV_DF_CUBIC_NATURAL, DF_BC_NOT_A_KNOT,
                                 nullptr, 0, nullptr, coeff, 4 * (kStrikes - 1));
    if (st == 0) st = orv_df_dconstruct(spline);
    constexpr int kSites = 20;
    double sites[kSites], r[3 * kSites];
    for (int j = 0; j < kSites; ++j) sites[j] = ks[j] + 2.5;
    const int32_t orders_d[3] = {1, 1, 1};
    if (st == 0)
        st = orv_df_dinterpolate(spline, kSites, sites, DF_SITES_SORTED, 3, orders_d, r,
                                 DF_R_FUNCTION_SITE_ORDER, nullptr);
    const double lo_k = 80, hi_k = 120;
    double area = 0;
    if (st == 0) st = orv_df_dintegrate(spline, 1, &lo_k, 0, &hi_k, 0, &area, 0);
    orv_df_delete_task(&spline);
    if (st != 0) {
        std::printf("spline refused: status %d\n", st);
        return 1;
    }
    std::printf("  prices from the sorted paths, spline built, evaluated and integrated in %.3f s\n",
                since(t0));
    double worst = 0;
    for (int j = 0; j < kSites; ++j)
        worst = std::max(worst, std::fabs(r[3 * j] - black_scholes_call(sites[j])));
    check_near("worst price between strikes - Black-Scholes", worst, 0.0, 0.1);
    const double at = sites[8];  // 102.5
    check_near("second derivative at 102.5 (5%)", r[3 * 8 + 2],
               discount * terminal_density(at), 0.05 * discount * terminal_density(at));
    check_near("slope at 102.5 (0.01)", r[3 * 8 + 1],
               -discount * normal_cdf((std::log(kSpot / at) + (kRate - 0.5 * kVol * kVol) * kYears) /
                                      (kVol * std::sqrt(kYears))),
               0.01);
    double simpson = 0;  // quadrature of Black-Scholes over [80, 120], 400 panels
    for (int i = 0; i <= 400; ++i) {
        const double w = (i == 0 || i == 400) ? 1 : (i % 2 ? 4 : 2);
        simpson += w * black_scholes_call(lo_k + (hi_k - lo_k) * i / 400.0);
    }
    simpson *= (hi_k - lo_k) / 400.0 / 3.0;
    check_near("integral of the price over strikes 80..120", area, simpson, 0.005 * simpson);

    std::printf("\n%s\n", g_failures == 0 ? "All checks passed." : "Some checks FAILED.");
    return g_failures == 0 ? 0 : 1;
}
