// Encrypting and decrypting messages, as steps in rows.
#include <algorithm>
#include <memory>
#include <sstream>

#include "support/chain_builder.hpp"
#include "support/command.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_P7_CONTENT_INFO>;
using Algorithm = Held<free_X509_ALGO_IDENTIFIER>;
using Oaep = Held<free_RSAES_OAEP_PARAM>;

constexpr std::uint8_t kUntouched = 0xEE;

/// The certificate of a signing key, by its number; certificate 9 has no key.
const X509_CERT *certificate(std::uint32_t number) {
    static const std::vector<Cert> certificates = [] {
        std::vector<Cert> made;
        for (unsigned key = 0; key <= kKcdsaKey; ++key) {
            CertSpec spec{.subject = "User", .issuer = "CA", .key = key};
            spec.serial = "0" + std::to_string(key + 1);
            made.push_back(spec.make());
        }
        return made;
    }();
    static const Cert kWithoutKey(new_X509_CERT());
    return number < certificates.size() ? certificates[number].get() : kWithoutKey.get();
}

Octets content_of(std::uint32_t len) {
    Octets content;
    content.reserve(len + 1);  // no null pointer, also for no octets
    content.resize(len);
    for (std::uint32_t i = 0; i < len; ++i)
        content[i] = static_cast<std::uint8_t>(i * 7);
    return content;
}

/// An algorithm identifier of a row, with NULL parameters when asked for.
Algorithm algorithm_of(std::uint32_t row, bool with_null) {
    Algorithm algorithm(new_X509_ALGO_IDENTIFIER());
    if (!algorithm) return nullptr;
    const String oid(index_to_OBJECT_IDENTIFIER(static_cast<std::int32_t>(row)));
    if (set_X509_ALGO_IDENTIFIER_OID(algorithm.get(), oid.get()) != 0) return nullptr;
    return with_null && set_X509_ALGO_IDENTIFIER_null(algorithm.get()) != 0 ? nullptr : std::move(algorithm);
}

/// Parameters of OAEP with a digest, and with a label when it has octets.
Oaep oaep_of(std::uint32_t digest_row, std::uint32_t label_len) {
    Oaep param(new_RSAES_OAEP_PARAM());
    if (!param ||
        set_RSAES_OAEP_PARAM_hashAlgorithm(param.get(), static_cast<std::int32_t>(digest_row)) != 0 ||
        set_RSAES_OAEP_PARAM_maskGenAlgorithm(param.get(), TLX_OID_MGF1) != 0 ||
        set_RSAES_OAEP_PARAM_pSourceAlgorithm(param.get(), TLX_OID_P_SPECIFIED, content_of(9).data(),
                                              static_cast<std::int32_t>(label_len)) != 0) {
        return nullptr;
    }
    return param;
}

/// A message, what the steps gave it and what came out of it.
struct Work {
    Info info{new_P7_CONTENT_INFO()};
    Octets key = Octets(32, 0x42);
    const Octets iv = Octets(16, 0x24);
    Octets given;   ///< plaintext of all pieces
    Octets handed;  ///< ciphertext that came back in buffers
    Octets plain;
    bool flipped = false;  ///< since when decryption may give anything
    std::uint32_t written = 0;
    bool untouched = true;

    /// Calls use(buffer) with this room (none above 999) and keeps what it wrote there.
    template <typename Use>
    std::uint32_t into(std::uint32_t room, Octets &kept, Use use) {
        Octets buffer(room > 999 ? 0 : room, kUntouched);
        written = static_cast<std::uint32_t>(buffer.size());
        buffer.shrink_to_fit();
        const std::uint32_t status = use(room > 999 ? nullptr : buffer.data(), &written);
        untouched = std::ranges::count(buffer, kUntouched) == static_cast<std::ptrdiff_t>(buffer.size());
        if (status == 0 && written <= buffer.size() && !untouched) {
            kept.insert(kept.end(), buffer.begin(), buffer.begin() + written);
        }
        return status;
    }
    const std::uint8_t *next(std::uint32_t len) {
        given = content_of(static_cast<std::uint32_t>(given.size()) + len);
        return given.data() + (given.size() - len);
    }
    Octets collected() const {
        const P7_ENCRYPTED_CONTENT_INFO *content = info->content.envelopedData->encryptedContentInfo;
        const ASN1_STRING *octets = content == nullptr ? nullptr : content->encryptedContent;
        return octets == nullptr ? Octets() : Octets(octets->data, octets->data + octets->length);
    }
    std::uint32_t through_der() {
        std::uint8_t *der = nullptr;
        const std::uint32_t size = TLX_WRITE_DER(P7_CONTENT_INFO, info.get(), &der);
        if (size == 0xFFFFFFFF) return 1;
        P7_CONTENT_INFO *read = nullptr;
        const std::uint32_t status = TLX_READ_DER(P7_CONTENT_INFO, &read, der, size);
        tlx_free(der);
        info.reset(read);
        return status == 0 ? 0 : 1;
    }
};

/// The status of opening a message.
std::uint32_t open_with(const P7_CONTENT_INFO *info, const X509_CERT *cert, const ASYMMETRIC_KEY *key,
                        Octets &plain) {
    std::uint8_t *content = nullptr;
    std::uint32_t len = 0;
    const std::uint32_t status = open_PKCS7(info, cert, key, &content, &len);
    EXPECT_EQ(status == 0, content != nullptr);
    plain.assign(content, content + len);
    tlx_free(content);
    return status;
}

/// What each step returns.
std::string run(const Row &row) {
    Work work;
    if (!work.info) return "1";
    using N = const Numbers &;
    const auto info = [&] { return work.info.get(); };
    const Steps steps = {
        {"type", [&](N n) { return set_PKCS7_Type(info(), static_cast<std::int32_t>(n[0])); }},
        {"to", [&](N n) { return add_PKCS7_Recipient(info(), certificate(n[0])); }},
        {"to-mode",
         [&](N n) {
             return add_PKCS7_Recipient_withEncryptedAlgorithm(info(), certificate(n[0]), n[1], nullptr);
         }},
        {"to-oaep",  // a digest and octets of label
         [&](N n) {
             const Oaep param = oaep_of(n[1], n[2]);
             return !param ? 1U
                           : add_PKCS7_Recipient_withEncryptedAlgorithm(info(), certificate(n[0]), 16,
                                                                        param.get());
         }},
        {"cert", [&](N n) { return add_PKCS7_Certificate(info(), certificate(n[0])); }},
        {"unit",
         [&](N n) {
             Held<free_BLOCK_CIPHER_UNIT> unit(new_BLOCK_CIPHER_UNIT());
             if (!unit || init_BlockCipher(unit.get(), n[0], work.key.data(), work.iv.data(), 1) != 0)
                 return 1U;
             const std::uint32_t status = set_PKCS7_Cipher(info(), unit.get());
             if (status == 0) static_cast<void>(unit.release());
             return status;
         }},
        {"init",  // a cipher, the output flag, the mode
         [&](N n) {
             const Algorithm algorithm = algorithm_of(n[0], n[1] != 0);
             if (!algorithm && n[0] != 0) return 1U;
             work.given.clear();
             return init_PKCS7_Encrypt(info(), 7, algorithm.get(), n[1], work.key.data(), work.iv.data(),
                                       n[2]);
         }},
        {"update",
         [&](N n) {
             return work.into(n[1], work.handed, [&](std::uint8_t *out, std::uint32_t *len) {
                 return update_PKCS7_encrypt(info(), work.next(n[0]), n[0], out, len);
             });
         }},
        {"final",
         [&](N n) {
             return work.into(n[0], work.handed, [&](std::uint8_t *out, std::uint32_t *len) {
                 return final_PKCS7_Encrypt(info(), out, len);
             });
         }},
        {"encrypt",
         [&](N n) {
             const Algorithm algorithm = algorithm_of(n[0], false);
             return encrypt_PKCS7(info(), 7, algorithm.get(), work.next(n[1]), n[1], n[2]);
         }},
        {"encrypt-own",
         [&](N n) {
             const Algorithm algorithm = algorithm_of(n[0], false);
             return encrypt_PKCS7_userKEY(info(), 7, algorithm.get(), work.next(n[1]), n[1], work.key.data(),
                                          work.iv.data(), n[2]);
         }},
        {"encrypt-null",
         [&](N n) {
             return encrypt_PKCS7(info(), 0, nullptr, work.iv.data(), 1, 0) +
                    encrypt_PKCS7_userKEY(info(), 0, nullptr, nullptr, n[0], nullptr, nullptr, 0);
         }},
        {"to-any",  // OAEP with a digest, a digest of MGF1 and octets of label
         [&](N n) {
             const Octets label = content_of(n[3]);
             return add_PKCS7_Recipient_OAEP(info(), certificate(n[0]), n[1], n[2], label.data(), n[3]);
         }},
        {"seal",  // a cipher by its place, and octets of content
         [&](N n) {
             const char *others[] = {"aes-256-gcm", "aes-128-cfb1"};
             const char *name = n[0] >= 98 ? others[n[0] - 98] : get_PKCS7_cipher_name(n[0]);
             return seal_PKCS7(info(), name, work.next(n[1]), n[1]);
         }},
        {"init-seal", [&](N n) { return init_PKCS7_Seal(info(), "seed-cbc", n[0]); }},
        {"open",  // a private key, the certificate's number or 8 for none
         [&](N n) {
             const X509_CERT *cert = n[1] == 8 ? nullptr : certificate(n[1]);
             const std::uint32_t status = open_with(info(), cert, signing_key(n[0]), work.plain);
             // Of what a wrong key gives, the padding is right once in 256 times.
             const bool is_wrong = work.flipped || n[0] != n[1];
             const bool by_chance = status == 0 && is_wrong && work.plain != work.given;
             return by_chance ? 0x4B410012U : status;
         }},
        {"flip",  // an octet of the first recipient's key, or of the ciphertext
         [&](N n) {
             auto *data = info()->content.envelopedData;
             ASN1_STRING *octets = n[0] == 0
                                       ? get_P7_RECIPIENT_INFOS_child(data->recipientInfos, 0)->encryptedKey
                                       : data->encryptedContentInfo->encryptedContent;
             octets->data[n[1]] ^= 1U;
             work.flipped = true;
             return 0U;
         }},
        {"parameters",  // of the content's algorithm: none, an IV of 15 octets, a SEQUENCE, all of AES in GCM
         [&](N n) {
             X509_ALGO_IDENTIFIER *algorithm =
                 info()->content.envelopedData->encryptedContentInfo->contentEncryptionAlgorithm;
             const char *const values[] = {"", "04:000102030405060708090A0B0C0D0E",
                                           "30{02:3A 04:0001020304050607}",
                                           "30{04:202122232425262728292A2B 02:10}"};
             const String gcm = string_of(TLX_TAG_OBJECT_IDENTIFIER, "2.16.840.1.101.3.4.1.46");
             if (n[0] == 3) static_cast<void>(set_X509_ALGO_IDENTIFIER_OID(algorithm, gcm.get()));
             return set_X509_ALGO_IDENTIFIER_parameters(algorithm,
                                                        n[0] == 0 ? nullptr : der_node(values[n[0]]).get());
         }},
        {"sign",  // with a key, a digest, and 1 for an attribute
         [&](N n) {
             P7_SIGNER_INFO *signer = add_PKCS7_Signature(info(), certificate(n[0]), signing_key(n[0]),
                                                          static_cast<std::int32_t>(n[1]));
             if (signer == nullptr || n[2] == 0) return signer == nullptr ? 1U : 0U;
             return add_PKCS7_Signed_Attribute(signer, TLX_OID_SIGNING_TIME, TLX_TAG_UTC_TIME,
                                               reinterpret_cast<const std::uint8_t *>("300101000000Z"), 13);
         }},
        {"sign-encrypt",  // a cipher, octets, the mode or 99 for that of each recipient, 1 for the own key
         [&](N n) {
             const Algorithm algorithm = algorithm_of(n[0], false);
             const std::uint8_t *data = work.next(n[1]);
             const std::uint8_t *key = work.key.data();
             const std::uint8_t *iv = work.iv.data();
             if (n[2] == 99) {
                 return n[3] == 0
                            ? sign_encrypt_PKCS7_SP(info(), 7, algorithm.get(), data, n[1])
                            : sign_encrypt_PKCS7_userKEY_SP(info(), 7, algorithm.get(), data, n[1], key, iv);
             }
             return n[3] == 0
                        ? sign_encrypt_PKCS7(info(), 7, algorithm.get(), data, n[1], n[2])
                        : sign_encrypt_PKCS7_userKEY(info(), 7, algorithm.get(), data, n[1], key, iv, n[2]);
         }},
        {"verify-decrypt",  // room, the certificate's number or 8 for none
         [&](N n) {
             work.plain.clear();
             return work.into(n[0], work.plain, [&](std::uint8_t *out, std::uint32_t *len) {
                 return verify_decrypt_PKCS7(info(), n[1] == 8 ? nullptr : certificate(n[1]), work.key.data(),
                                             out, len);
             });
         }},
        {"written", [&](N) { return work.written; }},
        {"untouched", [&](N) { return work.untouched ? 1U : 0U; }},
        {"collected", [&](N) { return get_PKCS7_ENCRYPTED_CONTENT_length(info()); }},
        {"same", [&](N) { return work.handed == work.collected() ? 1U : 0U; }},
        {"keep",  // puts what was handed back into the message
         [&](N n) {
             const Algorithm algorithm = algorithm_of(n[0], false);
             P7_ENCRYPTED_CONTENT_INFO *content = info()->content.envelopedData->encryptedContentInfo;
             return set_PKCS7_P7_ENCRYPTED_CONTENT_INFO(
                 content, TLX_OID_PKCS7_DATA, content->contentEncryptionAlgorithm, work.handed.data(),
                 static_cast<std::uint32_t>(work.handed.size()));
         }},
        {"der", [&](N) { return work.through_der(); }},
        {"key",  // a private key, the certificate's number or 8 for none, the mode, the room
         [&](N n) {
             Octets key(64);
             auto len = n[3];
             const std::uint32_t status = decrypt_PKCS7_enveloped_CEK(
                 info(), n[1] == 8 ? nullptr : certificate(n[1]), signing_key(n[0]), key.data(), &len, n[2]);
             EXPECT_TRUE(status == 0 || len == 0);
             if (status == 0) work.key = key;
             return status == 0 ? 100 + len : status;
         }},
        {"decrypt",  // room, and 1 for a wrong IV
         [&](N n) {
             work.plain.clear();
             const std::uint32_t status =
                 work.into(n[0], work.plain, [&](std::uint8_t *out, std::uint32_t *len) {
                     return decrypt_PKCS7(info(), work.key.data(), n[1] != 0 ? work.key.data() : nullptr, out,
                                          len);
                 });
             EXPECT_TRUE(status == 0 || work.written == 0);
             return status;
         }},
        {"plain", [&](N) { return work.plain == work.given ? 1U : 0U; }},
    };
    return run_steps(row[1], steps);
}

/// The same, or the first result that differs.
std::string run_without_memory(const Row &row) {
    std::istringstream expected(row.fields.back());
    std::istringstream results(run(row));
    std::string result;
    for (std::string wanted; results >> result;) {
        if (!(expected >> wanted) || wanted != result) return result;
    }
    return row.fields.back();
}

constexpr const char *kOpenssl = " -provider default -provider legacy ";
const std::string kKeyFile = TLX_TEST_DATA "/keys/rsa-0.pem";

std::string as_text(const Octets &octets) {
    return {octets.begin(), octets.end()};
}

/// Whether the openssl program opens what was sealed under a cipher for a recipient: PKCS #1 v1.5, or OAEP
/// with a digest, one of MGF1, and octets of label.
std::string openssl_opens(const Row &row) {
    const CommandFolder folder;
    const Info info(new_P7_CONTENT_INFO());
    EXPECT_EQ(set_PKCS7_Type(info.get(), TLX_OID_PKCS7_ENVELOPED_DATA), 0U);
    const Octets label = content_of(row.count() > 3 ? row.number(4) : 0);
    EXPECT_EQ(row[2] == "-"
                  ? add_PKCS7_Recipient(info.get(), certificate(0))
                  : add_PKCS7_Recipient_OAEP(info.get(), certificate(0), row.number(2), row.number(3),
                                             label.data(), static_cast<std::uint32_t>(label.size())),
              0U);
    const Octets content = content_of(1000);
    EXPECT_EQ(seal_PKCS7(info.get(), row[1].c_str(), content.data(), 1000), 0U);
    folder.write("sealed", as_text(encoding_of(info.get(), TLX_ENCODER(P7_CONTENT_INFO_to_Seq))));
    if (!folder.succeeds("openssl cms -decrypt -binary -inform DER -in sealed -out plain -inkey " + kKeyFile +
                         kOpenssl)) {
        return "refused";
    }
    return folder.read("plain") == as_text(content) ? "opened" : "garbled";
}

/// The status of opening what the openssl program seals with some options, as DER and as BER in pieces.
std::string opens_openssl(const Row &row) {
    std::string results;
    const Octets content = content_of(100000);
    for (const char *form : {"", " -stream"}) {
        const CommandFolder folder;
        folder.write("plain", as_text(content));
        folder.write("cert.der", as_text(encode_certificate(certificate(0))));
        folder.run("openssl cms -encrypt -binary -in plain -outform DER -out sealed -recip cert.der " +
                   row[1] + form + kOpenssl);
        P7_CONTENT_INFO *read = nullptr;
        EXPECT_EQ(TLX_READ_DER_FILE(P7_CONTENT_INFO, &read, folder.path("sealed").c_str()), 0U);
        const Info info(read);
        Octets plain;
        const std::uint32_t status = open_with(read, certificate(0), signing_key(0), plain);
        results +=
            (results.empty() ? "" : " ") + (status == 0 && plain == content ? "opened" : status_text(status));
    }
    return results;
}

TEST(MessageEncrypt, Rows) {
    for (unsigned key = 0; key <= 9; ++key)
        static_cast<void>(certificate(key));
    expect_rows("message_encrypt.txt",
                {{"steps", {run}},
                 {"openssl-opens", {openssl_opens}},
                 {"opens-openssl", {opens_openssl}},
                 {"allocations",
                  {run_without_memory,
                   {"1", "4B20003A", "4B40003A", "4B41003A", "4B410012", "4B1C003B", "4B1C005F"}}}});
}

}  // namespace
}  // namespace tlx_test
