// The steps of a responder, with rows as scripts.
#include <gtest/gtest.h>
#include <tlxpki/ocsp.h>
#include <tlxpki/ocsp_respond.h>

#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

constexpr std::uint32_t kNone = 9;       // no certificate, no key
constexpr std::uint32_t kNoNonce = 999;  // null octets

/// The certificate of a key. Kind 1 has no subjectKeyIdentifier, kind 2 one that is no OCTET STRING.
Cert certificate(std::uint32_t key, std::uint32_t kind) {
    if (kind == kNone) return nullptr;
    CertSpec spec = signer_spec(key);
    if (kind == 1) spec.without("subjectKeyIdentifier");
    if (kind == 2) spec.with("subjectKeyIdentifier", "03:00AA");
    return spec.make();
}

class Script {
  public:
    Script() {
        id_.reset(decoded(Seq_to_OCSP_CERT_ID, "30{30{06:2B0E03021A 05:} 04:AA 04:BB 02:05}"));
        info_.reset(decoded(Seq_to_OCSP_REVOKED_INFO, "30{18:32303330303130313030303030305A A0{0A:01}}"));
    }
    std::string run(const std::string &text) { return run_steps(text, steps_); }

  private:
    /// Calls a step with the address of a member's pointer, as a caller has it.
    template <typename Member, typename Step>
    static std::uint32_t with_address(Member &member, Step step) {
        auto *pointer = member.release();
        const std::uint32_t status = step(&pointer);
        member.reset(pointer);
        return status;
    }
    std::uint32_t begin(const Numbers &n) {
        const Cert cert = certificate(0, n[3]);
        const std::uint8_t *nonce = n[2] == kNoNonce ? nullptr : nonce_.data();
        return with_address(data_, [&](OCSP_RESPONSE_DATA **data) {
            return generate_OCSP_RESPONSE_DATA(data, cert.get(), n[0], n[1], nonce, n[2] % kNoNonce);
        });
    }
    std::uint32_t begin_with_hash(const Numbers &n) {
        const Cert cert = certificate(0, n[1]);
        return with_address(data_, [&](OCSP_RESPONSE_DATA **data) {
            return generate_OCSP_RESPONSE_DATA_withKeyHash(data, cert.get(), n[0], nonce_.data(), 4);
        });
    }
    std::uint32_t add(const Numbers &n) {
        OCSP_CERT_ID *id = n[3] == 1 ? nullptr : id_.get();
        const OCSP_REVOKED_INFO *info = n[1] == 1 ? info_.get() : nullptr;
        const GENERALIZED_TIME *time = info_->revocationTime;
        return add_single_OCSP_RESPONSE(data_.get(), &id, n[0], info, n[3] == 2 ? nullptr : time,
                                        n[2] == 1 ? time : nullptr);
    }
    std::uint32_t sign(const Numbers &n) {
        const Cert cert = certificate(n[0] < 8 ? n[0] : 0, n[2]);
        const auto key = n[0] == kNone ? nullptr : private_key(n[0]);
        auto *data = data_.get();
        const std::uint32_t status = with_address(basic_, [&](BASIC_OCSP_RESPONSE **basic) {
            return n[1] == 0 ? generate_BASIC_OCSP_RESPONSE(basic, data, cert.get(), key.get())
                             : generate_BASIC_OCSP_RESPONSE_ex(basic, data, cert.get(), key.get(), n[1]);
        });
        if (status == 0) static_cast<void>(data_.release());
        return status;
    }
    /// Whether the signature is one of the RSA key over the data as they are written.
    std::uint32_t verify(const Numbers &n) {
        const Octets octets = encoding_of(basic_->tbsResponseData, TLX_ENCODER(OCSP_RESPONSE_DATA_to_Seq));
        return verify_RSA(static_cast<const RSA_UNIT *>(signing_key(n[0])->key), n[1], TLX_RSA_MODE_PKCS1,
                          octets.data(), static_cast<std::uint32_t>(octets.size()), basic_->signature->data,
                          static_cast<std::uint32_t>(basic_->signature->length));
    }
    std::uint32_t respond(const Numbers &n) {
        const std::uint32_t status = with_address(response_, [&](OCSP_RESPONSE **response) {
            return generate_OCSP_RESPONSE(response, bytes_.get(), static_cast<std::int32_t>(n[0]));
        });
        if (status == 0) static_cast<void>(bytes_.release());
        return status;
    }
    /// Reads the response and all in it from its octets, which come out again.
    std::uint32_t reread() {
        const Octets written = encoding_of(response_.get(), TLX_ENCODER(OCSP_RESPONSE_to_Seq));
        OCSP_RESPONSE *response = nullptr;
        EXPECT_EQ(TLX_READ_DER(OCSP_RESPONSE, &response, written.data(),
                               static_cast<std::uint32_t>(written.size())),
                  0U);
        response_.reset(response);
        const OCTET_STRING *inside = response->responseBytes->response;
        BASIC_OCSP_RESPONSE *basic = nullptr;
        EXPECT_EQ(TLX_READ_DER(BASIC_OCSP_RESPONSE, &basic, inside->data,
                               static_cast<std::uint32_t>(inside->length)),
                  0U);
        basic_.reset(basic);
        const Octets again = encoding_of(basic, TLX_ENCODER(BASIC_OCSP_RESPONSE_to_Seq));
        return again == Octets(inside->data, inside->data + inside->length) ? 0 : 1;
    }
    /// What the data say: version, type of the responder ID, extensions and answers, a digit each.
    std::uint32_t members() {
        const OCSP_RESPONSE_DATA &data = *data_;
        return data.version * 1000 + data.responderID->type * 100 +
               get_X509_EXTENSION_count(data.responseExtensions) * 10 +
               get_OCSP_SINGLE_RESPONSES_count(data.responses);
    }
    std::uint32_t nonce(const Numbers &n) {
        const auto *extension =
            get_X509_EXTENSION(data_->responseExtensions, static_cast<std::int32_t>(n[0]));
        EXPECT_STREQ(reinterpret_cast<const char *>(extension->object->data), "1.3.6.1.5.5.7.48.1.2");
        EXPECT_EQ(extension->critical, 0);
        const Octets value(extension->data->data, extension->data->data + extension->data->length);
        EXPECT_EQ(value, Octets(value.size(), 0x5A));
        return static_cast<std::uint32_t>(extension->data->length);
    }
    /// The octets of the key hash, and whether they are the digest of the key (1), not the extension's (0).
    std::uint32_t key_hash() {
        const Cert cert = certificate(0, 0);
        const Held<free_SUBJECT_KEYID> digest(create_SUBJECT_KEYID(get_X509_SPKI(cert.get())));
        const OCTET_STRING *hash = data_->responderID->value.keyHash;
        return static_cast<std::uint32_t>(hash->length) * 10 +
               (cmp_ASN1_STRING(digest.get(), hash) == 0 ? 1 : 0);
    }
    std::uint32_t has_subject() {
        const Cert cert = certificate(0, 0);
        return cmp_X509_NAME(data_->responderID->value.name, get_X509_subject(cert.get())) == 0 ? 1 : 0;
    }

    Octets nonce_ = Octets(40, 0x5A);
    Held<free_OCSP_CERT_ID> id_;
    Held<free_OCSP_REVOKED_INFO> info_;
    Held<free_OCSP_RESPONSE_DATA> data_;
    Held<free_BASIC_OCSP_RESPONSE> basic_;
    Held<free_OCSP_RESPONSE_BYTES> bytes_;
    Held<free_OCSP_RESPONSE> response_;
    const Steps steps_ = {
        {"data", [this](const Numbers &n) { return begin(n); }},
        {"data-with-hash", [this](const Numbers &n) { return begin_with_hash(n); }},
        {"members", [this](const Numbers &) { return members(); }},
        {"nonce", [this](const Numbers &n) { return nonce(n); }},
        {"key-hash", [this](const Numbers &) { return key_hash(); }},
        {"subject", [this](const Numbers &) { return has_subject(); }},
        {"no-data", [this](const Numbers &) { return data_ == nullptr ? 1U : 0U; }},
        {"lose-id",
         [this](const Numbers &) {
             free_OCSP_RESPONDER_ID(std::exchange(data_->responderID, nullptr));
             return 0U;
         }},
        {"add", [this](const Numbers &n) { return add(n); }},
        {"basic", [this](const Numbers &n) { return sign(n); }},
        {"no-basic", [this](const Numbers &) { return basic_ == nullptr ? 1U : 0U; }},
        {"algorithm",
         [this](const Numbers &) {
             EXPECT_EQ(hex_of(basic_->signatureAlgorithm->parameters), "05 00");
             return index_from_OBJECT_IDENTIFIER(basic_->signatureAlgorithm->algorithm);
         }},
        {"certs", [this](const Numbers &) { return get_X509_CERTIFICATES_count(basic_->certs); }},
        {"verify", [this](const Numbers &n) { return verify(n); }},
        {"bytes",
         [this](const Numbers &) {
             return with_address(bytes_, [&](OCSP_RESPONSE_BYTES **bytes) {
                 return generate_OCSP_RESPONSE_BYTES(bytes, basic_.get());
             });
         }},
        {"response", [this](const Numbers &n) { return respond(n); }},
        {"reread", [this](const Numbers &) { return reread(); }},
    };
};

TEST(OcspRespond, Steps) {
    make_signing_keys();
    expect_rows("ocsp_respond.txt", {{"steps", {[](const Row &row) { return Script().run(row[1]); }}}});
}

/// A whole response. The first status that is not 0.
std::uint32_t respond(const X509_CERT *cert, const P8_PRIV_KEY_INFO *key, OCSP_CERT_ID *id,
                      const OCSP_REVOKED_INFO *info, bool with_hash) {
    OCSP_RESPONSE_DATA *data = nullptr;
    BASIC_OCSP_RESPONSE *basic = nullptr;
    OCSP_RESPONSE_BYTES *bytes = nullptr;
    OCSP_RESPONSE *response = nullptr;
    const std::uint8_t nonce[4] = {};
    std::uint32_t status = with_hash ? generate_OCSP_RESPONSE_DATA_withKeyHash(&data, cert, 0, nonce, 4)
                                     : generate_OCSP_RESPONSE_DATA(&data, cert, 0, 0, nonce, 4);
    Held<free_OCSP_RESPONSE_DATA> data_owner(data);
    const GENERALIZED_TIME *time = info->revocationTime;
    if (status == 0) status = add_single_OCSP_RESPONSE(data, &id, TLX_OCSP_REVOKED, info, time, time);
    if (status == 0) status = generate_BASIC_OCSP_RESPONSE_ex(&basic, data, cert, key, TLX_DIGEST_SHA256);
    if (status == 0) static_cast<void>(data_owner.release());
    const Held<free_BASIC_OCSP_RESPONSE> basic_owner(basic);
    if (status == 0) status = generate_OCSP_RESPONSE_BYTES(&bytes, basic);
    Held<free_OCSP_RESPONSE_BYTES> bytes_owner(bytes);
    if (status == 0) status = generate_OCSP_RESPONSE(&response, bytes, TLX_OCSP_SUCCESSFUL);
    if (status == 0) static_cast<void>(bytes_owner.release());
    free_OCSP_RESPONSE(response);
    return status;
}

TEST(OcspRespond, AllocationsMayFail) {
    make_signing_keys();
    const Held<free_OCSP_CERT_ID> id(
        decoded(Seq_to_OCSP_CERT_ID, "30{30{06:2B0E03021A 05:} 04:AA 04:BB 02:05}"));
    const Held<free_OCSP_REVOKED_INFO> info(
        decoded(Seq_to_OCSP_REVOKED_INFO, "30{18:32303330303130313030303030305A}"));
    for (const std::uint32_t number : {0U, kKcdsaKey}) {
        const Cert cert = certificate(number, 0);
        const auto key = private_key(number);
        const Statuses expected = {0x5015003C, 0x5016003C, 0x5017003C, 0x5018003C, 0x5018001C,
                                   0x50140103, 0x50120103, 0x5020001C, 0x501A003A};
        // The first signature makes what the key keeps.
        EXPECT_EQ(respond(cert.get(), key.get(), id.get(), info.get(), false), 0U);
        for (const bool with_hash : {false, true})
            sweep_statuses(expected,
                           [&] { return respond(cert.get(), key.get(), id.get(), info.get(), with_hash); });
    }
}

}  // namespace
}  // namespace tlx_test
