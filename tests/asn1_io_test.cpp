// Nodes and records to and from octets and files; digests of records.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <set>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"
#include "support/openssl_peer.hpp"

namespace tlx_test {
namespace {

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
const Sample kUnencodable = {0};
const Octets kDer = hex("30 04 02 02 12 34");

/// Reads into the caller's record; returns the status, which is 0 exactly when the record has the sample's
/// value.
template <typename... Source>
std::uint32_t read(std::uint32_t (*reader)(void **, ASN1_DECODER, Source...), Source... source) {
    Sample sample = {1};
    void *out = &sample;
    const std::uint32_t status = reader(&out, kDecoder, source...);
    EXPECT_EQ(sample.value, status == 0 ? kSample.value : 1);
    EXPECT_EQ(out, &sample);
    return status;
}

class Io : public ::testing::Test {
    LeakCheck leaks_;
};

TEST_F(Io, NodesThatCannotBeWritten) {
    std::uint8_t unused = 0;
    std::uint8_t *out = &unused;
    EXPECT_EQ(ASN1_to_binary(nullptr, &out), kNone);
    EXPECT_EQ(ASN1_to_binary(new_node().get(), &out), kNone);
    const Node broken = node_of("04 01 AA");
    for (const std::uint8_t length : Octets{0xFF, 0x80}) {  // too many octets, none at the end
        *broken->length = length;
        EXPECT_EQ(ASN1_to_binary(broken.get(), &out), kNone);
    }
    EXPECT_EQ(out, &unused) << "unchanged on failure";
    EXPECT_EQ(ASN1_to_binary(node_of("04 00").get(), nullptr), kNone);
}

TEST_F(Io, RecordsFromOctetsAndFiles) {
    const CommandFolder folder;
    const std::string path = folder.path("file");
    struct {
        const char *octets;
        std::uint32_t bounded, unbounded;
    } const cases[] = {
        {"30 80 02 02 12 34 00 00", 0, 0},
        {"30 04 02 02 12 34 FF FF FF", 0, 0},
        {"30 85 00 00 00 00 04 02 02 12 34", 0, 0},
        {"30 00", 0x7F010104, 0x7F010104},  // the converter's status, unchanged
        {"30 04 02 03 12 34", 0x7F010104, 0x7F010104},
        {"30 84 FF FF FF FF", 0x4300004F, 0x4300004F},
        {"30 85 01 00 00 00 00", 0x4300004F, 0x4300004F},
        // Only who knows the length reads elements of definite length after one of indefinite length.
        {"30 80 02 02 12 34 24 80 00 00 04 01 BB 00 00", 0, 0x4300004F},
        {"30 80 02 02 12 34 30 80 00 00 04 06 02 84 10 00 00 00 00 00", 0, 0x4300004F},
    };
    for (const auto &[text, bounded, unbounded] : cases) {
        const Octets octets = hex(text);
        const auto size = static_cast<std::uint32_t>(octets.size());
        folder.write("file", std::string(octets.begin(), octets.end()));
        EXPECT_EQ(read(readDER_from_Buffer, octets.data(), size), bounded) << text;
        EXPECT_EQ(read(readDER_from_File, path.c_str()), bounded) << text;
        EXPECT_EQ(read(readDER_from_Binary, octets.data()), unbounded) << text;
    }
    for (std::uint32_t size = 0; size < kDer.size(); ++size) {
        const Octets prefix(kDer.begin(), kDer.begin() + size);
        EXPECT_EQ(read(readDER_from_Buffer, size > 0 ? prefix.data() : kDer.data(), size), 0x4300004FU)
            << size;
    }
    EXPECT_EQ(readDER_from_Buffer(nullptr, kDecoder, nullptr, 6), 0x4300002BU);
    EXPECT_EQ(readDER_from_Binary(nullptr, kDecoder, nullptr), 0x4300002BU);
    EXPECT_EQ(readDER_from_Binary(nullptr, nullptr, kDer.data()), 0x43000049U);
    EXPECT_EQ(readDER_from_Buffer(nullptr, nullptr, kDer.data(), 6), 0x43000049U);
    EXPECT_EQ(readDER_from_Binary(nullptr, kDecoder, kDer.data()), 0x7F010049U);
}

TEST_F(Io, WritingRecordsAndTheirDigests) {
    std::uint8_t unused = 0;
    std::uint8_t *out = &unused;
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH] = {};
    for (const Sample *sample : {&kUnencodable, static_cast<const Sample *>(nullptr)}) {
        EXPECT_EQ(writeDER_to_Binary(sample, kEncoder, &out), kNone);
        EXPECT_EQ(get_ASN1_hash(sample, kEncoder, TLX_DIGEST_SHA1, digest), 0U);
    }
    EXPECT_EQ(writeDER_to_Binary(&kSample, nullptr, &out), kNone);
    EXPECT_EQ(out, &unused);
    EXPECT_EQ(writeDER_to_Binary(&kSample, kEncoder, nullptr), kNone);
    ASSERT_EQ(writeDER_to_Binary(&kSample, kEncoder, &out), 6U);
    EXPECT_EQ(Octets(out, out + 6), kDer);
    tlx_free(out);

    EXPECT_EQ(get_ASN1_hash(&kSample, kEncoder, TLX_DIGEST_SHA256, digest), 32U);
    EXPECT_EQ(Octets(digest, digest + 32), openssl::digest("SHA256", kDer));
    EXPECT_EQ(get_ASN1_hash(&kSample, nullptr, TLX_DIGEST_SHA1, digest), 0U);
    EXPECT_EQ(get_ASN1_hash(&kSample, kEncoder, 0xDEAD, digest), 0U);
    EXPECT_EQ(get_ASN1_hash(&kSample, kEncoder, TLX_DIGEST_SHA1, nullptr), 0U);
}

TEST_F(Io, Files) {
    const CommandFolder folder;
    const std::string path = folder.path("file"), nowhere = folder.path("no such folder/file");
    const Node node = node_of("30 00");
    EXPECT_EQ(writeDER_to_FILE(&kSample, kEncoder, path.c_str()), 6U) << "octets written";
    EXPECT_EQ(folder.read("file"), std::string(kDer.begin(), kDer.end()));
    EXPECT_EQ(ASN1_to_FILE(node.get(), path.c_str()), 2U);
    EXPECT_EQ(folder.read("file"), std::string("\x30\x00", 2)) << "the file is replaced";
    for (const char *bad : {nowhere.c_str(), static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(read(readDER_from_File, bad), 0x4300002BU);
        EXPECT_EQ(writeDER_to_FILE(&kSample, kEncoder, bad), kNone);
        EXPECT_EQ(ASN1_to_FILE(node.get(), bad), kNone);
    }
    EXPECT_EQ(writeDER_to_FILE(&kUnencodable, kEncoder, path.c_str()), 1U);
    EXPECT_EQ(writeDER_to_FILE(&kSample, nullptr, path.c_str()), 1U);
    EXPECT_EQ(ASN1_to_FILE(new_node().get(), path.c_str()), kNone);
#ifdef __linux__
    EXPECT_EQ(ASN1_to_FILE(node.get(), "/dev/full"), kNone) << "not all octets are written";
#endif
}

TEST_F(Io, FailingAllocations) {
    const CommandFolder folder;
    const std::string path = folder.path("file");
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    ASSERT_EQ(writeDER_to_FILE(&kSample, kEncoder, path.c_str()), 6U);
    const auto sweep = [](auto call, std::uint32_t done, const std::set<std::uint32_t> &failures) {
        EXPECT_GT(sweep_failing_allocations([&] {
                      const std::uint32_t status = call();
                      EXPECT_TRUE(status == done || failures.contains(status)) << std::hex << status;
                      return status == done;
                  }),
                  1U);
    };
    const auto write = [] {
        std::uint8_t *out = nullptr;
        const std::uint32_t size = writeDER_to_Binary(&kSample, kEncoder, &out);
        EXPECT_EQ(out != nullptr, size == 6);
        tlx_free(out);
        return size;
    };
    sweep(write, 6, {kNone});
    sweep([&] { return writeDER_to_FILE(&kSample, kEncoder, path.c_str()); }, 6, {1, kNone});
    sweep([&] { return read(readDER_from_File, path.c_str()); }, 0, {0x4300002B, 0x4300004F, 0x7F010104});
    sweep([&] { return get_ASN1_hash(&kSample, kEncoder, TLX_DIGEST_SHA256, digest); }, 32, {0});
}

}  // namespace
}  // namespace tlx_test
