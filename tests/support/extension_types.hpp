// Every record and list type of the standard extensions behind one shape.
#pragma once

#include <tlxpki.h>

#include <cstdint>

namespace tlx_test {

struct ExtensionType {
    const char *name;
    void *(*make)();
    void (*clean)(void *);
    void (*free)(void *);
    void *(*dup)(const void *);
    ASN1_DECODER decode;
    ASN1_ENCODER encode;
    std::uint32_t decoder_code;  // of a null argument
    std::uint32_t encoder_code;
};

#define TLX_EXTENSION_TYPE(type, decoder_code, encoder_code)                       \
    {                                                                              \
#type,                                                                           \
     [] { return static_cast<void *>(new_##type()); },                                \
     [](void *record) { clean_##type(static_cast<type *>(record)); },                 \
     [](void *record) { free_##type(static_cast<type *>(record)); },                  \
     [](const void *record) {                                                         \
         return static_cast<void *>(dup_##type(static_cast<const type *>(record)));   \
     },                                                                               \
     TLX_DECODER(Seq_to_##type),                                                      \
     TLX_ENCODER(type##_to_Seq),                                                      \
     decoder_code,                                                                    \
     encoder_code \
    }

/// New types go to the end: fuzz seeds hold places in this table.
inline const ExtensionType kExtensionTypes[] = {
    TLX_EXTENSION_TYPE(BASIC_CONSTRAINTS, 0x47230049, 0x47240049),
    TLX_EXTENSION_TYPE(POLICY_CONSTRAINTS, 0x47450049, 0x47460049),
    TLX_EXTENSION_TYPE(AUTHORITY_KEYID, 0x47090049, 0x470A0049),
    TLX_EXTENSION_TYPE(OTHERNAME, 0x47050049, 0x47060049),
    TLX_EXTENSION_TYPE(EDIPARTYNAME, 0x47070049, 0x47080049),
    TLX_EXTENSION_TYPE(GENERAL_NAME, 0x470B0049, 0x470C0049),
    TLX_EXTENSION_TYPE(GENERAL_NAMES, 0x470D0049, 0x470E0049),
    TLX_EXTENSION_TYPE(KISA_IDENTIFY_DATA, 0x47030049, 0x47040049),
    TLX_EXTENSION_TYPE(VID, 0x47010049, 0x47020049),
    TLX_EXTENSION_TYPE(SUBJECT_KEYID, 0x47150049, 0x47160049),
    TLX_EXTENSION_TYPE(KEY_USAGE, 0x47130049, 0x47140049),
    TLX_EXTENSION_TYPE(OBJECT_IDENTIFIERS, 0x470F0049, 0x47100049),
    TLX_EXTENSION_TYPE(EXTENDED_KEY_USAGE, 0x47110049, 0x47120049),
    TLX_EXTENSION_TYPE(NOTICE_NUMBERS, 0x47250049, 0x47260049),
    TLX_EXTENSION_TYPE(NOTICE_REFERENCE, 0x47210049, 0x47220049),
    TLX_EXTENSION_TYPE(USER_NOTICE, 0x471F0049, 0x47200049),
    TLX_EXTENSION_TYPE(POLICY_QUALIFIER_INFO, 0x47170049, 0x47180049),
    TLX_EXTENSION_TYPE(POLICY_QUALIFIER_INFOS, 0x47190049, 0x471A0049),
    TLX_EXTENSION_TYPE(POLICY_INFO, 0x471B0049, 0x471C0049),
    TLX_EXTENSION_TYPE(CERTIFICATE_POLICIES, 0x471D0049, 0x471E0049),
    TLX_EXTENSION_TYPE(POLICY_MAPPING, 0x47270049, 0x47280049),
    TLX_EXTENSION_TYPE(POLICY_MAPPINGS, 0x47290049, 0x472A0049),
    TLX_EXTENSION_TYPE(GENERAL_SUBTREE, 0x472B0049, 0x472C0049),
    TLX_EXTENSION_TYPE(GENERAL_SUBTREES, 0x472D0049, 0x472E0049),
    TLX_EXTENSION_TYPE(NAME_CONSTRAINTS, 0x472F0049, 0x47300049),
    TLX_EXTENSION_TYPE(DIST_POINT_NAME, 0x47310049, 0x47320049),
    TLX_EXTENSION_TYPE(DIST_POINT, 0x47330049, 0x47340049),
    TLX_EXTENSION_TYPE(CRL_DIST_POINTS, 0x47350049, 0x47360049),
    TLX_EXTENSION_TYPE(issuing_DIST_POINT, 0x47370049, 0x47380049),
    TLX_EXTENSION_TYPE(ACCESS_DESCRIPTION, 0x47390049, 0x473A0049),
    TLX_EXTENSION_TYPE(AUTHORITY_INFO_ACCESS, 0x473B0049, 0x473C0049),
};
#undef TLX_EXTENSION_TYPE

}  // namespace tlx_test
