// What rows of records.txt cannot say of messages: putting them together, records that are left partly
// filled, what is kept as received, and messages of the openssl program.
#include <functional>
#include <utility>

#include "support/command.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_P7_CONTENT_INFO>;

const std::string kNumber = " 30{30{31{30{06:550403 0C:41}}} 02:05}";
const std::string kSha1 = " 30{06:2B0E03021A 05:}";
const std::string kData = " 30{06:2A864886F70D010701 A0{04:6162}}";
const std::string kCipher = " 30{06:2A831A8C9A440104 04:00112233445566778899AABBCCDDEEFF}";
const std::string kEncrypted = " 30{06:2A864886F70D010701 " + kCipher + " 80:AABB}";
const std::string kCrl = " 30{30{02:01} 30{06:2A03} 03:00AA}";

std::string signer(const std::string &version, const std::string &attributes = "") {
    return "30{02:" + version + kNumber + kSha1 + attributes + kSha1 + " 04:CC}";
}
std::string recipient(const std::string &version) {
    return "30{02:" + version + kNumber + kSha1 + " 04:CC}";
}
std::string signed_data(const std::string &version, const std::string &rest,
                        const std::string &inner = kData) {
    return "30{06:2A864886F70D010702 A0{30{02:" + version + " 31{}" + inner + rest + "}}}";
}
std::string both(const std::string &version, const std::string &recipients, const std::string &rest) {
    return "30{06:2A864886F70D010704 A0{30{02:" + version + " 31{" + recipients + "} 31{}" + kEncrypted +
           rest + "}}}";
}
std::string enveloped(const std::string &version, const std::string &recipients) {
    return "30{06:2A864886F70D010703 A0{30{02:" + version + " 31{" + recipients + "}" + kEncrypted + "}}}";
}
std::string digested(const std::string &version) {
    return "30{06:2A864886F70D010705 A0{30{02:" + version + kSha1 + kData + " 04:AA}}}";
}
std::string encrypted(const std::string &version) {
    return "30{06:2A864886F70D010706 A0{30{02:" + version + kEncrypted + "}}}";
}

Info info_of(const std::string &text) {
    return Info(decoded(Seq_to_P7_CONTENT_INFO, text));
}
std::string text_of(const Info &info) {
    return encoded(P7_CONTENT_INFO_to_Seq, info.get());
}

const Octets &certificate_octets() {
    static const Octets octets = read_file("user.der");
    return octets;
}
std::string certificate_text() {
    std::string digits = hex_of(certificate_octets().data(), certificate_octets().size());
    std::erase(digits, ' ');
    return "=" + digits;
}

struct Change {
    std::string before;
    std::function<std::uint32_t(P7_CONTENT_INFO *)> apply;
    std::string after;             // empty: refused with 1
    bool may_change_less = false;  // when memory runs out
};

/// A refused change, and one for which memory runs out, leave the message as it was.
void expect_change(const Change &change) {
    SCOPED_TRACE(change.before);
    const std::string before = hex_of_text(change.before);
    const std::string after = change.after.empty() ? before : hex_of_text(change.after);
    for (unsigned n = 1;; ++n) {
        const LeakCheck leaks;
        const Info info = info_of(change.before);
        tlx_fail_allocation(change.after.empty() ? 0 : n);
        const std::uint32_t status = change.apply(info.get());
        tlx_fail_allocation(0);
        const std::string now = text_of(info);
        if (status == 0 && !change.after.empty() && now == after) return;
        if (!change.may_change_less) {
            EXPECT_EQ(now, before);
        }
        if (change.after.empty()) {
            EXPECT_EQ(status, 1U);
            return;
        }
        EXPECT_TRUE(status == 1 || change.may_change_less) << status;
        ASSERT_LT(n, 1000U) << now;
    }
}

std::uint32_t add_attribute(P7_CONTENT_INFO *info, bool is_signed, std::int32_t row, std::uint32_t type,
                            const std::string &value) {
    auto *signer = get_P7_SIGNER_INFOS_child(info->content.signedData->signerInfos, 0);
    return (is_signed ? add_PKCS7_Signed_Attribute : add_PKCS7_Unauthenticated_Attribute)(
        signer, row, type, reinterpret_cast<const std::uint8_t *>(value.data()),
        static_cast<std::int32_t>(value.size()));
}
std::function<std::uint32_t(P7_CONTENT_INFO *)> attribute(bool is_signed, std::int32_t row,
                                                          std::uint32_t type, const std::string &value) {
    return [=](P7_CONTENT_INFO *info) { return add_attribute(info, is_signed, row, type, value); };
}

TEST(MessageModel, Changes) {
    const auto version = [](std::uint32_t number) {
        return [number](P7_CONTENT_INFO *info) { return set_P7_version(info, number); };
    };
    const std::string one = " 31{" + signer("01") + "}";
    const std::string digest = " 30{06:2A864886F70D010904 31{04:AB}}";
    const std::string type = " 30{06:2A864886F70D010903 31{06:2A864886F70D010701}}";
    const std::vector<Change> changes = {
        {signed_data("01", " 31{" + signer("01") + signer("02") + "}"), version(200),
         signed_data("00C8", " 31{" + signer("00C8") + signer("00C8") + "}"), true},
        {enveloped("00", recipient("00") + recipient("01")), version(2),
         enveloped("02", recipient("02") + recipient("02")), true},
        {both("01", recipient("00"), one), version(0),
         both("00", recipient("00"), " 31{" + signer("00") + "}"), true},
        {digested("00"), version(1), digested("01"), true},
        {encrypted("00"), version(1), encrypted("01"), true},
        {kData, version(1), ""},
        {"30{06:2A864886F70D010702}", version(1), ""},
        {"30{06:2B0601040182370A01 A0{30{02:01}}}", version(1), ""},

        {signed_data("01", one), attribute(true, TLX_OID_MESSAGE_DIGEST, TLX_TAG_OCTET_STRING, "\xAB"),
         signed_data("01", " 31{" + signer("01", "A0{" + digest + "}") + "}"), true},
        {signed_data("01", " 31{" + signer("01", "A0{" + digest + "}") + "}"),
         attribute(true, TLX_OID_CONTENT_TYPE, TLX_TAG_OBJECT_IDENTIFIER, "1.2.840.113549.1.7.1"),
         signed_data("01", " 31{" + signer("01", "A0{" + digest + type + "}") + "}"), true},
        {signed_data("01", one), attribute(false, TLX_OID_SIGNING_TIME, TLX_TAG_UTC_TIME, "300101000000Z"),
         signed_data("01", " 31{30{02:01" + kNumber + kSha1 + kSha1 +
                               " 04:CC A1{30{06:2A864886F70D010905 31{17:3330303130313030303030305A}}}}}"),
         true},
        {signed_data("01", one),
         attribute(true, TLX_OID_CONTENT_TYPE, TLX_TAG_OBJECT_IDENTIFIER, "no identifier"), ""},
        {signed_data("01", one), attribute(true, TLX_OID_MESSAGE_DIGEST, TLX_TAG_SEQUENCE_OCTET, "\x05"), ""},
        {signed_data("01", one), attribute(true, TLX_OID_MESSAGE_DIGEST, 0, "\xAB"), ""},
        {signed_data("01", one), attribute(true, 9999, TLX_TAG_OCTET_STRING, "\xAB"), ""},
    };
    for (const Change &change : changes)
        expect_change(change);
}

TEST(MessageModel, CertificatesAreCopiedAndRevocationListsTakenOver) {
    const OwnedCert cert = certificate_of(certificate_octets());
    const auto add_cert = [&](P7_CONTENT_INFO *info) { return add_PKCS7_Certificate(info, cert.get()); };
    // Taken over: a failure frees the list, which the leak check sees.
    const auto add_crl = [](P7_CONTENT_INFO *info) {
        X509_CRL *crl = nullptr;
        const std::uint32_t status = Seq_to_X509_CRL(der_node(kCrl).get(), &crl);
        return status != 0 ? 1U : add_PKCS7_Crl(info, crl);
    };
    const std::string text = certificate_text();
    const std::vector<Change> changes = {
        {signed_data("01", " 31{}"), add_cert, signed_data("01", "A0{" + text + "} 31{}")},
        {signed_data("01", "A0{" + text + "} 31{}"), add_cert,
         signed_data("01", "A0{" + text + " " + text + "} 31{}")},
        {both("01", "", " 31{}"), add_cert, both("01", "", "A0{" + text + "} 31{}")},
        {signed_data("01", " 31{}"), add_crl, signed_data("01", "A1{" + kCrl + "} 31{}")},
        {both("01", "", "A1{" + kCrl + "} 31{}"), add_crl, both("01", "", "A1{" + kCrl + kCrl + "} 31{}")},
        {kData, add_cert, ""},
        {enveloped("00", ""), add_crl, ""},
        {"30{06:2A864886F70D010702}", add_crl, ""},
    };
    for (const Change &change : changes)
        expect_change(change);
    EXPECT_EQ(add_PKCS7_Certificate(nullptr, cert.get()), 1U);
    EXPECT_EQ(add_PKCS7_Crl(nullptr, new_X509_CRL()), 1U);
    EXPECT_EQ(add_PKCS7_Crl(info_of(signed_data("01", " 31{}")).get(), nullptr), 1U);
    EXPECT_EQ(add_PKCS7_Certificate(info_of(signed_data("01", " 31{}")).get(), nullptr), 1U);
}

/// The version of whatever content there is.
std::string version_of(const Info &info) {
    const auto *content = static_cast<BIGINT *const *>(info->content.any);
    return content == nullptr ? "none" : std::to_string(get_BIGINT_word(*content));
}

TEST(MessageModel, TypesBringEmptyContent) {
    struct Content {
        std::int32_t type;
        std::string version;
    };
    for (const Content &content :
         std::initializer_list<Content>{{TLX_OID_PKCS7_DATA, "none"},
                                        {TLX_OID_PKCS7_SIGNED_DATA, "1"},
                                        {TLX_OID_PKCS7_ENVELOPED_DATA, "0"},
                                        {TLX_OID_PKCS7_SIGNED_AND_ENVELOPED_DATA, "1"},
                                        {TLX_OID_PKCS7_DIGESTED_DATA, "0"},
                                        {TLX_OID_PKCS7_ENCRYPTED_DATA, "0"}}) {
        sweep_failing_allocations([&] {
            const Info info(new_PKCS7_Content());
            return info && set_PKCS7_Type(info.get(), content.type) == 0 &&
                   version_of(info) == content.version;
        });
        const LeakCheck leaks;
        const Info held = info_of(signed_data("07", "A0{" + certificate_text() + "} 31{}"));
        EXPECT_EQ(set_PKCS7_Type(held.get(), content.type), 0U);
        EXPECT_EQ(version_of(held), content.version);
    }
    const Info info = info_of(kData);
    for (const std::int32_t refused :
         {0, -1, TLX_OID_PKCS7_DATA - 1, TLX_OID_PKCS7_ENCRYPTED_DATA + 1, 837}) {
        EXPECT_EQ(set_PKCS7_Type(info.get(), refused), 1U);
    }
    EXPECT_EQ(text_of(info), hex_of_text(kData));
    EXPECT_EQ(set_PKCS7_Type(nullptr, TLX_OID_PKCS7_DATA), 1U);
}

TEST(MessageModel, ContentFromOctets) {
    const std::uint8_t octets[] = {0x61, 0x62};
    sweep_failing_allocations([&] {
        const Info data(gen_PKCS7_DATA_from_Binary(octets, 2));
        return data != nullptr && text_of(data) == hex_of_text(kData);
    });
    EXPECT_EQ(text_of(Info(gen_PKCS7_DATA_from_Binary(nullptr, 0))),
              hex_of_text("30{06:2A864886F70D010701 A0{04:}}"));
    EXPECT_EQ(gen_PKCS7_DATA_from_Binary(nullptr, 1), nullptr);
    EXPECT_EQ(gen_PKCS7_DATA_from_Binary(octets, 0x80000000), nullptr);

    const std::string before = signed_data("01", " 31{}", "30{06:2A864886F70D010701}");
    const Info data = info_of(kData);
    expect_change({before, [&](P7_CONTENT_INFO *info) { return set_PKCS7_Content(info, data.get()); },
                   signed_data("01", " 31{}")});
    expect_change({before, [](P7_CONTENT_INFO *info) { return set_PKCS7_Content(info, nullptr); }, ""});
    expect_change(
        {digested("00"), [&](P7_CONTENT_INFO *info) { return set_PKCS7_Content(info, data.get()); }, ""});
}

/// An unknown member ends the reading with success: nothing for a new record, what was read for a caller's.
TEST(MessageModel, UnknownMembersOfSignedData) {
    const std::string head = "30{02:07 31{} " + kData + " A0{}";
    P7_SIGNED_DATA *data = nullptr;
    EXPECT_EQ(Seq_to_P7_SIGNED_DATA(der_node(head + " A2{} 31{" + signer("01") + "}}").get(), &data), 0U);
    EXPECT_EQ(data, nullptr);
    const Held<free_P7_SIGNED_DATA> given(new_P7_SIGNED_DATA());
    data = given.get();
    EXPECT_EQ(Seq_to_P7_SIGNED_DATA(der_node(head + " 05: 31{" + signer("01") + "}}").get(), &data), 0U);
    EXPECT_EQ(encoded(P7_SIGNED_DATA_to_Seq, given.get()), hex_of_text(head + "}"));

    const std::string start = "30{02:07 31{} 31{} " + kEncrypted + " A1{}";
    P7_SIGNED_AND_ENVELOPED_DATA *both = nullptr;
    EXPECT_EQ(Seq_to_P7_SIGNED_AND_ENVELOPED_DATA(der_node(start + " A2{}}").get(), &both), 0U);
    EXPECT_EQ(both, nullptr);
    const Info info = info_of(signed_data("01", " A2{} 31{}"));
    EXPECT_EQ(text_of(info), hex_of_text("30{06:2A864886F70D010702}")) << "such content is none";
}

TEST(MessageModel, EncodersPassUpTheStatusOfTheMember) {
    const Info info = info_of(signed_data("01", "A0{" + certificate_text() + "} 31{" + signer("01") + "}"));
    P7_SIGNED_DATA &data = *info->content.signedData;
    P7_SIGNER_INFO &first = *get_P7_SIGNER_INFOS_child(data.signerInfos, 0);
    EXPECT_EQ(add_attribute(info.get(), true, TLX_OID_MESSAGE_DIGEST, TLX_TAG_OCTET_STRING, "A"), 0U);
    const std::string whole = text_of(info);
    const auto expect_without = [&](auto &member, const char *status) {
        const auto held = std::exchange(member, nullptr);
        EXPECT_EQ(text_of(info), status);
        member = held;
        EXPECT_EQ(text_of(info), whole);
    };
    expect_without(data.version, "4B090103");
    expect_without(data.contentInfo->contentType, "4B190103");
    expect_without(get_X509_CERTIFICATES_child(data.certificates, 0)->tbsCertificate, "462B0103");
    expect_without(first.version, "4B030103");
    expect_without(first.digestAlgorithm->algorithm, "46250103");
    expect_without(first.issuerAndSerialNumber->serialNumber, "4B010103");
    expect_without(get_X509_ATTRIBUTES_child(first.authenticatedAttributes, 0)->type, "46210103");
    expect_without(first.authenticatedAttributes->values[0], "4623002B");

    clean_X509_ATTRIBUTES(first.authenticatedAttributes);
    EXPECT_EQ(encoded(P7_SIGNER_INFO_to_Seq, &first), hex_of_text(signer("01", "A0{}")));
}

TEST(MessageModel, WhatIsKeptAsReceived) {
    const std::string attributes = "=A080 30{06:2A864886F70D010904 31{04:AB}} =0000";
    const std::string nested = " 02:01 31{} " + kData + " 31{}";
    const Info info = info_of(signed_data("01", " 31{" + signer("01", attributes) + "}",
                                          "30{06:2A864886F70D010702 A0{=3080" + nested + " =0000}}"));
    const Info copy(dup_P7_CONTENT_INFO(info.get()));
    EXPECT_EQ(info->received, nullptr) << "nobody digests the message itself";
    for (const Info *each : {&info, &copy}) {
        const P7_SIGNED_DATA &data = *(*each)->content.signedData;
        EXPECT_EQ(hex_of(data.contentInfo->received), hex_of_text("=3080" + nested + " =0000"));
        EXPECT_EQ(encoded(P7_CONTENT_INFO_to_Seq, data.contentInfo),
                  hex_of_text("30{06:2A864886F70D010702 A0{30{" + nested + "}}}"));
        const P7_SIGNER_INFO &first = *get_P7_SIGNER_INFOS_child(data.signerInfos, 0);
        EXPECT_EQ(hex_of(first.receivedAttributes), hex_of_text(attributes));
    }
    EXPECT_EQ(add_attribute(info.get(), true, TLX_OID_MESSAGE_DIGEST, TLX_TAG_OCTET_STRING, "A"), 0U);
    EXPECT_EQ(get_P7_SIGNER_INFOS_child(info->content.signedData->signerInfos, 0)->receivedAttributes,
              nullptr);
    EXPECT_EQ(info_of(signed_data("01", " 31{}"))->content.signedData->contentInfo->received, nullptr)
        << "data";
}

TEST(MessageModel, MembersInMemoryAreCopiedButNotWritten) {
    const Info info = info_of(signed_data("01", " 31{" + signer("01") + "}"));
    P7_SIGNED_DATA &data = *info->content.signedData;
    data.detached = 1;
    get_P7_SIGNER_INFOS_child(data.signerInfos, 0)->key = new_ASYMMETRIC_KEY();
    const Info copy(dup_P7_CONTENT_INFO(info.get()));
    EXPECT_EQ(copy->content.signedData->detached, 1U);
    EXPECT_NE(get_P7_SIGNER_INFOS_child(copy->content.signedData->signerInfos, 0)->key, nullptr);
    EXPECT_EQ(text_of(copy), hex_of_text(signed_data("01", " 31{" + signer("01") + "}")));

    const Info sealed = info_of(enveloped("00", recipient("00")));
    sealed->content.envelopedData->encryptedContentInfo->cipher = new_BLOCK_CIPHER_UNIT();
    const Info other(dup_P7_CONTENT_INFO(sealed.get()));
    const P7_ENCRYPTED_CONTENT_INFO &content = *other->content.envelopedData->encryptedContentInfo;
    EXPECT_EQ(content.cipher, nullptr) << "an encryption under way is not copied";
}

/// Content in content is refused long before the stack ends.
TEST(MessageModel, DepthOfContent) {
    const auto wrap = [](char tag, const std::string &contents) {
        const auto octet = [&](int shift) { return static_cast<char>(contents.size() >> shift); };
        return std::string{tag, '\x83', octet(16), octet(8), octet(0)} + contents;
    };
    const auto text = [](const std::string &notation) {
        const Octets octets = der(notation);
        return std::string(octets.begin(), octets.end());
    };
    for (const auto &[levels, status] : {std::pair{21, 0U}, {22, 0x4B1A0104U}, {2000, 0x4B1A0104U}}) {
        std::string message = text(kData);
        for (int i = 0; i < levels; ++i) {
            const std::string data = wrap('\x30', text("02:01 31{}") + message + text("31{}"));
            message = wrap('\x30', text("06:2A864886F70D010702") + wrap('\xA0', data));
        }
        P7_CONTENT_INFO *info = nullptr;
        EXPECT_EQ(TLX_READ_DER(P7_CONTENT_INFO, &info, reinterpret_cast<const std::uint8_t *>(message.data()),
                               static_cast<std::uint32_t>(message.size())),
                  status)
            << levels;
        free_P7_CONTENT_INFO(info);
    }
}

TEST(MessageModel, IssuerAndSerialNumberOfACertificate) {
    const OwnedCert cert = certificate_of(certificate_octets());
    Held<free_ISSUER_AND_SERIAL_NUMBER> number(new_ISSUER_AND_SERIAL_NUMBER());
    EXPECT_EQ(cmp_P7_ISSUER_AND_SERIAL_NUMBER(cert.get(), number.get()), 1);
    number->issuer = dup_X509_NAME(get_X509_issuer(cert.get()));
    number->serialNumber = dup_BIGINT(get_X509_serial(cert.get()));
    EXPECT_EQ(cmp_P7_ISSUER_AND_SERIAL_NUMBER(cert.get(), number.get()), 0);
    EXPECT_EQ(cmp_P7_ISSUER_AND_SERIAL_NUMBER(nullptr, number.get()), 1);
    EXPECT_EQ(cmp_P7_ISSUER_AND_SERIAL_NUMBER(cert.get(), nullptr), 1);
    free_X509_NAME_CHILD(remove_X509_NAME_child(number->issuer, 0));
    EXPECT_EQ(cmp_P7_ISSUER_AND_SERIAL_NUMBER(cert.get(), number.get()), -1) << "another name";
    free_X509_NAME(std::exchange(number->issuer, dup_X509_NAME(get_X509_issuer(cert.get()))));
    set_BIGINT_word(number->serialNumber, 77);
    EXPECT_EQ(cmp_P7_ISSUER_AND_SERIAL_NUMBER(cert.get(), number.get()), -1) << "another number";
}

std::string written(const std::string &path) {
    P7_CONTENT_INFO *info = nullptr;
    EXPECT_EQ(TLX_READ_DER_FILE(P7_CONTENT_INFO, &info, path.c_str()), 0U);
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = TLX_WRITE_DER(P7_CONTENT_INFO, info, &octets);
    free_P7_CONTENT_INFO(info);
    return take(octets, octets == nullptr ? 0 : size);
}

/// Messages of the openssl program: DER comes back octet for octet, streamed BER as the DER that openssl
/// makes of it.
TEST(MessageModel, MessagesOfOpenssl) {
    const CommandFolder folder;
    folder.write("content", std::string(20000, 'x'));
    folder.run(
        "openssl req -x509 -newkey rsa:2048 -nodes -keyout key.pem -out cert.pem -subj /CN=signer -days 2");
    for (const std::string command :
         {"cms -sign -nodetach -signer cert.pem -inkey key.pem",
          "cms -sign -noattr -signer cert.pem -inkey key.pem",
          "smime -sign -nodetach -nocerts -signer cert.pem -inkey key.pem",
          "cms -encrypt -aes256 -recip cert.pem", "cms -digest_create -md sha256",
          "cms -EncryptedData_encrypt -aes128 -secretkey 00112233445566778899AABBCCDDEEFF",
          "cms -data_create"}) {
        SCOPED_TRACE(command);
        const std::string make = "openssl " + command + " -binary -in content -out message -outform ";
        folder.run(make + "DER");
        EXPECT_TRUE(written(folder.path("message")) == folder.read("message"));
        folder.run(make + "DER -stream -indef");
        folder.run("openssl cms -cmsout -inform DER -in message -outform DER -out definite");
        EXPECT_EQ(folder.read("message").substr(0, 2), "0\x80");
        EXPECT_TRUE(written(folder.path("message")) == folder.read("definite"));
        folder.run(make + "PEM");
        P7_CONTENT_INFO *info = nullptr;
        EXPECT_EQ(TLX_READ_PEM_FILE(P7_CONTENT_INFO, &info, folder.path("message").c_str()), 0U);
        char *pem = nullptr;
        const std::uint32_t size = command[0] == 's' ? TLX_WRITE_PEM(P7_CONTENT_INFO, info, "PKCS7", &pem)
                                                     : TLX_WRITE_PEM(P7_CONTENT_INFO, info, "CMS", &pem);
        EXPECT_TRUE(take(pem, size) == folder.read("message"));
        free_P7_CONTENT_INFO(info);
    }
}

}  // namespace
}  // namespace tlx_test
