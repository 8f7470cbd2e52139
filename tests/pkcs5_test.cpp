// Password-based encryption: derivations, the functions that take every number, and private keys under a
// password, with libcrypto's ciphers put together and the openssl and certtool programs as peers.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <algorithm>
#include <map>

#include "support/chain_builder.hpp"
#include "support/command.hpp"
#include "support/openssl_peer.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_P8_PRIV_KEY_INFO>;
using Container = Held<free_PKCS8>;

std::uint32_t size_of(const std::string &text) {
    return static_cast<std::uint32_t>(text.size());
}
const std::uint8_t *octets_of(const std::string &text) {
    return reinterpret_cast<const std::uint8_t *>(text.data());
}

std::string digits(const Octets &octets) {
    std::string text = hex_of(octets.data(), octets.size());
    std::erase(text, ' ');
    return text;
}

// ---- Derivations ----

std::string derive(const Row &row, decltype(&PBKDF1) function) {
    Octets out(row.number(5) + 1, 0xEE);
    const std::uint32_t status = function(row[1].data(), size_of(row[1]), octets_of(row[2]), size_of(row[2]),
                                          row.number(3), row.number(4), out.data(), row.number(5));
    EXPECT_EQ(out.back(), 0xEE);
    return status == 0 ? digits({out.begin(), out.end() - 1}) : status_text(status);
}

// ---- The functions that take every number ----

constexpr std::uint32_t kSeed = TLX_CIPHER_SEED;
const Octets kPlain = hex("30050403414243");

/// Both directions of one function by the names of their scheme.
struct Functions {
    decltype(&encrypt_PBES1) encrypt;
    decltype(&encrypt_PBES1) decrypt;
};

template <auto Function, std::uint32_t Mode>
std::uint32_t with_mode(std::uint8_t *out, std::uint32_t *out_len, const char *password, std::uint32_t p_len,
                        const std::uint8_t *salt, std::uint32_t s_len, std::uint32_t iterations,
                        const std::uint8_t *in, std::uint32_t in_len, std::uint32_t cipher,
                        std::uint32_t digest) {
    return Function(out, out_len, password, p_len, salt, s_len, iterations, in, in_len, cipher, digest, Mode);
}

constexpr std::uint8_t kIv[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

std::uint32_t encrypt_pbes2(std::uint8_t *out, std::uint32_t *out_len, const char *password,
                            std::uint32_t p_len, const std::uint8_t *salt, std::uint32_t s_len,
                            std::uint32_t iterations, const std::uint8_t *in, std::uint32_t in_len,
                            std::uint32_t cipher, std::uint32_t digest) {
    std::uint8_t iv[16];
    std::copy(std::begin(kIv), std::end(kIv), iv);
    std::uint32_t iv_len = get_IVLength(cipher);
    return encrypt_PBES2(out, out_len, password, p_len, salt, s_len, iterations, in, in_len, cipher, digest,
                         iv, &iv_len);
}
std::uint32_t decrypt_pbes2(std::uint8_t *out, std::uint32_t *out_len, const char *password,
                            std::uint32_t p_len, const std::uint8_t *salt, std::uint32_t s_len,
                            std::uint32_t iterations, const std::uint8_t *in, std::uint32_t in_len,
                            std::uint32_t cipher, std::uint32_t digest) {
    return decrypt_PBES2(out, out_len, password, p_len, salt, s_len, iterations, in, in_len, cipher, digest,
                         kIv);
}

const std::map<std::string, Functions> kFunctions = {
    {"pbes1", {encrypt_PBES1, decrypt_PBES1}},
    {"pbes2", {encrypt_pbes2, decrypt_pbes2}},
    {"kisa0", {with_mode<encrypt_PBES1_KISA, 0>, with_mode<decrypt_PBES1_KISA, 0>}},
    {"kisa1", {with_mode<encrypt_PBES1_KISA, 1>, with_mode<decrypt_PBES1_KISA, 1>}},
    {"kisa2", {with_mode<encrypt_PBES1_KISA, 2>, with_mode<decrypt_PBES1_KISA, 2>}},
    {"gpki", {encrypt_PBES1_GPKI, decrypt_PBES1_GPKI}},
};

/// The ciphertext of a few octets, which decrypts to them; or the statuses of both directions.
std::string crypt(const Row &row) {
    const Functions &functions = kFunctions.at(row[1]);
    const std::uint32_t cipher = row.number(2);
    const std::uint32_t digest = row.number(3);
    const std::uint32_t iterations = row.number(4);
    const std::string password = "correct horse";
    const std::string salt = "battery!";
    Octets out(kPlain.size() + row.number(5));
    auto len = static_cast<std::uint32_t>(out.size());
    const std::uint32_t status = functions.encrypt(out.data(), &len, password.data(), size_of(password),
                                                   octets_of(salt), size_of(salt), iterations, kPlain.data(),
                                                   static_cast<std::uint32_t>(kPlain.size()), cipher, digest);
    out.resize(status == 0 ? len : 16);
    Octets back(out.size());
    auto back_len = static_cast<std::uint32_t>(back.size());
    const std::uint32_t again = functions.decrypt(back.data(), &back_len, password.data(), size_of(password),
                                                  octets_of(salt), size_of(salt), iterations, out.data(),
                                                  static_cast<std::uint32_t>(out.size()), cipher, digest);
    if (status != 0) return status_text(status) + " " + status_text(again);
    if (again != 0) return status_text(again);
    back.resize(back_len);
    EXPECT_EQ(back, kPlain);
    return digits(out);
}

TEST(PasswordBased, Rows) {
    expect_rows("pkcs5.txt", {{"pbkdf1", {[](const Row &row) { return derive(row, PBKDF1); }}},
                              {"pbkdf2", {[](const Row &row) { return derive(row, PBKDF2); }}},
                              {"crypt", {crypt}}});
}

TEST(PasswordBased, RefusesMissingArguments) {
    const LeakCheck leaks;
    std::uint8_t out[64];
    std::uint32_t len = sizeof out;
    std::uint32_t iv_len = 8;
    std::uint8_t iv[8] = {};
    constexpr std::uint32_t kDes = TLX_CIPHER_DES | TLX_CIPHER_MODE_CBC;
    expect_refuses_null(0x4A040049, PBKDF1, "p", 1, kIv, 8, 1, TLX_DIGEST_SHA1, out, 8);
    expect_refuses_null(0x4A050049, PBKDF2, "p", 1, kIv, 8, 1, TLX_DIGEST_SHA1, out, 8);
    expect_refuses_null(0x4A010049, encrypt_PBES1, out, &len, "p", 1, kIv, 8, 1, kIv, 16, kDes,
                        TLX_DIGEST_SHA1);
    expect_refuses_null(0x4A020049, decrypt_PBES1, out, &len, "p", 1, kIv, 8, 1, kIv, 16, kDes,
                        TLX_DIGEST_SHA1);
    expect_refuses_null(0x4A100049, encrypt_PBES2, out, &len, "p", 1, kIv, 8, 1, kIv, 16, kDes,
                        TLX_DIGEST_SHA1, iv, &iv_len);
    expect_refuses_null(0x4A110049, decrypt_PBES2, out, &len, "p", 1, kIv, 8, 1, kIv, 16, kDes,
                        TLX_DIGEST_SHA1, kIv);
    expect_refuses_null(0x4A090049, decrypt_PBES1_KISA, out, &len, "p", 1, kIv, 8, 1, kIv, 16, kSeed,
                        TLX_DIGEST_SHA1, 1);
    expect_refuses_null(0x4A130049, encrypt_PBES1_GPKI, out, &len, "p", 1, kIv, 8, 1, kIv, 16, kSeed,
                        TLX_DIGEST_SHA1);
    const Info info(new_P8_PRIV_KEY_INFO());
    P8_ENCRYPTED_KEY *container = nullptr;
    expect_refuses_null(0x4A060049, encrypt_PKCS5_ex, info.get(), &container, "p", 1, nullptr, 0, 1,
                        TLX_OID_AES_256_CBC, TLX_OID_SHA256);
    EXPECT_EQ(encrypt_PKCS5(info.get(), &container, "p", 1, nullptr, 0, 1, TLX_OID_AES_256_CBC), 0x4A060030U)
        << "no key";
}

// ---- Private keys ----

Info key_info(const ASYMMETRIC_KEY *key) {
    P8_PRIV_KEY_INFO *info = nullptr;
    EXPECT_EQ(gen_P8_PRIV_KEY_INFO(key, &info), 0U);
    return Info(info);
}

/// Keys by name: "rsa" and "kcdsa", and "ec", which has the octets of no curve.
Info key_named(const std::string &name) {
    if (name == "rsa") return key_info(signing_key(0));
    if (name == "kcdsa") return key_info(signing_key(kKcdsaKey));
    return Info(
        decoded(Seq_to_P8_PRIV_KEY_INFO, "30{02:00 30{06:2A8648CE3D0201 06:2A8648CE3D030107} 04:AABBCC}"));
}

std::string encoding(const P8_PRIV_KEY_INFO *info) {
    return encoded(P8_PRIV_KEY_INFO_to_Seq, info);
}

const char *or_null(const std::string &text) {
    return text.empty() ? nullptr : text.c_str();
}

/// What decrypt_PKCS5() and open_PKCS8() give with a password: "key" for the key, or their statuses.
std::string both_open(const P8_ENCRYPTED_KEY *container, const std::string &password,
                      const std::string &expected) {
    std::string results;
    for (int named = 1; named >= 0; --named) {
        P8_PRIV_KEY_INFO *info = nullptr;
        const std::uint32_t status = named == 1
                                         ? decrypt_PKCS5(container, &info, password.data(), size_of(password))
                                         : open_PKCS8(container, password.data(), size_of(password), &info);
        EXPECT_EQ(info != nullptr, status == 0);
        const Info owner(info);
        results += results.empty() ? "" : " ";
        results += status != 0                         ? status_text(status)
                   : expected.empty()                  ? "decrypted"
                   : encoding(owner.get()) == expected ? "key"
                                                       : "another key";
    }
    return results;
}

/// A key sealed by scheme, cipher and function: the word of the container, and what opening gives.
std::string seal(const Row &row) {
    const Info info = key_named(row[1]);
    P8_ENCRYPTED_KEY *made = nullptr;
    const std::uint32_t status = seal_PKCS8(info.get(), or_null(row[2]), or_null(row[3]), or_null(row[4]),
                                            row.number(5), row[6].data(), size_of(row[6]), &made);
    const Container container(made);
    if (status != 0) return status_text(status);
    PKCS8_SCHEME scheme = {};
    EXPECT_EQ(get_PKCS8_scheme(made, &scheme), 0U);
    EXPECT_EQ(scheme.iterations, row.number(5));
    return trimmed(std::to_string(made->scheme) + " " + both_open(made, row[6], encoding(info.get())) + " " +
                   scheme.scheme + " " + scheme.cipher + " " + scheme.prf);
}

/// A key encrypted by rows of the registry. A fourth argument is the row of the digest of PBES2.
std::string encrypt(const Row &row) {
    const Info info = key_named(row[1]);
    P8_ENCRYPTED_KEY *made = nullptr;
    const std::string salt_text = "saltsaltsalt";
    const auto *salt = octets_of(salt_text);
    const std::uint32_t status =
        row.count() == 2 ? encrypt_PKCS5(info.get(), &made, "password", 8, salt, 12, 1024, row.number(2))
                         : encrypt_PKCS5_ex(info.get(), &made, "password", 8, salt, 12, 1024, row.number(2),
                                            row.number(3));
    const Container container(made);
    if (status != 0) return status_text(status);
    return std::to_string(made->scheme) + " " + both_open(made, "password", encoding(info.get()));
}

/// What opening a container gives.
std::string open(const Row &row) {
    return both_open(Container(decoded(Seq_to_P8_ENCRYPTED_KEY, row[1])).get(), row[2], "");
}

/// Makes the keys that stay to the end of the program.
class EncryptedKey : public ::testing::Test {
    const Info rsa_ = key_named("rsa");
    const Info kcdsa_ = key_named("kcdsa");
};

TEST_F(EncryptedKey, Rows) {
    expect_rows("pkcs8.txt", {{"seal", {seal}}, {"encrypt", {encrypt}}, {"open", {open}}});
    for (std::uint32_t i = 0; const char *name = get_PKCS8_scheme_name(i); ++i)
        EXPECT_NE(std::string(name), "");
}

/// A key goes from the openssl program to us and, when there is a scheme, back.
std::string exchange(const Row &row) {
    const CommandFolder folder;
    const std::string providers = " -provider legacy -provider default";
    const std::string path = std::string(TLX_TEST_DATA) + "/keys/rsa-0.pem";
    folder.run("openssl pkcs8 -topk8 -in " + path +
               " -outform DER -out theirs.der -iter 1000 -passout 'pass:p\xC3\xA4ss' " + row[1] + providers);
    const Info info = key_named("rsa");
    const auto theirs = folder.read("theirs.der");
    void *read = nullptr;
    EXPECT_EQ(
        readDER_from_Buffer(&read, TLX_DECODER(Seq_to_P8_ENCRYPTED_KEY), octets_of(theirs), size_of(theirs)),
        0U);
    const Container container(static_cast<PKCS8 *>(read));
    P8_PRIV_KEY_INFO *opened = nullptr;
    const std::uint32_t status = open_PKCS8(container.get(), "p\xC3\xA4ss", 5, &opened);
    const Info owner(opened);
    if (status != 0) return status_text(status);
    if (encoding(opened) != encoding(info.get())) return "another key";
    if (row[2].empty()) return "same";
    P8_ENCRYPTED_KEY *made = nullptr;
    EXPECT_EQ(seal_PKCS8(info.get(), or_null(row[2]), or_null(row[3]), or_null(row[4]), 1000, "p\xC3\xA4ss",
                         5, &made),
              0U);
    const Container ours(made);
    EXPECT_LT(writeDER_to_FILE(made, TLX_ENCODER(P8_ENCRYPTED_KEY_to_Seq), folder.path("ours.der").c_str()),
              0xFFFFFFFFU);
    folder.run("openssl pkcs8 -in ours.der -inform DER -out ours.pem -passin 'pass:p\xC3\xA4ss'" + providers +
               " && openssl pkcs8 -in theirs.der -inform DER -out theirs.pem -passin 'pass:p\xC3\xA4ss'" +
               providers);
    return folder.read("ours.pem") == folder.read("theirs.pem") ? "same" : "another key";
}

/// The scheme that certtool names for a key of ours, which it decrypts.
std::string name_scheme(const Row &row) {
    const CommandFolder folder;
    P8_ENCRYPTED_KEY *made = nullptr;
    EXPECT_EQ(seal_PKCS8(key_named("rsa").get(), or_null(row[1]), or_null(row[2]), or_null(row[3]), 1000,
                         "secret", 6, &made),
              0U);
    const Container container(made);
    EXPECT_LT(writeDER_to_FILE(made, TLX_ENCODER(P8_ENCRYPTED_KEY_to_Seq), folder.path("ours.der").c_str()),
              0xFFFFFFFFU);
    const std::string output =
        folder.run("certtool --key-info --pkcs8 --inder --infile ours.der --password secret");
    const std::size_t start = output.find("Schema: ") + 8;
    return output.substr(start, output.find(' ', start) - start);
}

TEST_F(EncryptedKey, GoesBothWaysWithOtherPrograms) {
    expect_rows("pkcs8_peer.txt", {{"openssl", {exchange}}, {"certtool", {name_scheme}}});
}

TEST_F(EncryptedKey, IsRefusedWhenItWasAlteredOrCutShort) {
    const LeakCheck leaks;
    const Info info = key_info(signing_key(0));
    for (const char *scheme : {"pbes2", "seed", "pbe-sha1-rc4-128"}) {
        P8_ENCRYPTED_KEY *made = nullptr;
        ASSERT_EQ(seal_PKCS8(info.get(), scheme, nullptr, nullptr, 1, "password", 8, &made), 0U);
        const Container container(made);
        const std::string wrong = both_open(made, "Password", "");
        EXPECT_TRUE(wrong.ends_with("4A410012")) << scheme << " " << wrong;
        EXPECT_NE(wrong.substr(0, 8), "decrypte") << scheme;
        OCTET_STRING *data = get_encryptedData_PKCS8(made);
        data->data[0] ^= 1U;
        EXPECT_EQ(both_open(made, "password", "").substr(9), "4A410012") << scheme;
        data->data[0] ^= 1U;
        const std::int32_t length = data->length;
        for (const std::int32_t cut : {length - 16, length - 1, 16, 0}) {
            data->length = cut;
            EXPECT_TRUE(both_open(made, "password", "").find("decrypted") == std::string::npos) << cut;
        }
        data->length = length;
    }
}

TEST_F(EncryptedKey, MeetsFailingAllocations) {
    const std::string password = "p\xC3\xA4ss";
    const auto size = size_of(password);
    P8_ENCRYPTED_KEY *made = nullptr;
    P8_PRIV_KEY_INFO *back = nullptr;
    const auto free_both = [&](std::uint32_t status) {
        free_PKCS8(std::exchange(made, nullptr));
        free_P8_PRIV_KEY_INFO(std::exchange(back, nullptr));
        return status;
    };
    for (const char *scheme : {"pbes2", "seed-cbc", "gpki", "pbe-sha1-3des", "pbe-sha1-rc4-40"}) {
        const Info info = key_named("ec");
        sweep_statuses({0x4A400030, 0x4A40003C}, [&] {
            return free_both(
                seal_PKCS8(info.get(), scheme, nullptr, nullptr, 1, password.data(), size, &made));
        });
        ASSERT_EQ(seal_PKCS8(info.get(), scheme, nullptr, nullptr, 1, password.data(), size, &made), 0U);
        const Container container(std::exchange(made, nullptr));
        sweep_statuses({0x4A41003C, 0x4A41002B, 0x4A410048, 0x4A41004F},
                       [&] { return free_both(open_PKCS8(container.get(), password.data(), size, &back)); });
    }
    const Info rsa = key_named("rsa");
    sweep_statuses({0x4A060030, 0x4A06003C, 0x4A060047}, [&] {
        return free_both(encrypt_PKCS5(rsa.get(), &made, "p", 1, nullptr, 0, 1, TLX_OID_PBE_SHA1_SEED_CBC));
    });
    ASSERT_EQ(encrypt_PKCS5(rsa.get(), &made, "p", 1, nullptr, 0, 1, TLX_OID_PBE_SHA1_SEED_CBC), 0U);
    const Container container(std::exchange(made, nullptr));
    sweep_statuses({0x4A070012, 0x4A07003B, 0x4A07003C},
                   [&] { return free_both(decrypt_PKCS5(container.get(), &back, "p", 1)); });
}

}  // namespace
}  // namespace tlx_test
