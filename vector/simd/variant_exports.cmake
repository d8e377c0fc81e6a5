# The exports of a wider kernel library: the generated tables and stubs of
# the baseline (IN), dll_cpu_version and the generator fills the
# distributions take from it (rng/congruential/mcg59_wide.cpp); written as a plain list (LIST, for
# the export test) and as a linker version script (MAP).
file(STRINGS ${IN} names)
list(APPEND names dll_cpu_version orv_rng_kernel_dBRngMCG59 orv_rng_kernel_sBRngMCG59)
list(SORT names)
string(REPLACE ";" "\n" text "${names}")
file(WRITE ${LIST} "${text}\n")
string(REPLACE ";" ";\n    " body "${names}")
file(WRITE ${MAP} "{\n  global:\n    ${body};\n  local: *;\n};\n")
