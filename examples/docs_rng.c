/* Random streams: independent streams for parallel work by skip-ahead and by
 * leapfrog, and a stream saved to memory and brought back. */
#include <orv/orv.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Two streams are in the same state when their images are equal. */
static int same_state(OrvStreamPtr a, OrvStreamPtr b) {
    const int na = vstGetStreamSize(a), nb = vstGetStreamSize(b);
    if (na <= 0 || na != nb) return 0;
    char* ia = malloc(na);
    char* ib = malloc(nb);
    const int same = ia && ib && vstSaveStreamM(a, ia) == 0 && vstSaveStreamM(b, ib) == 0 &&
                     memcmp(ia, ib, na) == 0;
    free(ia);
    free(ib);
    return same;
}

int main(void) {
    enum { kStreams = 4 };
    const long long kPerStream = 1000000;
    OrvStreamPtr block[kStreams], frog = NULL;

    /* Block splitting: stream k starts kPerStream * k draws into the sequence. */
    for (int k = 0; k < kStreams; ++k) {
        if (vstNewStream(&block[k], ORV_BRNG_MRG32K3A, 777) != 0) return 1;
        if (vstSkipAheadStream(block[k], kPerStream * k) != 0) return 1;
    }
    /* Skipping 2 * kPerStream from the start lands on stream 2's state. */
    OrvStreamPtr check = NULL;
    vstNewStream(&check, ORV_BRNG_MRG32K3A, 777);
    vstSkipAheadStream(check, 2 * kPerStream);
    if (!same_state(check, block[2])) return 2;

    /* Leapfrog: stream 1 of 4 draws elements 1, 5, 9, ... of the sequence.
     * MRG32k3a has no leapfrog; MCG31m1 has. A count below 1 is refused. */
    vstNewStream(&frog, ORV_BRNG_MCG31M1, 777);
    if (vstLeapfrogStream(frog, 1, 0) != ORV_RNG_ERROR_LEAPFROG_NSTREAMS) return 3;
    if (vstLeapfrogStream(frog, 1, kStreams) != 0) return 3;
    printf("MRG32k3a leapfrog: %d\n", vstLeapfrogStream(check, 1, kStreams));

    /* Save to memory, load as a new stream: the same state. */
    const int bytes = vstGetStreamSize(block[3]);
    char* image = malloc(bytes);
    OrvStreamPtr back = NULL;
    if (!image || vstSaveStreamM(block[3], image) != 0 || vstLoadStreamM(&back, image) != 0) return 4;
    if (!same_state(back, block[3])) return 5;
    printf("%d streams, image of %d bytes\n", kStreams, bytes);
    free(image);

    /* Each stream is the caller's until deleted; delete sets the pointer to null. */
    for (int k = 0; k < kStreams; ++k) vstDeleteStream(&block[k]);
    vstDeleteStream(&check);
    vstDeleteStream(&frog);
    vstDeleteStream(&back);
    return block[0] == NULL && back == NULL ? 0 : 6;
}
