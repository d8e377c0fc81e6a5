// orv_core: memory, locks, environment, message catalogue, BLAS and LAPACK
// forwarding.
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <orv/orv_core.h>

namespace {

TEST(Memory, AlignmentIsHonoured) {
    for (size_t align : {8u, 16u, 64u, 128u, 4096u}) {
        void* p = orv_serv_allocate(1000, align);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % align, 0u) << align;
        std::memset(p, 1, 1000);
        orv_serv_deallocate(p);
    }
    EXPECT_EQ(orv_serv_allocate(0, 128), nullptr);
    EXPECT_EQ(orv_serv_allocate(64, 48), nullptr);  // not a power of two
    EXPECT_EQ(orv_serv_allocate(SIZE_MAX / 2, 128), nullptr);
    orv_serv_deallocate(nullptr);
}

TEST(Memory, BoundedCopy) {
    char dst[8] = "xxxxxxx";
    EXPECT_EQ(orv_serv_memcpy_s(dst, sizeof dst, "abc", 4), 0);
    EXPECT_STREQ(dst, "abc");
    EXPECT_EQ(orv_serv_memcpy_s(dst, sizeof dst, "0123456789", 10), ERANGE);
    EXPECT_EQ(dst[0], 0);  // cleared, not overrun
    EXPECT_EQ(orv_serv_memcpy_s(nullptr, 4, "a", 1), EINVAL);
    EXPECT_EQ(orv_serv_memcpy_s(dst, sizeof dst, nullptr, 1), EINVAL);
    EXPECT_EQ(orv_serv_memcpy_s(dst, sizeof dst, nullptr, 0), 0);
}

TEST(Lock, SerialisesIncrements) {
    orv_lock_t lock{0};
    long counter = 0;
    std::vector<std::thread> ts;
    for (int t = 0; t < 4; ++t)
        ts.emplace_back([&] {
            for (int i = 0; i < 20000; ++i) {
                orv_serv_lock(&lock);
                counter = counter + 1;
                orv_serv_unlock(&lock);
            }
        });
    for (auto& t : ts) t.join();
    EXPECT_EQ(counter, 80000);
    EXPECT_EQ(lock.state, 0);
}

TEST(Environment, CopiesAndTruncates) {
    char buf[8];
    setenv("ORV_CORE_TEST_VAR", "abcdefghijk", 1);
    EXPECT_EQ(orv_serv_getenv("ORV_CORE_TEST_VAR", buf, sizeof buf), 7);
    EXPECT_STREQ(buf, "abcdefg");
    setenv("ORV_CORE_TEST_VAR", "xy", 1);
    EXPECT_EQ(orv_serv_getenv("ORV_CORE_TEST_VAR", buf, sizeof buf), 2);
    EXPECT_STREQ(buf, "xy");
    unsetenv("ORV_CORE_TEST_VAR");
    EXPECT_EQ(orv_serv_getenv("ORV_CORE_TEST_VAR", buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "");
    EXPECT_EQ(orv_serv_getenv("ORV_CORE_TEST_VAR", buf, 0), -1);
}

TEST(Messages, CatalogueCoversEveryNumberWithItsArguments) {
    char buf[256];
    ASSERT_GT(orv_serv_format(buf, sizeof buf, 748, 2, "vdLn", 3), 0);
    EXPECT_NE(std::string(buf).find("vdLn"), std::string::npos);
    EXPECT_NE(std::string(buf).find("argument 3"), std::string::npos);
    for (int m = 749; m <= 754; ++m) {
        ASSERT_GT(orv_serv_format(buf, sizeof buf, m, 1, "vsExp"), 0) << m;
        EXPECT_NE(std::string(buf).find("vsExp"), std::string::npos) << m;
    }
    for (int m = 755; m <= 766; ++m) {
        ASSERT_GT(orv_serv_format(buf, sizeof buf, m, 2, 41, -0.125), 0) << m;
        EXPECT_NE(std::string(buf).find("element 41"), std::string::npos) << m;
        EXPECT_NE(std::string(buf).find("-0.125"), std::string::npos) << m;
    }
    EXPECT_GT(orv_serv_format(buf, sizeof buf, 773, 0), 0);
    EXPECT_EQ(orv_serv_format(buf, sizeof buf, 700, 0), -1);
    // Too few arguments: no value is read from the missing ones.
    ASSERT_GT(orv_serv_format(buf, sizeof buf, 755, 1, 5), 0);
    EXPECT_NE(std::string(buf).find("missing"), std::string::npos);
    // A short buffer is cut, and the full length reported.
    const int full = orv_serv_format(buf, 6, 750, 1, "vdAcos");
    EXPECT_GT(full, 5);
    EXPECT_EQ(std::strlen(buf), 5u);
}

TEST(Messages, PrintGoesToStandardError) {
    testing::internal::CaptureStderr();
    orv_serv_print(1, 752, 1, "vdExp");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("vdExp: the result overflows"),
              std::string::npos);
}

TEST(CoreDeathTest, ExitEndsTheProcessWithTheCode) {
    EXPECT_EXIT(orv_serv_exit(3), testing::ExitedWithCode(3), "");
}

TEST(Blas, GemmAndSyrkAgreeWithHandWork) {
    // A = [1 2; 3 4] column-major, B = [5 6; 7 8]: A*B = [19 22; 43 50].
    const double a[4] = {1, 3, 2, 4}, b[4] = {5, 7, 6, 8};
    double c[4] = {1, 1, 1, 1};
    const int n = 2;
    const double one = 1, zero = 0;
    orv_blas_dgemm("N", "N", &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n);
    EXPECT_EQ(std::vector<double>(c, c + 4), (std::vector<double>{19, 43, 22, 50}));
    // A*A^T upper triangle: [5 11; . 25], the lower one (-1) untouched.
    double s[4] = {0, -1, 0, 0};
    orv_blas_dsyrk("U", "N", &n, &n, &one, a, &n, &zero, s, &n);
    EXPECT_EQ(std::vector<double>(s, s + 4), (std::vector<double>{5, -1, 11, 25}));
    const int inc = 1;
    const double x[2] = {1, 2};
    orv_blas_dsyr("U", &n, &one, x, &inc, s, &n);
    EXPECT_EQ(s[2], 13);
}

// Packed triangular multiply against the full-storage one, every side,
// triangle, transpose and diagonal kind.
TEST(Blas, PackedTriangularMultiplyMatchesFullStorage) {
    const int m = 5, n = 3;
    for (const char* side : {"L", "R"})
        for (const char* uplo : {"U", "L"})
            for (const char* trans : {"N", "T"})
                for (const char* diag : {"N", "U"}) {
                    const int k = *side == 'L' ? m : n;
                    std::vector<double> full(k * k, 0.0), packed;
                    for (int j = 0; j < k; ++j)
                        for (int i = 0; i < k; ++i) {
                            const bool in = *uplo == 'U' ? i <= j : i >= j;
                            if (in) full[i + j * k] = 1.0 + i + 2.0 * j + 0.5 * (i == j);
                        }
                    for (int j = 0; j < k; ++j)  // column-packed storage
                        for (int i = (*uplo == 'U' ? 0 : j); i < (*uplo == 'U' ? j + 1 : k); ++i)
                            packed.push_back(full[i + j * k]);
                    std::vector<double> b1(m * n), b2;
                    for (int i = 0; i < m * n; ++i) b1[i] = std::sin(i + 1.0);
                    b2 = b1;
                    const double alpha = 0.75;
                    orv_blas_dtrmm(side, uplo, trans, diag, &m, &n, &alpha, full.data(), &k,
                                   b1.data(), &m);
                    orv_blas4vtm_dptrmm(side, uplo, trans, diag, &m, &n, &alpha, packed.data(),
                                        b2.data(), &m);
                    for (int i = 0; i < m * n; ++i)
                        ASSERT_NEAR(b1[i], b2[i], 1e-12)
                            << side << uplo << trans << diag << " element " << i;
                }
}

TEST(Lapack, CholeskyAndInverseOfASmallMatrix) {
    // [4 2; 2 3] = L L^T with L = [2 0; 1 sqrt(2)]; inverse [3 -2; -2 4] / 8.
    double a[4] = {4, 2, 2, 3};
    const int n = 2;
    int info = -9;
    orv_lapack_dpotrf("L", &n, a, &n, &info);
    ASSERT_EQ(info, 0);
    for (auto [i, v] : {std::pair{0, 2.0}, {1, 1.0}, {3, std::sqrt(2.0)}}) EXPECT_DOUBLE_EQ(a[i], v) << i;
    orv_lapack_dpotri("L", &n, a, &n, &info);
    ASSERT_EQ(info, 0);
    for (auto [i, v] : {std::pair{0, 3.0 / 8}, {1, -2.0 / 8}, {3, 4.0 / 8}}) EXPECT_DOUBLE_EQ(a[i], v) << i;
    double bad[4] = {1, 2, 2, 1};  // not positive definite
    orv_lapack_dpotrf("L", &n, bad, &n, &info);
    EXPECT_EQ(info, 2);
    // Eigenvalues of [2 1; 1 2] are 1 and 3.
    double s[4] = {2, 1, 1, 2}, w[2], work[16];
    const int lwork = 16;
    orv_lapack_dsyev("N", "U", &n, s, &n, w, work, &lwork, &info);
    ASSERT_EQ(info, 0);
    EXPECT_TRUE(std::fabs(w[0] - 1) <= 1e-15 && std::fabs(w[1] - 3) <= 1e-15) << w[0] << " " << w[1];
}

}  // namespace
