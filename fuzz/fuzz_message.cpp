// Whole messages after an octet of choices: their signers are verified, and their content is decrypted for a
// key that the seeds were made with. A choice adds a signer or a recipient of ours first, whose work has to
// hold.
#include "values.hpp"

namespace {

using fuzz::Held;
using fuzz::Octets;
using fuzz::require;

enum Choice : std::uint8_t { detached = 1, with_anchor = 2, sign = 4, seal = 8 };

/// PKCS #1, 512 bits
constexpr char kKey[] =
    "3082013B020100024100B0149011E992F726C1AFD945E74EB8228831A618CB3932AF9A07695596280B04EB44FD41343F"
    "CA44A2D46E8946BD0ED688BB23B97E4707F1D892484352FCDFCB020301000102407525991C71BBF776EF91E10A22F43A"
    "89AEF6E93CC1A852528635BC1CD703D91FD7F53B826BBF1A18318FE081BD76E42F27D977C80E3BCEDB4B39D818952F2C"
    "31022100DCD2A145325073AABD79F61C2D181F9D060CAA9990B02D7AEDBD8AE99D70E2DF022100CC214AAA87B88F6173"
    "8B3CA89F9C966A4CFAA33F86FBC03FA4FDBFAC4685AC95022100BC85FA77080895676C52466231C189A3D6395420BCDD"
    "1C46F9D73B544D3CC603022100907A0BAFD0E9A6C9B18EDDFAF7254C2CA6994ACBDECCF64FD58627905645AC5502202E"
    "58AC3643FD1D4E0D110A583095D284DCD1F9D833993214698CA10782594E71";
/// Of "CN=Fuzz", signed by itself, until 2081
constexpr char kCertificate[] =
    "308201093081B4020107300D06092A864886F70D01010B0500300F310D300B06035504030C0446757A7A3020170D3236"
    "313132323039303935365A180F32303831303832353039303935365A300F310D300B06035504030C0446757A7A305C30"
    "0D06092A864886F70D0101010500034B003048024100B0149011E992F726C1AFD945E74EB8228831A618CB3932AF9A07"
    "695596280B04EB44FD41343FCA44A2D46E8946BD0ED688BB23B97E4707F1D892484352FCDFCB0203010001300D06092A"
    "864886F70D01010B05000341002681B4AE81F0CD02A43F83DE54D1AEB9FEEE1911F8EBED0C9B333E15DB0ADE73F25922"
    "42B1FFB7295639F23FA4FCA98DF946E01004C88DC34EA539C40EBBC24E";
constexpr std::uint8_t kContent[] = "some content";
constexpr std::uint32_t kContentLength = sizeof kContent - 1;

struct Identity {
    Held<free_ASYMMETRIC_KEY> key{new_ASYMMETRIC_KEY()};
    Held<free_X509_CERT> cert;
    Held<free_X509_CERTIFICATES> pool{new_X509_CERTIFICATES()};
    Held<free_TRUST_ANCHORS> anchors{new_TRUST_ANCHORS()};
    Held<free_ASN1_TIME> time{charToASN1_TIME("2030-01-01,00:00:00")};

    Identity() {
        const Octets key_octets = fuzz::hex(kKey);
        const Octets cert_octets = fuzz::hex(kCertificate);
        void *record = nullptr;
        require(readDER_from_Buffer(&record, TLX_DECODER(Seq_to_X509_CERT), cert_octets.data(),
                                    static_cast<std::uint32_t>(cert_octets.size())) == 0);
        cert.reset(static_cast<X509_CERT *>(record));
        record = nullptr;
        require(readDER_from_Buffer(&record, TLX_DECODER(Seq_to_PKCS1_RSA_PRIVATE_KEY), key_octets.data(),
                                    static_cast<std::uint32_t>(key_octets.size())) == 0);
        const Held<free_PKCS1_RSA_PRIVATE_KEY> numbers(static_cast<PKCS1_RSA_PRIVATE_KEY *>(record));
        const Held<free_RSA_UNIT> unit(new_RSA_UNIT());
        require(get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(unit.get(), numbers.get()) == 0);
        set_ASYMMETRIC_KEY(key.get(), TLX_KEY_RSA, unit.get());
        add_X509_CERTIFICATES(pool.get(), cert.get());
        const Held<free_TRUST_ANCHOR> anchor(create_TRUST_ANCHOR_from_X509_CERT(cert.get()));
        add_TRUST_ANCHORS(anchors.get(), anchor.get());
    }
};

const Identity &identity() {
    static const Identity known;
    return known;
}

using Message = Held<free_P7_CONTENT_INFO>;

Message read_message(const std::uint8_t *octets, std::size_t size) {
    void *message = nullptr;
    readDER_from_Buffer(&message, TLX_DECODER(Seq_to_P7_CONTENT_INFO), octets,
                        static_cast<std::uint32_t>(size));
    return Message(static_cast<P7_CONTENT_INFO *>(message));
}

using Reports = Held<free_P7_SIGNER_REPORTS>;

std::uint32_t verify(const P7_CONTENT_INFO *message, std::uint8_t choices, const std::uint8_t *content,
                     Reports &reports) {
    P7_SIGNER_REPORTS *made = nullptr;
    const std::uint32_t status = verify_PKCS7_Signers(
        message, content, content != nullptr ? kContentLength : 0, identity().pool.get(),
        (choices & with_anchor) != 0 ? identity().anchors.get() : nullptr, identity().time.get(), &made);
    reports.reset(made);
    std::uint32_t first = 0;
    const auto count = static_cast<std::int32_t>(get_P7_SIGNER_REPORTS_count(made));
    for (std::int32_t i = 0; i < count && first == 0; ++i)
        first = get_P7_SIGNER_REPORTS_child(made, i)->status;
    require(count > 0 ? status == first : status != 0);
    return status;
}

void verify_as_received(P7_CONTENT_INFO *message, std::uint8_t choices) {
    const std::uint8_t *content = (choices & detached) != 0 ? kContent : nullptr;
    Reports reports;
    const std::uint32_t status = verify(message, choices, content, reports);
    if (status == 0 && content != nullptr) {
        std::uint8_t other[sizeof kContent] = "Some content";
        require(verify(message, choices, other, reports) != 0);
    }
    verify_PKCS7(message, nullptr, content,
                 content != nullptr ? static_cast<std::int32_t>(kContentLength) : -1);
}

/// The signer of ours is the last one, and verifies whatever the message says besides.
void sign_and_verify(P7_CONTENT_INFO *message, std::uint8_t choices) {
    const Identity &ours = identity();
    const bool apart = (choices & detached) != 0;
    if (add_PKCS7_Signature(message, ours.cert.get(), ours.key.get(), TLX_OID_SHA256) == nullptr) return;
    if (sign_PKCS7_withAttributes(message, apart ? kContent : nullptr, apart ? kContentLength : 0, apart,
                                  ours.time.get()) != 0)
        return;
    ASN1_UNIT *node = nullptr;
    if (P7_CONTENT_INFO_to_Seq(message, &node) != 0) return;
    const std::string octets = fuzz::octets_of(fuzz::Node(node).get());
    const Message read = read_message(reinterpret_cast<const std::uint8_t *>(octets.data()), octets.size());
    if (read == nullptr) return;
    Reports reports;
    verify(read.get(), 0, apart ? kContent : nullptr, reports);
    const auto count = static_cast<std::int32_t>(get_P7_SIGNER_REPORTS_count(reports.get()));
    require(count > 0 && get_P7_SIGNER_REPORTS_child(reports.get(), count - 1)->status == 0);
}

void open(const P7_CONTENT_INFO *message, bool sealed) {
    const Identity &ours = identity();
    std::uint8_t *content = nullptr;
    std::uint32_t length = 0;
    const std::uint32_t status = open_PKCS7(message, ours.cert.get(), ours.key.get(), &content, &length);
    require((status == 0) == (content != nullptr));
    const std::string opened = fuzz::taken(content, length);
    if (sealed) require(opened == reinterpret_cast<const char *>(kContent));
}

/// The same with a buffer that is as large as the header asks for.
void decrypt(const P7_CONTENT_INFO *message, std::uint32_t mode) {
    const Identity &ours = identity();
    std::uint8_t key[64];
    std::uint32_t key_length = sizeof key;
    if (decrypt_PKCS7_enveloped_CEK(message, ours.cert.get(), ours.key.get(), key, &key_length, mode) != 0)
        return;
    std::uint32_t length = get_PKCS7_ENCRYPTED_CONTENT_length(message);
    const std::uint32_t room = length;
    Octets content(room);
    if (decrypt_PKCS7(message, key, nullptr, content.data(), &length) == 0) require(length <= room);
}

void seal_and_open(P7_CONTENT_INFO *message, std::uint8_t choices) {
    const char *cipher = get_PKCS7_cipher_name(choices >> 4U);
    if (add_PKCS7_Recipient(message, identity().cert.get()) != 0 || cipher == nullptr) return;
    if (seal_PKCS7(message, cipher, kContent, kContentLength) == 0) open(message, true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) return 0;
    const std::uint8_t choices = data[0];
    const Message message = read_message(data + 1, size - 1);
    if (message == nullptr) return 0;
    verify_as_received(message.get(), choices);
    open(message.get(), false);
    for (const std::uint32_t mode : {0U, 8U})
        decrypt(message.get(), mode);
    if ((choices & sign) != 0) sign_and_verify(message.get(), choices);
    if ((choices & seal) != 0) seal_and_open(message.get(), choices);
    return 0;
}
