#!/usr/bin/env bash
# The macros that check the type of a record: the right one compiles without a warning, and every call refuses another.
# usage: typed.sh <C compiler> <C++ compiler> <include dir>
source "$(dirname "$0")/common.sh"
cc=$1 cxx=$2 include=$3

calls=(
    'TLX_READ_DER(X509_CERT, &record, octets, 4)'
    'TLX_READ_DER_FILE(X509_CERT, &record, text)'
    'TLX_READ_PEM(X509_CERT, &record, text, 4)'
    'TLX_READ_PEM_FILE(X509_CERT, &record, text)'
    'TLX_WRITE_DER(X509_CERT, record, &octets)'
    'TLX_WRITE_DER_FILE(X509_CERT, record, text)'
    'TLX_WRITE_PEM(X509_CERT, record, "CERTIFICATE", &text)'
    'TLX_WRITE_PEM_FILE(X509_CERT, record, "CERTIFICATE", text)'
    'TLX_DECODE_EXTENSION(X509_CERT, extensions, TLX_OID_BASIC_CONSTRAINTS, &record)'
    'TLX_CREATE_EXTENSION(X509_CERT, TLX_OID_BASIC_CONSTRAINTS, 1, record) != NULL'
)
{
    echo 'void check(RECORD record, uint8_t *octets, char *text, X509_EXTENSIONS *extensions);'
    echo 'void check(RECORD record, uint8_t *octets, char *text, X509_EXTENSIONS *extensions) {'
    printf '    if (%s) return;\n' "${calls[@]}"
    echo '}'
} >"$work/calls.c"

for language in "$cc -std=c99 -x c" "$cc -std=c11 -x c" "$cxx -std=c++11 -x c++" "$cxx -std=c++20 -x c++"; do
    read -ra compile <<<"$language -I$include -include tlxpki.h -fsyntax-only $work/calls.c"
    if ! "${compile[@]}" -DRECORD='X509_CERT *' -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror; then
        echo "the right type does not compile: $language"
        status=1
    fi
    for wrong in 'X509_ATTRIBUTE *' 'X509_CERTIFICATES *' 'ASN1_STRING *' 'X509_CERT **'; do
        "${compile[@]}" -DRECORD="$wrong" -w 2>"$work/errors" && { echo "compiles"; status=1; }
        refused=$(grep -oE 'calls\.c:[0-9]+' "$work/errors" | sort -u | wc -l)
        [[ $refused == "${#calls[@]}" ]] && continue
        echo "$refused of ${#calls[@]} calls refuse $wrong: $language"
        status=1
    done
done
exit $status
