# What the tests of the package share: a folder that the end removes, the declared functions, a comparison.
set -euo pipefail
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

declarations() {  # C compiler, include dir; lists what the headers of each library declare in $work/<library>.declared
    printf '#include <%s>\n' tlxpki.h tlxpki/pkcs11.h >"$work/all.c"
    "$1" -std=c99 -I"$2" -fsyntax-only -aux-info "$work/prototypes" "$work/all.c"
    local library
    for library in tlxcrypto tlxpki; do
        grep -F "$2/$library/" "$work/prototypes" | sed -E 's/^.*[ *]([A-Za-z_][A-Za-z0-9_]*) \(.*$/\1/' | sort -u \
            >"$work/$library.declared" || { echo "no declarations found for $library"; exit 1; }
    done
}
same() {  # what, expected, found
    diff "$2" "$3" >"$work/diff" && return
    echo "$1 (< expected, > found):" && cat "$work/diff" && status=1
}
