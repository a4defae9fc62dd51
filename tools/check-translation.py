#!/usr/bin/python3
"""Checks what a translation has to keep of the English texts.

    tools/check-translation.py FILE.ts...    one line for each finding, exit status 1 when there is any
"""

import re
import sys
import xml.etree.ElementTree as ElementTree

# Texts that begin alike in every language: a group mark of a menu, blanks, a file type.
LEADING = re.compile(r"^-?\s*(?:\(\.\w+\))?")


def mnemonics(text):
    return re.findall(r"&(?!&)", text.replace("&&", ""))


def findings_of(source, text):
    if sorted(set(re.findall(r"%n|%L?\d+", source))) != sorted(set(re.findall(r"%n|%L?\d+", text))):
        yield "does not hold the same places for values"
    if LEADING.match(source).group(0) != LEADING.match(text).group(0):
        yield "does not begin alike"
    if source.endswith("...") != text.endswith(("...", "…")) and not source.endswith("...."):
        yield "does not end alike in dots"
    if len(mnemonics(source)) != len(mnemonics(text)) and "|" not in source:
        yield "does not have the same number of underlined letters"
    if source.count("\n") != text.count("\n") and not source.startswith("Usage:"):
        yield "has other lines"
    if "|*." in source and source.split("|")[1::2] != text.split("|")[1::2]:
        yield "has other patterns of file names"
    if source.endswith(":") and not text.endswith(":"):
        yield "does not end alike in a colon"
    if source[-1:].isspace() != text[-1:].isspace():
        yield "does not end alike in a blank"


def main():
    found = 0
    for name in sys.argv[1:]:
        for context in ElementTree.parse(name).getroot().iter("context"):
            for message in context.iter("message"):
                source = message.findtext("source") or ""
                translation = message.find("translation")
                text = translation.text or ""
                problems = [translation.get("type")] if translation.get("type") else []
                problems += findings_of(source, text) if text else (["has no translation"] if not problems else [])
                for problem in problems:
                    print(f"{name}: {context.findtext('name')}: {source!r}: {problem}", file=sys.stderr)
                    found += 1
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
