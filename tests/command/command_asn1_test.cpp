// tlxpki asn1: lines and JSON for every kind of element, Korean text, broken elements and hostile depth.
#include "program.hpp"

namespace command_test {
namespace {

Result dump(const std::string &octets, const Arguments &options = {}) {
    Arguments arguments{"asn1"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(write_file("element", octets));
    return run(arguments);
}

TEST(CommandAsn1, ShowsTypeAndValue) {
    const std::pair<const char *, std::string> cases[] = {
        {"0101FF", "1  BOOLEAN  TRUE"},
        {"020180", "1  INTEGER  -128"},
        {"02087FFFFFFFFFFFFFFF", "8  INTEGER  9223372036854775807"},
        {"0209010000000000000000", "9  INTEGER  010000000000000000"},
        {"0303041230", "3  BIT STRING  1230 (4 unused bits)"},
        {"03020080", "2  BIT STRING  80"},
        {"0603550403", "3  OBJECT IDENTIFIER  2.5.4.3 (CN)"},
        {"06092A831A8C9A44010101", "9  OBJECT IDENTIFIER  1.2.410.200004.1.1.1"},
        {"060388378A", "3  OBJECT IDENTIFIER  88378A"},  // ends within an arc
        {"060A81FFFFFFFFFFFFFFFF7F", "10  OBJECT IDENTIFIER  2.18446744073709551535"},
        {"060B82FFFFFFFFFFFFFFFFFF7F", "11  OBJECT IDENTIFIER  82FFFFFFFFFFFFFFFFFF7F"},  // above 64 bits
        {"0A0105", "1  ENUMERATED  5"},
        {"0C09ED998DEAB8B8EB8F99", "9  UTF8String  \"홍길동\""},
        {"1E06D64DAE38B3D9", "6  BMPString  \"홍길동\""},
        {"1406C8ABB1E6B5BF", "6  T61String  \"홍길동\""},  // KS X 1001
        {"1306C8ABB1E6B5BF", "6  PrintableString  \"홍길동\""},
        {"1402E9E8", "2  T61String  \"郵\""},
        {"1401E9", "1  T61String  \"é\""},  // no KS X 1001: Latin-1
        {"1C080000D64D0000AE38", "8  UniversalString  \"홍길\""},
        {"1E03004100", "3  BMPString  004100"},
        {"0C02C328", "2  UTF8String  C328"},
        {"0C061B5B33316D41", "6  UTF8String  \"\\u{1B}[31mA\""},
        {"0C03E280AE", "3  UTF8String  \"\\u{202E}\""},
        {"170D3236303130313030303030305A", "13  UTCTime  \"260101000000Z\""},
        {"180F32303236303130313030303030305A", "15  GeneralizedTime  \"20260101000000Z\""},
        {"8203666F6F", "3  [2]  \"foo\""},
        {"8003FFFFFF", "3  [0]  FFFFFF"},
        {"4101AA", "1  [APPLICATION 1]  AA"},
        {"DF8F7F01AA", "1  [PRIVATE 2047]  AA"},
        {"0F01AA", "1  [UNIVERSAL 15]  AA"},
        {"3100", "0  SET"},
    };
    for (const auto &[element, line] : cases) {
        const Result result = dump(octets(element));
        EXPECT_EQ(result.status, 0) << element << result;
        EXPECT_TRUE(result.says("  " + line + "\n")) << line << result;  // from the length on
    }
}

TEST(CommandAsn1, LinesShowOffsetsHeadersAndNesting) {
    // SEQUENCE { SEQUENCE (indefinite) { INTEGER 5 }, OCTET STRING { SEQUENCE { NULL } }, BIT STRING {
    // SEQUENCE {} } }
    const std::string nested = octets("3016 3080020105 0000 04043002 0500 03 03 00 3000 04 02 3001");
    EXPECT_EQ(dump(nested).output,
              "  offset  header             length  element\n"
              "       0  30 16                  22  SEQUENCE\n"
              "       2  30 80               indef    SEQUENCE\n"
              "       4  02 01                   1      INTEGER  5\n"
              "       7  00 00                   0      end of contents\n"
              "       9  04 04                   4    OCTET STRING  30020500\n"
              "      11  30 02                   2      SEQUENCE\n"
              "      13  05 00                   0        NULL\n"
              "      15  03 03                   3    BIT STRING  3000\n"
              "      18  30 00                   0      SEQUENCE\n"
              "      20  04 02                   2    OCTET STRING  3001\n");
    const Json children = dump(nested, {"--json"}).json().at(0)["elements"].at(0)["children"];
    ASSERT_EQ(children.size(), 4U);
    EXPECT_EQ(children[0]["length"], "indefinite");
    EXPECT_EQ(children[0]["children"][0],
              (Json{{"offset", 4}, {"header", "0201"}, {"length", 1}, {"tag", "INTEGER"}, {"value", "5"}}));
    EXPECT_EQ(children[1]["children"][0]["children"][0]["tag"], "NULL");
    EXPECT_EQ(children[2]["unused_bits"], 0);
    EXPECT_EQ(children[3]["hex"], "3001");
    EXPECT_FALSE(children[3].contains("children")) << "what is broken is not looked into";
}

TEST(CommandAsn1, LongValuesAreCutUnlessAskedFor) {
    const std::string data(100, '\xAB');
    std::string shown;
    for (int i = 0; i < 32; ++i)
        shown += "AB";
    EXPECT_TRUE(dump(element(4, data)).says("OCTET STRING  " + shown + "... (100 octets)\n"));
    EXPECT_TRUE(dump(element(4, data), {"--full"}).says("ABAB\n"));
    const Json json = dump(element(4, data), {"--json"}).json();
    EXPECT_EQ(json.at(0)["elements"].at(0)["hex"].get<std::string>().size(), 200U);
    // Cut between characters, not within one.
    std::string korean;
    for (int i = 0; i < 60; ++i)
        korean += "가";
    EXPECT_TRUE(dump(element(12, korean)).says("가\"...\n"));
}

TEST(CommandAsn1, BrokenElementsAreShownWhereTheyStand) {
    const struct {
        const char *octets;
        int offset;
        std::string why;
    } cases[] = {
        {"3003020105 0402AA", 5, "its length is 2, but only 1 octets are left"},
        {"3003020205 00", 2, "its length is 2, but only 1 octets are left"},  // past its parent
        {"3001 02", 2, "the length is cut off"},
        {"3084 0000", 0, "the length is cut off"},
        {"1F81", 0, "the identifier is cut off"},
        {"1F8181818181 01 00", 0, "the tag number is too large"},
        {"3089 000000000000000000", 0, "a length of 9 octets is too large"},
        {"3088 FFFFFFFFFFFFFFFF", 0, "its length is 18446744073709551615, but only 0 octets are left"},
        {"0480 0000", 0, "a primitive element has an indefinite length"},
        {"3080 0500", 2, "its end-of-contents octets are missing"},
        {"30FF", 0, "a length of 127 octets is too large"},
    };
    for (const auto &broken : cases) {
        const Result result = dump(octets(broken.octets));
        EXPECT_EQ(result.status, 2) << broken.octets << result;
        EXPECT_TRUE(result.says("BROKEN: " + broken.why + "\n")) << broken.octets << result;
        EXPECT_TRUE(
            result.complains("broken element at offset " + std::to_string(broken.offset) + ": " + broken.why))
            << broken.octets << result;
        const Result json = dump(octets(broken.octets), {"--json"});
        EXPECT_EQ(json.status, 2) << broken.octets;
        EXPECT_NE(json.json().dump().find(broken.why), std::string::npos) << broken.octets;
    }
}

TEST(CommandAsn1, DepthIsBounded) {
    std::string nested = octets("0500");
    for (int i = 0; i < 128; ++i)
        nested = element(0x30, nested);
    EXPECT_EQ(dump(nested).status, 0);
    nested = element(0x30, nested);
    const Result deeper = dump(nested);
    EXPECT_EQ(deeper.status, 2);
    EXPECT_TRUE(deeper.says("BROKEN: nested more than 128 deep")) << deeper;
    // Depth without lengths, in contents of several kinds.
    for (const char *header : {"3080", "2480", "A080"}) {
        std::string many;
        for (int i = 0; i < 1'000'000; ++i)
            many += octets(header);
        EXPECT_TRUE(dump(many).complains("nested more than 128 deep")) << header;
        EXPECT_TRUE(dump(element(4, element(0x30, many)), {"--json"}).json().is_array()) << header;
    }
}

TEST(CommandAsn1, ShowsEveryBlockOfAPemFile) {
    const std::string path = write_file("blocks", "text before\r\n" + pem_of("A", octets("020101")) +
                                                      "and between\n" + pem_of("B", octets("020102")));
    const Result result = run({"asn1", path});
    EXPECT_EQ(result.status, 0) << result;
    EXPECT_TRUE(result.says("# " + path + ", PEM block 1: A\n")) << result;
    EXPECT_TRUE(result.says("# " + path + ", PEM block 2: B\n")) << result;
    const Json blocks = run({"asn1", "--json", path}).json();
    EXPECT_EQ(blocks.at(1)["label"], "B");
    EXPECT_EQ(blocks.at(1)["elements"][0]["value"], "2");
    // "-----BEGIN" within DER is no PEM.
    EXPECT_TRUE(
        dump(element(0x30, octets("0500") + element(4, "\n-----BEGIN A-----\n"))).says("OCTET STRING"));
}

}  // namespace
}  // namespace command_test
