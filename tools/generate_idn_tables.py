#!/usr/bin/env python3
"""Writes the tables of nameprep, ZEBUtilities/IDN/Tables/*.cpp, from Unicode 3.2.

Usage: generate_idn_tables.py [--check]

With --check nothing is written; the program fails if a file differs from what it would write.

The sources are Python's standard modules `stringprep` (RFC 3454) and `unicodedata.ucd_3_2_0`. Two of
their functions don't answer by Unicode 3.2 alone:
- `stringprep.map_table_b2` folds case with the running Python's newer data. So only mappings whose
  source and result are all assigned in 3.2 are kept.
- `ucd_3_2_0.decomposition` applies later corrections to five ideographs; `normalize` does not.
The numbers of entries are part of the tables' promised layout, and are checked.
"""

import pathlib
import stringprep
import sys
import unicodedata

FOLDER = pathlib.Path(__file__).resolve().parent.parent / "ZEBUtilities/IDN/Tables"
UNICODE = unicodedata.ucd_3_2_0
CODE_POINTS = range(0x110000)
CORRECTED_LATER = (0x2F868, 0x2F874, 0x2F91F, 0x2F95F, 0x2F9BF)

PROHIBITED = (
    stringprep.in_table_c12,
    stringprep.in_table_c22,
    stringprep.in_table_c3,
    stringprep.in_table_c4,
    stringprep.in_table_c5,
    stringprep.in_table_c6,
    stringprep.in_table_c7,
    stringprep.in_table_c8,
    stringprep.in_table_c9,
)

# The second half of the keys of decompositions into one code point. These never compose, so their
# keys must be different from each other and from all pairs of code points.
SINGLETON_KEY = 0x80000000

BLOCK = 128  # code points of one block of the index tables

# The bits of ZEBUtilities/IDN/Tables/detail/CodePointIndex.h.
MAPPED = 1
PROHIBITED_BIT = 2
RIGHT_TO_LEFT = 4
LEFT_TO_RIGHT = 8
DECOMPOSES = 16
HAS_CLASS = 32
COMPOSES_BACKWARD = 64
UNSTABLE = 128

HANGUL_SYLLABLES = range(0xAC00, 0xD7A4)
HANGUL_VOWELS = range(0x1161, 0x1176)
HANGUL_TRAILS = range(0x11A8, 0x11C3)

# What a code point that is not UNSTABLE decomposes to has at most so many code points.
MAX_STABLE_DECOMPOSITION = 4


def is_assigned(code_point):
    return UNICODE.category(chr(code_point)) != "Cn"


def charmap():
    """Code point -> replacement: RFC 3454, tables B.1 (empty replacements) and B.2."""
    mapping = {}
    for code_point in CODE_POINTS:
        character = chr(code_point)
        if stringprep.in_table_b1(character):
            mapping[code_point] = []
        elif is_assigned(code_point) and not stringprep.in_table_c5(character):
            mapped = [ord(part) for part in stringprep.map_table_b2(character)]
            if mapped != [code_point] and all(map(is_assigned, mapped)):
                mapping[code_point] = mapped
    return mapping


def decompositions():
    """Code point -> (code points, whether the decomposition is canonical)."""
    result = {}
    for code_point in CODE_POINTS:
        fields = UNICODE.decomposition(chr(code_point)).split()
        if not fields:
            continue
        canonical = not fields[0].startswith("<")
        parts = [int(field, 16) for field in (fields if canonical else fields[1:])]
        if code_point in CORRECTED_LATER:
            parts = [ord(part) for part in UNICODE.normalize("NFD", chr(code_point))]
        result[code_point] = (parts, canonical)
    return result


def compositions(decomposed):
    """Key -> composite. The excluded pairs are the pairs that begin with a starter, but that
    normalization does not compose."""
    result = {}
    for code_point, (parts, canonical) in decomposed.items():
        if not canonical:
            continue
        if len(parts) == 1:
            result[(parts[0] << 32) + SINGLETON_KEY + code_point] = code_point
            continue
        begins_with_starter = UNICODE.combining(chr(parts[0])) == 0
        composed = UNICODE.normalize("NFC", chr(parts[0]) + chr(parts[1]))
        if begins_with_starter and composed != chr(code_point):
            continue
        result[(parts[0] << 32) + parts[1]] = code_point
    return result


def ranges(predicate):
    found = []
    for code_point in CODE_POINTS:
        if predicate(chr(code_point)):
            if found and found[-1][1] == code_point - 1:
                found[-1][1] = code_point
            else:
                found.append([code_point, code_point])
    return found


def in_any(found):
    return (code_point for first, last in found for code_point in range(first, last + 1))


def expect(name, count, entries):
    if len(entries) != count:
        sys.exit(f"generate_idn_tables: {name} has {len(entries)} entries instead of {count}")


def filled(items):
    """The items, separated by commas, in lines of at most 100 columns."""
    lines, line = [], " "
    for word in ", ".join(items).split(" "):
        if len(line) + len(word) > 97:
            lines.append(line)
            line = " "
        line += f" {word}"
    return "\n".join(lines + [line])


def hexadecimal(value):
    return f"0x{value:X}"


def braces(values):
    return "{" + ", ".join(values) + "}"


def array(declaration, items):
    return f"const {declaration} = {{\n{filled(items)},\n}};\n"


def source(header, namespace, body):
    return (
        "// Written by tools/generate_idn_tables.py from Unicode 3.2. Do not edit.\n"
        "// clang-format off\n\n"
        f"#include <IDN/Tables/{header}>\n\n"
        f"namespace {namespace} {{\n\n{body}\n}}  // namespace {namespace}\n"
    )


def table(declaration, items):
    return source("NameprepTables.h", "zeb", array(declaration, items))


def index(name, value_type, values):
    """A two-level table: `<name>BlockOf` gives the block of each 128 code points, and `<name>Blocks`
    the values. Equal blocks are stored once. The first level ends with the last value that is not
    zero."""
    end = max(values) // BLOCK + 1
    blocks, block_of = {}, []
    for number in range(end):
        block = tuple(values.get(number * BLOCK + place, 0) for place in range(BLOCK))
        block_of.append(blocks.setdefault(block, len(blocks)))
    if len(blocks) > 256:
        sys.exit(f"generate_idn_tables: {name} has more than 256 blocks")
    rows = ",\n".join(f" {{\n{filled(map(str, block))}}}" for block in blocks)
    return (
        array(f"std::uint8_t {name}BlockOf[{end}]", map(str, block_of))
        + f"\nconst {value_type} {name}Blocks[{len(blocks)}][{BLOCK}] = {{\n{rows},\n}};\n"
    )


def files():
    """File name -> content."""
    mapping = charmap()
    prohibited = ranges(lambda character: any(test(character) for test in PROHIBITED))
    right_to_left = list(in_any(ranges(stringprep.in_table_d1)))
    left_to_right = ranges(stringprep.in_table_d2)
    decomposed = decompositions()
    classes = {c: UNICODE.combining(chr(c)) for c in CODE_POINTS if UNICODE.combining(chr(c))}
    composed = sorted(compositions(decomposed).items())

    expect("the charmap table", 27 + 1371, mapping)
    expect("the charmap's part B.1", 27, [code for code, parts in mapping.items() if not parts])
    expect("the prohibit table", 33, prohibited)
    expect("the RandALCat table", 1044, right_to_left)
    expect("the LCat table", 360, left_to_right)
    expect("the decompose table", 1926 + 3217, decomposed)
    expect("the canonical part", 1926, [code for code, (_, own) in decomposed.items() if own])
    expect("the canonical-class table", 327, classes)
    expect("the compose table", 1926 - 81, composed)

    flags = {}

    def mark(code_points, bit):
        for code_point in code_points:
            flags[code_point] = flags.get(code_point, 0) | bit

    mark(mapping, MAPPED)
    mark(in_any(prohibited), PROHIBITED_BIT)
    mark(right_to_left, RIGHT_TO_LEFT)
    mark(in_any(left_to_right), LEFT_TO_RIGHT)
    mark([*decomposed, *HANGUL_SYLLABLES], DECOMPOSES)
    stable = [code for code in decomposed if UNICODE.normalize("NFKC", chr(code)) == chr(code)]
    if any(len(UNICODE.normalize("NFKD", chr(code))) > MAX_STABLE_DECOMPOSITION for code in stable):
        sys.exit("generate_idn_tables: a decomposition is longer than MAX_STABLE_DECOMPOSITION")
    mark({0, *decomposed} - {*stable}, UNSTABLE)  # normalization refuses U+0000
    mark(classes, HAS_CLASS)
    seconds = {key & 0xFFFFFFFF for key, _ in composed if key & 0xFFFFFFFF < SINGLETON_KEY}
    mark(seconds | {*HANGUL_VOWELS, *HANGUL_TRAILS}, COMPOSES_BACKWARD)

    def places(entries):
        return {code_point: place for place, code_point in enumerate(entries)}

    return {
        "CharmapTable.cpp": table(
            "CharmapEntry g_charmapTable[1398]",
            (
                braces([hexadecimal(code), str(len(parts)), braces(map(hexadecimal, parts))])
                for code, parts in mapping.items()
            ),
        ),
        "ProhibitTable.cpp": table(
            "CodePointRange g_prohibitTable[33]",
            (braces(map(hexadecimal, pair)) for pair in prohibited),
        ),
        "RandalcatTable.cpp": table(
            "std::uint32_t g_randalcatTable[1044]", map(hexadecimal, right_to_left)
        ),
        "LcatTable.cpp": table(
            "CodePointRange g_lcatTable[360]",
            (braces(map(hexadecimal, pair)) for pair in left_to_right),
        ),
        "DecomposeTable.cpp": table(
            "DecomposeEntry g_decomposeTable[5143]",
            (
                braces([hexadecimal(code), "1", braces(map(hexadecimal, parts))])
                for code, (parts, _) in decomposed.items()
            ),
        ),
        "CanonicalTable.cpp": table(
            "CanonicalEntry g_canonicalTable[327]",
            (braces([hexadecimal(code), str(own)]) for code, own in classes.items()),
        ),
        "ComposeTable.cpp": table(
            "ComposeEntry g_composeTable[1845]",
            (braces(map(hexadecimal, pair)) for pair in composed),
        ),
        "CodePointIndex.cpp": source(
            "detail/CodePointIndex.h",
            "zeb::detail",
            "\n".join(
                (
                    index("flag", "std::uint8_t", flags),
                    index("charmapPlace", "std::uint16_t", places(mapping)),
                    index("decomposePlace", "std::uint16_t", places(decomposed)),
                    index("canonicalClass", "std::uint8_t", classes),
                )
            ),
        ),
    }


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(__doc__)
    checks = bool(sys.argv[1:])
    different = []
    for name, content in files().items():
        path = FOLDER / name
        if checks:
            if not path.exists() or path.read_text(encoding="ascii") != content:
                different.append(name)
        else:
            path.write_text(content, encoding="ascii")
    if different:
        sys.exit(
            f"{', '.join(different)} in {FOLDER} differ from Unicode 3.2; "
            "run tools/generate_idn_tables.py"
        )


main()
