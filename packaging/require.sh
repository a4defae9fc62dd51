#!/usr/bin/env bash
# require.sh [-f LIST] SECTION...
# Installs those Debian packages of the sections that are not there yet. Says nothing when nothing is missing; all output
# goes to stderr. LIST is packaging/debian-12.packages unless given.
set -euo pipefail

list="$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/debian-12.packages"
if [ "${1:-}" = "-f" ]; then
    list=$2
    shift 2
fi

say() { printf 'require: %s\n' "$*" >&2; }

wanted=()
for section in "$@"; do
    while read -r row package _; do
        [ "$row" = "$section" ] && wanted+=("$package")
    done < "$list"
done
[ "${#wanted[@]}" -gt 0 ] || exit 0

if ! command -v dpkg-query > /dev/null; then
    say "this is not a Debian system: what is needed must already be there (see $list)"
    exit 0
fi

installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n' "${wanted[@]}" 2> /dev/null | sed -n 's/^.i. *//p' || true)
missing=()
for package in "${wanted[@]}"; do
    grep -qxF -- "$package" <<< "$installed" || missing+=("$package")
done
[ "${#missing[@]}" -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo > /dev/null && { [ -t 0 ] || sudo -n true 2> /dev/null; }; then
        as_root=(sudo)
    else
        say "these Debian packages are missing, and installing them needs root:"
        say "    apt-get install ${missing[*]}"
        exit 1
    fi
fi

say "installing ${missing[*]}"
log=$(mktemp)
trap 'rm -f -- "$log"' EXIT
if ! { "${as_root[@]}" apt-get update \
    && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"; } \
    > "$log" 2>&1 < /dev/null; then
    tail -n 20 -- "$log" >&2
    say "apt-get failed; these packages are still needed: ${missing[*]}"
    exit 1
fi
