#!/usr/bin/env bash
# check.sh      what is installed beside the program: desktop entry, metainfo, types, manual pages, completions
# Every checker must be silent. One line on stderr for each finding, exit status 1 when there is any. Needs no build.
set -euo pipefail

cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")"
id=org.lumora.Lumora
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT
failed=0

say() { printf 'packaging: %s\n' "$*" >&2; failed=1; }

# silent COMMAND...: the command succeeds and says nothing.
silent() {
    local said
    if ! said=$("$@" 2>&1) || [ -n "$said" ]; then
        say "$*:"$'\n'"$said"
    fi
}

silent desktop-file-validate "$id.desktop"
silent xmllint --noout "$id.metainfo.xml" "$id.mime.xml"
# It tells what it has found even when that is nothing; a name with capitals is the one that the windows carry.
appstreamcli validate --no-net --pedantic "$id.metainfo.xml" > "$scratch/metainfo" 2>&1 || say "$(cat "$scratch/metainfo")"
findings=$(grep -E '^[EWIP]: ' "$scratch/metainfo" | grep -v 'cid-contains-uppercase-letter' || true)
[ -z "$findings" ] || say "$id.metainfo.xml:"$'\n'"$findings"

for page in man/*.[1-9]; do
    silent mandoc -T lint -W warning "$page"
done
silent bash -n completions/lumora.bash
! command -v zsh > /dev/null || silent zsh -n completions/_lumora
! command -v fish > /dev/null || silent fish --no-config -n completions/lumora.fish

# The types: the program's own are known once they are installed, and every one that the program asks for is known.
mkdir -p -- "$scratch/home" "$scratch/data/mime/packages"
cp -- "$id.mime.xml" "$scratch/data/mime/packages/$id.xml"
XDG_DATA_HOME="$scratch/data" silent update-mime-database "$scratch/data/mime"
asked=$(sed -n 's/^MimeType=//p' "$id.desktop" | tr ';' '\n' | sed '/^$/d' | sort)
[ -z "$(uniq -d <<< "$asked")" ] || say "$id.desktop names a type twice: $(uniq -d <<< "$asked")"
provided=$(sed -n 's:.*<mediatype>\(.*\)</mediatype>.*:\1:p' "$id.metainfo.xml" | sort)
[ "$asked" = "$provided" ] || say "the desktop entry and the metainfo name different types: $(comm -3 <(echo "$asked") <(echo "$provided"))"
known=$(cat /usr/share/mime/types "$scratch/data/mime/types")
while IFS= read -r type; do
    grep -qxF -- "$type" <<< "$known" || say "$id.desktop: no system knows the type $type"
done <<< "$asked"

# type_of NAME CONTENT: what a desktop takes such a file for.
type_of() {
    printf '%b' "$2" > "$scratch/$1"
    HOME="$scratch/home" XDG_DATA_HOME="$scratch/data" gio info -a standard::content-type "$scratch/$1" \
        | sed -n 's/.*standard::content-type: //p'
    rm -f -- "$scratch/$1"
}

# expect TYPE NAME [CONTENT]
expect() {
    local found
    found=$(type_of "$2" "${3:-\001}")
    [ "$found" = "$1" ] || say "a file $2 is taken for $found, not for $1"
}

foreign=$(sed -n 's/^.*<mime-type type="\(.*\)">/\1/p' "$id.mime.xml")
for row in art:x-art cut:x-cut dcx:vnd.zbrush.dcx hrz:x-hrz mac:x-macpaint mbm:x-epoc-mbm msp:x-msp psp:x-psp sfw:x-sfw \
    fpx:vnd.fpx pmp:x-pmp thm:x-thm; do
    expect "image/${row#*:}" "a.${row%:*}"
    expect "image/${row#*:}" "A.${row%:*}"
done
expect application/x-lumora-list list.Lsl '[File List]\r\n'
expect application/x-lumora-list list '[File List]\r\n'
expect application/x-lumora-list list '\357\273\277[File List]\r\n'
expect image/vnd.zbrush.dcx scan '\261\150\336\072\001\001\001\001'
expect image/x-epoc-mbm drawing '\067\0\0\020\102\0\0\020\0\0\0\0'
expect image/x-thm camera.thm '\377\330\377\340\0\020JFIF\0'
# What belongs to others stays theirs.
for name in disk.img ruby.gem picture.pic names.lst; do
    found=$(type_of "$name" '\001')
    ! grep -qxF -- "$found" <<< "$foreign"$'\n'"$asked" || say "a file $name is claimed as $found"
done

exit "$failed"
