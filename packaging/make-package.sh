#!/usr/bin/env bash
# make-package.sh
# Installs what is missing, builds the preset package (the release, hardened), and makes the Debian package of it. Prints the
# package's path; all else that it says goes to stderr. DEBFULLNAME and DEBEMAIL name who makes it.
set -euo pipefail

root=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")
log="$root/build/package.log"

say() { printf 'make-package.sh: %s\n' "$*" >&2; }

"$root/packaging/require.sh" build package
cd -- "$root"
mkdir -p build
say "building, the log is $log"
# Packages of a version before are not this one's.
rm -f -- build/package/*.deb
if ! { cmake --preset package && cmake --build --preset package \
    && cpack --config build/package/CPackConfig.cmake -G DEB -B build/package; } > "$log" 2>&1; then
    tail -n 30 -- "$log" >&2
    say "making the package failed, the log is $log"
    exit 1
fi
rm -rf -- build/package/_CPack_Packages
printf '%s\n' "$root"/build/package/*.deb
