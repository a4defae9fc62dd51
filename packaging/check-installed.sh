#!/usr/bin/env bash
# check-installed.sh BUILD-FOLDER       installs the build into a folder of its own, and tries the program there
# check-installed.sh --package BUILD-FOLDER  makes the Debian package of the build and installs that; as root by dpkg into
#                                       a root with nothing in it, and at the end removes it again
# check-installed.sh --tree FOLDER      tries the program of FOLDER, which holds usr/bin/lumora and so on
# The program runs without the user's environment, as somebody who may not write to it. Exit status 0 when all went well.
set -euo pipefail

scratch=$(mktemp -d)
chmod 0755 -- "$scratch"
trap 'chmod -R u+w -- "$scratch"; rm -rf -- "$scratch"' EXIT

fail() {
    printf 'check-installed: %s\n' "$*" >&2
    exit 1
}

in_clean_root() { dpkg --root="$tree" --log=/dev/null --force-depends --force-script-chrootless "$@" > "$scratch/log" 2>&1; }

made=""
if [ "${1:-}" = "--tree" ]; then
    tree=$2
elif [ "${1:-}" = "--package" ]; then
    tree=$scratch/tree
    made=$scratch/package
    cpack --config "$2/CPackConfig.cmake" -G DEB -B "$made" > "$scratch/log" 2>&1 \
        || fail "making the package failed: $(tail -n 5 "$scratch/log")"
    mkdir -p -- "$tree"/var/lib/dpkg/{updates,info,triggers}
    touch -- "$tree/var/lib/dpkg/status"
    if [ "$(id -u)" -eq 0 ]; then
        in_clean_root --unpack "$made"/*.deb || fail "installing the package failed: $(tail -n 5 "$scratch/log")"
    else
        dpkg-deb -x "$made"/*.deb "$tree"
    fi
else
    tree=$scratch/tree
    DESTDIR="$tree" cmake --install "$1" --prefix /usr > "$scratch/log" || fail "installing failed: $(tail -n 5 "$scratch/log")"
fi

program=$tree/usr/bin/lumora
for binary in "$program" "$tree"/usr/lib/lumora/*; do
    ! readelf -d "$binary" | grep -qE 'R(UN)?PATH' || fail "$binary looks for libraries in the build tree"
done
for file in share/applications/org.lumora.Lumora.desktop share/metainfo/org.lumora.Lumora.metainfo.xml \
    share/mime/packages/org.lumora.Lumora.xml share/man/man1/lumora.1.gz share/man/man5/lumora-list.5.gz \
    share/icons/hicolor/48x48/apps/lumora.png share/icons/hicolor/scalable/apps/lumora.svg share/doc/lumora/copyright \
    share/bash-completion/completions/lumora share/zsh/vendor-completions/_lumora \
    share/fish/vendor_completions.d/lumora.fish share/lumora/translations/lumora_de.qm lib/lumora/lumora-wallpaper.so; do
    [ -s "$tree/usr/$file" ] || fail "usr/$file is missing"
done

home=$scratch/home
mkdir -p -- "$home/run" "$home/pictures"
chmod 0700 -- "$home/run"
# Two colours in a picture that only the codec module can read, in a format that is plain enough to be written here.
printf 'P3 2 1 255 255 0 0 0 0 255\n' > "$home/pictures/two.ppm"
as_user=(env)
if [ "$(id -u)" -eq 0 ]; then
    chown -R 65534:65534 -- "$home"
    as_user=(setpriv --reuid=65534 --regid=65534 --clear-groups --no-new-privs env)
else
    chmod a-w -- "$tree/usr/bin" 2> /dev/null || true
fi
run() {
    (cd -- "$home/pictures" && timeout 120 "${as_user[@]}" -i HOME="$home" XDG_RUNTIME_DIR="$home/run" PATH=/usr/bin:/bin \
        LC_ALL=C.UTF-8 LANGUAGE="${language:-}" QT_QPA_PLATFORM=offscreen "$program" "$@" 2>> "$home/said") || fail "lumora $* ended with $?: $(cat "$home/said")"
}

: > "$home/said"
[ "$(id -u)" -ne 0 ] || chown 65534:65534 -- "$home/said"
run --version > /dev/null
language=de
[[ $(run --help) == "Aufruf: lumora "* ]] || fail "the program does not speak German"
language=""
# Writing and reading TIFF is the codec module's work.
run --convert tif two.ppm
run --convert png two.tif
run --screenshot "$home/pictures/window.png" two.tif
[ "$(head -c 4 "$home/pictures/window.png" | tail -c 3)" = PNG ] || fail "there is no picture of the window"
for file in images.dat filecopy.avi filedel.avi; do
    cmp -s -- "$tree/usr/share/lumora/$file" "$home/.local/share/lumora/$file" || fail "the program did not take over $file"
done
[ ! -e "$home/.local/share/lumora/translations" ] || fail "the translations were copied into the user's folder"
! grep -iE 'module|cannot be loaded|not there' "$home/said" >&2 || fail "see above"

[ -n "$made" ] && [ "$(id -u)" -eq 0 ] || exit 0
in_clean_root --purge lumora || fail "removing the package failed: $(tail -n 5 "$scratch/log")"
left=$(find "$tree" -path "$tree/var" -prune -o -type f -print)
[ -z "$left" ] || fail "files are left behind by the removed package: $left"
