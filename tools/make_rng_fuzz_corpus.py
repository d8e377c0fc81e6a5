#!/usr/bin/env python3
"""Writes the seed corpus of stream images for the loader fuzz target.

Each file is a hand-built image of one of the layouts the loaders read:
version 2 with and without chunks, version 1 in both layouts of the first
eight bytes, and version 0. The states are ones the generators can reach
(the loaders refuse the others): residues below each modulus, no
congruential part at zero, R250's ring positions 103 apart.

Usage: make_rng_fuzz_corpus.py OUTPUT_DIR
"""
import os
import struct
import sys

# generator number -> state bytes (stream size minus the 16-byte header)
GENERATORS = {0x100000: 8, 0x200000: 1008, 0x300000: 24, 0x400000: 16, 0x500000 + 7: 32, 3: 16}


def state(gen, fill):
    """A reachable state of the generator, varied by fill."""
    words = lambda *w: struct.pack("<%dI" % len(w), *w)
    if gen == 0x100000:  # MCG31M1: x, a below 2^31 - 1, not zero
        return words(1000 + fill, 0x43806C20)
    if gen == 0x200000:  # R250: 250 words, i, j = i + 103
        return words(*[(69069 * (k + fill + 1)) & 0xFFFFFFFF for k in range(250)], 10, 113)
    if gen == 0x300000:  # MRG32K3A: six residues, neither half all zero
        return words(*[fill + k + 1 for k in range(6)])
    if gen in (0x400000, 3):  # MCG59: x below 2^59 and not zero, odd multiplier
        return struct.pack("<QQ", 1000 + fill, 0x113769B23C5FD)
    if gen == 0x500000 + 7:  # WH: four values, four multipliers below the moduli near 2^24
        return words(*[fill + k + 1 for k in range(4)], 123, 125, 126, 127)
    raise KeyError(gen)


def chunk(version, ctype, cid, data):
    out = struct.pack("<I", ctype)
    if version >= 1:
        out += struct.pack("<QQ", *cid)
    return out + struct.pack("<i", len(data)) + data


def v2(gen, chunks):
    size = GENERATORS[gen]
    head = struct.pack("<B3s4sH2siH2sI", 2, b"\0\0\0", b"RNG\0", 24, b"\0\0", size, len(chunks), b"\0\0", gen)
    return head + state(gen, gen & 0xFF) + b"".join(chunk(2, *c) for c in chunks)


def old(version, swapped, gen, chunks):
    size = GENERATORS[gen]
    first = (b"RNG\0" + struct.pack("<I", version)) if swapped else (struct.pack("<I", version) + b"RNG\0")
    head = first + struct.pack("<HHHHI", 0, size, len(chunks), 0, gen)
    return head + state(gen, version) + b"".join(chunk(version, *c) for c in chunks)


def main():
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    shared = (0x5EED, 0xC0FFEE)
    images = {
        "v2_mcg31m1": v2(0x100000, []),
        "v2_mrg32k3a_two_chunks": v2(0x300000, [(1, (0, 0), b"kept pair"), (9, shared, b"\1\2\3\4" * 4)]),
        "v2_r250": v2(0x200000, [(3, (0, 0), b"")]),
        "v2_wh7": v2(0x500000 + 7, [(2, (0, 0), b"x" * 40)]),
        "v1_mcg59": old(1, False, 0x400000, [(4, (1, 2), b"setup")]),
        "v1_swapped_first_numbering": old(1, True, 3, []),
        "v0_mcg31m1_chunk": old(0, False, 0x100000, [(5, (0, 0), b"abc")]),
    }
    for name, data in images.items():
        with open(os.path.join(out, name), "wb") as f:
            f.write(data)


if __name__ == "__main__":
    main()
