// RSA key files, RSA keys and the parameters of RSA schemes from hostile octets. What decodes is written, and
// what was written decodes to the same again.
#include "values.hpp"

namespace {

void check_file(const char *text, std::int32_t size) {
    RSA_UNIT *unit = new_RSA_UNIT();
    if (readPKCS1_from_Binary(unit, "password", 8, text, size) == 0) {
        char *written = nullptr;
        const bool is_private = get_RSA_UNIT_kind(unit) == TLX_RSA_PRIVATE;
        fuzz::require((is_private ? writePKCS1PrivateKey_to_Binary(unit, nullptr, 0, &written)
                                  : writePKCS1PublicKey_to_Binary(unit, nullptr, &written)) == 0);
        const auto length = static_cast<std::int32_t>(std::string(written).size());
        fuzz::require(readPKCS1_from_Binary(unit, nullptr, 0, written, length) == 0);
        tlx_free(written);
    }
    free_RSA_UNIT(unit);
}

/// Parameters without a field are written without it, and then refused.
template <typename T>
void check_parameters(T *record, std::uint32_t (*decoder)(const ASN1_UNIT *, T **),
                      std::uint32_t (*encoder)(const T *, ASN1_UNIT **), T *(*dup)(const T *),
                      void (*free)(T *)) {
    if (record == nullptr) return;
    const std::string encoding = fuzz::encode(record, encoder);
    if (getSequenceChildNum(fuzz::node_of(encoding.data(), encoding.size()).get()) != 3) return free(record);
    fuzz::check_reencoding(record, decoder, encoder, dup, free);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    check_file(reinterpret_cast<const char *>(data), static_cast<std::int32_t>(size));
    TLX_FUZZ(PKCS1_RSA_PUBLIC_KEY)
    TLX_FUZZ(PKCS1_RSA_PRIVATE_KEY)
    check_parameters(fuzz::decode(data, size, Seq_to_RSASSA_PSS_PARAM), Seq_to_RSASSA_PSS_PARAM,
                     RSASSA_PSS_PARAM_to_Seq, dup_RSASSA_PSS_PARAM, free_RSASSA_PSS_PARAM);
    check_parameters(fuzz::decode(data, size, Seq_to_RSAES_OAEP_PARAM), Seq_to_RSAES_OAEP_PARAM,
                     RSAES_OAEP_PARAM_to_Seq, dup_RSAES_OAEP_PARAM, free_RSAES_OAEP_PARAM);
    return 0;
}
