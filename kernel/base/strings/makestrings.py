#!/usr/bin/env python3
"""Builds the language tables of the kernel from the translation files (*.tqstrings).

A translation file is UTF-8 text:

    # a comment line
    @ContextFileOpen
    en: The file %s could not be opened.
    de: Die Datei %s konnte nicht geöffnet werden.

"@Name" starts an entry (letters, digits, underscore; unique across all files). Each following
line "<code>: <text>" gives the text in one language; "en" is mandatory, and a language left out
shows the English text. Escapes: \\n, \\t, \\\\ and \\". Blank lines are ignored.

Output, into the folder given by --output:
  tqstrings.cpp  the records in the section "tqlang_t" (written when a numeric slot resolves, so
                 writable) and their texts, UTF-16, in the read-only section "strings";
  tqstrings.h    TQS(Name): the record's address as a string id, a constant expression for
                 static tables and for TqGetString.
Each file is rewritten only when its content changes, so that an edited text recompiles one
source and not every user of the header.
"""

import argparse
import os
import re
import sys

# Slot order of every record, with the LCID each slot stands for.
LANGUAGES = [
    ("en", 0x409),
    ("ja", 0x411),
    ("de", 0x407),
    ("es", 0x40A),
    ("fr", 0x40C),
    ("zh-CN", 0x804),
    ("zh-TW", 0x404),
    ("da", 0x406),
    ("fi", 0x40B),
    ("it", 0x410),
    ("ko", 0x412),
    ("nl", 0x413),
    ("nb", 0x414),
    ("pt-BR", 0x416),
    ("pt-PT", 0x816),
    ("ru", 0x419),
    ("sv", 0x41D),
    ("pl", 0x415),
]
SLOT_OF_CODE = {code.lower(): slot for slot, (code, _) in enumerate(LANGUAGES)}

NAME = re.compile(r"^@([A-Za-z0-9_]+)\s*$")
TEXT = re.compile(r"^([A-Za-z]{2}(?:-[A-Za-z]{2})?):(.*)$")
ESCAPES = {"n": "\n", "t": "\t", "\\": "\\", '"': '"'}


class TranslationError(Exception):
    pass


class Entry:
    def __init__(self, name, where):
        self.name = name
        self.where = where
        self.texts = [None] * len(LANGUAGES)


def unescape(raw, where):
    out = []
    chars = iter(raw)
    for c in chars:
        if c != "\\":
            out.append(c)
            continue
        e = next(chars, None)
        if e not in ESCAPES:
            shown = "\\" + (e or "")
            raise TranslationError(f"{where}: unknown escape '{shown}' (use \\n \\t \\\\ \\\")")
        out.append(ESCAPES[e])
    return "".join(out)


def parse(path, entries, seen):
    with open(path, encoding="utf-8-sig") as f:
        lines = f.read().splitlines()
    entry = None
    for number, line in enumerate(lines, 1):
        where = f"{path}:{number}"
        stripped = line.strip()
        if not stripped or stripped.startswith("#"):
            continue
        m = NAME.match(line)
        if m:
            name = m.group(1)
            if name in seen:
                raise TranslationError(f"{where}: @{name} is already defined at {seen[name]}")
            entry = Entry(name, where)
            seen[name] = where
            entries.append(entry)
            continue
        m = TEXT.match(line)
        if not m:
            raise TranslationError(f"{where}: expected '@Name' or '<code>: <text>'")
        if entry is None:
            raise TranslationError(f"{where}: a text before the first '@Name'")
        code, raw = m.group(1), m.group(2)
        slot = SLOT_OF_CODE.get(code.lower())
        if slot is None:
            known = " ".join(c for c, _ in LANGUAGES)
            raise TranslationError(f"{where}: unknown language '{code}' (known: {known})")
        if entry.texts[slot] is not None:
            raise TranslationError(f"{where}: a second '{code}' text for @{entry.name}")
        entry.texts[slot] = unescape(raw[1:] if raw.startswith(" ") else raw, where)
    for e in entries:
        if e.texts[0] is None:
            raise TranslationError(f"{e.where}: @{e.name} has no 'en' text")


def utf16_literal(text):
    """A wide string literal whose UTF-16 units are exactly those of text."""
    data = text.encode("utf-16-le")
    units = [int.from_bytes(data[i : i + 2], "little") for i in range(0, len(data), 2)]
    parts = []
    hex_escape_open = False
    for u in units:
        c = chr(u)
        plain = 0x20 <= u < 0x7F and c not in '\\"?'
        if plain and not (hex_escape_open and c in "0123456789abcdefABCDEF"):
            parts.append(c)
            hex_escape_open = False
        elif plain:
            # A hex digit right behind a \x escape would extend it: close the literal first.
            parts.append('" L"' + c)
            hex_escape_open = False
        else:
            parts.append(f"\\x{u:04x}")
            hex_escape_open = True
    return 'L"' + "".join(parts) + '"'


def c_comment(text):
    """The English text for a comment, quoted: a comment line that ends in a backslash would
    splice the next line into it."""
    shown = text.replace("\n", "\\n").replace("\t", "\\t")
    return '"' + (shown if len(shown) <= 60 else shown[:57] + "...") + '"'


def render_header(entries):
    out = [
        "// Generated by makestrings.py from the *.tqstrings files: do not edit.",
        "#pragma once",
        "",
        '#include "tqlang.h"',
        "",
        f"#define TQS_COUNT {len(entries)}",
        "",
        "#ifdef __cplusplus",
        'extern "C" {',
        "#endif",
        "// The LCID of each slot, in slot order.",
        "extern LCID g_tqLangLcids[TQLANG_SLOTCOUNT];",
        "extern TQLANGRECORD g_tqLangRecords[TQS_COUNT];",
        "#ifdef __cplusplus",
        "}",
        "#endif",
        "",
        "enum TqStringIndex",
        "{",
    ]
    out += [f"    TQSI_{e.name} = {i}," for i, e in enumerate(entries)]
    out += [
        "};",
        "",
        "// The string id of an entry: TqGetString(TQS(Name)).",
        "#define TQS(Name) ((const wchar_t*)g_tqLangRecords[TQSI_##Name].marker)",
        "",
    ]
    return "\n".join(out)


def render_source(entries):
    pool = {}  # text -> symbol; identical texts are stored once
    text_lines = []

    def symbol(text):
        if text not in pool:
            pool[text] = f"t{len(pool)}"
            text_lines.append(f"TQ_TEXT const wchar_t {pool[text]}[] = {utf16_literal(text)};")
        return pool[text]

    records = []
    for e in entries:
        english = e.texts[0]
        slots = [symbol(t if t is not None else english) for t in e.texts]
        records.append(f"    // {e.name}: {c_comment(english)}")
        records.append(f"    {{{{TQLANG_MARKER, TQLANG_SLOTCOUNT, 0, 0}},")
        records.append("     {" + ", ".join(slots) + "},")
        records.append("     nullptr},")

    lcids = ", ".join(f"0x{lcid:X}" for _, lcid in LANGUAGES)
    out = [
        "// Generated by makestrings.py from the *.tqstrings files: do not edit.",
        '#include "tqstrings.h"',
        "",
        '#define TQ_TABLE __attribute__((section("tqlang_t")))',
        '#define TQ_TEXT __attribute__((section("strings")))',
        "",
        "namespace {",
        *text_lines,
        "} // namespace",
        "",
        'extern "C" {',
        f"TQ_TABLE LCID g_tqLangLcids[TQLANG_SLOTCOUNT] = {{{lcids}}};",
        "",
        "TQ_TABLE TQLANGRECORD g_tqLangRecords[TQS_COUNT] = {",
        *records,
        "};",
        "}",
        "",
    ]
    return "\n".join(out)


def write_if_changed(path, text):
    try:
        with open(path, encoding="utf-8", newline="") as f:
            if f.read() == text:
                return
    except FileNotFoundError:
        pass
    with open(path, "w", encoding="utf-8", newline="\n") as f:
        f.write(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--output", required=True, help="folder for tqstrings.h and .cpp")
    parser.add_argument("inputs", nargs="+", help="translation files (*.tqstrings)")
    args = parser.parse_args()

    entries, seen = [], {}
    try:
        for path in sorted(args.inputs, key=os.path.basename):
            parse(path, entries, seen)
        if not entries:
            raise TranslationError("no entries in " + " ".join(args.inputs))
    except (TranslationError, UnicodeDecodeError) as error:
        print(f"makestrings: {error}", file=sys.stderr)
        return 1

    os.makedirs(args.output, exist_ok=True)
    write_if_changed(os.path.join(args.output, "tqstrings.h"), render_header(entries))
    write_if_changed(os.path.join(args.output, "tqstrings.cpp"), render_source(entries))
    return 0


if __name__ == "__main__":
    sys.exit(main())
