// Nodes and records to and from octets and files; digests of records.

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

constexpr std::uint32_t kNone = 0xFFFFFFFF;

/// A record to convert: SEQUENCE { INTEGER }. The converters fail with codes that a test can tell apart.
struct Sample {
    std::uint32_t value;
};

std::uint32_t Seq_to_SAMPLE(const ASN1_UNIT *node, Sample **out) {
    if (out == nullptr) return 0x7F010049;
    const Number number(static_cast<BIGINT *>(getDERChildAt(node, 0, 2)));
    if (number == nullptr) return 0x7F010104;
    (*out)->value = get_BIGINT_word(number.get());
    return 0;
}

std::uint32_t SAMPLE_to_Seq(const Sample *sample, ASN1_UNIT **out) {
    if (sample == nullptr) return 0x7F020049;
    *out = new_ASN1_UNIT();
    const Number number(new_BIGINT());
    const bool built = number != nullptr && set_BIGINT_word(number.get(), sample->value) == 0 &&
                       addToDERSequence(*out, 2, number.get(), get_BIGINT_der_length(number.get())) == 0;
    return built && sample->value != 0 ? 0 : 0x7F020103;  // a node may be left half built
}

const ASN1_DECODER kDecoder = TLX_DECODER(Seq_to_SAMPLE);
const ASN1_ENCODER kEncoder = TLX_ENCODER(SAMPLE_to_Seq);
const Sample kSample = {0x1234};
const Octets kDer = hex("30 04 02 02 12 34");

/// Reads into the caller's record, which has the sample's value afterwards exactly when the status is 0.
template <typename... Source>
std::string read(std::uint32_t (*reader)(void **, ASN1_DECODER, Source...), Source... source) {
    Sample sample = {1};
    void *out = &sample;
    const std::uint32_t status = reader(&out, kDecoder, source...);
    EXPECT_EQ(sample.value, status == 0 ? kSample.value : 1);
    EXPECT_EQ(out, &sample);
    return status_text(status);
}

/// A block of its own, so that a read past its end is seen.
std::string read_with_length(const Row &row) {
    const Octets octets = hex(row[1]);
    return read(readDER_from_Buffer, octets.data(), static_cast<std::uint32_t>(octets.size()));
}

/// The record of a row; null for none.
std::unique_ptr<Sample> given(const Row &row) {
    return row[1] == "none" ? nullptr : std::make_unique<Sample>(Sample{row.number(1)});
}

std::string write(const Row &row) {
    std::uint8_t unused = 0;
    std::uint8_t *out = &unused;
    const std::uint32_t size = writeDER_to_Binary(given(row).get(), kEncoder, &out);
    EXPECT_EQ(out == &unused, size == kNone) << "unchanged on failure";
    if (size == kNone) return status_text(size);
    const tlx::OwnedOctets<std::uint8_t> owner(out);
    return hex_of(out, size);
}

class Io : public LeakFreeTest {
  protected:
    const CommandFolder folder_;
    const std::string path_ = folder_.path("file");

    std::string file() const {
        const std::string text = folder_.read("file");
        return hex_of(reinterpret_cast<const std::uint8_t *>(text.data()), text.size());
    }
};

TEST_F(Io, Rows) {
    const auto read_without_length = [](const Row &row) {
        const Octets octets = hex(row[1]);
        return read(readDER_from_Binary, octets.data());
    };
    const auto write_file = [&](const Row &row) {
        const std::uint32_t size = writeDER_to_FILE(given(row).get(), kEncoder, path_.c_str());
        return size == kDer.size() ? file() : status_text(size);
    };
    const auto digest = [](const Row &row) {
        std::uint8_t octets[TLX_DIGEST_MAX_LENGTH];
        return std::to_string(get_ASN1_hash(given(row).get(), kEncoder, row.number(2), octets));
    };
    expect_rows("asn1_io.txt", {{"with length", {read_with_length, {"7F010104"}}},
                                {"without length", {read_without_length, {"7F010104"}}},
                                {"write", {write, {"FFFFFFFF"}}},
                                {"write file", {write_file, {"00000001", "FFFFFFFF"}}},
                                {"digest", {digest, {"0"}}}});
}

TEST_F(Io, Files) {
    for (const Row &row : read_rows("asn1_io.txt")) {
        if (row[0] != "with length") continue;
        const Octets octets = hex(row[1]);
        folder_.write("file", std::string(octets.begin(), octets.end()));
        EXPECT_EQ(read(readDER_from_File, path_.c_str()), row[2]) << row.place;
    }
    const Node node = node_of("30 00");
    EXPECT_EQ(ASN1_to_FILE(node.get(), path_.c_str()), 2U);
    EXPECT_EQ(file(), "30 00") << "the file is replaced";
    const std::string nowhere = folder_.path("no such folder/file");
    for (const char *bad : {nowhere.c_str(), static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(read(readDER_from_File, bad), "4300002B");
        EXPECT_EQ(writeDER_to_FILE(&kSample, kEncoder, bad), kNone);
        EXPECT_EQ(ASN1_to_FILE(node.get(), bad), kNone);
    }
    EXPECT_EQ(ASN1_to_FILE(new_node().get(), path_.c_str()), kNone);
#ifdef __linux__
    EXPECT_EQ(ASN1_to_FILE(node.get(), "/dev/full"), kNone) << "not all octets are written";
#endif
    EXPECT_EQ(writeDER_to_FILE(&kSample, kEncoder, path_.c_str()), kDer.size());
    const auto read_sample = [&] {
        const std::string status = read(readDER_from_File, path_.c_str());
        EXPECT_TRUE(status == "00000000" || status == "4300002B" || status == "7F010104") << status;
        return status == "00000000";
    };
    EXPECT_GT(sweep_failing_allocations(read_sample), 1U);
}

TEST_F(Io, NullsAndBrokenNodes) {
    std::uint8_t unused = 0;
    std::uint8_t *out = &unused;
    const Node broken = node_of("04 01 AA");
    for (const std::uint8_t length : Octets{0xFF, 0x80}) {  // too many octets, none at the end
        *broken->length = length;
        EXPECT_EQ(ASN1_to_binary(broken.get(), &out), kNone);
    }
    EXPECT_EQ(ASN1_to_binary(nullptr, &out), kNone);
    EXPECT_EQ(ASN1_to_binary(new_node().get(), &out), kNone);
    EXPECT_EQ(ASN1_to_binary(node_of("04 00").get(), nullptr), kNone);
    EXPECT_EQ(writeDER_to_Binary(&kSample, nullptr, &out), kNone);
    EXPECT_EQ(writeDER_to_Binary(&kSample, kEncoder, nullptr), kNone);
    EXPECT_EQ(writeDER_to_FILE(&kSample, nullptr, path_.c_str()), 1U);
    EXPECT_EQ(out, &unused) << "unchanged on failure";
    EXPECT_EQ(readDER_from_Buffer(nullptr, kDecoder, nullptr, 6), 0x4300002BU);
    EXPECT_EQ(readDER_from_Buffer(nullptr, nullptr, kDer.data(), 6), 0x43000049U);
    EXPECT_EQ(readDER_from_Buffer(nullptr, kDecoder, kDer.data(), 0), 0x4300004FU);
    EXPECT_EQ(readDER_from_Binary(nullptr, kDecoder, nullptr), 0x4300002BU);
    EXPECT_EQ(readDER_from_Binary(nullptr, nullptr, kDer.data()), 0x43000049U);
    EXPECT_EQ(readDER_from_Binary(nullptr, kDecoder, kDer.data()), 0x7F010049U);

    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH] = {};
    EXPECT_EQ(get_ASN1_hash(&kSample, kEncoder, TLX_DIGEST_SHA256, digest), 32U);
    EXPECT_EQ(Octets(digest, digest + 32), openssl::digest("SHA256", kDer));
    EXPECT_EQ(get_ASN1_hash(&kSample, nullptr, TLX_DIGEST_SHA1, digest), 0U);
    EXPECT_EQ(get_ASN1_hash(&kSample, kEncoder, TLX_DIGEST_SHA1, nullptr), 0U);
}

}  // namespace
