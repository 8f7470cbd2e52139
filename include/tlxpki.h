/** @file
 * libtlxpki: all of its interface.
 */
/* Before the guard, because <windows.h> may have defined its macros since. */
#include <tlxpki/wincrypt.h>

#ifndef TLXPKI_H
#define TLXPKI_H

#include <tlxcrypto.h>
#include <tlxpki/asn1.h>
#include <tlxpki/asn1_io.h>
#include <tlxpki/base64.h>
#include <tlxpki/ber.h>
#include <tlxpki/cms.h>
#include <tlxpki/cms_attribute.h>
#include <tlxpki/cms_keys.h>
#include <tlxpki/cms_recipient.h>
#include <tlxpki/cms_timestamp.h>
#include <tlxpki/cms_types.h>
#include <tlxpki/convert.h>
#include <tlxpki/cpv.h>
#include <tlxpki/curve.h>
#include <tlxpki/encoded_block.h>
#include <tlxpki/external_signature.h>
#include <tlxpki/general_name.h>
#include <tlxpki/kisa_identity.h>
#include <tlxpki/message_envelope.h>
#include <tlxpki/message_outline.h>
#include <tlxpki/message_stream.h>
#include <tlxpki/object_names.h>
#include <tlxpki/objects.h>
#ifndef _WIN32 /* where <wincrypt.h> has a type OCSP_CERT_ID of its own: see <tlxpki/ocsp_types.h> */
#include <tlxpki/ocsp.h>
#include <tlxpki/ocsp_respond.h>
#include <tlxpki/ocsp_types.h>
#endif
#include <tlxpki/pem.h>
#include <tlxpki/pkcs1.h>
#include <tlxpki/pkcs12.h>
#include <tlxpki/pkcs12_file.h>
#include <tlxpki/pkcs12_types.h>
#include <tlxpki/pkcs1_param.h>
#include <tlxpki/pkcs5.h>
#include <tlxpki/pkcs7.h>
#include <tlxpki/pkcs7_encrypt.h>
#include <tlxpki/pkcs7_sign.h>
#include <tlxpki/pkcs7_types.h>
#include <tlxpki/pkcs8.h>
#include <tlxpki/print.h>
#include <tlxpki/signature.h>
#include <tlxpki/signed_trust_list.h>
#include <tlxpki/status.h>
#include <tlxpki/string.h>
#include <tlxpki/time.h>
#include <tlxpki/timestamp.h>
#include <tlxpki/token.h>
#include <tlxpki/token_list.h>
#include <tlxpki/trust_list.h>
#include <tlxpki/typed.h>
#include <tlxpki/types.h>
#include <tlxpki/verify.h>
#include <tlxpki/version.h>
#include <tlxpki/x509.h>
#include <tlxpki/x509_algorithm.h>
#include <tlxpki/x509_attribute.h>
#include <tlxpki/x509_crl.h>
#include <tlxpki/x509_extension.h>
#include <tlxpki/x509_name.h>
#include <tlxpki/x509_pubkey.h>
#include <tlxpki/x509_sign.h>
#include <tlxpki/x509_types.h>
#include <tlxpki/x509v3.h>
#include <tlxpki/x509v3_constraints.h>
#include <tlxpki/x509v3_distribution.h>
#include <tlxpki/x509v3_key.h>
#include <tlxpki/x509v3_policy.h>

#endif
