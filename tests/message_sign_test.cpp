// Signing and verify_PKCS7(), step by step, with rows as scripts.
#include <gtest/gtest.h>

#include "support/crl_builder.hpp"
#include "support/message_reader.hpp"
#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/verify_support.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_P7_CONTENT_INFO>;

/// "abcabc..." in all lengths that the rows take.
const Octets &content() {
    static const Octets octets = [] {
        Octets made;
        for (unsigned i = 0; i < 300; ++i)
            made.push_back(static_cast<std::uint8_t>("abc"[i % 3]));
        return made;
    }();
    return octets;
}
std::uint8_t *octets_or_null(std::uint32_t length) {
    return length == 999 ? nullptr : const_cast<std::uint8_t *>(content().data());
}
/// 999 stands for null octets, 1000 for a negative length.
std::int32_t length_of(std::uint32_t number) {
    return number == 999 ? 0 : number == 1000 ? -1 : static_cast<std::int32_t>(number);
}

/// A message, and the steps that rows take with it. They name signers by place and keys by number.
class Script {
  public:
    Script() = default;
    ~Script() { free_P7_SIGNER_REPORTS(reports_); }
    Script(const Script &) = delete;
    Script &operator=(const Script &) = delete;
    std::string run(const std::string &text) { return run_steps(text, steps_); }

  private:
    [[nodiscard]] P7_SIGNER_INFOS *signers() const {
        return index_from_OBJECT_IDENTIFIER(info_->contentType) == TLX_OID_PKCS7_SIGNED_DATA
                   ? info_->content.signedData->signerInfos
                   : info_->content.signedAndEnvelopedData->signerInfos;
    }
    [[nodiscard]] P7_SIGNER_INFO *signer(std::uint32_t place) const {
        return get_P7_SIGNER_INFOS_child(signers(), static_cast<std::int32_t>(place));
    }
    /// Key 9 is none, key 8 one of a curve.
    std::uint32_t add_signer(const Numbers &n) {
        const Cert cert = signer_spec(n[0] < 8 ? n[0] : 0).make();
        const Held<free_ASYMMETRIC_KEY> curve(new_ASYMMETRIC_KEY());
        curve->kind = TLX_KEY_ECC;
        const ASYMMETRIC_KEY *key = n[0] == 9 ? nullptr : n[0] == 8 ? curve.get() : signing_key(n[0]);
        const auto digest = static_cast<std::int32_t>(n[1]);
        return add_PKCS7_Signature_withEncryptedAlgorithm(info_.get(), cert.get(), key, digest,
                                                          n[2] == 0 ? 1 : n[2], nullptr) == nullptr
                   ? 1
                   : 0;
    }
    std::uint32_t set_signer(const Numbers &n) {
        const Held<free_P7_SIGNER_INFO> made(new_P7_SIGNER_INFO());
        const Cert cert = signer_spec(0).make();
        const Held<free_ASYMMETRIC_KEY> key(new_ASYMMETRIC_KEY());
        key->kind = n[0];
        return set_PKCS7_P7_SIGNER_INFO(n[3] == 1 ? nullptr : made.get(), n[3] == 2 ? nullptr : cert.get(),
                                        n[0] == 9 ? nullptr : key.get(), static_cast<std::int32_t>(n[1]),
                                        n[2], nullptr);
    }
    /// messageDigest with SHA-256 of so many octets of the content, cut to a length.
    std::uint32_t add_digest(const Numbers &n) {
        std::uint8_t digest[TLX_DIGEST_MAX_LENGTH] = {};
        std::uint32_t length = 0;
        EXPECT_EQ(Digest(TLX_DIGEST_SHA256, content().data(), n[1], digest, &length), 0U);
        return add_PKCS7_Signed_Attribute(signer(n[0]), TLX_OID_MESSAGE_DIGEST, TLX_TAG_OCTET_STRING, digest,
                                          static_cast<std::int32_t>(n[2]));
    }
    std::uint32_t constructed_digest(const Numbers &n) {
        const Node node = der_node("24{04:00}");
        P7_SIGNER_INFO *of = signer(n[0]);
        if (of->authenticatedAttributes == nullptr) of->authenticatedAttributes = new_X509_ATTRIBUTES();
        return add_X509_ATTRIBUTES_OID_INDEX(of->authenticatedAttributes, TLX_OID_MESSAGE_DIGEST, 0x24,
                                             node.get(), -1);
    }
    /// Replaces the message by what its encoding gives.
    std::uint32_t reread() {
        ASN1_UNIT *made = nullptr;
        const std::uint32_t written = P7_CONTENT_INFO_to_Seq(info_.get(), &made);
        const Node node(made);
        info_.reset();
        P7_CONTENT_INFO *read = nullptr;
        const std::uint32_t status = written != 0 ? written : Seq_to_P7_CONTENT_INFO(node.get(), &read);
        info_.reset(read);
        return status;
    }
    std::uint32_t verify(const X509_CERT *cert, std::uint32_t length) {
        return verify_PKCS7(info_.get(), cert, octets_or_null(length), length_of(length));
    }

    /// The reliable verification: length, anchors (1 the root, 2 the CA, 3 another root), time (1 long ago),
    /// pool (1 the CA).
    std::uint32_t check(const Numbers &n) {
        const Chain chain = valid_chain(3);
        CertSpec other = chain[2];
        other.key = other.signer = 3;
        const Chain trusted = {n[1] == 3 ? other : n[1] == 2 ? chain[1] : chain[2]};
        const Certificates pool = make(n[3] == 1 ? Chain{chain[2], chain[1]} : Chain{chain[2]});
        const Held<free_ASN1_TIME> past(charToASN1_TIME("1999-01-01,00:00:00"));
        const ASN1_TIME *time = n[2] == 1 ? past.get() : nullptr;
        const std::uint32_t length = n[0] == 999 ? 0 : n[0];
        if (rules_ == 0) {
            const Store store = store_of(trusted);
            const VERIFY_SETTINGS settings = legacy_settings(time);
            P7_SIGNER_REPORTS *made = nullptr;
            const std::uint32_t status =
                verify_PKCS7_Signers_ex(info_.get(), octets_or_null(n[0]), length, pool.get(),
                                        n[1] == 0 ? nullptr : store.get(), &settings, &made);
            if (made == nullptr) return status;
            free_P7_SIGNER_REPORTS(std::exchange(reports_, made));
            SIGNED_MESSAGE_READER_SETTINGS reading = {};
            reading.pool = pool.get();
            reading.store = n[1] == 0 ? nullptr : store.get();
            reading.settings = &settings;
            expect_same_in_pieces(reading, n[0], status);
            return status;
        }
        const Anchors anchors = anchors_of(trusted);
        const auto verify = rules_ == 1 ? verify_PKCS7_Signers : verify_PKCS7_Signers_by_CPV;
        return verify(info_.get(), octets_or_null(n[0]), length, pool.get(),
                      n[1] == 0 ? nullptr : anchors.get(), time, &reports_);
    }
    /// The message as it is written, read in pieces, gives the same findings.
    void expect_same_in_pieces(const SIGNED_MESSAGE_READER_SETTINGS &settings, std::uint32_t content_length,
                               std::uint32_t status) {
        std::uint8_t *octets = nullptr;
        const std::uint32_t size =
            writeDER_to_Binary(info_.get(), TLX_ENCODER(P7_CONTENT_INFO_to_Seq), &octets);
        const Held<tlx_free> owner(octets);
        const bool is_signed = info_ != nullptr && info_->contentType != nullptr &&
                               index_from_OBJECT_IDENTIFIER(info_->contentType) == TLX_OID_PKCS7_SIGNED_DATA;
        if (!is_signed || size == 0xFFFFFFFF) return;
        const Octets message(octets, octets + size);
        const Octets given(content().begin(),
                           content().begin() + (content_length == 999 ? 0 : content_length));
        SignerReports reports;
        const std::uint32_t found =
            read_in_pieces(settings, message, 7, content_length == 999 ? nullptr : &given, &reports);
        P7_CONTENT_INFO *read = nullptr;
        const std::uint32_t decoded = TLX_READ_DER(P7_CONTENT_INFO, &read, octets, size);
        const Info reread(read);
        if (decoded != 0) {
            EXPECT_EQ(status_text(found), status_text(decoded));
            return;
        }
        ASSERT_EQ(get_P7_SIGNER_REPORTS_count(reports.get()), get_P7_SIGNER_REPORTS_count(reports_));
        for (std::uint32_t i = 0; i < get_P7_SIGNER_REPORTS_count(reports_); ++i) {
            const auto *one = get_P7_SIGNER_REPORTS_child(reports.get(), static_cast<std::int32_t>(i));
            const auto *other = get_P7_SIGNER_REPORTS_child(reports_, static_cast<std::int32_t>(i));
            if (one->contentStatus == 0x52820047) return;  // digestAlgorithms lacks the digest
            for (const auto member :
                 {&P7_SIGNER_REPORT::status, &P7_SIGNER_REPORT::certificateStatus,
                  &P7_SIGNER_REPORT::algorithmStatus, &P7_SIGNER_REPORT::contentStatus,
                  &P7_SIGNER_REPORT::signatureStatus, &P7_SIGNER_REPORT::pathStatus,
                  &P7_SIGNER_REPORT::digestAlgorithm, &P7_SIGNER_REPORT::signatureAlgorithm})
                EXPECT_EQ(status_text(one->*member), status_text(other->*member)) << i;
        }
        EXPECT_EQ(status_text(found), status_text(status));
    }
    /// A member of a report in the order of the header; 8 counts a certificate (1) and a time (2), 9 the
    /// certificates of the path.
    std::uint32_t report(const Numbers &n) {
        const auto *found = get_P7_SIGNER_REPORTS_child(reports_, static_cast<std::int32_t>(n[0]));
        if (found == nullptr) return 999;
        const P7_SIGNER_REPORT &of = *found;
        const std::uint32_t members[] = {
            of.status,
            of.certificateStatus,
            of.algorithmStatus,
            of.contentStatus,
            of.signatureStatus,
            of.pathStatus,
            of.digestAlgorithm,
            of.signatureAlgorithm,
            (of.certificate != nullptr ? 1U : 0U) + (of.signingTime != nullptr ? 2U : 0U),
            get_VERIFY_RESULT_path_count(of.path)};
        return members[n[1]];
    }
    std::uint32_t sign_with_attributes(const Numbers &n) {
        const Held<free_ASN1_TIME> late(charToASN1_TIME("2060-01-01,00:00:00"));
        return sign_PKCS7_withAttributes(info_.get(), octets_or_null(n[0]), length_of(n[0]), n[1],
                                         n[2] == 1 ? late.get() : nullptr);
    }
    /// Moves the first attribute to the end.
    std::uint32_t rotate_attributes(const Numbers &n) {
        X509_ATTRIBUTES *attributes = signer(n[0])->authenticatedAttributes;
        return push_STACK_value(attributes, remove_X509_ATTRIBUTES_child(attributes, 0));
    }
    std::uint32_t place_attributes(const Numbers &n) {
        const Octets set =
            encoding_of(signer(n[0])->authenticatedAttributes, TLX_ENCODER(X509_ATTRIBUTES_to_Seq));
        const Info data(gen_PKCS7_DATA_from_Binary(set.data(), static_cast<std::uint32_t>(set.size())));
        return set_PKCS7_Content(info_.get(), data.get());
    }
    std::uint32_t set_algorithm(X509_ALGO_IDENTIFIER *algorithm, std::uint32_t row) {
        const Held<free_OBJECT_IDENTIFIER> oid(index_to_OBJECT_IDENTIFIER(static_cast<std::int32_t>(row)));
        return set_X509_ALGO_IDENTIFIER_OID(algorithm, oid.get());
    }
    /// The certificate of a key under the serial number of another, or (9) the CA's; 1 with keyEncipherment.
    std::uint32_t add_other(const Numbers &n) {
        CertSpec spec = n[0] == 9 ? valid_chain(3)[1] : signer_spec(n[0]);
        if (n[0] != 9) spec.serial = "1" + std::to_string(n[1]);
        if (n[2] == 1) spec.with("keyUsage", "03:0520", true);
        return add_PKCS7_Certificate(info_.get(), spec.make().get());
    }

    /// Adds a list of the CA that has the certificate of a key.
    std::uint32_t revoke(const Numbers &n) {
        Crl crl = make_crl("+1" + std::to_string(n[0]) +
                           " issuer=CA_1 until=2090-01-01 key=" + std::to_string(valid_chain(3)[1].key));
        return add_PKCS7_Crl(info_.get(), crl.release());
    }

    P7_SIGNER_REPORTS *reports_ = nullptr;
    std::uint32_t rules_ = 0;  ///< 0 strict with keys of 1024 bits, 1 strict, 2 compatible
    Info info_ = Info(new_P7_CONTENT_INFO());
    const Steps steps_ = {
        {"type",
         [this](const Numbers &n) { return set_PKCS7_Type(info_.get(), static_cast<std::int32_t>(n[0])); }},
        {"none", [this](const Numbers &) { return info_.reset(), 0U; }},
        {"version", [this](const Numbers &n) { return set_P7_version(info_.get(), n[0]); }},
        {"add", [this](const Numbers &n) { return add_signer(n); }},
        {"set", [this](const Numbers &n) { return set_signer(n); }},
        {"cert",
         [this](const Numbers &n) {
             return add_PKCS7_Certificate(info_.get(), signer_spec(n[0]).make().get());
         }},
        {"digest-of", [this](const Numbers &n) { return add_digest(n); }},
        {"digest-constructed", [this](const Numbers &n) { return constructed_digest(n); }},
        {"attribute",
         [this](const Numbers &n) {
             return add_PKCS7_Signed_Attribute(signer(n[0]), TLX_OID_SIGNING_TIME, TLX_TAG_UTC_TIME,
                                               reinterpret_cast<const std::uint8_t *>("300101000000Z"), 13);
         }},
        {"empty-attributes",
         [this](const Numbers &n) {
             signer(n[0])->authenticatedAttributes = new_X509_ATTRIBUTES();
             return 0U;
         }},
        {"place",
         [this](const Numbers &n) {
             return set_PKCS7_Content(info_.get(),
                                      Info(gen_PKCS7_DATA_from_Binary(content().data(), n[0])).get());
         }},
        {"place-digested",
         [this](const Numbers &n) {
             const Info inner(new_P7_CONTENT_INFO());
             EXPECT_EQ(set_PKCS7_Type(inner.get(), TLX_OID_PKCS7_DIGESTED_DATA), 0U);
             EXPECT_EQ(digest_PKCS7(inner.get(), TLX_DIGEST_SHA1, content().data(), length_of(n[0])), 0U);
             return set_PKCS7_Content(info_.get(), inner.get());
         }},
        {"drop",
         [this](const Numbers &) {
             free_P7_CONTENT_INFO(std::exchange(info_->content.signedData->contentInfo, nullptr));
             return 0U;
         }},
        {"content",
         [this](const Numbers &) {
             return static_cast<std::uint32_t>(info_->content.signedData->contentInfo->content.data->length);
         }},
        {"signer-version", [this](const Numbers &n) { return get_BIGINT_word(signer(n[0])->version); }},
        {"place-type",
         [this](const Numbers &n) {
             const Info inner(new_P7_CONTENT_INFO());
             EXPECT_EQ(set_PKCS7_Type(inner.get(), static_cast<std::int32_t>(n[0])), 0U);
             if (n[1] == 1) free_P7_ENCRYPTED_DATA(std::exchange(inner->content.encryptedData, nullptr));
             return set_PKCS7_Content(info_.get(), inner.get());
         }},
        {"init", [this](const Numbers &n) { return init_PKCS7_Sign(info_.get(), n[0]); }},
        {"update",
         [this](const Numbers &n) {
             return update_PKCS7_Sign(info_.get(), octets_or_null(n[0]), length_of(n[0]));
         }},
        {"final", [this](const Numbers &) { return final_PKCS7_Sign(info_.get()); }},
        {"sign",
         [this](const Numbers &n) {
             return sign_PKCS7(info_.get(), octets_or_null(n[0]), length_of(n[0]), n[1]);
         }},
        {"digest",
         [this](const Numbers &n) {
             return digest_PKCS7(info_.get(), n[0], octets_or_null(n[1]), length_of(n[1]));
         }},
        {"reread", [this](const Numbers &) { return reread(); }},
        {"spoil",
         [this](const Numbers &n) {
             signer(n[0])->encryptedDigest->data[n[1]] ^= 1;
             return 0U;
         }},
        {"algorithm",
         [this](const Numbers &n) {
             return index_from_OBJECT_IDENTIFIER(
                 get_X509_ALGO_IDENTIFIER_OID(signer(n[0])->digestEncryptionAlgorithm));
         }},
        {"digested-algorithm",
         [this](const Numbers &) {
             return index_from_OBJECT_IDENTIFIER(info_->content.digestedData->digestAlgorithm->algorithm);
         }},
        {"pss", [this](const Numbers &n) { return set_pss(n); }},
        {"digests",
         [this](const Numbers &) { return get_STACK_count(info_->content.signedData->digestAlgorithms); }},
        {"detached", [this](const Numbers &) { return info_->content.signedData->detached; }},
        {"sign-attributes", [this](const Numbers &n) { return sign_with_attributes(n); }},
        {"sort", [this](const Numbers &n) { return sort_PKCS7_Signed_Attributes(signer(n[0])); }},
        {"rotate", [this](const Numbers &n) { return rotate_attributes(n); }},
        {"remove-content", [this](const Numbers &) { return remove_PKCS7_Content(info_.get()); }},
        {"no-attributes",
         [this](const Numbers &n) {
             free_X509_ATTRIBUTES(std::exchange(signer(n[0])->authenticatedAttributes, nullptr));
             return 0U;
         }},
        {"attributes-as-content", [this](const Numbers &n) { return place_attributes(n); }},
        {"type-of-content",
         [this](const Numbers &n) {
             const std::string type = n[1] == 0 ? "1.2.840.113549.1.7.1" : "1.2.3.4";
             return add_PKCS7_Signed_Attribute(signer(n[0]), TLX_OID_CONTENT_TYPE, TLX_TAG_OBJECT_IDENTIFIER,
                                               reinterpret_cast<const std::uint8_t *>(type.data()),
                                               static_cast<std::int32_t>(type.size()));
         }},
        {"digest-algorithm",
         [this](const Numbers &n) { return set_algorithm(signer(n[0])->digestAlgorithm, n[1]); }},
        {"signature-algorithm",
         [this](const Numbers &n) { return set_algorithm(signer(n[0])->digestEncryptionAlgorithm, n[1]); }},
        {"cert-as", [this](const Numbers &n) { return add_other(n); }},
        {"revoke", [this](const Numbers &n) { return revoke(n); }},
        {"rules", [this](const Numbers &n) { return rules_ = n[0], 0U; }},
        {"check", [this](const Numbers &n) { return check(n); }},
        {"report", [this](const Numbers &n) { return report(n); }},
        {"verify", [this](const Numbers &n) { return verify(nullptr, n[0]); }},
        {"verify-with", [this](const Numbers &n) { return verify(signer_spec(n[1]).make().get(), n[0]); }},
    };
    /// Parameters of PSS: 0 MGF1 with SHA-1 and 20 octets, all left out; 1 SHA-256 twice with 32 octets; 2 no
    /// parameters; 3 a mask generation function of another name; 4 a second trailer; 5 fields out of order.
    std::uint32_t set_pss(const Numbers &n) {
        const std::string sha256 = "30{06:608648016503040201 05:}";
        const std::string mgf1 = "A1{30{06:2A864886F70D010108 " + sha256 + "}}";
        const std::string texts[] = {"30{}",
                                     "30{A0{" + sha256 + "} " + mgf1 + " A2{02:20}}",
                                     "",
                                     "30{A0{" + sha256 + "} A1{30{06:2A03 " + sha256 + "}}}",
                                     "30{A0{" + sha256 + "} A3{02:02}}",
                                     "30{" + mgf1 + " A0{" + sha256 + "}}"};
        const std::string &text = texts[n[1]];
        const Node node = text.empty() ? nullptr : der_node(text);
        return set_X509_ALGO_IDENTIFIER_parameters(signer(n[0])->digestEncryptionAlgorithm, node.get());
    }
};

TEST(MessageSign, Steps) {
    make_signing_keys();
    expect_rows("message_sign.txt", {{"steps", {[](const Row &row) { return Script().run(row[1]); }}}});
}

TEST(MessageVerify, Steps) {
    make_signing_keys();
    expect_rows("message_verify.txt", {{"steps", {[](const Row &row) { return Script().run(row[1]); }}}});
}

/// Every status that a step gives when memory runs out; it gives 0 otherwise.
TEST(MessageSign, AllocationsMayFail) {
    make_signing_keys();
    const Info ready(new_P7_CONTENT_INFO());
    EXPECT_EQ(set_PKCS7_Type(ready.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U);
    for (const unsigned key : {0U, kKcdsaKey}) {
        const Cert cert = signer_spec(key).make();
        EXPECT_EQ(add_PKCS7_Certificate(ready.get(), cert.get()), 0U);
        sweep_failing_allocations([&] {
            const Held<free_P7_SIGNER_INFO> signer(new_P7_SIGNER_INFO());
            const std::uint32_t status = set_PKCS7_P7_SIGNER_INFO(signer.get(), cert.get(), signing_key(key),
                                                                  TLX_OID_SHA256, TLX_P7_RSA_PSS, nullptr);
            EXPECT_TRUE(status <= 1 || (status == 0x4B1E0049 && signer == nullptr)) << status;
            return status == 0;
        });
        EXPECT_NE(add_PKCS7_Signature_withEncryptedAlgorithm(ready.get(), cert.get(), signing_key(key),
                                                             TLX_OID_SHA256, TLX_P7_RSA_PSS, nullptr),
                  nullptr);
    }
    const Statuses expected = {1, 0x4B1C003B, 0x4B1C0048, 0x4B1C005F, 0x4B190012, 0x4B21000E, 0x4B31003C};
    const auto may_fail = [&](const Info &info, std::uint32_t status) {
        EXPECT_TRUE(status == 0 || info == nullptr || expected.contains(status)) << status_text(status);
        return status == 0;
    };
    sweep_failing_allocations([&] {
        const Info info(dup_P7_CONTENT_INFO(ready.get()));
        return may_fail(info, sign_PKCS7_withAttributes(info.get(), content().data(), 3, 0, nullptr));
    });
    EXPECT_EQ(sign_PKCS7_withAttributes(ready.get(), content().data(), 3, 0, nullptr), 0U);
    const Chain chain = valid_chain(3);
    const Anchors anchors = anchors_of({chain[2]});
    const Certificates pool = make({chain[2], chain[1]});
    const Store store = store_of({chain[2]});
    const VERIFY_SETTINGS settings = legacy_settings(nullptr);
    for (const std::uint32_t rules : {0U, 1U, 2U}) {
        sweep_failing_allocations([&] {
            P7_SIGNER_REPORTS *reports = nullptr;
            const auto by_anchors = rules == 1 ? verify_PKCS7_Signers : verify_PKCS7_Signers_by_CPV;
            const std::uint32_t status =
                rules == 0
                    ? verify_PKCS7_Signers_ex(ready.get(), nullptr, 0, pool.get(), store.get(), &settings,
                                              &reports)
                    : by_anchors(ready.get(), nullptr, 0, pool.get(), anchors.get(), nullptr, &reports);
            EXPECT_TRUE(reports != nullptr || status == 0x4B30003C) << status_text(status);
            free_P7_SIGNER_REPORTS(reports);
            return status == (rules == 1 ? 0x55020206U : 0U);
        });
    }
    sweep_failing_allocations(
        [&] { return may_fail(ready, verify_PKCS7(ready.get(), nullptr, nullptr, 0)); });
}

}  // namespace
}  // namespace tlx_test
