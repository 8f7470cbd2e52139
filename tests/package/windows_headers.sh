#!/usr/bin/env bash
# The public headers beside those of Windows, whichever comes first: they compile as C and C++, for both compilers of that
# system, and no name of ours stays a macro of Windows'.
# usage: windows_headers.sh <C compiler> <C++ compiler> <clang> <include dir>
source "$(dirname "$0")/common.sh"
cc=$1 cxx=$2 clang=$3 include=$4
warnings=(-Wall -Wextra -Wpedantic -Werror -Wshadow)

compile() {  # compiler and language, source on the standard input
    "$@" "${warnings[@]}" -I"$include" -fsyntax-only - && return
    echo "does not compile with: $*"
    status=1
}

cd "$include"
# with_openssl.h has to come first, which package.openssl_headers tests.
mapfile -t headers < <(find . -name '*.h' ! -name with_openssl.h | sed 's|^\./||' | sort)

# Every header where the names have become macros since another one was included, for both compilers.
sed -nE 's/^#undef (.*)/#define \1 ((const char *)1)/p' tlxpki/wincrypt.h >"$work/macros_of_windows.h"
[[ -s $work/macros_of_windows.h ]]
for header in "${headers[@]}"; do
    printf '#include <%s>\n' tlxpki/x509_types.h macros_of_windows.h "$header" >"$work/header.c"
    echo 'int nothing;' >>"$work/header.c"
    compile "$cc" -std=c99 -I"$work" -x c <"$work/header.c"
    compile "$clang" --target=x86_64-pc-windows-msvc -ffreestanding -std=c99 -I"$work" -x c <"$work/header.c"
done

# All of them before and after the real ones, and in between.
uses='X509_NAME *name; X509_CERT *cert; X509_EXTENSIONS *extensions;'
ocsp='OCSP_REQUEST *request; OCSP_RESPONSE *response; OCSP_CERT_ID *id;'
for lean in -DNOTHING -DWIN32_LEAN_AND_MEAN; do
    printf '#include <windows.h>\n#include <wincrypt.h>\n#include <tlxpki.h>\n%s\n' "$uses" |
        compile "$cc" -std=c99 -x c $lean
    printf '#include <windows.h>\n#include <tlxpki.h>\n#include <tlxpki/ocsp_respond.h>\n%s\n' "$ocsp" |
        compile "$cxx" -std=c++11 -x c++ $lean
    printf '#include <tlxpki.h>\n#include <winsock2.h>\n#include <windows.h>\n#include <tlxpki.h>\n%s\n' "$uses" |
        compile "$cxx" -std=c++11 -x c++ $lean
    printf '#include <tlxpki.h>\n#include <windows.h>\n#include <tlxpki/wincrypt.h>\n%s\n' "$uses" |
        compile "$cxx" -std=c++20 -x c++ $lean
done

names() { grep -oE '\b[A-Za-z_][A-Za-z0-9_]*\b' | sort -u; }
printf '#include <%s>\n' winsock2.h windows.h wincrypt.h winscard.h wintrust.h bcrypt.h ncrypt.h >"$work/windows.c"
printf '#include <stdint.h>\n#include <stddef.h>\n' >"$work/standard.c"
{ cat "$work/windows.c" && echo '#include <tlxpki.h>'; } >"$work/both.c"
"$cc" -std=c99 -I. -E -dM "$work/both.c" | sed -E 's/^#define ([A-Za-z0-9_]+).*/\1/' | sort -u >"$work/macros"
"$cc" -std=c99 -E "$work/standard.c" | grep -v '^#' | names >"$work/standard"
echo '#include <tlxpki.h>' | "$cc" -std=c99 -I. -E - | grep -v '^#' | names | comm -23 - "$work/standard" >"$work/ours"
if ! grep -qx X509_PUBKEY "$work/ours" || ! grep -qx X509_ASN_ENCODING "$work/macros"; then
    echo "the lists of names are not complete" && status=1
fi
comm -12 "$work/ours" "$work/macros" >"$work/clashes"
if [[ -s $work/clashes ]]; then
    echo "names of ours that are macros of Windows, for <tlxpki/wincrypt.h>:" && cat "$work/clashes" && status=1
fi
exit $status
