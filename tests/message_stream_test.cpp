// Signed messages in pieces: every way to write one, what is refused, and when content is given out.
#include <gtest/gtest.h>

#include "support/crypto_values.hpp"
#include "support/message_reader.hpp"
#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_P7_CONTENT_INFO>;
using Settings = SIGNED_MESSAGE_READER_SETTINGS;

constexpr std::uint8_t kAbc[] = {'a', 'b', 'c'};

/// Signed data without content with signers, each a key and the registry row of its digest.
Info message_of_signers(const std::vector<std::pair<unsigned, std::int32_t>> &signers,
                        std::uint32_t scheme = TLX_P7_RSA_PKCS1) {
    Info info(new_P7_CONTENT_INFO());
    EXPECT_EQ(set_PKCS7_Type(info.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U);
    for (const auto &[key, digest] : signers) {
        const Cert cert = signer_spec(key).make();
        EXPECT_NE(add_PKCS7_Signature_withEncryptedAlgorithm(info.get(), cert.get(), signing_key(key), digest,
                                                             scheme, nullptr),
                  nullptr);
        EXPECT_EQ(add_PKCS7_Certificate(info.get(), cert.get()), 0U);
    }
    return info;
}

/// "abc" signed by a key with SHA-256, with attributes or without.
Info signed_abc(unsigned key, bool attributes, bool detached = false) {
    Info info = message_of_signers({{key, TLX_OID_SHA256}});
    EXPECT_EQ(attributes ? sign_PKCS7_withAttributes(info.get(), kAbc, 3, detached ? 1 : 0, nullptr)
                         : sign_PKCS7(info.get(), kAbc, 3, 0),
              0U);
    return info;
}

Octets octets_of(const Info &info) {
    return encoding_of(info.get(), TLX_ENCODER(P7_CONTENT_INFO_to_Seq));
}

/// The certificates and the signerInfos of the message, which stand after its content.
std::string tail_of(unsigned key, bool attributes) {
    const Octets message = octets_of(signed_abc(key, attributes));
    const Octets content = {4, 3, 'a', 'b', 'c'};
    const auto found = std::search(message.begin(), message.end(), content.begin(), content.end());
    const Octets tail(found + 5, message.end());
    std::string text = "=" + hex_of(tail.data(), tail.size());
    std::erase(text, ' ');
    return text;
}

/// The octets of a row, in the notation of der_text.hpp with names for what all messages have.
Octets message_of(std::string text) {
    static const std::map<std::string, std::string> kNames = {
        {"$signed", "06:2A864886F70D010702"},
        {"$data", "06:2A864886F70D010701"},
        {"$before", "02:01 31{30{06:608648016503040201 05:}}"},
        {"$tail", tail_of(0, true)},
        {"$bare", tail_of(0, false)},
        {"$kcdsa", tail_of(kKcdsaKey, false)},
    };
    for (const auto &[name, octets] : kNames)
        for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name))
            text.replace(at, name.size(), octets);
    return der(text);
}

/// The text of a row with so many zeros for "$fill".
std::string filled_text(const Row &row) {
    std::string text = row[1];
    return text.replace(text.find("$fill"), 5, std::string(std::size_t{2} * row.number(2), '0'));
}

/// The status and the content that was given out, the same for all pieces.
std::string read(const Octets &message, const Octets *content, std::uint32_t held_limit) {
    std::string first;
    for (const std::size_t piece : {1U, 2U, 5U, 64U, 100000U}) {
        Octets given;
        Settings settings = {};
        settings.unverified_output = collect_octets;
        settings.context = &given;
        settings.held_limit = held_limit;
        const std::uint32_t status = read_in_pieces(settings, message, piece, content);
        const std::string result = status_text(status) + " " + std::string(given.begin(), given.end());
        if (first.empty()) first = result;
        if (result != first) return first + " but " + result;
    }
    return first;
}

/// Keys, digest, scheme, whether without attributes, form, octets of content, those that are told, octets of
/// a piece: the status, and of a message that was written that of the reader, whether it is DER, and its most
/// segments.
std::string write(const Row &row) {
    std::vector<std::pair<unsigned, std::int32_t>> signers;
    for (const char key : row[1])
        signers.emplace_back(static_cast<unsigned>(key - '0'), static_cast<std::int32_t>(row.number(2)));
    const Info info = message_of_signers(signers, row.number(3));
    Octets content(row.number(6));
    for (std::size_t i = 0; i < content.size(); ++i)
        content[i] = static_cast<std::uint8_t>(i * i >> 8);
    Octets written;
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    settings.output = collect_octets;
    settings.context = &written;
    settings.message = info.get();
    settings.bare = row.number(4);
    settings.form = row.number(5);
    settings.size = row.number(7);
    const std::uint32_t status = write_in_pieces(settings, content, row.number(8));
    if (status != 0) return status_text(status);
    const bool detached = settings.form == TLX_MESSAGE_DETACHED;
    Octets given;
    Settings reading = {};
    reading.unverified_output = collect_octets;
    reading.context = &given;
    const std::uint32_t read = read_in_pieces(reading, written, 999, detached ? &content : nullptr);
    P7_CONTENT_INFO *made = nullptr;
    EXPECT_EQ(TLX_READ_DER(P7_CONTENT_INFO, &made, written.data(), length(written)), 0U);
    const Info again(made);
    EXPECT_EQ(given, content);
    EXPECT_EQ(verify_PKCS7_Signers(made, detached ? content.data() : nullptr, detached ? length(content) : 0,
                                   nullptr, nullptr, nullptr, nullptr),
              read);
    const bool is_der = octets_of(again) == written;
    const Octets segment = {4, 0x83, 1, 0, 0};
    std::size_t segments = 0;
    for (auto at = written.begin();
         (at = std::search(at, written.end(), segment.begin(), segment.end())) != written.end(); ++at)
        ++segments;
    return status_text(read) + (is_der ? " der" : " ber " + std::to_string(segments));
}

std::uint32_t read_pem(const std::string &text, std::size_t piece, Octets &octets, std::string &label) {
    const Held<free_PEM_READER> reader(new_PEM_READER(collect_octets, &octets));
    if (reader == nullptr) return 1;
    const std::uint32_t status =
        in_pieces({text.begin(), text.end()}, piece, [&](const std::uint8_t *part, std::uint32_t len) {
            return update_PEM_READER(reader.get(), reinterpret_cast<const char *>(part), len);
        });
    label = get_PEM_READER_label(reader.get());
    return status != 0 ? status : final_PEM_READER(reader.get());
}

/// The status, the label and the octets, the same for all pieces.
std::string pem(const Row &row) {
    std::string first;
    for (const std::size_t piece : {1U, 3U, 64U, 100000U}) {
        Octets octets;
        std::string label;
        const std::uint32_t status = read_pem(row[1], piece, octets, label);
        const std::string result =
            status_text(status) + " " + label + " " + hex_of(octets.data(), octets.size());
        if (first.empty()) first = result;
        if (result != first) return first + " but " + result;
    }
    return first;
}

std::uint32_t write_pem(const Octets &content, std::size_t piece, Octets &text) {
    const Held<free_PEM_WRITER> writer(new_PEM_WRITER("PKCS7", collect_octets, &text));
    if (writer == nullptr) return 0x5287003C;
    const std::uint32_t status = in_pieces(content, piece, [&](const std::uint8_t *part, std::uint32_t len) {
        return update_PEM_WRITER(writer.get(), part, len);
    });
    return status != 0 ? status : final_PEM_WRITER(writer.get());
}

/// So many octets in pieces of so many give the text of encode_PEM(), which reads back.
std::string round_trip(const Row &row) {
    const Octets content(row.number(1), 0xA5);
    Octets text;
    Octets again;
    std::string label;
    const std::uint32_t status = write_pem(content, row.number(2), text);
    const std::string written(text.begin(), text.end());
    char *expected = nullptr;
    const std::uint32_t size = encode_PEM(content.data(), length(content), "PKCS7", 5, &expected, 1);
    const Held<tlx_free> owner(static_cast<void *>(expected));
    const bool same =
        written == (size == 0 ? "-----BEGIN PKCS7-----\n-----END PKCS7-----\n" : std::string(expected, size));
    const bool reads = read_pem(written, row.number(2) + 1, again, label) == 0 && again == content;
    return status_text(status) + (same ? " same" : " other") + (reads ? " reads" : " fails");
}

TEST(MessageStream, Rows) {
    make_signing_keys();
    const auto whole = [](const Row &row) { return read(message_of(row[1]), nullptr, 0); };
    const auto detached = [](const Row &row) {
        const Octets content(row[2].begin(), row[2].end());
        return read(message_of(row[1]), &content, 0);
    };
    const auto limited = [](const Row &row) { return read(message_of(row[1]), nullptr, row.number(2)); };
    const auto filled = [](const Row &row) { return read(message_of(filled_text(row)), nullptr, 0); };
    expect_rows("message_stream.txt", {{"read", {whole}},
                                       {"filled", {filled}},
                                       {"detached", {detached}},
                                       {"limited", {limited}},
                                       {"write", {write}},
                                       {"pem", {pem}},
                                       {"round-trip", {round_trip}}});
}

class MessageReading : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        make_signing_keys();
        (void)signed_abc(0, true);
    }
    LeakCheck leaks_;
};

TEST_F(MessageReading, TruncatedMessagesAreNotComplete) {
    const Octets message = octets_of(signed_abc(0, true));
    for (std::size_t size = 0; size < message.size(); ++size) {
        const Octets part(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_EQ(read_in_pieces({}, part, part.size() + 1), 0x5282004FU) << size;
    }
}

std::uint32_t stop(void * /*context*/, const std::uint8_t * /*octets*/, std::uint32_t /*len*/) {
    return 77;
}

TEST_F(MessageReading, ContentIsHeldBackUntilItIsVerified) {
    Octets message = octets_of(signed_abc(0, true));
    Octets given;
    Settings settings = {};
    settings.output = collect_octets;
    settings.context = &given;
    const MessageReader reader(new_SIGNED_MESSAGE_READER(&settings));
    EXPECT_EQ(update_SIGNED_MESSAGE_READER(reader.get(), message.data(), length(message)), 0U);
    EXPECT_EQ(is_SIGNED_MESSAGE_READER_complete(reader.get()), 1U);
    EXPECT_EQ(is_SIGNED_MESSAGE_READER_detached(reader.get()), 0U);
    EXPECT_EQ(update_SIGNED_MESSAGE_READER_content(reader.get(), kAbc, 3), 0x5281001CU);
    EXPECT_TRUE(given.empty());
    EXPECT_EQ(final_SIGNED_MESSAGE_READER(reader.get(), nullptr), 0U);
    EXPECT_EQ(given, Octets({'a', 'b', 'c'}));
    EXPECT_EQ(final_SIGNED_MESSAGE_READER(reader.get(), nullptr), 0x5282001CU);

    settings.output = stop;
    EXPECT_EQ(read_in_pieces(settings, message, 9), 77U);
    settings.held_back_limit = 2;
    EXPECT_EQ(read_in_pieces(settings, message, 9), 0x52810047U);
    settings.output = collect_octets;
    settings.held_back_limit = 3;
    given.clear();
    message.back() ^= 1;
    EXPECT_EQ(read_in_pieces(settings, message, 9), 0x4B300054U);
    EXPECT_TRUE(given.empty());
    settings.output = nullptr;
    settings.unverified_output = stop;
    EXPECT_EQ(read_in_pieces(settings, message, 9), 77U);
}

TEST_F(MessageReading, RefusesArguments) {
    Settings settings = {};
    EXPECT_EQ(new_SIGNED_MESSAGE_READER(nullptr), nullptr);
    settings.held_back_limit = TLX_MESSAGE_HELD_BACK_LIMIT + 1;
    EXPECT_EQ(new_SIGNED_MESSAGE_READER(&settings), nullptr);
    settings.held_back_limit = 0;
    settings.output = settings.unverified_output = stop;
    EXPECT_EQ(new_SIGNED_MESSAGE_READER(&settings), nullptr);
    const MessageReader reader(new_SIGNED_MESSAGE_READER(&(settings = {})));
    expect_refuses_null(0x52800049, update_SIGNED_MESSAGE_READER, reader.get(), kAbc, 3);
    expect_refuses_null(0x52810049, update_SIGNED_MESSAGE_READER_content, reader.get(), kAbc, 3);
    EXPECT_EQ(update_SIGNED_MESSAGE_READER_content(reader.get(), kAbc, 3), 0x5281002BU);
    EXPECT_EQ(final_SIGNED_MESSAGE_READER(nullptr, nullptr), 0x52820049U);
    EXPECT_EQ(update_SIGNED_MESSAGE_READER(reader.get(), nullptr, 0), 0U);
    EXPECT_EQ(final_SIGNED_MESSAGE_READER(reader.get(), nullptr), 0x5282004FU);
}

TEST_F(MessageReading, WritingRefusesArguments) {
    const Info info = message_of_signers({{0, TLX_OID_SHA256}});
    const Info content(gen_PKCS7_DATA_from_Binary(kAbc, 3));
    Octets written;
    SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
    EXPECT_EQ(new_SIGNED_MESSAGE_WRITER(nullptr), nullptr);
    EXPECT_EQ(new_SIGNED_MESSAGE_WRITER(&settings), nullptr);
    settings.output = collect_octets;
    EXPECT_EQ(new_SIGNED_MESSAGE_WRITER(&settings), nullptr);
    settings.context = &written;
    settings.message = content.get();
    EXPECT_EQ(write_in_pieces(settings, {}, 1), 0x52830048U);
    settings.message = info.get();
    settings.form = 3;
    EXPECT_EQ(new_SIGNED_MESSAGE_WRITER(&settings), nullptr);
    settings.form = TLX_MESSAGE_DER;
    settings.size = std::uint64_t{1} << 62;
    EXPECT_EQ(new_SIGNED_MESSAGE_WRITER(&settings), nullptr);
    settings.form = TLX_MESSAGE_INDEFINITE;
    settings.size = 0;
    const Held<free_SIGNED_MESSAGE_WRITER> writer(new_SIGNED_MESSAGE_WRITER(&settings));
    expect_refuses_null(0x52830049, update_SIGNED_MESSAGE_WRITER, writer.get(), kAbc, 3);
    EXPECT_EQ(final_SIGNED_MESSAGE_WRITER(nullptr), 0x52840049U);
    EXPECT_EQ(update_SIGNED_MESSAGE_WRITER(writer.get(), nullptr, 0), 0U);
    EXPECT_EQ(final_SIGNED_MESSAGE_WRITER(writer.get()), 0U);
    EXPECT_EQ(final_SIGNED_MESSAGE_WRITER(writer.get()), 0x5284002BU);
    settings.output = stop;
    EXPECT_EQ(write_in_pieces(settings, {1}, 1), 77U);
    EXPECT_EQ(set_P7_version(info.get(), 0), 0U);
    EXPECT_EQ(write_in_pieces(settings, {}, 1), 0x52830048U);
    EXPECT_EQ(set_PKCS7_Content(info.get(), content.get()), 0U);
    settings.bare = 1;
    EXPECT_EQ(write_in_pieces(settings, {}, 1), 0x52830048U);
}

TEST_F(MessageReading, WritingSurvivesAnyAllocation) {
    const Info info = message_of_signers({{0, TLX_OID_SHA256}, {kKcdsaKey, TLX_OID_SHA256}});
    const Statuses no_memory = {0x5283003C, 0x5284003C, 0x4B1C003B, 0x4B31003C, 0x4B1C005F, 0x4B190012, 1};
    for (const std::uint32_t form : {TLX_MESSAGE_INDEFINITE, TLX_MESSAGE_DER, TLX_MESSAGE_DETACHED}) {
        Octets written;
        SIGNED_MESSAGE_WRITER_SETTINGS settings = {};
        settings.output = collect_octets;
        settings.context = &written;
        settings.message = info.get();
        settings.form = form;
        settings.size = 3;
        for (settings.bare = 0; settings.bare < 2; ++settings.bare)
            sweep_statuses(no_memory, [&] { return write_in_pieces(settings, {'a', 'b', 'c'}, 2); });
    }
}

TEST_F(MessageReading, PemRefusesArguments) {
    Octets out;
    for (const char *label : {"", "A\nB"})
        EXPECT_EQ(new_PEM_WRITER(label, collect_octets, &out), nullptr);
    EXPECT_EQ(new_PEM_WRITER(std::string(65, 'A').c_str(), collect_octets, &out), nullptr);
    EXPECT_EQ(new_PEM_WRITER("A", nullptr, &out), nullptr);
    EXPECT_EQ(new_PEM_READER(nullptr, &out), nullptr);
    EXPECT_EQ(get_PEM_READER_label(nullptr), nullptr);
    const Held<free_PEM_READER> reader(new_PEM_READER(stop, nullptr));
    const Held<free_PEM_WRITER> writer(new_PEM_WRITER("A", stop, nullptr));
    const std::string text = "-----BEGIN A-----\nYWJj\n-----END A-----";
    expect_refuses_null(0x52850049, update_PEM_READER, reader.get(), text.c_str(), 3);
    expect_refuses_null(0x52870049, update_PEM_WRITER, writer.get(), kAbc, 3);
    EXPECT_EQ(final_PEM_READER(nullptr), 0x52860049U);
    EXPECT_EQ(final_PEM_WRITER(nullptr), 0x52880049U);
    EXPECT_EQ(update_PEM_READER(reader.get(), text.c_str(), static_cast<std::uint32_t>(text.size())), 77U);
    EXPECT_EQ(final_PEM_WRITER(writer.get()), 77U);
    EXPECT_EQ(final_PEM_WRITER(writer.get()), 0x5288002BU);
    sweep_statuses({0x5287003C}, [&] { return write_pem(Octets(7000), 5000, out); });
}

/// A certificate with a new KCDSA key.
Cert other_kcdsa() {
    CertSpec spec = signer_spec(kKcdsaKey);
    spec.serial = "77";
    Cert cert = spec.make();
    const Held<free_KCDSA> unit(dup_KCDSA(static_cast<const KCDSA *>(signing_key(kKcdsaKey)->key)));
    EXPECT_EQ(gen_KCDSA_key(unit.get()), 0U);
    EXPECT_EQ(set_X509_PUBKEY_kcdsa(get_X509_SPKI(cert.get()), unit.get()), 0U);
    return cert;
}

/// What fails ends the message, and later operations return its status again.
TEST_F(MessageReading, FailuresEndMessages) {
    const Octets message = octets_of(signed_abc(0, true));
    const Settings settings = {};
    const MessageReader reader(new_SIGNED_MESSAGE_READER(&settings));
    EXPECT_EQ(update_SIGNED_MESSAGE_READER(reader.get(), kAbc, 2), 0x52800048U);
    EXPECT_EQ(update_SIGNED_MESSAGE_READER(reader.get(), message.data(), length(message)), 0x52800048U);
    EXPECT_EQ(update_SIGNED_MESSAGE_READER_content(reader.get(), kAbc, 1), 0x52800048U);
    EXPECT_EQ(final_SIGNED_MESSAGE_READER(reader.get(), nullptr), 0x52800048U);
    const Info info = message_of_signers({{0, TLX_OID_SHA256}});
    SIGNED_MESSAGE_WRITER_SETTINGS writing = {};
    writing.output = stop;
    writing.message = info.get();
    const Held<free_SIGNED_MESSAGE_WRITER> writer(new_SIGNED_MESSAGE_WRITER(&writing));
    EXPECT_EQ(update_SIGNED_MESSAGE_WRITER(writer.get(), kAbc, 1), 77U);
    EXPECT_EQ(update_SIGNED_MESSAGE_WRITER(writer.get(), kAbc, 1), 77U);
    EXPECT_EQ(final_SIGNED_MESSAGE_WRITER(writer.get()), 77U);
    EXPECT_EQ(final_SIGNED_MESSAGE_WRITER(writer.get()), 77U);
}

/// Without attributes, content that is no longer there verifies by its digest. That of KCDSA takes the key
/// beforehand, among the first 8 of the pool.
TEST_F(MessageReading, ContentThatIsGone) {
    const Cert right = signer_spec(kKcdsaKey).make();
    const Cert other = other_kcdsa();
    const Cert rsa = signer_spec(0).make();
    constexpr std::uint32_t kUnknown = 0x52820048;
    const std::vector<std::tuple<unsigned, std::vector<const X509_CERT *>, std::uint32_t>> cases = {
        {0U, {}, 0U},
        {kKcdsaKey, {}, kUnknown},
        {kKcdsaKey, {rsa.get(), other.get()}, kUnknown},
        {kKcdsaKey, {rsa.get(), right.get()}, 0U},
        {kKcdsaKey, {other.get(), right.get(), right.get()}, 0U},
        {kKcdsaKey, {std::vector<const X509_CERT *>(8, other.get())}, kUnknown}};
    for (auto [key, certificates, expected] : cases) {
        if (certificates.size() == 8) certificates.push_back(right.get());
        const Held<free_X509_CERTIFICATES> pool(new_X509_CERTIFICATES());
        for (const X509_CERT *cert : certificates)
            EXPECT_EQ(add_X509_CERTIFICATES(pool.get(), cert), 0U);
        Settings settings = {};
        settings.held_limit = 2000;
        settings.pool = pool.get();
        const Info info = message_of_signers({{key, TLX_OID_SHA256}});
        const Octets content(10000, 'x');
        EXPECT_EQ(sign_PKCS7(info.get(), content.data(), 10000, 0), 0U);
        Octets message = octets_of(info);
        EXPECT_EQ(read_in_pieces(settings, message, 1000), expected);
        settings.content_again = give_octets;
        for (Octets again : {content, Octets(10000, 'y')}) {
            settings.content_again_context = &again;
            EXPECT_EQ(read_in_pieces(settings, message, 1000), again == content ? 0 : expected);
            if (again == content && key == kKcdsaKey)
                sweep_statuses(kNoMemory, [&] { return read_in_pieces(settings, message, 5000); });
        }
        settings.content_again = nullptr;
        message[message.size() / 2] ^= 1;
        EXPECT_EQ(read_in_pieces(settings, message, 1000), expected == 0 ? 0x4B300054 : expected);
    }
}

/// Attributes that somebody signed are no content, also when they are too long to be kept.
TEST_F(MessageReading, SignedAttributesAsContent) {
    const Info info = signed_abc(0, true);
    P7_SIGNED_DATA &data = *info->content.signedData;
    P7_SIGNER_INFO &signer = *get_P7_SIGNER_INFOS_child(data.signerInfos, 0);
    const Octets set = encoding_of(signer.authenticatedAttributes, TLX_ENCODER(X509_ATTRIBUTES_to_Seq));
    const Info content(gen_PKCS7_DATA_from_Binary(set.data(), length(set)));
    EXPECT_EQ(set_PKCS7_Content(info.get(), content.get()), 0U);
    free_X509_ATTRIBUTES(std::exchange(signer.authenticatedAttributes, nullptr));
    free_X509_CERTIFICATES(std::exchange(data.certificates, nullptr));
    const Octets message = octets_of(info);
    const Cert cert = signer_spec(0).make();
    const Certificates pool = make({signer_spec(0)});
    Settings settings = {};
    settings.pool = pool.get();
    EXPECT_EQ(read_in_pieces(settings, message, 10), 0x4B30002BU);
    settings.unverified_output = [](void *, const std::uint8_t *, std::uint32_t) { return 0U; };
    settings.held_limit = length(message) - length(set);
    EXPECT_EQ(read_in_pieces(settings, message, 10), 0x4B30002BU);
}

TEST_F(MessageReading, AllocationsMayFail) {
    const Octets message = octets_of(signed_abc(0, true));
    sweep_statuses(kNoMemory, [&] {
        Octets given;
        Settings settings = {};
        settings.output = collect_octets;
        settings.context = &given;
        const std::uint32_t status = read_in_pieces(settings, message, 50);
        EXPECT_EQ(given.size(), status == 0 ? 3U : 0U);
        return status;
    });
}

/// 24 MB of content in segments take no more memory than 24 KB.
TEST_F(MessageReading, TakesConstantMemory) {
    const Octets head = message_of(
        "=3080 $signed =A080 =3080 02:01 31{30{06:608648016503040201 05:}} =3080 $data =A080 =2480");
    const Octets segment = der("04:" + std::string(2 * 4096, '0'));
    std::uint64_t peaks[2] = {};
    for (const std::size_t round : {0U, 1U}) {
        const std::uint64_t before = tlx_live_bytes();
        Settings settings = {};
        settings.held_limit = 20000;
        const MessageReader reader(new_SIGNED_MESSAGE_READER(&settings));
        EXPECT_EQ(update_SIGNED_MESSAGE_READER(reader.get(), head.data(), length(head)), 0U);
        for (int i = 0; i < (round == 0 ? 6 : 6000); ++i) {
            ASSERT_EQ(update_SIGNED_MESSAGE_READER(reader.get(), segment.data(), length(segment)), 0U);
            peaks[round] = std::max(peaks[round], tlx_live_bytes() - before);
        }
    }
    EXPECT_LE(peaks[1], peaks[0]);
}

}  // namespace
}  // namespace tlx_test
