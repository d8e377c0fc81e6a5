// Stream operations: create, copy, delete, leapfrog, skip-ahead, and the
// stream image written to files and memory.
#include "rng/stream.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <limits>

#include <orv/orv_core.h>

#include "frame/fault_injection.h"
#include "rng/brng_row.h"
#include "rng/state_check.h"

using namespace orv::rng;

namespace orv::rng {

void* allocate_block(std::size_t bytes) {
    if (fault::hit(fault::kRngAllocation)) return nullptr;
    return orv_serv_allocate(bytes, orv::kAlignment);
}

}  // namespace orv::rng

namespace {

void* allocate(size_t bytes) { return allocate_block(bytes); }

// Bytes of a chunk's data in an image: none when it has no block.
uint32_t image_bytes(const ChunkNode* n) {
    return n->data != nullptr && n->size > 0 ? static_cast<uint32_t>(n->size) : 0;
}

int close_file(FILE* f) {
    const int r = std::fclose(f);
    return orv::fault::hit(orv::fault::kRngFileClose) ? EOF : r;
}

int32_t state_bytes(const BrngRow* row) { return row->streamBytes - static_cast<int32_t>(kStateOffset); }

// The row of a stream's generator; null when the number or the row is unusable.
const BrngRow* row_of(const void* s) { return find_row(header(s)->brngId); }

int32_t call_init(void* s, int32_t method, int32_t count, const void* params) {
    const BrngRow* row = row_of(s);
    if (row == nullptr) return ORV_RNG_ERROR_INVALID_BRNG;
    return row->initStream(method, s, count, params);
}

}  // namespace

ORV_EXPORT int32_t __vstAllocateStream(void** out, const BrngRow* table, int32_t id, int32_t row,
                                           int32_t sub) {
    const int32_t bytes = table[row].streamBytes;
    void* s = bytes >= static_cast<int32_t>(kStateOffset) ? allocate(static_cast<size_t>(bytes)) : nullptr;
    if (s == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    StreamHeader* h = header(s);
    h->brngId = static_cast<uint32_t>(id);
    h->mark = 1;
    h->chunks = nullptr;
    *out = s;
    return 0;
}

// Rows without functions (generators not in this library, and the empty
// rows 279 and 280) are refused with -1000 instead of calling a null pointer.
ORV_EXPORT int32_t __vstNewStreamEx(void** out, int32_t id, int32_t count, const uint32_t* params) {
    if (id == ORV_BRNG_IABSTRACT || id == ORV_BRNG_DABSTRACT || id == ORV_BRNG_SABSTRACT)
        return ORV_RNG_ERROR_INVALID_BRNG;
    uint32_t row = 0, sub = 0;
    const BrngRow* table = __vstGetBrngBaseOffset(static_cast<uint32_t>(id), &row, &sub);
    const int32_t valid = __vstIsBrngValid(table, static_cast<int32_t>(row), static_cast<int32_t>(sub));
    if (valid != 0) return valid;
    if (find_row(static_cast<uint32_t>(id)) == nullptr) return ORV_RNG_ERROR_INVALID_BRNG;
    const int32_t status = __vstAllocateStream(out, table, id, static_cast<int32_t>(row),
                                               static_cast<int32_t>(sub));
    if (status != 0) return status;
    // A null seed array seeds as no seed words.
    return table[row].initStream(ORV_RNG_METHOD_SEED, *out, params != nullptr ? count : 0, params);
}

ORV_EXPORT int32_t __vstCopyStream(void** out, const void* src) {
    const BrngRow* row = row_of(src);
    if (row == nullptr) return ORV_RNG_ERROR_INVALID_BRNG;
    void* s = allocate(static_cast<size_t>(row->streamBytes));
    if (s == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    std::memcpy(s, src, static_cast<size_t>(row->streamBytes));
    header(s)->chunks = nullptr;
    *out = s;
    return __vstCopyChunks(s, src);
}

// Copies seedCount words of the source's generator, bounded by the state
// sizes of both streams (a WH seed of 4 sixteen-byte words is the whole
// 32-byte state, multipliers included).
ORV_EXPORT int32_t __vstCopyStreamState(void* dst, const void* src) {
    if (dst == src) return 0;
    const BrngRow* srow = row_of(src);
    const BrngRow* drow = row_of(dst);
    if (srow == nullptr || drow == nullptr) return ORV_RNG_ERROR_INVALID_BRNG;
    int64_t bytes = int64_t{srow->seedCount} * srow->wordBytes;
    if (bytes > state_bytes(srow)) bytes = state_bytes(srow);
    if (bytes > state_bytes(drow)) bytes = state_bytes(drow);
    if (bytes > 0)
        std::memcpy(static_cast<unsigned char*>(dst) + kStateOffset,
                    static_cast<const unsigned char*>(src) + kStateOffset, static_cast<size_t>(bytes));
    __vstDeleteChunks(dst);
    return __vstCopyChunks(dst, src);
}

ORV_EXPORT int32_t __vstDeleteStream(void** stream) {
    if (stream == nullptr || *stream == nullptr) return 0;  // nothing to release
    __vstDeleteChunks(*stream);
    orv_serv_deallocate(*stream);
    *stream = nullptr;
    return 0;
}

ORV_EXPORT int32_t __vstLeapfrogStream(void* stream, int32_t k, int32_t nstreams) {
    if (nstreams < 0) return ORV_RNG_ERROR_LEAPFROG_NSTREAMS;
    return call_init(stream, ORV_RNG_METHOD_LEAPFROG, nstreams, &k);
}

ORV_EXPORT int32_t __vstSkipAheadStream(void* stream, int64_t nskip) {
    return call_init(stream, ORV_RNG_METHOD_SKIP, 2, &nskip);
}

ORV_EXPORT int32_t __vstSkipAheadStreamEx(void* stream, int32_t n, const uint64_t* nskip) {
    return call_init(stream, ORV_RNG_METHOD_SKIP_EX, n, nskip);
}

namespace {

// Bytes of the stream's image, counted wide: chunk sizes can sum past 2^32.
uint64_t image_size(const void* stream) {
    const BrngRow* row = row_of(stream);
    uint64_t size = static_cast<uint64_t>(row != nullptr ? row->streamBytes : 16) + 8;
    for (const ChunkNode* n = header(stream)->chunks; n != nullptr; n = n->next) size += 24 + image_bytes(n);
    return size;
}

// An image holds its chunk count in 16 bits, and its size must be told in 32
// bits: a stream beyond either is refused by the saves rather than written
// with chunks lost or past the block its size asked for.
bool image_fits(const void* stream) {
    if (row_of(stream) == nullptr) return false;
    int32_t chunks = 0;
    for (const ChunkNode* n = header(stream)->chunks; n != nullptr; n = n->next)
        if (++chunks > 0xFFFF) return false;
    return image_size(stream) <= 0xFFFFFFFFu;
}

}  // namespace

// Saturates at 2^32 - 1 for an image that can't be saved.
ORV_EXPORT uint32_t __vstGetStreamSize(const void* stream) {
    const uint64_t size = image_size(stream);
    return size > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<uint32_t>(size);
}

// ---------------------------------------------------------------------------
// The stream image.

namespace {

struct Header {
    unsigned char head[8];  // version and magic, in either order
    uint32_t headerSize;
    int32_t stateSize;
    uint32_t chunkCount;
    uint32_t brngId;
};

// A sink or source of bytes: a stdio file or a block of memory. Reads are
// bounded by the bytes the source holds, so that a damaged size field can't
// ask for more than is there.
struct Io {
    FILE* file = nullptr;
    char* out = nullptr;
    const char* in = nullptr;
    size_t remaining = 0;  // bytes left to read

    bool read(void* dst, size_t bytes) {
        if (bytes > remaining) {
            remaining = 0;
            return false;
        }
        remaining -= bytes;
        if (file != nullptr) return bytes == 0 || std::fread(dst, bytes, 1, file) == 1;
        if (bytes != 0) std::memcpy(dst, in, bytes);
        in += bytes;
        return true;
    }
    bool write(const void* src, size_t bytes) {
        if (file != nullptr) return bytes == 0 || std::fwrite(src, bytes, 1, file) == 1;
        if (bytes != 0) std::memcpy(out, src, bytes);
        out += bytes;
        return true;
    }
};

void put16(unsigned char* p, uint16_t v) { std::memcpy(p, &v, 2); }
void put32(unsigned char* p, uint32_t v) { std::memcpy(p, &v, 4); }
uint16_t get16(const unsigned char* p) { uint16_t v; std::memcpy(&v, p, 2); return v; }
uint32_t get32(const unsigned char* p) { uint32_t v; std::memcpy(&v, p, 4); return v; }

// Writes the version-2 image; false when a write fails. Unused header bytes
// are zero.
bool write_image(void* stream, Io& io) {
    const StreamHeader* h = header(stream);
    BrngRow row{};
    __vstGetBrngProperties(static_cast<int32_t>(__vstGetStreamStateBrng(stream)), &row);
    const int32_t chunks = __vstGetNumChunks(stream);
    unsigned char hdr[ORV_RNG_FILE_HEADER_BYTES] = {};
    hdr[0] = ORV_RNG_FILE_VERSION;
    std::memcpy(hdr + 4, "RNG", 4);
    put16(hdr + 8, ORV_RNG_FILE_HEADER_BYTES);
    put32(hdr + 12, static_cast<uint32_t>(state_bytes(&row)));
    put16(hdr + 16, static_cast<uint16_t>(chunks));
    put32(hdr + 20, h->brngId);
    bool ok = io.write(hdr, sizeof hdr);
    ok = ok && io.write(static_cast<const unsigned char*>(stream) + kStateOffset,
                        static_cast<size_t>(state_bytes(&row)));
    for (const ChunkNode* n = h->chunks; ok && n != nullptr; n = n->next) {
        unsigned char fixed[24];
        put32(fixed, static_cast<uint32_t>(n->type));
        std::memcpy(fixed + 4, &n->id, 16);
        put32(fixed + 20, image_bytes(n));
        ok = io.write(fixed, sizeof fixed) && io.write(n->data, image_bytes(n));
    }
    return ok;
}

// Reads and checks the header; 0, or the status of the first failure.
int32_t read_header(Io& io, Header& h, int32_t bad_format, int32_t bad_version) {
    std::memset(&h, 0, sizeof h);
    io.read(h.head, 8);  // a short read shows up in the next one
    unsigned char rest[16] = {};
    if (h.head[0] == 2) {
        if (!io.read(rest, 16)) return ORV_RNG_ERROR_FILE_READ;
        h.headerSize = get16(rest);
        h.stateSize = static_cast<int32_t>(get32(rest + 4));
        h.chunkCount = get16(rest + 8);
        h.brngId = get32(rest + 12);
    } else {
        if (!io.read(rest, 12)) return ORV_RNG_ERROR_FILE_READ;
        h.headerSize = ORV_RNG_FILE_HEADER_BYTES;
        h.stateSize = get16(rest + 2);
        h.chunkCount = get16(rest + 4);
        h.brngId = get32(rest + 8);
    }
    if (std::memcmp(h.head + 4, "RNG", 3) != 0 && std::memcmp(h.head, "RNG", 3) != 0) return bad_format;
    if (h.head[0] >= 3 && h.head[4] >= 3) return bad_version;
    const BrngRow* row = find_row(h.brngId);
    if (row == nullptr) return bad_format;
    if (h.stateSize != state_bytes(row)) return bad_format;
    if (h.headerSize < ORV_RNG_FILE_HEADER_BYTES) return bad_format;
    return 0;
}

// Reads the state and the chunks into a new stream. A failed load never
// hands out a stream.
int32_t load(void** out, Io& io, int32_t bad_format, int32_t bad_version) {
    Header h;
    int32_t status = read_header(io, h, bad_format, bad_version);
    *out = nullptr;
    void* s = nullptr;
    if (status >= 0) {
        uint32_t row = 0, sub = 0;
        const BrngRow* table = __vstGetBrngBaseOffset(h.brngId, &row, &sub);
        status = __vstAllocateStream(&s, table, static_cast<int32_t>(h.brngId), static_cast<int32_t>(row),
                                     static_cast<int32_t>(sub));
    }
    if (status >= 0) {
        if (!io.read(static_cast<unsigned char*>(s) + kStateOffset, static_cast<size_t>(h.stateSize)))
            status = ORV_RNG_ERROR_FILE_READ;
        else if (!state_possible(s))
            status = bad_format;
        else if (h.brngId == ORV_BRNG_TRNG && !__vstCPUisRDRAND())
            status = ORV_RNG_ERROR_NO_RDRAND;
        else if (h.brngId == ORV_BRNG_ARS5 && !__vstCPUisAES())
            status = ORV_RNG_ERROR_NO_AES;
    }
    for (uint32_t c = 0; status >= 0 && c < h.chunkCount; ++c) {
        unsigned char type[4], size[4];
        OrvChunkId id{};
        if (!io.read(type, 4)) { status = ORV_RNG_ERROR_FILE_READ; break; }
        if (h.head[0] == 1 || h.head[0] == 2) {
            if (!io.read(&id, 16)) { status = ORV_RNG_ERROR_FILE_READ; break; }
        } else if (h.head[0] != 0) {
            status = ORV_RNG_ERROR_FILE_READ;
            break;
        }
        if (!io.read(size, 4)) { status = ORV_RNG_ERROR_FILE_READ; break; }
        const int32_t bytes = static_cast<int32_t>(get32(size));
        // A size that is negative or larger than what is left can't be read.
        if (bytes < 0 || static_cast<size_t>(bytes) > io.remaining) {
            status = ORV_RNG_ERROR_FILE_READ;
            break;
        }
        void* data = nullptr;
        if (bytes > 0) {
            data = allocate(static_cast<size_t>(bytes));
            if (data == nullptr) { status = ORV_RNG_ERROR_MEM_FAILURE; break; }
            if (!io.read(data, static_cast<size_t>(bytes))) {
                orv_serv_deallocate(data);
                status = ORV_RNG_ERROR_FILE_READ;
                break;
            }
        }
        status = __vstAddChunk(s, static_cast<int32_t>(get32(type)), &id, data, bytes);
        if (status != 0) {
            if (data != nullptr) orv_serv_deallocate(data);
            break;
        }
        // A chunk whose id is already shared uses the table's block: ours goes.
        if (data != nullptr && header(s)->chunks->data != data) orv_serv_deallocate(data);
    }
    if (status < 0) {
        if (s != nullptr) __vstDeleteStream(&s);
        return status;
    }
    *out = s;
    return status;
}

// The name as a terminated string: a counted name is copied; a negative
// length means the name is terminated already. Null on allocation failure.
const char* file_name(const char* name, int32_t length, char** copy) {
    *copy = nullptr;
    if (length < 0) return name;
    *copy = static_cast<char*>(allocate(static_cast<size_t>(length) + 1));
    if (*copy == nullptr) return nullptr;
    if (length > 0) std::memcpy(*copy, name, static_cast<size_t>(length));
    (*copy)[length] = '\0';
    return *copy;
}

}  // namespace

ORV_EXPORT int32_t __vstSaveStreamF(void* stream, const char* name, int32_t nameLength) {
    if (name == nullptr) return ORV_RNG_ERROR_FILE_OPEN;
    if (!image_fits(stream)) return ORV_RNG_ERROR_FILE_WRITE;  // before the file is touched
    char* copy = nullptr;
    const char* path = file_name(name, nameLength, &copy);
    if (path == nullptr && nameLength >= 0) return ORV_RNG_ERROR_MEM_FAILURE;
    int32_t status = 0;
    FILE* f = path != nullptr ? std::fopen(path, "wb") : nullptr;
    if (f == nullptr) {
        status = ORV_RNG_ERROR_FILE_OPEN;
    } else {
        // Unbuffered, so that a failed write is seen where it happens.
        std::setvbuf(f, nullptr, _IONBF, 0);
        Io io;
        io.file = f;
        if (!write_image(stream, io)) status = ORV_RNG_ERROR_FILE_WRITE;
        if (close_file(f) != 0) status = ORV_RNG_ERROR_FILE_CLOSE;
    }
    if (copy != nullptr) orv_serv_deallocate(copy);
    return status;
}

ORV_EXPORT int32_t __vstSaveStreamM(void* stream, char* memory) {
    if (!image_fits(stream)) return ORV_RNG_ERROR_BAD_MEM_FORMAT;
    Io io;
    io.out = memory;
    write_image(stream, io);
    return 0;
}

// *out is null on every failure, also when the name can't be copied.
ORV_EXPORT int32_t __vstLoadStreamF(void** out, const char* name, int32_t nameLength) {
    *out = nullptr;
    if (name == nullptr) return ORV_RNG_ERROR_FILE_OPEN;
    char* copy = nullptr;
    const char* path = file_name(name, nameLength, &copy);
    if (path == nullptr && nameLength >= 0) return ORV_RNG_ERROR_MEM_FAILURE;
    int32_t status = 0;
    FILE* f = path != nullptr ? std::fopen(path, "rb") : nullptr;
    *out = nullptr;
    if (f == nullptr) {
        status = ORV_RNG_ERROR_FILE_OPEN;
    } else {
        Io io;
        io.file = f;
        struct stat st;
        io.remaining = fstat(fileno(f), &st) == 0 && st.st_size > 0 ? static_cast<size_t>(st.st_size) : 0;
        status = load(out, io, ORV_RNG_ERROR_BAD_FILE_FORMAT, ORV_RNG_ERROR_UNSUPPORTED_FILE_VER);
        if (close_file(f) != 0) {
            status = ORV_RNG_ERROR_FILE_CLOSE;
            if (*out != nullptr) __vstDeleteStream(out);
        }
    }
    if (copy != nullptr) orv_serv_deallocate(copy);
    return status;
}

namespace orv::rng {

// By the row's seeding function, so that both numberings of a generator and
// a registered copy of a built-in row are checked alike.
bool state_possible(const void* stream) {
    const BrngRow* row = row_of(stream);
    if (row == nullptr) return false;
    const auto init = row->initStream;
    if (init == __vstBRngMCG31M1InitStream) return mcg31m1_state_possible(stream);
    if (init == __vstBRngR250InitStream) return r250_state_possible(stream);
    if (init == __vstBRngMRG32K3AInitStream) return mrg32k3a_state_possible(stream);
    if (init == __vstBRngMCG59InitStream) return mcg59_state_possible(stream);
    if (init == __vstBRngWHInitStream) return wh_state_possible(stream);
    return true;
}

int32_t load_stream_image(void** out, const char* memory, size_t limit) {
    Io io;
    io.in = memory;
    io.remaining = limit;
    return load(out, io, ORV_RNG_ERROR_BAD_MEM_FORMAT, ORV_RNG_ERROR_BAD_MEM_FORMAT);
}
}  // namespace orv::rng

// The image is trusted to be as long as its header and chunk sizes say.
ORV_EXPORT int32_t __vstLoadStreamM(void** out, const char* memory) {
    return load_stream_image(out, memory, std::numeric_limits<size_t>::max());
}
