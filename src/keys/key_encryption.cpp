#include "keys/key_encryption.hpp"

using namespace tlx;

namespace {

/// What the word `scheme` of a container says of a scheme.
u32 scheme_word(PbeFamily family) noexcept {
    if (family == PbeFamily::pbes2) return TLX_P8_SCHEME_PBES2;
    return family < PbeFamily::pbes1 ? TLX_P8_SCHEME_NATIONAL : TLX_P8_SCHEME_PBES1;
}

}  // namespace

SealOutcome tlx::encrypt_key_info(const P8_PRIV_KEY_INFO &info, const PbeChoice &choice,
                                  const PbePassword &password, P8_ENCRYPTED_KEY **out) noexcept {
    SecretEncoder key;
    Codec<P8_PRIV_KEY_INFO>::encode(key, &info);
    if (!key.ok()) return SealOutcome::not_encoded;
    Owned<PKCS8> container(new_PKCS8());
    if (!container) return SealOutcome::no_memory;
    container->encryptionAlgorithm = new_X509_ALGO_IDENTIFIER();
    if (container->encryptionAlgorithm == nullptr) return SealOutcome::no_memory;
    container->encryptedData =
        encrypt_pbe(choice, password, key.bytes(), *container->encryptionAlgorithm).release();
    if (container->encryptedData == nullptr) return SealOutcome::no_memory;
    container->scheme = scheme_word(choice.algorithm.family);
    deliver(std::move(container), out);
    return SealOutcome::done;
}
