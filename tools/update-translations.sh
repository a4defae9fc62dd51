#!/usr/bin/env bash
# update-translations.sh            takes new texts of the sources into translations/*.ts, and drops those that are gone
# update-translations.sh --check    changes nothing; exit status 1 when a file lacks a text or holds one that is gone
# A translation is then written by hand or in Qt's translation editor; what it has to keep is checked as well.
set -euo pipefail

root=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")
cd -- "$root"

say() { printf 'update-translations.sh: %s\n' "$*" >&2; }

lupdate=/usr/lib/qt6/bin/lupdate
if [ ! -x "$lupdate" ]; then
    # What has gone by unchecked must be seen.
    say "SKIPPED, there is no $lupdate: install qt6-l10n-tools"
    exit 0
fi
scratch=$(mktemp -d "$root/translations/.update-XXXXXX")
trap 'rm -rf -- "$scratch"' EXIT

failed=0
for file in translations/lumora_*.ts; do
    target=$file
    if [ "${1:-}" = "--check" ]; then
        target=$scratch/$(basename -- "$file")
        cp -- "$file" "$target"
    fi
    # Without the lines that texts stand in: a changed source would change every file.
    "$lupdate" src -locations none -no-obsolete -silent -ts "$target" > "$scratch/said" 2>&1 || failed=1
    # What it says of a text without a context would be missing in the file.
    if grep -v '^Scanning directory' "$scratch/said" >&2; then
        failed=1
    fi
    if [ "$target" != "$file" ] && ! cmp -s -- "$file" "$target"; then
        say "$file is not what the sources say: run tools/update-translations.sh, then translate what is new"
        failed=1
    fi
    /usr/bin/python3 tools/check-translation.py "$target" || failed=1
done
exit "$failed"
