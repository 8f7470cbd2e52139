// The registry: its data against libcrypto's, its lookups against a plain scan, its edge cases.
#include <algorithm>
#include <regex>

#include "asn1/oid_table.hpp"
#include "support/allocation.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"

namespace {

using namespace tlx_test;

using Objects = LeakFreeTest;
using Lookup = std::uint32_t (*)(const char *, std::uint32_t);
constexpr std::pair<const char * OID_ROW::*, Lookup> kColumns[] = {{&OID_ROW::short_name, index_from_sn},
                                                                   {&OID_ROW::long_name, index_from_ln},
                                                                   {&OID_ROW::dotted, index_from_oid_string}};

std::string made(OBJECT_IDENTIFIER *oid) {
    return octets(String(oid).get());
}

/// The short name of an identifier's row.
std::string row_name(OBJECT_IDENTIFIER *oid) {
    const String owner(oid);
    if (oid == nullptr) return "(null)";
    return sn_from_index(static_cast<std::int32_t>(index_from_OBJECT_IDENTIFIER(oid)));
}

String by_name(const std::string &name) {
    return String(get_OBJECT_IDENTIFIER(name.c_str(), 0));
}

template <typename Function>
Operation by_number(Function function) {
    return {[function](const Row &row) { return row_name(function(row.number(1))); }, {"(null)"}};
}

/// Rows of the three columns with a text of which the first octets count.
std::string look_up(const Row &row) {
    std::string found;
    for (const auto &[column, lookup] : kColumns)
        found += (found.empty() ? "" : " ") + std::to_string(lookup(row[1].c_str(), row.number(2)));
    return found;
}

std::string algorithms(const Row &row) {
    const String oid = by_name(row[1]);
    return status_text(get_DigestID_from_OID(oid.get())) + " " +
           status_text(get_CipherID_from_OID(oid.get())) + " " +
           std::to_string(get_AlgorType_from_OID(oid.get()));
}

std::string from_libcrypto(const Row &row) {
    const std::string dotted = OID_LIST(static_cast<std::int32_t>(row.number(1)))->dotted;
    return dotted == openssl::object_row(static_cast<int>(row.number(2))).dotted ? "the same" : dotted;
}

/// Whether rows, from one to another, are those of libcrypto.
std::string compare_with_libcrypto(const Row &row) {
    std::uint32_t same = 0;
    for (std::uint32_t i = row.number(1); i <= row.number(2); ++i) {
        const auto peer = openssl::object_row(static_cast<int>(i));
        const OID_ROW *own = OID_LIST(static_cast<std::int32_t>(i));
        same += own->short_name == peer.short_name && own->long_name == peer.long_name &&
                own->dotted == peer.dotted;
    }
    const std::uint32_t rows = row.number(2) - row.number(1) + 1;
    return same == rows ? "the same" : same == 0 ? "others" : std::to_string(same) + " are the same";
}

std::string compare(const Row &row) {
    const std::int32_t order =
        cmp_OBJECT_IDENTIFIER(string_of(6, row[1]).get(), string_of(0x86, row[2]).get());
    return order < 0 ? "below" : order == 0 ? "equal" : "above";
}

/// The dotted texts that the names in the public header stand for.
std::map<std::string, std::string> header_names() {
    const std::string text = read_text(TLX_TEST_SOURCE "/include/tlxpki/object_names.h");
    const std::regex name("(TLX_OID_\\w+) = (\\d+)");
    std::map<std::string, std::string> names;
    for (std::sregex_iterator at(text.begin(), text.end(), name), end; at != end; ++at)
        names[at->str(1)] = OID_LIST(std::stoi(at->str(2)))->dotted;
    return names;
}

TEST_F(Objects, Rows) {
    auto names = header_names();
    std::uint32_t compared = 0;  // rows, from 0 on
    const auto next_rows = [&](const Row &row) {
        EXPECT_EQ(row.number(1), std::exchange(compared, row.number(2) + 1));
        return compare_with_libcrypto(row);
    };
    const auto identifier = [](const Row &row) {
        const char *name = row[1] == "null" ? nullptr : row[1].c_str();
        return made(get_OBJECT_IDENTIFIER(name, row.number(2)));
    };
    const auto text = [](const Row &row) { return made(text_to_OBJECT_IDENTIFIER(row[1].c_str())); };
    expect_rows("objects.txt", {{"identifier", {identifier, {"(null)"}}},
                                {"text", {text, {"(null)"}}},
                                {"name", {[&](const Row &row) { return names.extract(row[1]).mapped(); }}},
                                {"look up", {look_up}},
                                {"algorithms", {algorithms}},
                                {"digest", by_number(get_OID_from_DigestID)},
                                {"cipher", by_number(get_OID_from_CipherID)},
                                {"number in libcrypto", {from_libcrypto}},
                                {"rows", {next_rows}},
                                {"compare", {compare}}});
    EXPECT_EQ(compared, TLX_OID_COUNT);
    EXPECT_TRUE(names.empty()) << names.begin()->first << " has no line";
    EXPECT_EQ(text_to_OBJECT_IDENTIFIER(nullptr), nullptr);
}

TEST_F(Objects, AnswersAsAPlainScanForEveryRowAndItsNearMisses) {
    // What a scan in index order finds.
    std::map<std::string, std::uint32_t> first[3];
    for (std::size_t c = 0; c < 3; ++c) {
        for (std::uint32_t i = 0; i < TLX_OID_COUNT; ++i)
            first[c].try_emplace(OID_LIST(static_cast<std::int32_t>(i))->*kColumns[c].first, i);
        first[c][""] = 0;
    }
    // In every column, from a block that ends where the text does.
    const auto check = [&](const std::string &text) {
        const std::vector<char> exact(text.begin(), text.end());
        for (std::size_t c = 0; c < 3; ++c) {
            const auto found = first[c].find(text);
            EXPECT_EQ(kColumns[c].second(exact.data(), static_cast<std::uint32_t>(text.size())),
                      found == first[c].end() ? 0 : found->second)
                << "column " << c << " \"" << text << "\"";
        }
    };
    // A text of one or two arcs ends in a dot.
    const std::regex good(R"((\d+(\.\d+)?\.|\d+(\.\d+){2,})?)");
    int korean = 0;
    for (int i = 0; i < TLX_OID_COUNT; ++i) {
        const std::string dotted = OID_LIST(i)->dotted;
        korean += dotted.starts_with("1.2.410");
        EXPECT_TRUE(i == 0 || std::regex_match(dotted, good)) << "row " << i << ": " << dotted;
        EXPECT_TRUE(i < 805 || i > 830 || dotted == "1.2.410.100001.1." + std::to_string(i - 804)) << i;
        const String oid(index_to_OBJECT_IDENTIFIER(i));
        EXPECT_EQ(octets(oid.get()), i == 0 || dotted.empty() ? "(null)" : dotted) << "row " << i;
        EXPECT_EQ(index_from_OBJECT_IDENTIFIER(oid.get()), first[2][i == 0 ? "" : dotted]) << "row " << i;
        for (const auto &column : kColumns) {
            const std::string text = OID_LIST(i)->*column.first;
            for (const std::string &near : {text, text + '1', text + '\0'})
                check(near);
            if (text.empty()) continue;
            check(text.substr(1));
            check(text.substr(0, text.size() - 1));
            for (const std::size_t at : {std::size_t{0}, text.size() / 2, text.size() - 1}) {
                std::string changed = text;
                changed[at] = static_cast<char>(changed[at] ^ 1);
                check(changed);
            }
        }
    }
    EXPECT_EQ(korean, 54);
    // An index outside the table is row 0.
    for (const std::int32_t index : {0, -1, INT32_MIN, 841, INT32_MAX}) {
        EXPECT_EQ(OID_LIST(index), OID_LIST(0)) << index;
        EXPECT_STREQ(sn_from_index(index), "UNDEF") << index;
        EXPECT_STREQ(ln_from_index(index), "undefined") << index;
        EXPECT_EQ(made(index_to_OBJECT_IDENTIFIER(index)), "(null)") << index;
    }
}

TEST_F(Objects, RecordsMayBeNullOrWithoutData) {
    for (const auto &column : kColumns)
        EXPECT_EQ(column.second(nullptr, 5), 0U);
    const OBJECT_IDENTIFIER no_data = {6, nullptr, 7, 0};
    const String oid = string_of(0x86, "2.5.4.3");
    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(nullptr, &no_data), 0);
    EXPECT_LT(cmp_OBJECT_IDENTIFIER(nullptr, oid.get()), 0);
    EXPECT_GT(cmp_OBJECT_IDENTIFIER(oid.get(), nullptr), 0);
    EXPECT_EQ(cmp_ASN1_STRING(String(dup_OBJECT_IDENTIFIER(oid.get())).get(), oid.get()), 0);
    EXPECT_EQ(index_from_OBJECT_IDENTIFIER(&no_data), 0U);
    for (const std::int32_t length : {7, 6, -1}) {
        oid->length = length;
        EXPECT_EQ(index_from_OBJECT_IDENTIFIER(oid.get()), length == 7 ? 13U : 0U);
    }
    EXPECT_EQ(get_DigestID_from_OID(string_of(6, "1.2.3.4").get()), 0U);
}

}  // namespace
