// What a module tells of the calls that reach it. C_Initialize takes the address of one.
#pragma once

#include <tlxpki/pkcs11.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

struct CallRecord {
    std::string name;
    std::vector<std::uint64_t> arguments;
    CK_RV result = CKR_OK;  // what the call returns
};

template <typename Value>
std::uint64_t to_number(Value value) {
    if constexpr (std::is_pointer_v<Value>) {
        return reinterpret_cast<std::uintptr_t>(value);
    } else {
        return value;
    }
}
