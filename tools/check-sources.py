#!/usr/bin/python3
"""Checks the sources for what the compiler does not: layers, names, texts and calls that do not belong here.

    tools/check-sources.py      one line for each finding, exit status 1 when there is any
"""

import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SRC = ROOT / "src"
INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]', re.M)
WINDOW_BASES = r"Form(?:Window|MainWindow|Dialog)"
PLAIN_WORDS = re.compile(r"(?:^|[^a-z])(utils?|helpers?|manager|common)(?:[^a-z]|$)", re.I)

# Letters in brackets keep this file from finding itself.
TEXTS = [
    (r"\bParts? [0-9]+\.[0-9]+", "refers to a numbered requirement"),
    (r"/wor[k]/|/tm[p]/bash_jobs", "holds a path of one machine"),
    (r"shared/(?:desig[n]|spe[c])", "refers to a file outside the project"),
    (r"\b(?:TOD[O]|FIXM[E]|XX[X])\b", "marks unfinished work"),
]
CALLS = [
    (r"\bQ(?:File|Dir)::rename\b|\.rename\(", "src tests tools", "renames without a sync; use platform/files.h"),
    (r"\bmoveToTras[h]\b", "src tests tools", "loses files when the data folder is missing"),
    (r"(?<![\w.>:])(?:std::|::)?system\(|\bpopen\(|(?<![\w.>:])(?:::)?fork\(", "src tools", "starts a process past the program's own ways"),
    (r"\busleep\(|\bQThread::[mu]?sleep\b|\bQTest::q(?:Wait|Sleep)\(", "src tests tools", "sleeps; wait for a signal or a condition"),
    (r"\.save\(\s*[^)&\s]", "src", "writes a picture past the atomic writer"),
    (r"\bconnect\([^;]*\b(?:SIGNAL|SLOT)\(", "src tests tools", "connects by text; use function pointers"),
]
# A text that users see goes through tr(): what sets one from a bare literal of words.
LITERAL = r'(?:QStringLiteral\(|QLatin1String\(|QString::from\w+\(|u)?"(?:[^"\\]|\\.)*[A-Za-z]{2}'
SETTERS = (r"set(?:Text|IconText|WindowTitle|Title|ToolTip|StatusTip|WhatsThis|AccessibleName|AccessibleDescription|PlaceholderText"
           r"|Suffix|Prefix|SpecialValueText|TabText)|add(?:Action|Menu|Tab|Row)|showMessage|ShowStatusBarText")
SHOWN = [
    rf"\b(?:{SETTERS})\((?:[^()\"]*,\s*)?{LITERAL}",
    rf"\bnew Q(?:Label|PushButton|CheckBox|RadioButton|GroupBox|Action|ToolButton|Menu)\({LITERAL}",
    rf"\.(?:title|text|filter|detail)\s*\+?=\s*{LITERAL}",
    rf"\bMessageBox\s*\w*\{{\s*{LITERAL}",
]
# Windows that never come up.
NEVER_SHOWN = ("frmPreviousInstance.cpp",)
# The one place where a call is the program's own way.
ALLOWED = {"fork(": ("zygote.cpp",)}

findings = []


def report(path, line, text):
    findings.append(f"{path.relative_to(ROOT)}:{line}: {text}")


def project_files():
    try:
        listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard"], cwd=ROOT, check=True,
                                capture_output=True, text=True).stdout.splitlines()
    except (OSError, subprocess.CalledProcessError):
        listed = [str(p.relative_to(ROOT)) for p in ROOT.rglob("*") if p.relative_to(ROOT).parts[:1] not in (("build",), (".git",))]
    return [ROOT / name for name in listed if (ROOT / name).is_file()]


def widget_headers():
    """Names that #include <...> resolves to a widget header."""
    names = {"QApplication", "QWidget", "QMainWindow", "QDialog", "QLabel", "QMessageBox", "QFileDialog", "QPushButton"}
    for folder in Path("/usr/include").glob("*/qt6/QtWidgets"):
        names |= {header.name for header in folder.iterdir()}
    return names


def read(path):
    return path.read_text(encoding="utf-8", errors="replace")


def without_comments(text):
    """Comments become blanks, so that line numbers stay."""
    blank = lambda match: re.sub(r"[^\n]", " ", match.group(0))
    return re.sub(r"//[^\n]*|/\*.*?\*/", blank, text, flags=re.S)


def listed_sources():
    """Layer -> source files, as the CMakeLists of each folder list them."""
    layers = {"base": [], "engine": [], "rules": [], "windows": [], "modules": [], "programs": []}
    for cmake in sorted(SRC.rglob("CMakeLists.txt")):
        text = re.sub(r"#[^\n]*", "", read(cmake))
        for body in re.findall(r"lumora_folder\(([^)]*)\)", text):
            layer = None
            for word in body.split():
                if word in ("RULES", "WINDOWS"):
                    layer = word.lower()
                elif layer:
                    layers[layer].append(cmake.parent / word)
        for kind, body in re.findall(r"\b(add_library|add_executable|target_sources)\(([^)]*)\)", text):
            words = body.split()
            layer = {"lumora_base": "base", "lumora_engine": "engine", "lumora_rules": "rules",
                     "lumora_windows": "windows"}.get(words[0], "programs" if kind == "add_executable" else "modules")
            layers[layer] += [cmake.parent / word for word in words[1:] if re.search(r"\.(cpp|h|c)$", word) and "$" not in word]
    return layers


def closure(path):
    """The project headers a file takes in, itself included, and the place of each system include."""
    seen, todo, system = set(), [path], []
    while todo:
        file = todo.pop()
        if file in seen or not file.exists():
            continue
        seen.add(file)
        text = read(file)
        for match in INCLUDE.finditer(text):
            if match.group(1) == '"':
                todo += [candidate for candidate in (SRC / match.group(2), file.parent / match.group(2)) if candidate.exists()][:1]
            else:
                system.append((file, text.count("\n", 0, match.start()) + 1, match.group(2)))
    return seen, system


def check_layers(layers):
    widgets = widget_headers()
    base = {path.with_suffix(".h").name for path in layers["base"]}
    for layer in ("base", "engine", "rules"):
        for path in layers[layer]:
            if not path.exists():
                report(path, 1, "is listed in its CMakeLists.txt and is not there")
                continue
            taken, system = closure(path)
            for file, line, name in system:
                if name.startswith("QtWidgets") or name in widgets:
                    report(file, line, f"includes {name}, which {path.relative_to(SRC)} ({layer}) must not")
            for header in sorted(taken):
                folder = header.relative_to(SRC).parts[0]
                if layer == "engine" and folder != "engine" and not (folder == "platform" and (header.name in base or header.suffix == ".cpp")):
                    report(path, 1, f"is the engine's and takes in {header.relative_to(SRC)}")
    listed = {path.resolve() for paths in layers.values() for path in paths}
    for path in sorted(SRC.rglob("*.cpp")):
        if path.resolve() not in listed:
            report(path, 1, "is listed in no CMakeLists.txt")


def check_names(files):
    for path in files:
        if PLAIN_WORDS.search(path.stem) and path.name != "common.css":
            report(path, 1, "has a name that says nothing")
        if path.suffix not in (".h", ".cpp") or SRC not in path.parents:
            continue
        text = without_comments(read(path))
        for match in re.finditer(rf"^class\s+(\w+)[^;{{]*:\s*public\s+{WINDOW_BASES}\b", text, re.M):
            if match.group(1) != path.stem:
                report(path, text.count("\n", 0, match.start()) + 1, f"holds the window {match.group(1)}; a window's file has its name")
        for match in re.finditer(r"^(?:class|struct)\s+(\w*(?:Utils?|Helper|Manager|Common)\w*)\b", text, re.M):
            report(path, text.count("\n", 0, match.start()) + 1, f"{match.group(1)} is a name that says nothing")


def check_texts(files):
    for path in files:
        if path.suffix in (".png", ".svg", ".jpg", ".ico") or path.name == "LICENSE":
            continue
        text = read(path)
        for pattern, meaning in TEXTS:
            for match in re.finditer(pattern, text):
                report(path, text.count("\n", 0, match.start()) + 1, f"{match.group(0)!r} {meaning}")


def check_calls(files):
    for path in files:
        if path.suffix not in (".h", ".cpp"):
            continue
        text = without_comments(read(path))
        top = path.relative_to(ROOT).parts[0]
        for pattern, folders, meaning in CALLS:
            if top in folders.split():
                for match in re.finditer(pattern, text):
                    if path.name in ALLOWED.get(match.group(0).strip(), ()):
                        continue
                    report(path, text.count("\n", 0, match.start()) + 1, f"{match.group(0).strip()!r} {meaning}")


def check_shown_texts(files):
    for path in files:
        if path.suffix not in (".h", ".cpp") or SRC not in path.parents or path.name in NEVER_SHOWN:
            continue
        text = without_comments(read(path))
        for pattern in SHOWN:
            for match in re.finditer(pattern, text):
                report(path, text.count("\n", 0, match.start()) + 1, f"{match.group(0)!r} is shown and goes past tr()")


def main():
    files = project_files()
    check_layers(listed_sources())
    check_names(files)
    check_texts(files)
    check_calls(files)
    check_shown_texts(files)
    for finding in dict.fromkeys(findings):
        print(finding, file=sys.stderr)
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
