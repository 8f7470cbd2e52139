#include "support/chain_builder.hpp"

#include <gtest/gtest.h>
#include <tlxpki.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <map>

#include "support/der_text.hpp"
#include "support/x509_files.hpp"
#include "x509/extension_records.hpp"

namespace tlx_test {
namespace {

using Rsa = std::unique_ptr<RSA_UNIT, tlx::FreeWith<free_RSA_UNIT>>;
using Time = std::unique_ptr<ASN1_TIME, tlx::FreeWith<free_ASN1_TIME>>;
using Oid = tlx::Owned<OBJECT_IDENTIFIER>;

void expect_done(std::uint32_t status, const std::string &what) {
    EXPECT_EQ(status, 0U) << "while making a test certificate: " << what;
}

Oid oid_of(const char *dotted) {
    return Oid(string_of(TLX_TAG_OBJECT_IDENTIFIER, dotted).release());
}

Rsa read_rsa(unsigned number) {
    Rsa unit(new_RSA_UNIT());
    const std::string path = TLX_TEST_DATA "/keys/rsa-" + std::to_string(number) + ".pem";
    expect_done(readPKCS1_from_File(unit.get(), nullptr, 0, path.c_str()), path);
    return unit;
}

struct KeyPair {
    tlx::Owned<ASYMMETRIC_KEY> secret{new_ASYMMETRIC_KEY()};
    tlx::Owned<X509_PUBKEY> open{new_X509_PUBKEY()};
};

const KeyPair &key_pair(unsigned number) {
    static const auto pairs = [] {
        std::array<KeyPair, kRsaKeys + 1> made;
        for (unsigned i = 0; i < kRsaKeys; ++i) {
            const auto unit = read_rsa(i);
            expect_done(set_ASYMMETRIC_KEY(made[i].secret.get(), TLX_KEY_RSA, unit.get()) |
                            set_X509_PUBKEY_rsa(made[i].open.get(), unit.get()),
                        "RSA key");
        }
        const Kcdsa unit = kcdsa_key("A1024B160HAS160");
        expect_done(set_ASYMMETRIC_KEY(made[kKcdsaKey].secret.get(), TLX_KEY_KCDSA, unit.get()) |
                        set_X509_PUBKEY_kcdsa(made[kKcdsaKey].open.get(), unit.get()),
                    "KCDSA key");
        return made;
    }();
    return pairs.at(number);
}

/// C=KR and a common name, in the notation of der_text.hpp.
std::string name_text(const std::string &common_name) {
    const auto *octets = reinterpret_cast<const std::uint8_t *>(common_name.data());
    std::string digits = hex_of(octets, common_name.size());
    std::erase(digits, ' ');
    return "30{31{30{06:550406 13:4B52}} 31{30{06:550403 0C:" + digits + "}}}";
}

void set_name(X509_CERT *cert, const std::string &common_name,
              std::uint32_t (*set)(X509_CERT *, const X509_NAME *)) {
    X509_NAME *name = nullptr;
    expect_done(Seq_to_X509_NAME(der_node(name_text(common_name)).get(), &name), common_name);
    expect_done(set(cert, tlx::OwnedName(name).get()), common_name);
}

void set_time(X509_CERT *cert, const std::string &text,
              std::uint32_t (*set)(X509_CERT *, const X509_TIME *)) {
    const Time calendar(charToASN1_TIME(text.c_str()));
    const tlx::Owned<X509_TIME> time(new_X509_TIME());
    expect_done(set_X509_TIME(time.get(), calendar.get()) | set(cert, time.get()), text);
}

void set_extensions(X509_CERT *cert, const std::vector<ExtensionSpec> &specs) {
    const tlx::OwnedExtensions list(new_X509_EXTENSIONS());
    for (const ExtensionSpec &spec : specs) {
        const String data = string_of(TLX_TAG_OCTET_STRING, spec.value);
        const tlx::Owned<X509_EXTENSION> extension(create_X509_EXTENSION_by_OID(
            nullptr, oid_of(spec.id.c_str()).get(), spec.critical ? 0xFF : 0, data.get()));
        expect_done(add_X509_EXTENSION(list.get(), extension.get(), -1), spec.id);
    }
    expect_done(set_X509_extensions(cert, list.get()), "extensions");
}

}  // namespace

Kcdsa kcdsa_key(const std::string &section) {
    std::map<char, Number> numbers;
    std::ifstream file(TLX_TEST_DATA "/kcdsa.txt");
    bool found = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("[")) found = line == "[" + section + "]";
        if (found && line.size() > 4 && line.substr(1, 3) == " = ")
            numbers[line[0]] = number_of(line.c_str() + 4);
    }
    Kcdsa unit(new_KCDSA());
    expect_done(set_KCDSA_params(unit.get(), numbers['p'].get(), numbers['q'].get(), numbers['g'].get()) |
                    set_KCDSA_public(unit.get(), numbers['y'].get()) |
                    set_KCDSA_private(unit.get(), numbers['x'].get()),
                "KCDSA key");
    return unit;
}

const ASYMMETRIC_KEY *signing_key(unsigned number) {
    return key_pair(number).secret.get();
}

CertSpec &CertSpec::set(const char *id, Octets value, bool critical) {
    without(id);
    extensions->push_back({id, std::move(value), critical});
    return *this;
}

CertSpec &CertSpec::with(const char *id, std::string_view value, bool critical) {
    return set(id, der(value), critical);
}

CertSpec &CertSpec::with(const AuthorityKeyId &authority) {
    std::string members;
    if (!authority.key_id.empty()) members += "80:" + authority.key_id + " ";
    if (!authority.issuer.empty()) members += "A1{A4{" + name_text(authority.issuer) + "}}";
    if (!authority.serial.empty()) members += "82:" + authority.serial;
    return with(extension::kAuthorityKeyId, "30{" + members + "}");
}

CertSpec &CertSpec::policies(const std::vector<const char *> &dotted, bool critical) {
    const std::unique_ptr<CERTIFICATE_POLICIES, tlx::FreeWith<free_CERTIFICATE_POLICIES>> list(
        new_CERTIFICATE_POLICIES());
    for (const char *each : dotted) {
        const tlx::Owned<POLICY_INFO> info(new_POLICY_INFO());
        info->policyIdentifier = oid_of(each).release();
        expect_done(add_CERTIFICATE_POLICIES_child(list.get(), info.get(), -1), each);
    }
    return set(extension::kPolicies, encoding_of(list.get(), TLX_ENCODER(CERTIFICATE_POLICIES_to_Seq)),
               critical);
}

CertSpec &CertSpec::without(const char *id) {
    if (!extensions) extensions.emplace();
    std::erase_if(*extensions, [id](const ExtensionSpec &each) { return each.id == id; });
    return *this;
}

Cert CertSpec::make() const {
    Cert cert(new_X509_CERT());
    expect_done(set_X509_version(cert.get(), version), "version");
    expect_done(set_X509_serial(cert.get(), number_of(serial.c_str()).get()), "serial");
    set_name(cert.get(), subject, set_X509_subject);
    set_name(cert.get(), issuer, set_X509_issuer);
    set_time(cert.get(), not_before, set_X509_notBefore);
    set_time(cert.get(), not_after, set_X509_notAfter);
    expect_done(set_X509_pub_key(cert.get(), key_pair(key).open.get()), "key");
    if (extensions) set_extensions(cert.get(), *extensions);
    const Oid algorithm(get_OBJECT_IDENTIFIER(signer == kKcdsaKey ? "HAS160withKCDSA1" : "RSA-SHA256", 0));
    expect_done(set_X509_signature(cert.get(), algorithm.get()), "algorithm");
    if (is_signed) expect_done(gen_SIG_X509_Cert(cert.get(), signing_key(signer)), "signature of " + subject);
    return cert;
}

Chain valid_chain(unsigned length) {
    Chain chain(length);
    for (unsigned i = 0; i < length; ++i) {
        const unsigned depth = length - 1 - i;
        const auto name_at = [length](unsigned at) {
            return at == 0 ? "Root" : at + 1 == length ? "User" : "CA " + std::to_string(at);
        };
        const auto number_at = [](unsigned at) {
            const auto octet = static_cast<std::uint8_t>(at + 1);
            return hex_of(&octet, 1);
        };
        const unsigned above = depth == 0 ? 0 : depth - 1;
        CertSpec &spec = chain[i];
        spec.subject = name_at(depth);
        spec.issuer = name_at(above);
        spec.serial = number_at(depth);
        spec.key = depth % kRsaKeys;
        spec.signer = above % kRsaKeys;
        spec.with(extension::kSubjectKeyId, "04:" + number_at(depth));
        spec.with({.key_id = number_at(above), .issuer = {}, .serial = {}});
        spec.policies({kPolicy});
        if (depth + 1 == length && length > 1) {
            spec.with(extension::kKeyUsage, "03:0780", true);
        } else {
            spec.with(extension::kKeyUsage, "03:0106", true);
            spec.with(extension::kBasicConstraints, "30{01:FF}", true);
        }
    }
    return chain;
}

Certificates make(const Chain &chain) {
    Certificates path(new_X509_CERTIFICATES());
    for (const CertSpec &spec : chain)
        expect_done(add_X509_CERTIFICATES(path.get(), spec.make().get()), spec.subject);
    return path;
}

Anchors anchors_of(const Chain &certificates) {
    Anchors anchors(new_TRUST_ANCHORS());
    for (const CertSpec &spec : certificates) {
        const tlx::Owned<TRUST_ANCHOR> anchor(create_TRUST_ANCHOR_from_X509_CERT(spec.make().get()));
        expect_done(add_TRUST_ANCHORS(anchors.get(), anchor.get()), spec.subject);
    }
    return anchors;
}

Policies policy_list(const std::vector<const char *> &dotted) {
    Policies list(new_OBJECT_IDENTIFIERS());
    for (const char *each : dotted)
        expect_done(push_STACK_value(list.get(), oid_of(each).release()), each);
    return list;
}

std::string subjects_of(const X509_CERTIFICATES *path) {
    std::string subjects;
    for (std::uint32_t i = 0; i < get_X509_CERTIFICATES_count(path); ++i) {
        const X509_NAME *name =
            get_X509_subject(get_X509_CERTIFICATES_child(path, static_cast<std::int32_t>(i)));
        if (i > 0) subjects += ", ";
        subjects += tlx::text_of(get_X509_NAME_CHILD(name, 1)->data);
    }
    return subjects;
}

std::string text_of_policies(const OBJECT_IDENTIFIERS *list) {
    if (list == nullptr) return "null";
    std::string text;
    for (std::uint32_t i = 0; i < get_OBJECT_IDENTIFIERS_count(list); ++i) {
        if (i > 0) text += ' ';
        text += tlx::text_of(get_OBJECT_IDENTIFIERS_child(list, static_cast<std::int32_t>(i)));
    }
    return text;
}

std::string text_of_tree(const node_LIST *tree) {
    if (tree == nullptr) return "null";
    if (tree->depth < 0) return tree->nodes == nullptr && tree->next == nullptr ? "no levels" : "broken head";
    std::string text;
    const VALID_POLICY_NODES *above = nullptr;
    for (const node_LIST *level = tree; level != nullptr; level = level->next) {
        if (!text.empty()) text += "; ";
        text += std::to_string(level->depth) + ":";
        if (level->marker != TLX_NODE_LIST_MARKER) text += " unmarked";
        if (level->nodes == nullptr) text += " null";
        for (std::uint32_t i = 0; i < get_STACK_count(level->nodes); ++i) {
            auto *node = static_cast<VALID_POLICY_NODE *>(get_STACK_value(level->nodes, i));
            text += ' ' + std::string(tlx::text_of(node->data->valid_policy));
            if (node->data->criticality_indicator != 0 && level != tree) text += '!';
            if (text_of_policies(node->data->expected_policy_set) != tlx::text_of(node->data->valid_policy))
                text += " expecting " + text_of_policies(node->data->expected_policy_set);
            std::int32_t children = 0;
            for (std::uint32_t k = 0; level->next != nullptr && k < get_STACK_count(level->next->nodes); ++k)
                children +=
                    static_cast<VALID_POLICY_NODE *>(get_STACK_value(level->next->nodes, k))->parent == node;
            if (children != node->child_count) text += " counting " + std::to_string(node->child_count);
            bool has_parent = above == nullptr && node->parent == nullptr;
            for (std::uint32_t k = 0; k < get_STACK_count(above); ++k)
                has_parent = has_parent || get_STACK_value(above, k) == node->parent;
            if (!has_parent) text += " orphan";
        }
        above = level->nodes;
    }
    return text;
}

}  // namespace tlx_test
