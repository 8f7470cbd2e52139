// Private keys as files hold them, in PKCS #1, PKCS #8, PKCS #12 and, on elliptic curves, by themselves.
#pragma once

#include "document.hpp"
#include "private_key.hpp"

namespace tool {

using KeyInfo = Owned<P8_PRIV_KEY_INFO, free_P8_PRIV_KEY_INFO>;
using EncryptedKey = Owned<PKCS8, free_PKCS8>;

/// A private key, and how its file holds it.
struct KeyFile {
    KeyInfo info;
    std::string source;
    bool is_pkcs1 = false;
    bool is_pkcs12 = false;
    bool is_ec = false;  ///< an ECPrivateKey (RFC 5915)
    bool is_der = false;
    EncryptedKey container;         ///< of PKCS #8; null when the key is not encrypted
    bool is_encrypted_pem = false;  ///< of PKCS #1
};

/// The key of a block that holds one. Throws Failure.
[[nodiscard]] KeyFile read_key(const Block &block, Password &password);

/// The first key of a file, or of one file of a folder as Korean programs keep it. Throws Failure.
enum class KeyUse { kSign, kDecrypt, kSignMessage };
[[nodiscard]] KeyFile load_key(const std::string &path, Password &password, KeyUse use = KeyUse::kSign);

/// The same of a key to compute with. Throws Failure also for a key of a kind that nobody here computes with,
/// and for one of another kind than RSA and KCDSA that signs something else than messages.
[[nodiscard]] Key load_private_key(const std::string &path, Password &password, KeyUse use = KeyUse::kSign);

/// The keys of a folder or of a file of PKCS #12, or the first one of another file.
[[nodiscard]] std::vector<KeyFile> load_keys(const std::string &path, Password &password);

/// How a key is written.
struct KeyForm {
    bool is_pkcs1 = false;
    bool is_der = false;
    std::string scheme =
        "pbes2";              ///< of PKCS #8, a name of seal_PKCS8() or "none"; of PKCS #1 "none" or another
    std::string cipher = {};  ///< empty for the default
    std::string prf = {};     ///< likewise
    uint32_t iterations = 0;  ///< likewise
};

/// A key without its secret numbers, and how its file holds it.
[[nodiscard]] Json describe_key_file(const KeyFile &key);

/// What a key's own file says. Throws Failure when no file of that form is written.
[[nodiscard]] KeyForm form_of(const KeyFile &key);

/// Writes a key to a file that is its owner's alone. Throws Failure, also for a file that exists unless
/// `replaces` is set, and for a key that the form cannot hold.
void write_key(const P8_PRIV_KEY_INFO *info, const KeyForm &form, Password &password, const std::string &path,
               bool replaces);

}  // namespace tool
