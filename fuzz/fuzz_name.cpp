// Compares, digests and prints the names that decode.
#include "reencode.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    X509_NAME *name = fuzz::decode(data, size, Seq_to_X509_NAME);
    if (name == nullptr) return 0;
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    const bool empty = get_X509_NAME_count(name) == 0;
    fuzz::require(get_X509_NAME_hash(name, TLX_DIGEST_SHA1, digest) == (empty ? 0xFFFFFFFF : 20));
    fuzz::require(cmp_X509_NAME(name, name) == 0);
    tlx_free(dump_X509_NAME(name));
    if (!empty) {
        const X509_NAME_CHILD *first = get_X509_NAME_CHILD(name, 0);
        fuzz::require(get_X509_NAME_index_by_OID(name, get_X509_NAME_CHILD_OID(first), -1) == 0);
    }
    fuzz::check_reencoding(name, Seq_to_X509_NAME, X509_NAME_to_Seq, dup_X509_NAME, free_X509_NAME);
    return 0;
}
