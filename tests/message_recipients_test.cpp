// Which recipient of a message opens it, among others that cannot be decoded, and among many.
#include <gtest/gtest.h>
#include <tlxcrypto/xdh.h>
#include <tlxpki/message_envelope.h>

#include "support/allocation.hpp"
#include "support/der_text.hpp"
#include "support/message_reader.hpp"
#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/x509_files.hpp"

namespace tlx_test {
namespace {

using Names = std::map<std::string, std::string>;

constexpr std::uint8_t kKey[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr std::uint8_t kKeyIdentifier[] = {'k', 'e', 'k'};

/// An element in the notation of der_text.hpp.
template <typename T, typename Encode>
std::string text_of(const T *record, Encode encode) {
    const Octets octets = encoding_of(record, encode);
    std::string text = hex_of(octets.data(), octets.size());
    std::erase(text, ' ');
    return "=" + text;
}

/// Somebody with a key of X25519, another of RSA and a key encryption key.
class Owner {
  public:
    Owner() {
        XDH_KEY *unit = nullptr;
        EXPECT_EQ(private_binary_to_XDH_KEY(TLX_CURVE_X25519, Octets(32, 0x42).data(), 32, &unit), 0U);
        const Held<free_XDH_KEY> owner(unit);
        EXPECT_EQ(set_ASYMMETRIC_KEY(key_.get(), TLX_KEY_XDH, unit), 0U);
        EXPECT_EQ(set_X509_PUBKEY_key(get_X509_SPKI(cert_.get()), key_.get()), 0U);
        holder_.certificate = cert_.get();
        holder_.private_key = key_.get();
        holder_.kek = kKey;
        holder_.kek_len = sizeof kKey;
        holder_.kek_id = kKeyIdentifier;
        holder_.kek_id_len = sizeof kKeyIdentifier;
        add_agreement("mine", false);
        add_agreement("mineById", true);
    }
    [[nodiscard]] const CMS_KEY_HOLDER *holder() const { return &holder_; }
    /// A text with octets in place of "$name".
    [[nodiscard]] std::string expand(std::string text) const {
        for (const auto &[name, octets] : names_)
            for (std::size_t at = text.find(name + ";"); at != std::string::npos; at = text.find(name + ";"))
                text.replace(at, name.size() + 1, octets);
        return text;
    }

  private:
    /// "$mine;" is a key in an agreement, "$mine-before;" what stands before the keys, "$mine-theirs;" the
    /// same key for somebody else.
    void add_agreement(const std::string &name, bool by_key_identifier) {
        CMS_RECIPIENT_SETTINGS settings = {};
        settings.certificate = cert_.get();
        settings.by_key_identifier = by_key_identifier ? 1 : 0;
        CMS_RECIPIENT_INFO *made = nullptr;
        EXPECT_EQ(make_CMS_RECIPIENT_INFO(&settings, kKey, sizeof kKey, &made), 0U);
        const Held<free_CMS_RECIPIENT_INFO> recipient(made);
        const CMS_KEY_AGREE_RECIPIENT &agreement = *made->value.kari;
        const CMS_RECIPIENT_ENCRYPTED_KEY *own =
            get_CMS_RECIPIENT_ENCRYPTED_KEYS_child(agreement.recipientEncryptedKeys, 0);
        names_["$" + name] = text_of(own, TLX_ENCODER(CMS_RECIPIENT_ENCRYPTED_KEY_to_Seq));
        names_["$" + name + "-before"] =
            "02:03 A0{" + text_of(agreement.originator, TLX_ENCODER(CMS_ORIGINATOR_to_Seq)) + "} " +
            text_of(agreement.keyEncryptionAlgorithm, TLX_ENCODER(X509_ALGO_IDENTIFIER_to_Seq));
        if (by_key_identifier) {
            own->rid->value.rKeyId->keyIdentifier->data[0] ^= 1;
        } else {
            EXPECT_EQ(set_BIGINT_word(own->rid->value.issuerAndSerialNumber->serialNumber, 99), 0U);
        }
        names_["$" + name + "-theirs"] = text_of(own, TLX_ENCODER(CMS_RECIPIENT_ENCRYPTED_KEY_to_Seq));
    }

    Cert cert_ = signer_spec(0).with("subjectKeyIdentifier", "04:" + std::string(40, '7')).make();
    Held<free_ASYMMETRIC_KEY> key_{new_ASYMMETRIC_KEY()};
    CMS_KEY_HOLDER holder_ = {};
    Names names_ = {
        {"$kek",
         "A2{02:04 30{04:6B656B} 30{06:608648016503040105} "
         "04:935A3EB101C34ADD025E170B46FF0DB23E5C2FAE8C8F8370}"},
        {"$wrong-kek",
         "A2{02:04 30{04:6B656B} 30{06:608648016503040105} "
         "04:935A3EB101C34ADD025E170B46FF0DB23E5C2FAE8C8F8371}"},
        {"$unknown-kek", "A2{02:04 30{04:6B656B} 30{06:2A03} 04:00}"},
        {"$other-kek", "A2{02:04 30{04:6B656C} 30{06:608648016503040105} 04:00}"},
    };
};

/// "abc" under the key above for recipients.
Octets message_for(const Owner &owner, const std::string &recipients) {
    return der(owner.expand(
        "30{06:2A864886F70D0109100117 A0{30{02:00 31{" + recipients +
        "} 30{06:2A864886F70D010701 30{06:608648016503040106 30{04:202122232425262728292A2B 02:10}} "
        "80:A19771} 04:726041CE38467A076C557B6D86AF07E6}}}"));
}

std::string read_as(const CMS_KEY_HOLDER *holder, const Octets &message) {
    Octets given;
    ENVELOPED_MESSAGE_READER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &given;
    settings.holder = holder;
    const Held<free_ENVELOPED_MESSAGE_READER> reader(new_ENVELOPED_MESSAGE_READER(&settings));
    if (reader == nullptr) return "no reader";
    std::uint32_t status = in_pieces(message, 1000, [&](const std::uint8_t *octets, std::uint32_t len) {
        return update_ENVELOPED_MESSAGE_READER(reader.get(), octets, len);
    });
    if (status == 0) status = final_ENVELOPED_MESSAGE_READER(reader.get());
    return status == 0 ? std::string(given.begin(), given.end()) : status_text(status);
}

TEST(MessageRecipients, Rows) {
    make_signing_keys();
    const Owner owner;
    CMS_KEY_HOLDER any = *owner.holder();
    any.certificate = nullptr;
    const auto opens = [&](const Row &row) { return read_as(owner.holder(), message_for(owner, row[1])); };
    const auto opens_any = [&](const Row &row) { return read_as(&any, message_for(owner, row[1])); };
    const std::set<std::string> no_memory = {"no reader", "52A0003C", "52A00104", "52A20012",
                                             "52A2003C",  "52A00047", "52B1003C", "52B10048"};
    expect_rows("message_recipients.txt", {{"opens", {opens, no_memory}}, {"opens any", {opens_any}}});
}

/// An agreement that is many times as long as other recipients may be.
TEST(MessageRecipients, LastOfManyKeysOpensInLittleMemory) {
    make_signing_keys();
    const Owner owner;
    constexpr std::uint64_t kMost = 2 << 20;
    for (const std::string name : {"$mine", "$mineById"}) {
        std::string keys;
        for (unsigned i = 0; i < 800; ++i)
            keys += name + "-theirs; ";
        const Octets message = message_for(owner, "A1{" + name + "-before; 30{" + keys + " " + name + ";}}");
        EXPECT_GT(message.size(), 40000U);
        const std::uint64_t peak =
            peak_of_live_bytes([&] { EXPECT_EQ(read_as(owner.holder(), message), "abc") << name; });
        EXPECT_LT(peak, kMost) << name;
    }
}

}  // namespace
}  // namespace tlx_test
