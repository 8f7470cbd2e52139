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
    choice(&Answer::word, &Answer::value, alternative<Null>(7, 0), alternative<tlx::Octets>(8, 1));
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

TEST(RecordWords, Rows) {
    expect_rows("record_words.txt", {{"sample", {reread, {"status 3", "no memory"}}}});
}

}  // namespace
}  // namespace tlx_test
