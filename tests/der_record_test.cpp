// The words of record descriptions that no record of the library puts to use in every form, on a record made
// for it.

#include "der/record.hpp"
#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace tlx_test {
namespace {

struct Answer {
    std::uint32_t word;
    ASN1_STRING *value;
};
struct Sample {
    std::uint32_t number;
    std::uint32_t kind;
    std::uint8_t flag;
    ASN1_STRING *secret;
    Answer answer;
    BIGINT *first;
    ASN1_STRING *second;
    std::uint32_t kept;
};

using namespace tlx;

constexpr auto kAnswer =
    choice(&Answer::word, &Answer::value, alternative<tlx::Octets>(8, 1), alternative<Null>(7, 0));
constexpr auto kSample = record<Sample>(
    at_least(2), number(&Sample::number).or_else(5), enumerated(&Sample::kind).as(3),
    default_false(&Sample::flag), field<Secret<Joined>>(&Sample::secret), embedded(&Sample::answer, kAnswer),
    by_tag(implicit<Integer>(4, &Sample::first), optional<Joined>(&Sample::second)),
    kept_word(&Sample::kept));

/// What is read, written again, also of a copy; or why nothing is.
std::string reread(const Row &row) {
    const Octets der = hex(row[1]);
    Element element;
    if (!read_element({der.data(), der.size()}, element)) return "no element";
    Sample *sample = nullptr;
    const Statuses statuses = {1, 2, 3};
    if (const std::uint32_t status = decode_record(kSample, element, &sample, statuses); status != 0)
        return "status " + std::to_string(status);
    EXPECT_EQ(sample->kept, 0U);
    sample->kept = 9;
    Sample *copy = dup_record(kSample, sample);
    Encoder out;
    if (copy != nullptr) {
        EXPECT_EQ(copy->kept, 9U);
        kSample.write(out, *copy);
    }
    const std::string text =
        copy == nullptr || !out.ok() ? "no memory" : hex_of(out.bytes().data(), out.bytes().size());
    free_record(kSample, copy);
    free_record(kSample, sample);
    return text;
}

/// SEQUENCEs inside one another, each with an OCTET STRING before and after; a long one is in the innermost.
void nest(Encoder &out, std::uint32_t depth, Bytes around, Bytes inside) {
    const auto sequence = out.sequence();
    out.primitive(TLX_TAG_OCTET_STRING, around);
    if (depth > 1) {
        nest(out, depth - 1, around, inside);
    } else {
        out.primitive(TLX_TAG_OCTET_STRING, inside);
    }
    out.primitive(TLX_TAG_OCTET_STRING, around);
}

/// The same, built from the inside out.
Octets nested(std::uint32_t depth, const Octets &around, const Octets &inside) {
    const auto element = [](std::uint8_t tag, const Octets &contents) {
        std::uint8_t length[5];
        Octets octets = {tag};
        octets.insert(octets.end(), length,
                      length + write_length(static_cast<std::uint32_t>(contents.size()), length));
        octets.insert(octets.end(), contents.begin(), contents.end());
        return octets;
    };
    const Octets side = element(TLX_TAG_OCTET_STRING, around);
    Octets octets = element(TLX_TAG_OCTET_STRING, inside);
    for (; depth > 0; --depth) {
        octets.insert(octets.begin(), side.begin(), side.end());
        octets.insert(octets.end(), side.begin(), side.end());
        octets = element(0x30, octets);
    }
    return octets;
}

/// The length octets of what is encoded around a long string; "other" when it is not what it should be.
std::string encode_long(const Row &row) {
    const Octets around(row.number(2), 0xAA);
    const Octets inside(row.number(3), 0xBB);
    Encoder out;
    nest(out, row.number(1), around, inside);
    const bool right = out.ok() && std::ranges::equal(out.bytes(), nested(row.number(1), around, inside));
    ASN1_UNIT *node = out.to_node();
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = ASN1_to_binary(node, &octets);
    const bool made = octets != nullptr;
    const std::string length = node != nullptr ? hex_of(node->length, getASN1LengthSize(node->length)) : "";
    const bool same =
        octets != nullptr && Octets(octets, octets + size) == nested(row.number(1), around, inside);
    tlx_free(octets);
    free_ASN1_UNIT(node);
    if (!made) return "no memory";
    return right && same ? length : "other";
}

TEST(RecordWords, Rows) {
    expect_rows("record_words.txt",
                {{"sample", {reread, {"status 3", "no memory"}}}, {"long", {encode_long, {"no memory"}}}});
}

}  // namespace
}  // namespace tlx_test
