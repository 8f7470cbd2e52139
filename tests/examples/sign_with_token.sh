#!/usr/bin/env bash
# Has the example sign with a key on a token of SoftHSM, and openssl verify it; a wrong PIN and label are told.
set -euo pipefail
program=$1 module=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export SOFTHSM2_CONF=$folder/softhsm2.conf
echo "directories.tokendir = $folder/tokens" >softhsm2.conf
mkdir tokens
softhsm2-util --init-token --free --label example --pin 1234 --so-pin 123456 >log
openssl req -x509 -newkey rsa:2048 -nodes -days 2 -keyout key.pem -out cert.pem -subj /CN=Token 2>>log
openssl x509 -in cert.pem -outform DER -out cert.der
softhsm2-util --import key.pem --token example --label signer --id 01 --pin 1234 >>log
pkcs11-tool --module "$module" --token-label example --login --pin 1234 --write-object cert.der --type cert --id 01 \
    --label signer >>log 2>&1
echo "to sign" >content
"$program" "$module" signer 1234 content message.der
openssl cms -verify -binary -in message.der -inform DER -CAfile cert.pem -out verified 2>>log
cmp content verified
if "$program" "$module" signer 4321 content other.der 2>errors; then exit 1; fi
grep -q "logging in: 0x492000A0, the PIN is wrong" errors
if "$program" "$module" nobody 1234 content other.der 2>errors; then exit 1; fi
grep -q "the certificate: 0x00000001" errors
test ! -e other.der
