// What all records and lists of the standard extensions have in common: encodings that come back, encodings
// that are refused, copies, memory that runs out.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/extension_types.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

const ExtensionType &type_named(std::string_view name) {
    for (const ExtensionType &type : kExtensionTypes) {
        if (type.name == name) return type;
    }
    ADD_FAILURE() << "no type " << name;
    return kExtensionTypes[0];
}

struct Samples {
    const char *type;
    Texts texts;
};
const Samples kSamples[] = {
    {"BASIC_CONSTRAINTS", {"30{01:FF}", "30{01:00}", "30{01:FF 02:00}", "30{01:FF 02:0100}"}},
    {"POLICY_CONSTRAINTS", {"30{}", "30{80:00 81:7F}", "30{A0{02:0080} A1{02:0100}}"}},
    {"AUTHORITY_KEYID",
     {"30{80:0102}", "30{82:05}", "30{80:01 A1{A4{30{31{30{06:550406 13:4B52}}}}} 82:00FF}"}},
    {"OTHERNAME",
     {"30{06:2B060104018237140203 A0{0C:6140622E63}}", "30{06:2A0304 A0{03:0560}}",
      "30{06:2A0304 A0{06:2A0304}}"}},
    {"EDIPARTYNAME", {"30{A1{0C:4142}}", "30{A0{1C:00000041} A1{1E:AC00}}"}},
    {"GENERAL_NAME",
     {"A0{06:2A0304 A0{30{02:05}}}", "81:6140622E63", "82:2A2E612E62", "A3{30{61{13:4B52}}}"}},
    {"GENERAL_NAME",
     {"A3{30{61{13:4B52}} 30{} 31{30{80:0A 81:05}}}", "A3{A1{05:}}", "A4{30{}}",
      "A4{30{31{30{06:550403 0C:EAB980}}}}"}},
    {"GENERAL_NAME",
     {"A5{A1{0C:4142}}", "A5{A0{13:41} A1{0C:4142}}", "86:687474703A2F2F61", "87:C0000201",
      "88:2A831A8C9A44"}},
    {"GENERAL_NAMES", {"30{82:61 82:62 87:7F000001}"}},
    {"KISA_IDENTIFY_DATA",
     {"30{0C:EAB980}",
      "30{0C:EAB980 30{30{06:2A831A8C9A440A010101 30{30{06:608648016503040201} A0{04:0102}}}}}"}},
    {"VID", {"30{30{06:608648016503040201}}", "30{30{06:608648016503040201 05:} A0{04:0102}}"}},
    {"SUBJECT_KEYID", {"04:0102"}},
    {"KEY_USAGE", {"03:0106", "03:070080", "03:00"}},
    {"OBJECT_IDENTIFIERS", {"30{}", "30{06:2A03 06:550403}"}},
    {"EXTENDED_KEY_USAGE", {"30{06:2B06010505070301}"}},
    {"NOTICE_NUMBERS", {"30{}", "30{02:01 02:0100}"}},
    {"NOTICE_REFERENCE", {"30{1A:41 30{02:01}}"}},
    {"USER_NOTICE", {"30{}", "30{1E:AC00}", "30{30{16:41 30{}}}", "30{30{0C:41 30{02:02}} 1A:4142}"}},
    {"POLICY_QUALIFIER_INFO",
     {"30{06:2B06010505070201 16:687474703A2F2F61}", "30{06:2B06010505070202 30{0C:41}}",
      "30{06:2A0304 A0{02:05}}"}},
    {"POLICY_QUALIFIER_INFOS", {"30{30{06:2A0304 05:} 30{06:2B06010505070202 30{}}}"}},
    {"POLICY_INFO", {"30{06:551D2000}", "30{06:2A831A8C9A4405020101 30{30{06:2B06010505070201 16:61}}}"}},
    {"CERTIFICATE_POLICIES", {"30{30{06:551D2000} 30{06:2A03}}"}},
    {"POLICY_MAPPING", {"30{06:2A03 06:2A04}"}},
    {"POLICY_MAPPINGS", {"30{30{06:2A03 06:2A04}}"}},
    {"GENERAL_SUBTREE", {"30{82:61}", "30{A4{30{}} 80:01 81:0100}"}},
    {"GENERAL_SUBTREES", {"30{30{82:61} 30{87:C0000200FFFFFF00}}"}},
    {"NAME_CONSTRAINTS", {"30{}", "30{A0{30{82:61}} A1{30{81:2E62}}}"}},
    {"DIST_POINT_NAME", {"A0{86:61}", "A1{30{06:550403 0C:41} 30{06:55040B 1A:42}}"}},
    {"DIST_POINT", {"30{}", "30{A0{A0{86:61}}}", "30{A0{A1{30{06:550403 0C:41}}} 81:0560 A2{A4{30{}}}}"}},
    {"CRL_DIST_POINTS", {"30{30{A0{A0{86:61}}} 30{A2{82:61}}}"}},
    {"issuing_DIST_POINT", {"30{}", "30{A0{A0{86:61}} 81:FF}", "30{82:FF 83:0560 84:FF 85:FF}"}},
    {"ACCESS_DESCRIPTION", {"30{06:2B06010505073001 86:61}"}},
    {"AUTHORITY_INFO_ACCESS", {"30{30{06:2B06010505073001 86:61} 30{06:2B06010505073002 82:61}}"}},
};

TEST(ExtensionRecords, WellFormedDerComesBack) {
    for (const Samples &samples : kSamples) {
        const ExtensionType &type = type_named(samples.type);
        expect_come_back(type, samples.texts);
        // A record that holds something already is filled anew.
        const LeakCheck leaks;
        void *record = type.make();
        for (const std::string &before : samples.texts) {
            for (const std::string &text : samples.texts) {
                EXPECT_EQ(type.decode(der_node(before).get(), &record), 0U);
                EXPECT_EQ(type.decode(der_node(text).get(), &record), 0U);
                EXPECT_EQ(encoded(type.encode, record), hex_of_text(text))
                    << type.name << " after " << before;
            }
        }
        type.free(record);
    }
}

TEST(ExtensionRecords, WhatIsNotDerOrNotKept) {
    const struct {
        const char *type, *input, *output;
    } cases[] = {
        {"BASIC_CONSTRAINTS", "30{01:01}", "30{01:FF}"},
        {"BASIC_CONSTRAINTS", "30{01:FF 04:00 02:05}", "30{01:FF}"},
        {"POLICY_CONSTRAINTS", "30{A0{02:05} A1{02:00}}", "30{80:05 81:00}"},
        {"POLICY_CONSTRAINTS", "30{81:01 83:02 80:02}", "30{80:02 81:01}"},
        {"AUTHORITY_KEYID", "30{82:05 84:00 80:01}", "30{80:01 82:05}"},
        {"GENERAL_NAME", "A5{30{A0{0C:41} A1{0C:42}}}", "A5{A0{0C:41} A1{0C:42}}"},
        {"GENERAL_NAME", "02:61", "82:61"},
        {"KEY_USAGE", "03:000600", "03:0106"},
        {"KEY_USAGE", "03:0500", "03:00"},
        {"DIST_POINT", "30{81:0000}", "30{81:00}"},
        {"issuing_DIST_POINT", "30{81:00 82:01}", "30{82:FF}"},
        {"GENERAL_SUBTREE", "30{82:61 80:00 81:00}", "30{82:61 81:00}"},
        {"VID", "30{30{06:2A03} 24{04:01 04:02}}", "30{30{06:2A03} A0{04:01}}"},
        {"KISA_IDENTIFY_DATA", "30{0C:41 30{30{06:2A03 30{30{06:2A04}} 05:} 30{}}}",
         "30{0C:41 30{30{06:2A03 30{30{06:2A04}}}}}"},
    };
    for (const auto &c : cases)
        expect_reencodes(type_named(c.type), c.input, c.output);
}

TEST(ExtensionRecords, RefusedWithTheirStatus) {
    const struct {
        const char *type;
        std::uint32_t status;
        Texts inputs;
    } cases[] = {
        {"BASIC_CONSTRAINTS",
         0x47230104,
         {"30{}", "30{02:01}", "30{01:FFFF}", "30{01:FF 02:}", "30:0101FF0205"}},
        {"AUTHORITY_KEYID", 0x4709002B, {"30{}"}},
        {"AUTHORITY_KEYID", 0x47090104, {"30{82:}", "30{01:FF}", "30{81:8261}", "30:800101820501"}},
        {"AUTHORITY_KEYID", 0x470D002B, {"30{A1{}}"}},
        {"AUTHORITY_KEYID", 0x470D0104, {"30{80:01 A1{89:61}}"}},
        {"OTHERNAME", 0x4705002B, {"30{06:2A03}"}},
        {"OTHERNAME",
         0x47050104,
         {"30{06:2A03 A0{}}", "30{06:2A03 A0{05: 05:}}", "30{06:2A03 0C:41}", "30{06:2A03 80:0500}"}},
        {"EDIPARTYNAME", 0x47070104, {"30{A0{0C:41}}", "30{A1{02:05}}", "30{A1{0C:41} A0{0C:41}}"}},
        {"EDIPARTYNAME", 0x4707002B, {"30{A0{0C:41} A1{0C:41} A2{0C:41}}"}},
        {"GENERAL_NAME",
         0x470B0104,
         {"89:61", "30{}", "A0{06:2A03}", "A3{}", "A4{}", "A4{30{} 30{}}", "A4{30{31{}}}", "A5{30{}}",
          "88:"}},
        {"GENERAL_NAMES", 0x470D002B, {"30{}"}},
        {"GENERAL_NAMES", 0x470D0104, {"30{82:61 89:61}", "30:82016182"}},
        {"KISA_IDENTIFY_DATA", 0x4703002B, {"30{}", "30{0C:41 30{} 30{}}"}},
        {"KISA_IDENTIFY_DATA",
         0x47030104,
         {"30{13:41}", "30{0C:41 30{}}", "30{0C:41 30{30{06:2A03}}}",
          "30{0C:41 30{30{30{30{06:2A04}} 06:2A03}}}", "30{0C:41 30{30{06:2A03 30{}}}}", "30{0C:41 05:}"}},
        {"VID", 0x4701002B, {"30{}", "30{30{06:2A03} A0{04:01} A0{04:01}}"}},
        {"VID",
         0x47010104,
         {"30{06:2A03}", "30{30{} A0{04:01}}", "30{30{06:2A03} A0{}}", "30{30{06:2A03} A0{0C:41}}",
          "30{30{06:2A03} 04:01}"}},
        {"SUBJECT_KEYID", 0x47150104, {"03:0001"}},
        {"KEY_USAGE", 0x47130104, {"04:01", "03:"}},
        {"OBJECT_IDENTIFIERS", 0x470F0104, {"30{06:2A03 05:}"}},
        {"EXTENDED_KEY_USAGE", 0x4711002B, {"30{}"}},
        {"EXTENDED_KEY_USAGE", 0x47110104, {"30{06:}"}},
        {"NOTICE_NUMBERS", 0x47250104, {"30{02:}"}},
        {"NOTICE_REFERENCE", 0x4721002B, {"30{0C:41}"}},
        {"NOTICE_REFERENCE", 0x47210104, {"30{04:41 30{}}"}},
        {"USER_NOTICE", 0x471F0104, {"30{0C:41 30{0C:41 30{}}}"}},
        {"USER_NOTICE", 0x471F002B, {"30{0C:41 0C:41 0C:41}"}},
        {"POLICY_QUALIFIER_INFO", 0x4717002B, {"30{06:2A03}"}},
        {"POLICY_QUALIFIER_INFO",
         0x47170104,
         {"30{06:2B06010505070201 02:01}", "30{06:2B06010505070202 0C:41}"}},
        {"POLICY_QUALIFIER_INFOS", 0x4719002B, {"30{}"}},
        {"POLICY_QUALIFIER_INFOS", 0x47190104, {"30{30{}}"}},
        {"POLICY_INFO", 0x471B002B, {"30{}"}},
        {"POLICY_INFO", 0x471B0104, {"30{06:2A03 30{}}", "30{06:2A03 06:2A03}"}},
        {"CERTIFICATE_POLICIES", 0x471D002B, {"30{}"}},
        {"CERTIFICATE_POLICIES", 0x471D0104, {"30{06:2A03}"}},
        {"POLICY_MAPPING", 0x4727002B, {"30{06:2A03}"}},
        {"POLICY_MAPPING", 0x47270104, {"30{06:2A03 05:}"}},
        {"POLICY_MAPPINGS", 0x4729002B, {"30{}"}},
        {"POLICY_MAPPINGS", 0x47290104, {"30{30{}}"}},
        {"GENERAL_SUBTREE", 0x472B002B, {"30{}"}},
        {"GENERAL_SUBTREE", 0x472B0104, {"30{82:61 81:01 80:01}"}},
        {"GENERAL_SUBTREES", 0x472D002B, {"30{}"}},
        {"GENERAL_SUBTREES", 0x472D0104, {"30{82:61}"}},
        {"NAME_CONSTRAINTS", 0x472F0104, {"30{A0{}}"}},
        {"NAME_CONSTRAINTS", 0x472F002B, {"30{A0{30{82:61}} A1{30{82:61}} A2{}}"}},
        {"DIST_POINT_NAME", 0x47310104, {"A2{86:61}", "A0{}", "A1{}", "A1{06:2A03}"}},
        {"DIST_POINT", 0x47330104, {"30{A0{A0{}}}", "30{A0{}}", "30{81:}", "30{83:00}"}},
        {"DIST_POINT", 0x4733002B, {"30{80: 81: 82: 83:}"}},
        {"CRL_DIST_POINTS", 0x4735002B, {"30{}"}},
        {"CRL_DIST_POINTS", 0x47350104, {"30{86:61}"}},
        {"issuing_DIST_POINT", 0x47370104, {"30{81:}", "30{82:FF 81:FF}"}},
        {"issuing_DIST_POINT", 0x4737002B, {"30{81:FF 81:FF 81:FF 81:FF 81:FF 81:FF 81:FF}"}},
        {"ACCESS_DESCRIPTION", 0x4739002B, {"30{06:2A03}"}},
        {"ACCESS_DESCRIPTION", 0x47390104, {"30{06:2A03 89:61}"}},
        {"AUTHORITY_INFO_ACCESS", 0x473B002B, {"30{}"}},
        {"AUTHORITY_INFO_ACCESS", 0x473B0104, {"30{30{}}"}},
    };
    for (const auto &c : cases) {
        const ExtensionType &type = type_named(c.type);
        expect_refused(type, c.status, c.inputs);
        // A caller's record stays the caller's.
        const LeakCheck leaks;
        void *const own = type.make();
        void *out = own;
        EXPECT_EQ(type.decode(der_node(c.inputs[0]).get(), &out), c.status);
        EXPECT_EQ(out, own);
        type.free(own);
    }
}

TEST(ExtensionRecords, NullArgumentsAndEmptyNodes) {
    Statuses functions;
    for (const ExtensionType &type : kExtensionTypes) {
        expect_null_arguments_refused(type);
        void *record = nullptr;
        void *none = nullptr;
        EXPECT_EQ(type.decode(new_node().get(), &record), type.decode(der_node("30{}").get(), &none))
            << type.name << ": a node that is not started has no children";
        type.free(record);
        type.free(none);
        functions.insert({type.decoder_code, type.encoder_code});
    }
    EXPECT_EQ(functions.size(), 2 * std::size(kExtensionTypes)) << "a function byte is used twice";
}

TEST(ExtensionRecords, EmptyRecords) {
    const std::pair<std::string, Texts> cases[] = {
        {"30 00",
         {"POLICY_CONSTRAINTS", "AUTHORITY_KEYID", "OBJECT_IDENTIFIERS", "NOTICE_NUMBERS", "USER_NOTICE",
          "NAME_CONSTRAINTS", "DIST_POINT", "issuing_DIST_POINT"}},
        {"30 03 01 01 00", {"BASIC_CONSTRAINTS"}},
        {"04 00", {"SUBJECT_KEYID"}},
        {"03 01 00", {"KEY_USAGE"}},
        {"status 0103",
         {"OTHERNAME", "EDIPARTYNAME", "GENERAL_NAME", "KISA_IDENTIFY_DATA", "VID", "NOTICE_REFERENCE",
          "POLICY_QUALIFIER_INFO", "POLICY_INFO", "POLICY_MAPPING", "GENERAL_SUBTREE", "DIST_POINT_NAME",
          "ACCESS_DESCRIPTION"}},
        {"status 002B",
         {"GENERAL_NAMES", "EXTENDED_KEY_USAGE", "POLICY_QUALIFIER_INFOS", "CERTIFICATE_POLICIES",
          "POLICY_MAPPINGS", "GENERAL_SUBTREES", "CRL_DIST_POINTS", "AUTHORITY_INFO_ACCESS"}},
    };
    std::size_t types = 0;
    for (const auto &[expected, names] : cases) {
        for (const std::string &name : names) {
            const LeakCheck leaks;
            const ExtensionType &type = type_named(name);
            char function[8];
            std::snprintf(function, sizeof function, "%04X", type.encoder_code >> 16);
            std::string whole = expected;
            if (whole.starts_with("status ")) whole.insert(7, function);
            void *record = type.make();
            void *copy = type.dup(record);
            EXPECT_EQ(encoded(type.encode, record), whole) << name;
            EXPECT_EQ(encoded(type.encode, copy), whole) << name;
            type.free(record);
            type.free(copy);
            ++types;
        }
    }
    EXPECT_EQ(types, std::size(kExtensionTypes));
}

TEST(ExtensionRecords, EveryAllocationMayFail) {
    for (const Samples &samples : kSamples) {
        const ExtensionType &type = type_named(samples.type);
        Statuses decoding = {type.decoder_code - 0x49 + 0x104};
        if (type.decoder_code == 0x47090049) decoding.insert(0x470D0104);  // of the GENERAL_NAMES in it
        if (type.decoder_code == 0x47450049) decoding.insert(0x4745003C);
        for (const std::string &text : samples.texts)
            expect_allocations_may_fail(type, der_node(text).get(), decoding,
                                        {type.encoder_code - 0x49 + 0x103});
    }
}

}  // namespace
}  // namespace tlx_test
