// Signing and verify_PKCS7(), step by step, with rows as scripts.
#include <gtest/gtest.h>

#include "support/rows.hpp"
#include "support/signers.hpp"
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
        P7_SIGNER_INFO *signer =
            add_PKCS7_Signature(ready.get(), cert.get(), signing_key(key), TLX_OID_SHA256);
        const std::uint32_t added = add_PKCS7_Signed_Attribute(
            signer, TLX_OID_MESSAGE_DIGEST, TLX_TAG_OCTET_STRING,
            hex("BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD").data(), 32);
        EXPECT_EQ(added, 0U);
    }
    const Statuses expected = {1, 0x4B1C003B, 0x4B1C0048, 0x4B1C005F, 0x4B190012, 0x4B21000E};
    const auto may_fail = [&](const Info &info, std::uint32_t status) {
        EXPECT_TRUE(status == 0 || info == nullptr || expected.contains(status)) << status_text(status);
        return status == 0;
    };
    sweep_failing_allocations([&] {
        const Info info(dup_P7_CONTENT_INFO(ready.get()));
        return may_fail(info, sign_PKCS7(info.get(), content().data(), 3, 0));
    });
    EXPECT_EQ(sign_PKCS7(ready.get(), content().data(), 3, 0), 0U);
    sweep_failing_allocations(
        [&] { return may_fail(ready, verify_PKCS7(ready.get(), nullptr, nullptr, 0)); });
}

}  // namespace
}  // namespace tlx_test
