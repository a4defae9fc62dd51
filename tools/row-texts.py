#!/usr/bin/python3
"""Writes the texts of menu and toolbar rows as lupdate sees them.

The tables of the windows hold plain texts, one row a line, and the window translates them when it makes its menus. This
writes each of them to stdout once more as QT_TRANSLATE_NOOP of the window, for tools/update-translations.sh.
"""

import re
from pathlib import Path

SRC = Path(__file__).resolve().parent.parent / "src"
TEXT = r'"((?:[^"\\]|\\.)*)"'
ROWS = [
    rf'\{{ITEM\(\w+\), "\w*", {TEXT}',  # a menu item: name, menu, caption
    rf'^\s*\{{"\w+", {TEXT}, {TEXT}, "[\w-]*", (?:nullptr|&\w+::)',  # a button: key, caption, tip, icon, click
    rf'^\s*\{{{TEXT}, "[\w-]*", (?:true|false)\}},',  # an item of a popup: caption, icon, shown
]

for path in sorted(SRC.rglob("frm*.cpp")):
    source = path.read_text(encoding="utf-8")
    texts = [text for row in ROWS for found in re.finditer(row, source, re.M) for text in found.groups()]
    captions = re.search(r"\bpreferencesCaptions\[\] = \{([^;]*)\};", source)
    texts += re.findall(TEXT, captions.group(1)) if captions else []
    for text in dict.fromkeys(texts):
        if text not in ("", "-"):
            print(f'QT_TRANSLATE_NOOP("{path.stem.split("_")[0]}", "{text}");')
