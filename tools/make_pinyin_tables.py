#!/usr/bin/env python3
"""Generates host/pinyin_tables.cpp: the pinyin-initial tables of the GB2312 characters.

The readings come from the Unicode Han database (Unihan_Readings.txt, in Debian's package
unicode-data). The generated file is committed, so that a build needs neither this script nor the
package. Run it by hand after an update of the reading source:

    python3 tools/make_pinyin_tables.py [--unihan PATH] [--output host/pinyin_tables.cpp]

PATH may be Unihan_Readings.txt, its .bz2 or Unihan.zip; by default the script looks under
/usr/share/unicode/.

Three tables are written (the look-up that reads them is g_MyMakeIndicatorPY):

- g_MyArrayppword: characters whose modern readings start with different letters. Each entry is
  the letters of the readings followed by the characters that share exactly those letters; the
  last letter is the character's usual reading (the first reading of kMandarin). A level-1
  character of one initial that stands inside the run of another letter (see below) would get an
  entry of its one letter here, since this table is read first.
- g_MypPYCODE: 23 entries, one per initial letter (no I, U, V), each with the first and the last
  GB2312 code of the letter's run among the level-1 characters (which GB2312 orders by reading),
  one extra code of a character of that letter that stands outside every run, and the letter.
- g_MyArrayNotPpword: each entry a letter followed by the characters with that initial that no run
  covers: all level-2 characters (GB2312 orders them by radical) and the level-1 characters that
  stand out of the order of the runs.

Modern readings are those of kXHC1983 and kTGHZ2013 (two modern dictionaries) together with
kMandarin; a character without any of them falls back on kHanyuPinyin.
"""

import argparse
import bz2
import collections
import io
import os
import sys
import unicodedata
import zipfile

LETTERS = "ABCDEFGHJKLMNOPQRSTWXYZ"
LEVEL1_LEADS = range(0xB0, 0xD8)
LEVEL2_LEADS = range(0xD8, 0xF8)
TRAILS = range(0xA1, 0xFF)
READING_KEYS = ("kMandarin", "kXHC1983", "kTGHZ2013", "kHanyuPinyin")
DEFAULT_SOURCES = (
    "/usr/share/unicode/Unihan_Readings.txt",
    "/usr/share/unicode/Unihan_Readings.txt.bz2",
    "/usr/share/unicode/Unihan.zip",
)


def open_source(path):
    if path.endswith(".bz2"):
        return io.TextIOWrapper(bz2.open(path), encoding="utf-8")
    if path.endswith(".zip"):
        archive = zipfile.ZipFile(path)
        return io.TextIOWrapper(archive.open("Unihan_Readings.txt"), encoding="utf-8")
    return open(path, encoding="utf-8")


def find_source(given):
    if given:
        return given
    for path in DEFAULT_SOURCES:
        if os.path.exists(path):
            return path
    sys.exit("Unihan_Readings.txt not found; install the package unicode-data or give --unihan")


def read_unihan(path):
    """Returns {code point: {key: value}} for the reading keys, and the version line."""
    readings = collections.defaultdict(dict)
    version = "unknown"
    with open_source(path) as source:
        for line in source:
            if line.startswith("# Unicode version:"):
                version = line.split(":", 1)[1].strip()
            if line.startswith("#") or not line.strip():
                continue
            code, key, value = line.rstrip("\n").split("\t")
            if key in READING_KEYS:
                readings[int(code[2:], 16)][key] = value
    return readings, version


def syllables(key, value):
    """The pinyin syllables of one field, in the order the field gives them."""
    result = []
    for item in value.split():
        if key == "kMandarin":
            result.append(item)
        else:  # "page.position:reading,reading"
            result.extend(item.split(":", 1)[1].split(","))
    return result


def initial(syllable):
    letter = unicodedata.normalize("NFD", syllable)[0].upper()
    if letter not in LETTERS:
        raise ValueError(f"unexpected initial in {syllable!r}")
    return letter


def initials_of(fields):
    """(usual initial, set of the initials of all modern readings) of one character."""
    modern = []
    for key in ("kMandarin", "kXHC1983", "kTGHZ2013"):
        if key in fields:
            modern += syllables(key, fields[key])
    if not modern and "kHanyuPinyin" in fields:
        modern = syllables("kHanyuPinyin", fields["kHanyuPinyin"])
    if not modern:
        return None, set()
    return initial(modern[0]), {initial(s) for s in modern}


def gb2312_characters(leads):
    for lead in leads:
        for trail in TRAILS:
            try:
                char = bytes([lead, trail]).decode("gb2312")
            except UnicodeDecodeError:
                continue
            yield (lead << 8) | trail, char


def longest_ordered_run(items):
    """Indexes of the longest subsequence of items (code, letter) whose letters never go down."""
    # Patience sorting on letters, non-decreasing; keeps back links to rebuild the subsequence.
    tails, tail_index, back = [], [], [None] * len(items)
    for i, (_, letter) in enumerate(items):
        lo, hi = 0, len(tails)
        while lo < hi:
            mid = (lo + hi) // 2
            if tails[mid] <= letter:
                lo = mid + 1
            else:
                hi = mid
        back[i] = tail_index[lo - 1] if lo > 0 else None
        if lo == len(tails):
            tails.append(letter)
            tail_index.append(i)
        else:
            tails[lo] = letter
            tail_index[lo] = i
    chosen, i = [], tail_index[-1] if tail_index else None
    while i is not None:
        chosen.append(i)
        i = back[i]
    return set(chosen)


def build_tables(readings):
    polyphones = collections.OrderedDict()  # letters -> characters
    singles = {}  # code -> (char, letter) for characters of one initial
    for leads in (LEVEL1_LEADS, LEVEL2_LEADS):
        for code, char in gb2312_characters(leads):
            usual, letters = initials_of(readings.get(ord(char), {}))
            if usual is None:
                raise ValueError(f"no reading for {char} (GB2312 {code:04X})")
            if len(letters) > 1:
                key = "".join(sorted(letters - {usual})) + usual
                polyphones.setdefault(key, []).append(char)
            else:
                singles[code] = (char, usual)

    level1 = sorted((code, letter) for code, (_, letter) in singles.items() if code < 0xD800)
    in_order = longest_ordered_run(level1)
    runs = {}
    for i in sorted(in_order):
        code, letter = level1[i]
        first, last = runs.get(letter, (code, code))
        runs[letter] = (min(first, code), max(last, code))

    def covering_letters(code):
        return [letter for letter, (first, last) in runs.items() if first <= code <= last]

    extra = {}
    uncovered = collections.defaultdict(list)
    for i, (code, letter) in enumerate(level1):
        if i in in_order:
            continue
        covering = covering_letters(code)
        if covering:
            # Inside the run of another letter: only the polyphone table, read first, can
            # give it its own letter.
            polyphones.setdefault(letter, []).append(singles[code][0])
        elif letter not in extra:
            extra[letter] = code
        else:
            uncovered[letter].append(singles[code][0])
    for code, (char, letter) in sorted(singles.items()):
        if code >= 0xD800:
            uncovered[letter].append(char)

    codes = []
    for letter in LETTERS:
        first, last = runs[letter]
        codes.append((first, last, extra.get(letter, first), letter))
    exceptions = [(letter, uncovered[letter]) for letter in LETTERS if uncovered[letter]]
    return list(polyphones.items()), codes, exceptions


def check_tables(readings, polyphones, codes, exceptions):
    """Runs the look-up of g_MyMakeIndicatorPY over every GB2312 character and compares."""
    for leads in (LEVEL1_LEADS, LEVEL2_LEADS):
        for code, char in gb2312_characters(leads):
            usual, letters = initials_of(readings[ord(char)])
            expected = [usual] + sorted(letters - {usual})
            found = next(([key[-1]] + sorted(key[:-1]) for key, chars in polyphones
                          if char in chars), None)
            if found is None:
                found = [letter for first, last, extra, letter in codes
                         if first <= code <= last or code == extra]
            if not found:
                found = [letter for letter, chars in exceptions if char in chars]
            if found != expected:
                raise ValueError(f"{char} (GB2312 {code:04X}): tables give {found}, "
                                 f"readings give {expected}")


def gbk_literal(code):
    return f"\\x{code >> 8:02X}\\x{code & 0xFF:02X}"


def text_lines(head, chars, width=40):
    """A string entry as C++ literal pieces of at most width characters each."""
    pieces = [head + "".join(chars[:width])]
    pieces += ["".join(chars[i:i + width]) for i in range(width, len(chars), width)]
    return "\n".join(f'     "{piece}"' for piece in pieces)


def render(polyphones, codes, exceptions, version):
    out = []
    out.append("// Generated by tools/make_pinyin_tables.py from the Unicode Han database "
               f"(Unihan {version}).")
    out.append("// Do not edit by hand: run the script again. The literals are UTF-8 here and GBK "
               "bytes at run time.")
    out.append('#include "host/pinyin.h"')
    out.append("")
    out.append("const std::vector<CString> g_MyArrayppword = {")
    for letters, chars in polyphones:
        out.append(text_lines(letters, chars) + ",")
    out.append("};")
    out.append("")
    out.append("// First code, last code, extra code, letter.")
    out.append("const char* const g_MypPYCODE[NY_PYCODE_ENTRIES] = {")
    for first, last, extra, letter in codes:
        out.append(f'    "{gbk_literal(first)}" "{gbk_literal(last)}" "{gbk_literal(extra)}" '
                   f'"{letter}",')
    out.append("};")
    out.append("")
    out.append("const std::vector<CString> g_MyArrayNotPpword = {")
    for letter, chars in exceptions:
        out.append(text_lines(letter, chars) + ",")
    out.append("};")
    return "\n".join(out) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--unihan", help="Unihan_Readings.txt, its .bz2, or Unihan.zip")
    parser.add_argument("--output", default=os.path.join(
        os.path.dirname(os.path.abspath(__file__)), "..", "host", "pinyin_tables.cpp"))
    args = parser.parse_args()
    readings, version = read_unihan(find_source(args.unihan))
    polyphones, codes, exceptions = build_tables(readings)
    check_tables(readings, polyphones, codes, exceptions)
    with open(args.output, "w", encoding="utf-8", newline="\n") as target:
        target.write(render(polyphones, codes, exceptions, version))
    count = sum(len(chars) for _, chars in polyphones)
    print(f"{count} characters in {len(polyphones)} polyphone entries, "
          f"{sum(len(c) for _, c in exceptions)} exceptions, written to {args.output}")


if __name__ == "__main__":
    main()
