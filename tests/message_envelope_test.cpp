// Encrypted, authenticated and digested messages in pieces: what is read and refused, and when content is
// given out.
#include <gtest/gtest.h>
#include <tlxpki/message_envelope.h>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/der_text.hpp"
#include "support/message_reader.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Settings = ENVELOPED_MESSAGE_READER_SETTINGS;
using Reader = Held<free_ENVELOPED_MESSAGE_READER>;

constexpr std::uint8_t kKey[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

/// The octets of a row, in the notation of der_text.hpp with names for what messages have. All content is
/// "abc", under the key above.
Octets message_of(std::string text) {
    static const std::pair<std::string, std::string> kNames[] = {
        {"$enveloped", "06:2A864886F70D010703"},
        {"$both", "06:2A864886F70D010704"},
        {"$digested", "06:2A864886F70D010705"},
        {"$encrypted", "06:2A864886F70D010706"},
        {"$authEnveloped", "06:2A864886F70D0109100117"},
        {"$authenticated", "06:2A864886F70D0109100102"},
        {"$data", "06:2A864886F70D010701"},
        {"$signed", "06:2A864886F70D010702"},
        {"$cbc", "30{06:60864801650304012A $iv}"},
        {"$aes", "30{06:608648016503040102 $iv}"},
        {"$gcm", "30{06:608648016503040106 30{04:202122232425262728292A2B 02:10}}"},
        {"$iv", "04:101112131415161718191A1B1C1D1E1F"},
        {"$sha256", "30{06:608648016503040201 05:}"},
        {"$hmac", "30{06:2A864886F70D0209 05:}"},
        {"$type", "30{06:2A864886F70D010903 31{06:2A864886F70D010701}}"},
        {"$other", "30{06:2A864886F70D010903 31{06:2A864886F70D010702}}"},
        {"$digest", "30{06:2A864886F70D010904 31{04:$abc}}"},
        {"$wrong", "30{06:2A864886F70D010904 31{04:$abd}}"},
        {"$abc", "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"},
        {"$abd", "A52D159F262B2C6DDB724A61840BEFC36EB30C88877A4030B65CBE86298449C9"},
        {"$code", "D601CC177559B0248459787F7E804ED7F27689B5995C59B661802D9682FDF8D2"},
        {"$cipher", "12502CB082A43C4B029BB67B4F00F5D7"},
    };
    for (const auto &[name, octets] : kNames)
        for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name))
            text.replace(at, name.size(), octets);
    return der(text);
}

std::uint32_t read_in_pieces(const Settings &settings, const Octets &message, std::size_t piece,
                             const Octets *content = nullptr) {
    const Reader reader(new_ENVELOPED_MESSAGE_READER(&settings));
    if (reader == nullptr) return 0x52A0003C;
    std::uint32_t status = in_pieces(message, piece, [&](const std::uint8_t *octets, std::uint32_t len) {
        return update_ENVELOPED_MESSAGE_READER(reader.get(), octets, len);
    });
    if (status == 0 && content != nullptr) {
        EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_detached(reader.get()), 1U);
        status = in_pieces(*content, piece, [&](const std::uint8_t *octets, std::uint32_t len) {
            return update_ENVELOPED_MESSAGE_READER_content(reader.get(), octets, len);
        });
    }
    const std::uint32_t last = final_ENVELOPED_MESSAGE_READER(reader.get());
    EXPECT_TRUE(status == 0 || last == status) << "the message is over";
    return last;
}

/// The status and the content that is given out piece by piece, the same for all pieces. Held back, the
/// content has the same status, and is given out whole or not at all.
std::string read(const Octets &message, std::uint32_t key_len, std::uint32_t held_limit,
                 const Octets *content) {
    std::string first;
    for (const std::size_t piece : {1U, 2U, 5U, 64U, 100000U}) {
        Octets given;
        Settings settings = {};
        settings.unverified_output = collect_octets;
        settings.context = &given;
        settings.held_limit = held_limit;
        settings.key = key_len > 0 ? kKey : nullptr;
        settings.key_len = key_len;
        const std::uint32_t status = read_in_pieces(settings, message, piece, content);
        const std::string result = status_text(status) + " " + std::string(given.begin(), given.end());
        if (first.empty()) first = result;
        if (result != first) return first + " but " + result;
        const Octets unverified = std::exchange(given, {});
        std::swap(settings.output, settings.unverified_output);
        if (read_in_pieces(settings, message, piece, content) != status) return first + " held otherwise";
        if (given != (status == 0 ? unverified : Octets())) return first + " but another content";
    }
    return first;
}

std::string type(const Row &row) {
    const Octets message = message_of(row[1]);
    std::uint32_t type = 99;
    const std::uint32_t status = get_MESSAGE_type(message.data(), length(message), &type);
    return status_text(status) + (status == 0 ? " " + std::to_string(type) : "");
}

std::uint32_t write_in_pieces(const ENVELOPED_MESSAGE_WRITER_SETTINGS &settings, const Octets &content,
                              std::size_t piece) {
    const Held<free_ENVELOPED_MESSAGE_WRITER> writer(new_ENVELOPED_MESSAGE_WRITER(&settings));
    if (writer == nullptr) return 0x52A3003C;
    const std::uint32_t status =
        in_pieces(content, piece, [&](const std::uint8_t *octets, std::uint32_t len) {
            return update_ENVELOPED_MESSAGE_WRITER(writer.get(), octets, len);
        });
    const std::uint32_t last = final_ENVELOPED_MESSAGE_WRITER(writer.get());
    EXPECT_TRUE(status == 0 || last == status) << "the message is over";
    return last;
}

/// A recipient with an RSA key, and what he opens with.
class Person {
  public:
    explicit Person(bool pkcs1_v15) : cert_(signer_spec(0).make()) {
        recipient_.certificate = holder_.certificate = cert_.get();
        recipient_.pkcs1_v15 = pkcs1_v15 ? 1 : 0;
        holder_.private_key = signing_key(0);
    }
    [[nodiscard]] const CMS_RECIPIENT_SETTINGS *recipient() const { return &recipient_; }
    [[nodiscard]] const CMS_KEY_HOLDER *holder() const { return &holder_; }

  private:
    Cert cert_;
    CMS_RECIPIENT_SETTINGS recipient_ = {};
    CMS_KEY_HOLDER holder_ = {};
};

/// Whether PKCS #7 opens a message, and writes it with the same octets in DER.
std::string as_pkcs7(const Octets &message, const Octets &content, const CMS_KEY_HOLDER &holder) {
    P7_CONTENT_INFO *made = nullptr;
    EXPECT_EQ(TLX_READ_DER(P7_CONTENT_INFO, &made, message.data(), length(message)), 0U);
    const Held<free_P7_CONTENT_INFO> info(made);
    std::uint8_t *opened = nullptr;
    std::uint32_t len = 0;
    EXPECT_EQ(open_PKCS7(made, holder.certificate, holder.private_key, &opened, &len), 0U);
    const Held<tlx_free> owner(static_cast<void *>(opened));
    EXPECT_EQ(Octets(opened, opened + len), content);
    return encoding_of(made, TLX_ENCODER(P7_CONTENT_INFO_to_Seq)) == message ? " der" : " ber";
}

/// Content type, algorithm, form, octets of content, those that are told, of a piece, and words: a "key" of
/// so many octets, "rsa" or "oaep" for a recipient, "attributes" that are authenticated, "signed" for the
/// type of the content. The status, whether the message has attributes, and how many segments are full.
std::string write(const Row &row) {
    const auto has = [&](const char *word) { return row[7].find(word) != std::string::npos; };
    const Person person(has("rsa"));
    const Held<free_X509_ATTRIBUTES> attributes(new_X509_ATTRIBUTES());
    const Held<free_ASN1_STRING> signed_data(index_to_OBJECT_IDENTIFIER(TLX_OID_PKCS7_SIGNED_DATA));
    Octets content(row.number(4));
    for (std::size_t i = 0; i < content.size(); ++i)
        content[i] = static_cast<std::uint8_t>(i * i >> 8);
    Octets written;
    ENVELOPED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &written;
    settings.type = row.number(1);
    settings.algorithm = row[2].c_str();
    settings.form = row.number(3);
    settings.size = row.number(5);
    settings.content_type = has("signed") ? signed_data.get() : nullptr;
    settings.attributes = has("attributes") ? attributes.get() : nullptr;
    settings.key = has("key") ? kKey : nullptr;
    settings.key_len = has("key") ? sizeof kKey : 0;
    settings.recipients = person.recipient();
    settings.recipient_count = has("rsa") || has("oaep") ? 1 : 0;
    const std::uint32_t status = write_in_pieces(settings, content, row.number(6));
    if (status != 0) return status_text(status);
    Octets given;
    Settings reading = {};
    reading.unverified_output = collect_octets;
    reading.context = &given;
    reading.holder = person.holder();
    reading.key = settings.key;
    reading.key_len = settings.key_len;
    const bool detached = settings.form == TLX_MESSAGE_DETACHED;
    const std::uint32_t read = read_in_pieces(reading, written, 999, detached ? &content : nullptr);
    EXPECT_EQ(given, content);
    const Octets segment = {4, 0x83, 1, 0, 0};
    std::size_t segments = 0;
    for (auto at = written.begin();
         (at = std::search(at, written.end(), segment.begin(), segment.end())) != written.end(); ++at)
        ++segments;
    CMS_CONTENT_INFO *made = nullptr;
    EXPECT_EQ(TLX_READ_DER(CMS_CONTENT_INFO, &made, written.data(), length(written)), 0U);
    const Held<free_CMS_CONTENT_INFO> owner(made);
    const bool is_der = encoding_of(made, TLX_ENCODER(CMS_CONTENT_INFO_to_Seq)) == written;
    const std::string form = settings.type == TLX_MESSAGE_ENVELOPED_DATA && has("rsa")
                                 ? as_pkcs7(written, content, *person.holder())
                                 : (is_der ? " der" : " ber");
    return status_text(read) + form + " " + std::to_string(segments);
}

Settings reading(Octets &given) {
    Settings settings = {};
    settings.output = collect_octets;
    settings.context = &given;
    settings.key = kKey;
    settings.key_len = sizeof kKey;
    return settings;
}

/// The status of a message that breaks off, which is the same after any octet and for all pieces.
std::string cut(const Row &row) {
    const Octets message = message_of(row[1]);
    for (std::size_t at = 0; at < message.size(); ++at) {
        const Octets part(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(at));
        for (const std::size_t piece : {std::size_t{1}, at + 1}) {
            Octets given;
            const std::uint32_t status = read_in_pieces(reading(given), part, piece);
            if (status != 0x52A2004F || !given.empty()) return status_text(status) + " " + std::to_string(at);
        }
    }
    return "52A2004F";
}

/// The octets that may change unseen. A change that is seen gives nothing out.
std::string altered(const Row &row) {
    const Octets message = message_of(row[1]);
    std::string unseen;
    for (std::size_t at = 0; at < message.size(); ++at) {
        Octets given;
        Octets changed = message;
        changed[at] ^= 1;
        const std::uint32_t status = read_in_pieces(reading(given), changed, 1000);
        if (status == 0) unseen += " " + std::to_string(at);
        EXPECT_TRUE(status == 0 || given.empty()) << at;
    }
    return trimmed(unseen);
}

TEST(MessageEnvelope, Rows) {
    make_signing_keys();
    const auto whole = [](const Row &row) { return read(message_of(row[1]), sizeof kKey, 0, nullptr); };
    const auto keyed = [](const Row &row) { return read(message_of(row[1]), row.number(2), 0, nullptr); };
    const auto limited = [](const Row &row) {
        return read(message_of(row[1]), sizeof kKey, row.number(2), nullptr);
    };
    const auto detached = [](const Row &row) {
        const Octets content = message_of(row[2]);
        return read(message_of(row[1]), sizeof kKey, 0, &content);
    };
    const auto filled = [](const Row &row) {
        std::string text = row[1];
        text.replace(text.find("$fill"), 5, std::string(std::size_t{2} * row.number(2), '0'));
        return read(message_of(text), sizeof kKey, 0, nullptr);
    };
    expect_rows("message_envelope.txt", {{"type", {type}},
                                         {"filled", {filled}},
                                         {"read", {whole}},
                                         {"keyed", {keyed}},
                                         {"limited", {limited}},
                                         {"detached", {detached}},
                                         {"cut", {cut}},
                                         {"altered", {altered}},
                                         {"write", {write}}});
}

/// A message with attributes, which are the longest way to authenticated content.
Octets authenticated_abc() {
    return message_of(
        "=3080 $authEnveloped =A080 =3080 02:00 31{} =3080 $data $gcm =A080 04:A197 04:71 =0000 =0000 "
        "A1{$type} 04:B0A1095C473DFE7F86B5308628818F0C =0000 =0000 =0000");
}

std::uint32_t stop(void * /*context*/, const std::uint8_t * /*octets*/, std::uint32_t /*len*/) {
    return 77;
}

TEST(MessageEnvelope, ContentIsHeldBack) {
    const Octets message = authenticated_abc();
    Octets given;
    Settings settings = reading(given);
    const Reader reader(new_ENVELOPED_MESSAGE_READER(&settings));
    EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_authenticated(reader.get()), 0U);
    EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_detached(reader.get()), 0U);
    EXPECT_EQ(get_ENVELOPED_MESSAGE_READER_content_type(reader.get()), nullptr);
    constexpr std::uint32_t kTypeEnd = 37;  // what follows it is the algorithm
    EXPECT_EQ(update_ENVELOPED_MESSAGE_READER(reader.get(), message.data(), kTypeEnd), 0U);
    EXPECT_EQ(get_ENVELOPED_MESSAGE_READER_content_type(reader.get()), nullptr);
    EXPECT_EQ(update_ENVELOPED_MESSAGE_READER(reader.get(), &message[kTypeEnd], length(message) - kTypeEnd),
              0U);
    EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_complete(reader.get()), 1U);
    EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_detached(reader.get()), 0U);
    EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_authenticated(reader.get()), 1U);
    EXPECT_EQ(get_ENVELOPED_MESSAGE_READER_type(reader.get()), TLX_MESSAGE_AUTH_ENVELOPED_DATA);
    const Held<free_ASN1_STRING> type(get_ENVELOPED_MESSAGE_READER_content_type(reader.get()));
    EXPECT_EQ(index_from_OBJECT_IDENTIFIER(type.get()), TLX_OID_PKCS7_DATA);
    EXPECT_EQ(update_ENVELOPED_MESSAGE_READER_content(reader.get(), kKey, 3), 0x52A1001CU);
    CMS_CONTENT_INFO *record = nullptr;
    EXPECT_EQ(get_ENVELOPED_MESSAGE_READER_message(reader.get(), &record), 0x5226002BU);
    EXPECT_TRUE(given.empty());
    EXPECT_EQ(final_ENVELOPED_MESSAGE_READER(reader.get()), 0U);
    EXPECT_EQ(given, Octets({'a', 'b', 'c'}));
    EXPECT_EQ(final_ENVELOPED_MESSAGE_READER(reader.get()), 0x52A2001CU);
    settings.held_back_limit = 3;
    EXPECT_EQ(read_in_pieces(settings, message, 1), 0U);
    settings.held_back_limit = 2;
    EXPECT_EQ(read_in_pieces(settings, message, 1), 0x52A10047U);
    settings.held_back_limit = 0;
    settings.output = stop;
    EXPECT_EQ(read_in_pieces(settings, message, 9), 77U);
    std::swap(settings.output, settings.unverified_output);
    EXPECT_EQ(read_in_pieces(settings, message, 9), 77U);
}

TEST(MessageEnvelope, RefusesArguments) {
    Octets given;
    Settings settings = reading(given);
    const std::uint8_t octet = 0;
    std::uint32_t type = 0;
    CMS_CONTENT_INFO *record = nullptr;
    EXPECT_EQ(new_ENVELOPED_MESSAGE_READER(nullptr), nullptr);
    settings.unverified_output = stop;
    EXPECT_EQ(new_ENVELOPED_MESSAGE_READER(&settings), nullptr);
    settings.unverified_output = nullptr;
    const Reader reader(new_ENVELOPED_MESSAGE_READER(&settings));
    settings.held_back_limit = TLX_MESSAGE_HELD_BACK_LIMIT + 1;
    EXPECT_EQ(new_ENVELOPED_MESSAGE_READER(&settings), nullptr);
    expect_refuses_null(0x52A00049, update_ENVELOPED_MESSAGE_READER, reader.get(), &octet, 1);
    expect_refuses_null(0x52A10049, update_ENVELOPED_MESSAGE_READER_content, reader.get(), &octet, 1);
    expect_refuses_null(0x52A50049, get_MESSAGE_type, &octet, 1, &type);
    EXPECT_EQ(update_ENVELOPED_MESSAGE_READER_content(reader.get(), &octet, 1), 0x52A1002BU);
    expect_refuses_null(0x52A60049, get_ENVELOPED_MESSAGE_READER_message, reader.get(), &record);
    EXPECT_EQ(get_ENVELOPED_MESSAGE_READER_message(reader.get(), &record), 0x52A6002BU);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_READER(nullptr), 0x52A20049U);
    EXPECT_EQ(get_ENVELOPED_MESSAGE_READER_type(nullptr), TLX_MESSAGE_OTHER);
    EXPECT_EQ(get_ENVELOPED_MESSAGE_READER_content_type(nullptr), nullptr);
    EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_authenticated(nullptr), 0U);
    EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_complete(nullptr), 0U);
    EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_detached(nullptr), 0U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_READER(reader.get()), 0x52A2004FU);
}

TEST(MessageEnvelope, AllocationsMayFail) {
    for (const Octets &message :
         {authenticated_abc(), message_of("30{$encrypted A0{30{02:00 30{$data $aes 80:$cipher}}}}"),
          message_of("30{$authenticated A0{30{02:00 31{} $hmac 30{$data A0{04:616263}} 04:$code}}}"),
          message_of("30{$digested A0{30{02:00 $sha256 30{$data A0{04:616263}} 04:$abc}}}")}) {
        sweep_failing_allocations([&] {
            Octets given;
            const std::uint32_t status = read_in_pieces(reading(given), message, 50);
            const Statuses no_memory = {0x52A0003C, 0x52A00104, 0x52A2003C, 0x52A2005E};
            EXPECT_TRUE(status == 0 || no_memory.contains(status)) << status_text(status);
            EXPECT_EQ(given.size(), status == 0 ? 3U : 0U);
            return status == 0;
        });
    }
}

/// The octets of an element, which may be long.
Octets element(std::uint8_t tag, const Octets &contents) {
    const std::size_t size = contents.size();
    Octets all = {tag, 0x83, static_cast<std::uint8_t>(size >> 16), static_cast<std::uint8_t>(size >> 8),
                  static_cast<std::uint8_t>(size)};
    all.insert(all.end(), contents.begin(), contents.end());
    return all;
}

/// Elements one after the other, of which one is repeated up to a size.
Octets repeated(const std::string &text, std::size_t size, const Octets &before = {}) {
    const Octets one = message_of(text);
    Octets all = before;
    while (all.size() + one.size() <= size)
        all.insert(all.end(), one.begin(), one.end());
    return all;
}

Octets joined(const std::vector<Octets> &parts) {
    Octets all;
    for (const Octets &part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// The most octets that are allocated while a message is read whose members before and after the content are
/// given, with as much content as is held back.
std::uint64_t peak_of(const Octets &recipients, const Octets &after) {
    Octets message = message_of("=3080 $authEnveloped =A080 =3080 02:00");
    const auto append = [&](const Octets &octets) {
        message.insert(message.end(), octets.begin(), octets.end());
    };
    append(element(0x31, recipients));
    append(message_of("=3080 $data $gcm =A080"));
    append(element(4, Octets(TLX_MESSAGE_HELD_BACK_LIMIT)));
    append(message_of("=0000 =0000"));
    append(after);
    append(message_of("04:00 =0000 =0000 =0000"));
    const std::uint8_t kek[16] = {};
    CMS_KEY_HOLDER holder = {};
    holder.private_key = signing_key(0);
    holder.kek = holder.password = kek;
    holder.kek_len = holder.password_len = sizeof kek;
    Octets given;
    Settings settings = reading(given);
    settings.key = nullptr;
    settings.holder = &holder;
    return peak_of_live_bytes([&] { EXPECT_EQ(read_in_pieces(settings, message, 10000), 0x52A20012U); });
}

/// As many members as the default limit allows make no records of many times their size.
TEST(MessageEnvelope, MembersTakeLittleMemory) {
    make_signing_keys();
    constexpr std::size_t kHeld = 520000;
    constexpr std::size_t kRecipient = 32000;
    constexpr std::uint64_t kMost = 2 << 20;
    // A key that does not open, so that the content is decrypted under a random one.
    const Octets kek = message_of(
        "A2{02:04 30{04:00} 30{06:608648016503040105} 04:000102030405060708090A0B0C0D0E0F1011121314151617}");
    // Long names before the keys of an agreement and in each of these.
    const Octets name = element(0x30, repeated("31{30{06:2A 05:}}", kRecipient / 2));
    const Octets issuer = element(0x30, joined({name, message_of("02:01")}));
    const Octets key = element(0x30, joined({issuer, message_of("04:")}));
    const Octets agreement = joined({message_of("02:03"), element(0xA0, issuer), message_of("30{06:2A03}"),
                                     element(0x30, joined(std::vector(25, key)))});
    const Octets recipients = joined({kek, element(0xA1, agreement), element(0xA4, Octets(2 * kRecipient))});
    EXPECT_LT(peak_of(recipients, {}), kMost);
    const std::string other =
        "A2{02:04 30{04:" + std::string(300, '0') + "} 30{06:608648016503040105} 04:00}";
    EXPECT_LT(peak_of(repeated(other, kHeld, kek), {}), kMost);
    EXPECT_LT(peak_of(kek, element(0xA1, repeated("30{06:2A 31{05:}}", kHeld))), kMost);
}

TEST(MessageEnvelope, WritingRefusesArguments) {
    Octets written;
    ENVELOPED_MESSAGE_WRITER_SETTINGS settings = {};
    EXPECT_EQ(new_ENVELOPED_MESSAGE_WRITER(nullptr), nullptr);
    settings.output = collect_octets;
    settings.context = &written;
    settings.type = TLX_MESSAGE_DIGESTED_DATA;
    EXPECT_EQ(new_ENVELOPED_MESSAGE_WRITER(&settings), nullptr);
    settings.algorithm = "sha256";
    for (const std::uint32_t type : {TLX_MESSAGE_OTHER, TLX_MESSAGE_DATA, TLX_MESSAGE_SIGNED_DATA}) {
        settings.type = type;
        EXPECT_EQ(new_ENVELOPED_MESSAGE_WRITER(&settings), nullptr);
    }
    settings.form = TLX_MESSAGE_DETACHED;
    for (const std::uint32_t type :
         {TLX_MESSAGE_ENVELOPED_DATA, TLX_MESSAGE_ENCRYPTED_DATA, TLX_MESSAGE_AUTH_ENVELOPED_DATA}) {
        settings.type = type;
        EXPECT_EQ(new_ENVELOPED_MESSAGE_WRITER(&settings), nullptr);
    }
    settings.type = TLX_MESSAGE_DIGESTED_DATA;
    settings.form = TLX_MESSAGE_DETACHED + 1;
    EXPECT_EQ(new_ENVELOPED_MESSAGE_WRITER(&settings), nullptr);
    settings.form = TLX_MESSAGE_DER;
    settings.size = std::uint64_t{1} << 62;
    EXPECT_EQ(new_ENVELOPED_MESSAGE_WRITER(&settings), nullptr);
    settings.form = TLX_MESSAGE_INDEFINITE;
    settings.size = 0;
    const Held<free_ENVELOPED_MESSAGE_WRITER> writer(new_ENVELOPED_MESSAGE_WRITER(&settings));
    expect_refuses_null(0x52A30049, update_ENVELOPED_MESSAGE_WRITER, writer.get(), kKey, 3);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(nullptr), 0x52A40049U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(writer.get()), 0U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(writer.get()), 0x52A4002BU);
    settings.output = stop;
    EXPECT_EQ(write_in_pieces(settings, {1}, 1), 77U);
    EXPECT_STREQ(get_MESSAGE_cipher_name(0), get_PKCS7_cipher_name(0));
    EXPECT_STREQ(get_MESSAGE_cipher_name(13), "aes-256-gcm");
    EXPECT_EQ(get_MESSAGE_cipher_name(19), nullptr);
}

/// What fails ends the message, and later operations return its status again.
TEST(MessageEnvelope, FailuresEndMessages) {
    Octets given;
    const Settings settings = reading(given);
    const Octets message = authenticated_abc();
    const Reader reader(new_ENVELOPED_MESSAGE_READER(&settings));
    EXPECT_EQ(update_ENVELOPED_MESSAGE_READER(reader.get(), kKey, 2), 0x52A0004FU);
    EXPECT_EQ(update_ENVELOPED_MESSAGE_READER(reader.get(), message.data(), length(message)), 0x52A0004FU);
    EXPECT_EQ(update_ENVELOPED_MESSAGE_READER_content(reader.get(), kKey, 1), 0x52A0004FU);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_READER(reader.get()), 0x52A0004FU);
    EXPECT_EQ(is_ENVELOPED_MESSAGE_READER_complete(reader.get()), 0U);
    ENVELOPED_MESSAGE_WRITER_SETTINGS writing = {};
    writing.output = stop;
    writing.type = TLX_MESSAGE_DIGESTED_DATA;
    writing.algorithm = "sha256";
    const Held<free_ENVELOPED_MESSAGE_WRITER> writer(new_ENVELOPED_MESSAGE_WRITER(&writing));
    EXPECT_EQ(update_ENVELOPED_MESSAGE_WRITER(writer.get(), kKey, 1), 77U);
    EXPECT_EQ(update_ENVELOPED_MESSAGE_WRITER(writer.get(), kKey, 1), 77U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(writer.get()), 77U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(writer.get()), 77U);
}

/// In Galois/Counter Mode the size that is told beforehand is checked, before anything is encrypted.
TEST(MessageEnvelope, SizeOfCounterMode) {
    for (const auto &[size, expected] : {std::pair(std::uint64_t{TLX_AEAD_MAX_MESSAGE_LENGTH}, 0U),
                                         {TLX_AEAD_MAX_MESSAGE_LENGTH + 1, 0x52A3001CU}}) {
        Octets written;
        CMS_RECIPIENT_SETTINGS recipient = {};
        recipient.kek = recipient.kek_id = kKey;
        recipient.kek_len = recipient.kek_id_len = sizeof kKey;
        ENVELOPED_MESSAGE_WRITER_SETTINGS settings = {};
        settings.output = collect_octets;
        settings.context = &written;
        settings.type = TLX_MESSAGE_AUTH_ENVELOPED_DATA;
        settings.algorithm = "aes-128-gcm";
        settings.form = TLX_MESSAGE_DER;
        settings.size = size;
        settings.recipients = &recipient;
        settings.recipient_count = 1;
        const Held<free_ENVELOPED_MESSAGE_WRITER> writer(new_ENVELOPED_MESSAGE_WRITER(&settings));
        EXPECT_EQ(update_ENVELOPED_MESSAGE_WRITER(writer.get(), kKey, 1), expected);
        EXPECT_EQ(written.empty(), expected != 0);
    }
}

TEST(MessageEnvelope, WritingSurvivesAnyAllocation) {
    make_signing_keys();
    const Person person(true);
    const Held<free_X509_ATTRIBUTES> attributes(new_X509_ATTRIBUTES());
    for (const auto &[type, algorithm] : {std::pair(TLX_MESSAGE_ENVELOPED_DATA, "aes-128-cbc"),
                                          {TLX_MESSAGE_AUTH_ENVELOPED_DATA, "aria-256-gcm"},
                                          {TLX_MESSAGE_AUTHENTICATED_DATA, "sha256"},
                                          {TLX_MESSAGE_DIGESTED_DATA, "sha512"}}) {
        Octets written;
        ENVELOPED_MESSAGE_WRITER_SETTINGS settings = {};
        settings.output = collect_octets;
        settings.context = &written;
        settings.type = static_cast<std::uint32_t>(type);
        settings.algorithm = algorithm;
        settings.attributes = attributes.get();
        settings.recipients = person.recipient();
        settings.recipient_count = 1;
        sweep_statuses({0x52A3003C, 0x52A4003C, 0x52A30048, 0x52B0003C, 0x52B00047}, [&] {
            return write_in_pieces(settings, {'a', 'b', 'c'}, 2);
        });
    }
}

/// PKCS #1 v1.5 gives a key also to somebody else, which decrypts to nothing.
TEST(MessageEnvelope, OthersDoNotOpen) {
    make_signing_keys();
    const Person person(true);
    for (const auto &[type, algorithm] : {std::pair(TLX_MESSAGE_ENVELOPED_DATA, "aes-128-cbc"),
                                          {TLX_MESSAGE_AUTH_ENVELOPED_DATA, "aria-256-gcm"}}) {
        Octets written;
        Octets given;
        ENVELOPED_MESSAGE_WRITER_SETTINGS settings = {};
        settings.output = collect_octets;
        settings.context = &written;
        settings.type = static_cast<std::uint32_t>(type);
        settings.algorithm = algorithm;
        settings.recipients = person.recipient();
        settings.recipient_count = 1;
        EXPECT_EQ(write_in_pieces(settings, Octets(100), 7), 0U);
        Settings reading = {};
        reading.output = collect_octets;
        reading.context = &given;
        EXPECT_EQ(read_in_pieces(reading, written, 9), 0x52A0002BU);
        CMS_KEY_HOLDER holder = {};
        reading.holder = &holder;
        EXPECT_EQ(read_in_pieces(reading, written, 9), 0x52A00047U);
        holder.private_key = signing_key(1);
        const std::uint32_t status = read_in_pieces(reading, written, 9);
        if (type == TLX_MESSAGE_ENVELOPED_DATA && status == 0) {
            EXPECT_NE(given, Octets(100)) << "a random key finds the padding right once in 256 times";
        } else {
            EXPECT_EQ(status, 0x52A20012U);
            EXPECT_TRUE(given.empty());
        }
    }
}

}  // namespace
}  // namespace tlx_test
