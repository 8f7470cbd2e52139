// What rows of records.txt cannot say of messages: putting them together, records that are left partly
// filled, what is kept as received, and messages of the openssl program.
#include <utility>

#include "support/chain_builder.hpp"
#include "support/command.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_P7_CONTENT_INFO>;

/// The notation of der_text.hpp with words for what messages are made of; "signed(...)" and its like are
/// content infos.
std::string expanded(std::string text) {
    static const std::string certificate = [] {
        const Octets octets = read_file("user.der");
        std::string digits = hex_of(octets.data(), octets.size());
        std::erase(digits, ' ');
        return "=" + digits;
    }();
    const std::pair<std::string, std::string> words[] = {
        {"signed(", "30{06:2A864886F70D010702 A0{30{"},
        {"enveloped(", "30{06:2A864886F70D010703 A0{30{"},
        {"both(", "30{06:2A864886F70D010704 A0{30{"},
        {"digested(", "30{06:2A864886F70D010705 A0{30{"},
        {"encrypted(", "30{06:2A864886F70D010706 A0{30{"},
        {")", "}}}"},
        {"SIGNER", "30{02:01 NUMBER SHA1 SHA1 04:CC}"},
        {"ENCRYPTED",
         "30{06:2A864886F70D010701 30{06:2A831A8C9A440104 04:00112233445566778899AABBCCDDEEFF} 80:AABB}"},
        {"DATA", "30{06:2A864886F70D010701 A0{04:6162}}"},
        {"NUMBER", "30{30{31{30{06:550403 0C:41}}} 02:05}"},
        {"SHA1", "30{06:2B0E03021A 05:}"},
        {"DIGEST", "30{06:2A864886F70D010904 31{04:AB}}"},
        {"CRL", "30{30{30{06:2A03} 30{} 17:3235303130323033303430355A} 30{06:2A03} 03:00AA}"},
        {"CERT", certificate}};
    for (const auto &[word, meaning] : words) {
        for (std::size_t at = 0; (at = text.find(word)) != text.npos;)
            text.replace(at, word.size(), meaning);
    }
    return text;
}
std::string hex_of_words(const std::string &text) {
    return hex_of_text(expanded(text));
}

Info info_of(const std::string &text) {
    return Info(decoded(Seq_to_P7_CONTENT_INFO, expanded(text)));
}
std::string text_of(const Info &info) {
    return encoded(P7_CONTENT_INFO_to_Seq, info.get());
}

P7_SIGNER_INFO *first_signer(P7_CONTENT_INFO *info) {
    return get_P7_SIGNER_INFOS_child(info->content.signedData->signerInfos, 0);
}

std::uint32_t add_attribute(P7_CONTENT_INFO *info, const Row &words) {
    const auto add = words[0] == "signed" ? add_PKCS7_Signed_Attribute : add_PKCS7_Unauthenticated_Attribute;
    return add(first_signer(info), static_cast<std::int32_t>(words.number(1)), words.number(2),
               reinterpret_cast<const std::uint8_t *>(words[3].data()),
               static_cast<std::int32_t>(words[3].size()));
}

const Row kAddDigest{"", {"signed", "messageDigest", "4", "A"}};

/// What steps put into messages, made once.
struct Parts {
    OwnedCert cert = certificate_of(read_file("user.der"));
    Info data = info_of("DATA");

    static const Parts &instance() {
        static const Parts parts;
        return parts;
    }
};

/// Does what the words say.
std::uint32_t apply(const Row &words, P7_CONTENT_INFO *info) {
    const Parts &parts = Parts::instance();
    const bool none = words[1] == "none";
    if (words[0] == "version") return set_P7_version(info, words.number(1));
    if (words[0] == "certificate") return add_PKCS7_Certificate(info, none ? nullptr : parts.cert.get());
    if (words[0] == "content") return set_PKCS7_Content(info, none ? nullptr : parts.data.get());
    if (words[0] != "crl") return add_attribute(info, words);
    // Taken over: a failure frees the list, which the leak check sees.
    X509_CRL *crl = nullptr;
    const std::uint32_t status = none ? 0 : Seq_to_X509_CRL(der_node(expanded("CRL")).get(), &crl);
    return status != 0 ? 1U : add_PKCS7_Crl(info, crl);
}

/// Words, a message before and after. A refused change, and one for which memory runs out, leave the message
/// as it was; some make only a part of a change when memory runs out.
std::string change(const Row &row) {
    const Row words{row.place, split(row[1], ' ')};
    const bool refused = row[3] == "refused";
    const std::string before = hex_of_words(row[2]);
    const std::string after = refused ? before : hex_of_words(row[3]);
    for (unsigned n = 1;; ++n) {
        const LeakCheck leaks;
        const Info info = info_of(row[2]);
        tlx_fail_allocation(refused ? 0 : n);
        const std::uint32_t status = apply(words, info.get());
        tlx_fail_allocation(0);
        const std::string now = text_of(info);
        if (refused || (status == 0 && now == after)) return now == after ? std::to_string(status) : now;
        EXPECT_TRUE(row[0] == "partly" || (status == 1 && now == before)) << status << " " << now;
        if (n == 1000) return now;
    }
}

/// The version of whatever content there is.
std::string version_of(const Info &info) {
    const auto *content = static_cast<BIGINT *const *>(info->content.any);
    return content == nullptr ? "none" : std::to_string(get_BIGINT_word(*content));
}

/// The version that a type brings, in place of other content; no other type changes anything.
std::string set_type(const Row &row) {
    const auto type = static_cast<std::int32_t>(row.number(1));
    const Info info = info_of("signed(02:07 31{} DATA A0{CERT} 31{})");
    const std::string before = text_of(info);
    if (set_PKCS7_Type(info.get(), type) != 0) return text_of(info) == before ? "refused" : "changed";
    sweep_failing_allocations([&] {
        const Info made(new_PKCS7_Content());
        return made && set_PKCS7_Type(made.get(), type) == 0 && version_of(made) == version_of(info);
    });
    return version_of(info);
}

TEST(MessageModel, Rows) {
    (void)Parts::instance();
    expect_rows("message_model.txt", {{"change", {change}}, {"partly", {change}}, {"type", {set_type}}});
    EXPECT_EQ(add_PKCS7_Certificate(nullptr, nullptr), 1U);
    EXPECT_EQ(add_PKCS7_Crl(nullptr, new_X509_CRL()), 1U);
    EXPECT_EQ(set_PKCS7_Type(nullptr, TLX_OID_PKCS7_DATA), 1U);
}

TEST(MessageModel, ContentFromOctets) {
    const std::uint8_t octets[] = {0x61, 0x62};
    sweep_failing_allocations([&] {
        const Info data(gen_PKCS7_DATA_from_Binary(octets, 2));
        return data != nullptr && text_of(data) == hex_of_words("DATA");
    });
    EXPECT_EQ(text_of(Info(gen_PKCS7_DATA_from_Binary(nullptr, 0))),
              hex_of_text("30{06:2A864886F70D010701 A0{04:}}"));
    EXPECT_EQ(gen_PKCS7_DATA_from_Binary(nullptr, 1), nullptr);
    EXPECT_EQ(gen_PKCS7_DATA_from_Binary(octets, 0x80000000), nullptr);
}

/// An unknown member ends the reading with success: nothing for a new record, what was read for a caller's.
TEST(MessageModel, UnknownMembersOfSignedData) {
    const std::string head = expanded("30{02:07 31{} DATA A0{}");
    const std::string signers = expanded("31{SIGNER}}");
    P7_SIGNED_DATA *data = nullptr;
    EXPECT_EQ(Seq_to_P7_SIGNED_DATA(der_node(head + " A2{} " + signers).get(), &data), 0U);
    EXPECT_EQ(data, nullptr);
    const Held<free_P7_SIGNED_DATA> given(new_P7_SIGNED_DATA());
    data = given.get();
    EXPECT_EQ(Seq_to_P7_SIGNED_DATA(der_node(head + " 05: " + signers).get(), &data), 0U);
    EXPECT_EQ(encoded(P7_SIGNED_DATA_to_Seq, given.get()), hex_of_text(head + "}"));

    const std::string start = expanded("30{02:07 31{} 31{} ENCRYPTED A1{} A2{}}");
    P7_SIGNED_AND_ENVELOPED_DATA *both = nullptr;
    EXPECT_EQ(Seq_to_P7_SIGNED_AND_ENVELOPED_DATA(der_node(start).get(), &both), 0U);
    EXPECT_EQ(both, nullptr);
    EXPECT_EQ(text_of(info_of("signed(02:01 31{} DATA A2{} 31{})")), hex_of_text("30{06:2A864886F70D010702}"))
        << "such content is none";
}

TEST(MessageModel, EncodersPassUpTheStatusOfTheMember) {
    const Info info = info_of("signed(02:01 31{} DATA A0{CERT} 31{SIGNER})");
    P7_SIGNED_DATA &data = *info->content.signedData;
    P7_SIGNER_INFO &first = *first_signer(info.get());
    EXPECT_EQ(add_attribute(info.get(), kAddDigest), 0U);
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
    EXPECT_EQ(encoded(P7_SIGNER_INFO_to_Seq, &first), hex_of_words("30{02:01 NUMBER SHA1 A0{} SHA1 04:CC}"));
}

TEST(MessageModel, WhatIsKeptAsReceived) {
    const std::string attributes = "=A080 DIGEST =0000";
    const std::string nested = " 02:01 31{} DATA 31{}";
    const Info info = info_of("signed(02:01 31{} 30{06:2A864886F70D010702 A0{=3080" + nested +
                              " =0000}} 31{30{02:01 NUMBER SHA1" + attributes + " SHA1 04:CC}})");
    const Info copy(dup_P7_CONTENT_INFO(info.get()));
    EXPECT_EQ(info->received, nullptr) << "nobody digests the message itself";
    for (const Info *each : {&info, &copy}) {
        const P7_SIGNED_DATA &data = *(*each)->content.signedData;
        EXPECT_EQ(hex_of(data.contentInfo->received), hex_of_words("=3080" + nested + " =0000"));
        EXPECT_EQ(encoded(P7_CONTENT_INFO_to_Seq, data.contentInfo), hex_of_words("signed(" + nested + ")"));
        EXPECT_EQ(hex_of(first_signer(each->get())->receivedAttributes), hex_of_words(attributes));
    }
    EXPECT_EQ(add_attribute(info.get(), kAddDigest), 0U);
    EXPECT_EQ(first_signer(info.get())->receivedAttributes, nullptr);
    EXPECT_EQ(info_of("signed(02:01 31{} DATA 31{})")->content.signedData->contentInfo->received, nullptr);
}

TEST(MessageModel, MembersInMemoryAreCopiedButNotWritten) {
    const std::string text = "signed(02:01 31{} DATA 31{SIGNER})";
    const Info info = info_of(text);
    info->content.signedData->detached = 1;
    first_signer(info.get())->key = new_ASYMMETRIC_KEY();
    const Info copy(dup_P7_CONTENT_INFO(info.get()));
    EXPECT_EQ(copy->content.signedData->detached, 1U);
    EXPECT_NE(first_signer(copy.get())->key, nullptr);
    EXPECT_EQ(text_of(copy), hex_of_words(text));

    const Info sealed = info_of("enveloped(02:00 31{30{02:00 NUMBER SHA1 04:CC}} ENCRYPTED)");
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
        const Octets octets = der(expanded(notation));
        return std::string(octets.begin(), octets.end());
    };
    for (const auto &[levels, status] : {std::pair{21, 0U}, {22, 0x4B1A0104U}, {2000, 0x4B1A0104U}}) {
        std::string message = text("DATA");
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
    const OwnedCert &cert = Parts::instance().cert;
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
