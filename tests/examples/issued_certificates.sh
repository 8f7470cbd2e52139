#!/usr/bin/env bash
# The certificates and keys that issue_certificates writes: both verifiers accept them, with the policy and extensions
# expected; a CA of the same name with another key is refused; sign_and_verify takes the key.
# usage: issued_certificates.sh <folder of the programs>
set -uo pipefail
PATH=$1:$PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

failed=0
same() {  # what, expected text, text found
    diff <(echo "$2") <(echo "$3") && return
    echo "$1 (< expected, > found)" && failed=1
}
run() {  # a command; prints what it writes and its exit status
    "$@" 2>&1
    echo "exit status $?"
}

same "certificates" "exit status 0" "$(run issue_certificates ca.pem ca.key user.pem user.key)"
same "others" "exit status 0" "$(run issue_certificates other-ca.pem other-ca.key other-user.pem other-user.key)"
same "permissions of the keys" $'600\n600' "$(stat -c %a ca.key user.key)"
same "no such folder" $'none/ca.pem: cannot be written\nexit status 1' \
    "$(run issue_certificates none/ca.pem ca.key user.pem user.key)"

same "a good path" $'valid, 2 certificates\npolicy 2.999.1\nexit status 0' "$(run verify_chain ca.pem ca.pem user.pem)"
wrong=$'not valid: 0x53100054, certificate 0: the signature does not verify with the issuer\'s key (RFC 5280, 6.1.3 (a)(1))'
same "another CA" "$wrong"$'\nexit status 1' "$(run verify_chain other-ca.pem other-ca.pem user.pem)"

both=$': 0, success; altered: 2, the signature does not verify\n'
same "signatures" "RSA PKCS #1 v1.5${both}RSA PSS${both}KCDSA${both}exit status 0" "$(run sign_and_verify user.pem user.key)"
same "a certificate is no key" $'failed: 0x4900004F\nexit status 1' "$(run sign_and_verify user.pem user.pem | cut -d, -f1)"

if command -v openssl >/dev/null; then
    value() { openssl x509 -in "$1" -noout "${@:2}" | tail -1 | sed 's/ *//'; }
    same "openssl verify" $'user.pem: OK\nexit status 0' \
        "$(run openssl verify -x509_strict -check_ss_sig -explicit_policy -policy 2.999.1 -CAfile ca.pem user.pem)"
    same "the CA's extensions" \
"X509v3 Basic Constraints: critical
CA:TRUE
X509v3 Key Usage: critical
Certificate Sign, CRL Sign" "$(openssl x509 -in ca.pem -noout -ext basicConstraints,keyUsage | sed 's/^ *//; s/ *$//')"
    same "the user's extensions" \
"X509v3 extensions:
X509v3 Authority Key Identifier:
keyid:$(value ca.pem -ext subjectKeyIdentifier)
DirName:/C=KR/CN=Example CA
serial:$(value ca.pem -serial | sed 's/serial=//; s/../&:/g; s/:$//')
X509v3 Key Usage: critical
Digital Signature, Non Repudiation
X509v3 Subject Key Identifier:
$(value user.pem -ext subjectKeyIdentifier)
X509v3 Certificate Policies:
Policy: 2.999.1
X509v3 Subject Alternative Name:
email:user@example.com" \
        "$(openssl x509 -in user.pem -noout -text | sed -n '/X509v3 extensions/,/email/{s/^ *//; s/ *$//; p}')"
    same "the user's key" "$(openssl x509 -in user.pem -noout -pubkey)" "$(openssl rsa -in user.key -pubout 2>/dev/null)"
fi
exit $failed
