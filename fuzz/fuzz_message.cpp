// Whole messages after an octet of choices: their signers are verified, and their content is decrypted for a
// key that the seeds were made with. A choice adds a signer or a recipient of ours first, whose work has to
// hold.
#include "identity.hpp"

namespace {

using fuzz::Held;
using fuzz::identity;
using fuzz::Identity;
using fuzz::Octets;
using fuzz::require;

enum Choice : std::uint8_t { detached = 1, with_anchor = 2, sign = 4, seal = 8 };

constexpr std::uint8_t kContent[] = "some content";
constexpr std::uint32_t kContentLength = sizeof kContent - 1;

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
    const std::uint32_t status = verify_PKCS7_Signers_ex(
        message, content, content != nullptr ? kContentLength : 0, identity().pool.get(),
        (choices & with_anchor) != 0 ? identity().store.get() : nullptr, &identity().settings, &made);
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

/// What an authority's list names is taken as a whole or not at all.
void import_list(const P7_CONTENT_INFO *message) {
    const Identity &ours = identity();
    const Held<free_TRUST_ANCHORS> anchors(new_TRUST_ANCHORS());
    const Held<free_X509_CERTIFICATES> pool(new_X509_CERTIFICATES());
    const std::uint32_t status =
        add_TRUST_ANCHORS_from_CTL_of_authority_ex(anchors.get(), message, ours.pool.get(), &ours.settings);
    require((status == 0) == (get_TRUST_ANCHORS_count(anchors.get()) > 0));
    const bool taken =
        add_CERTIFICATES_from_CTL_of_authority_ex(pool.get(), message, ours.pool.get(), &ours.settings) == 0;
    require(taken == (status == 0));
    require(get_X509_CERTIFICATES_count(pool.get()) == get_TRUST_ANCHORS_count(anchors.get()));
    add_CERTIFICATES_from_CTL(pool.get(), message);
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
    import_list(read.get());
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
    import_list(message.get());
    open(message.get(), false);
    for (const std::uint32_t mode : {0U, 8U})
        decrypt(message.get(), mode);
    if ((choices & sign) != 0) sign_and_verify(message.get(), choices);
    if ((choices & seal) != 0) seal_and_open(message.get(), choices);
    return 0;
}
