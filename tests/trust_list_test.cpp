// Signed trust lists, step by step, with rows as scripts.
#include <gtest/gtest.h>

#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

/// Certificates by number: 1 "Root", 2 "CA 1", 3 a user below it, 4 a stranger with one of his own, 5 and 6
/// users with the extended key usage of servers and of lists, 7 one with the key of "CA 1" that is no CA, and
/// 8 one that it issued.
CertSpec certificate_spec(std::uint32_t number) {
    const Chain chain = valid_chain(3);
    CertSpec user = signer_spec(3);
    switch (number) {
        case 1:
            return chain[2];
        case 2:
            return chain[1];
        case 3:
            return user;
        case 4:
            user.subject = user.issuer = "Stranger";
            user.signer = user.key;
            return user.without("authorityKeyIdentifier");
        case 5:
            return user.with("extendedKeyUsage", "30{06:2B06010505070301}");
        case 6:
            return user.with("extendedKeyUsage", "30{06:2B06010505070301 06:2B0601040182370A0301}");
        case 7:
            user.subject = "No CA";
            user.key = chain[1].key;
            return user;
        default:
            user.issuer = "No CA";
            return user;
    }
}

const Cert &certificate(std::uint32_t number) {
    static std::map<std::uint32_t, Cert> made;
    Cert &cert = made[number];
    if (cert == nullptr) cert = certificate_spec(number).make();
    return cert;
}

/// A list of the years 2020 to 2030 that names certificates by SHA-1; 0 names none.
Held<free_CERT_TRUST_LIST> list_naming(const Numbers &numbers) {
    Held<free_CERT_TRUST_LIST> list(
        decoded(Seq_to_CERT_TRUST_LIST,
                "30{30{06:2A831A8C9A4408010101} 02:05 17:3230303130313030303030305A "
                "17:3330303130313030303030305A 30{06:2B0E03021A 05:} 30{}}"));
    for (const std::uint32_t number : numbers) {
        if (number == 0) continue;
        std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
        const std::uint32_t length = X509_CERT_digest(certificate(number).get(), TLX_DIGEST_SHA1, digest);
        const Held<free_TRUSTED_CERTIFICATE> subject(new_TRUSTED_CERTIFICATE());
        subject->subjectIdentifier =
            string_of(TLX_TAG_OCTET_STRING, Octets(digest, digest + length)).release();
        EXPECT_EQ(add_TRUSTED_SUBJECTS_child(list->trustedSubjects, subject.get(), -1), 0U);
    }
    return list;
}

Certificates list_of(std::uint32_t number) {
    Certificates list(new_X509_CERTIFICATES());
    if (number == 0) return list;
    EXPECT_EQ(add_X509_CERTIFICATES(list.get(), certificate(number).get()), 0U);
    return list;
}

using Info = Held<free_P7_CONTENT_INFO>;

/// A message with a list, and the steps that rows take with it.
class Script {
  public:
    Script() { EXPECT_EQ(set_PKCS7_Type(info_.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U); }
    ~Script() { free_P7_SIGNER_REPORTS(reports_); }
    Script(const Script &) = delete;
    Script &operator=(const Script &) = delete;
    std::string run(const std::string &text) { return run_steps(text, steps_); }
    [[nodiscard]] const P7_CONTENT_INFO *info() const { return info_.get(); }

  private:
    [[nodiscard]] P7_SIGNED_DATA &data() const { return *info_->content.signedData; }
    [[nodiscard]] CERT_TRUST_LIST &list() const { return *data().contentInfo->content.trustList; }

    std::uint32_t put_list(const Numbers &n) {
        const auto list = list_naming(n);
        const Info inner(gen_PKCS7_from_CERT_TRUST_LIST(list.get()));
        return set_PKCS7_Content(info_.get(), inner.get());
    }
    std::uint32_t put_data() {
        const Info inner(gen_PKCS7_DATA_from_Binary(reinterpret_cast<const std::uint8_t *>("abc"), 3));
        return set_PKCS7_Content(info_.get(), inner.get());
    }
    std::uint32_t add(const Numbers &n) {
        return add_PKCS7_Certificate(info_.get(), certificate(n[0]).get());
    }
    std::uint32_t sign(const Numbers &n) {
        const ASYMMETRIC_KEY *key = signing_key(certificate_spec(n[0]).key);
        if (add_PKCS7_Signature(info_.get(), certificate(n[0]).get(), key, TLX_OID_SHA256) == nullptr)
            return 1;
        return sign_PKCS7_withAttributes(info_.get(), nullptr, 0, 0, nullptr);
    }
    std::uint32_t reread() {
        const Octets octets = encoding_of(info_.get(), TLX_ENCODER(P7_CONTENT_INFO_to_Seq));
        void *read = nullptr;
        const std::uint32_t status =
            readDER_from_Buffer(&read, TLX_DECODER(Seq_to_P7_CONTENT_INFO), octets.data(),
                                static_cast<std::uint32_t>(octets.size()));
        info_.reset(static_cast<P7_CONTENT_INFO *>(read));
        return status;
    }
    std::uint32_t set_digest(const Numbers &n) {
        const Held<free_OBJECT_IDENTIFIER> oid(index_to_OBJECT_IDENTIFIER(static_cast<std::int32_t>(n[0])));
        return set_X509_ALGO_IDENTIFIER_OID(list().subjectAlgorithm, oid.get());
    }
    /// The authority; 1 in 2035, 2 in 2019.
    template <typename Use>
    std::uint32_t with_authority(const Numbers &n, Use use) const {
        const Certificates authorities = list_of(n[0]);
        const char *const times[] = {"2025-01-01,00:00:00", "2035-01-01,00:00:00", "2019-12-31,23:59:59"};
        const Held<free_ASN1_TIME> time(charToASN1_TIME(times[n[1]]));
        const VERIFY_SETTINGS settings = legacy_settings(time.get());
        return use(authorities.get(), &settings);
    }

    Info info_ = Info(new_P7_CONTENT_INFO());
    Anchors anchors_ = Anchors(new_TRUST_ANCHORS());
    Certificates pool_ = Certificates(new_X509_CERTIFICATES());
    P7_SIGNER_REPORTS *reports_ = nullptr;
    const Steps steps_ = {
        {"list", [this](const Numbers &n) { return put_list(n); }},
        {"data", [this](const Numbers &) { return put_data(); }},
        {"enveloped",
         [this](const Numbers &) { return set_PKCS7_Type(info_.get(), TLX_OID_PKCS7_ENVELOPED_DATA); }},
        {"add", [this](const Numbers &n) { return add(n); }},
        {"sign", [this](const Numbers &n) { return sign(n); }},
        {"reread", [this](const Numbers &) { return reread(); }},
        {"digest", [this](const Numbers &n) { return set_digest(n); }},
        {"no-update",
         [this](const Numbers &) {
             clean_X509_TIME(list().nextUpdate);
             return 0U;
         }},
        {"no-subject",
         [this](const Numbers &n) {
             X509_CERT *cert =
                 get_X509_CERTIFICATES_child(data().certificates, static_cast<std::int32_t>(n[0]));
             free_X509_NAME(std::exchange(cert->tbsCertificate->subject, nullptr));
             return 0U;
         }},
        {"verify", [this](const Numbers &) { return verify_ctlSignedData(info_.get()); }},
        {"anchors",
         [this](const Numbers &) { return add_TRUST_ANCHORS_from_CTL(anchors_.get(), info_.get()); }},
        {"pool", [this](const Numbers &) { return add_CERTIFICATES_from_CTL(pool_.get(), info_.get()); }},
        {"authority",
         [this](const Numbers &n) {
             return with_authority(n, [this](const X509_CERTIFICATES *by, const VERIFY_SETTINGS *settings) {
                 return verify_CTL_of_authority_ex(info_.get(), by, settings, &reports_);
             });
         }},
        {"authority-of-today",
         [this](const Numbers &n) {
             const Certificates by = list_of(n[0]);
             return verify_CTL_of_authority(info_.get(), by.get(), nullptr, &reports_);
         }},
        {"authority-anchors",
         [this](const Numbers &n) {
             return with_authority(n, [this](const X509_CERTIFICATES *by, const VERIFY_SETTINGS *settings) {
                 return add_TRUST_ANCHORS_from_CTL_of_authority_ex(anchors_.get(), info_.get(), by, settings);
             });
         }},
        {"authority-pool",
         [this](const Numbers &n) {
             return with_authority(n, [this](const X509_CERTIFICATES *by, const VERIFY_SETTINGS *settings) {
                 return add_CERTIFICATES_from_CTL_of_authority_ex(pool_.get(), info_.get(), by, settings);
             });
         }},
        {"count",
         [this](const Numbers &) {
             return 100 * get_TRUST_ANCHORS_count(anchors_.get()) + get_X509_CERTIFICATES_count(pool_.get());
         }},
        {"has-anchor",
         [this](const Numbers &n) {
             const Held<free_TRUST_ANCHOR> anchor(
                 create_TRUST_ANCHOR_from_X509_CERT(certificate(n[0]).get()));
             return get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors_.get(), anchor.get()) >= 0 ? 1U : 0U;
         }},
        {"reports", [this](const Numbers &) { return get_P7_SIGNER_REPORTS_count(reports_); }},
    };
};

/// Makes keys and certificates, which are freed at the end, before a test counts live blocks.
void make_certificates() {
    make_signing_keys();
    for (std::uint32_t number = 1; number <= 8; ++number)
        (void)certificate(number);
}

TEST(TrustList, Steps) {
    make_certificates();
    expect_rows("trust_list.txt", {{"steps", {[](const Row &row) { return Script().run(row[1]); }}}});
}

TEST(TrustList, NullArguments) {
    make_certificates();
    const LeakCheck leaks;
    Script script;
    EXPECT_EQ(script.run("list 1; add 1; add 3; sign 3"), "0 0 0 0");
    const Certificates authorities = list_of(3);
    const Anchors anchors(new_TRUST_ANCHORS());
    const Certificates pool(new_X509_CERTIFICATES());
    EXPECT_EQ(verify_ctlSignedData(nullptr), 0x53020049U);
    expect_refuses_null(0x53020049, add_TRUST_ANCHORS_from_CTL, anchors.get(), script.info());
    expect_refuses_null(0x53020049, add_CERTIFICATES_from_CTL, pool.get(), script.info());
    EXPECT_EQ(verify_CTL_of_authority(nullptr, authorities.get(), nullptr, nullptr), 0x54100049U);
    EXPECT_EQ(verify_CTL_of_authority(script.info(), nullptr, nullptr, nullptr), 0x54100049U);
    EXPECT_EQ(add_TRUST_ANCHORS_from_CTL_of_authority(nullptr, script.info(), authorities.get(), nullptr),
              0x54110049U);
    EXPECT_EQ(add_CERTIFICATES_from_CTL_of_authority(nullptr, script.info(), authorities.get(), nullptr),
              0x54120049U);
    EXPECT_EQ(gen_PKCS7_from_CERT_TRUST_LIST(nullptr), nullptr);
}

TEST(TrustList, AllocationsMayFail) {
    make_certificates();
    Script script;
    EXPECT_EQ(script.run("list 1 4; add 1; add 3; add 4; sign 3; reread"), "0 0 0 0 0 0");
    const Certificates authorities = list_of(2);
    const P7_CONTENT_INFO *info = script.info();
    sweep_statuses({0x53020049, 0x5302000E}, [&] {
        const Anchors anchors(new_TRUST_ANCHORS());
        return add_TRUST_ANCHORS_from_CTL(anchors.get(), info);
    });
    sweep_statuses({0x53020049, 0x5302000E}, [&] {
        const Certificates pool(new_X509_CERTIFICATES());
        return add_CERTIFICATES_from_CTL(pool.get(), info);
    });
    const VERIFY_SETTINGS settings = legacy_settings(nullptr);
    const Statuses any = {0x5410003C, 0x54100116, 0x54100113, 0x4B30003C, 0x5411003C, 0x5412003C,
                          0x4B300048, 0x4B30002B, 0x4B30005E, 0x4B300054, 0x462D0104, 0x462D003C};
    sweep_statuses(any, [&] {
        const Anchors anchors(new_TRUST_ANCHORS());
        if (anchors == nullptr) return 0x5411003CU;
        const std::uint32_t status =
            add_TRUST_ANCHORS_from_CTL_of_authority_ex(anchors.get(), info, authorities.get(), &settings);
        EXPECT_EQ(get_TRUST_ANCHORS_count(anchors.get()), status == 0 ? 2U : 0U);
        return status;
    });
    sweep_statuses(any, [&] {
        const Certificates pool(new_X509_CERTIFICATES());
        if (pool == nullptr) return 0x5412003CU;
        const std::uint32_t status =
            add_CERTIFICATES_from_CTL_of_authority_ex(pool.get(), info, authorities.get(), &settings);
        EXPECT_EQ(get_X509_CERTIFICATES_count(pool.get()), status == 0 ? 2U : 0U);
        return status;
    });
    const auto list = list_naming({1, 4});
    expect_making_may_fail([&] { return gen_PKCS7_from_CERT_TRUST_LIST(list.get()); }, free_P7_CONTENT_INFO);
}

}  // namespace
}  // namespace tlx_test
