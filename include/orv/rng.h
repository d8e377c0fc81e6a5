/* Random streams: the generator registry, stream operations, stream files,
 * chunks and the congruential generators. Plain C interface. */
#ifndef ORV_RNG_H
#define ORV_RNG_H

#include <stddef.h>
#include <stdint.h>

#if defined(ORV_BUILDING_KERNEL)
#define ORV_RNG_API __attribute__((visibility("default")))
#else
#define ORV_RNG_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A stream is opaque to callers: a 16-byte header (generator number, mark,
 * chunk list) with the generator's state behind it. */
typedef void* OrvStreamPtr;

typedef int32_t (*OrvInitStreamFn)(int32_t method, void* stream, int32_t count, const void* params);
typedef int32_t (*OrvFloatFillFn)(void* stream, int32_t n, float* r, float a, float b);
typedef int32_t (*OrvDoubleFillFn)(void* stream, int32_t n, double* r, double a, double b);
typedef int32_t (*OrvWordFillFn)(void* stream, int32_t n, uint32_t* r);

/* One generator row, 56 bytes. */
typedef struct BrngRow {
    int32_t streamBytes;  /* whole stream record, 16-byte header included */
    int32_t seedCount;    /* state words (of wordBytes) that form the seed */
    int32_t zeroIncluded; /* 1 when an output can be 0 */
    int32_t wordBytes;    /* 4, 8 or 16 */
    int32_t valueBits;    /* significant bits of an output word */
    int32_t reserved;     /* zero */
    OrvInitStreamFn initStream;
    OrvFloatFillFn floatFill;
    OrvDoubleFillFn doubleFill;
    OrvWordFillFn wordFill;
} BrngRow;

/* initStream methods. */
enum {
    ORV_RNG_METHOD_SEED = 0,
    ORV_RNG_METHOD_LEAPFROG = 1,
    ORV_RNG_METHOD_SKIP = 2,
    ORV_RNG_METHOD_SKIP_EX = 3
};

/* Generator numbers of the second numbering: (row + 1) << 20, plus the
 * sub-generator in the low 20 bits. */
#define ORV_BRNG_MCG31M1 0x100000
#define ORV_BRNG_R250 0x200000
#define ORV_BRNG_MRG32K3A 0x300000
#define ORV_BRNG_MCG59 0x400000
#define ORV_BRNG_WH 0x500000
#define ORV_BRNG_SOBOL 0x600000
#define ORV_BRNG_NIEDERR 0x700000
#define ORV_BRNG_MT19937 0x800000
#define ORV_BRNG_MT2203 0x900000
#define ORV_BRNG_IABSTRACT 0xA00000
#define ORV_BRNG_DABSTRACT 0xB00000
#define ORV_BRNG_SABSTRACT 0xC00000
#define ORV_BRNG_SFMT19937 0xD00000
#define ORV_BRNG_TRNG 0xE00000
#define ORV_BRNG_ARS5 0xF00000
#define ORV_BRNG_PHILOX4X32X10 0x1000000

#define ORV_BRNG_TABLE_ROWS 512
#define ORV_BRNG_FIRST_LIVE_ROWS 281
#define ORV_BRNG_BUILT_IN 16
#define ORV_WH_SETS 273

/* Status codes of the random component. */
#define ORV_RNG_OK 0
#define ORV_RNG_ERROR_BAD_METHOD (-2)         /* method not known to initStream */
#define ORV_RNG_ERROR_MEM_FAILURE (-4)        /* allocation failed */
#define ORV_RNG_ERROR_BAD_ARGUMENT (-3)       /* a size or interval that can't be used */
#define ORV_RNG_ERROR_NULL_PTR (-5)           /* null function in a row to register, or a null argument */
#define ORV_RNG_ERROR_INVALID_BRNG (-1000)    /* generator number not valid */
#define ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED (-1002)
#define ORV_RNG_ERROR_SKIPAHEAD_UNSUPPORTED (-1003)
#define ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED (-1004)
#define ORV_RNG_ERROR_BRNG_TABLE_FULL_SIZE (-1008) /* negative streamBytes */
#define ORV_RNG_ERROR_BAD_WORD_SIZE (-1009)        /* wordBytes not 4, 8 or 16 */
#define ORV_RNG_ERROR_BAD_NSEEDS (-1010)           /* seedCount below 1 */
#define ORV_RNG_ERROR_BAD_NBITS (-1011)            /* valueBits below 1 */
#define ORV_RNG_ERROR_QRNG_PERIOD_ELAPSED (-1012)  /* quasi-random sequence would pass its last point */
#define ORV_RNG_ERROR_LEAPFROG_NSTREAMS (-1013)    /* negative stream count */
#define ORV_RNG_ERROR_NO_NUMBITS (-1014)
#define ORV_RNG_ERROR_FILE_CLOSE (-1100)
#define ORV_RNG_ERROR_FILE_OPEN (-1101)
#define ORV_RNG_ERROR_FILE_WRITE (-1102)
#define ORV_RNG_ERROR_FILE_READ (-1103)            /* short read, or chunk of unknown version */
#define ORV_RNG_ERROR_BAD_FILE_FORMAT (-1110)      /* not a stream file, or not fitting the generator */
#define ORV_RNG_ERROR_UNSUPPORTED_FILE_VER (-1111)
#define ORV_RNG_ERROR_ABSTRACT_FOREIGN (-1120)     /* abstract stream made in another process */
#define ORV_RNG_ERROR_ABSTRACT_FORM (-1122)        /* fill form the abstract stream lacks */
#define ORV_RNG_ERROR_NO_RDRAND (-1130)
#define ORV_RNG_ERROR_RDRAND_EXHAUSTED (-1131)
#define ORV_RNG_ERROR_NO_AES (-1140)
#define ORV_RNG_ERROR_BAD_MEM_FORMAT (-1200)       /* not a stream image, or version not supported */
#define ORV_RNG_ERROR_NO_TABLE_ENTRY (-3000)       /* shared table has no entry of that id */
#define ORV_RNG_ERROR_TABLE_FULL (-3001)           /* shared table full */

/* Stream-file layout constants. */
#define ORV_RNG_FILE_VERSION 2
#define ORV_RNG_FILE_HEADER_BYTES 24

/* Chunk id: two 64-bit words, all zero for a private chunk. */
typedef struct OrvChunkId {
    uint64_t word[2];
} OrvChunkId;

/* An entry of the process-wide table of shared read-only blocks. */
typedef struct OrvGlobRODataEntry {
    OrvChunkId id;
    int32_t references;
    void* data;
} OrvGlobRODataEntry;

/* The registry tables. */
ORV_RNG_API extern const BrngRow __RegBrngs[ORV_BRNG_TABLE_ROWS];
ORV_RNG_API extern BrngRow __RegBrngsNew[ORV_BRNG_TABLE_ROWS];

/* Registry. */
ORV_RNG_API const BrngRow* __vstGetBrngBaseOffset(uint32_t id, uint32_t* row, uint32_t* sub);
ORV_RNG_API int32_t __vstIsBrngValid(const BrngRow* table, int32_t row, int32_t sub);
ORV_RNG_API int32_t __vstGetBrngProperties(int32_t id, BrngRow* out);
ORV_RNG_API int32_t __vstGetNumRegBrngs(void);
ORV_RNG_API int32_t __vstRegisterBrng(const BrngRow* row);
ORV_RNG_API uint32_t __vstGetStreamStateBrng(const void* stream);
ORV_RNG_API int32_t __vstCPUisAES(void);
ORV_RNG_API int32_t __vstCPUisRDRAND(void);
ORV_RNG_API int32_t __vstCPUisVAES(void);

/* Stream operations. */
ORV_RNG_API int32_t __vstNewStreamEx(void** out, int32_t id, int32_t count, const uint32_t* params);
ORV_RNG_API int32_t __vstAllocateStream(void** out, const BrngRow* table, int32_t id, int32_t row,
                                        int32_t sub);
ORV_RNG_API int32_t __vstCopyStream(void** out, const void* src);
ORV_RNG_API int32_t __vstCopyStreamState(void* dst, const void* src);
ORV_RNG_API int32_t __vstDeleteStream(void** stream);
ORV_RNG_API int32_t __vstLeapfrogStream(void* stream, int32_t k, int32_t nstreams);
ORV_RNG_API int32_t __vstSkipAheadStream(void* stream, int64_t nskip);
ORV_RNG_API int32_t __vstSkipAheadStreamEx(void* stream, int32_t n, const uint64_t* nskip);
ORV_RNG_API int32_t __vstSaveStreamF(void* stream, const char* name, int32_t nameLength);
ORV_RNG_API int32_t __vstLoadStreamF(void** out, const char* name, int32_t nameLength);
ORV_RNG_API int32_t __vstSaveStreamM(void* stream, char* memory);
ORV_RNG_API int32_t __vstLoadStreamM(void** out, const char* memory);
ORV_RNG_API uint32_t __vstGetStreamSize(const void* stream);

/* Chunks and the shared read-only table. */
ORV_RNG_API int32_t __vstAddChunk(void* stream, int32_t type, const OrvChunkId* id, void* data,
                                  int32_t size);
ORV_RNG_API void* __vstSearchChunk(const void* stream, int32_t type);
ORV_RNG_API int32_t __vstGetNumChunks(const void* stream);
ORV_RNG_API int32_t __vstDeleteChunks(void* stream);
ORV_RNG_API int32_t __vstDeleteChunksById(void* stream, int32_t type);
ORV_RNG_API int32_t __vstCopyChunks(void* dst, const void* src);
ORV_RNG_API int32_t __vstFindGlobRODataTableEntry(OrvGlobRODataEntry** out, const OrvChunkId* id);
ORV_RNG_API int32_t __vstCreateGlobRODataTableEntry(OrvGlobRODataEntry** out, const OrvChunkId* id,
                                                    void* data);
/* out[0] receives the entry, out[1] its data block. */
ORV_RNG_API int32_t __vstRegisterGlobRODataReference(void** out, const OrvChunkId* id);
ORV_RNG_API int32_t __vstUnregisterGlobRODataReference(const OrvChunkId* id);
ORV_RNG_API int32_t __vstGenerateNewGlobalRODataTableEntryId(OrvChunkId* id, uint64_t second);

/* Congruential generators. */
#define ORV_RNG_DECLARE_GENERATOR(G)                                                          \
    ORV_RNG_API int32_t __vstBRng##G##InitStream(int32_t method, void* stream, int32_t count,  \
                                                 const void* params);                         \
    ORV_RNG_API int32_t __vstsBRng##G(void* stream, int32_t n, float* r, float a, float b);    \
    ORV_RNG_API int32_t __vstdBRng##G(void* stream, int32_t n, double* r, double a, double b); \
    ORV_RNG_API int32_t __vstiBRng##G(void* stream, int32_t n, uint32_t* r);
ORV_RNG_DECLARE_GENERATOR(MCG31M1)
ORV_RNG_DECLARE_GENERATOR(MCG59)
ORV_RNG_DECLARE_GENERATOR(MRG32K3A)
ORV_RNG_DECLARE_GENERATOR(WH)
ORV_RNG_DECLARE_GENERATOR(R250)
/* Counter-based and non-deterministic generators. */
ORV_RNG_DECLARE_GENERATOR(PHILOX4X32X10)
ORV_RNG_DECLARE_GENERATOR(ARS5)
ORV_RNG_DECLARE_GENERATOR(TRNG)
/* Quasi-random generators. */
ORV_RNG_DECLARE_GENERATOR(Sobol)
ORV_RNG_DECLARE_GENERATOR(Niederr)
#undef ORV_RNG_DECLARE_GENERATOR

/* Abstract streams: numbers from the caller's buffer of n values, which the
 * refill function rewrites whole (all n values) when it is used up; it gets
 * the stream, n and the buffer, and returns 0, or a status that the fill then
 * returns, keeping what it wrote. The double and single kinds hold numbers on
 * [c, d) and map them onto the fill's interval. The buffer must hold n values
 * when the stream is made. */
typedef int32_t (*OrvIAbstractRefill)(void* stream, int32_t n, uint32_t* buffer);
typedef int32_t (*OrvDAbstractRefill)(void* stream, int32_t n, double* buffer);
typedef int32_t (*OrvSAbstractRefill)(void* stream, int32_t n, float* buffer);
ORV_RNG_API int32_t __vstiNewAbstractStream(void** out, int32_t n, uint32_t* buffer, OrvIAbstractRefill refill);
ORV_RNG_API int32_t __vstdNewAbstractStream(void** out, int32_t n, double* buffer, double c, double d,
                                            OrvDAbstractRefill refill);
ORV_RNG_API int32_t __vstsNewAbstractStream(void** out, int32_t n, float* buffer, float c, float d,
                                            OrvSAbstractRefill refill);

/* Modular powers behind the skip-ahead of the congruential generators. */
ORV_RNG_API uint32_t __vstiPowMod(uint32_t a, uint64_t e, uint32_t m);
ORV_RNG_API uint32_t __vstiPowMod2P31M1(uint32_t a, uint64_t e);
ORV_RNG_API uint64_t __vstiPowMod2P59(uint64_t a, uint64_t e);
ORV_RNG_API int32_t __vstiVect3PowMod(uint32_t v[3], const uint32_t row[3], uint32_t m, uint64_t e);
ORV_RNG_API int32_t __vstiVect3PowArrayMod(uint32_t v[3], const uint32_t row[3], uint32_t m, int32_t n,
                                           const uint64_t* e);
ORV_RNG_API int32_t __vstiVect3PowArrayMod_M1(uint32_t v[3], int32_t n, const uint64_t* e,
                                              const uint32_t* table);
ORV_RNG_API int32_t __vstiVect3PowArrayMod_M2(uint32_t v[3], int32_t n, const uint64_t* e,
                                              const uint32_t* table);

#ifdef __cplusplus
}
#endif

#endif
