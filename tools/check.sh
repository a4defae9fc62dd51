#!/usr/bin/env bash
# check.sh                  format, layers, names, forbidden calls, scripts, packaging and drawings; some seconds
# check.sh --format         puts every C++ file into the project's format
# check.sh --tidy [FILES]   clang-tidy over build/dev: FILES, or what differs from the branch main
set -euo pipefail

root=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")
cd -- "$root"
failed=0

say() { printf 'check.sh: %s\n' "$*" >&2; }

changed_sources() {
    local base
    base=$(git merge-base HEAD main 2> /dev/null || git rev-parse HEAD~1 2> /dev/null || git rev-parse HEAD)
    { git diff --name-only --diff-filter=d "$base"; git ls-files --others --exclude-standard; } \
        | grep -E '^(src|tools|tests)/.*\.cpp$' | sort -u || true
}

if [ "${1:-}" = "--tidy" ]; then
    shift
    if [ ! -f build/dev/compile_commands.json ]; then
        say "build/dev is not configured: run  cmake --preset dev  first"
        exit 1
    fi
    files=("$@")
    [ "${#files[@]}" -gt 0 ] || mapfile -t files < <(changed_sources)
    [ "${#files[@]}" -gt 0 ] || exit 0
    # clang cannot read the compiler's precompiled headers: it gets the same headers as text, without one beside them.
    mkdir -p build/tidy
    while IFS= read -r -d '' header; do
        cp -- "$header" "${header%/*}/tidy_headers.hxx"
    done < <(find build/dev -name cmake_pch.hxx -print0)
    sed 's#/cmake_pch\.hxx#/tidy_headers.hxx#g' build/dev/compile_commands.json > build/tidy/compile_commands.json
    printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P 2 clang-tidy -p build/tidy --quiet --extra-arg=-Wno-unknown-warning-option
    exit
fi

sources() {
    # A copy without version control is checked as a whole.
    { git ls-files --cached --others --exclude-standard -- "$@" 2> /dev/null || find . '(' -path ./build -o -path ./.git ')' -prune -o -type f -print; } \
        | while IFS= read -r file; do [ -f "$file" ] && printf '%s\0' "$file"; done
}

code() { sources src tests tools bench | grep -zE '\.(cpp|h)$'; }

if [ "${1:-}" = "--format" ]; then
    code | xargs -0 -r -n 20 -P 2 clang-format -i
    exit
fi

unformatted=$(code | xargs -0 -r -n 20 -P 2 clang-format --dry-run 2>&1 | sed -nE 's/^([^: ]+\.(cpp|h)):[0-9].*/\1/p' | sort -u)
if [ -n "$unformatted" ]; then
    say "not in the project's format (tools/check.sh --format puts them right):"
    while IFS= read -r file; do printf '    %s\n' "$file" >&2; done <<< "$unformatted"
    failed=1
fi
/usr/bin/python3 tools/check-sources.py || failed=1
/usr/bin/python3 tools/make-icons.py --check || failed=1
sources | grep -zE '\.sh$|^\.ci/run$' | xargs -0 -r shellcheck -x -P SCRIPTDIR || failed=1
packaging/check.sh || failed=1

[ "$failed" -eq 0 ] || say "the sources need work, see above"
exit "$failed"
