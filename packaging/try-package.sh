#!/usr/bin/env bash
# try-package.sh [--clean-root] [PACKAGE]
# Tries the Debian package, made anew unless PACKAGE is given: lintian, the program out of the unpacked files, and whether
# every library that a binary needs comes with a package of Depends. With --clean-root it is also installed into a Debian 12
# with nothing in it, and the program started there; that takes root, a mirror, some minutes and 2 GB below TMPDIR.
set -euo pipefail

here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
clean=""
if [ "${1:-}" = "--clean-root" ]; then
    clean=1
    shift
fi
"$here/require.sh" package
package=$(readlink -f -- "${1:-$("$here/make-package.sh")}")
scratch=$(mktemp -d)
chmod 0755 -- "$scratch"
trap 'rm -rf --one-file-system -- "$scratch"' EXIT

say() { printf 'try-package.sh: %s\n' "$*" >&2; }

fail() {
    say "$*"
    exit 1
}

# The address of whoever has not set DEBEMAIL is this computer's. CPack cannot know that the modules' folder is none that
# the loader looks into. The package has never been in Debian, so it closes no bug there.
lintian --allow-root --fail-on error,warning --suppress-tags \
    bogus-mail-host,bogus-mail-host-in-debian-changelog,maintscript-calls-ldconfig,initial-upload-closes-no-bugs \
    "$package" >&2 || fail "lintian has found something"

dpkg-deb -x "$package" "$scratch/tree"
"$here/check-installed.sh" --tree "$scratch/tree" || fail "the unpacked program does not work"

# Asked once more of the files as they are in the package, stripped and all.
mkdir -p -- "$scratch/source/debian"
printf 'Source: lumora\n\nPackage: lumora\nArchitecture: any\n' > "$scratch/source/debian/control"
needed=$(cd -- "$scratch/source" && dpkg-shlibdeps -O "$scratch/tree/usr/bin/lumora" "$scratch"/tree/usr/lib/lumora/* 2> "$scratch/said") \
    || fail "dpkg-shlibdeps: $(cat "$scratch/said")"
depends=$(dpkg-deb -f "$package" Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//')
while IFS= read -r library; do
    grep -qxF -- "$library" <<< "$depends" || fail "$library is needed and not in Depends"
done < <(tr ',' '\n' <<< "${needed#shlibs:Depends=}" | sed 's/^ *//; s/ .*//')
say "the unpacked program works, and Depends holds its $(grep -o ',' <<< "$needed" | wc -l) libraries and more"
[ -n "$clean" ] || exit 0

[ "$(id -u)" -eq 0 ] || fail "--clean-root needs root"
root=$scratch/root
mkdir -p -- "$scratch/copy"
cp -- "$package" "$scratch/copy/lumora.deb"
say "making a clean root with the package in it"
# Only what Depends asks for: whatever is missing in it shows up here.
# shellcheck disable=SC2016 # the folder is the hook's own argument
mmdebstrap --variant=apt --aptopt='APT::Install-Recommends "false"' \
    --customize-hook="copy-in '$scratch/copy/lumora.deb' /" \
    --customize-hook='chroot "$1" apt-get install --yes --no-install-recommends /lumora.deb' \
    bookworm "$root" >&2 || fail "the package cannot be installed into a clean root"
chroot "$root" ldd /usr/bin/lumora /usr/lib/lumora/lumora-decoder /usr/lib/lumora/lumora-codecs.so \
    /usr/lib/lumora/lumora-player.so /usr/lib/lumora/lumora-wallpaper.so > "$scratch/libraries"
! grep 'not found' "$scratch/libraries" >&2 || fail "libraries are missing"

in_root() {
    chroot --userspec=65534:65534 "$root" env -i HOME=/srv/person XDG_RUNTIME_DIR=/srv/person/run PATH=/usr/bin:/bin \
        LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen timeout 120 "$@"
}
install -d -o 65534 -g 65534 -m 0700 "$root/srv/person" "$root/srv/person/run"
printf 'P3 2 1 255 255 0 0 0 0 255\n' > "$root/srv/person/two.ppm"
mount -t proc proc "$root/proc"
trap 'umount "$root/proc"; rm -rf --one-file-system -- "$scratch"' EXIT
in_root lumora --convert tif,png /srv/person/two.ppm || fail "it does not convert in the clean root"
in_root lumora --screenshot /srv/person/window.png /srv/person/two.tif || fail "it does not start in the clean root"
cp -- "$root/srv/person/window.png" "${here%/*}/build/clean-root.png"
chroot "$root" grep -q org.lumora.Lumora.desktop /usr/share/applications/mimeinfo.cache 2> /dev/null \
    || say "no desktop-file-utils in the clean root, as nothing there asks for it"
chroot "$root" grep -q 'application/x-lumora-list' /usr/share/mime/types || fail "the types were not taken into the system's"
chroot "$root" apt-get purge --yes lumora >&2
[ -z "$(chroot "$root" find / -xdev -iname '*lumora*' -not -path '/srv/*' -not -path '/var/log/*' -not -name lumora.deb)" ] \
    || fail "files are left behind by the removed package"
say "installed, started and removed in a clean root; its window is build/clean-root.png"
