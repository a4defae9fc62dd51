#!/usr/bin/python3
"""Asks the shells what they complete for lumora(1), and compares that with what the program says of itself.

    check-completions.py PROGRAM

Shells that are not installed are passed over. One line for each finding, exit status 1 when there is any.
"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

FILES = Path(__file__).resolve().parent / "completions"
BASH = r"""
compopt() { :; }
source "$1"
COMP_WORDS=("${@:2}")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
_lumora
printf '%s\n' "${COMPREPLY[@]}"
"""
# zsh completes only at a prompt. Without one, its own routine for options is replaced by one that tells what it is given.
ZSH = r"""
_arguments() {
    print -rl -- "$@" "formats $formats" "operations $operations"
}
words=("${@:2}")
complete_it() { source "$1" }
complete_it "$1/_lumora"
"""
findings = []


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=60, stdin=subprocess.DEVNULL).stdout


def bash(*words):
    return set(output("bash", "--norc", "-c", BASH, "bash", str(FILES / "lumora.bash"), *words).split())


def fish(*words):
    line = " ".join(words)
    rows = output("fish", "--no-config", "-c", 'source $argv[1]; complete -C $argv[2]', str(FILES / "lumora.fish"), line)
    return {row.split("\t")[0] for row in rows.splitlines()}


def zsh(*words):
    rows = output("zsh", "-f", "-c", ZSH, "zsh", str(FILES), *words).splitlines()
    lists = {row.split()[0]: set(row.split()[1:]) for row in rows if row.startswith(("formats ", "operations "))}
    options = {}
    for row in rows:
        if match := re.match(r"(?:\([^)]*\))?(-{1,2}[\w-]+)=?\[[^]]*\](?:[^:]*:[^:]*:(.*))?$", row):
            options[match.group(1)] = match.group(2) or ""
    if words[-1].startswith("-"):
        return set(options)
    action = options[words[-2]]
    for name, values in lists.items():
        if "$" + name in action:
            return values - set(words[-1].split(","))
    return set(action.strip("()").split())


def check(shell, ask, words, wanted, unwanted=frozenset()):
    """A shell may write the whole list anew, "--convert=png,bmp": only what it ends in counts."""
    found = {re.split("[=,]", word)[-1] for word in ask(*words)}
    line = " ".join(words)
    for word in sorted(wanted - found):
        findings.append(f"{shell}: '{line}' does not offer {word}")
    for word in sorted(unwanted & found):
        findings.append(f"{shell}: '{line}' offers {word}")


def main():
    told = output(sys.argv[1], "--help")
    window, conversion = told.split("Converting without a window", 1)
    option = re.compile(r"(?<![\w-])--[a-z][\w-]*")
    window_options = set(option.findall(window))
    conversion_options = set(option.findall(conversion)) - {"--convert"}
    formats = set(re.search(r"Formats: ([^.]*)\.", told).group(1).replace(",", " ").split())
    operations = set(re.search(r"in this order: ([^.]*?)\n *--diffuse", told, re.S).group(1).replace(",", " ").split())

    # Nothing beside what the program knows, and no option forgotten, in the texts of all three.
    every = window_options | conversion_options | {"--convert"}
    for name in ("lumora.bash", "_lumora", "lumora.fish"):
        text = (FILES / name).read_text()
        written = set(option.findall(text))
        if name == "lumora.fish":
            written = {"--" + word for word in re.findall(r"^complete .* -l ([\w-]+)", text, re.M)}
        for word in sorted(every ^ written):
            findings.append(f"{name}: {word} is there and unknown, or known and not there")

    shells = {"bash": bash, "fish": fish, "zsh": zsh}
    for shell, ask in shells.items():
        if not shutil.which(shell):
            print(f"check-completions: {shell} is not installed", file=sys.stderr)
            continue
        check(shell, ask, ["lumora", "--"], window_options | {"--convert"})
        check(shell, ask, ["lumora", "--convert", "png", "--"], conversion_options, window_options)
        check(shell, ask, ["lumora", "--editor", "--"], {"--screenshot"}, conversion_options)
        check(shell, ask, ["lumora", "--convert", ""], formats)
        check(shell, ask, ["lumora", "--convert", "png,"], formats - {"png"}, operations)
        check(shell, ask, ["lumora", "--convert", "png", "--operations", ""], operations)
        check(shell, ask, ["lumora", "--convert", "png", "--photo-cd-size", ""], set("01234"))
    for finding in findings:
        print(f"check-completions: {finding}", file=sys.stderr)
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
