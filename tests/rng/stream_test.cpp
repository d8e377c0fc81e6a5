// Stream operations, stream files and memory images, and chunks.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <orv/orv_core.h>
#include <orv/rng.h>

#include "frame/fault_injection.h"
#include "rng/chunks.h"
#include "rng/stream.h"
#include "stream_util.h"

namespace {

const std::vector<uint32_t> kSeed = {11, 22, 33, 44, 55, 66};

using Owned = rngtest::Stream;
using rngtest::image;
using rngtest::words;

void* block(const char* text) {
    const size_t n = std::strlen(text) + 1;
    void* b = orv_serv_allocate(n, 128);
    std::memcpy(b, text, n);
    return b;
}

std::vector<std::string> chunk_texts(const void* s) {
    std::vector<std::string> out;
    struct Node { int32_t type, size; void* data; Node* next; };
    for (const Node* n = *reinterpret_cast<Node* const*>(static_cast<const char*>(s) + 8); n; n = n->next)
        out.emplace_back(static_cast<const char*>(n->data));
    return out;
}

std::string temp_path(const char* tag) {
    return ::testing::TempDir() + "orv_rng_" + tag + "_" + std::to_string(getpid());
}

std::vector<unsigned char> read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void write_file(const std::string& path, const std::vector<unsigned char>& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

class RoundTrip : public testing::TestWithParam<int32_t> {};

TEST_P(RoundTrip, FileAndMemoryContinueTheSequenceWithChunksReversed) {
    Owned src(GetParam(), kSeed);
    words(src.s, 37);
    ASSERT_EQ(__vstAddChunk(src.s, 1, nullptr, block("first"), 6), 0);
    ASSERT_EQ(__vstAddChunk(src.s, 2, nullptr, block("second"), 7), 0);
    const uint32_t size = __vstGetStreamSize(src.s);
    BrngRow row;
    __vstGetBrngProperties(GetParam(), &row);
    EXPECT_EQ(size, static_cast<uint32_t>(row.streamBytes + 8 + 24 + 6 + 24 + 7));

    std::vector<char> image(size);
    EXPECT_EQ(__vstSaveStreamM(src.s, image.data()), 0);
    const std::string path = temp_path("roundtrip");
    ASSERT_EQ(__vstSaveStreamF(src.s, path.c_str(), -1), 0);
    EXPECT_EQ(read_file(path), std::vector<unsigned char>(image.begin(), image.end()));
    EXPECT_EQ(image[0], 2);
    EXPECT_EQ(0, std::memcmp(image.data() + 4, "RNG", 4));

    Owned from_file, from_memory, copy;
    const std::string longer = path + "#trailing";  // a counted name need not be terminated
    ASSERT_EQ(__vstLoadStreamF(&from_file.s, longer.c_str(), static_cast<int32_t>(path.size())), 0);
    ASSERT_EQ(__vstLoadStreamM(&from_memory.s, image.data()), 0);
    ASSERT_EQ(__vstCopyStream(&copy.s, src.s), 0);
    std::remove(path.c_str());
    const auto want = words(src.s, 300);
    for (void* s : {from_file.s, from_memory.s, copy.s}) {
        EXPECT_EQ(reinterpret_cast<uint32_t*>(s)[1], 1u);  // mark
        EXPECT_EQ(chunk_texts(s), (std::vector<std::string>{"first", "second"}));
        EXPECT_EQ(words(s, 300), want);
    }
    EXPECT_EQ(chunk_texts(src.s), (std::vector<std::string>{"second", "first"}));
    Owned dst(GetParam(), {11});  // copying the state brings the chunks along
    ASSERT_EQ(__vstCopyStreamState(dst.s, src.s), 0);
    EXPECT_EQ(chunk_texts(dst.s), (std::vector<std::string>{"first", "second"}));
}

// Every generator's continuation is checked in generic_test.cpp; here the
// chunks and the first numbering.
INSTANTIATE_TEST_SUITE_P(Generators, RoundTrip, testing::Values(ORV_BRNG_R250, ORV_BRNG_WH + 200, 100));

// Hand-made images of the older versions in both layouts of the first 8 bytes.
std::vector<char> old_image(int version, bool swapped, void* stream, bool with_chunk) {
    BrngRow row;
    __vstGetBrngProperties(static_cast<int32_t>(__vstGetStreamStateBrng(stream)), &row);
    const uint16_t state = static_cast<uint16_t>(row.streamBytes - 16);
    std::vector<char> img(20 + state);
    img[swapped ? 4 : 0] = static_cast<char>(version);
    std::memcpy(img.data() + (swapped ? 0 : 4), "RNG", 4);
    const uint16_t chunks = with_chunk ? 1 : 0;
    const uint32_t id = __vstGetStreamStateBrng(stream);
    std::memcpy(img.data() + 10, &state, 2);
    std::memcpy(img.data() + 12, &chunks, 2);
    std::memcpy(img.data() + 16, &id, 4);
    std::memcpy(img.data() + 20, static_cast<char*>(stream) + 16, state);
    if (with_chunk) {  // type 5, an id from version 1 on, size 4, the text
        img.insert(img.end(), {5, 0, 0, 0});
        if (version >= 1) img.insert(img.end(), 16, '\7');
        img.insert(img.end(), {4, 0, 0, 0, 'a', 'b', 'c', '\0'});
    }
    return img;
}

TEST(OldVersions, BothLayoutsLoadAndChunksNeedTheVersionFirst) {
    Owned src(ORV_BRNG_MRG32K3A, kSeed);
    for (int version : {0, 1})
        for (bool swapped : {false, true})
            for (bool chunk : {false, true}) {
                const auto img = old_image(version, swapped, src.s, chunk);
                Owned m, ref;
                const int32_t want = swapped && chunk ? ORV_RNG_ERROR_FILE_READ : 0;
                EXPECT_EQ(__vstLoadStreamM(&m.s, img.data()), want) << version << swapped << chunk;
                if (want != 0) {
                    EXPECT_EQ(m.s, nullptr);
                    continue;
                }
                __vstCopyStream(&ref.s, src.s);
                EXPECT_EQ(words(m.s, 20), words(ref.s, 20));
                EXPECT_EQ(__vstGetNumChunks(m.s), chunk ? 1 : 0);
                if (chunk) { EXPECT_STREQ(static_cast<char*>(__vstSearchChunk(m.s, 5)), "abc"); }
            }
}

// Each header failure of the file loader, and the memory loader's -1200.
struct Damage {
    const char* what;
    int offset;  // first byte to change
    std::vector<unsigned char> bytes;
    int32_t file_status, memory_status;
};

class Damaged : public testing::TestWithParam<Damage> {};

TEST_P(Damaged, GivesItsStatusAndNoStream) {
    const Damage& d = GetParam();
    Owned src(ORV_BRNG_MCG59, {11, 22});
    __vstAddChunk(src.s, 3, nullptr, block("payload"), 8);
    const std::vector<char> img = image(src.s);
    std::vector<unsigned char> bytes(img.begin(), img.end());
    std::copy(d.bytes.begin(), d.bytes.end(), bytes.begin() + d.offset);
    const std::string path = temp_path("damaged");
    write_file(path, bytes);
    void* out = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(__vstLoadStreamF(&out, path.c_str(), -1), d.file_status) << d.what;
    EXPECT_EQ(out, nullptr);
    std::remove(path.c_str());
    if (d.memory_status != 0) {
        bytes.resize(img.size() + 64);
        out = reinterpret_cast<void*>(0x1);
        EXPECT_EQ(__vstLoadStreamM(&out, reinterpret_cast<const char*>(bytes.data())), d.memory_status) << d.what;
        EXPECT_EQ(out, nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Images, Damaged,
    testing::Values(Damage{"magic", 5, {'X'}, -1110, -1200}, Damage{"version 3", 0, {3}, -1111, -1200},
                    Damage{"version 3, fifth byte 3", 0, {3, 0, 0, 0, 3, 'R', 'N', 'G'}, -1110, -1200},
                    Damage{"version 3 with magic first", 0, {'R', 'N', 'G', 0, 3}, -1111, -1200},
                    Damage{"generator", 20, {0x19, 1, 0, 0}, -1110, -1200},
                    Damage{"state size one off", 12, {15}, -1110, -1200},
                    Damage{"header size", 8, {23}, -1110, -1200},
                    Damage{"version 7 with an old header", 0, {7, 0, 0, 0, 'R', 'N', 'G', 0, 0, 0, 16, 0, 1},
                           -1111, -1200},
                    Damage{"negative chunk size", 60, {0xF0, 0xFF, 0xFF, 0xFF}, -1103, -1103},
                    Damage{"huge chunk size", 60, {0xFF, 0xFF, 0xFF, 0x7F}, -1103, 0}));

TEST(Files, NameAndOpenFailures) {
    Owned s(ORV_BRNG_MCG31M1, {11});
    EXPECT_EQ(__vstSaveStreamF(s.s, "ignored", 0), ORV_RNG_ERROR_FILE_OPEN);  // empty name
    EXPECT_EQ(__vstSaveStreamF(s.s, "/nonexistent-dir/x", -1), ORV_RNG_ERROR_FILE_OPEN);
    void* out = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(__vstLoadStreamF(&out, "/nonexistent-dir/x", -1), ORV_RNG_ERROR_FILE_OPEN);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(__vstSaveStreamF(s.s, nullptr, 5), ORV_RNG_ERROR_FILE_OPEN);
    EXPECT_EQ(__vstLoadStreamF(&out, nullptr, -1), ORV_RNG_ERROR_FILE_OPEN);
    // A full device makes the writes fail.
    if (FILE* full = std::fopen("/dev/full", "wb")) {
        std::fclose(full);
        EXPECT_EQ(__vstSaveStreamF(s.s, "/dev/full", -1), ORV_RNG_ERROR_FILE_WRITE);
    }
}

// Chunks and the shared table.

OrvChunkId fresh_id(uint64_t tag) {
    OrvChunkId id{{0x5EED, tag}};
    __vstGenerateNewGlobalRODataTableEntryId(&id, tag);
    return id;
}

TEST(Chunks, ListOrderSearchAndDeleteByType) {
    Owned s(ORV_BRNG_MCG31M1, {});
    EXPECT_EQ(__vstSearchChunk(s.s, 1), nullptr);
    EXPECT_EQ(__vstGetNumChunks(s.s), 0);
    __vstAddChunk(s.s, 1, nullptr, block("a"), 2);
    __vstAddChunk(s.s, 2, nullptr, block("b"), 2);
    __vstAddChunk(s.s, 1, nullptr, block("c"), 2);
    __vstAddChunk(s.s, 3, nullptr, nullptr, 0);
    EXPECT_EQ(__vstGetNumChunks(s.s), 4);
    EXPECT_STREQ(static_cast<char*>(__vstSearchChunk(s.s, 1)), "c");  // newest first
    EXPECT_EQ(__vstDeleteChunksById(s.s, 1), 0);
    EXPECT_EQ(__vstGetNumChunks(s.s), 2);
    EXPECT_EQ(__vstSearchChunk(s.s, 1), nullptr);
    EXPECT_STREQ(static_cast<char*>(__vstSearchChunk(s.s, 2)), "b");
    EXPECT_EQ(__vstDeleteChunks(s.s), 0);
    EXPECT_EQ(__vstGetNumChunks(s.s), 0);
}

TEST(Chunks, SharedBlocksAreCountedAndReleasedWithTheLastUser) {
    const int32_t before = orv::rng::glob_table_count();
    const OrvChunkId id = fresh_id(1);
    Owned a(ORV_BRNG_MCG59, {}), b(ORV_BRNG_MCG59, {});
    void* shared = block("shared");
    ASSERT_EQ(__vstAddChunk(a.s, 9, &id, shared, 7), 0);
    OrvGlobRODataEntry* e = nullptr;
    ASSERT_EQ(__vstFindGlobRODataTableEntry(&e, &id), 0);
    EXPECT_EQ(e->references, 1);
    // A second stream with the same id uses the table's block; its own goes back to the caller.
    void* own = block("own");
    ASSERT_EQ(__vstAddChunk(b.s, 9, &id, own, 4), 0);
    orv_serv_deallocate(own);
    EXPECT_EQ(__vstSearchChunk(b.s, 9), shared);
    ASSERT_EQ(__vstFindGlobRODataTableEntry(&e, &id), 0);
    EXPECT_EQ(e->references, 2);
    // Copies and images share too.
    Owned c, loaded;
    ASSERT_EQ(__vstCopyStream(&c.s, a.s), 0);
    EXPECT_EQ(__vstSearchChunk(c.s, 9), shared);
    const std::vector<char> img = image(a.s);
    ASSERT_EQ(__vstLoadStreamM(&loaded.s, img.data()), 0);
    EXPECT_EQ(__vstSearchChunk(loaded.s, 9), shared);
    ASSERT_EQ(__vstFindGlobRODataTableEntry(&e, &id), 0);
    EXPECT_EQ(e->references, 4);
    void* ref[2] = {nullptr, nullptr};
    EXPECT_EQ(__vstRegisterGlobRODataReference(ref, &id), 0);
    EXPECT_EQ(ref[1], shared);
    EXPECT_EQ(__vstUnregisterGlobRODataReference(&id), 0);
    __vstDeleteStream(&a.s);
    __vstDeleteStream(&c.s);
    __vstDeleteStream(&loaded.s);
    EXPECT_EQ(__vstFindGlobRODataTableEntry(&e, &id), 0);
    __vstDeleteStream(&b.s);
    EXPECT_EQ(__vstFindGlobRODataTableEntry(&e, &id), ORV_RNG_ERROR_NO_TABLE_ENTRY);
    EXPECT_EQ(orv::rng::glob_table_count(), before);
}

// Streams of several threads share one id: the spin lock keeps the
// reference counts right, and the block goes with the last user.
TEST(Chunks, ThreadsSharingAnIdKeepTheCountsRight) {
    const int32_t before = orv::rng::glob_table_count();
    const OrvChunkId id = fresh_id(4242);
    Owned keeper(ORV_BRNG_MCG31M1, {});
    void* shared = block("shared by all");
    ASSERT_EQ(__vstAddChunk(keeper.s, 9, &id, shared, 14), 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&id, shared] {
            for (int i = 0; i < 500; ++i) {
                void* s = nullptr;
                __vstNewStreamEx(&s, ORV_BRNG_MCG31M1, 0, nullptr);
                __vstAddChunk(s, 9, &id, nullptr, 14);
                void* copy = nullptr;
                __vstCopyStream(&copy, s);
                if (__vstSearchChunk(copy, 9) != shared) std::abort();
                __vstDeleteStream(&copy);
                __vstDeleteStream(&s);
            }
        });
    for (auto& t : threads) t.join();
    OrvGlobRODataEntry* e = nullptr;
    ASSERT_EQ(__vstFindGlobRODataTableEntry(&e, &id), 0);
    EXPECT_EQ(e->references, 1);
    __vstDeleteStream(&keeper.s);
    EXPECT_EQ(orv::rng::glob_table_count(), before);
}

TEST(Chunks, A127thEntryMakesNewIdsPrivateAndTheTableHolds128) {
    const int32_t before = orv::rng::glob_table_count();
    std::vector<OrvChunkId> ids;
    for (int i = before; i < 127; ++i) {
        ids.push_back(fresh_id(1000 + i));
        OrvGlobRODataEntry* e;
        ASSERT_EQ(__vstCreateGlobRODataTableEntry(&e, &ids.back(), nullptr), 0);
    }
    Owned s(ORV_BRNG_MCG31M1, {});
    const OrvChunkId late = fresh_id(77);
    ASSERT_EQ(__vstAddChunk(s.s, 4, &late, block("private"), 8), 0);
    OrvGlobRODataEntry* e;
    EXPECT_EQ(__vstFindGlobRODataTableEntry(&e, &late), ORV_RNG_ERROR_NO_TABLE_ENTRY);
    EXPECT_EQ(orv::rng::glob_table_count(), 127);
    const std::vector<char> img = image(s.s);
    OrvChunkId saved;
    std::memcpy(&saved, img.data() + 24 + 8 + 4, 16);  // MCG31M1 state is 8 bytes
    EXPECT_EQ(saved.word[0] | saved.word[1], 0u) << "the id of a private chunk is cleared";
    const OrvChunkId last = fresh_id(78);
    ASSERT_EQ(__vstCreateGlobRODataTableEntry(&e, &last, nullptr), 0);
    EXPECT_EQ(__vstCreateGlobRODataTableEntry(&e, &late, nullptr), ORV_RNG_ERROR_TABLE_FULL);
    for (const auto& id : ids) EXPECT_EQ(__vstUnregisterGlobRODataReference(&id), 0);
    EXPECT_EQ(__vstUnregisterGlobRODataReference(&last), 0);
    EXPECT_EQ(orv::rng::glob_table_count(), before);
}

// Allocation and close failures, injected: every -4 and -1100 path, and a
// failed load never hands out a stream.
struct Injected { const char* what; int countdown; bool close_fails; int32_t status; };

class Faults : public testing::TestWithParam<Injected> {
  protected:
    void TearDown() override { orv::fault::disarm_all(); }
};

int32_t run_case(const std::string& kind, void* src, const std::string& path, const std::vector<char>& img) {
    if (kind == "copy state") {
        Owned dst;
        // Made before the failure is armed.
        orv::fault::disarm_all();
        __vstNewStreamEx(&dst.s, ORV_BRNG_MCG59, 0, nullptr);
        orv::fault::arm(orv::fault::kRngAllocation, 0);
        const int32_t st = __vstCopyStreamState(dst.s, src);
        EXPECT_EQ(__vstGetNumChunks(dst.s), 0);
        return st;
    }
    if (kind == "add chunk") {
        const int32_t st = __vstAddChunk(src, 7, nullptr, nullptr, 0);
        EXPECT_EQ(__vstGetNumChunks(src), 2);
        return st;
    }
    if (kind == "save") return __vstSaveStreamF(src, path.c_str(), static_cast<int32_t>(path.size()));
    void* const untouched = reinterpret_cast<void*>(0x1);
    void* out = untouched;
    int32_t st;
    if (kind == "new") {
        st = __vstNewStreamEx(&out, ORV_BRNG_MCG59, 1, kSeed.data());
    } else if (kind == "copy") {
        st = __vstCopyStream(&out, src);
    } else if (kind == "load file") {
        st = __vstLoadStreamF(&out, path.c_str(), static_cast<int32_t>(path.size()));
    } else {
        st = __vstLoadStreamM(&out, img.data());
    }
    if (kind == "copy" && out != untouched) {
        EXPECT_TRUE(st == 0 || __vstGetNumChunks(out) == 0) << "a failed copy stays, without chunks";
        __vstDeleteStream(&out);
    } else if (st == 0) {
        __vstDeleteStream(&out);
    } else {
        EXPECT_EQ(out, kind == "new" || kind == "copy" ? untouched : nullptr);
    }
    return st;
}

TEST_P(Faults, GiveTheirStatus) {
    const Injected c = GetParam();
    Owned src(ORV_BRNG_MCG59, {11});
    ASSERT_EQ(__vstAddChunk(src.s, 2, nullptr, block("one"), 4), 0);
    ASSERT_EQ(__vstAddChunk(src.s, 1, nullptr, block("two"), 4), 0);
    const std::string path = temp_path("faults");
    ASSERT_EQ(__vstSaveStreamF(src.s, path.c_str(), -1), 0);
    const std::vector<char> img = image(src.s);
    if (c.countdown > 0) orv::fault::arm(orv::fault::kRngAllocation, c.countdown - 1);
    if (c.close_fails) orv::fault::arm(orv::fault::kRngFileClose, 0, orv::fault::kEveryHit);
    const std::string what = c.what;
    const std::string kind = what.substr(0, what.find(':'));
    EXPECT_EQ(run_case(kind, src.s, path, img), c.status) << c.what;
    orv::fault::disarm_all();
    std::remove(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(
    Injected, Faults,
    testing::Values(Injected{"new", 1, false, -4}, Injected{"copy: the record", 1, false, -4},
                    Injected{"copy: a chunk's data", 2, false, -4}, Injected{"copy: a chunk node", 3, false, -4},
                    Injected{"copy: the second chunk", 5, false, -4}, Injected{"copy state", 1, false, -4},
                    Injected{"add chunk", 1, false, -4}, Injected{"save: the name", 1, false, -4},
                    Injected{"save: close", 0, true, -1100}, Injected{"load file: the name", 1, false, -4},
                    Injected{"load file: the record", 2, false, -4}, Injected{"load file: chunk data", 3, false, -4},
                    Injected{"load file: chunk node", 4, false, -4}, Injected{"load file: close", 0, true, -1100},
                    Injected{"load memory: the record", 1, false, -4},
                    Injected{"load memory: second chunk", 4, false, -4}));

// Images that can't be written, and states that can't be loaded.

// Both saves refuse the stream with nothing written: no file, no byte.
void expect_save_refused(void* s, size_t block) {
    std::vector<char> img(block, 'x');
    EXPECT_EQ(__vstSaveStreamM(s, img.data()), ORV_RNG_ERROR_BAD_MEM_FORMAT);
    EXPECT_EQ(std::count(img.begin(), img.end(), 'x'), static_cast<long>(block));
    const std::string path = temp_path("refused");
    EXPECT_EQ(__vstSaveStreamF(s, path.c_str(), -1), ORV_RNG_ERROR_FILE_WRITE);
    EXPECT_NE(access(path.c_str(), F_OK), 0);
}

// The header keeps the chunk count in 16 bits: 65536 chunks are refused,
// 65535 travel.
TEST(Images, MoreChunksThanTheHeaderCountsAreRefusedOnSave) {
    Owned s(ORV_BRNG_MCG31M1, {11}), back;
    ASSERT_EQ(__vstAddChunk(s.s, 2, nullptr, nullptr, 0), 0);
    for (int i = 0; i < 65535; ++i) ASSERT_EQ(__vstAddChunk(s.s, 1, nullptr, nullptr, 0), 0);
    expect_save_refused(s.s, __vstGetStreamSize(s.s));
    ASSERT_EQ(__vstDeleteChunksById(s.s, 2), 0);
    const std::vector<char> img = image(s.s);
    ASSERT_EQ(__vstLoadStreamM(&back.s, img.data()), 0);
    EXPECT_EQ(__vstGetNumChunks(back.s), 65535);
}

// Chunk sizes whose image passes 2^32 bytes (never read: the save stops
// first): the size saturates and the saves refuse.
TEST(Images, ImagesBeyondThirtyTwoBitSizesAreRefusedOnSave) {
    Owned s(ORV_BRNG_MCG31M1, {11});
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(__vstAddChunk(s.s, 1, nullptr, orv_serv_allocate(1, 128), 0x7FFFFFFF), 0);
    EXPECT_EQ(__vstGetStreamSize(s.s), 0xFFFFFFFFu);
    expect_save_refused(s.s, 64);
}

// A state no seeding or stream operation reaches, written over a seeded one
// at a byte offset into the state.
struct Impossible { const char* what; int32_t id; int offset; std::vector<uint32_t> words; };
void PrintTo(const Impossible& c, std::ostream* os) { *os << c.what; }

class ImpossibleState : public testing::TestWithParam<Impossible> {};

TEST_P(ImpossibleState, IsRefusedByBothLoaders) {
    const Impossible& c = GetParam();
    Owned s(c.id, kSeed);
    std::memcpy(static_cast<char*>(s.s) + 16 + c.offset, c.words.data(), c.words.size() * 4);
    const std::vector<char> img = image(s.s);
    void* out = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(__vstLoadStreamM(&out, img.data()), ORV_RNG_ERROR_BAD_MEM_FORMAT) << c.what;
    EXPECT_EQ(out, nullptr);
    const std::string path = temp_path("impossible");
    ASSERT_EQ(__vstSaveStreamF(s.s, path.c_str(), -1), 0);
    out = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(__vstLoadStreamF(&out, path.c_str(), -1), ORV_RNG_ERROR_BAD_FILE_FORMAT) << c.what;
    EXPECT_EQ(out, nullptr);
    std::remove(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(
    States, ImpossibleState,
    testing::Values(Impossible{"MCG31M1 x 0", ORV_BRNG_MCG31M1, 0, {0}},
                    Impossible{"MCG31M1 x at the modulus", ORV_BRNG_MCG31M1, 0, {0x7FFFFFFF}},
                    Impossible{"MCG31M1 multiplier 0", ORV_BRNG_MCG31M1, 4, {0}},
                    Impossible{"MCG59 x 0", ORV_BRNG_MCG59, 0, {0, 0}},
                    Impossible{"MCG59 x beyond 59 bits", ORV_BRNG_MCG59, 0, {1, 1u << 27}},
                    Impossible{"MCG59 even multiplier", ORV_BRNG_MCG59, 8, {2, 0}},
                    Impossible{"MCG59 by its row number, x 0", 3, 0, {0, 0}},
                    Impossible{"MRG32K3A x all zero", ORV_BRNG_MRG32K3A, 0, {0, 0, 0}},
                    Impossible{"MRG32K3A y all zero", ORV_BRNG_MRG32K3A, 12, {0, 0, 0}},
                    Impossible{"MRG32K3A x at m1", ORV_BRNG_MRG32K3A, 4, {4294967087u}},
                    Impossible{"MRG32K3A y at m2", ORV_BRNG_MRG32K3A, 20, {4294944443u}},
                    Impossible{"WH x[2] zero", ORV_BRNG_WH + 7, 8, {0}},
                    Impossible{"WH multiplier 0", ORV_BRNG_WH + 7, 16, {0}},
                    Impossible{"WH x at its modulus", ORV_BRNG_WH, 0, {16770647u}},
                    Impossible{"R250 positions out of step", ORV_BRNG_R250, 1000, {0, 5}},
                    Impossible{"R250 position past the ring", ORV_BRNG_R250, 1000, {250, 103}}));

// States seeding does reach load: every WH set, and R250 seeded with zeros.
TEST(ImpossibleState, SeededStatesLoad) {
    std::vector<uint32_t> zeros(250, 0);
    std::vector<std::pair<int32_t, std::vector<uint32_t>>> cases{{ORV_BRNG_R250, zeros}};
    for (int32_t set = 0; set < ORV_WH_SETS; ++set) cases.push_back({ORV_BRNG_WH + set, {0, 0, 0, 0}});
    for (auto& [id, seed] : cases) {
        Owned s(id, seed), back;
        const std::vector<char> img = image(s.s);
        EXPECT_EQ(__vstLoadStreamM(&back.s, img.data()), 0) << std::hex << id;
    }
}

}  // namespace
