// No memory that was freed holds a private key.
#include <gtest/gtest.h>
#include <tlxpki/asn1_io.h>
#include <tlxpki/pem.h>
#include <tlxpki/pkcs12.h>
#include <tlxpki/pkcs12_file.h>
#include <tlxpki/pkcs5.h>
#include <tlxpki/x509_sign.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "keys/key_file_records.hpp"
#include "support/chain_builder.hpp"
#include "support/command.hpp"

namespace tlx_test {
namespace {

constexpr char kPassword[] = "correct horse";
constexpr std::int32_t kPasswordLength = sizeof kPassword - 1;

/// Texts to be looked for in every block that is freed.
struct Watch {
    std::vector<std::string> secrets;
    unsigned found = 0;
    unsigned seen = 0;

    static void look(const void *block, std::size_t size, void *context) {
        auto &watch = *static_cast<Watch *>(context);
        const std::string_view octets(static_cast<const char *>(block), size);
        ++watch.seen;
        for (const std::string &secret : watch.secrets)
            watch.found += octets.find(secret) != octets.npos ? 1U : 0U;
    }
};

/// Eight octets from the middle of a number, as files have them and as the limbs of a number do.
void add_number(std::vector<std::string> &secrets, const BIGINT *number) {
    std::string octets(get_BIGINT_der_length(number), '\0');
    ASSERT_EQ(BIGINT_to_binary(number, reinterpret_cast<std::uint8_t *>(octets.data()),
                               get_BIGINT_der_length(number)),
              0U);
    const std::string middle = octets.substr(octets.size() / 2, 8);
    secrets.push_back(middle);
    secrets.emplace_back(middle.rbegin(), middle.rend());
}

void give_back(char *text) {
    tlx_wipe(text, std::string_view(text).size());
    tlx_free(text);
}

class Secrets : public ::testing::Test {
  protected:
    const RSA_UNIT *rsa_ = static_cast<const RSA_UNIT *>(signing_key(0)->key);
    const CommandFolder folder_;

    /// How often blocks that an operation frees hold one of the secrets.
    static unsigned traces(const std::vector<std::string> &secrets, const std::function<void()> &operation) {
        Watch watch{secrets};
        tlx_watch_frees(Watch::look, &watch);
        operation();
        tlx_watch_frees(nullptr, nullptr);
        EXPECT_GT(watch.seen, 0U);
        return watch.found;
    }
    static void expect_no_trace(const std::vector<std::string> &secrets,
                                const std::function<void()> &operation) {
        EXPECT_EQ(traces(secrets, operation), 0U) << "in blocks that were freed";
    }
    /// Two private numbers of the RSA key, and its text.
    [[nodiscard]] std::vector<std::string> of_rsa() const {
        std::vector<std::string> secrets;
        add_number(secrets, get_RSA_UNIT_number(rsa_, TLX_RSA_D));
        add_number(secrets, get_RSA_UNIT_number(rsa_, TLX_RSA_P));
        char *text = nullptr;
        EXPECT_EQ(writePKCS1PrivateKey_to_Binary(rsa_, nullptr, 0, &text), 0U);
        secrets.push_back(std::string(text).substr(400, 24));
        give_back(text);
        return secrets;
    }
};

TEST_F(Secrets, AreSeenWhenTheyAreLeft) {
    char *text = nullptr;
    ASSERT_EQ(writePKCS1PrivateKey_to_Binary(rsa_, nullptr, 0, &text), 0U);
    EXPECT_EQ(traces(of_rsa(), [text] { tlx_free(text); }), 1U);
}

TEST_F(Secrets, LeaveNoTraceOfKeyFiles) {
    for (const char *password : {static_cast<const char *>(nullptr), kPassword}) {
        SCOPED_TRACE(password == nullptr ? "plain" : "encrypted");
        const std::int32_t length = password == nullptr ? 0 : kPasswordLength;
        const std::string path = folder_.path("key.pem");
        std::vector<std::string> secrets = of_rsa();
        secrets.emplace_back(kPassword);
        expect_no_trace(secrets, [&] {
            RSA_UNIT *unit = new_RSA_UNIT();
            EXPECT_EQ(writePKCS1PrivateKey_to_File(rsa_, password, length, path.c_str()), 0U);
            EXPECT_EQ(readPKCS1_from_File(unit, password, length, path.c_str()), 0U);
            EXPECT_EQ(readPKCS1_from_File(unit, "wrong", 5, path.c_str()) == 0, password == nullptr);
            free_RSA_UNIT(unit);
        });
    }
}

/// The octets that a password and the salt of a container derive with one iteration.
void add_derived(std::vector<std::string> &secrets, const PKCS8 *container) {
    const tlx::Owned<P5_PBE_PARAM> param(get_PKCS8_P5_PBE_PARAM(container));
    const auto salt_len = static_cast<std::uint32_t>(param->salt->length);
    std::uint8_t derived[20];
    ASSERT_EQ(
        PBKDF1(kPassword, kPasswordLength, param->salt->data, salt_len, 1, TLX_DIGEST_SHA1, derived, 20), 0U);
    secrets.emplace_back(reinterpret_cast<const char *>(derived), 16);
    ASSERT_EQ(
        PBKDF2(kPassword, kPasswordLength, param->salt->data, salt_len, 1, TLX_DIGEST_SHA256, derived, 20),
        0U);
    secrets.emplace_back(reinterpret_cast<const char *>(derived), 20);
}

TEST_F(Secrets, LeaveNoTraceOfEncryptedKeys) {
    for (std::uint32_t i = 0; const char *scheme = get_PKCS8_scheme_name(i); ++i) {
        SCOPED_TRACE(scheme);
        std::vector<std::string> secrets = of_rsa();
        secrets.emplace_back(kPassword);
        secrets.emplace_back("c\0o\0r\0r\0e\0c\0t", 13);  // as PKCS #12 widens it
        PKCS8 *container = nullptr;
        expect_no_trace(secrets, [&] {
            P8_PRIV_KEY_INFO *info = nullptr;
            EXPECT_EQ(gen_P8_PRIV_KEY_INFO(signing_key(0), &info), 0U);
            EXPECT_EQ(seal_PKCS8(info, scheme, nullptr, nullptr, 1, kPassword, kPasswordLength, &container),
                      0U);
            free_P8_PRIV_KEY_INFO(info);
        });
        add_derived(secrets, container);
        expect_no_trace(secrets, [&] {
            P8_PRIV_KEY_INFO *info = nullptr;
            EXPECT_EQ(open_PKCS8(container, kPassword, kPasswordLength, &info), 0U);
            EXPECT_EQ(open_PKCS8(container, "wrong", 5, &info), 0x4A410012U);
            decrypt_PKCS5(container, &info, kPassword, kPasswordLength);
            free_P8_PRIV_KEY_INFO(dup_P8_PRIV_KEY_INFO(info));
            free_P8_PRIV_KEY_INFO(info);
        });
        free_PKCS8(container);
    }
}

TEST_F(Secrets, LeaveNoTraceOfPkcs12Files) {
    std::vector<std::string> secrets = of_rsa();
    secrets.emplace_back(kPassword);
    std::string units;
    for (const char c : std::string_view(kPassword))
        units += std::string("\0", 1) + c;
    secrets.push_back(units);
    expect_no_trace(secrets, [&] {
        P8_PRIV_KEY_INFO *info = nullptr;
        std::uint8_t *octets = nullptr;
        ASSERT_EQ(gen_P8_PRIV_KEY_INFO(signing_key(0), &info), 0U);
        const std::uint32_t size = writeDER_to_Binary(info, TLX_ENCODER(P8_PRIV_KEY_INFO_to_Seq), &octets);
        const Held<free_P12_ENTRIES> entries(new_P12_ENTRIES());
        EXPECT_EQ(add_PKCS12_entry(entries.get(), TLX_P12_PRIVATE_KEY, nullptr, octets, size, "name", -1),
                  0U);
        for (const char *scheme : {"pbes2", "pbe-sha1-3des", "pbe-sha1-rc4-128"}) {
            P12_SETTINGS settings = {};
            settings.keyScheme = scheme;
            settings.iterations = 1;
            P12_PFX *pfx = nullptr;
            P12_ENTRIES *opened = nullptr;
            EXPECT_EQ(make_PKCS12(entries.get(), &settings, kPassword, kPasswordLength, &pfx), 0U);
            EXPECT_EQ(open_PKCS12(pfx, kPassword, kPasswordLength, nullptr, 0, &opened), 0U) << scheme;
            EXPECT_EQ(open_PKCS12(pfx, "wrong", 5, nullptr, 0, &opened), 0x4D300012U);
            EXPECT_EQ(verify_PKCS12_mac(pfx, kPassword, kPasswordLength), 0U);
            free_P12_ENTRIES(dup_P12_ENTRIES(opened));
            free_P12_ENTRIES(opened);
            free_P12_PFX(pfx);
        }
        tlx_wipe(octets, size);
        tlx_free(octets);
        free_P8_PRIV_KEY_INFO(info);
    });
}

TEST_F(Secrets, LeaveNoTraceOfRecords) {
    const std::string path = folder_.path("key.der");
    expect_no_trace(of_rsa(), [&] {
        PKCS1_RSA_PRIVATE_KEY *key = nullptr;
        void *read = nullptr;
        char *text = nullptr;
        EXPECT_EQ(set_RSA_UNIT_to_PKCS1_RSA_PRIVATE_KEY(rsa_, &key), 0U);
        free_PKCS1_RSA_PRIVATE_KEY(dup_PKCS1_RSA_PRIVATE_KEY(key));
        const std::uint32_t len =
            writePEM_to_Binary(key, TLX_ENCODER(PKCS1_RSA_PRIVATE_KEY_to_Seq), "RSA PRIVATE KEY", 15, &text);
        EXPECT_EQ(readPEM_from_Binary(&read, TLX_DECODER(Seq_to_PKCS1_RSA_PRIVATE_KEY), text, len), 0U);
        EXPECT_LT(writeDER_to_FILE(key, TLX_ENCODER(PKCS1_RSA_PRIVATE_KEY_to_Seq), path.c_str()),
                  0xFFFFFFFFU);
        std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
        EXPECT_EQ(get_ASN1_hash(key, TLX_ENCODER(PKCS1_RSA_PRIVATE_KEY_to_Seq), TLX_DIGEST_SHA256, digest),
                  32U);
        EXPECT_EQ(readDER_from_File(&read, TLX_DECODER(Seq_to_PKCS1_RSA_PRIVATE_KEY), path.c_str()), 0U);
        give_back(text);
        free_PKCS1_RSA_PRIVATE_KEY(static_cast<PKCS1_RSA_PRIVATE_KEY *>(read));
        free_PKCS1_RSA_PRIVATE_KEY(key);
    });
}

TEST_F(Secrets, LeaveNoTraceOfSigning) {
    const auto *kcdsa = static_cast<const KCDSA *>(signing_key(kKcdsaKey)->key);
    std::vector<std::string> secrets = of_rsa();
    add_number(secrets, get_KCDSA_number(kcdsa, TLX_KCDSA_X));
    const Chain specs = valid_chain(1);
    const Cert cert = specs[0].make();
    expect_no_trace(secrets, [&] {
        for (const unsigned number : {0U, kKcdsaKey}) {
            ASYMMETRIC_KEY *key = dup_ASYMMETRIC_KEY(signing_key(number));
            const char *algorithm = number == 0 ? "RSA-SHA256" : "KCDSA1";
            const tlx::Owned<OBJECT_IDENTIFIER> identifier(get_OBJECT_IDENTIFIER(algorithm, 0));
            EXPECT_EQ(set_X509_signature(cert.get(), identifier.get()), 0U);
            EXPECT_EQ(gen_SIG_X509_Cert(cert.get(), key), 0U) << algorithm;
            free_ASYMMETRIC_KEY(key);
        }
    });
}

}  // namespace
}  // namespace tlx_test
