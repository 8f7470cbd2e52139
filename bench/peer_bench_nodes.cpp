#include "peer_bench_nodes.hpp"

#include <openssl/asn1.h>
#include <openssl/asn1t.h>

namespace peer {
namespace {

ASN1_SEQUENCE_ANY *decode(const std::uint8_t *der, std::size_t size) {
    return d2i_ASN1_SEQUENCE_ANY(nullptr, &der, static_cast<long>(size));
}

void release(ASN1_SEQUENCE_ANY *values) {
    sk_ASN1_TYPE_pop_free(values, ASN1_TYPE_free);
}

}  // namespace

std::size_t build_integers(std::uint32_t count) {
    ASN1_SEQUENCE_ANY *values = sk_ASN1_TYPE_new_null();
    for (std::uint32_t i = 0; i < count; ++i) {
        ASN1_TYPE *value = ASN1_TYPE_new();
        ASN1_INTEGER *number = ASN1_INTEGER_new();
        ASN1_INTEGER_set_uint64(number, 1000000 + i);
        ASN1_TYPE_set(value, V_ASN1_INTEGER, number);
        sk_ASN1_TYPE_push(values, value);
    }
    unsigned char *der = nullptr;
    const int size = i2d_ASN1_SEQUENCE_ANY(values, &der);
    OPENSSL_free(der);
    release(values);
    return static_cast<std::size_t>(size);
}

std::uint32_t take_apart(const std::vector<std::uint8_t> &der) {
    ASN1_SEQUENCE_ANY *values = decode(der.data(), der.size());
    const int count = sk_ASN1_TYPE_num(values);
    release(values);
    return static_cast<std::uint32_t>(count);
}

std::uint32_t take_tree_apart(const std::uint8_t *der, std::size_t size) {
    ASN1_SEQUENCE_ANY *values = decode(der, size);
    std::uint32_t count = 1;
    for (int i = 0; i < sk_ASN1_TYPE_num(values); ++i) {
        const ASN1_TYPE *value = sk_ASN1_TYPE_value(values, i);
        if (value->type == V_ASN1_SEQUENCE) {
            count += take_tree_apart(value->value.sequence->data,
                                     static_cast<std::size_t>(value->value.sequence->length));
        } else {
            ++count;
        }
    }
    release(values);
    return count;
}

}  // namespace peer
