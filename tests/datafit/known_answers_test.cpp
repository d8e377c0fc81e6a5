// Constructed coefficients against exact rational solutions of each
// spline's defining conditions (tests/data/datafit/known_answers.txt).
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "spline_util.h"

namespace {

struct Known { std::string name; dftest::Kind kind; int64_t bc_type, stype; std::vector<double> x, y, bc, ic, coef; };

std::vector<double> numbers(const std::string& field) {
    std::vector<double> v;
    std::istringstream in(field);
    for (std::string w; in >> w;)
        if (w != "-") v.push_back(std::stod(w));
    return v;
}

std::vector<Known> load() {
    std::vector<Known> out;
    std::ifstream in(ORV_DF_DATA_DIR "/known_answers.txt");
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> f;
        std::istringstream ls(line);
        for (std::string part; std::getline(ls, part, '|');) f.push_back(part);
        if (f.size() != 9) continue;
        Known k;
        std::istringstream(f[0]) >> k.name;
        std::string kind;
        std::istringstream(f[1]) >> kind;
        k.kind = dftest::kind_of(kind);
        k.bc_type = std::stoll(f[2], nullptr, 16);
        k.stype = std::stoll(f[3]);
        k.x = numbers(f[4]), k.y = numbers(f[5]), k.bc = numbers(f[6]);
        k.ic = numbers(f[7]), k.coef = numbers(f[8]);
        out.push_back(k);
    }
    return out;
}

class KnownAnswer : public ::testing::TestWithParam<Known> {};

template <typename T>
void check(const Known& k, double tol) {
    const int64_t n = static_cast<int64_t>(k.x.size());
    std::vector<T> x(k.x.begin(), k.x.end()), y(k.y.begin(), k.y.end());
    std::vector<T> bc(k.bc.begin(), k.bc.end()), ic(k.ic.begin(), k.ic.end());
    std::vector<T> coef(k.coef.size(), T(-999));
    DFTask* t = nullptr;
    ASSERT_EQ(dftest::Api<T>::new_task(&t, n, x.data(), 1, 1, y.data(), 0x10, 0), DF_OK);
    const int64_t ic_type = ic.empty() ? 0 : (k.kind == dftest::Kind::Quadratic ? 8 : 1);
    const int st = dftest::Api<T>::edit_pp(t, dftest::order_of(k.kind), k.stype, k.bc_type,
                                           bc.empty() ? nullptr : bc.data(), ic_type,
                                           ic.empty() ? nullptr : ic.data(), coef.data(), 0x10);
    ASSERT_EQ(st, DF_OK);
    ASSERT_EQ(dftest::ctor<T>(k.kind)(t, 0, 0, orv_df_thread_ops_serial()), DF_OK);
    for (size_t i = 0; i < coef.size(); ++i)
        EXPECT_NEAR(static_cast<double>(coef[i]), k.coef[i], tol * (1 + std::fabs(k.coef[i])))
            << k.name << " coefficient " << i;
    orv_df_kernel_DeleteTask(&t);
}

TEST_P(KnownAnswer, DoubleMatchesExactSolution) { check<double>(GetParam(), 1e-13); }
TEST_P(KnownAnswer, SingleMatchesExactSolution) { check<float>(GetParam(), 2e-5); }

INSTANTIATE_TEST_SUITE_P(Data, KnownAnswer, ::testing::ValuesIn(load()),
                         [](const auto& info) { return info.param.name; });

TEST(KnownAnswerFile, HasAllCases) { EXPECT_GE(load().size(), 15u); }

}  // namespace
