// Checked stream calls: every argument the kernel entries trust is tested
// here, and a refused call changes nothing.
#include <orv/orv_rng.h>

namespace {

// A stream whose record names a generator with all four functions.
bool usable_row(int32_t brng) {
    BrngRow row{};
    return __vstGetBrngProperties(brng, &row) == 0 && row.initStream != nullptr &&
           row.floatFill != nullptr && row.doubleFill != nullptr && row.wordFill != nullptr;
}

int check_stream(const void* s) {
    if (s == nullptr) return ORV_RNG_ERROR_NULL_STREAM;
    return usable_row(static_cast<int32_t>(__vstGetStreamStateBrng(s))) ? 0 : ORV_RNG_ERROR_INVALID_BRNG;
}

}  // namespace

extern "C" {

ORV_API int vstNewStreamEx(OrvStreamPtr* stream, int brng, int n, const uint32_t* params) {
    if (stream == nullptr) return ORV_RNG_ERROR_NULL_STREAM;
    if (n < 0) return ORV_RNG_ERROR_BAD_COUNT;
    if (n > 0 && params == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    if (brng == ORV_BRNG_IABSTRACT || brng == ORV_BRNG_DABSTRACT || brng == ORV_BRNG_SABSTRACT ||
        !usable_row(brng))
        return ORV_RNG_ERROR_INVALID_BRNG;
    void* s = nullptr;
    const int32_t status = __vstNewStreamEx(&s, brng, n, params);
    if (status != 0) {
        __vstDeleteStream(&s);  // a seeding that failed hands out nothing
        return status;
    }
    *stream = s;
    return 0;
}

ORV_API int vstNewStream(OrvStreamPtr* stream, int brng, uint32_t seed) {
    return vstNewStreamEx(stream, brng, 1, &seed);
}

ORV_API int vstDeleteStream(OrvStreamPtr* stream) {
    if (stream == nullptr || *stream == nullptr) return ORV_RNG_ERROR_NULL_STREAM;
    return __vstDeleteStream(stream);
}

ORV_API int vstCopyStream(OrvStreamPtr* stream, OrvStreamPtr src) {
    if (stream == nullptr) return ORV_RNG_ERROR_NULL_STREAM;
    if (const int bad = check_stream(src)) return bad;
    void* s = nullptr;
    const int32_t status = __vstCopyStream(&s, src);
    if (status != 0) {
        __vstDeleteStream(&s);
        return status;
    }
    *stream = s;
    return 0;
}

ORV_API int vstCopyStreamState(OrvStreamPtr dst, OrvStreamPtr src) {
    if (const int bad = check_stream(dst)) return bad;
    if (const int bad = check_stream(src)) return bad;
    uint32_t drow = 0, srow = 0, sub = 0;
    if (__vstGetBrngBaseOffset(__vstGetStreamStateBrng(dst), &drow, &sub) !=
            __vstGetBrngBaseOffset(__vstGetStreamStateBrng(src), &srow, &sub) ||
        drow != srow)
        return ORV_RNG_ERROR_STREAMS_DIFFER;
    return __vstCopyStreamState(dst, src);
}

ORV_API int vstSkipAheadStream(OrvStreamPtr stream, long long nskip) {
    if (const int bad = check_stream(stream)) return bad;
    if (nskip < 0) return ORV_RNG_ERROR_BAD_COUNT;
    return __vstSkipAheadStream(stream, nskip);
}

ORV_API int vstSkipAheadStreamEx(OrvStreamPtr stream, int n, const uint64_t* nskip) {
    if (const int bad = check_stream(stream)) return bad;
    if (n < 0) return ORV_RNG_ERROR_BAD_COUNT;
    if (n > 0 && nskip == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    return __vstSkipAheadStreamEx(stream, n, nskip);
}

ORV_API int vstLeapfrogStream(OrvStreamPtr stream, int k, int nstreams) {
    if (const int bad = check_stream(stream)) return bad;
    if (nstreams < 1) return ORV_RNG_ERROR_LEAPFROG_NSTREAMS;
    if (k < 0 || k >= nstreams) return ORV_RNG_ERROR_LEAPFROG_INDEX;
    return __vstLeapfrogStream(stream, k, nstreams);
}

ORV_API int vstSaveStreamF(OrvStreamPtr stream, const char* fname) {
    if (const int bad = check_stream(stream)) return bad;
    if (fname == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    return __vstSaveStreamF(stream, fname, -1);
}

ORV_API int vstLoadStreamF(OrvStreamPtr* stream, const char* fname) {
    if (stream == nullptr) return ORV_RNG_ERROR_NULL_STREAM;
    if (fname == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    void* s = nullptr;
    const int32_t status = __vstLoadStreamF(&s, fname, -1);
    if (status == 0) *stream = s;
    return status;
}

ORV_API int vstSaveStreamM(OrvStreamPtr stream, char* memptr) {
    if (const int bad = check_stream(stream)) return bad;
    if (memptr == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    return __vstSaveStreamM(stream, memptr);
}

ORV_API int vstLoadStreamM(OrvStreamPtr* stream, const char* memptr) {
    if (stream == nullptr) return ORV_RNG_ERROR_NULL_STREAM;
    if (memptr == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    void* s = nullptr;
    const int32_t status = __vstLoadStreamM(&s, memptr);
    if (status == 0) *stream = s;
    return status;
}

ORV_API int vstGetStreamSize(OrvStreamPtr stream) {
    if (const int bad = check_stream(stream)) return bad;
    return static_cast<int>(__vstGetStreamSize(stream));
}

ORV_API int vstGetStreamStateBrng(OrvStreamPtr stream) {
    if (const int bad = check_stream(stream)) return bad;
    return static_cast<int>(__vstGetStreamStateBrng(stream));
}

ORV_API int vstGetBrngProperties(int brng, BrngRow* properties) {
    if (properties == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    BrngRow row{};
    const int32_t status = __vstGetBrngProperties(brng, &row);
    if (status == 0) *properties = row;
    return status;
}

ORV_API int vstGetNumRegBrngs(void) { return __vstGetNumRegBrngs(); }

ORV_API int vstRegisterBrng(const BrngRow* properties) {
    if (properties == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    return __vstRegisterBrng(properties);
}

}  // extern "C"
