// A token in memory, which a module serves and a test fills. The environment variable TLX_FAKE_TOKEN tells
// the module its address.
#pragma once

#include <tlxpki/pkcs11.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct FakeToken {
    using Octets = std::vector<std::uint8_t>;
    using Object = std::map<CK_ATTRIBUTE_TYPE, Octets>;

    std::map<std::string, CK_RV> results;  ///< what functions return in place of what they do
    std::vector<std::string> calls;        ///< "C_Login 2 1234" and the names of the others
    CK_FUNCTION_LIST functions{};          ///< what C_GetFunctionList gives
    bool has_list = true;
    CK_FLAGS flags = CKF_TOKEN_INITIALIZED;
    CK_ULONG slots = 1;
    CK_ULONG more_slots = 0;  ///< of the second answer alone
    std::vector<Object> objects;
    CK_ULONG grows = 0;         ///< octets that an attribute has more than was said
    CK_ULONG found_beside = 0;  ///< handles that C_FindObjects claims beside those that it gives
    bool endless = false;       ///< C_FindObjects never ends
    Octets output;              ///< of C_Sign and C_Decrypt
    CK_ULONG output_beside = 0;
    Octets input;  ///< they were given
    CK_MECHANISM_TYPE mechanism = 0;
    Octets parameter;
};
