#!/usr/bin/env bash
# The public headers beside all of OpenSSL's, in both orders, as C and C++; and what is said to those who mix them otherwise.
# usage: openssl_headers.sh <C compiler> <C++ compiler> <include dir>
source "$(dirname "$0")/common.sh"
cc=$1 cxx=$2 include=$3
warnings=(-Wall -Wextra -Wpedantic -Werror)

# <openssl/asn1_mac.h> is an error on purpose.
folder=$(echo '#include <openssl/x509.h>' | "$cc" -E - | sed -nE 's|^# 1 "(.*)/x509.h".*|\1|p' | head -1)
(echo '#include <stdio.h>' && cd "$folder" && printf '#include <openssl/%s>\n' *.h | grep -v asn1_mac) >"$work/openssl.h"
[[ $(wc -l <"$work/openssl.h") -gt 50 ]]
cat >"$work/use.h" <<'EOF'
static inline void use(TLX_X509_NAME **name, TLX_GENERAL_NAMES **names, X509_NAME **other, X509_CERT **cert) {
    *name = new_X509_NAME();
    *names = new_GENERAL_NAMES();
    *other = X509_NAME_new();
    X509_NAME_free(*other);
    *cert = new_X509_CERT();
    set_X509_issuer(*cert, *name);
    (void)TLX_READ_PEM_FILE(X509_NAME, name, "name.pem");
}
EOF

compile() {  # compiler and language; headers in order
    printf '#include <%s>\n' "${@:3}" | "$1" "-std=$2" "${warnings[@]}" -I"$include" -I"$work" -fsyntax-only -x "${language}" -
}
for language in c c++; do
    if [[ $language == c ]]; then compiler=$cc standard=c99; else compiler=$cxx standard=c++11; fi
    compile "$compiler" $standard openssl.h tlxpki/with_openssl.h use.h
    compile "$compiler" $standard tlxpki/with_openssl.h openssl.h tlxpki.h use.h
    if compile "$compiler" $standard tlxpki.h tlxpki/with_openssl.h 2>"$work/errors"; then
        echo "tlxpki.h before tlxpki/with_openssl.h is accepted" && exit 1
    fi
    grep -q 'has to come before' "$work/errors"
done
