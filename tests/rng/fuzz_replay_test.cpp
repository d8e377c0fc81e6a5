// Bounded replay of the loader fuzz target: the seed corpus, every
// truncation of each seed, and deterministic mutations of sizes and bytes.
#include <gtest/gtest.h>

#include <dirent.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "loader_harness.h"

namespace {

std::vector<std::vector<uint8_t>> corpus() {
    std::vector<std::vector<uint8_t>> out;
    const std::string dir = ORV_RNG_FUZZ_CORPUS;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            if (e->d_name[0] == '.') continue;
            std::ifstream in(dir + "/" + e->d_name, std::ios::binary);
            out.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        }
        closedir(d);
    }
    return out;
}

std::string scratch() { return ::testing::TempDir() + "orv_rng_fuzz_" + std::to_string(getpid()); }

TEST(LoaderReplay, SeedCorpusLoads) {
    const auto seeds = corpus();
    ASSERT_GE(seeds.size(), 8u);
    int loaded = 0;
    for (const auto& s : seeds) {
        void* out = nullptr;
        if (orv::rng::load_stream_image(&out, reinterpret_cast<const char*>(s.data()), s.size()) == 0) {
            ++loaded;
            __vstDeleteStream(&out);
        }
    }
    EXPECT_EQ(loaded, static_cast<int>(seeds.size()));
}

TEST(LoaderReplay, EveryTruncationGivesAStatus) {
    const std::string path = scratch();
    for (const auto& s : corpus())
        for (size_t n = 0; n < s.size(); ++n) {
            loader_harness::run(s.data(), n, path);
            void* out = reinterpret_cast<void*>(1);
            EXPECT_NE(orv::rng::load_stream_image(&out, reinterpret_cast<const char*>(s.data()), n), 0);
            EXPECT_EQ(out, nullptr);
        }
}

TEST(LoaderReplay, DeterministicMutations) {
    const std::string path = scratch();
    uint64_t x = 0x9E3779B97F4A7C15ull;  // xorshift64 for reproducible mutations
    auto next = [&x] {
        x ^= x << 13;
        x ^= x >> 7;
        x ^= x << 17;
        return x;
    };
    const uint32_t sizes[] = {0, 1, 0x7FFFFFFF, 0x80000000u, 0xFFFFFFFF, 0x10000, 1008, 24, 16};
    for (const auto& seed : corpus()) {
        for (int round = 0; round < 150; ++round) {
            std::vector<uint8_t> m = seed;
            const int edits = 1 + static_cast<int>(next() % 4);
            for (int e = 0; e < edits; ++e) {
                const size_t at = next() % m.size();
                switch (next() % 4) {
                    case 0: m[at] ^= static_cast<uint8_t>(1u << (next() % 8)); break;
                    case 1: m[at] = static_cast<uint8_t>(next()); break;
                    case 2:
                        if (at + 4 <= m.size()) {
                            const uint32_t v = sizes[next() % std::size(sizes)];
                            std::memcpy(&m[at], &v, 4);
                        }
                        break;
                    default: m.resize(at); break;
                }
                if (m.empty()) break;
            }
            loader_harness::run(m.data(), m.size(), round % 10 == 0 ? path : std::string());
        }
    }
}

}  // namespace
