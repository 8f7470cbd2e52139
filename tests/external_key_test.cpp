// Keys that cannot be read, and signatures that come later.
#include <gtest/gtest.h>
#include <tlxpki/ocsp_respond.h>

#include <algorithm>

#include "support/crl_builder.hpp"
#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/verify_support.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_P7_CONTENT_INFO>;
using Unit = Held<free_RSA_UNIT>;

const Octets kData = {'s', 'i', 'g', 'n', ' ', 'm', 'e'};

RSA_UNIT *readable(unsigned key = 0) {
    return static_cast<RSA_UNIT *>(signing_key(key)->key);
}

/// A key elsewhere: computes with numbers of its own, and answers what a row asks for.
struct Elsewhere {
    std::uint32_t status = 0;
    std::uint32_t length = 0;  ///< in place of the right one
    std::uint32_t spoils = 0;
    std::uint32_t freed = 0;
    RSA_SIGNATURE_INPUT signing = {};
    RSA_DECRYPTION_INPUT decryption = {};
};

/// 00 01 FF .. FF 00 DigestInfo, to the power of the private exponent.
std::uint32_t sign_elsewhere(void *context, const RSA_SIGNATURE_INPUT *input, std::uint8_t *signature,
                             std::uint32_t *length) {
    auto &key = *static_cast<Elsewhere *>(context);
    key.signing = *input;
    if (key.status != 0) return key.status;
    if (input->mode == TLX_RSA_MODE_PSS) {
        const Unit own(dup_RSA_UNIT(readable()));
        EXPECT_EQ(set_RSA_UNIT_PSS(own.get(), input->mgf_digest_id, input->salt_length), 0U);
        EXPECT_EQ(sign_RSA(own.get(), input->digest_id, TLX_RSA_MODE_PSS, kData.data(), 7, signature, length),
                  0U);
        return 0;
    }
    Octets encoded(*length, 0xFF);
    encoded[0] = 0;
    encoded[1] = 1;
    const std::size_t at = encoded.size() - input->digest_info_length;
    encoded[at - 1] = 0;
    std::copy_n(input->digest_info, input->digest_info_length,
                encoded.begin() + static_cast<std::ptrdiff_t>(at));
    const Held<free_BIGINT> value(binary_to_BIGINT(encoded.data(), *length));
    EXPECT_EQ(mod_exp_BIGINT(value.get(), value.get(), get_RSA_UNIT_number(readable(), TLX_RSA_D),
                             get_RSA_UNIT_number(readable(), TLX_RSA_N)),
              0U);
    EXPECT_EQ(BIGINT_to_binary(value.get(), signature, *length), 0U);
    signature[5] ^= static_cast<std::uint8_t>(key.spoils);
    if (key.length != 0) *length = key.length;
    return 0;
}

std::uint32_t decrypt_elsewhere(void *context, const RSA_DECRYPTION_INPUT *input, std::uint8_t *message,
                                std::uint32_t *length) {
    auto &key = *static_cast<Elsewhere *>(context);
    key.decryption = *input;
    if (key.status != 0) return key.status;
    const Unit own(dup_RSA_UNIT(readable()));
    const std::uint32_t begun = input->mode == TLX_RSAES_MODE_PKCS1
                                    ? init_RSAES(own.get(), TLX_RSAES_MODE_PKCS1, 1, 0)
                                    : init_RSAES_OAEP(own.get(), 1, input->digest_id, input->mgf_digest_id,
                                                      input->label, input->label_length);
    EXPECT_EQ(begun, 0U);
    const std::uint32_t status =
        decrypt_RSAES(own.get(), message, length, input->ciphertext, input->ciphertext_length);
    if (key.length != 0) *length = key.length;
    return status;
}

void free_elsewhere(void *context) {
    ++static_cast<Elsewhere *>(context)->freed;
}

constexpr RSA_EXTERNAL_FUNCTIONS kFunctions = {sign_elsewhere, decrypt_elsewhere, free_elsewhere};

std::uint32_t set_external(RSA_UNIT *unit, Elsewhere &key,
                           const RSA_EXTERNAL_FUNCTIONS &functions = kFunctions) {
    return set_RSA_UNIT_external(unit, get_RSA_UNIT_number(readable(), TLX_RSA_N),
                                 get_RSA_UNIT_number(readable(), TLX_RSA_E), &functions, &key);
}

/// A holder of the unit for what takes keys of any kind.
ASYMMETRIC_KEY holder(const Unit &unit) {
    return {TLX_KEY_RSA, unit.get()};
}

/// What a key elsewhere does in steps, which set its answers first.
std::string run_on_external(const Row &row) {
    Elsewhere key;
    Unit unit(new_RSA_UNIT());
    Octets sealed(128);
    std::uint32_t size = 0;
    EXPECT_EQ(set_external(unit.get(), key), 0U);
    EXPECT_EQ(set_RSA_UNIT_PSS(unit.get(), TLX_DIGEST_SHA256, 32), 0U);
    using N = const Numbers &;
    const auto seal = [&](const Octets &plain, std::uint32_t mode) {
        const Unit open(dup_RSA_UNIT(unit.get()));
        EXPECT_EQ(init_RSAES(open.get(), mode, 0, TLX_DIGEST_SHA256), 0U);
        return encrypt_RSAES(open.get(), sealed.data(), &size, plain.data(),
                             static_cast<std::uint32_t>(plain.size()));
    };
    const Steps steps = {
        {"status", [&](N n) { return key.status = n[0], 0U; }},
        {"length", [&](N n) { return key.length = n[0], 0U; }},
        {"spoil", [&](N n) { return key.spoils = n[0], 0U; }},
        {"spoil-sealed", [&](N) { return sealed[9] ^= 1, 0U; }},
        {"sign",
         [&](N n) {
             Octets made(128);
             const std::uint32_t status =
                 sign_RSA(unit.get(), n[0], n[1], kData.data(), 7, made.data(), &size);
             EXPECT_TRUE(status == 0 || made == Octets(128));
             const Unit open(dup_RSA_UNIT(readable()));
             EXPECT_EQ(set_RSA_UNIT_PSS(open.get(), TLX_DIGEST_SHA256, 32), 0U);
             return status != 0 ? status
                                : verify_RSA(open.get(), n[0], n[1], kData.data(), 7, made.data(), size);
         }},
        {"scheme", [&](N) { return key.signing.mode; }},
        {"salt", [&](N) { return key.signing.salt_length; }},
        {"info", [&](N) { return key.signing.digest_info_length; }},
        {"seal", [&](N n) { return seal(Octets(n[1], 0x5A), n[0]); }},
        {"open",
         [&](N n) {
             Octets opened(128);
             size = n[1];
             EXPECT_EQ(init_RSAES(unit.get(), n[0], 1, TLX_DIGEST_SHA256), 0U);
             const std::uint32_t status = decrypt_RSAES(unit.get(), opened.data(), &size, sealed.data(), 128);
             EXPECT_EQ(opened[0], status == 0 ? 0x5A : 0);
             return status;
         }},
        // 2 for another key than the one that was sealed.
        {"open-key",
         [&](N n) {
             Octets opened(n[0]);
             const std::uint32_t status =
                 decrypt_RSAES_key(unit.get(), opened.data(), n[0], sealed.data(), n[1] == 0 ? 128 : n[1]);
             EXPECT_TRUE(status == 0 || opened == Octets(n[0]));
             return status != 0 ? status : opened == Octets(n[0], 0x5A) ? 0U : 2U;
         }},
        {"dup", [&](N) { return unit.reset(dup_RSA_UNIT(unit.get())), key.freed; }},
        {"make-public",
         [&](N) {
             const Unit from(dup_RSA_UNIT(readable()));
             return set_RSA_UNIT_public(unit.get(), get_RSA_UNIT_number(from.get(), TLX_RSA_N),
                                        get_RSA_UNIT_number(from.get(), TLX_RSA_E));
         }},
        {"no-functions",
         [&](N) {
             return set_external(unit.get(), key, {nullptr, nullptr, nullptr});
         }},
        {"kind", [&](N) { return get_RSA_UNIT_kind(unit.get()); }},
        {"write",
         [&](N) {
             PKCS1_RSA_PRIVATE_KEY *out = nullptr;
             return set_RSA_UNIT_to_PKCS1_RSA_PRIVATE_KEY(unit.get(), &out);
         }},
        {"freed", [&](N) { return key.freed; }},
    };
    return run_steps(row[1], steps);
}

Octets kcdsa_signature(const Octets &octets, std::uint32_t digest) {
    std::uint8_t r[TLX_KCDSA_MAX_LENGTH];
    std::uint8_t s[TLX_KCDSA_MAX_LENGTH];
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;
    const Kcdsa unit(dup_KCDSA(static_cast<const KCDSA *>(signing_key(kKcdsaKey)->key)));
    EXPECT_EQ(sign_KCDSA_data(unit.get(), digest, octets.data(), static_cast<std::uint32_t>(octets.size()), r,
                              &r_len, s, &s_len),
              0U);
    std::uint8_t *der = nullptr;
    const std::uint32_t length = encode_KCDSASignatureValue(&der, r, static_cast<std::int32_t>(r_len), s,
                                                            static_cast<std::int32_t>(s_len));
    const tlx::OwnedOctets<std::uint8_t> owner(der);
    return Octets(der, der + length);
}

/// A message with signers that have no key, and the steps that give them signatures.
std::string sign_later(const Row &row) {
    const Info info(new_P7_CONTENT_INFO());
    RSA_SIGNATURE_INPUT input = {};
    Octets signature;
    const auto signer = [&](std::uint32_t place) {
        return get_P7_SIGNER_INFOS_child(info->content.signedData->signerInfos,
                                         static_cast<std::int32_t>(place));
    };
    const auto octets_of_signer = [&](std::uint32_t place, Octets &octets) {
        std::uint8_t *made = nullptr;
        std::uint32_t length = 0;
        const std::uint32_t status = get_PKCS7_Signer_octets(signer(place), &made, &length);
        octets.assign(made, made + length);
        tlx_free(made);
        return status;
    };
    using N = const Numbers &;
    const Steps steps = {
        {"type", [&](N n) { return set_PKCS7_Type(info.get(), static_cast<std::int32_t>(n[0])); }},
        {"version", [&](N n) { return set_P7_version(info.get(), n[0]); }},
        {"add",
         [&](N n) {
             const Cert cert = signer_spec(n[0]).make();
             EXPECT_EQ(add_PKCS7_Certificate(info.get(), cert.get()), 0U);
             const ASYMMETRIC_KEY *key = n[3] == 1 ? signing_key(n[0]) : nullptr;
             return add_PKCS7_Signature_withEncryptedAlgorithm(info.get(), cert.get(), key,
                                                               static_cast<std::int32_t>(n[1]),
                                                               n[2] == 0 ? 1 : n[2], nullptr) == nullptr
                        ? 1U
                        : 0U;
         }},
        {"prepare",
         [&](N n) {
             return prepare_PKCS7_Signatures(info.get(), n[0] == 9 ? nullptr : kData.data(), 7, n[1],
                                             nullptr);
         }},
        {"octets", [&](N n) { return octets_of_signer(n[0], signature); }},
        {"input",
         [&](N n) {
             const std::uint32_t status = get_PKCS7_Signer_input(signer(n[0]), &input);
             if (status != 0) return status;
             Octets octets;
             std::uint8_t digest[TLX_DIGEST_MAX_LENGTH] = {};
             std::uint32_t length = 0;
             EXPECT_EQ(octets_of_signer(n[0], octets), 0U);
             EXPECT_EQ(Digest(input.digest_id, octets.data(), static_cast<std::uint32_t>(octets.size()),
                              digest, &length),
                       0U);
             EXPECT_TRUE(length == input.digest_length && std::equal(digest, digest + length, input.digest));
             return 0U;
         }},
        {"scheme", [&](N) { return input.mode; }},
        {"salt", [&](N) { return input.salt_length; }},
        // Signs with a key by number: the octets, in PSS with so much salt.
        {"sign",
         [&](N n) {
             Octets octets;
             EXPECT_EQ(octets_of_signer(n[0], octets), 0U);
             const auto size = static_cast<std::uint32_t>(octets.size());
             std::uint32_t length = 0;
             signature.assign(128, 0);
             const Unit unit(dup_RSA_UNIT(readable(n[1])));
             EXPECT_EQ(set_RSA_UNIT_PSS(unit.get(), TLX_DIGEST_SHA256, n[2]), 0U);
             return sign_RSA(unit.get(), TLX_DIGEST_SHA256, n[2] == 0 ? TLX_RSA_MODE_PKCS1 : TLX_RSA_MODE_PSS,
                             octets.data(), size, signature.data(), &length);
         }},
        {"sign-kcdsa",
         [&](N n) {
             Octets octets;
             EXPECT_EQ(octets_of_signer(n[0], octets), 0U);
             signature = kcdsa_signature(octets, TLX_DIGEST_SHA256);
             return 0U;
         }},
        // The certificate of a key.
        {"put",
         [&](N n) {
             return set_PKCS7_Signer_signature(signer(n[0]), signer_spec(n[1]).make().get(), signature.data(),
                                               static_cast<std::uint32_t>(signature.size()));
         }},
        {"algorithm",
         [&](N n) {
             return index_from_OBJECT_IDENTIFIER(
                 get_X509_ALGO_IDENTIFIER_OID(signer(n[0])->digestEncryptionAlgorithm));
         }},
        {"sign-rest",
         [&](N n) {
             return sign_PKCS7_withAttributes(info.get(), n[0] == 1 ? kData.data() : nullptr, 7, n[0],
                                              nullptr);
         }},
        {"check",
         [&](N n) {
             const Chain chain = valid_chain(3);
             const Store store = store_of({chain[2]});
             const Certificates pool = make({chain[1]});
             const VERIFY_SETTINGS settings = legacy_settings(nullptr);
             return verify_PKCS7_Signers_ex(info.get(), n[0] == 1 ? kData.data() : nullptr, n[0] == 1 ? 7 : 0,
                                            pool.get(), store.get(), &settings, nullptr);
         }},
    };
    return run_steps(row[1], steps);
}

/// What the key elsewhere makes of what it is handed, in so many octets.
Octets signature_of(const RSA_SIGNATURE_INPUT &input, std::uint32_t size) {
    Elsewhere key;
    std::uint32_t length = 128;
    Octets signature(128);
    EXPECT_EQ(sign_elsewhere(&key, &input, signature.data(), &length), 0U);
    signature.resize(size);
    return signature;
}

/// A certificate of a signature algorithm, signed by the key of a number, put under that of another.
std::string certify_later(const Row &row) {
    const Cert cert = signer_spec(0).make();
    const Cert issuer = signer_spec(row.number(3)).make();
    const Held<free_OBJECT_IDENTIFIER> algorithm(get_OBJECT_IDENTIFIER(row[1].c_str(), 0));
    EXPECT_EQ(set_X509_signature(cert.get(), algorithm.get()), 0U);
    const Octets before = encode_certificate(cert.get());
    RSA_SIGNATURE_INPUT input = {};
    const std::uint32_t status = get_X509_CERT_input(cert.get(), &input);
    if (status != 0) return status_text(status);
    const Octets signature = signature_of(input, row.number(2));
    const std::uint32_t put =
        set_X509_CERT_signature(cert.get(), get_X509_SPKI(issuer.get()), signature.data(), row.number(2));
    EXPECT_EQ(encode_certificate(cert.get()) == before, put != 0);
    return status_text(put) + " " +
           status_text(verify_SIG_X509_CERT(cert.get(), get_X509_SPKI(issuer.get())));
}

/// A list that was signed with another key, under an algorithm.
Crl list_under(const std::string &algorithm) {
    Crl crl = make_crl("key=3");
    const Held<free_OBJECT_IDENTIFIER> id(get_OBJECT_IDENTIFIER(algorithm.c_str(), 0));
    EXPECT_EQ(set_X509_CRL_signature(crl.get(), id.get()), 0U);
    return crl;
}

/// A list under an algorithm, signed by the key of a number, put under that of another.
std::string list_later(const Row &row) {
    const Crl crl = list_under(row[1]);
    const Cert issuer = signer_spec(row.number(3)).make();
    RSA_SIGNATURE_INPUT input = {};
    std::uint8_t *tbs = nullptr;
    std::uint32_t length = 0;
    EXPECT_EQ(get_X509_CRL_octets(crl.get(), &tbs, &length), 0U);
    const Octets octets(tbs, tbs + length);
    tlx_free(tbs);
    const std::uint32_t status = get_X509_CRL_input(crl.get(), &input);
    const Octets signature =
        status == 0 ? signature_of(input, row.number(2)) : kcdsa_signature(octets, TLX_DIGEST_HAS160);
    const std::uint32_t put = set_X509_CRL_sig_value(crl.get(), get_X509_SPKI(issuer.get()), signature.data(),
                                                     static_cast<std::uint32_t>(signature.size()));
    EXPECT_EQ(verify_SIG_X509_CRL(crl.get(), get_X509_SPKI(issuer.get())) == 0, put == 0);
    return status_text(status) + " " + status_text(put);
}

/// Response data under a digest, signed by the key of a number, with the certificate of another.
std::string answer_later(const Row &row) {
    const Cert responder = signer_spec(row.number(3)).make();
    OCSP_RESPONSE_DATA *data = nullptr;
    EXPECT_EQ(generate_OCSP_RESPONSE_DATA(&data, responder.get(), TLX_OCSP_BY_NAME, 0, nullptr, 0), 0U);
    Held<free_OCSP_RESPONSE_DATA> owner(data);
    RSA_SIGNATURE_INPUT input = {};
    const std::uint32_t status = get_OCSP_RESPONSE_DATA_input(data, row.number(1), &input);
    const Octets signature =
        status == 0
            ? signature_of(input, row.number(2))
            : kcdsa_signature(encoding_of(data, TLX_ENCODER(OCSP_RESPONSE_DATA_to_Seq)), TLX_DIGEST_HAS160);
    BASIC_OCSP_RESPONSE *basic = nullptr;
    const std::uint32_t put =
        set_BASIC_OCSP_RESPONSE_signature(&basic, data, responder.get(), row.number(1), signature.data(),
                                          static_cast<std::uint32_t>(signature.size()));
    const Held<free_BASIC_OCSP_RESPONSE> basic_owner(basic);
    if (put != 0) return status_text(status) + " " + status_text(put);
    EXPECT_EQ(owner.release(), basic->tbsResponseData);
    return status_text(status) + " " +
           std::to_string(index_from_OBJECT_IDENTIFIER(basic->signatureAlgorithm->algorithm)) + " " +
           std::to_string(get_X509_CERTIFICATES_count(basic->certs));
}

TEST(ExternalKey, Steps) {
    make_signing_keys();
    expect_rows("external_key.txt", {{"key", {run_on_external}},
                                     {"later", {sign_later}},
                                     {"certificate", {certify_later}},
                                     {"list", {list_later}},
                                     {"answer", {answer_later}}});
}

/// Everything that signs and decrypts with a private key does so with one that cannot be read.
TEST(ExternalKey, SignsAndOpensMessagesAndSignsCertificates) {
    make_signing_keys();
    const LeakCheck leaks;
    Elsewhere key;
    {
        const Unit unit(new_RSA_UNIT());
        ASSERT_EQ(set_external(unit.get(), key), 0U);
        const ASYMMETRIC_KEY secret = holder(unit);
        const Cert cert = signer_spec(0).make();
        ASSERT_EQ(gen_SIG_X509_Cert(cert.get(), &secret), 0U);
        EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), get_X509_SPKI(cert.get())), 0U);

        const Info signed_info(new_P7_CONTENT_INFO());
        ASSERT_EQ(set_PKCS7_Type(signed_info.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U);
        ASSERT_EQ(add_PKCS7_Certificate(signed_info.get(), cert.get()), 0U);
        ASSERT_NE(add_PKCS7_Signature(signed_info.get(), cert.get(), &secret, TLX_OID_SHA256), nullptr);
        key.status = 0xE0000001;
        EXPECT_EQ(sign_PKCS7_withAttributes(signed_info.get(), kData.data(), 7, 0, nullptr), 0xE0000001);
        key.status = 0;
        ASSERT_EQ(sign_PKCS7_withAttributes(signed_info.get(), nullptr, 0, 0, nullptr), 0U);
        EXPECT_EQ(verify_PKCS7_Signers(signed_info.get(), nullptr, 0, nullptr, nullptr, nullptr, nullptr),
                  0U);

        const Info sealed(new_P7_CONTENT_INFO());
        ASSERT_EQ(set_PKCS7_Type(sealed.get(), TLX_OID_PKCS7_ENVELOPED_DATA), 0U);
        ASSERT_EQ(add_PKCS7_Recipient(sealed.get(), cert.get()), 0U);
        ASSERT_EQ(seal_PKCS7(sealed.get(), "aes-256-cbc", kData.data(), 7), 0U);
        std::uint8_t *content = nullptr;
        std::uint32_t length = 0;
        ASSERT_EQ(open_PKCS7(sealed.get(), cert.get(), &secret, &content, &length), 0U);
        EXPECT_EQ(Octets(content, content + length), kData);
        tlx_free(std::exchange(content, nullptr));
        key.status = 0xE0000002;
        EXPECT_EQ(open_PKCS7(sealed.get(), cert.get(), &secret, &content, &length), 0xE0000002);
        key.status = 1;
        // A random key, which in one of 256 cases gives padding that looks right.
        const std::uint32_t wrong = open_PKCS7(sealed.get(), cert.get(), &secret, &content, &length);
        EXPECT_TRUE(wrong == 0x4B410012 || (wrong == 0 && Octets(content, content + length) != kData));
        tlx_free(content);
    }
    EXPECT_EQ(key.freed, 1U);
}

TEST(ExternalKey, AllocationsMayFail) {
    make_signing_keys();
    sweep_failing_allocations([&] {
        Elsewhere key;
        std::uint32_t status = 1;
        {
            const Unit unit(new_RSA_UNIT());
            status = unit == nullptr ? 1 : set_external(unit.get(), key);
            EXPECT_LE(status, 1U);
            if (status == 0) {
                const Unit copy(dup_RSA_UNIT(unit.get()));
                status = copy == nullptr ? 1 : 0;
                EXPECT_EQ(key.freed, 0U);
            }
        }
        EXPECT_LE(key.freed, 1U);
        return status == 0 && key.freed == 1;
    });
    const Cert cert = signer_spec(0).make();
    const Held<free_P7_SIGNER_INFO> signer(new_P7_SIGNER_INFO());
    ASSERT_EQ(
        set_PKCS7_P7_SIGNER_INFO(signer.get(), cert.get(), nullptr, TLX_OID_SHA256, TLX_P7_RSA_PSS, nullptr),
        0U);
    const std::uint8_t type[] = "1.2.840.113549.1.7.1";
    ASSERT_EQ(add_PKCS7_Signed_Attribute(signer.get(), TLX_OID_CONTENT_TYPE, TLX_TAG_OBJECT_IDENTIFIER, type,
                                         sizeof type - 1),
              0U);
    const Octets wrong(128, 1);
    sweep_statuses({0x4B33005F, 0x4B330048}, [&] {
        RSA_SIGNATURE_INPUT input;
        return get_PKCS7_Signer_input(signer.get(), &input);
    });
    sweep_failing_allocations([&] {
        const std::uint32_t status = set_PKCS7_Signer_signature(signer.get(), cert.get(), wrong.data(), 128);
        EXPECT_TRUE(status == 0x4B34003B || status == 0x4B34005F || status == 0x4B340048 ||
                    status == 0x4B340054);
        return status == 0x4B340054;
    });
    sweep_failing_allocations([&] {
        const std::uint32_t status =
            set_X509_CERT_signature(cert.get(), get_X509_SPKI(cert.get()), wrong.data(), 128);
        EXPECT_TRUE(status == 0x463B003B || status == 0x463B0054);
        return status == 0x463B0054;
    });
}

TEST(ExternalKey, ListsMayLackMemory) {
    make_signing_keys();
    const Cert cert = signer_spec(0).make();
    const Crl crl = list_under("sha256WithRSAEncryption");
    RSA_SIGNATURE_INPUT input = {};
    std::uint8_t *octets = nullptr;
    std::uint32_t length = 0;
    sweep_statuses({0x4811003B, 0x4812003B, 0x48120048}, [&] {
        const std::uint32_t status = get_X509_CRL_octets(crl.get(), &octets, &length);
        tlx_free(std::exchange(octets, nullptr));
        return status != 0 ? status : get_X509_CRL_input(crl.get(), &input);
    });
    const Octets signature = signature_of(input, 128);
    const auto put = [&] {
        return set_X509_CRL_sig_value(crl.get(), get_X509_SPKI(cert.get()), signature.data(), 128);
    };
    ASSERT_EQ(put(), 0U);
    sweep_statuses({0x4813003B, 0x48130054}, put);
    expect_refuses_null(0x48110049, get_X509_CRL_octets, crl.get(), &octets, &length);
    expect_refuses_null(0x48120049, get_X509_CRL_input, crl.get(), &input);
    expect_refuses_null(0x48130049, set_X509_CRL_sig_value, crl.get(), get_X509_SPKI(cert.get()),
                        signature.data(), 128);
    EXPECT_EQ(get_X509_CRL_octets(Crl(new_X509_CRL()).get(), &octets, &length), 0x48110049U);
}

TEST(ExternalKey, AnswersMayLackMemory) {
    make_signing_keys();
    const Cert cert = signer_spec(0).make();
    OCSP_RESPONSE_DATA *made = nullptr;
    ASSERT_EQ(generate_OCSP_RESPONSE_DATA(&made, cert.get(), TLX_OCSP_BY_NAME, 0, nullptr, 0), 0U);
    const Held<free_OCSP_RESPONSE_DATA> data(made);
    RSA_SIGNATURE_INPUT input = {};
    sweep_statuses({0x50140103, 0x502F003C},
                   [&] { return get_OCSP_RESPONSE_DATA_input(made, TLX_DIGEST_SHA256, &input); });
    const Octets signature = signature_of(input, 128);
    BASIC_OCSP_RESPONSE *basic = nullptr;
    sweep_statuses({0x50140103, 0x5030003C, 0x50300054}, [&] {
        Held<free_OCSP_RESPONSE_DATA> copy(dup_OCSP_RESPONSE_DATA(made));
        if (copy == nullptr) return 0x5030003CU;
        const std::uint32_t status = set_BASIC_OCSP_RESPONSE_signature(
            &basic, copy.get(), cert.get(), TLX_DIGEST_SHA256, signature.data(), 128);
        if (status == 0) static_cast<void>(copy.release());
        free_BASIC_OCSP_RESPONSE(std::exchange(basic, nullptr));
        return status;
    });
    expect_refuses_null(0x502F0049, get_OCSP_RESPONSE_DATA_input, made, TLX_DIGEST_SHA256, &input);
    expect_refuses_null(0x50300049, set_BASIC_OCSP_RESPONSE_signature, &basic, made, cert.get(),
                        TLX_DIGEST_SHA256, signature.data(), 128);
}

}  // namespace
}  // namespace tlx_test
