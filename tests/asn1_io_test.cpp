// Nodes and records to and from octets and files; digests of records.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <filesystem>
#include <fstream>

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/openssl_peer.hpp"
#include "support/utf8_path.hpp"

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
    if (*out == nullptr) *out = static_cast<Sample *>(tlx_malloc(sizeof(Sample), __FILE__, __LINE__));
    if (*out == nullptr) return 0x7F01003C;
    (*out)->value = get_BIGINT_word(number.get());
    return 0;
}

std::uint32_t SAMPLE_to_Seq(const Sample *sample, ASN1_UNIT **out) {
    if (sample == nullptr) return 0x7F020049;
    *out = new_ASN1_UNIT();
    if (sample->value == 0) return 0x7F020103;  // with a node half built
    const Number number(new_BIGINT());
    if (number == nullptr || set_BIGINT_word(number.get(), sample->value) != 0 ||
        addToDERSequence(*out, 2, number.get(), get_BIGINT_der_length(number.get())) != 0) {
        free_ASN1_UNIT(*out);
        *out = nullptr;
        return 0x7F020103;
    }
    return 0;
}

const ASN1_DECODER kDecoder = TLX_DECODER(Seq_to_SAMPLE);
const ASN1_ENCODER kEncoder = TLX_ENCODER(SAMPLE_to_Seq);
const Sample kSample = {0x1234};
constexpr const char *kSampleHex = "30 04 02 02 12 34";

/// A file of its own for each test; removed at the end. The name is UTF-8.
class File {
  public:
    File() {
        const auto *test = ::testing::UnitTest::GetInstance()->current_test_info();
        path_ = ::testing::TempDir() + "tlxpki-\xED\x95\x9C-" + test->name();
        remove();
    }
    ~File() { remove(); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    const char *path() const { return path_.c_str(); }
    void write(const Octets &octets) const {
        std::ofstream(utf8_path(path_), std::ios::binary)
            .write(reinterpret_cast<const char *>(octets.data()),
                   static_cast<std::streamsize>(octets.size()));
    }
    std::string read() const {
        std::ifstream in(utf8_path(path_), std::ios::binary);
        const std::string octets((std::istreambuf_iterator<char>(in)), {});
        return hex_of(reinterpret_cast<const std::uint8_t *>(octets.data()), octets.size());
    }

  private:
    void remove() const { std::filesystem::remove(utf8_path(path_)); }

    std::string path_;
};

/// Reads into a new record; returns the status, or 0 when the record has the sample's value.
template <typename Read>
std::uint32_t read_new(Read read) {
    void *out = nullptr;
    const std::uint32_t status = read(&out);
    const tlx::OwnedOctets<Sample> sample(static_cast<Sample *>(out));
    if (status == 0) {
        EXPECT_EQ(sample->value, kSample.value);
    } else {
        EXPECT_EQ(sample, nullptr);
    }
    return status;
}

TEST(Io, BinaryOfANode) {
    const LeakCheck leaks;
    for (const char *text : {"30 80 02 01 05 00 00", "04 00", "30 81 03 02 01 05", "A0 80 00 00"})
        EXPECT_EQ(hex_of(node_of(text).get()), text);
    std::uint8_t unused = 0;
    std::uint8_t *out = &unused;
    EXPECT_EQ(ASN1_to_binary(nullptr, &out), kNone);
    EXPECT_EQ(ASN1_to_binary(new_node().get(), &out), kNone);
    const Node broken = node_of("04 01 AA");
    *broken->length = 0x89;
    EXPECT_EQ(ASN1_to_binary(broken.get(), &out), kNone);
    *broken->length = 0x80;  // without end-of-contents octets
    EXPECT_EQ(ASN1_to_binary(broken.get(), &out), kNone);
    EXPECT_EQ(out, &unused) << "unchanged on failure";
    EXPECT_EQ(ASN1_to_binary(node_of("04 00").get(), nullptr), kNone);
}

TEST(Io, ReadingRecords) {
    struct Case {
        const char *octets;
        std::uint32_t bounded, unbounded;
    };
    const Case cases[] = {
        {kSampleHex, 0, 0},
        {"30 80 02 02 12 34 00 00", 0, 0},
        {"30 04 02 02 12 34 FF FF FF", 0, 0},
        {"30 00", 0x7F010104, 0x7F010104},  // the converter's status, unchanged
        {"30 04 02 03 12 34", 0x7F010104, 0x7F010104},
        {"30 84 FF FF FF FF", 0x4300004F, 0x4300004F},
        {"30 85 00 00 00 00 00", 0x4300004F, 0x4300004F},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.octets);
        const LeakCheck leaks;
        const Octets octets = hex(c.octets);
        const auto size = static_cast<std::uint32_t>(octets.size());
        EXPECT_EQ(
            read_new([&](void **out) { return readDER_from_Buffer(out, kDecoder, octets.data(), size); }),
            c.bounded);
        EXPECT_EQ(read_new([&](void **out) { return readDER_from_Binary(out, kDecoder, octets.data()); }),
                  c.unbounded);
    }
    const LeakCheck leaks;
    const Octets whole = hex(kSampleHex);
    for (std::uint32_t size = 0; size < whole.size(); ++size) {
        const Octets prefix(whole.begin(), whole.begin() + size);
        const std::uint8_t *der = size > 0 ? prefix.data() : whole.data();
        EXPECT_EQ(read_new([&](void **out) { return readDER_from_Buffer(out, kDecoder, der, size); }),
                  0x4300004FU);
    }
    Sample mine = {1};
    void *out = &mine;
    EXPECT_EQ(readDER_from_Binary(&out, kDecoder, whole.data()), 0U);
    EXPECT_EQ(out, &mine);
    EXPECT_EQ(mine.value, kSample.value) << "the caller's record is filled in place";
    EXPECT_EQ(readDER_from_Binary(&out, kDecoder, nullptr), 0x4300002BU);
    EXPECT_EQ(readDER_from_Buffer(&out, kDecoder, nullptr, 6), 0x4300002BU);
    EXPECT_EQ(readDER_from_Binary(&out, nullptr, whole.data()), 0x43000049U);
    EXPECT_EQ(readDER_from_Buffer(&out, nullptr, whole.data(), 6), 0x43000049U);
    EXPECT_EQ(readDER_from_Binary(nullptr, kDecoder, whole.data()), 0x7F010049U);
}

TEST(Io, WritingRecords) {
    const LeakCheck leaks;
    std::uint8_t *out = nullptr;
    ASSERT_EQ(writeDER_to_Binary(&kSample, kEncoder, &out), 6U);
    EXPECT_EQ(hex_of(out, 6), kSampleHex);
    tlx_free(out);
    std::uint8_t unused = 0;
    out = &unused;
    const Sample unencodable = {0};
    EXPECT_EQ(writeDER_to_Binary(&unencodable, kEncoder, &out), kNone);
    EXPECT_EQ(writeDER_to_Binary(nullptr, kEncoder, &out), kNone);
    EXPECT_EQ(writeDER_to_Binary(&kSample, nullptr, &out), kNone);
    EXPECT_EQ(out, &unused);
    EXPECT_EQ(writeDER_to_Binary(&kSample, kEncoder, nullptr), kNone);
}

TEST(Io, Files) {
    const LeakCheck leaks;
    const File file;
    EXPECT_EQ(writeDER_to_FILE(&kSample, kEncoder, file.path()), 6U) << "octets written";
    EXPECT_EQ(file.read(), kSampleHex);
    EXPECT_EQ(read_new([&](void **out) { return readDER_from_File(out, kDecoder, file.path()); }), 0U);
    EXPECT_EQ(ASN1_to_FILE(node_of("04 00").get(), file.path()), 2U);
    EXPECT_EQ(file.read(), "04 00") << "the file is replaced";
    EXPECT_EQ(read_new([&](void **out) { return readDER_from_File(out, kDecoder, file.path()); }),
              0x7F010104U);
    for (const char *octets : {"", "30", "30 04 02 02 12", "30 80 02 02 12 34 00"}) {
        file.write(hex(octets));
        EXPECT_EQ(read_new([&](void **out) { return readDER_from_File(out, kDecoder, file.path()); }),
                  0x4300004FU)
            << octets;
    }

    const std::string nowhere = ::testing::TempDir() + "no such folder/file";
    const Sample unencodable = {0};
    EXPECT_EQ(read_new([&](void **out) { return readDER_from_File(out, kDecoder, nowhere.c_str()); }),
              0x4300002BU);
    EXPECT_EQ(read_new([&](void **out) { return readDER_from_File(out, kDecoder, nullptr); }), 0x4300002BU);
    EXPECT_EQ(writeDER_to_FILE(&unencodable, kEncoder, file.path()), 1U);
    EXPECT_EQ(writeDER_to_FILE(&kSample, nullptr, file.path()), 1U);
    EXPECT_EQ(writeDER_to_FILE(&kSample, kEncoder, nullptr), kNone);
    EXPECT_EQ(writeDER_to_FILE(&kSample, kEncoder, nowhere.c_str()), kNone);
    EXPECT_EQ(ASN1_to_FILE(node_of("04 00").get(), nowhere.c_str()), kNone);
    EXPECT_EQ(ASN1_to_FILE(node_of("04 00").get(), nullptr), kNone);
    EXPECT_EQ(ASN1_to_FILE(new_node().get(), file.path()), kNone);
#ifdef __linux__
    EXPECT_EQ(ASN1_to_FILE(node_of("04 00").get(), "/dev/full"), kNone) << "not all octets are written";
#endif
}

TEST(Io, Digests) {
    const LeakCheck leaks;
    const Octets encoding = hex(kSampleHex);
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH] = {};
    const std::pair<std::uint32_t, const char *> digests[] = {
        {TLX_DIGEST_SHA1, "SHA1"}, {TLX_DIGEST_SHA256, "SHA256"}, {TLX_DIGEST_SHA512, "SHA512"}};
    for (const auto &[id, name] : digests) {
        const std::uint32_t size = get_ASN1_hash(&kSample, kEncoder, id, digest);
        EXPECT_EQ(Octets(digest, digest + size), openssl::digest(name, encoding)) << name;
    }
    const Sample unencodable = {0};
    EXPECT_EQ(get_ASN1_hash(nullptr, kEncoder, TLX_DIGEST_SHA1, digest), 0U);
    EXPECT_EQ(get_ASN1_hash(&unencodable, kEncoder, TLX_DIGEST_SHA1, digest), 0U);
    EXPECT_EQ(get_ASN1_hash(&kSample, nullptr, TLX_DIGEST_SHA1, digest), 0U);
    EXPECT_EQ(get_ASN1_hash(&kSample, kEncoder, 0xDEAD, digest), 0U);
    EXPECT_EQ(get_ASN1_hash(&kSample, kEncoder, TLX_DIGEST_SHA1, nullptr), 0U);
}

TEST(Io, FailingAllocations) {
    const Octets octets = hex(kSampleHex);
    EXPECT_GT(sweep_failing_allocations([&] {
                  const std::uint32_t status = read_new(
                      [&](void **out) { return readDER_from_Buffer(out, kDecoder, octets.data(), 6); });
                  EXPECT_TRUE(status == 0 || status == 0x4300004F || (status & 0xFFFF0000) == 0x7F010000)
                      << std::hex << status;
                  return status == 0;
              }),
              1U);
    EXPECT_GT(sweep_failing_allocations([] {
                  std::uint8_t *out = nullptr;
                  const std::uint32_t size = writeDER_to_Binary(&kSample, kEncoder, &out);
                  EXPECT_EQ(out != nullptr, size == 6);
                  EXPECT_TRUE(size == 6 || size == kNone) << size;
                  tlx_free(out);
                  return size == 6;
              }),
              5U);
    const File file;
    EXPECT_GT(sweep_failing_allocations([&] {
                  const std::uint32_t written = writeDER_to_FILE(&kSample, kEncoder, file.path());
                  EXPECT_TRUE(written == 6 || written == 1 || written == kNone) << written;
                  return written == 6;
              }),
              5U);
    EXPECT_GT(sweep_failing_allocations([&] {
                  const std::uint32_t status =
                      read_new([&](void **out) { return readDER_from_File(out, kDecoder, file.path()); });
                  EXPECT_TRUE(status == 0 || status == 0x4300002B || status == 0x4300004F ||
                              (status & 0xFFFF0000) == 0x7F010000)
                      << std::hex << status;
                  return status == 0;
              }),
              2U);
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    EXPECT_GT(sweep_failing_allocations(
                  [&] { return get_ASN1_hash(&kSample, kEncoder, TLX_DIGEST_SHA256, digest) == 32; }),
              5U);
}

}  // namespace
}  // namespace tlx_test
