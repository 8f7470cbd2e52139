/** @file
 * libtlxcrypto, the cryptographic companion of libtlxpki: all of its interface.
 */
#ifndef TLXCRYPTO_H
#define TLXCRYPTO_H

#include <tlxcrypto/aead.h>
#include <tlxcrypto/bigint.h>
#include <tlxcrypto/cipher.h>
#include <tlxcrypto/curve.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/dsa.h>
#include <tlxcrypto/ec.h>
#include <tlxcrypto/ecdsa.h>
#include <tlxcrypto/eddsa.h>
#include <tlxcrypto/file.h>
#include <tlxcrypto/hmac.h>
#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/kdf.h>
#include <tlxcrypto/key_wrap.h>
#include <tlxcrypto/memory.h>
#include <tlxcrypto/random.h>
#include <tlxcrypto/rc4.h>
#include <tlxcrypto/rsa.h>
#include <tlxcrypto/rsa_external.h>
#include <tlxcrypto/stack.h>
#include <tlxcrypto/xdh.h>

#endif
