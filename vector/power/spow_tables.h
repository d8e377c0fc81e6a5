// Made by tools/gen_spow_tables.py (do not edit): the tables and
// coefficients of the single-precision pow step; the script's notes say
// how each is fitted.
#pragma once

namespace orv::power {

// {1/c rounded to 28 bits, -16 log2(1/c)}; x = 2^k z, row i = bits 19..22 of
// bits(x) - 0x3F330000; |z/c - 1| <= 0.02963.
alignas(64) inline constexpr double kSpowLog[16][2] = {
    {0x1.661ec6a000000p+0, -0x1.efec619b26afap+2},
    {0x1.571ed3c000000p+0, -0x1.b0b67f39a28e1p+2},
    {0x1.49539e4000000p+0, -0x1.7418ad01630bep+2},
    {0x1.3c995a4000000p+0, -0x1.39de8df148b77p+2},
    {0x1.30d1902000000p+0, -0x1.01d9bc0e67f76p+2},
    {0x1.25e2270000000p+0, -0x1.97c1cac2fd722p+1},
    {0x1.1bb4a40000000p+0, -0x1.2f9e32a7954e4p+1},
    {0x1.12358e8000000p+0, -0x1.960cb07605a2ep+0},
    {0x1.0953f3a000000p+0, -0x1.a6f9c63dab850p-1},
    {0x1.0000000000000p+0, 0x0.0p+0},
    {0x1.e573aca000000p-1, 0x1.3aa2fd112ce64p+0},
    {0x1.ca4b306000000p-1, 0x1.476a9f57539c0p+1},
    {0x1.b203640000000p-1, 0x1.e840bea311339p+1},
    {0x1.9c2d14e000000p-1, 0x1.406463e4e77b0p+2},
    {0x1.886e5f0000000p-1, 0x1.88e9c756705f5p+2},
    {0x1.767dce4000000p-1, 0x1.ce0a4930a17ffp+2},
};

// 2^(j/16) with j 2^48 subtracted from its bits.
alignas(64) inline constexpr double kSpowExp2[16] = {
    0x1.0000000000000p+0,
    0x1.fb5586cf9890fp-1,
    0x1.f72b83c7d517bp-1,
    0x1.f387a6e756238p-1,
    0x1.f06fe0a31b715p-1,
    0x1.edea64c123422p-1,
    0x1.ebfdad5362a27p-1,
    0x1.eab07dd485429p-1,
    0x1.ea09e667f3bcdp-1,
    0x1.ea11473eb0187p-1,
    0x1.eace5422aa0dbp-1,
    0x1.ec49182a3f090p-1,
    0x1.ee89f995ad3adp-1,
    0x1.f199bdd85529cp-1,
    0x1.f5818dcfba487p-1,
    0x1.fa4afa2a490dap-1,
};

// 16 log2(1 + r) = r Q(r), |r| <= 0.0297, Q of degree 5 (Remez on 16 log2(1 + r) / r);
// relative error of the rounded polynomial 2^-38.2; highest degree first.
inline constexpr double kSpowQ5[6] = {-0x1.ed1795f19d89ap+1, 0x1.27be50202a719p+2, -0x1.71546b203abbep+2, 0x1.ec7097b447771p+2, -0x1.71547652eb4c5p+3, 0x1.71547652bd0dap+4};
// 16 log2(1 + r) = r Q(r), |r| <= 0.0297, Q of degree 4 (Remez on 16 log2(1 + r) / r);
// relative error of the rounded polynomial 2^-31.9; highest degree first.
inline constexpr double kSpowQ4[5] = {0x1.27ca3ee6e0e87p+2, -0x1.719a02c17c4aap+2, 0x1.ec7095027727ap+2, -0x1.7154745c09fb5p+3, 0x1.71547652c1ebcp+4};
// 16 log2(1 + r) = r Q(r), |r| <= 0.0297, Q of degree 3 (Remez on 16 log2(1 + r) / r);
// relative error of the rounded polynomial 2^-25.6; highest degree first.
inline constexpr double kSpowQ3[4] = {-0x1.71a7edc8d8e3ep+2, 0x1.ecb360403b920p+2, -0x1.7154732e525afp+3, 0x1.715475da17b16p+4};
// 2^(u/16) = 1 + u P(u), |u| <= 1/2, P of degree 3 (Remez on (2^(u/16) - 1) / u);
// relative error of the rounded polynomial 2^-37.5; highest degree first.
inline constexpr double kSpowP3[4] = {0x1.3b2c9b8bdc169p-23, 0x1.c6b3488221e73p-17, 0x1.ebfbdff5a63f2p-11, 0x1.62e42fee4615cp-5};
// 2^(u/16) = 1 + u P(u), |u| <= 1/2, P of degree 2 (Remez on (2^(u/16) - 1) / u);
// relative error of the rounded polynomial 2^-28.7; highest degree first.
inline constexpr double kSpowP2[3] = {0x1.c6b3f7470ad8bp-17, 0x1.ebff917b694f0p-11, 0x1.62e42fece88bep-5};

}  // namespace orv::power
