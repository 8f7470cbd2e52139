#!/usr/bin/env bash
# The types and constants of PKCS #11 are those of p11-kit's header, and a program that includes that one first keeps it.
# usage: cryptoki.sh <C compiler> <C++ compiler> <include dir>
source "$(dirname "$0")/common.sh"
cc=$1 cxx=$2 include=$3
peer=$(pkg-config --variable=includedir p11-kit-1)/p11-kit-1

# What the header declares: "constant NAME", "structure NAME", "member NAME.MEMBER".
sed -nE 's/^#define (CK[A-Z]?_[A-Z0-9_]+) .*/constant \1/p' "$include"/tlxpki/cryptoki*.h >"$work/names"
awk '/^(typedef )?struct CK_[A-Z_]+ \{/ { name = $(NF - 1); print "structure", name; next }
     /^\}/ { name = "" }
     name && sub(/(\[[0-9]+\])?;.*/, "") { print "member", name "." $NF }' "$include/tlxpki/cryptoki.h" >>"$work/names"
for kind in constant:390 structure:13 member:129; do
    [[ $(grep -c "^${kind%:*} " "$work/names") -ge ${kind#*:} ]] || { echo "too few of: ${kind%:*}"; exit 1; }
done

{
    echo '#include <tlxpki/pkcs11.h>'
    echo '#include <stddef.h>'
    echo '#include <stdio.h>'
    echo 'int main(void) {'
    sed -E 's/^constant (.*)/    printf("\1 %lx\\n", (unsigned long)(\1));/
            s/^structure (.*)/    printf("\1 %lx\\n", (unsigned long)sizeof(\1));/
            s/^member (.*)\.(.*)/    printf("\1.\2 %lx\\n", (unsigned long)offsetof(\1, \2));/' "$work/names"
    echo '}'
} >"$work/print.c"
flags=(-Wall -Wextra -Werror -I"$include")
"$cc" -std=c99 "${flags[@]}" -o "$work/own" "$work/print.c"
"$cc" -std=c99 "${flags[@]}" -isystem "$peer" -include p11-kit/pkcs11.h -o "$work/others" "$work/print.c"
"$cxx" -std=c++11 "${flags[@]}" -isystem "$peer" -include p11-kit/pkcs11.h -fsyntax-only -x c++ "$work/print.c"
"$work/own" >"$work/expected"
"$work/others" >"$work/found"
same "<tlxpki/cryptoki.h> and p11-kit's header" "$work/expected" "$work/found"
exit $status
