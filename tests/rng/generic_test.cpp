// The checks every registered generator goes through, in the manner of GSL's
// rng tests: the list of generators is the registry itself, so a new row is
// tested by being registered (and by adding its known answers to
// tests/data/rng/known_answers.txt). What a generator supports (skip-ahead,
// leapfrog, a repeatable sequence) is asked of the generator, not listed.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <orv/rng.h>

#include "rng/brng_row.h"
#include "stream_util.h"

namespace {

struct Gen { int32_t id; std::string name; };
void PrintTo(const Gen& g, std::ostream* os) { *os << g.name << " (0x" << std::hex << g.id << ")"; }

// Every usable row of the second numbering, with its first and last
// sub-generator. Abstract rows are made by their own calls (abstract_test.cpp).
std::vector<Gen> registered() {
    std::vector<Gen> out;
    for (int32_t row = 0; row < __vstGetNumRegBrngs(); ++row) {
        const int32_t id = (row + 1) << 20;
        void* s = nullptr;
        const int32_t made = __vstNewStreamEx(&s, id, 0, nullptr);
        if (s != nullptr) __vstDeleteStream(&s);
        if (made == ORV_RNG_ERROR_INVALID_BRNG) continue;
        out.push_back({id, "row" + std::to_string(row)});
        const int32_t subs = orv::rng::g_sub_generators[row];
        if (subs > 1) out.push_back({id + subs - 1, "row" + std::to_string(row) + "_sub" + std::to_string(subs - 1)});
    }
    return out;
}

// Word 0 is also the quasi-random generators' dimension.
const std::vector<uint32_t> kSeed = {5u, 0x9E3779B9u, 0x7F4A7C15u, 0x1234567u, 0xDEADBEEFu, 42u};

// Seeded with kSeed unless other words are given.
struct Stream : rngtest::Stream {
    explicit Stream(int32_t id, const std::vector<uint32_t>& seed = kSeed) : rngtest::Stream(id, seed) {}
    explicit Stream(void* made) : rngtest::Stream(made) {}
};

class Generic : public testing::TestWithParam<Gen> {
  protected:
    // Two streams from one seed agree: TRNG does not, and is held to the
    // checks that need no sequence.
    bool repeatable() {
        Stream a(GetParam().id), b(GetParam().id);
        return a.words(64) == b.words(64);
    }
};

TEST_P(Generic, SeedingIsRepeatableAndTheSeedMatters) {
    const int32_t id = GetParam().id;
    if (!repeatable()) {
        Stream a(id), b(id);
        EXPECT_NE(a.words(16), b.words(16));
        return;
    }
    EXPECT_NE(Stream(id, {7}).words(100), Stream(id).words(100));
    EXPECT_EQ(Stream(id, {}).words(10), Stream(id, {}).words(10));
}

// Fills of every length from 0 to 40 and a long one, in all three forms,
// equal drawing one output at a time; nothing is written past the end.
TEST_P(Generic, FillsOfEveryLengthEqualSingleSteps) {
    const int32_t id = GetParam().id;
    const bool same = repeatable();
    std::vector<int> lengths;
    for (int n = 0; n <= 40; ++n) lengths.push_back(n);
    lengths.push_back(10007);
    for (int n : lengths) {
        Stream bulk(id), single(id);
        const int per = bulk.per;
        // Some generators write one value for a count of 0; the stream then
        // advances by what was written.
        std::vector<uint32_t> wb(static_cast<size_t>(n + 2) * per, 0xCDCDCDCDu);
        ASSERT_EQ(bulk.row.wordFill(bulk.s, n, wb.data()), 0);
        int written = n;
        if (n == 0) written = wb[0] != 0xCDCDCDCDu ? 1 : 0;
        for (size_t i = static_cast<size_t>(written) * per; i < wb.size(); ++i) ASSERT_EQ(wb[i], 0xCDCDCDCDu) << n;
        std::vector<double> db(written + 1, -7.0), ds(written + 1, -7.0);
        std::vector<float> fb(written + 1, -7.0f), fs(written + 1, -7.0f);
        ASSERT_EQ(bulk.row.doubleFill(bulk.s, n, db.data(), -2.0, 3.0), 0);
        ASSERT_EQ(bulk.row.floatFill(bulk.s, n, fb.data(), 1.0f, 2.0f), 0);
        EXPECT_EQ(db[written], -7.0);
        EXPECT_EQ(fb[written], -7.0f);
        for (int i = 0; i < written; ++i) {
            ASSERT_TRUE(db[i] >= -2.0 && db[i] < 3.0) << db[i];
            ASSERT_TRUE(fb[i] >= 1.0f && fb[i] <= 2.0f) << fb[i];
        }
        if (!same) continue;
        std::vector<uint32_t> ws(wb.size(), 0xCDCDCDCDu);
        for (int i = 0; i < written; ++i) single.row.wordFill(single.s, 1, ws.data() + i * per);
        ASSERT_EQ(wb, ws) << "word fill of " << n;
        for (int i = 0; i < written; ++i) single.row.doubleFill(single.s, 1, ds.data() + i, -2.0, 3.0);
        ASSERT_EQ(0, std::memcmp(db.data(), ds.data(), db.size() * sizeof(double))) << "double fill of " << n;
        for (int i = 0; i < written; ++i) single.row.floatFill(single.s, 1, fs.data() + i, 1.0f, 2.0f);
        ASSERT_EQ(0, std::memcmp(fb.data(), fs.data(), fb.size() * sizeof(float))) << "float fill of " << n;
        ASSERT_EQ(bulk.words(50), single.words(50)) << "after " << n;
    }
}

// Both precisions map the same outputs: [a, b) is an affine image of [0, 1),
// and the mean of many uniforms is near the middle.
TEST_P(Generic, IntervalFormsAreAffineImagesInBothPrecisions) {
    const int32_t id = GetParam().id;
    const bool same = repeatable();
    constexpr int n = 4000;
    Stream u(id), v(id), f(id);
    std::vector<double> unit(n), wide(n);
    std::vector<float> single(n);
    ASSERT_EQ(u.row.doubleFill(u.s, n, unit.data(), 0.0, 1.0), 0);
    ASSERT_EQ(v.row.doubleFill(v.s, n, wide.data(), -5.0, 11.0), 0);
    ASSERT_EQ(f.row.floatFill(f.s, n, single.data(), 0.0f, 1.0f), 0);
    double mean = 0;
    for (int i = 0; i < n; ++i) {
        mean += unit[i] / n;
        ASSERT_TRUE(unit[i] >= 0.0 && unit[i] < 1.0);
        if (!same) continue;
        ASSERT_NEAR(wide[i], -5.0 + 16.0 * unit[i], 1e-13) << i;
        ASSERT_NEAR(single[i], unit[i], 1e-6) << i;
    }
    EXPECT_NEAR(mean, 0.5, 0.03);  // about 6 standard deviations
}

TEST_P(Generic, CopiesAndImagesContinueTheSequence) {
    const int32_t id = GetParam().id;
    const bool same = repeatable();
    Stream src(id);
    src.words(37);
    std::vector<char> image(__vstGetStreamSize(src.s));
    ASSERT_EQ(__vstSaveStreamM(src.s, image.data()), 0);
    const std::string path = testing::TempDir() + "orv_generic_" + GetParam().name + "_" + std::to_string(getpid());
    ASSERT_EQ(__vstSaveStreamF(src.s, path.c_str(), -1), 0);
    void *file = nullptr, *memory = nullptr, *copy = nullptr;
    ASSERT_EQ(__vstLoadStreamF(&file, path.c_str(), -1), 0);
    ASSERT_EQ(__vstLoadStreamM(&memory, image.data()), 0);
    ASSERT_EQ(__vstCopyStream(&copy, src.s), 0);
    std::remove(path.c_str());
    Stream a(file), b(memory), c(copy), state(id, {99});
    ASSERT_EQ(__vstCopyStreamState(state.s, src.s), 0);
    // The state copy moves seedCount words; where the record holds more (the
    // SFMT side words), only a copy made at a block boundary continues.
    const bool whole_state = int64_t{src.row.seedCount} * src.row.wordBytes >= src.row.streamBytes - 16;
    const auto want = src.words(300);
    for (Stream* s : {&a, &b, &c, &state}) {
        const auto got = s->words(300);
        if (same && (s != &state || whole_state)) { EXPECT_EQ(got, want); }
    }
}

// Skip-ahead by k equals drawing k and dropping them, in the one-word and the
// multi-word forms, where the generator has them.
TEST_P(Generic, SkipAheadEqualsDiscarding) {
    const int32_t id = GetParam().id;
    Stream probe(id);
    const int32_t st = __vstSkipAheadStream(probe.s, 1);
    const uint64_t one = 1;
    const int32_t st_ex = __vstSkipAheadStreamEx(probe.s, 1, &one);
    if (st != 0) { EXPECT_EQ(st, ORV_RNG_ERROR_SKIPAHEAD_UNSUPPORTED); }
    if (st_ex != 0) { EXPECT_EQ(st_ex, ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED); }
    EXPECT_EQ(probe.row.initStream(4, probe.s, 0, nullptr), ORV_RNG_ERROR_BAD_METHOD);
    EXPECT_EQ(probe.row.initStream(-1, probe.s, 0, nullptr), ORV_RNG_ERROR_BAD_METHOD);
    for (int64_t k : {0, 1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 100, 1000, 65537}) {
        for (int first : {0, 1, 3}) {
            Stream skipped(id), walked(id), ex(id);
            skipped.words(first), walked.words(first), ex.words(first);
            if (st == 0) { ASSERT_EQ(__vstSkipAheadStream(skipped.s, k), 0); }
            const uint64_t count = static_cast<uint64_t>(k);
            if (st_ex == 0) { ASSERT_EQ(__vstSkipAheadStreamEx(ex.s, 1, &count), 0); }
            if (k > 0) walked.words(static_cast<int>(k));
            const auto want = walked.words(50);
            if (st == 0) { ASSERT_EQ(skipped.words(50), want) << "k = " << k << " after " << first; }
            if (st_ex == 0) { ASSERT_EQ(ex.words(50), want) << "k = " << k << " after " << first; }
        }
    }
}

// Stream k of s delivers outputs k, k + s, k + 2s, ... where the generator
// can leapfrog; a negative count is refused before the generator is asked.
TEST_P(Generic, LeapfrogTakesEverySthOutput) {
    const int32_t id = GetParam().id;
    Stream probe(id);
    EXPECT_EQ(__vstLeapfrogStream(probe.s, 0, -1), ORV_RNG_ERROR_LEAPFROG_NSTREAMS);
    const int32_t st = __vstLeapfrogStream(probe.s, 0, 2);
    if (st != 0) {
        EXPECT_EQ(st, ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED);
        return;
    }
    for (int s : {1, 2, 3, 7, 100}) {
        Stream plain(id);
        const int per = plain.per;
        const auto all = plain.words(s * 40 + s);
        for (int k : {0, 1, s - 1}) {
            if (k >= s) continue;
            Stream member(id);
            ASSERT_EQ(__vstLeapfrogStream(member.s, k, s), 0);
            const auto mine = member.words(40);
            for (int i = 0; i < 40; ++i)
                for (int w = 0; w < per; ++w)
                    ASSERT_EQ(mine[i * per + w], all[(k + i * s) * per + w]) << k << " of " << s << ", " << i;
        }
        // A skip on a member counts the member's own outputs.
        Stream member(id);
        __vstLeapfrogStream(member.s, 1 % s, s);
        if (__vstSkipAheadStream(member.s, 10) != 0) continue;
        const auto after = member.words(1);
        for (int w = 0; w < per; ++w) ASSERT_EQ(after[w], all[(1 % s + 10 * s) * per + w]);
    }
}

// Known answers from tests/data/rng/known_answers.txt for this generator.
TEST_P(Generic, KnownAnswersFromTheDataFile) {
    std::ifstream in(ORV_RNG_KNOWN_ANSWERS);
    ASSERT_TRUE(in.good());
    std::string line;
    int cases = 0;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream words(line);
        std::string tok;
        words >> std::hex;
        uint32_t id = 0;
        words >> id;
        if (static_cast<int32_t>(id) != GetParam().id) continue;
        std::vector<uint32_t> seed, want;
        bool after = false;
        while (words >> tok) {
            if (tok == "->") after = true;
            else (after ? want : seed).push_back(static_cast<uint32_t>(std::stoul(tok, nullptr, 16)));
        }
        Stream s(static_cast<int32_t>(id), seed);
        EXPECT_EQ(s.words(static_cast<int>(want.size()) / s.per), want) << line;
        ++cases;
    }
    if (cases == 0) GTEST_SKIP() << "no known answers in the data file";
}

INSTANTIATE_TEST_SUITE_P(Registry, Generic, testing::ValuesIn(registered()),
                         [](const testing::TestParamInfo<Gen>& i) { return i.param.name; });

}  // namespace
