#!/usr/bin/env python3
"""Generate the vector-function products from vector/functions.def.

Inputs: the list of all 480 functions and the kernels.list files of the
vector families, which name the functions whose kernels exist. Only those
functions are emitted; a function without a kernel is absent everywhere.

Outputs (into --out):
  vtm_tables.S            48-byte table entries in one block, and the stubs
  orv/vtm_functions.h     public declarations of the stubs and tables
  vtm_kernels.h           private declarations of the kernels, slot helpers
  vtm_present.inc         X-macro rows of the emitted functions
  vtm_rows.inc            the same rows with family, shape, tiers and bounds, for
                          the accuracy harness and the convention tests
  vtm_exports.txt         the exported names, one a line
  orv/vtm_checked.h       the front end's checked calls: vtm<t><Fn>[I] and the
                          forms with a mode for one call, vtm<t><Fn>[I]Mode
  vtm_checked.inc         their definitions, on the helpers of api/vector.cpp
  vtm_checked_thunks.inc  for the front end's tests: each checked call behind
                          one signature (n, array pointers)
"""
import argparse
import os
import sys

# Signatures by shape, plain and strided. T is the element type, R the real
# type of the same width (the input of real_to_complex, the result of
# complex_to_real).
SIGNATURES = {
    "unary": ("int n, const T* a, T* r",
              "int n, const T* a, int inca, T* r, int incr"),
    "binary": ("int n, const T* a, const T* b, T* r",
               "int n, const T* a, int inca, const T* b, int incb, T* r, int incr"),
    "two_results": ("int n, const T* a, T* r1, T* r2",
                    "int n, const T* a, int inca, T* r1, int incr1, T* r2, int incr2"),
    # Powx: one exponent for the whole vector, after the array.
    "scalar_param": ("int n, const T* a, T b, T* r",
                     "int n, const T* a, int inca, T b, T* r, int incr"),
    # Jn, Yn: one integer order for the whole vector, after the array.
    "integer_order": ("int n, const T* a, int order, T* r",
                      "int n, const T* a, int inca, int order, T* r, int incr"),
    "unary_complex": ("int n, const T* a, T* r",
                      "int n, const T* a, int inca, T* r, int incr"),
    "complex_to_real": ("int n, const T* a, R* r",
                        "int n, const T* a, int inca, R* r, int incr"),
    "real_to_complex": ("int n, const R* a, T* r",
                        "int n, const R* a, int inca, T* r, int incr"),
    "binary_complex": ("int n, const T* a, const T* b, T* r",
                       "int n, const T* a, int inca, const T* b, int incb, T* r, int incr"),
    # Pack and unpack: n, increments and the mask and index entries are
    # 32-bit when width is 1 and 64-bit otherwise; they travel as 64-bit.
    "pack_i": ("long long n, const T* a, long long inca, T* y, int width",) * 2,
    "pack_m": ("long long n, const T* a, const void* mask, T* y, int width",) * 2,
    "pack_v": ("long long n, const T* a, const void* index, T* y, int width",) * 2,
    "unpack_i": ("long long n, const T* a, T* y, long long incy, int width",) * 2,
    "unpack_m": ("long long n, const T* a, T* y, const void* mask, int width",) * 2,
    "unpack_v": ("long long n, const T* a, T* y, const void* index, int width",) * 2,
    "linear_frac": ("int n, const T* a, const T* b, T scalea, T shifta, T scaleb, T shiftb, T* r",
                    "int n, const T* a, int inca, const T* b, int incb, T scalea, T shifta, "
                    "T scaleb, T shiftb, T* r, int incr"),
}
PACK_SHAPES = {"pack_i", "pack_m", "pack_v", "unpack_i", "unpack_m", "unpack_v"}
COMPLEX_SHAPES = {"unary_complex", "complex_to_real", "real_to_complex", "binary_complex"}
REAL_SHAPES = {"unary", "binary", "two_results", "integer_order", "linear_frac"}

# Tier patterns: the kernel suffix in slots LA, HA, EP ("" for one kernel).
TIERS = {"one": ("", "", ""), "three": ("_la", "_ha", "_ep"),
         "la=ha": ("_ha", "_ha", "_ep"), "la=ep": ("_la", "_ha", "_la")}
BOUNDS = {"exact": 0.0, "cr": 0.5}

CTYPE = {"s": "float", "d": "double", "c": "OrvComplex8", "z": "OrvComplex16"}
RTYPE = {"s": "float", "d": "double", "c": "float", "z": "double"}
SUFFIX = {"s": ("_21", "_HA", "_11"), "c": ("_21", "_HA", "_11"),
          "d": ("_50", "_HA", "_26"), "z": ("_50", "_HA", "_26")}


def bound(text, path):
    try:
        v = BOUNDS[text] if text in BOUNDS else float(text)
    except ValueError:
        sys.exit(f"{path}: bad bound {text}")
    if v < 0:
        sys.exit(f"{path}: bad bound {text}")
    return v


def read_def(path):
    rows = []
    for line in open(path):
        line = line.split("#", 1)[0].strip()
        if not line:
            continue
        f = line.split()
        if len(f) != 10:
            sys.exit(f"{path}: bad row: {line}")
        name, shape, tiers, b0, b1, b2, c0, c1, c2, errname = f
        if shape not in SIGNATURES:
            sys.exit(f"{path}: {name}: unknown shape {shape}")
        if tiers not in TIERS:
            sys.exit(f"{path}: {name}: unknown tier pattern {tiers}")
        if shape in COMPLEX_SHAPES | REAL_SHAPES and (name[0] in "cz") != (shape in COMPLEX_SHAPES):
            sys.exit(f"{path}: {name}: shape {shape} does not fit type {name[0]}")
        bounds = tuple(bound(b, path) for b in (b0, b1, b2))
        suffix = TIERS[tiers]
        for i in range(3):
            for j in range(3):
                if suffix[i] == suffix[j] and bounds[i] != bounds[j]:
                    sys.exit(f"{path}: {name}: slots sharing a kernel have different bounds")
        strided = shape not in PACK_SHAPES and name.endswith("I")
        base = name[1:-1] if strided else name[1:]
        rows.append(dict(name=name, base=base, strided=strided, shape=shape, tiers=tiers,
                         bounds=bounds, cost=(float(c0), float(c1), float(c2)), errname=errname))
    if len(rows) != 480:
        sys.exit(f"{path}: {len(rows)} rows, want 480")
    if len({r["name"] for r in rows}) != 480:
        sys.exit(f"{path}: duplicate names")
    byname = {r["name"]: r for r in rows}
    for r in rows:
        if r["strided"]:
            plain = byname.get(r["name"][:-1])
            if not plain or plain["shape"] != r["shape"]:
                sys.exit(f"{path}: {r['name']}: no plain row of the same shape")
    return rows


def read_present(paths):
    """Names in the kernels.list files, with the family (directory) of each."""
    present = []
    for p in paths:
        family = os.path.basename(os.path.dirname(os.path.abspath(p)))
        for line in open(p):
            line = line.split("#", 1)[0].strip()
            if line:
                present.extend((n, family) for n in line.split())
    return present


# Functions whose tables point to another function's kernel: the mask pack
# and unpack of c and d both move 8-byte elements.
SHARED_KERNEL = {"cPackM": "dPackM", "cUnpackM": "dUnpackM"}


def kernel_syms(row):
    """Kernel symbol in each slot LA, HA, EP."""
    k = "orv_kern_" + SHARED_KERNEL.get(row["name"], row["name"])
    return tuple(k + sfx for sfx in TIERS[row["tiers"]])


def params(row):
    sig = SIGNATURES[row["shape"]]
    s = sig[1] if row["strided"] else sig[0]
    t = row["name"][0]
    return s.replace("T*", CTYPE[t] + "*").replace("T ", CTYPE[t] + " ") \
            .replace("R*", RTYPE[t] + "*").replace("R ", RTYPE[t] + " ")


def export_names(row):
    t = row["name"][0]
    base = "_vtm" + row["name"]
    sfx = SUFFIX[t]
    return [base, base + sfx[1], base + sfx[0], base + sfx[2]]


def emit_asm(rows, out):
    o = ["/* Generated by tools/gen_vtm.py from vector/functions.def. Do not edit. */",
         "/* Kernel tables: 48-byte entries in one block, _ttab then _ctab then zero. */",
         "\t.section .data.rel.ro,\"aw\"", "\t.balign 64", ".Lvtm_tables_begin:"]
    for r in rows:
        n = r["name"]
        ttab = f"orv_vtm_kernel_{n}_ttab"
        ctab = f"orv_vtm_kernel_{n}_ctab"
        o += [f"\t.globl {ttab}", f"\t.type {ttab}, @object", f"\t.size {ttab}, 24",
              f".Lttab_{n}:", f"{ttab}:"]
        o += [f"\t.quad {k}" for k in kernel_syms(r)]
        o += [f"\t.globl {ctab}", f"\t.type {ctab}, @object", f"\t.size {ctab}, 12", f"{ctab}:"]
        o += [f"\t.float {c!r}" for c in r["cost"]]
        o += ["\t.zero 12"]
    o += ["", "/* Stubs: load the slot and jump, arguments and return address untouched. */",
          "\t.text"]
    for r in rows:
        n = r["name"]
        plain, ha, la, ep = export_names(r)
        for slot, names in ((1, (plain, ha)), (0, (la,)), (2, (ep,))):
            o += ["\t.p2align 4"]
            for nm in names:
                o += [f"\t.globl {nm}", f"\t.type {nm}, @function"]
            o += [f"{nm}:" for nm in names]
            o += [f"\tjmp *.Lttab_{n}+{8 * slot}(%rip)"]
            o += [f"\t.size {nm}, .-{names[0]}" for nm in names]
    o += ["\t.section .note.GNU-stack,\"\",@progbits", ""]
    open(os.path.join(out, "vtm_tables.S"), "w").write("\n".join(o))


def emit_public_header(rows, out):
    o = ["/* Generated by tools/gen_vtm.py from vector/functions.def. Do not edit. */",
         "#ifndef ORV_VTM_FUNCTIONS_H", "#define ORV_VTM_FUNCTIONS_H", "",
         "#include <orv/vtm_types.h>", "",
         "#ifdef __cplusplus", "extern \"C\" {", "#endif", "",
         f"/* {len(rows)} of the 480 vector functions are present in this build. */",
         f"#define ORV_VTM_FUNCTIONS_PRESENT {len(rows)}", ""]
    for r in rows:
        n = r["name"]
        p = params(r)
        for nm in export_names(r):
            o.append(f"ORV_VTM_API void {nm}({p});")
        o.append(f"ORV_VTM_API extern void (*const orv_vtm_kernel_{n}_ttab[3])({p});")
        o.append(f"ORV_VTM_API extern const float orv_vtm_kernel_{n}_ctab[3];")
        o.append("")
    o += ["#ifdef __cplusplus", "}", "#endif", "", "#endif", ""]
    os.makedirs(os.path.join(out, "orv"), exist_ok=True)
    open(os.path.join(out, "orv", "vtm_functions.h"), "w").write("\n".join(o))


def emit_kernel_header(rows, out):
    o = ["/* Generated by tools/gen_vtm.py from vector/functions.def. Do not edit. */",
         "#pragma once", "#include <orv/vtm_types.h>", "",
         "extern \"C\" {"]
    declared = set()
    for r in rows:
        n = r["name"]
        p = params(r)
        for k in sorted(set(kernel_syms(r)) - declared):
            declared.add(k)
            if r["name"] in SHARED_KERNEL:
                p = params(next(x for x in rows if x["name"] == SHARED_KERNEL[r["name"]]))
            o.append(f"__attribute__((visibility(\"hidden\"))) void {k}({p});")
        p = params(r)
        o.append(f"extern void (*const orv_vtm_kernel_{n}_ttab[3])({p});")
    o += ["}", "", "namespace orv::vtm {",
          "// Error names and slot sharing of the emitted functions."]
    for r in rows:
        n = r["name"]
        o.append(f"inline constexpr const char kName_{n}[] = \"{r['errname']}\";")
        o.append(f"inline constexpr bool kSharedSlots_{n} = {'true' if r['tiers'] == 'one' else 'false'};")
    o += ["}  // namespace orv::vtm", ""]
    open(os.path.join(out, "vtm_kernels.h"), "w").write("\n".join(o))


def emit_present(rows, out):
    o = ["/* Generated: X(name, shape, tiers, errname) for each emitted function. */"]
    for r in rows:
        tiers = r["tiers"].replace("=", "_")
        o.append(f"X({r['name']}, {r['shape']}, {tiers}, \"{r['errname']}\")")
    open(os.path.join(out, "vtm_present.inc"), "w").write("\n".join(o) + "\n")


def emit_rows(rows, out):
    o = ["/* Generated: X(name, base, type, strided, family, shape, boundLA, boundHA, boundEP)",
         " * for each emitted function; bounds in ULP, 0.5 correctly rounded, 0 exact. */"]
    for r in rows:
        b = ", ".join(repr(v) for v in r["bounds"])
        o.append(f"X({r['name']}, {r['base']}, '{r['name'][0]}', {'true' if r['strided'] else 'false'}, "
                 f"{r['family']}, {r['shape']}, {b})")
    open(os.path.join(out, "vtm_rows.inc"), "w").write("\n".join(o) + "\n")


def emit_exports(rows, out):
    names = []
    for r in rows:
        names += export_names(r)
        names += [f"orv_vtm_kernel_{r['name']}_ttab", f"orv_vtm_kernel_{r['name']}_ctab"]
    open(os.path.join(out, "vtm_exports.txt"), "w").write("\n".join(sorted(names)) + "\n")


def param_list(row):
    """(type, name) of each parameter of the row's signature."""
    out = []
    for p in params(row).split(","):
        p = p.strip()
        name = p.split()[-1].lstrip("*")
        out.append((p[: len(p) - len(name)].strip(), name))
    return out


def front_name(row):
    return "vtm" + row["name"]


def emit_front_end(rows, out):
    h = ["/* Generated by tools/gen_vtm.py from vector/functions.def. Do not edit. */",
         "#ifndef ORV_VTM_CHECKED_H", "#define ORV_VTM_CHECKED_H", "",
         "#include <orv/threading.h>", "#include <orv/vtm.h>", "",
         "#ifdef __cplusplus", "extern \"C\" {", "#endif", ""]
    d = ["/* Generated by tools/gen_vtm.py from vector/functions.def. Do not edit. */"]
    t = ["/* Generated: {name, arrays, call(n, arrays)} for each checked call. */"]
    for r in rows:
        n = r["name"]
        fn = front_name(r)
        p = params(r)
        plist = param_list(r)
        names = ", ".join(nm for _, nm in plist)
        arrays = [nm for ty, nm in plist if ty.endswith("*")]
        h.append(f"ORV_API void {fn}({p});")
        h.append(f"ORV_API void {fn}Mode({p}, unsigned int mode);")
        chunk = not r["strided"] and r["shape"] not in PACK_SHAPES
        d.append(f"void {fn}({p}) {{")
        if chunk:
            shifted = ", ".join((nm + " + at_") if nm in arrays else ("count_" if nm == "n" else nm)
                                for _, nm in plist)
            d.append(f"    orv_front::chunked(ORV_FRONT_TABLE({n}), n, {{{', '.join(arrays)}}}, {arrays[0]},")
            d.append(f"                       [&](auto k_, int at_, int count_) {{ k_({shifted}); }});")
        else:
            d.append(f"    orv_front::whole(ORV_FRONT_TABLE({n}), n, {{{', '.join(arrays)}}},")
            d.append(f"                     [&](auto k_) {{ k_({names}); }});")
        d.append("}")
        d.append(f"void {fn}Mode({p}, unsigned int mode) {{")
        d.append("    const orv_front::ModeScope scope(mode);")
        d.append(f"    {fn}({names});")
        d.append("}")
        args = []
        i = 0
        for ty, nm in plist:
            if ty.endswith("*"):
                args.append(f"({ty})p[{i}]")
                i += 1
            elif nm == "n":
                args.append(f"({ty})n")
            elif nm in ("width",) or nm.startswith("inc"):
                args.append("1")
            else:
                args.append(f"{ty}{{}}")
        t.append(f"{{\"{fn}\", {i}, [](long long n, void* const* p) {{ {fn}({', '.join(args)}); }}}},")
    h += ["", "#ifdef __cplusplus", "}", "#endif", "", "#endif", ""]
    open(os.path.join(out, "orv", "vtm_checked.h"), "w").write("\n".join(h))
    open(os.path.join(out, "vtm_checked.inc"), "w").write("\n".join(d) + "\n")
    open(os.path.join(out, "vtm_checked_thunks.inc"), "w").write("\n".join(t) + "\n")


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--def", dest="deffile", required=True)
    ap.add_argument("--out", required=True)
    ap.add_argument("present", nargs="*")
    a = ap.parse_args()
    rows = read_def(a.deffile)
    byname = {r["name"]: r for r in rows}
    present = read_present(a.present)
    for n, _ in present:
        if n not in byname:
            sys.exit(f"kernels.list names unknown function {n}")
    family = dict(present)
    if len(family) != len(present):
        sys.exit("a function is listed by two kernels.list files")
    chosen = [dict(r, family=family[r["name"]]) for r in rows if r["name"] in family]  # list order
    os.makedirs(a.out, exist_ok=True)
    emit_asm(chosen, a.out)
    emit_public_header(chosen, a.out)
    emit_kernel_header(chosen, a.out)
    emit_present(chosen, a.out)
    emit_rows(chosen, a.out)
    emit_front_end(chosen, a.out)
    emit_exports(chosen, a.out)


if __name__ == "__main__":
    main()
