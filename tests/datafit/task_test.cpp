// The task record, its look-up table, the editors and queries, and the
// statuses of the constructor entries with the order of their checks.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "spline_util.h"

namespace {

using dftest::Kind;

std::vector<double> wavy_x(int64_t n) {
    std::vector<double> x(n);
    for (int64_t i = 0; i < n; ++i) x[i] = 0.5 * double(i) + 0.2 * std::sin(double(i)) + 0.01 * double(i * i % 7);
    for (int64_t i = 1; i < n; ++i)
        if (!(x[i] > x[i - 1])) x[i] = x[i - 1] + 0.01;
    return x;
}

// ---- Creation -------------------------------------------------------------

struct NewCase {
    const char* what;
    int64_t nx;
    bool x_given;
    int64_t xhint, ny;
    bool y_given;
    int64_t yhint;
    int want;
};

class NewTask : public ::testing::TestWithParam<NewCase> {};

// Each case also breaks every check after the one it expects, so the order shows.
TEST_P(NewTask, ChecksInOrder) {
    const NewCase c = GetParam();
    std::vector<double> x = wavy_x(8), y(64, 1.0);
    DFTask* t = nullptr;
    const int st = orv_df_kernel_dNewTask1D(&t, c.nx, c.x_given ? x.data() : nullptr, c.xhint, c.ny,
                                            c.y_given ? y.data() : nullptr, c.yhint, 0);
    EXPECT_EQ(st, c.want) << c.what;
    EXPECT_EQ(orv_df_kernel_DeleteTask(&t), st == DF_OK ? DF_OK : DF_NULL_TASK);  // a refusal made no task
    EXPECT_EQ(t, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Statuses, NewTask,
    ::testing::Values(NewCase{"nx", 1, false, 3, 0, true, 0x30, DF_BAD_NX},
                      NewCase{"x", 8, false, 3, 0, true, 0x30, DF_NULL_X},
                      NewCase{"xhint", 8, true, 3, 0, true, 0x30, DF_BAD_XHINT},
                      NewCase{"y with ny 0", 8, true, 1, 0, true, 0x30, DF_BAD_NY},
                      NewCase{"ny with null y", 8, true, 1, 2, false, 0x30, DF_NULL_Y},
                      NewCase{"yhint", 8, true, 1, 2, true, 0x30, DF_BAD_YHINT},
                      NewCase{"yhint 0x40", 8, true, 2, 2, true, 0x40, DF_BAD_YHINT},
                      NewCase{"no y", 8, true, 0, 0, false, 0, DF_OK},
                      NewCase{"uniform", 8, true, 4, 2, true, 0x20, DF_OK},
                      NewCase{"separate", 8, true, 2, 2, true, 0x80, DF_OK}),
    [](const auto& info) { return std::to_string(info.index); });

// For every site in bin b, its cell lies between the low and high pair entries.
void check_lut(const DFTask* t, const std::vector<double>& x) {
    const int64_t n = int64_t(x.size()), size = t->lut_size;
    const int64_t* lut = t->lut;
    ASSERT_NE(lut, nullptr);
    EXPECT_EQ(size, std::min<int64_t>(1024, std::max<int64_t>(16, n / 16)));
    EXPECT_EQ(lut[0], 0);
    EXPECT_EQ(lut[2 * (size - 1) + 1], n - 1);
    EXPECT_EQ(lut[2 * size], lut[2 * (size - 1)]);
    EXPECT_EQ(lut[2 * size + 1], lut[2 * (size - 1) + 1]);
    const double scale = t->lut_scale.d;
    int64_t cell = 0;
    for (int64_t b = 0; b < size; ++b)
        for (int q = 0; q < 4; ++q) {
            const double site = x[0] + (double(b) + 0.25 * q) / scale;
            if (site >= x[n - 1]) continue;
            while (cell + 1 < n - 1 && x[cell + 1] <= site) ++cell;
            EXPECT_LE(lut[2 * b], cell) << "bin " << b;
            EXPECT_GE(lut[2 * b + 1], cell + 1) << "bin " << b;
            EXPECT_GE(lut[2 * b], 0);
        }
}

class Lut : public ::testing::TestWithParam<int64_t> {};
TEST_P(Lut, BinsBracketTheirCells) {
    const int64_t n = GetParam();
    std::vector<double> x(n);
    // Clustered breakpoints leave many bins empty and some crowded.
    for (int64_t i = 0; i < n; ++i) x[i] = std::pow(double(i) / double(n - 1), 3.0) * 10.0 - 2.0;
    DFTask* t = nullptr;
    ASSERT_EQ(orv_df_kernel_dNewTask1D(&t, n, x.data(), 0, 0, nullptr, 0, 0), DF_OK);
    EXPECT_EQ(t->y, nullptr);
    check_lut(t, x);
    orv_df_kernel_DeleteTask(&t);
}
INSTANTIATE_TEST_SUITE_P(Sizes, Lut, ::testing::Values(2, 17, 300, 5000, 40000));

TEST(Lut, RebuiltOnlyBySettingNonUniform) {
    std::vector<double> ends = {0.0, 1.0}, x = wavy_x(500);
    DFTask* t = nullptr;
    ASSERT_EQ(orv_df_kernel_dNewTask1D(&t, 500, ends.data(), 4, 0, nullptr, 0, 0), DF_OK);
    EXPECT_EQ(orv_df_kernel_iEditVal(t, DF_ID_XHINT, 2), DF_OK);
    EXPECT_EQ(t->lut, nullptr);  // quasi-uniform builds nothing
    ASSERT_EQ(orv_df_kernel_dEditPtr(t, DF_PTR_X, x.data()), DF_OK);
    EXPECT_EQ(orv_df_kernel_iEditVal(t, DF_ID_XHINT, 1), DF_OK);
    check_lut(t, x);
    const int64_t size = t->lut_size;
    EXPECT_EQ(orv_df_kernel_iEditVal(t, DF_ID_NX, 40), DF_OK);  // no rebuild
    EXPECT_EQ(t->lut_size, size);
    x.resize(40);
    EXPECT_EQ(orv_df_kernel_iEditVal(t, DF_ID_XHINT, 1), DF_OK);
    check_lut(t, x);
    orv_df_kernel_DeleteTask(&t);
}

// ---- Editors and queries ----------------------------------------------------

struct Fixture {
    std::vector<double> x = wavy_x(12), y = std::vector<double>(36, 1.0), bc = {1.0, 2.0},
                        ic = std::vector<double>(13, 0.0), coef = std::vector<double>(200, 0.0);
    DFTask* t = nullptr;
    explicit Fixture(int64_t ny = 3, int64_t yhint = 0x10, int32_t wide = 0) {
        EXPECT_EQ(orv_df_kernel_dNewTask1D(&t, 12, x.data(), 1, ny, ny ? y.data() : nullptr, yhint, wide),
                  DF_OK);
    }
    ~Fixture() { orv_df_kernel_DeleteTask(&t); }
    // The pointer in slot k of table id; a refused query gives a sentinel.
    const double* slot(int64_t id, int64_t k) const {
        const double* p = nullptr;
        return orv_df_kernel_dQueryIdxPtr(t, id, k, &p) == DF_OK ? p : &bc[1];
    }
};

struct ValCase { int64_t id, bad, good; int want; };
class EditVal : public ::testing::TestWithParam<ValCase> {};
TEST_P(EditVal, RefusesBadValuesAndReadsBackGoodOnes) {
    const ValCase c = GetParam();
    for (int32_t wide : {0, 1}) {
        Fixture f(3, 0x10, wide);
        EXPECT_EQ(orv_df_kernel_iEditVal(f.t, c.id, c.bad), c.want);
        EXPECT_EQ(orv_df_kernel_iEditVal(f.t, c.id, c.good), DF_OK);
        int64_t out = -1;  // a 32-bit caller gets its low 4 bytes written, a 64-bit one all 8
        EXPECT_EQ(orv_df_kernel_iQueryVal(f.t, c.id, &out), DF_OK);
        EXPECT_EQ(out, wide ? c.good : int64_t(~uint64_t{0} << 32 | uint32_t(c.good)));
    }
}
INSTANTIATE_TEST_SUITE_P(
    Ids, EditVal,
    ::testing::Values(ValCase{DF_ID_NX, 1, 25, DF_BAD_NX}, ValCase{DF_ID_XHINT, 3, 2, DF_BAD_XHINT},
                      ValCase{DF_ID_NY, 0, 1, DF_BAD_NY}, ValCase{DF_ID_YHINT, 0x11, 0x20, DF_BAD_YHINT},
                      ValCase{DF_ID_SORDER, -1, 4, DF_BAD_SORDER},
                      ValCase{DF_ID_STYPE, 6, 9, DF_BAD_STYPE}, ValCase{DF_ID_STYPE, -1, 5, DF_BAD_STYPE},
                      ValCase{DF_ID_IC_TYPE, 3, 12, DF_BAD_IC_TYPE},
                      ValCase{DF_ID_BC_TYPE, -1, 0x40, DF_BAD_BC_TYPE},
                      ValCase{DF_ID_SCOEFFHINT, 0x90, 0x80, DF_BAD_SCOEFFHINT},
                      ValCase{DF_ID_FLAG23, 2, 1, DF_BAD_FLAG23}),
    [](const auto& info) { return std::to_string(info.index); });

TEST(EditVal, UnknownIdsAndNullTask) {
    Fixture f;
    int64_t out = 0;
    for (int64_t id : {0, 13, 24, 100}) {
        EXPECT_EQ(orv_df_kernel_iEditVal(f.t, id, 0), DF_BAD_PARAM_ID);
        EXPECT_EQ(orv_df_kernel_iQueryVal(f.t, id, &out), DF_BAD_PARAM_ID);
    }
    EXPECT_EQ(orv_df_kernel_iEditVal(nullptr, DF_ID_NX, 5), DF_NULL_TASK);
    EXPECT_EQ(orv_df_kernel_iQueryVal(nullptr, DF_ID_NX, &out), DF_NULL_TASK);
}

TEST(EditPPSpline, ChecksInOrderAndKeepsWhatPassed) {
    Fixture f;
    DFTask* t = f.t;
    const double* ic = f.ic.data();
    auto edit = [&](int64_t order, int64_t stype, int64_t bct, int64_t ict, const double* icp, int64_t hint = 0) {
        return orv_df_kernel_dEditPPSpline1D(t, order, stype, bct, nullptr, ict, icp, nullptr, hint);
    };
    EXPECT_EQ(orv_df_kernel_dEditPPSpline1D(nullptr, 4, 0, 1, nullptr, 0, nullptr, nullptr, 0), DF_NULL_TASK);
    EXPECT_EQ(edit(-1, -1, 0x0C, 0, ic), DF_BAD_SORDER);
    EXPECT_EQ(edit(4, -1, 0x0C, 0, ic), DF_BAD_STYPE);
    EXPECT_EQ(t->sorder, 0);
    EXPECT_EQ(edit(4, 2, 0x0C, 0, ic), DF_NULL_BC);
    EXPECT_EQ((std::vector<int64_t>{t->sorder, t->stype, t->bc_type}), (std::vector<int64_t>{4, 2, 0}));
    EXPECT_EQ(edit(4, 2, 0x40, 1, nullptr), DF_BAD_IC);
    EXPECT_EQ(t->bc_type, 0x40);
    EXPECT_EQ(edit(4, 2, 2, 0, ic), DF_BAD_IC_TYPE);
    EXPECT_EQ(t->ic, nullptr);
    EXPECT_EQ(edit(4, 2, 2, 1, ic, 0x80), DF_OK);
    EXPECT_EQ(t->scoeffhint, 0x80);
    EXPECT_EQ(t->scoeff, nullptr);
}

TEST(EditPPSpline, CoefficientSlotsAreSpacedByTheKind) {
    Fixture f;
    const struct { int64_t order, stype, hint, step; } rows[] = {
        {4, 0, 0x10, 11 * 4}, {4, 0, 0x00, 11 * 4}, {3, 1, 0x10, 12 * 3}, {2, 5, 0x20, 11 * 2}};
    for (const auto& r : rows) {
        ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(f.t, r.order, r.stype, 2, nullptr, 0, nullptr,
                                                f.coef.data(), r.hint), DF_OK);
        for (int64_t k = 0; k < 3; ++k) EXPECT_EQ(f.slot(DF_PTR_SCOEFF, k), f.coef.data() + k * r.step);
    }
    ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(f.t, 4, 0, 2, nullptr, 0, nullptr, f.coef.data(), 0x80),
              DF_OK);
    EXPECT_EQ(f.slot(DF_PTR_SCOEFF, 1), nullptr);
    Fixture none(0);
    EXPECT_EQ(orv_df_kernel_dEditPPSpline1D(none.t, 4, 0, 2, nullptr, 0, nullptr, none.coef.data(),
                                            0x10), DF_BAD_NY);
}

TEST(Pointers, EditAndQueryById) {
    Fixture f;
    DFTask* t = f.t;
    const double* p = nullptr;
    EXPECT_EQ(orv_df_kernel_dEditPtr(t, 6, f.bc.data()), DF_BAD_PARAM_ID);
    EXPECT_EQ(orv_df_kernel_dEditPtr(nullptr, 1, f.bc.data()), DF_NULL_TASK);
    std::vector<double> y2(36, 2.0);
    const double* targets[] = {f.x.data(), y2.data(), f.ic.data(), f.bc.data(), f.coef.data()};
    const int nulls[] = {DF_NULL_X, DF_NULL_Y, DF_BAD_IC, DF_NULL_BC, DF_NULL_SCOEFF};
    for (int64_t id = 1; id <= 5; ++id) {
        EXPECT_EQ(orv_df_kernel_dEditPtr(t, id, nullptr), nulls[id - 1]);
        ASSERT_EQ(orv_df_kernel_dEditPtr(t, id, targets[id - 1]), DF_OK);
        ASSERT_EQ(orv_df_kernel_dQueryPtr(t, id, &p), DF_OK);
        EXPECT_EQ(p, targets[id - 1]) << id;
    }
    EXPECT_EQ(f.slot(DF_PTR_Y, 2), y2.data() + 24);
    EXPECT_EQ(orv_df_kernel_dQueryPtr(t, 0, &p), DF_BAD_PARAM_ID);
    EXPECT_EQ(orv_df_kernel_dQueryPtr(t, 1, nullptr), DF_NULL_OUTPUT);
    EXPECT_EQ(orv_df_kernel_dQueryPtr(nullptr, 1, nullptr), DF_NULL_TASK);
}

TEST(Pointers, IndexedSlotsAndTheirAsymmetry) {
    Fixture f(3, 0x80);
    DFTask* t = f.t;
    EXPECT_EQ(orv_df_kernel_dEditIdxPtr(t, DF_PTR_Y, 3, f.y.data()), DF_BAD_INDEX);
    EXPECT_EQ(orv_df_kernel_dEditIdxPtr(t, DF_PTR_Y, -1, f.y.data()), DF_BAD_INDEX);
    EXPECT_EQ(orv_df_kernel_dEditIdxPtr(t, DF_PTR_BC, 0, f.y.data()), DF_BAD_INDEX);
    EXPECT_EQ(orv_df_kernel_dEditIdxPtr(t, DF_PTR_Y, 1, nullptr), DF_NULL_Y);
    EXPECT_EQ(orv_df_kernel_dEditIdxPtr(t, DF_PTR_SCOEFF, 1, nullptr), DF_NULL_SCOEFF);
    EXPECT_EQ(orv_df_kernel_dEditIdxPtr(t, DF_PTR_Y, 2, f.y.data() + 5), DF_OK);
    EXPECT_EQ(orv_df_kernel_dEditIdxPtr(t, DF_PTR_SCOEFF, 2, f.coef.data() + 7), DF_OK);
    EXPECT_EQ(f.slot(DF_PTR_Y, 2), f.y.data() + 5);
    EXPECT_EQ(f.slot(DF_PTR_SCOEFF, 2), f.coef.data() + 7);
    // The query accepts index ny, one past the edit; there is no slot there.
    EXPECT_EQ(f.slot(DF_PTR_Y, 3), nullptr);
    const double* p = nullptr;
    EXPECT_EQ(orv_df_kernel_dQueryIdxPtr(t, DF_PTR_Y, 4, &p), DF_BAD_INDEX);
    EXPECT_EQ(orv_df_kernel_dQueryIdxPtr(t, DF_PTR_Y, 0, nullptr), DF_NULL_OUTPUT);
    Fixture cols(3, 0x20);
    EXPECT_EQ(orv_df_kernel_dEditIdxPtr(cols.t, DF_PTR_Y, 1, cols.y.data()), DF_BAD_YHINT);
}

// Counts whose sizes would wrap are refused before anything is stored or
// allocated, so that no later slot edit writes outside a short table.
struct HugeCase { int64_t id, value; };
class HugeCount : public ::testing::TestWithParam<HugeCase> {};
TEST_P(HugeCount, IsRefusedAsAnAllocationFailure) {
    Fixture f(3, 0x80);
    ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(f.t, 4, 0, 2, nullptr, 0, nullptr, f.coef.data(), 0x10), DF_OK);
    int64_t before = 0, after = 0;
    ASSERT_EQ(orv_df_kernel_iQueryVal(f.t, GetParam().id, &before), DF_OK);
    EXPECT_EQ(orv_df_kernel_iEditVal(f.t, GetParam().id, GetParam().value), DF_NO_MEMORY);
    ASSERT_EQ(orv_df_kernel_iQueryVal(f.t, GetParam().id, &after), DF_OK);
    EXPECT_EQ(after, before);
    EXPECT_EQ(orv_df_kernel_dEditIdxPtr(f.t, DF_PTR_Y, 2, f.y.data()), DF_OK);
}
INSTANTIATE_TEST_SUITE_P(Ids, HugeCount,
                         ::testing::Values(HugeCase{DF_ID_NY, int64_t(1) << 61},
                                           HugeCase{DF_ID_NY, int64_t(1) << 59},
                                           HugeCase{DF_ID_NX, int64_t(1) << 62},
                                           HugeCase{DF_ID_SORDER, int64_t(1) << 61}));

TEST(HugeCount, RefusedAtCreationAndByTheSplineEditor) {
    std::vector<double> x = wavy_x(4), y(8, 1.0), coef(64, 0.0);
    DFTask* t = nullptr;
    EXPECT_EQ(orv_df_kernel_dNewTask1D(&t, int64_t(1) << 40, x.data(), 4, int64_t(1) << 30, y.data(),
                                       0x10, 0), DF_NO_MEMORY);
    EXPECT_EQ(t, nullptr);
    Fixture f;
    EXPECT_EQ(orv_df_kernel_dEditPPSpline1D(f.t, int64_t(1) << 61, 0, 2, nullptr, 0, nullptr,
                                            coef.data(), 0x10), DF_NO_MEMORY);
    EXPECT_EQ(f.t->sorder, 0);
}

TEST(Editors, ChangingNyKeepsTablesInStep) {
    Fixture f;
    ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(f.t, 4, 0, 2, nullptr, 0, nullptr, f.coef.data(), 0x10),
              DF_OK);
    ASSERT_EQ(orv_df_kernel_iEditVal(f.t, DF_ID_NY, 5), DF_OK);
    EXPECT_EQ(f.slot(DF_PTR_Y, 4), f.y.data() + 48);
    EXPECT_EQ(f.slot(DF_PTR_SCOEFF, 4), f.coef.data() + 4 * 44);
}

// ---- Constructor entries ------------------------------------------------------

struct EntryCase {
    const char* what;
    Kind kind;
    std::function<void(DFTask*&, int64_t& method)> spoil;
    int want;
};

// A task that would build; each case spoils it so that one check fails (and,
// where the order matters, later checks would fail too).
void entry_status(const EntryCase& c) {
    std::vector<double> x = wavy_x(9), y(18), bc = {0.5, 1.5}, ic(10, 0.25);
    for (size_t i = 0; i < y.size(); ++i) y[i] = std::sin(0.7 * double(i));
    y[8] = y[0];
    y[17] = y[9];
    std::vector<double> coef(100, -777.0);
    DFTask* t = nullptr;
    ASSERT_EQ(orv_df_kernel_dNewTask1D(&t, 9, x.data(), 1, 2, y.data(), 0x10, 0), DF_OK);
    const int64_t order = dftest::order_of(c.kind);
    const int64_t bct = c.kind == Kind::Quadratic ? 0x80 : 0x0C;
    ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(t, order, 0, bct, bc.data(), 1, ic.data(), coef.data(), 0x10),
              DF_OK);
    int64_t method = 0;
    c.spoil(t, method);
    EXPECT_EQ(dftest::ctor<double>(c.kind)(t, 0, method, orv_df_thread_ops_serial()), c.want) << c.what;
    if (c.want != DF_OK && t != nullptr) {
        for (double v : coef) ASSERT_EQ(v, -777.0) << c.what << ": nothing written on failure";
    }
    orv_df_kernel_DeleteTask(&t);
}

std::vector<EntryCase> entry_cases() {
    std::vector<EntryCase> v;
    auto none = [](DFTask*&, int64_t&) {};
    for (Kind k : dftest::kKinds) {
        v.push_back({"builds", k, none, DF_OK});
        v.push_back({"null task", k, [](DFTask*& t, int64_t&) { orv_df_kernel_DeleteTask(&t); }, DF_NULL_TASK});
        v.push_back({"yhint", k, [](DFTask*& t, int64_t&) { t->yhint = 0x40; t->bc_type = 0x33; }, DF_BAD_YHINT});
        v.push_back({"no values", k, [](DFTask*& t, int64_t&) { t->y[1] = nullptr; }, DF_NULL_Y});
        v.push_back({"no coefficients", k, [](DFTask*& t, int64_t&) { t->scoeff[1] = nullptr; }, DF_NULL_SCOEFF});
        // An order the constructor does not make would write past blocks
        // spaced for that order.
        v.push_back({"other order", k,
                     [k](DFTask*& t, int64_t&) {
                         orv_df_kernel_iEditVal(t, DF_ID_SORDER, dftest::order_of(k) == 2 ? 4 : 2);
                     },
                     DF_BAD_SORDER});
        // The constructor of one precision on a task of the other.
        v.push_back({"other precision", k, [](DFTask*& t, int64_t&) { t->is_double = 0; }, DF_BAD_PRECISION});
    }
    auto method = [](DFTask*& t, int64_t& m) { m = 1; t->nx = 1; t->yhint = 0x40; };
    v.push_back({"method first", Kind::Linear, method, DF_BAD_METHOD});
    v.push_back({"method first", Kind::Natural, method, DF_BAD_METHOD});
    v.push_back({"method unread", Kind::Akima, [](DFTask*&, int64_t& m) { m = 3; }, DF_OK});
    auto nx_then = [](int64_t nx) {
        return [nx](DFTask*& t, int64_t&) { t->nx = nx; t->yhint = 0x40; };
    };
    // The largest partition each kind refuses.
    const std::pair<Kind, int64_t> too_few[] = {{Kind::Linear, 1}, {Kind::Akima, 4},   {Kind::Hyman, 3},
                                                {Kind::Bessel, 2}, {Kind::Hermite, 2}, {Kind::Default, 2},
                                                {Kind::Natural, 1}};
    for (const auto& [k, nx] : too_few) v.push_back({"nx", k, nx_then(nx), DF_BAD_NX});
    v.push_back({"nx 2 not-a-knot", Kind::Natural,
                 [](DFTask*& t, int64_t&) { t->nx = 2; t->bc_type = 1; t->yhint = 0x40; }, DF_BAD_NX});
    auto bc_kind = [](int64_t b) { return [b](DFTask*& t, int64_t&) { t->bc_type = b; t->bc = nullptr; }; };
    for (Kind k : {Kind::Akima, Kind::Bessel, Kind::Hyman, Kind::Hermite, Kind::Default, Kind::Natural}) {
        v.push_back({"bc_type", k, bc_kind(0x03), DF_BAD_BC_TYPE});
        v.push_back({"bc_type 0x80", k, bc_kind(0x80), DF_BAD_BC_TYPE});
        v.push_back({"bc null", k, bc_kind(0x24), DF_NULL_BC});
        v.push_back({"periodic bc null stype 0", k, bc_kind(0x40), DF_NULL_BC});
        v.push_back({"not periodic", k,
                     [](DFTask*& t, int64_t&) { t->bc_type = 0x40; const_cast<double*>(static_cast<const double*>(t->y[1]))[8] += 1; },
                     DF_NOT_PERIODIC});
    }
    for (Kind k : {Kind::Bessel, Kind::Hyman, Kind::Default, Kind::Natural})
        v.push_back({"no condition", k, bc_kind(0x00), DF_BAD_BC_TYPE});
    v.push_back({"no condition", Kind::Akima, bc_kind(0x00), DF_OK});
    for (Kind k : {Kind::Akima, Kind::Bessel, Kind::Hyman, Kind::Default, Kind::Natural})
        v.push_back({"periodic bc null stype 2", k,
                     [](DFTask*& t, int64_t&) { t->bc_type = 0x40; t->bc = nullptr; t->stype = 2; }, DF_OK});
    for (Kind k : {Kind::Hermite, Kind::Default})
        v.push_back({"ic null", k, [](DFTask*& t, int64_t&) { t->ic = nullptr; }, DF_BAD_IC});
    v.push_back({"periodic needs bc[0]", Kind::Hermite,
                 [](DFTask*& t, int64_t&) { t->bc_type = 0x40; t->bc = nullptr; t->stype = 2; }, DF_NULL_BC});
    v.push_back({"singular", Kind::Natural,
                 [](DFTask*& t, int64_t&) { t->bc_type = 1; const_cast<double*>(static_cast<const double*>(t->x))[2] = static_cast<const double*>(t->x)[1]; },
                 DF_SOLVER_FAILED});
    // Partitions longer than the solvers' int sizes are refused before any
    // allocation (a uniform task holds only the two ends).
    auto too_long = [](DFTask*& t, int64_t&) { t->nx = int64_t(1) << 40; t->xhint = 4; };
    v.push_back({"too long", Kind::Natural, too_long, DF_NO_MEMORY});
    v.push_back({"stype 1 too long", Kind::Quadratic,
                 [](DFTask*& t, int64_t&) {
                     t->nx = int64_t(1) << 40; t->xhint = 4; t->stype = 1; t->ic_type = 8;
                     t->ic = nullptr; t->bc_type = 2;
                 },
                 DF_NO_MEMORY});
    // Quadratic.
    v.push_back({"stype 0 needs 0x80", Kind::Quadratic, bc_kind(0x0C), DF_BAD_BC_TYPE});
    v.push_back({"stype 0 with bc still needs 0x80", Kind::Quadratic,
                 [](DFTask*& t, int64_t&) { t->bc_type = 0x30; }, DF_BAD_BC_TYPE});
    v.push_back({"stype 0 bc null", Kind::Quadratic, [](DFTask*& t, int64_t&) { t->bc = nullptr; }, DF_NULL_BC});
    v.push_back({"stype 2", Kind::Quadratic, [](DFTask*& t, int64_t&) { t->stype = 2; t->bc_type = 7; }, DF_BAD_METHOD});
    auto knots = [](int64_t ic_type, int64_t bct, bool bc) {
        return [=](DFTask*& t, int64_t&) {
            t->stype = 1; t->ic_type = ic_type; t->bc_type = bct; t->ic = nullptr;
            if (!bc) t->bc = nullptr;
        };
    };
    v.push_back({"stype 1 ic_type", Kind::Quadratic, knots(0, 0x33, false), DF_BAD_IC_TYPE});
    v.push_back({"stype 1 bc_type", Kind::Quadratic, knots(8, 0x33, false), DF_BAD_BC_TYPE});
    v.push_back({"stype 1 not-a-knot", Kind::Quadratic, knots(8, 0x01, true), DF_BAD_BC_TYPE});
    v.push_back({"stype 1 periodic", Kind::Quadratic, knots(8, 0x40, true), DF_BAD_BC_TYPE});
    v.push_back({"stype 1 bc null", Kind::Quadratic, knots(8, 0x18, false), DF_NULL_BC});
    v.push_back({"stype 1 midpoints", Kind::Quadratic, knots(8, 0x02, false), DF_OK});
    v.push_back({"stype 1 variant", Kind::Quadratic, knots(12, 0x30, true), DF_OK});
    return v;
}

class Entry : public ::testing::TestWithParam<Kind> {};
TEST_P(Entry, StatusesInOrder) {
    for (const EntryCase& c : entry_cases()) {
        if (c.kind != GetParam()) continue;
        SCOPED_TRACE(c.what);
        entry_status(c);
    }
}
INSTANTIATE_TEST_SUITE_P(Constructors, Entry,
                         ::testing::ValuesIn(dftest::kKinds),
                         [](const auto& info) { return std::string(dftest::name(info.param)); });

struct KnotCase { std::vector<double> ic; int want; };
class Knots : public ::testing::TestWithParam<KnotCase> {};
TEST_P(Knots, SecondaryKnotsMustInterleave) {
    std::vector<double> x = {0, 1, 2, 3}, y = {1, 2, 0, 1}, coef(12, -777.0);
    DFTask* t = nullptr;
    ASSERT_EQ(orv_df_kernel_dNewTask1D(&t, 4, x.data(), 1, 1, y.data(), 0x10, 0), DF_OK);
    ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(t, 3, 1, 2, nullptr, 8, GetParam().ic.data(), coef.data(), 0x10),
              DF_OK);
    EXPECT_EQ(orv_df_kernel_dDFQuadraticSpline1D(t, 0, 0, nullptr), GetParam().want);
    if (GetParam().want != DF_OK) {
        for (double v : coef) EXPECT_EQ(v, -777.0);
    }
    orv_df_kernel_DeleteTask(&t);
}
INSTANTIATE_TEST_SUITE_P(
    Arrays, Knots,
    ::testing::Values(KnotCase{{0, 0.5, 1.5, 2.5, 3}, DF_OK}, KnotCase{{0, 0.1, 1.9, 2.01, 3}, DF_OK},
                      KnotCase{{0, 1, 1.5, 2.5, 3}, DF_BAD_IC}, KnotCase{{0, 0.5, 2.5, 2.6, 3}, DF_BAD_IC},
                      KnotCase{{-0.1, 0.5, 1.5, 2.5, 3}, DF_BAD_IC},
                      KnotCase{{0, 0.5, 1.5, 2.5, 3.5}, DF_BAD_IC},
                      KnotCase{{0, NAN, 1.5, 2.5, 3}, DF_BAD_IC}));

TEST(Construct, NyZeroBuildsOneFunction) {
    std::vector<double> x = wavy_x(7), y = {1, 2, 0, 3, 1, 2, 5}, coef(30, -777.0);
    DFTask* t = nullptr;
    ASSERT_EQ(orv_df_kernel_dNewTask1D(&t, 7, x.data(), 1, 1, y.data(), 0x10, 0), DF_OK);
    ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(t, 4, 0, 2, nullptr, 0, nullptr, coef.data(), 0x10), DF_OK);
    t->ny = 0;
    for (Kind k : {Kind::Natural, Kind::Akima, Kind::Bessel}) {
        std::fill(coef.begin(), coef.end(), -777.0);
        ASSERT_EQ(dftest::ctor<double>(k)(t, 0, 0, orv_df_thread_ops_openmp()), DF_OK);
        for (int i = 0; i < 6; ++i) EXPECT_EQ(coef[4 * i], y[i]);
        EXPECT_EQ(coef[24], -777.0);
    }
    orv_df_kernel_DeleteTask(&t);
}

}  // namespace
