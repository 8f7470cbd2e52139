// RSA key files, RSA keys and the parameters of RSA schemes from hostile octets. A record that decodes is
// written, and the written octets decode to the same record.
#include <tlxpki.h>

#include <cstdlib>
#include <string>

#include "der/owned.hpp"

namespace {

using Node = tlx::Owned<ASN1_UNIT>;

void require(bool condition) {
    if (!condition) std::abort();
}

std::string octets_of(const ASN1_UNIT *node) {
    std::uint8_t *der = nullptr;
    const std::uint32_t size = ASN1_to_binary(node, &der);
    require(size != 0xFFFFFFFF);
    const std::string octets(reinterpret_cast<const char *>(der), size);
    tlx_free(der);
    return octets;
}

template <typename T>
struct Codec {
    T *(*make)();
    void (*free)(T *);
    std::uint32_t (*decode)(const ASN1_UNIT *, T **);
    std::uint32_t (*encode)(const T *, ASN1_UNIT **);

    /// The encoding of what the node decodes to; empty when it does not.
    [[nodiscard]] std::string round(const ASN1_UNIT *node) const {
        T *record = make();
        std::string octets;
        if (decode(node, &record) == 0) {
            ASN1_UNIT *out = nullptr;
            require(encode(record, &out) == 0);
            octets = octets_of(out);
            free_ASN1_UNIT(out);
        }
        free(record);
        return octets;
    }
    void check(const ASN1_UNIT *node) const {
        const std::string first = round(node);
        if (first.empty()) return;
        const Node again(decodeToDERSequence_n(reinterpret_cast<const std::uint8_t *>(first.data()),
                                               static_cast<std::uint32_t>(first.size())));
        const std::string second = round(again.get());
        // The encoder omits a missing field, and the decoder then refuses the parameters.
        require(second == first || (second.empty() && getSequenceChildNum(again.get()) != 3));
        T *none = nullptr;
        decode(node, &none);
        free(none);
    }
};

void check_file(const char *text, std::int32_t size) {
    RSA_UNIT *unit = new_RSA_UNIT();
    if (readPKCS1_from_Binary(unit, "password", 8, text, size) == 0) {
        char *written = nullptr;
        const bool is_private = get_RSA_UNIT_kind(unit) == TLX_RSA_PRIVATE;
        require((is_private ? writePKCS1PrivateKey_to_Binary(unit, nullptr, 0, &written)
                            : writePKCS1PublicKey_to_Binary(unit, nullptr, &written)) == 0);
        const auto length = static_cast<std::int32_t>(std::string(written).size());
        require(readPKCS1_from_Binary(unit, nullptr, 0, written, length) == 0);
        tlx_free(written);
    }
    free_RSA_UNIT(unit);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    check_file(reinterpret_cast<const char *>(data), static_cast<std::int32_t>(size));
    const Node node(decodeToDERSequence_n(data, static_cast<std::uint32_t>(size)));
    if (!node) return 0;
    Codec<PKCS1_RSA_PUBLIC_KEY>{new_PKCS1_RSA_PUBLIC_KEY, free_PKCS1_RSA_PUBLIC_KEY,
                                Seq_to_PKCS1_RSA_PUBLIC_KEY, PKCS1_RSA_PUBLIC_KEY_to_Seq}
        .check(node.get());
    Codec<PKCS1_RSA_PRIVATE_KEY>{new_PKCS1_RSA_PRIVATE_KEY, free_PKCS1_RSA_PRIVATE_KEY,
                                 Seq_to_PKCS1_RSA_PRIVATE_KEY, PKCS1_RSA_PRIVATE_KEY_to_Seq}
        .check(node.get());
    Codec<RSASSA_PSS_PARAM>{new_RSASSA_PSS_PARAM, free_RSASSA_PSS_PARAM, Seq_to_RSASSA_PSS_PARAM,
                            RSASSA_PSS_PARAM_to_Seq}
        .check(node.get());
    Codec<RSAES_OAEP_PARAM>{new_RSAES_OAEP_PARAM, free_RSAES_OAEP_PARAM, Seq_to_RSAES_OAEP_PARAM,
                            RSAES_OAEP_PARAM_to_Seq}
        .check(node.get());
    return 0;
}
