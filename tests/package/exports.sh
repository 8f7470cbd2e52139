#!/usr/bin/env bash
# The exported symbols of each library are the functions its public headers declare, no name is exported by both, and
# none is libcrypto's as well (two definitions of one name would shadow each other in a program that links both).
# usage: exports.sh <C compiler> <include dir> <libtlxcrypto> <libtlxpki> <libcrypto>
source "$(dirname "$0")/common.sh"
cc=$1 include=$2 tlxcrypto=$3 tlxpki=$4 libcrypto=$5

declarations "$cc" "$include"
exported() { nm -D --defined-only "$1" | awk '{print $NF}' | sed 's/@.*//' | sort -u; }
disjoint() {  # what, file, file
    comm -12 "$2" "$3" >"$work/common"
    [[ ! -s $work/common ]] && return
    echo "$1:" && cat "$work/common" && status=1
}

for library in tlxcrypto tlxpki; do
    exported "${!library}" >"$work/$library.exported"
    same "lib$library" "$work/$library.declared" "$work/$library.exported"
    echo "lib$library: $(wc -l <"$work/$library.exported") functions"
done
exported "$libcrypto" >"$work/libcrypto"
disjoint "exported by both libraries" "$work/tlxcrypto.exported" "$work/tlxpki.exported"
sort -u "$work"/tlx*.exported >"$work/ours"
disjoint "libcrypto exports these too" "$work/ours" "$work/libcrypto"
exit $status
