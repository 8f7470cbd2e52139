// Writes the certificate chains in tests/data/chains: a root, licensed CAs and users in the style of Korean
// practice, with RSA and KCDSA keys that are thrown away afterwards, but for one of KCDSA that guards
// nothing. Result by scripts/make-chains.
#include <tlxpki.h>

#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "owned.hpp"

namespace {

using tool::made;
using tool::must;
using tool::Owned;

using Name = Owned<X509_NAME, free_X509_NAME>;
using Key = Owned<ASYMMETRIC_KEY, free_ASYMMETRIC_KEY>;
using GeneralName = Owned<GENERAL_NAME, free_GENERAL_NAME>;
using GeneralNames = Owned<GENERAL_NAMES, free_GENERAL_NAMES>;
using Bmp = Owned<BMP_STRING, free_BMP_STRING>;

constexpr char kCommonPolicy[] = "1.2.410.200004.5.9.1.1";
constexpr char kBankPolicy[] = "1.2.410.200005.1.1.1";
constexpr char kAnyPolicy[] = "2.5.29.32.0";
constexpr char kPracticeStatement[] = "http://www.examplesign.example/cps.html";

tool::Oid oid_of(const char *text) {
    auto oid = made<tool::Oid>(new_OBJECT_IDENTIFIER());
    must(set_ASN1_STRING_value(oid.get(), TLX_TAG_OBJECT_IDENTIFIER, text,
                               static_cast<uint32_t>(std::string_view(text).size())));
    return oid;
}

tool::Oid oid_named(const char *name) {
    return made<tool::Oid>(get_OBJECT_IDENTIFIER(name, 0));
}

/// UTF-8 as a BMPString, by way of Korean double-octet text.
Bmp to_bmp(const std::string &utf8) {
    const auto source = made<Owned<UTF8_STRING, free_UTF8_STRING>>(new_UTF8_STRING());
    must(set_ASN1_STRING_value(source.get(), TLX_TAG_UTF8_STRING, utf8.data(),
                               static_cast<uint32_t>(utf8.size())));
    char *korean = nullptr;
    if (utf8ToCP949(source.get(), &korean) == 0) throw std::runtime_error("no Korean text: " + utf8);
    const tool::Text korean_owner(korean);
    BMP_STRING *bmp = nullptr;
    if (cp949ToBMP(korean, &bmp) == 0) throw std::bad_alloc();
    return Bmp(bmp);
}

struct Attribute {
    const char *type;
    int32_t string_type;
    std::string value;
};

Name name_of(std::initializer_list<Attribute> attributes) {
    auto name = made<Name>(new_X509_NAME());
    for (const Attribute &attribute : attributes) {
        const tool::Oid type = oid_named(attribute.type);
        if (attribute.string_type == TLX_TAG_BMP_STRING) {
            const Bmp bmp = to_bmp(attribute.value);
            must(add_X509_NAME_child_OID(name.get(), type.get(), TLX_TAG_BMP_STRING, bmp->data, bmp->length,
                                         -1));
        } else {
            must(add_X509_NAME_child_OID(name.get(), type.get(), attribute.string_type,
                                         attribute.value.data(), static_cast<int32_t>(attribute.value.size()),
                                         -1));
        }
    }
    return name;
}

Key new_rsa_key() {
    const auto unit = made<tool::RsaKey>(new_RSA_UNIT());
    must(gen_RSA_UNIT(unit.get(), 2048, 65537));
    auto key = made<Key>(new_ASYMMETRIC_KEY());
    must(set_ASYMMETRIC_KEY(key.get(), TLX_KEY_RSA, unit.get()));
    return key;
}

/// Signatures in certificates take a q of 160 bits, which goes with a p of 1024.
Key new_kcdsa_key() {
    const auto unit = made<Owned<KCDSA, free_KCDSA>>(new_KCDSA());
    must(gen_KCDSA_params(unit.get(), 1024, 160, TLX_DIGEST_HAS160));
    must(gen_KCDSA_key(unit.get()));
    auto key = made<Key>(new_ASYMMETRIC_KEY());
    must(set_ASYMMETRIC_KEY(key.get(), TLX_KEY_KCDSA, unit.get()));
    return key;
}

class Extensions {
  public:
    Extensions() : list_(made<Owned<X509_EXTENSIONS, free_X509_EXTENSIONS>>(new_X509_EXTENSIONS())) {}

    template <typename T>
    void add(const char *name, bool critical, const T *record, uint32_t (*encoder)(const T *, ASN1_UNIT **)) {
        const tool::Oid oid = oid_named(name);
        const auto extension =
            made<Owned<X509_EXTENSION, free_X509_EXTENSION>>(create_X509_EXTENSION_record_by_OID(
                nullptr, oid.get(), critical ? 0xFF : 0, record, TLX_ENCODER(encoder)));
        must(add_X509_EXTENSION(list_.get(), extension.get(), -1));
    }
    [[nodiscard]] const X509_EXTENSIONS *get() const { return list_.get(); }

  private:
    Owned<X509_EXTENSIONS, free_X509_EXTENSIONS> list_;
};

/// A name, its key and, once it is issued, its certificate.
struct Party {
    Name name;
    Key key;
    tool::Certificate cert;
};

struct Policy {
    const char *oid;
    std::string notice;  ///< Korean text to be shown; may be empty
};

struct Profile {
    uint32_t serial;
    bool is_ca;
    std::vector<Policy> policies;
    std::string real_name;  ///< of the identity data; empty for none
    int32_t last_year = 2049;
};

X509_PUBKEY *public_key_of(const ASYMMETRIC_KEY *key, X509_PUBKEY *out) {
    must(key->kind == TLX_KEY_RSA ? set_X509_PUBKEY_rsa(out, static_cast<const RSA_UNIT *>(key->key))
                                  : set_X509_PUBKEY_kcdsa(out, static_cast<const KCDSA *>(key->key)));
    return out;
}

void add_policies(Extensions &extensions, const std::vector<Policy> &policies) {
    if (policies.empty()) return;
    const auto list =
        made<Owned<CERTIFICATE_POLICIES, free_CERTIFICATE_POLICIES>>(new_CERTIFICATE_POLICIES());
    for (const Policy &policy : policies) {
        const auto info = made<Owned<POLICY_INFO, free_POLICY_INFO>>(new_POLICY_INFO());
        info->policyIdentifier = oid_of(policy.oid).release();
        info->policyQualifiers = new_POLICY_QUALIFIER_INFOS();
        using Qualifier = Owned<POLICY_QUALIFIER_INFO, free_POLICY_QUALIFIER_INFO>;
        const auto cps = made<Qualifier>(create_POLICY_QUALIFIER_INFO_cPSuri(kPracticeStatement));
        must(add_POLICY_QUALIFIER_INFOS_child(info->policyQualifiers, cps.get(), -1));
        if (!policy.notice.empty()) {
            const auto notice = made<Owned<USER_NOTICE, free_USER_NOTICE>>(new_USER_NOTICE());
            notice->explicitText = to_bmp(policy.notice).release();
            const auto qualifier = made<Qualifier>(create_POLICY_QUALIFIER_INFO_userNotice(notice.get()));
            must(add_POLICY_QUALIFIER_INFOS_child(info->policyQualifiers, qualifier.get(), -1));
        }
        must(add_CERTIFICATE_POLICIES_child(list.get(), info.get(), -1));
    }
    extensions.add("certificatePolicies", true, list.get(), CERTIFICATE_POLICIES_to_Seq);
}

/// The identity of a person: the name, and a digest that stands for a number that is not told.
void add_identity(Extensions &extensions, const std::string &real_name) {
    if (real_name.empty()) return;
    uint8_t secret[32];
    must(RAND_BYTES(secret, sizeof secret));
    uint8_t virtual_id[TLX_DIGEST_MAX_LENGTH];
    uint32_t size = 0;
    must(Digest(TLX_DIGEST_SHA256, secret, sizeof secret, virtual_id, &size));
    const tool::Oid hash = oid_named("SHA256");
    const auto data = made<Owned<KISA_IDENTIFY_DATA, free_KISA_IDENTIFY_DATA>>(
        create_KISA_IDENTIFY_DATA(real_name.c_str(), hash.get(), virtual_id, size));
    const auto names = made<GeneralNames>(new_GENERAL_NAMES());
    must(add_GENERAL_NAMES_child(
        names.get(), made<GeneralName>(create_GENERAL_NAME_KISA_IDENTIFY_DATA(data.get())).get(), -1));
    must(add_GENERAL_NAMES_child(
        names.get(),
        made<GeneralName>(create_GENERAL_NAME(TLX_GENERAL_NAME_RFC822_NAME, "hong@examplesign.example", -1))
            .get(),
        -1));
    extensions.add("subjectAltName", false, names.get(), GENERAL_NAMES_to_Seq);
}

void add_where_to_ask(Extensions &extensions) {
    const auto points = made<Owned<CRL_DIST_POINTS, free_CRL_DIST_POINTS>>(new_CRL_DIST_POINTS());
    const auto point = made<Owned<DIST_POINT, free_DIST_POINT>>(create_DIST_POINT_uri(
        "ldap://dirsys.examplesign.example:389/cn=s1dp1p1,ou=crldp,ou=AccreditedCA,o=ExampleSign,c=KR"));
    must(add_CRL_DIST_POINTS_child(points.get(), point.get(), -1));
    extensions.add("crlDistributionPoints", false, points.get(), CRL_DIST_POINTS_to_Seq);

    const auto list =
        made<Owned<AUTHORITY_INFO_ACCESS, free_AUTHORITY_INFO_ACCESS>>(new_AUTHORITY_INFO_ACCESS());
    const auto access = made<Owned<ACCESS_DESCRIPTION, free_ACCESS_DESCRIPTION>>(new_ACCESS_DESCRIPTION());
    access->accessMethod = oid_named("OCSP").release();
    access->accessLocation =
        create_GENERAL_NAME(TLX_GENERAL_NAME_URI, "http://ocsp.examplesign.example:4612", -1);
    must(add_AUTHORITY_INFO_ACCESS_child(list.get(), access.get(), -1));
    extensions.add("authorityInfoAccess", false, list.get(), AUTHORITY_INFO_ACCESS_to_Seq);
}

/// The extensions of a certificate; authority is null for a root.
Extensions extensions_of(const X509_PUBKEY *key, const X509_CERT *authority, const Profile &profile) {
    Extensions extensions;
    if (authority != nullptr) {
        const auto identifier = made<Owned<AUTHORITY_KEYID, free_AUTHORITY_KEYID>>(
            create_AUTHORITY_KEYID(authority, TLX_KEYID_KEY | TLX_KEYID_ISSUER_AND_SERIAL));
        extensions.add("authorityKeyIdentifier", false, identifier.get(), AUTHORITY_KEYID_to_Seq);
    }
    const auto subject_key = made<Owned<SUBJECT_KEYID, free_SUBJECT_KEYID>>(create_SUBJECT_KEYID(key));
    extensions.add("subjectKeyIdentifier", false, subject_key.get(), SUBJECT_KEYID_to_Seq);
    const uint32_t bits = profile.is_ca ? TLX_KEY_USAGE_KEY_CERT_SIGN | TLX_KEY_USAGE_CRL_SIGN
                                        : TLX_KEY_USAGE_DIGITAL_SIGNATURE | TLX_KEY_USAGE_NON_REPUDIATION;
    const auto usage = made<Owned<KEY_USAGE, free_KEY_USAGE>>(named_bits_to_BIT_STRING(bits));
    extensions.add("keyUsage", true, usage.get(), KEY_USAGE_to_Seq);
    if (profile.is_ca) {
        BASIC_CONSTRAINTS constraints{0xFF, nullptr};
        extensions.add<BASIC_CONSTRAINTS>("basicConstraints", true, &constraints, BASIC_CONSTRAINTS_to_Seq);
    }
    add_policies(extensions, profile.policies);
    add_identity(extensions, profile.real_name);
    if (authority != nullptr) add_where_to_ask(extensions);
    return extensions;
}

void set_validity(X509_CERT *cert, int32_t last_year) {
    const ASN1_TIME first{0, 0, 0, 1, 0, 120, 0, 0, 0};
    const ASN1_TIME last{59, 59, 23, 31, 11, last_year - 1900, 0, 0, 0};
    const auto time = made<Owned<X509_TIME, free_X509_TIME>>(new_X509_TIME());
    must(set_X509_TIME(time.get(), &first));
    must(set_X509_notBefore(cert, time.get()));
    must(set_X509_TIME(time.get(), &last));
    must(set_X509_notAfter(cert, time.get()));
}

/// A certificate for the subject; a root's issuer is itself.
tool::Certificate issue(const Party &issuer, const Party &subject, const Profile &profile) {
    auto cert = made<tool::Certificate>(new_X509_CERT());
    const auto serial = made<Owned<BIGINT, free_BIGINT>>(new_BIGINT());
    must(set_BIGINT_word(serial.get(), profile.serial));
    const tool::Oid algorithm =
        oid_named(issuer.key->kind == TLX_KEY_RSA ? "RSA-SHA256" : "HAS160withKCDSA1");
    const auto key = made<tool::PublicKey>(new_X509_PUBKEY());
    public_key_of(subject.key.get(), key.get());
    must(set_X509_version(cert.get(), 2));
    must(set_X509_serial(cert.get(), serial.get()));
    must(set_X509_signature(cert.get(), algorithm.get()));
    must(set_X509_issuer(cert.get(), issuer.name.get()));
    must(set_X509_subject(cert.get(), subject.name.get()));
    set_validity(cert.get(), profile.last_year);
    must(set_X509_pub_key(cert.get(), key.get()));
    must(set_X509_extensions(cert.get(), extensions_of(key.get(), issuer.cert.get(), profile).get()));
    must(gen_SIG_X509_Cert(cert.get(), issuer.key.get()));
    return cert;
}

/// Turns the last character of the subject's common name into its neighbour, "4" into "5", by one bit.
void flip_bit(X509_CERT *cert) {
    const ASN1_STRING *name = get_X509_NAME_CHILD_data(get_X509_NAME_CHILD(
        get_X509_subject(cert), static_cast<int32_t>(get_X509_NAME_count(get_X509_subject(cert)) - 1)));
    name->data[name->length - 1] ^= 1;
}

void write(const std::filesystem::path &folder, const char *file, const X509_CERT *cert) {
    constexpr std::string_view kLabel = "CERTIFICATE";
    const uint32_t size =
        writePEM_to_FILE(cert, TLX_ENCODER(X509_CERT_to_Seq), kLabel.data(),
                         static_cast<uint32_t>(kLabel.size()), (folder / file).string().c_str());
    if (size == 0xFFFFFFFF) throw std::runtime_error(std::string("cannot write ") + file);
}

void write_key(const std::filesystem::path &folder, const char *file, const ASYMMETRIC_KEY *key) {
    P8_PRIV_KEY_INFO *info = nullptr;
    must(gen_P8_PRIV_KEY_INFO(key, &info));
    const Owned<P8_PRIV_KEY_INFO, free_P8_PRIV_KEY_INFO> owner(info);
    const std::string path = (folder / file).string();
    if (TLX_WRITE_PEM_FILE(P8_PRIV_KEY_INFO, info, "PRIVATE KEY", path.c_str()) == 0xFFFFFFFF) {
        throw std::runtime_error(std::string("cannot write ") + file);
    }
}

Attribute utf8(const char *type, const char *value) {
    return {type, TLX_TAG_UTF8_STRING, value};
}
Attribute country() {
    return {"C", TLX_TAG_PRINTABLE_STRING, "KR"};
}

Party authority(const char *organization, const char *unit, const char *name, Key key) {
    return {name_of({country(), utf8("O", organization), utf8("OU", unit), utf8("CN", name)}), std::move(key),
            nullptr};
}

Party user(Attribute name, Key key) {
    return {name_of({country(), utf8("O", "ExampleSign"), utf8("OU", "AccreditedCA"), utf8("OU", "개인"),
                     std::move(name)}),
            std::move(key), nullptr};
}

/// Issues a certificate and makes it the subject's.
void certify(const Party &issuer, Party &subject, const Profile &profile) {
    subject.cert = issue(issuer, subject, profile);
}

void make_chains(const std::filesystem::path &folder) {
    constexpr char kRootOrganization[] = "Example PKI";
    constexpr char kRootUnit[] = "Korea Certification Authority Central";
    Party root = authority(kRootOrganization, kRootUnit, "Example RootCA 4", new_rsa_key());
    certify(root, root, {1, true, {{kAnyPolicy, ""}}, ""});
    write(folder, "root.pem", root.cert.get());

    Party impostor = authority(kRootOrganization, kRootUnit, "Example RootCA 4", new_rsa_key());
    certify(impostor, impostor, {2, true, {{kAnyPolicy, ""}}, ""});
    write(folder, "impostor-root.pem", impostor.cert.get());

    Party other = authority(kRootOrganization, kRootUnit, "Example RootCA 5", new_rsa_key());
    certify(other, other, {3, true, {{kAnyPolicy, ""}}, ""});
    write(folder, "other-root.pem", other.cert.get());

    Party ca = authority("ExampleSign", "AccreditedCA", "ExampleSign Class 2", new_rsa_key());
    certify(root, ca, {0x1001, true, {{kAnyPolicy, ""}}, ""});
    write(folder, "ca.pem", ca.cert.get());

    Party hong = user(utf8("CN", "홍길동(HONG GIL DONG)0001040200001234"), new_rsa_key());
    const std::vector<Policy> policies = {{kCommonPolicy, "이 인증서는 시험용 인증서입니다"},
                                          {kBankPolicy, ""}};
    certify(ca, hong, {0x20000001, false, policies, "홍길동"});
    write(folder, "user.pem", hong.cert.get());
    flip_bit(hong.cert.get());
    write(folder, "flipped.pem", hong.cert.get());
    certify(ca, hong, {0x20000002, false, policies, "홍길동", 2021});
    write(folder, "expired.pem", hong.cert.get());

    Party kcdsa_ca = authority("ExampleSign", "AccreditedCA", "ExampleSign KCDSA 1", new_kcdsa_key());
    certify(ca, kcdsa_ca, {0x1002, true, {{kCommonPolicy, ""}, {kBankPolicy, ""}}, ""});
    write(folder, "kcdsa-ca.pem", kcdsa_ca.cert.get());

    Party kim = user({"CN", TLX_TAG_BMP_STRING, "김철수(KIM CHUL SOO)0001040200005678"}, new_kcdsa_key());
    certify(kcdsa_ca, kim, {0x30000001, false, {{kBankPolicy, "이 인증서는 시험용 인증서입니다"}}, "김철수"});
    write(folder, "kcdsa-user.pem", kim.cert.get());

    Party signer = user(utf8("CN", "KCDSA signer"), new_kcdsa_key());
    certify(signer, signer, {4, false, {}, ""});
    write(folder, "kcdsa-signer.pem", signer.cert.get());
    write_key(folder, "kcdsa-signer.key", signer.key.get());
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        (void)std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    try {
        make_chains(argv[1]);
    } catch (const std::exception &failure) {
        (void)std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
    return 0;
}
