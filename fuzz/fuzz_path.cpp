// Chains of certificates: a first octet of choices, then certificates, each after two octets of length. The
// first is the target, the last the anchor's. The target builds a path over the rest and validates that path
// and the chain itself. A choice signs the certificates anew before, so that signatures do not hide the other
// steps.

#include "../tests/support/held.hpp"
#include "../tests/support/policy_tree.hpp"
#include "require.hpp"

namespace {

using fuzz::require;

using tlx_test::Held;
using Certificates = Held<free_X509_CERTIFICATES>;

enum Choice : std::uint8_t {
    sign_anew = 1,
    explicit_policy = 2,
    policies = 4,
    any_policy = 8,
    large_pool = 16
};

X509_CERT *at(const Certificates &chain, std::uint32_t i) {
    return get_X509_CERTIFICATES_child(chain.get(), static_cast<std::int32_t>(i));
}

struct Key {
    Held<free_ASYMMETRIC_KEY> secret{new_ASYMMETRIC_KEY()};
    Held<free_X509_PUBKEY> open{new_X509_PUBKEY()};
    Key() {
        const Held<free_RSA_UNIT> unit(new_RSA_UNIT());
        require(gen_RSA_UNIT(unit.get(), 512, 65537) == 0);
        set_ASYMMETRIC_KEY(secret.get(), TLX_KEY_RSA, unit.get());
        set_X509_PUBKEY_rsa(open.get(), unit.get());
    }
};

/// Gives every certificate a key of ours, and a signature with that of the one after it, or with its own.
void sign(const Certificates &chain) {
    static const Key keys[2];
    static const Held<free_OBJECT_IDENTIFIER> algorithm(get_OBJECT_IDENTIFIER("RSA-SHA256", 0));
    const std::uint32_t count = get_X509_CERTIFICATES_count(chain.get());
    for (std::uint32_t i = 0; i < count; ++i) {
        X509_CERT *cert = at(chain, i);
        const bool self_issued = is_selfSigned(cert) == 0 || i + 1 == count;
        set_X509_pub_key(cert, keys[i % 2].open.get());
        set_X509_signature(cert, algorithm.get());
        gen_SIG_X509_Cert(cert, keys[(self_issued ? i : i + 1) % 2].secret.get());
    }
}

Certificates read_chain(const std::uint8_t *data, std::size_t size) {
    Certificates chain(new_X509_CERTIFICATES());
    while (size >= 2) {
        std::size_t length = static_cast<std::size_t>(data[0]) << 8 | data[1];
        data += 2;
        size -= 2;
        if (length > size) length = size;
        void *cert = nullptr;
        if (readDER_from_Buffer(&cert, TLX_DECODER(Seq_to_X509_CERT), data,
                                static_cast<std::uint32_t>(length)) == 0)
            push_STACK_value(chain.get(), cert);
        data += length;
        size -= length;
    }
    return chain;
}

void validate(const X509_CERTIFICATES *path, std::uint8_t choices, const CPV_SETTINGS &settings) {
    Held<free_OBJECT_IDENTIFIERS> user(new_OBJECT_IDENTIFIERS());
    for (const char *policy : {"1.2.3.9", "1.2.3.1", "2.5.29.32.0"})
        if ((choices & any_policy) != 0 || policy[0] == '1')
            push_STACK_value(user.get(), tlx_test::string_of(TLX_TAG_OBJECT_IDENTIFIER, policy).release());
    node_LIST *tree = nullptr;
    std::int32_t stopped_at = -2;
    const std::uint32_t status = validate_certpath_ex(path, (choices & policies) != 0 ? user.get() : nullptr,
                                                      &tree, &settings, &stopped_at);
    const Held<free_node_LIST> owner(tree);
    require((status == 0) == (tree != nullptr));
    require(stopped_at >= -1 && stopped_at < static_cast<std::int32_t>(get_X509_CERTIFICATES_count(path)));
    require(status != 0 || stopped_at == -1);
    require(tlx_test::text_of_tree(tree).find('?') == std::string::npos);
}

std::uint32_t build(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors, const X509_CERT *target,
                    const CPV_SETTINGS &settings, Certificates &path) {
    X509_CERTIFICATES *made = nullptr;
    const std::uint32_t status = build_certPath_ex(pool, anchors, target, &made, &settings);
    path.reset(made);
    require((status == 0) == (made != nullptr));
    const std::uint32_t count = get_X509_CERTIFICATES_count(made);
    require(status != 0 || count >= 1);
    require(static_cast<std::int32_t>(count) <= settings.max_certificatePath_length + 2);
    for (std::uint32_t i = 0; i < count; ++i)
        require((is_selfSigned(at(path, i)) == 0) == (i + 1 == count));
    return status;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) return 0;
    const std::uint8_t choices = data[0];
    const Certificates chain = read_chain(data + 1, size - 1);
    const std::uint32_t count = get_X509_CERTIFICATES_count(chain.get());
    if (count == 0) return 0;
    if ((choices & sign_anew) != 0) sign(chain);

    static const Held<free_ASN1_TIME> time(charToASN1_TIME("2024-06-01,00:00:00"));
    const CPV_SETTINGS settings = {time.get(), 0, (choices & explicit_policy) != 0 ? 1U : 0U,
                                   static_cast<std::int32_t>(choices >> 5)};
    const Held<free_TRUST_ANCHORS> anchors(new_TRUST_ANCHORS());
    const Held<free_TRUST_ANCHOR> anchor(create_TRUST_ANCHOR_from_X509_CERT(at(chain, count - 1)));
    add_TRUST_ANCHORS(anchors.get(), anchor.get());

    const X509_CERT *target = at(chain, 0);
    Certificates path;
    const std::uint32_t status = build(chain.get(), anchors.get(), target, settings, path);
    if (status == 0) validate(path.get(), choices, settings);
    validate(chain.get(), choices, settings);
    if ((choices & large_pool) != 0 && count <= 8) {
        // Repeated certificates change nothing, but make the pool large enough for an index.
        const Certificates pool(dup_X509_CERTIFICATES(chain.get()));
        for (std::uint32_t i = 0; get_X509_CERTIFICATES_count(pool.get()) < 300; ++i)
            add_X509_CERTIFICATES(pool.get(), at(chain, i % count));
        Certificates other;
        require(build(pool.get(), anchors.get(), target, settings, other) == status);
        for (std::uint32_t i = 0; status == 0 && i < get_X509_CERTIFICATES_count(path.get()); ++i)
            require(cmp_X509_CERT(at(path, i), at(other, i)) == 0);
    }
    return 0;
}
