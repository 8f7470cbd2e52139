// The registry: its data against libcrypto's, its lookups against a plain scan, its edge cases.
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "asn1/oid_table.hpp"
#include "support/allocation.hpp"
#include "support/openssl_peer.hpp"

namespace {

using Lookup = std::uint32_t (*)(const char *, std::uint32_t);

struct Column {
    const char *name;
    const char *OID_ROW::*text;
    Lookup lookup;
};
constexpr Column kColumns[] = {
    {"short name", &OID_ROW::short_name, index_from_sn},
    {"long name", &OID_ROW::long_name, index_from_ln},
    {"dotted text", &OID_ROW::dotted, index_from_oid_string},
};

struct FreeOid {
    void operator()(OBJECT_IDENTIFIER *oid) const { free_OBJECT_IDENTIFIER(oid); }
};
using Oid = std::unique_ptr<OBJECT_IDENTIFIER, FreeOid>;

/// The text of an identifier, "(none)" for null.
std::string text_of(const Oid &oid) {
    return oid == nullptr ? "(none)" : std::string(reinterpret_cast<const char *>(oid->data));
}

/// A record over a text that stays the caller's.
OBJECT_IDENTIFIER borrowed(std::string &text) {
    return {6, reinterpret_cast<std::uint8_t *>(text.data()), static_cast<std::int32_t>(text.size()), 0};
}

Oid oid_of_row(std::string_view short_name) {
    return Oid(index_to_OBJECT_IDENTIFIER(static_cast<std::int32_t>(
        index_from_sn(short_name.data(), static_cast<std::uint32_t>(short_name.size())))));
}

// ---- The data ----

/// Rows that are not what libcrypto has at the same number, and why.
struct Difference {
    int first;
    int last;
    const char *reason;
};
constexpr const char *kDot = "a text of one or two arcs ends in a dot";
constexpr const char *kOneArc = "libcrypto cannot encode a single arc, so it has no text";
constexpr const char *kNull = "libcrypto has no text, the registry stores 0.0 with a dot";
constexpr const char *kPlaceholder = "a placeholder row";
constexpr const char *kKorean = "libcrypto gave the number to another object";
constexpr Difference kDifferences[] = {
    {0, 0, "the registry writes 0.0 for undefined"},
    {11, 11, kDot},
    {102, 102, "a placeholder; libcrypto has uid, which is 0.9.2342.19200300.100.1.44"},
    {118, 118, kPlaceholder},
    {124, 124, "libcrypto dropped RLE"},
    {181, 181, kOneArc},
    {182, 182, kDot},
    {350, 350, kPlaceholder},
    {379, 379, kDot},
    {393, 393, kNull},
    {404, 404, kNull},
    {434, 434, kDot},
    {511, 511, kPlaceholder},
    {645, 645, kNull},
    {646, 646, kOneArc},
    {647, 647, kDot},
    {660, 660, "libcrypto's short name is street"},
    {676, 676, kDot},
    {772, 772, "libcrypto skipped the number"},
    {773, 773, "libcrypto's short name is KISA"},
    {774, 775, "libcrypto skipped the numbers"},
    {780, 795, kKorean},
    {796, 800, "libcrypto has these at 782-784 and 781, and no desMAC"},
    {801, 830, kKorean},
    {831, 835, "OCSP nonce and PKCS#1 names, which libcrypto has under other names and numbers"},
    {836, 836, "the maker's own"},
    {837, 838, "KISA trust lists, which libcrypto does not know"},
    {839, 839, "the maker's own"},
    {840, 840, "libcrypto has ecdsa-with-SHA256 at 794"},
};

const char *known_difference(int row) {
    for (const Difference &difference : kDifferences) {
        if (row >= difference.first && row <= difference.last) return difference.reason;
    }
    return nullptr;
}

TEST(ObjectRegistry, RowsAreThoseOfLibcryptoExceptWhereAReasonIsKnown) {
    for (int i = 0; i < TLX_OID_COUNT; ++i) {
        const auto peer = tlx_test::openssl::object_row(i);
        const OID_ROW *row = OID_LIST(i);
        if (const char *reason = known_difference(i)) {
            EXPECT_FALSE(row->short_name == peer.short_name && row->long_name == peer.long_name &&
                         row->dotted == peer.dotted)
                << "row " << i << " is the same, but was to differ because " << reason;
            continue;
        }
        EXPECT_EQ(row->short_name, peer.short_name) << "row " << i;
        EXPECT_EQ(row->long_name, peer.long_name) << "row " << i;
        EXPECT_EQ(row->dotted, peer.dotted) << "row " << i;
    }
}

TEST(ObjectRegistry, IdentifiersThatLibcryptoHasElsewhereAreTheSame) {
    struct Case {
        int row;
        int libcrypto_number;
    };
    constexpr Case kCases[] = {{660, 660}, {773, 773}, {796, 782}, {797, 783}, {798, 784}, {799, 781},
                               {831, 366}, {832, 919}, {833, 911}, {834, 935}, {835, 912}, {840, 794}};
    for (const Case &c : kCases) {
        EXPECT_EQ(OID_LIST(c.row)->dotted, tlx_test::openssl::object_row(c.libcrypto_number).dotted)
            << "row " << c.row;
    }
}

TEST(ObjectRegistry, EveryDottedTextIsWellFormed) {
    for (int i = 1; i < TLX_OID_COUNT; ++i) {
        std::string text = OID_LIST(i)->dotted;
        if (text.empty()) continue;
        const bool dot_at_end = text.back() == '.';
        if (dot_at_end) text.pop_back();
        const auto arcs = std::count(text.begin(), text.end(), '.') + 1;
        EXPECT_EQ(dot_at_end, arcs < 3) << "row " << i << " has " << arcs << " arcs";
        EXPECT_EQ(text.find_first_not_of("0123456789."), std::string::npos) << "row " << i;
        EXPECT_EQ(text.find(".."), std::string::npos) << "row " << i;
        EXPECT_TRUE(text[0] >= '0' && text[0] <= '2') << "row " << i;
    }
}

TEST(ObjectRegistry, KoreanRows) {
    int korean = 0;
    for (int i = 0; i < TLX_OID_COUNT; ++i) {
        korean += std::string_view(OID_LIST(i)->dotted).starts_with("1.2.410");
    }
    EXPECT_EQ(korean, 54);
    for (int i = 805; i <= 830; ++i) {
        EXPECT_EQ(OID_LIST(i)->dotted, "1.2.410.100001.1." + std::to_string(i - 804));
    }
    struct Case {
        const char *name;  // short or long
        const char *dotted;
    };
    constexpr Case kCases[] = {
        {"npki-alg", "1.2.410.200004.1"},
        {"HAS-160", "1.2.410.200004.1.2"},
        {"SEED-ECB", "1.2.410.200004.1.3"},
        {"SEED-CBC", "1.2.410.200004.1.4"},
        {"SEED-CFB", "1.2.410.200004.1.5"},
        {"SEED-OFB", "1.2.410.200004.1.6"},
        {"GPKIpbeWithSHA1AndSEED-CBC", "1.2.410.200004.1.4.2"},
        {"kcdsaWithHAS160", "1.2.410.200004.1.8"},
        {"KCDSAwithSHA1", "1.2.410.200004.1.9"},
        {"pbeWithSHA1AndSEED-CBC", "1.2.410.200004.1.15"},
        {"kcdsa1", "1.2.410.200004.1.21"},
        {"HAS160withKCDSA1", "1.2.410.200004.1.22"},
        {"KCDSA1withSHA1", "1.2.410.200004.1.23"},
        {"kisa-identifyData", "1.2.410.200004.6.1"},
        {"kisa-ctl-subjectusage", "1.2.410.200004.8.1.1.1"},
        {"kisa-identifyData2", "1.2.410.200004.10.1.1"},
        {"VID", "1.2.410.200004.10.1.1.1"},
        {"EncryptedVID", "1.2.410.200004.10.1.1.2"},
        {"randomNum", "1.2.410.200004.10.1.1.3"},
        {"id-kisa-HSM", "1.2.410.200004.10.1.2"},
        {"kftc", "1.2.410.200005"},
        {"yessignCA", "1.2.410.200005.1"},
        {"gcma", "1.2.410.100001"},
        {"gpki-alg", "1.2.410.100001.1"},
        {"NEAT", "1.2.410.100001.1.1"},
        {"pbeWithSHA1AndARIA_CBC", "1.2.410.100001.1.24"},
        {"kisa-ctl", "1.3.6.1.4.1.311.10.1"},
    };
    for (const Case &c : kCases) {
        EXPECT_EQ(text_of(Oid(get_OBJECT_IDENTIFIER(c.name, 0))), c.dotted) << c.name;
    }
}

TEST(ObjectRegistry, TextsThatRepeatAndTextsThatAreEmpty) {
    EXPECT_EQ(std::count_if(std::begin(tlx::oid::kTable), std::end(tlx::oid::kTable),
                            [](const tlx::oid::Row &row) { return *row.texts.dotted == '\0'; }),
              48);
    using Repeats = std::map<std::string, std::vector<int>>;
    const auto repeats = [](const Column &column) {
        Repeats rows;
        for (int i = 0; i < TLX_OID_COUNT; ++i) {
            rows[OID_LIST(i)->*column.text].push_back(i);
        }
        rows.erase("");
        std::erase_if(rows, [](const auto &entry) { return entry.second.size() == 1; });
        return rows;
    };
    const Repeats names = {{"(null)", {102, 118, 350, 511}}, {"NULL", {393, 404}}};
    EXPECT_EQ(repeats(kColumns[0]), names);
    EXPECT_EQ(repeats(kColumns[1]), names);
    EXPECT_EQ(
        repeats(kColumns[2]),
        (Repeats{{"0.0.", {393, 404, 645}}, {"1.3.", {379, 676}}, {"1.3.6.1.5.5.7.48.1.2", {366, 831}}}));
}

TEST(ObjectRegistry, RowsOfEachClassAndWithEachIdentifier) {
    std::map<std::uint32_t, int> classes;
    std::map<std::uint32_t, int> digests;
    std::set<std::uint32_t> ciphers;
    int with_cipher = 0;
    for (const tlx::oid::Row &row : tlx::oid::kTable) {
        ++classes[row.algorithm_class];
        ++digests[row.digest_id];
        ciphers.insert(row.cipher_id);
        with_cipher += row.cipher_id != 0;
    }
    EXPECT_EQ(classes, (std::map<std::uint32_t, int>{{0, 681}, {1, 19}, {2, 88}, {3, 28}, {4, 25}}));
    digests.erase(0);
    EXPECT_EQ(digests, (std::map<std::uint32_t, int>{{0x05000100, 21},
                                                     {0x05000200, 2},
                                                     {0x05000300, 5},
                                                     {0x05000400, 2},
                                                     {0x05000500, 2},
                                                     {0x06000100, 6},
                                                     {0x07000100, 6},
                                                     {0x08000100, 2},
                                                     {0x15000100, 2}}));
    EXPECT_EQ(ciphers.size(), 50U) << "49 identifiers and none";
    EXPECT_EQ(with_cipher, 101);
}

// ---- Lookups ----

/// What a scan in index order finds.
class PlainScan {
  public:
    explicit PlainScan(const Column &column) {
        for (int i = 0; i < TLX_OID_COUNT; ++i) {
            texts_.emplace_back(OID_LIST(i)->*column.text);
        }
    }
    std::uint32_t find(std::string_view text) const {
        if (text.empty()) return 0;
        const auto found = std::find(texts_.begin(), texts_.end(), text);
        return found == texts_.end() ? 0 : static_cast<std::uint32_t>(found - texts_.begin());
    }

  private:
    std::vector<std::string_view> texts_;
};

/// Looks the text up in every column, from a block that ends where the text does.
void expect_as_scan(const std::array<PlainScan, 3> &scans, const std::string &text) {
    const std::unique_ptr<char[]> exact(new char[text.size()]);
    std::copy(text.begin(), text.end(), exact.get());
    for (std::size_t c = 0; c < scans.size(); ++c) {
        EXPECT_EQ(kColumns[c].lookup(exact.get(), static_cast<std::uint32_t>(text.size())),
                  scans[c].find(text))
            << kColumns[c].name << " \"" << text << "\"";
    }
}

TEST(ObjectLookup, AnswersAsAPlainScanForEveryRowAndItsNearMisses) {
    const std::array<PlainScan, 3> scans = {PlainScan(kColumns[0]), PlainScan(kColumns[1]),
                                            PlainScan(kColumns[2])};
    for (int i = 0; i < TLX_OID_COUNT; ++i) {
        for (const Column &column : kColumns) {
            const std::string text = OID_LIST(i)->*column.text;
            expect_as_scan(scans, text);
            expect_as_scan(scans, text + '1');
            expect_as_scan(scans, text + '\0');
            if (text.empty()) continue;
            expect_as_scan(scans, text.substr(1));
            expect_as_scan(scans, text.substr(0, text.size() - 1));
            for (const std::size_t at : {std::size_t{0}, text.size() / 2, text.size() - 1}) {
                std::string changed = text;
                changed[at] = static_cast<char>(changed[at] ^ 1);
                expect_as_scan(scans, changed);
            }
        }
    }
}

TEST(ObjectLookup, AnswersAsAPlainScanForRandomTexts) {
    const std::array<PlainScan, 3> scans = {PlainScan(kColumns[0]), PlainScan(kColumns[1]),
                                            PlainScan(kColumns[2])};
    std::mt19937 random(410);
    const std::string_view alphabet = "0123456789.CNOLS";
    for (int i = 0; i < 5000; ++i) {
        std::string text(1 + random() % 8, ' ');
        for (char &c : text) {
            c = alphabet[random() % alphabet.size()];
        }
        expect_as_scan(scans, text);
    }
}

TEST(ObjectLookup, LengthDecidesAndNothingBeyondItIsRead) {
    struct Case {
        const char *text;
        std::uint32_t len;
        std::uint32_t sn;
        std::uint32_t ln;
        std::uint32_t dotted;
    };
    constexpr Case kCases[] = {
        {"1.2.840.113549.1.1.1", 20, 0, 0, 6},
        {"1.2.840.113549.1.1.1", 19, 0, 0, 0},
        {"1.2.840.113549.1.1.11", 20, 0, 0, 6},
        {"1.3.6.1.5.5.7.48.1.2", 20, 0, 0, 366},
        {"1.3.", 4, 0, 0, 379},
        {"2.5.", 4, 0, 0, 11},
        {"2.5", 3, 0, 0, 0},
        {"0.0.", 4, 0, 0, 393},
        {"0.0", 3, 0, 0, 0},
        {"UNDEF", 5, 0, 0, 0},
        {"undefined", 9, 0, 0, 0},
        {"(null)", 6, 102, 102, 0},
        {"NULL", 4, 393, 393, 0},
        {"sha256", 6, 0, 672, 0},
        {"SHA256", 6, 672, 0, 0},
        {"SHA256withRSA", 6, 672, 0, 0},
        {"CN", 1, 14, 0, 0},
        {"CN", 2, 13, 0, 0},
        {"CN", 0, 0, 0, 0},
        {"CN", 0xFFFFFFFF, 0, 0, 0},
        {nullptr, 0, 0, 0, 0},
        {nullptr, 5, 0, 0, 0},
    };
    for (const Case &c : kCases) {
        const char *shown = c.text != nullptr ? c.text : "null";
        EXPECT_EQ(index_from_sn(c.text, c.len), c.sn) << shown << ", " << c.len;
        EXPECT_EQ(index_from_ln(c.text, c.len), c.ln) << shown << ", " << c.len;
        EXPECT_EQ(index_from_oid_string(c.text, c.len), c.dotted) << shown << ", " << c.len;
    }
}

TEST(ObjectLookup, RecordsWithoutTextAreRowZero) {
    std::string text = "2.5.4.3";
    OBJECT_IDENTIFIER oid = borrowed(text);
    EXPECT_EQ(index_from_OBJECT_IDENTIFIER(&oid), 13U);
    oid.length = 6;
    EXPECT_EQ(index_from_OBJECT_IDENTIFIER(&oid), 0U);
    oid.length = -1;
    EXPECT_EQ(index_from_OBJECT_IDENTIFIER(&oid), 0U);
    oid = {6, nullptr, 7, 0};
    EXPECT_EQ(index_from_OBJECT_IDENTIFIER(&oid), 0U);
    EXPECT_EQ(index_from_OBJECT_IDENTIFIER(nullptr), 0U);
}

TEST(ObjectRows, AnIndexOutsideTheTableIsRowZero) {
    for (const std::int32_t index : {0, -1, INT32_MIN, 841, INT32_MAX}) {
        EXPECT_EQ(OID_LIST(index), OID_LIST(0)) << index;
        EXPECT_STREQ(sn_from_index(index), "UNDEF") << index;
        EXPECT_STREQ(ln_from_index(index), "undefined") << index;
        EXPECT_EQ(Oid(index_to_OBJECT_IDENTIFIER(index)), nullptr) << index;
    }
    EXPECT_STREQ(sn_from_index(840), "ecdsa-with-SHA256");
    EXPECT_STREQ(ln_from_index(65), "sha1WithRSAEncryption");
}

// ---- Records ----

TEST(ObjectRecords, HoldTheDottedTextWithAZeroAfterIt) {
    const tlx_test::LeakCheck leaks;
    const Oid oid(index_to_OBJECT_IDENTIFIER(6));
    ASSERT_NE(oid, nullptr);
    EXPECT_EQ(oid->type, 6);
    EXPECT_EQ(oid->length, 20);
    EXPECT_EQ(oid->extra, 0);
    EXPECT_EQ(std::memcmp(oid->data, "1.2.840.113549.1.1.1", 21), 0);
}

TEST(ObjectRecords, EveryRowWithATextMakesOneThatLeadsBackToTheFirstRowWithIt) {
    const tlx_test::LeakCheck leaks;
    const std::map<int, std::uint32_t> repeats = {{404, 393}, {645, 393}, {676, 379}, {831, 366}};
    for (int i = 1; i < TLX_OID_COUNT; ++i) {
        const Oid oid(index_to_OBJECT_IDENTIFIER(i));
        const std::string_view dotted = OID_LIST(i)->dotted;
        ASSERT_EQ(oid == nullptr, dotted.empty()) << "row " << i;
        if (oid == nullptr) continue;
        const auto first = repeats.find(i);
        EXPECT_EQ(index_from_OBJECT_IDENTIFIER(oid.get()),
                  first != repeats.end() ? first->second : static_cast<std::uint32_t>(i));
    }
}

TEST(ObjectRecords, ByNameOrByIndex) {
    const tlx_test::LeakCheck leaks;
    struct Case {
        const char *name;
        std::uint32_t index;
        const char *dotted;
    };
    constexpr Case kCases[] = {
        {"sha256", 0, "2.16.840.1.101.3.4.2.1"},  // a long name
        {"CN", 0, "2.5.4.3"},
        {"commonName", 0, "2.5.4.3"},
        {"CN", 6, "1.2.840.113549.1.1.1"},  // the index wins
        {nullptr, 6, "1.2.840.113549.1.1.1"},
        {"X500", 0, "2.5."},
        {"Commonname", 0, "(none)"},
        {"", 0, "(none)"},
        {nullptr, 0, "(none)"},
        {"(null)", 0, "(none)"},
        {"UNDEF", 0, "(none)"},
        {"des-ede3", 0, "(none)"},
        {nullptr, 33, "(none)"},
        {"CN", 841, "(none)"},
        {"CN", 0x80000006, "(none)"},
        {"CN", 0xFFFFFFFF, "(none)"},
    };
    for (const Case &c : kCases) {
        EXPECT_EQ(text_of(Oid(get_OBJECT_IDENTIFIER(c.name, c.index))), c.dotted)
            << (c.name != nullptr ? c.name : "null") << ", " << c.index;
    }
}

TEST(ObjectRecords, ACopyOwnsItsTextAndKeepsEveryField) {
    const tlx_test::LeakCheck leaks;
    std::string text = "1.2.410.200004";
    OBJECT_IDENTIFIER original = {0x86, reinterpret_cast<std::uint8_t *>(text.data()), 7, 3};
    const Oid copy(dup_OBJECT_IDENTIFIER(&original));
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->data, original.data);
    EXPECT_EQ(copy->type, 0x86);
    EXPECT_EQ(copy->length, 7);
    EXPECT_EQ(copy->extra, 3);
    EXPECT_EQ(text_of(copy), "1.2.410");
    EXPECT_EQ(Oid(dup_OBJECT_IDENTIFIER(nullptr)), nullptr);
}

TEST(ObjectRecords, CompareByTextAlone) {
    std::string short_text = "2.5.4.3";
    std::string same_text = "2.5.4.3";
    std::string greater_text = "2.5.4.4";
    std::string long_text = "1.2.410.200004";
    OBJECT_IDENTIFIER a = borrowed(short_text);
    OBJECT_IDENTIFIER same = borrowed(same_text);
    same.type = 0x86;
    same.extra = 1;
    OBJECT_IDENTIFIER greater = borrowed(greater_text);
    OBJECT_IDENTIFIER longer = borrowed(long_text);
    OBJECT_IDENTIFIER without = {6, nullptr, 7, 0};

    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(&a, &same), 0);
    EXPECT_EQ(cmp_OBJECT_IDENTIFIER(nullptr, &without), 0);
    const OBJECT_IDENTIFIER *ascending[] = {nullptr, &a, &greater, &longer};
    for (std::size_t i = 0; i + 1 < std::size(ascending); ++i) {
        EXPECT_LT(cmp_OBJECT_IDENTIFIER(ascending[i], ascending[i + 1]), 0) << i;
        EXPECT_GT(cmp_OBJECT_IDENTIFIER(ascending[i + 1], ascending[i]), 0) << i;
    }
}

// ---- Algorithms ----

TEST(ObjectAlgorithms, IdentifiersOfRows) {
    const tlx_test::LeakCheck leaks;
    struct Case {
        const char *name;
        std::uint32_t digest;
        std::uint32_t cipher;
        std::uint32_t type;
    };
    constexpr Case kCases[] = {
        {"SHA1", 0x05000100, 0, 1},
        {"RSA-SHA256", 0x05000300, 0x20000001, 3},
        {"RSA-SHA1", 0x05000100, 0x20000001, 1},           // a signature, but of the digests' class
        {"ecdsa-with-SHA1", 0x05000100, 0, 3},             // class without cipher ...
        {"ecdsa-with-SHA256", 0x05000300, 0x50000000, 0},  // ... and the other way round
        {"rsaEncryption", 0, 0x20000000, 3},
        {"PBE-SHA1-3DES", 0x05000100, 0x02010220, 4},
        {"PBE-SHA1-2DES", 0x05000100, 0x02001220, 4},
        {"PBES2", 0, 0, 4},
        {"SEED-CBC", 0, 0x04000120, 2},
        {"ARIA-ECB", 0, 0x03000120, 0},  // answers as ARIA-CBC
        {"ARIA-CFB", 0, 0x03000140, 0},
        {"NEAT-CBC", 0, 0, 0},
        {"pbeWithHAS160AndARIA_CBC", 0x07000100, 0x03000120, 4},
        {"KCDSAwithHAS160", 0x07000100, 0x40000000, 3},
        {"id-RSASSA-PSS", 0, 0x20000002, 0},
        {"hmacWithSHA1", 0x15000100, 0, 1},
        {"desMAC", 0, 0x02000100, 1},
        {"CN", 0, 0, 0},
    };
    for (const Case &c : kCases) {
        const Oid oid = oid_of_row(c.name);
        EXPECT_EQ(get_DigestID_from_OID(oid.get()), c.digest) << c.name;
        EXPECT_EQ(get_CipherID_from_OID(oid.get()), c.cipher) << c.name;
        EXPECT_EQ(get_AlgorType_from_OID(oid.get()), c.type) << c.name;
    }
    std::string unknown = "1.2.3.4";
    const OBJECT_IDENTIFIER record = borrowed(unknown);
    for (const OBJECT_IDENTIFIER *oid : {&record, static_cast<const OBJECT_IDENTIFIER *>(nullptr)}) {
        EXPECT_EQ(get_DigestID_from_OID(oid), 0U);
        EXPECT_EQ(get_CipherID_from_OID(oid), 0U);
        EXPECT_EQ(get_AlgorType_from_OID(oid), 0U);
    }
}

TEST(ObjectAlgorithms, RowsThatStandForAnIdentifier) {
    const tlx_test::LeakCheck leaks;
    struct Case {
        std::uint32_t id;
        const char *short_name;  // "UNDEF": no identifier is made
    };
    constexpr Case kDigests[] = {
        {0x05000100, "SHA1"},         {0x05000200, "RSA-SHA224"}, {0x05000300, "RSA-SHA256"},
        {0x06000100, "MD5"},          {0x07000100, "HAS-160"},    {0x08000100, "MDC2"},
        {0x15000100, "hmacWithSHA1"}, {0x05000600, "UNDEF"},      {0, "UNDEF"},
    };
    constexpr Case kCiphers[] = {
        {0x01000140, "AES-128-CFB"},
        {0x02000100, "DES-CDMF"},  // not DES-ECB
        {0x02000120, "DES-CBC"},
        {0x02010220, "DES-EDE3-CBC"},
        {0x03000120, "ARIA-CBC"},
        {0x04000120, "GPKIpbeWithSHA1AndSEED-CBC"},  // not SEED-CBC
        {0x20000000, "RSA"},                         // not rsaEncryption
        {0x20000001, "RSA-MD2"},
        {0x20000002, "id-RSASSA-PSS"},
        {0x30000000, "DSA"},
        {0x40000000, "HAS160withKCDSA1"},
        {0x50000000, "ecdsa-with-SHA256"},
        {0x02010200, "UNDEF"},  // DES-EDE3 has no dotted text
        {0x06000160, "UNDEF"},  // nor has BF-OFB
        {0x03000100, "UNDEF"},  // no row has ARIA in ECB mode
        {0xFFFFFFFF, "UNDEF"},
        {0, "UNDEF"},
    };
    const auto name_of = [](OBJECT_IDENTIFIER *made) {
        const Oid oid(made);
        return std::string(sn_from_index(static_cast<std::int32_t>(index_from_OBJECT_IDENTIFIER(oid.get()))));
    };
    for (const Case &c : kDigests) {
        EXPECT_EQ(name_of(get_OID_from_DigestID(c.id)), c.short_name) << std::hex << c.id;
    }
    for (const Case &c : kCiphers) {
        EXPECT_EQ(name_of(get_OID_from_CipherID(c.id)), c.short_name) << std::hex << c.id;
    }
}

TEST(ObjectAlgorithms, IdentifiersSurviveTheWayThereAndBack) {
    std::set<std::uint32_t> without_text;
    for (const tlx::oid::Row &row : tlx::oid::kTable) {
        if (row.digest_id != 0) {
            const Oid digest(get_OID_from_DigestID(row.digest_id));
            EXPECT_EQ(get_DigestID_from_OID(digest.get()), row.digest_id) << "row " << row.index;
        }
        const Oid cipher(get_OID_from_CipherID(row.cipher_id));
        if (cipher == nullptr) {
            without_text.insert(row.cipher_id);
        } else {
            EXPECT_EQ(get_CipherID_from_OID(cipher.get()), row.cipher_id) << "row " << row.index;
        }
    }
    EXPECT_EQ(without_text, (std::set<std::uint32_t>{0, 0x02000240, 0x02000260, 0x02010200, 0x02010240,
                                                     0x02010260, 0x05000100, 0x05000140, 0x05000160,
                                                     0x06000100, 0x06000140, 0x06000160}));
}

TEST(ObjectRecords, FailingAllocationsGiveNullAndLeakNothing) {
    std::string text = "2.5.4.3";
    const OBJECT_IDENTIFIER original = borrowed(text);
    const auto failures = [](auto make) {
        return tlx_test::sweep_failing_allocations([&] { return Oid(make()) != nullptr; });
    };
    EXPECT_EQ(failures([] { return index_to_OBJECT_IDENTIFIER(6); }), 2U);
    EXPECT_EQ(failures([] { return get_OBJECT_IDENTIFIER("sha256", 0); }), 2U);
    EXPECT_EQ(failures([] { return get_OID_from_DigestID(0x05000100); }), 2U);
    EXPECT_EQ(failures([] { return get_OID_from_CipherID(0x50000000); }), 2U);
    EXPECT_EQ(failures([&] { return dup_OBJECT_IDENTIFIER(&original); }), 2U);
}

}  // namespace
