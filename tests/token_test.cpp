// Tokens: a module in memory that does what no real one should, and the software token of Linux.
#include <gtest/gtest.h>
#include <tlxpki/pkcs11.h>

#include <algorithm>
#include <cstdlib>

#include "modules/fake_token.hpp"
#include "support/command.hpp"
#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/threads.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Module = Held<close_TOKEN_MODULE>;
using Session = Held<close_TOKEN_SESSION>;
using Objects = Held<free_TOKEN_OBJECTS>;
using TokenKey = Held<free_ASYMMETRIC_KEY>;
using Info = Held<free_P7_CONTENT_INFO>;

const Octets kData = {'s', 'i', 'g', 'n', ' ', 'm', 'e'};

void set_variable(const char *name, const std::string &value) {
#ifdef _WIN32
    ASSERT_EQ(_putenv_s(name, value.c_str()), 0);
#else
    ASSERT_EQ(setenv(name, value.c_str(), 1), 0);
#endif
}

template <typename Value>
Octets octets_of(const Value &value) {
    const auto *first = reinterpret_cast<const std::uint8_t *>(&value);
    return Octets(first, first + sizeof value);
}

Octets octets_of_number(TLX_RSA_NUMBER which) {
    const BIGINT *number = get_RSA_UNIT_number(static_cast<RSA_UNIT *>(signing_key(0)->key), which);
    Octets octets((get_BIGINT_bits(number) + 7) / 8);
    EXPECT_EQ(BIGINT_to_binary(number, octets.data(), static_cast<std::uint32_t>(octets.size())), 0U);
    return octets;
}

FakeToken::Object object_of(CK_OBJECT_CLASS object_class, const std::string &label, const Octets &id) {
    return {
        {CKA_CLASS, octets_of(object_class)}, {CKA_LABEL, Octets(label.begin(), label.end())}, {CKA_ID, id}};
}

/// A certificate, its private key, a private key alone, a private key that tells no numbers, its public key,
/// a key on a curve and one that wants a PIN each time; none of them has a label of its own but the first.
std::vector<FakeToken::Object> objects_of_token() {
    const auto rsa = octets_of(CK_KEY_TYPE{CKK_RSA});
    const auto with_numbers = [&](FakeToken::Object object) {
        object[CKA_KEY_TYPE] = rsa;
        object[CKA_MODULUS] = octets_of_number(TLX_RSA_N);
        object[CKA_PUBLIC_EXPONENT] = octets_of_number(TLX_RSA_E);
        return object;
    };
    FakeToken::Object cert = object_of(CKO_CERTIFICATE, "first", {1});
    cert[CKA_VALUE] = encode_certificate(signer_spec(0).make().get());
    FakeToken::Object certified = object_of(CKO_PRIVATE_KEY, "", {1});
    certified[CKA_KEY_TYPE] = rsa;
    FakeToken::Object silent = object_of(CKO_PRIVATE_KEY, "", {3});
    silent[CKA_KEY_TYPE] = rsa;
    FakeToken::Object curve = object_of(CKO_PRIVATE_KEY, "", {4});
    curve[CKA_KEY_TYPE] = octets_of(CK_KEY_TYPE{CKK_EC});
    FakeToken::Object careful = with_numbers(object_of(CKO_PRIVATE_KEY, "", {5}));
    careful[CKA_ALWAYS_AUTHENTICATE] = {1};
    FakeToken::Object lost = object_of(CKO_PRIVATE_KEY, "", {6});
    lost[CKA_KEY_TYPE] = rsa;
    return {cert,    certified, with_numbers(object_of(CKO_PRIVATE_KEY, "", {2})), silent, curve,
            careful, lost,      with_numbers(object_of(CKO_PUBLIC_KEY, "", {3}))};
}

/// Makes the module serve a token.
void put_in_slot(FakeToken &token) {
    char address[32];
    std::snprintf(address, sizeof address, "%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&token)));
    set_variable("TLX_FAKE_TOKEN", address);
    token.functions.version.major = 2;
    token.objects = objects_of_token();
}

std::uint32_t ask_pin(void *context, char *pin, std::uint32_t *length) {
    const auto *text = static_cast<const std::string *>(context);
    EXPECT_EQ(*length, 256U);
    *length = static_cast<std::uint32_t>(text->copy(pin, 256));
    return *text == "refuse" ? 0xE0000007 : 0;
}

/// The functions by the number that a row calls them with.
constexpr const char *kFunctions[] = {"C_GetFunctionList",   "C_Initialize",      "C_GetSlotList",
                                      "C_GetTokenInfo",      "C_OpenSession",     "C_Login",
                                      "C_GetAttributeValue", "C_FindObjectsInit", "C_FindObjects",
                                      "C_FindObjectsFinal",  "C_SignInit",        "C_Sign",
                                      "C_DecryptInit",       "C_Decrypt",         "C_CloseSession",
                                      "C_Finalize",          "C_Logout",          "C_SignFinal"};

/// Steps with the token in memory.
class Script {
  public:
    Script() { put_in_slot(token_); }
    std::string run(const std::string &text) { return run_steps(text, steps_); }

  private:
    using N = const Numbers &;

    std::uint32_t open() {
        TOKEN_MODULE *made = nullptr;
        const std::uint32_t status = open_TOKEN_MODULE(TLX_FAKE_MODULE, &made);
        module_.reset(made);
        return status;
    }
    std::uint32_t session(const char *label) {
        TOKEN_SESSION *made = nullptr;
        const std::uint32_t status = open_TOKEN_SESSION(module_.get(), label, &made);
        session_.reset(made);
        return status;
    }
    std::uint32_t find(const TOKEN_OBJECT_QUERY &query) {
        TOKEN_OBJECTS *made = nullptr;
        const std::uint32_t status = find_TOKEN_OBJECTS(session_.get(), &query, &made);
        EXPECT_EQ(made == nullptr, status != 0);
        objects_.reset(made);
        return status;
    }
    const TOKEN_OBJECT *object(std::uint32_t place) const {
        return get_TOKEN_OBJECTS_child(objects_.get(), static_cast<std::int32_t>(place));
    }
    std::uint32_t take_key(N n) {
        ASYMMETRIC_KEY *made = nullptr;
        pin_ = n[1] == 2 ? "refuse" : "1234";
        const std::uint32_t status =
            get_TOKEN_key(session_.get(), object(n[0]), n[1] == 0 ? nullptr : ask_pin, &pin_, &made);
        key_.reset(made);
        return status;
    }
    /// Mode 1 or 2; the token gives a good signature.
    std::uint32_t sign(N n) {
        const auto *own = static_cast<const RSA_UNIT *>(signing_key(0)->key);
        Octets signature(128);
        std::uint32_t size = 0;
        token_.output.resize(128);
        EXPECT_EQ(sign_RSA(own, TLX_DIGEST_SHA256, n[0], kData.data(), 7, token_.output.data(), &size), 0U);
        return sign_RSA(static_cast<RSA_UNIT *>(key_->key), TLX_DIGEST_SHA256, n[0], kData.data(), 7,
                        signature.data(), &size);
    }
    /// What opening a sealed message gives when the token decrypts to so many octets.
    std::uint32_t decrypt(N n) {
        token_.output.assign(n[1], 0x5A);
        const Octets sealed(128, 1);
        Octets opened(16);
        auto *unit = static_cast<RSA_UNIT *>(key_->key);
        std::uint32_t size = 16;
        EXPECT_EQ(init_RSAES(unit, n[0], 1, TLX_DIGEST_SHA256), 0U);
        return decrypt_RSAES(unit, opened.data(), &size, sealed.data(), 128);
    }
    std::uint32_t decrypt_key(N n) {
        token_.output.assign(n[0], 0x5A);
        const Octets sealed(128, 1);
        Octets opened(16);
        const std::uint32_t status =
            decrypt_RSAES_key(static_cast<RSA_UNIT *>(key_->key), opened.data(), 16, sealed.data(), 128);
        return status != 0 ? status : opened == Octets(16, 0x5A) ? 0U : 2U;
    }

    FakeToken token_;
    Module module_, again_;
    Session session_;
    Objects objects_;
    TokenKey key_;
    std::string pin_;
    const std::uint8_t id_[1] = {2};
    const Steps steps_ = {
        {"refuse", [this](N n) { return token_.results[kFunctions[n[0]]] = n[1], 0U; }},
        {"allow", [this](N) { return token_.results.clear(), 0U; }},
        {"calls",
         [this](N n) {
             return static_cast<std::uint32_t>(
                 std::ranges::count_if(token_.calls, [&](const std::string &call) {
                     return call.substr(0, call.find(' ')) == kFunctions[n[0]];
                 }));
         }},
        {"no-list", [this](N) { return token_.has_list = false, 0U; }},
        {"version", [this](N n) { return token_.functions.version.major = static_cast<CK_BYTE>(n[0]), 0U; }},
        {"lose", [this](N) { return token_.functions.C_GetTokenInfo = nullptr, 0U; }},
        {"flags", [this](N n) { return token_.flags = n[0], 0U; }},
        {"slots", [this](N n) { return token_.slots = n[0], token_.more_slots = n[1], 0U; }},
        {"grow", [this](N n) { return token_.grows = n[0], 0U; }},
        {"claim", [this](N n) { return token_.found_beside = n[0], 0U; }},
        {"endless", [this](N) { return token_.endless = true, 0U; }},
        {"long-label", [this](N n) { return token_.objects[0][CKA_LABEL].resize(n[0]), 0U; }},
        {"long-modulus", [this](N n) { return token_.objects[2][CKA_MODULUS].resize(n[0]), 0U; }},
        {"spoil-cert", [this](N n) { return token_.objects[0][CKA_VALUE].resize(n[0]), 0U; }},
        {"longer", [this](N n) { return token_.output_beside = n[0], 0U; }},
        {"open", [this](N) { return open(); }},
        {"close", [this](N) { return module_.reset(), 0U; }},
        {"open-again",
         [this](N) {
             TOKEN_MODULE *made = nullptr;
             const std::uint32_t status = open_TOKEN_MODULE(TLX_FAKE_MODULE, &made);
             again_.reset(made);
             return status;
         }},
        {"close-again", [this](N) { return again_.reset(), 0U; }},
        {"list",
         [this](N) {
             TOKEN_INFO *tokens = nullptr;
             std::uint32_t count = 0;
             const std::uint32_t status = list_TOKENS(module_.get(), &tokens, &count);
             const std::unique_ptr<TOKEN_INFO, tlx::FreeWith<tlx_free>> owner(tokens);
             if (status != 0 || count == 0) return status;
             EXPECT_STREQ(tokens->label, "a label of thirty-two characters");
             EXPECT_STREQ(tokens->model, "");
             EXPECT_STREQ(tokens->serialNumber, "12 34");
             return count;
         }},
        {"session", [this](N) { return session(nullptr); }},
        {"session-of-label",
         [this](N n) { return session(n[0] == 0 ? "a label of thirty-two characters" : "a"); }},
        {"end-session", [this](N) { return session_.reset(), 0U; }},
        {"login",
         [this](N n) {
             return login_TOKEN(session_.get(), n[0] == 1 ? nullptr : "12345", n[0] == 1 ? 0 : 4);
         }},
        {"login-without-pin", [this](N) { return login_TOKEN(session_.get(), nullptr, 4); }},
        {"said-pin",
         [this](N) {
             return token_.calls.back() == "C_Login 1 1234"  ? 0U
                    : token_.calls.back() == "C_Login 1 pad" ? 1U
                                                             : 2U;
         }},
        {"said-context-pin",
         [this](N) {
             return static_cast<std::uint32_t>(std::ranges::count(token_.calls, "C_Login 2 1234"));
         }},
        {"logout", [this](N) { return logout_TOKEN(session_.get()); }},
        {"find",
         [this](N n) {
             return find({n[0], nullptr, nullptr, 0, nullptr});
         }},
        {"find-label",
         [this](N n) {
             return find({0, n[0] == 0 ? "first" : "fir", nullptr, 0, nullptr});
         }},
        {"find-id",
         [this](N) {
             return find({0, nullptr, id_, 1, nullptr});
         }},
        {"count", [this](N) { return get_TOKEN_OBJECTS_count(objects_.get()); }},
        {"kind", [this](N n) { return object(n[0])->kind; }},
        {"id", [this](N n) { return object(n[0])->idLength == 1 ? object(n[0])->id[0] : 999U; }},
        {"cert",
         [this](N n) {
             X509_CERT *made = nullptr;
             const std::uint32_t status = get_TOKEN_certificate(session_.get(), object(n[0]), &made);
             const Cert owner(made);
             EXPECT_TRUE(status != 0 || encode_certificate(made) == token_.objects[0][CKA_VALUE]);
             return status;
         }},
        {"key", [this](N n) { return take_key(n); }},
        {"drop-key", [this](N) { return key_.reset(), 0U; }},
        {"sign", [this](N n) { return sign(n); }},
        {"decrypt", [this](N n) { return decrypt(n); }},
        {"decrypt-key", [this](N n) { return decrypt_key(n); }},
        {"mechanism", [this](N) { return static_cast<std::uint32_t>(token_.mechanism); }},
        {"input", [this](N) { return static_cast<std::uint32_t>(token_.input.size()); }},
        {"parameter",
         [this](N) {
             const std::size_t size = token_.parameter.size();
             return size == sizeof(CK_RSA_PKCS_PSS_PARAMS)    ? 1U
                    : size == sizeof(CK_RSA_PKCS_OAEP_PARAMS) ? 2U
                                                              : static_cast<std::uint32_t>(size);
         }},
    };
};

TEST(Token, Steps) {
    make_signing_keys();
    expect_rows("token.txt", {{"steps", {[](const Row &row) { return Script().run(row[1]); }}}});
}

/// Each step may fail for want of memory, and leaves nothing behind then.
TEST(Token, AllocationsMayFail) {
    make_signing_keys();
    FakeToken token;
    put_in_slot(token);
    const Statuses no_memory = {
        0x4917003C, 0x4918003C, 0x4919003C, 0x491C003C, 0x491D003C, 0x491E003C, 0x491E0047,
#ifdef _WIN32
        0x49170047,  // there is no room for the path in UTF-16
#endif
    };
    sweep_failing_allocations([&] {
        TOKEN_MODULE *module = nullptr;
        TOKEN_SESSION *session = nullptr;
        TOKEN_OBJECTS *objects = nullptr;
        ASYMMETRIC_KEY *key = nullptr;
        std::uint32_t status = open_TOKEN_MODULE(TLX_FAKE_MODULE, &module);
        const Module module_owner(module);
        if (status == 0) status = open_TOKEN_SESSION(module, nullptr, &session);
        const Session session_owner(session);
        if (status == 0) status = find_TOKEN_OBJECTS(session, nullptr, &objects);
        const Objects objects_owner(objects);
        for (const std::int32_t place : {2, 3, 1}) {
            if (status == 0)
                status =
                    get_TOKEN_key(session, get_TOKEN_OBJECTS_child(objects, place), nullptr, nullptr, &key);
            free_ASYMMETRIC_KEY(std::exchange(key, nullptr));
        }
        EXPECT_TRUE(status == 0 || no_memory.contains(status)) << status_text(status);
        return status == 0;
    });
    EXPECT_EQ(std::ranges::count(token.calls, "C_OpenSession 7"),
              std::ranges::count(token.calls, "C_CloseSession 107"));
}

/// However threads take turns, a module is initialised as often as it is finalised.
TEST(Token, ModulesAreOpenedByThreadsAtOnce) {
    FakeToken token;
    put_in_slot(token);
    EXPECT_EQ(successes_on_threads(8,
                                   [] {
                                       bool good = true;
                                       for (int i = 0; i < 50; ++i) {
                                           TOKEN_MODULE *module = nullptr;
                                           good = open_TOKEN_MODULE(TLX_FAKE_MODULE, &module) == 0 && good;
                                           close_TOKEN_MODULE(module);
                                       }
                                       return good;
                                   }),
              8U);
    EXPECT_EQ(std::ranges::count(token.calls, "C_Initialize"), std::ranges::count(token.calls, "C_Finalize"));
}

#ifndef _WIN32

/// A token of SoftHSM in a folder: a key that was generated on it, and an imported one with its certificate.
class SoftToken {
  public:
    static const SoftToken &instance() {
        static const SoftToken token;
        return token;
    }
    [[nodiscard]] const CommandFolder &folder() const { return folder_; }

  private:
    SoftToken() {
        folder_.write("softhsm2.conf", "directories.tokendir = " + folder_.path("tokens") +
                                           "\nobjectstore.backend = file\nlog.level = ERROR\n");
        set_variable("SOFTHSM2_CONF", folder_.path("softhsm2.conf"));
        const std::string tool =
            "pkcs11-tool --module " TLX_SOFTHSM " --token-label proof --login --pin 1234 ";
        folder_.run(
            "mkdir tokens && softhsm2-util --init-token --free --label proof --pin 1234 --so-pin 123456");
        folder_.run(tool + "--keypairgen --key-type rsa:2048 --id 01 --label generated");
        folder_.run(
            "openssl req -x509 -newkey rsa:2048 -nodes -sha256 -days 2 -keyout key.pem -out cert.pem"
            " -subj /C=KR/CN=Imported && openssl x509 -in cert.pem -outform DER -out cert.der &&"
            " softhsm2-util --import key.pem --token proof --label imported --id 02 --pin 1234");
        folder_.run(tool + "--write-object cert.der --type cert --id 02 --label imported");
    }
    CommandFolder folder_;
};

class SoftHsm : public testing::Test {
  protected:
    void SetUp() override {
        const CommandFolder &folder = SoftToken::instance().folder();
        TOKEN_MODULE *module = nullptr;
        ASSERT_EQ(open_TOKEN_MODULE(TLX_SOFTHSM, &module), 0U);
        module_.reset(module);
        session_ = open();
        const std::string der = folder.read("cert.der");
        cert_ = certificate_of(Octets(der.begin(), der.end()));
    }
    [[nodiscard]] Session open() const {
        TOKEN_SESSION *session = nullptr;
        EXPECT_EQ(open_TOKEN_SESSION(module_.get(), "proof", &session), 0U);
        return Session(session);
    }
    [[nodiscard]] static std::uint32_t log_in(const Session &session, const std::string &pin = "1234") {
        return login_TOKEN(session.get(), pin.data(), static_cast<std::uint32_t>(pin.size()));
    }
    [[nodiscard]] static Objects find(const Session &session, const TOKEN_OBJECT_QUERY &query) {
        TOKEN_OBJECTS *objects = nullptr;
        EXPECT_EQ(find_TOKEN_OBJECTS(session.get(), &query, &objects), 0U);
        return Objects(objects);
    }
    [[nodiscard]] static TokenKey key(const Session &session, const char *label) {
        const Objects objects = find(session, {TLX_TOKEN_PRIVATE_KEY, label, nullptr, 0, nullptr});
        ASYMMETRIC_KEY *made = nullptr;
        EXPECT_EQ(get_TOKEN_OBJECTS_count(objects.get()), 1U);
        EXPECT_EQ(
            get_TOKEN_key(session.get(), get_TOKEN_OBJECTS_child(objects.get(), 0), nullptr, nullptr, &made),
            0U);
        return TokenKey(made);
    }

    Module module_;
    Session session_;
    OwnedCert cert_;
};

TEST_F(SoftHsm, FindsObjectsForThoseWhoLogIn) {
    const Session other = open();
    EXPECT_EQ(log_in(session_, "4321"), 0x492000A0U);
    const TOKEN_OBJECT_QUERY all_keys = {TLX_TOKEN_PRIVATE_KEY, nullptr, nullptr, 0, nullptr};
    EXPECT_EQ(get_TOKEN_OBJECTS_count(find(session_, all_keys).get()), 0U);
    ASSERT_EQ(log_in(session_), 0U);
    EXPECT_EQ(log_in(other), 0x49200100U);
    EXPECT_EQ(get_TOKEN_OBJECTS_count(find(other, all_keys).get()), 2U);
    const std::uint8_t id[] = {2};
    const Objects by_id = find(session_, {0, nullptr, id, 1, nullptr});
    EXPECT_EQ(get_TOKEN_OBJECTS_count(by_id.get()), 3U) << "certificate and both keys";
    const Objects by_subject = find(session_, {0, nullptr, nullptr, 0, get_X509_subject(cert_.get())});
    ASSERT_EQ(get_TOKEN_OBJECTS_count(by_subject.get()), 1U);
    EXPECT_STREQ(get_TOKEN_OBJECTS_child(by_subject.get(), 0)->label, "imported");
    X509_CERT *read = nullptr;
    ASSERT_EQ(get_TOKEN_certificate(session_.get(), get_TOKEN_OBJECTS_child(by_subject.get(), 0), &read), 0U);
    EXPECT_EQ(encode_certificate(Cert(read).get()), encode_certificate(cert_.get()));
    ASSERT_EQ(logout_TOKEN(other.get()), 0U);
    EXPECT_EQ(get_TOKEN_OBJECTS_count(find(session_, all_keys).get()), 0U);
    EXPECT_EQ(open_TOKEN_SESSION(module_.get(), "other", nullptr), 0x49190049U);
}

TEST_F(SoftHsm, SignsMessagesThatOthersVerify) {
    const CommandFolder &folder = SoftToken::instance().folder();
    ASSERT_EQ(log_in(session_), 0U);
    const TokenKey secret = key(session_, "imported");
    for (const std::uint32_t scheme : {TLX_P7_RSA_PKCS1, TLX_P7_RSA_PSS}) {
        const Info info(new_P7_CONTENT_INFO());
        ASSERT_EQ(set_PKCS7_Type(info.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U);
        ASSERT_EQ(add_PKCS7_Certificate(info.get(), cert_.get()), 0U);
        ASSERT_NE(add_PKCS7_Signature_withEncryptedAlgorithm(info.get(), cert_.get(), secret.get(),
                                                             TLX_OID_SHA256, scheme, nullptr),
                  nullptr);
        ASSERT_EQ(sign_PKCS7_withAttributes(info.get(), kData.data(), 7, 0, nullptr), 0U);
        EXPECT_EQ(verify_PKCS7_Signers(info.get(), nullptr, 0, nullptr, nullptr, nullptr, nullptr), 0U);
        ASSERT_NE(
            writeDER_to_FILE(info.get(), TLX_ENCODER(P7_CONTENT_INFO_to_Seq), folder.path("m.der").c_str()),
            0xFFFFFFFF);
        EXPECT_NE(folder.run("openssl cms -verify -in m.der -inform DER -CAfile cert.pem").find("sign me"),
                  std::string::npos);
    }
}

TEST_F(SoftHsm, CertifiesWithAGeneratedKey) {
    ASSERT_EQ(log_in(session_), 0U);
    TokenKey secret = key(session_, "generated");
    const Cert cert = signer_spec(0).make();
    const Held<free_X509_PUBKEY> open(new_X509_PUBKEY());
    ASSERT_EQ(set_X509_PUBKEY_rsa(open.get(), static_cast<const RSA_UNIT *>(secret->key)), 0U);
    ASSERT_EQ(set_X509_pub_key(cert.get(), open.get()), 0U);
    // The key keeps the session open, and the session the module.
    session_.reset();
    module_.reset();
    ASSERT_EQ(gen_SIG_X509_Cert(cert.get(), secret.get()), 0U);
    EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), open.get()), 0U);
    secret.reset();
}

TEST_F(SoftHsm, OpensMessagesOfOthers) {
    const CommandFolder &folder = SoftToken::instance().folder();
    ASSERT_EQ(log_in(session_), 0U);
    const TokenKey secret = key(session_, "imported");
    for (const std::string padding : {"pkcs1", "oaep"}) {
        folder.run(
            "printf 'sign me' | openssl cms -encrypt -binary -aes256 -outform DER -out m.der -recip cert.pem"
            " -keyopt rsa_padding_mode:" +
            padding);
        const std::string der = folder.read("m.der");
        void *read = nullptr;
        ASSERT_EQ(readDER_from_Buffer(&read, TLX_DECODER(Seq_to_P7_CONTENT_INFO),
                                      reinterpret_cast<const std::uint8_t *>(der.data()),
                                      static_cast<std::uint32_t>(der.size())),
                  0U);
        const Info info(static_cast<P7_CONTENT_INFO *>(read));
        std::uint8_t *content = nullptr;
        std::uint32_t length = 0;
        ASSERT_EQ(open_PKCS7(info.get(), cert_.get(), secret.get(), &content, &length), 0U) << padding;
        EXPECT_EQ(Octets(content, content + length), kData);
        tlx_free(std::exchange(content, nullptr));
        P7_RECIPIENT_INFO *recipient =
            static_cast<P7_RECIPIENT_INFO *>(info->content.envelopedData->recipientInfos->values[0]);
        recipient->encryptedKey->data[100] ^= 1;
        const std::uint32_t spoiled = open_PKCS7(info.get(), cert_.get(), secret.get(), &content, &length);
        // One random key of 256 gives padding that looks right.
        EXPECT_TRUE(spoiled == 0x4B410012 || (spoiled == 0 && padding == "pkcs1")) << status_text(spoiled);
        tlx_free(content);
    }
    ASSERT_EQ(logout_TOKEN(session_.get()), 0U);
    std::uint8_t signature[256];
    std::uint32_t length = 0;
    const std::uint32_t status = sign_RSA(static_cast<RSA_UNIT *>(secret->key), TLX_DIGEST_SHA256,
                                          TLX_RSA_MODE_PKCS1, kData.data(), 7, signature, &length);
    EXPECT_EQ(status, 0x49200082U) << status_text(status);
}

#endif

}  // namespace
}  // namespace tlx_test
