#!/bin/sh
# issue.sh NAME ISSUER EXTENSION...: writes NAME.pem, with lines of an openssl configuration for extensions and the serial
# number $serial, by default 5. A name keeps its key when it is issued another certificate.
set -eu
name=$1 issuer=$2
shift 2
[ -f "$name.key" ] || openssl genrsa -out "$name.key" 1024
printf '%s\n' '[req]' 'distinguished_name = name' '[name]' '[ext]' "$@" > issue.cnf
openssl req -new -key "$name.key" -config issue.cnf -subj "/CN=$name" -out issue.csr
signer="-CA $issuer.pem -CAkey $issuer.key"
[ "$name" != "$issuer" ] || signer="-signkey $name.key"
# shellcheck disable=SC2086
openssl x509 -req -in issue.csr $signer -days 30 -set_serial "${serial:-5}" -extfile issue.cnf -extensions ext -out "$name.pem"
