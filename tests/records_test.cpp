// What all records and lists have in common, for each row of data/records.txt and for each seed of the fuzz
// target: encodings that come back, encodings that are refused, copies, lists, memory that runs out.
#include <filesystem>
#include <map>
#include <vector>

#include "support/record_types.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

struct Encoding {
    std::string place;
    const RecordType *type;
    Octets input;
    std::string expected;  // octets in hexadecimal or "47230104", a status
};

struct Table {
    std::vector<Encoding> rows;
    std::map<std::string_view, std::vector<Octets>> samples;  // the encodings of each type that come back
    std::map<std::string_view, std::string> empty;            // what a record without members gives
    std::map<std::string_view, std::string> nulls;            // the statuses of the two null arguments
};

const RecordType *type_named(std::string_view name) {
    for (const RecordType &type : kRecordTypes)
        if (type.name == name) return &type;
    ADD_FAILURE() << "no type " << name;
    return nullptr;
}

std::string hex_of(const Octets &octets) {
    return tlx_test::hex_of(octets.data(), octets.size());
}

void replace_names(std::string &text, const std::map<std::string, std::string> &names) {
    for (std::size_t at = text.find('$'); at != std::string::npos; at = text.find('$')) {
        const std::size_t end = std::min(text.size(), text.find_first_of(" }", at));
        text.replace(at, end - at, names.at(text.substr(at, end - at)));
    }
}

bool is_status(const std::string &result) {
    return result.find(' ') == std::string::npos;
}

std::string result_of(const std::string &text) {
    return text.find_first_of(":{") == std::string::npos ? text : hex_of(der(text));
}

Table read_table() {
    Table table;
    std::ifstream file(TLX_TEST_DATA "/records.txt");
    EXPECT_TRUE(file.is_open());
    std::map<std::string, std::string> names;
    const RecordType *type = nullptr;
    unsigned number = 0;
    for (std::string line; std::getline(file, line);) {
        const std::string place = "records.txt:" + std::to_string(++number) + " " + line;
        line.erase(std::min(line.size(), line.find(" #")));
        line.erase(line.find_last_not_of(' ') + 1);
        if (line.empty() || line[0] == '#') continue;
        if (const std::size_t equals = line.find(" = "); equals != std::string::npos) {
            names[line.substr(0, equals)] = line.substr(equals + 3);
            continue;
        }
        if (line[0] == '[') {
            type = type_named(std::string_view(line).substr(1, line.find(' ') - 1));
            table.nulls[type->name] = line.substr(line.find(' ') + 1, 17);
            continue;
        }
        replace_names(line, names);
        const std::size_t arrow = line.find(" => ");
        const std::string input = line.substr(0, arrow);
        const std::string output = arrow == std::string::npos ? input : line.substr(arrow + 4);
        if (input == "empty") {
            table.empty[type->name] = result_of(output);
        } else {
            table.rows.push_back({place, type, der(input), result_of(output)});
            if (input == output) table.samples[type->name].push_back(der(input));
        }
    }
    return table;
}

const Table &table() {
    static const Table read = read_table();
    return read;
}

Node node_of(const Octets &octets) {
    return Node(decodeToDERSequence_n(octets.data(), static_cast<std::uint32_t>(octets.size())));
}

/// A caller's record of any type, and the pointer to it as a decoder leaves it.
class Record {
  public:
    Record(const RecordType &type, void *record) : out(record), type_(type), record_(record) {}
    ~Record() { type_.free(record_); }
    Record(const Record &) = delete;
    Record &operator=(const Record &) = delete;

    [[nodiscard]] void *get() const { return record_; }
    [[nodiscard]] std::string text() const {
        return encoded(type_.encode, static_cast<const void *>(record_));
    }
    std::uint32_t decode(const ASN1_UNIT *node) {
        out = record_;
        const std::uint32_t status = type_.decode(node, &out);
        if (departure_of(type_).on_failure != OnFailure::released || status == 0) record_ = out;
        return status;
    }
    void fill(const Octets &sample) { EXPECT_EQ(decode(node_of(sample).get()), 0U) << type_.name; }
    void fill() { fill(table().samples.at(type_.name)[0]); }

    void *out;

  private:
    const RecordType &type_;
    void *record_;
};

/// What decoding into a null pointer gives. A type that fills records only fills an empty one.
std::string decode(const RecordType &type, const ASN1_UNIT *node) {
    void *out = nullptr;
    const std::uint32_t status = type.decode(node, &out);
    const bool fills_only = departure_of(type).fills_only;
    EXPECT_EQ(out != nullptr, status == 0 && !fills_only);
    Record record(type, fills_only ? type.make() : out);
    if (fills_only) {
        EXPECT_EQ(record.decode(node), status);
    }
    return status == 0 ? record.text() : status_text(status);
}

/// What has become of a caller's record that held `before` when decoding fails.
void expect_failed(const RecordType &type, const Record &record, const void *place,
                   const std::string &before) {
    const OnFailure rule = departure_of(type).on_failure;
    const bool loses_pointer = rule == OnFailure::freed || rule == OnFailure::released;
    EXPECT_EQ(record.out, loses_pointer ? nullptr : place);
    if (rule == OnFailure::unchanged || rule == OnFailure::released) {
        EXPECT_EQ(record.text(), before);
    }
    if (rule == OnFailure::cleaned) {
        EXPECT_EQ(record.text(), table().empty.at(type.name));
    }
}

/// Decoding into a record that holds something else.
void expect_fills(const RecordType &type, const ASN1_UNIT *node, const std::string &expected,
                  const Octets &held) {
    Record record(type, type.make());
    record.fill(held);
    const std::string before = record.text();
    void *const place = record.get();
    const std::uint32_t status = record.decode(node);
    EXPECT_EQ(status == 0 ? record.text() : status_text(status), expected);
    if (status == 0) {
        EXPECT_EQ(record.out, place);
    } else {
        expect_failed(type, record, place, before);
    }
    record.fill(held);
    EXPECT_EQ(record.text(), before) << "it can be filled again";
}

void expect_copied_and_cleaned(const RecordType &type, const ASN1_UNIT *node, const std::string &expected) {
    Record record(type, type.make());
    EXPECT_EQ(record.decode(node), 0U);
    const Record copy(type, type.dup(record.get()));
    for (int times = 0; times < 2; ++times) {
        type.clean(record.get());
        EXPECT_EQ(record.text(), table().empty.at(type.name)) << "cleaned";
    }
    EXPECT_EQ(copy.text(), expected) << "the copy of a record that has lost everything";
}

/// Whichever allocation fails while a record is made or copied, filled and encoded: the status is one of the
/// type's.
void expect_allocations_may_fail(const RecordType &type, const ASN1_UNIT *node, const std::string &expected,
                                 bool fills) {
    Record source(type, type.make());
    source.fill();
    const std::string before = source.text();
    sweep_failing_allocations([&] {
        void *const given = fills ? type.dup(source.get()) : nullptr;
        if (fills && given == nullptr) return false;
        Record record(type, given);
        std::uint32_t status = record.decode(node);
        if (status != 0) {
            tlx_fail_allocation(0);
            EXPECT_TRUE(may_fail_with(type, status, true)) << status_text(status);
            if (given == nullptr) {
                EXPECT_EQ(record.out, nullptr);
            } else {
                expect_failed(type, record, given, before);
            }
            return false;
        }
        ASN1_UNIT *out = nullptr;
        status = type.encode(record.get(), &out);
        tlx_fail_allocation(0);
        const Node encoding(out);
        EXPECT_TRUE(status == 0 || may_fail_with(type, status, false)) << status_text(status);
        EXPECT_EQ(status == 0 ? tlx_test::hex_of(out) : "null", out == nullptr ? "null" : expected);
        return status == 0;
    });
}

/// Everything that holds of an encoding that is accepted, and of one that is refused.
void expect_holds(const RecordType &type, const Octets &input, const std::string &expected) {
    const LeakCheck leaks;
    const Node node = node_of(input);
    EXPECT_EQ(decode(type, node.get()), expected);
    for (const Octets &held : table().samples.at(type.name))
        expect_fills(type, node.get(), expected, held);
    if (is_status(expected)) return;
    expect_copied_and_cleaned(type, node.get(), expected);
    expect_allocations_may_fail(type, node.get(), expected, true);
    if (!departure_of(type).fills_only) expect_allocations_may_fail(type, node.get(), expected, false);
    const std::string again = decode(type, node_of(hex(expected)).get());
    EXPECT_TRUE(again == expected || (departure_of(type).writes_less && is_status(again))) << again;
}

TEST(Records, RowsGiveWhatTheySay) {
    for (const Encoding &row : table().rows) {
        SCOPED_TRACE(row.place);
        expect_holds(*row.type, row.input, row.expected);
    }
}

TEST(Records, SeedsOfTheFuzzTarget) {
    unsigned accepted = 0;
    for (const auto &file : std::filesystem::directory_iterator(TLX_TEST_DATA "/../../fuzz/corpus/records")) {
        SCOPED_TRACE(file.path().string());
        const std::string seed = read_text(file.path().string());
        const Octets input(seed.begin() + 1, seed.end());
        for (const RecordType &type : kRecordTypes) {
            if (selector_of(type) != static_cast<std::uint8_t>(seed[0])) continue;
            const std::string result = decode(type, node_of(input).get());
            if (!is_status(result)) ++accepted;
            expect_holds(type, input, result);
        }
    }
    EXPECT_GT(accepted, 20U);
}

TEST(Records, NullArgumentsAndNullRecords) {
    for (const RecordType &type : kRecordTypes) {
        SCOPED_TRACE(type.name);
        const LeakCheck leaks;
        const Node node = node_of(table().samples.at(type.name)[0]);
        const Record empty(type, type.make());
        void *record = nullptr;
        ASN1_UNIT *encoding = nullptr;
        const std::string statuses = table().nulls.at(type.name);
        EXPECT_EQ(status_text(type.decoding.null_argument) + " " + status_text(type.encoding.null_argument),
                  statuses);
        expect_refuses_null(type.decoding.null_argument, type.decode, node.get(), &record);
        expect_refuses_null(type.encoding.null_argument, type.encode, empty.get(), &encoding);
        expect_refuses_null(nullptr, type.dup, empty.get());
        type.clean(nullptr);
        type.free(nullptr);
        expect_making_may_fail(type.make, type.free);
        EXPECT_EQ(decode(type, new_node().get()), departure_of(type).chooses_by_tag
                                                      ? status_text(type.decoding.other)
                                                      : decode(type, der_node("30{}").get()))
            << "a node that is not started has no children";
    }
}

TEST(Records, EncodingsGoToNewNodes) {
    for (const RecordType &type : kRecordTypes) {
        SCOPED_TRACE(type.name);
        const LeakCheck leaks;
        Record record(type, type.make());
        EXPECT_EQ(record.text(), table().empty.at(type.name));
        EXPECT_EQ(Record(type, type.dup(record.get())).text(), record.text());
        for (int filled = 0; filled < 2; ++filled) {
            const Node given = new_node();
            ASN1_UNIT *out = given.get();
            const bool succeeded = type.encode(record.get(), &out) == 0;
            EXPECT_EQ(out != given.get(), succeeded && !departure_of(type).fills_node);
            if (out != given.get()) free_ASN1_UNIT(out);
            record.fill();
        }
    }
}

TEST(Records, ListsCopyWhatIsAdded) {
    for (const RecordType &type : kRecordTypes) {
        const ListOperations operations = list_of(type);
        if (operations.count == nullptr) continue;
        SCOPED_TRACE(type.name);
        const LeakCheck leaks;
        Record list(type, type.make());
        Record other(type, type.make());
        other.fill();
        const std::uint32_t count = operations.count(other.get());
        const auto last = static_cast<std::int32_t>(count) - 1;
        const std::string before = other.text();
        ASSERT_GE(count, 2U) << "the sample has two items that differ";
        // From the last to the first at the front, then out of range: the items twice.
        for (std::int32_t i = last; i >= 0; --i)
            EXPECT_EQ(operations.add(list.get(), operations.child(other.get(), i), 0), 0U);
        EXPECT_EQ(list.text(), before);
        EXPECT_NE(operations.child(list.get(), 0), operations.child(other.get(), 0)) << "a copy";
        EXPECT_EQ(operations.add(list.get(), operations.child(other.get(), 0), -1), 0U);
        EXPECT_EQ(operations.add(list.get(), operations.child(other.get(), last), 999), 0U);
        EXPECT_EQ(operations.count(list.get()), count + 2);
        for (const std::int32_t index : {-1, last + 3}) {
            EXPECT_EQ(operations.child(list.get(), index), nullptr);
            EXPECT_EQ(operations.remove(list.get(), index), nullptr);
        }
        expect_refuses_null(1, operations.add, list.get(), operations.child(other.get(), 0), 0);
        expect_refuses_null(0, operations.count, list.get());
        expect_refuses_null(nullptr, operations.child, list.get(), 0);
        expect_refuses_null(nullptr, operations.remove, list.get(), 0);
        for (int i = 0; i < 2; ++i) {
            void *const item = operations.child(list.get(), last + 1);
            EXPECT_EQ(operations.remove(list.get(), last + 1), item);
            operations.free_item(item);
        }
        EXPECT_EQ(list.text(), before);
        sweep_failing_allocations([&] {
            const Record grown(type, type.make());
            bool added = grown.get() != nullptr;
            for (std::uint32_t i = 0; i < 5 && added; ++i) {
                added = operations.add(grown.get(), operations.child(other.get(), 0), -1) == 0;
                EXPECT_EQ(operations.count(grown.get()), i + (added ? 1 : 0));
            }
            return added;
        });
        push_STACK_value(static_cast<STACK *>(list.get()), nullptr);
        const bool has_own = type.list.count == nullptr && type.encoding.wrong_count != 0;
        EXPECT_EQ(list.text(), status_text(has_own ? type.encoding.wrong_count : type.encoding.other))
            << "an item that is missing";
    }
}

}  // namespace
}  // namespace tlx_test
