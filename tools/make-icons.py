#!/usr/bin/python3
"""Draws the program's icons: SVG files below resources/icons and the list of them in resources/icons.qrc.

    tools/make-icons.py            writes what has changed
    tools/make-icons.py --check    writes nothing; exit status 1 when a file is not what this script draws

Letters are strokes of an alphabet of its own, so that no font takes part. Icons of commands are drawn in currentColor,
which the program sets to the palette's text colour, plus one accent that reads on light and dark ground alike.
"""

import sys
from pathlib import Path

RESOURCES = Path(__file__).resolve().parent.parent / "resources"

# --- icons of file types: a page, a small sign of the family, and a band in the family's colour with the code -------

FAMILIES = {
    "picture": ("#1f6fb2", "bmp cur dib gif ico iff jpg pbm pcx pgm pic png pnm ppm ras tga tif wbmp xbm xpm xwd jp2"),
    "camera": ("#b3541e", "crw dcr fpx mrw nef orf pcd pmp raf thm"),
    "drawing": ("#5b6b2f", "art cut dcx emf gem hrz img lbm mac mbm msp psd psp sfw wmf wpg"),
    "audio": ("#7a3fa0", "asx mid mp2 mp3 wav wma"),
    "video": ("#a32340", "asf avi mpg wmv"),
}

# A sign stands in the upper part of the page, inside x 5..14 and y 2..9 of the 22 units.
SIGNS = {
    "picture": '<circle cx="7" cy="4.2" r="1.4" fill="{c}"/><path d="M4 9.4 L8.2 5.6 L10 7.2 L12 4.6 L15 9.4 Z" fill="{c}"/>',
    "camera": '<path d="M4.5 4 H7 L8 2.6 H11.5 L12.5 4 H15 V9.4 H4.5 Z" fill="{c}"/><circle cx="9.75" cy="6.6" r="1.7" fill="#ffffff"/>',
    "drawing": '<path d="M5 9 L5.8 6.2 L11.4 2.2 L13.6 4.6 L8 8.6 Z" fill="{c}"/>',
    "audio": '<path d="M8 8 V3 L13 2.2 V7.2" fill="none" stroke="{c}" stroke-width="1.4"/>'
             '<circle cx="6.8" cy="8" r="1.6" fill="{c}"/><circle cx="11.8" cy="7.3" r="1.6" fill="{c}"/>',
    "video": '<path d="M4.5 2.6 H15 V9.2 H4.5 Z" fill="{c}"/><path d="M8.3 4 L12 5.9 L8.3 7.8 Z" fill="#ffffff"/>',
}

# Strokes of each letter on a grid 4 wide and 6 high; M and W are as wide as the others.
LETTERS = {
    "A": "M0 6 L2 0 L4 6 M0.8 4 H3.2",
    "B": "M0 0 V6 H2.6 A1.5 1.5 0 0 0 2.6 3 H0 M2.6 3 A1.5 1.5 0 0 0 2.6 0 H0",
    "C": "M4 1.2 A2 2 0 0 0 0 2 V4 A2 2 0 0 0 4 4.8",
    "D": "M0 0 V6 H1.6 A2.4 2.4 0 0 0 4 3.6 V2.4 A2.4 2.4 0 0 0 1.6 0 Z",
    "E": "M4 0 H0 V6 H4 M0 3 H3",
    "F": "M4 0 H0 V6 M0 3 H3",
    "G": "M4 1.2 A2 2 0 0 0 0 2 V4 A2 2 0 0 0 4 4 V3.2 H2.4",
    "H": "M0 0 V6 M4 0 V6 M0 3 H4",
    "I": "M2 0 V6",
    "J": "M3.6 0 V4.2 A1.8 1.8 0 0 1 0 4.4",
    "L": "M0 0 V6 H4",
    "M": "M0 6 V0 L2 3 L4 0 V6",
    "N": "M0 6 V0 L4 6 V0",
    "O": "M0 2 A2 2 0 0 1 4 2 V4 A2 2 0 0 1 0 4 Z",
    "P": "M0 6 V0 H2.4 A1.6 1.6 0 0 1 2.4 3.4 H0",
    "R": "M0 6 V0 H2.4 A1.6 1.6 0 0 1 2.4 3.2 H0 M2 3.2 L4 6",
    "S": "M3.9 0.8 A1.9 1.6 0 0 0 2 0 A1.7 1.5 0 0 0 2 3 A1.7 1.5 0 0 1 2 6 A1.9 1.6 0 0 1 0.1 5.2",
    "T": "M0 0 H4 M2 0 V6",
    "U": "M0 0 V4 A2 2 0 0 0 4 4 V0",
    "V": "M0 0 L2 6 L4 0",
    "W": "M0 0 L0.9 6 L2 2.6 L3.1 6 L4 0",
    "X": "M0 0 L4 6 M4 0 L0 6",
    "Z": "M0 0 H4 L0 6 H4",
    "2": "M0 1.6 A2 1.7 0 0 1 4 1.7 C4 3 1.2 4.2 0 6 H4",
    "3": "M0.2 0.6 C1.4 -0.4 4 0 3.8 1.6 A1.5 1.4 0 0 1 2 3 A1.6 1.5 0 0 1 2 6 A2.2 1.8 0 0 1 0.1 5.2",
}
NARROW = {"I"}      # takes 2 of the 4 units


def letters(code):
    """The code as strokes, spread over the band (x 2.4..19.6, y 12..19)."""
    widths = [1.6 if letter in NARROW else 4 for letter in code]
    gap = 1.9 if len(code) < 4 else 1.5
    total = sum(widths) + gap * (len(code) - 1)
    scale = min(17.0 / total, 1.25)
    x = 11 - total * scale / 2
    parts = []
    for letter, width in zip(code, widths):
        left = x - (1.2 * scale if letter in NARROW else 0)
        parts.append(f'<path transform="translate({left:.2f} 12.2) scale({scale:.3f} 1.08)" d="{LETTERS[letter]}"/>')
        x += (width + gap) * scale
    return "".join(parts)


def type_icon(code, family):
    color = FAMILIES[family][0]
    return (
        '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 22 22" width="22" height="22">'
        '<path d="M2.5 0.8 H15 L19.5 5.3 V21.2 H2.5 Z" fill="#fbfbfb" stroke="#8a8f94" stroke-width="1"/>'
        '<path d="M15 0.8 V5.3 H19.5" fill="none" stroke="#8a8f94" stroke-width="1"/>'
        + SIGNS[family].format(c=color)
        + f'<path d="M0.6 10.4 H21.4 V20.6 H0.6 Z" fill="{color}"/>'
        '<g fill="none" stroke="#ffffff" stroke-width="1.55" stroke-linecap="round" stroke-linejoin="round">'
        + letters(code.upper()) + "</g></svg>\n")


# --- icons of commands, 24 by 24 ------------------------------------------------------------------------------------

ACCENT = "#3b8ad8"
WARNING = "#d0483c"


def line(d, color="currentColor", width=1.8):
    return (f'<path d="{d}" fill="none" stroke="{color}" stroke-width="{width}" '
            'stroke-linecap="round" stroke-linejoin="round"/>')


def area(d, color="currentColor"):
    return f'<path d="{d}" fill="{color}"/>'


def ring(x, y, r, color="currentColor", width=1.8):
    return f'<circle cx="{x}" cy="{y}" r="{r}" fill="none" stroke="{color}" stroke-width="{width}"/>'


def disc(x, y, r, color="currentColor"):
    return f'<circle cx="{x}" cy="{y}" r="{r}" fill="{color}"/>'


SCREEN = line("M2.5 4 H21.5 V17 H2.5 Z") + line("M8 20.5 H16 M12 17 V20.5")
FOLDER = line("M2.5 19 V5 H9 L11.2 7.5 H21.5 V19 Z")
FRAME = line("M3 5 H21 V19 H3 Z")
LENS = ring(10, 10, 6.6) + line("M15 15 L21 21", width=2.4)
ROWS = line("M3 5.5 H12 M3 10.5 H12 M3 15.5 H12 M3 20.5 H12", width=1.6)
PAGE = line("M5 2.5 H14.5 L19 7 V21.5 H5 Z M14.5 2.5 V7 H19")
DISK = line("M3.5 3.5 H17 L20.5 7 V20.5 H3.5 Z M7.5 3.5 V8.5 H15 V3.5 M7 20.5 V13.5 H17 V20.5")
CROSS = "M{0} {1} l{2} {2} m0 -{2} l-{2} {2}"
PLUS = line("M18 4 V11 M14.5 7.5 H21.5", ACCENT, 2.2)
MINUS = line("M14.5 7.5 H21.5", WARNING, 2.2)
HILLS = area("M5 17 L10 11 L13 14 L16 9.5 L19.5 17 Z", ACCENT)

COMMANDS = {
    # wallpaper
    "lumora-wallpaper-centered": SCREEN + area("M8.5 7.8 H15.5 V13.2 H8.5 Z", ACCENT),
    "lumora-wallpaper-stretched": SCREEN + area("M4.2 5.7 H19.8 V15.3 H4.2 Z", ACCENT),
    "lumora-wallpaper-tiled": SCREEN + area("M5 6.5 h6 v3.4 h-6 Z M13 6.5 h6 v3.4 h-6 Z M5 11.4 h6 v3.4 h-6 Z M13 11.4 h6 v3.4 h-6 Z", ACCENT),
    "lumora-wallpaper-removed": SCREEN + line(CROSS.format(9, 7.5, 6), WARNING, 2.2),
    # adjust
    "lumora-color": area("M12 3 A9 9 0 0 1 19.8 16.5 L12 12 Z", "#3b8ad8") + area("M19.8 16.5 A9 9 0 0 1 4.2 16.5 L12 12 Z", "#46a35e")
        + area("M4.2 16.5 A9 9 0 0 1 12 3 L12 12 Z", "#d0483c"),
    "lumora-brightness": disc(12, 12, 4.2) + line("M12 2.5 V5 M12 19 V21.5 M2.5 12 H5 M19 12 H21.5 M5.3 5.3 L7 7 M17 17 L18.7 18.7 M5.3 18.7 L7 17 M17 7 L18.7 5.3"),
    "object-rotate-right": line("M19.5 12 A7.5 7.5 0 1 1 15 5.1") + area("M13.5 1.8 L20 4.6 L14.8 9 Z"),
    "object-rotate-left": line("M4.5 12 A7.5 7.5 0 1 0 9 5.1") + area("M10.5 1.8 L4 4.6 L9.2 9 Z"),
    "object-flip-horizontal": line("M12 2.5 V21.5") + area("M10 6 V18 L2.5 18 Z") + line("M14.5 7 V17.5 H21 Z", width=1.4),
    "object-flip-vertical": line("M2.5 12 H21.5") + area("M6 10 H18 L18 2.5 Z") + line("M7 14.5 H17.5 V21 Z", width=1.4),
    # look
    "zoom-in": LENS + line("M10 7 V13 M7 10 H13", ACCENT),
    "zoom-out": LENS + line("M7 10 H13", ACCENT),
    "zoom-original": LENS + line("M8.5 8 L10 7 V13", ACCENT),
    "zoom-fit-best": LENS + line("M7.5 9.2 V7.5 H9.2 M12.5 10.8 V12.5 H10.8", ACCENT, 1.5),
    "edit-find": LENS,
    "lumora-editor": FRAME + HILLS.replace("M5 17", "M4.5 17.5") + line("M13 13.5 L20 4.5", width=3) + line("M12 15.6 L13 13.5", WARNING, 2.2),
    "lumora-thumbnails": "".join(line(f"M{x} {y} h6.6 v6.6 h-6.6 Z", width=1.6) + area(f"M{x + 1.4} {y + 5.4} l2 -2.6 l1.8 2.6 Z", ACCENT)
                                for x in (3, 14) for y in (3.2, 14)),
    "lumora-labels": line("M4.5 3 H19.5 V14.5 H4.5 Z") + area("M7 12 L10.5 8 L12.5 10 L14.5 7.5 L17.5 12 Z", ACCENT)
        + line("M6.5 19.5 H17.5", width=2.4),
    "lumora-thumbnail-empty": line("M3 5 H21 V19 H3 Z M5 17 L10 11 L13 14 L16 9.5 L19.5 17", width=0.9) + ring(8, 9, 1.3, width=0.9),
    "lumora-thumbnail-missing": line("M5 3 H14.5 L19 7.5 V21 H5 Z M14.5 3 V7.5 H19", width=1.1)
        + line("M9.5 11.5 L14.5 16.5 M14.5 11.5 L9.5 16.5", WARNING, 1.7),
    "lumora-thumbnail-media": line("M3 4.5 H21 V19.5 H3 Z M7 4.5 V19.5 M17 4.5 V19.5 M3 9.5 H7 M3 14.5 H7 M17 9.5 H21 M17 14.5 H21", width=1.1)
        + area("M10 8.5 L15 12 L10 15.5 Z", ACCENT),
    "lumora-show": SCREEN + area("M9.5 7 L16 10.5 L9.5 14 Z", ACCENT),
    "lumora-browse-folder": FOLDER + area("M5.5 11 h5 v5 h-5 Z M13 11 h5 v5 h-5 Z", ACCENT),
    "lumora-wide-list": line("M2.5 4 H21.5 V20 H2.5 Z M15 4 V20") + line("M5.5 12 H12 M9.5 9 L12.5 12 L9.5 15", ACCENT),
    "lumora-wide-viewer": line("M2.5 4 H21.5 V20 H2.5 Z M9 4 V20") + line("M18.5 12 H12 M14.5 9 L11.5 12 L14.5 15", ACCENT),
    "view-fullscreen": line("M3 8 V3 H8 M16 3 H21 V8 M21 16 V21 H16 M8 21 H3 V16", width=2),
    "image-x-generic": FRAME + disc(8, 9, 1.6, ACCENT) + HILLS,
    "camera-photo": line("M2.5 7.5 H7.5 L9 5 H15 L16.5 7.5 H21.5 V19 H2.5 Z") + ring(12, 13, 3.4, ACCENT),
    # files and lists
    "folder-open": FOLDER + line("M5 11.5 H21.5", ACCENT),
    "folder": FOLDER,
    "folder-pictures": FOLDER + area("M6 16.5 L10 11.5 L12 14 L14.5 11 L18 16.5 Z", ACCENT),
    "folder-documents": FOLDER + line("M7 11.5 H17 M7 15 H14", ACCENT, 1.6),
    "folder-new": FOLDER + line("M12 10 V16 M9 13 H15", ACCENT, 2),
    "user-home": line("M3 12 L12 3.5 L21 12 M5.5 10 V20.5 H18.5 V10 M10 20.5 V14.5 H14 V20.5"),
    "user-desktop": SCREEN + line("M5 14.5 H19", ACCENT, 2),
    "bookmarks": line("M6 3 H18 V21 L12 16.5 L6 21 Z"),
    "drive-harddisk": line("M3 8 H21 V16 H3 Z") + disc(17.5, 12, 1.4, ACCENT),
    "lumora-list-load": ROWS + line("M18 14 V21 M15 18 L18 21 L21 18", ACCENT, 2),
    "lumora-list-save": ROWS + line("M18 21 V14 M15 17 L18 14 L21 17", ACCENT, 2),
    "document-open": PAGE + line("M12 18.5 V10.5 M9 13.5 L12 10.5 L15 13.5", ACCENT),
    "document-new": PAGE,
    "document-save": DISK,
    "document-save-as": DISK + line("M13 19.5 L21 11.5", ACCENT, 3),
    "document-properties": PAGE + line("M8.5 11 H15.5 M8.5 14.5 H15.5 M8.5 18 H13", ACCENT, 1.6),
    "document-print": line("M6.5 8 V3 H17.5 V8 M6.5 17 H3 V8 H21 V17 H17.5 M6.5 14 H17.5 V21 H6.5 Z"),
    "document-page-setup": PAGE + line("M8 10.5 H16 V18.5 H8 Z", ACCENT, 1.3),
    "document-send": line("M3 5.5 H21 V18.5 H3 Z M3 6 L12 13 L21 6"),
    "edit-copy": line("M8.5 7.5 H20 V21.5 H8.5 Z") + line("M15.5 4.5 V2.5 H4 V16.5 H5.8"),
    "edit-paste": line("M5 4.5 H19 V21.5 H5 Z") + area("M9 2.5 H15 V6.5 H9 Z", ACCENT),
    "edit-cut": ring(6, 18, 2.8) + ring(18, 18, 2.8) + line("M7.6 15.6 L17 3 M16.4 15.6 L7 3"),
    "edit-delete": line("M4 6 H20 M9 6 V3.5 H15 V6 M6 6 L7 21 H17 L18 6 M10 10 V17 M14 10 V17"),
    "edit-clear-list": ROWS + line(CROSS.format(15.5, 15, 5.5), WARNING, 2.2),
    "edit-undo": line("M5 9 H14.5 A5 5 0 0 1 14.5 19 H9 M9 4.5 L4.5 9 L9 13.5"),
    "edit-redo": line("M19 9 H9.5 A5 5 0 0 0 9.5 19 H15 M15 4.5 L19.5 9 L15 13.5"),
    "edit-select-all": line("M3 3 H21 V21 H3 Z") + area("M7 7 H17 V17 H7 Z", ACCENT),
    "insert-link": line("M10.5 13.5 L13.5 10.5 M8.5 11 L5.5 14 A3.2 3.2 0 0 0 10 18.5 L13 15.5 M11 8.5 L14 5.5 A3.2 3.2 0 0 1 18.5 10 L15.5 13"),
    "lumora-add-one": ROWS + PLUS,
    "lumora-add-all": ROWS + PLUS + line("M18 14 V21 M14.5 17.5 H21.5", ACCENT, 2.2),
    "lumora-remove-one": ROWS + MINUS,
    "lumora-remove-all": ROWS + MINUS + line("M14.5 17.5 H21.5", WARNING, 2.2),
    "lumora-convert": line("M3 4 H10 V11 H3 Z M14 13 H21 V20 H14 Z") + line("M13 6.5 H18 V10 M16 8 L18 10.5 L20 8", ACCENT, 1.6),
    "view-list-details": line("M3 5.5 H5 M8.5 5.5 H21 M3 12 H5 M8.5 12 H21 M3 18.5 H5 M8.5 18.5 H21"),
    "view-statistics": line("M3 21 H21") + area("M5 12 h3.5 v7 h-3.5 Z M10.3 6 h3.5 v13 h-3.5 Z M15.6 9 h3.5 v10 h-3.5 Z", ACCENT),
    # moves
    "go-next": line("M4 12 H19.5 M13 5.5 L19.5 12 L13 18.5", width=2.2),
    "go-previous": line("M20 12 H4.5 M11 5.5 L4.5 12 L11 18.5", width=2.2),
    "go-up": line("M12 20 V4.5 M5.5 11 L12 4.5 L18.5 11", width=2.2),
    "go-down": line("M12 4 V19.5 M5.5 13 L12 19.5 L18.5 13", width=2.2),
    "list-add": line("M12 4.5 V19.5 M4.5 12 H19.5", width=2.4),
    "list-remove": line("M4.5 12 H19.5", width=2.4),
    "view-refresh": line("M19.5 12 A7.5 7.5 0 1 1 17 6.4 M17.5 2.5 V6.8 H13.2"),
    # player
    "media-playback-start": area("M7 4 L20 12 L7 20 Z"),
    "media-playback-pause": area("M6.5 4 H10.5 V20 H6.5 Z M13.5 4 H17.5 V20 H13.5 Z"),
    "media-playback-stop": area("M5.5 5.5 H18.5 V18.5 H5.5 Z"),
    "media-playlist-shuffle": line("M3 7 H7 L15 17 H21 M3 17 H7 L9 14.5 M13 9.5 L15 7 H21 M18.5 4.5 L21 7 L18.5 9.5 M18.5 14.5 L21 17 L18.5 19.5", width=1.6),
    "media-playlist-repeat": line("M4 11 V8 H19 M16 5 L19 8 L16 11 M20 13 V16 H5 M8 13 L5 16 L8 19"),
    "audio-volume-high": area("M3 9 H7 L12 4.5 V19.5 L7 15 H3 Z") + line("M15 8.5 A5 5 0 0 1 15 15.5 M17.5 5.5 A9 9 0 0 1 17.5 18.5"),
    # program
    "configure": line("M3 6.5 H21 M3 12 H21 M3 17.5 H21") + disc(15.5, 6.5, 2.6, ACCENT) + disc(8.5, 12, 2.6, ACCENT) + disc(14, 17.5, 2.6, ACCENT),
    "application-exit": line("M14 3.5 H4 V20.5 H14") + line("M9.5 12 H20.5 M16.5 8 L20.5 12 L16.5 16", WARNING, 2),
    "window-close": line("M5 5 L19 19 M19 5 L5 19", width=2.2),
    "dialog-ok": line("M4 12.5 L10 18.5 L20.5 6", width=2.4),
    "dialog-information": ring(12, 12, 9) + disc(12, 7.6, 1.4, ACCENT) + line("M12 11.5 V17", ACCENT, 2.2),
    "dialog-question": ring(12, 12, 9) + line("M9 9.5 A3 3 0 1 1 12 12.6 V14", ACCENT, 2) + disc(12, 17, 1.2, ACCENT),
    "help-contents": ring(12, 12, 9) + line("M9 9.5 A3 3 0 1 1 12 12.6 V14", ACCENT, 2) + disc(12, 17, 1.2, ACCENT),
    "lumora-command": line("M4 4 H20 V20 H4 Z") + disc(12, 12, 3, ACCENT),
}

# Other names under which the same drawing is asked for.
ALIASES = {
    "folder-open": ["document-open-folder", "lumora-folder"],
    "document-open": ["document-import"],
    "document-save": ["document-export"],
    "lumora-editor": ["document-edit", "image-edit", "draw-brush"],
    "lumora-thumbnails": ["view-choose", "view-preview", "view-list-icons", "view-grid"],
    "lumora-show": ["media-show", "view-presentation", "media-slideshow"],
    "lumora-color": ["color-balance", "color-management", "preferences-desktop-color"],
    "lumora-brightness": ["brightness-contrast", "contrast", "brightness-high"],
    "configure": ["preferences-system", "preferences-other", "settings-configure"],
    "help-contents": ["help-browser", "help-about", "help-faq"],
    "edit-clear-list": ["edit-clear", "edit-clear-all"],
    "application-exit": ["system-log-out"],
    "window-close": ["dialog-cancel", "process-stop"],
    "dialog-ok": ["dialog-ok-apply"],
    "edit-find": ["system-search", "folder-saved-search"],
    "lumora-wallpaper-centered": ["wallpaper-centered", "preferences-desktop-wallpaper"],
    "document-send": ["mail-attachment", "mail-send", "mail-message-new"],
    "document-properties": ["view-information"],
    "view-refresh": ["system-software-update"],
    "user-desktop": ["go-home-desktop"],
    "user-home": ["go-home"],
    "folder-documents": ["text-x-generic"],
    "lumora-wallpaper-stretched": ["wallpaper-stretched"],
    "lumora-wallpaper-tiled": ["wallpaper-tiled"],
    "lumora-wallpaper-removed": ["wallpaper-removed"],
    "lumora-wide-list": ["list-wide"],
    "lumora-wide-viewer": ["view-wide"],
    "lumora-command": ["system-run"],
}


def command_icon(body):
    # A style of the root is what currentColor means until the program puts the palette's colour there.
    return ('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24" width="24" height="24" color="#6b7075">'
            + body + "</svg>\n")


# --- the program's own icon: an aperture of light over a sheet -------------------------------------------------------

APPLICATION = """<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 64 64" width="64" height="64">
<rect x="3" y="3" width="58" height="58" rx="12" fill="#17344f"/>
<path d="M3 44 L20 27 L33 40 L43 31 L61 49 A12 12 0 0 1 49 61 H15 A12 12 0 0 1 3 49 Z" fill="#3b8ad8"/>
<path d="M3 52 L17 41 L33 61 H15 A12 12 0 0 1 3 49 Z" fill="#1f6fb2"/>
<circle cx="43" cy="19" r="9" fill="#ffc64a"/>
<g fill="none" stroke="#ffffff" stroke-width="6" stroke-linecap="round" stroke-linejoin="round"><path d="M16 13 V33 H28"/></g>
</svg>
"""
# Desktops fill every shape of a symbolic icon with the text's colour: there are no strokes in it.
SYMBOLIC = ('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 16 16" width="16" height="16" fill="#6b7075">'
            '<path fill-rule="evenodd" d="M1.5 2 H14.5 L15 2.5 V13.5 L14.5 14 H1.5 L1 13.5 V2.5 Z M2.5 3.5 V12.5 H13.5 V3.5 Z"/>'
            '<path d="M3 12 L6.2 7.6 L8.6 10.2 L10.4 8.4 L13 12 Z"/><circle cx="10.8" cy="5.4" r="1.3"/></svg>\n')


def drawings():
    files = {"icons/lumora.svg": APPLICATION, "icons/lumora-symbolic.svg": SYMBOLIC}
    for family, (_, codes) in FAMILIES.items():
        for code in codes.split():
            files[f"icons/types/{code}.svg"] = type_icon(code, family)
    for name, body in COMMANDS.items():
        files[f"icons/commands/{name}.svg"] = command_icon(body)
    return files


def resource_list(names):
    rows = [f"    <file>{name}</file>" for name in sorted(names)]
    for name, others in sorted(ALIASES.items()):
        rows += [f'    <file alias="icons/commands/{other}.svg">icons/commands/{name}.svg</file>' for other in others]
    return ("<!-- Written by tools/make-icons.py. -->\n<RCC>\n  <qresource prefix=\"/lumora\">\n" + "\n".join(rows)
            + "\n  </qresource>\n</RCC>\n")


def main():
    files = drawings()
    files["icons.qrc"] = resource_list([name for name in files])
    differing = []
    for name, text in files.items():
        path = RESOURCES / name
        if not path.exists() or path.read_text() != text:
            differing.append(name)
    known = {RESOURCES / name for name in files}
    stray = [path for path in (RESOURCES / "icons").rglob("*.svg") if path not in known]
    if "--check" in sys.argv[1:]:
        for name in differing + [str(path) for path in stray]:
            print(f"make-icons: {name} is not what this script draws", file=sys.stderr)
        return 1 if differing or stray else 0
    for name in differing:
        path = RESOURCES / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(files[name])
    for path in stray:
        path.unlink()
    print(f"{len(files)} files, {len(differing)} written, {len(stray)} removed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
