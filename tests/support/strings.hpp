// String records and results as values that a test compares without freeing them.
#pragma once

#include <tlxcrypto/memory.h>
#include <tlxpki/string.h>

#include <cstdint>
#include <memory>
#include <string>

namespace tlx_test {

template <typename T, void (*Free)(T *)>
struct Freer {
    void operator()(T *object) const { Free(object); }
};
using StringRecord = std::unique_ptr<ASN1_STRING, Freer<ASN1_STRING, free_ASN1_STRING>>;

/// A record holding the octets of `value`.
inline StringRecord make_string(std::int32_t type, const std::string &value) {
    StringRecord record(new_ASN1_STRING());
    set_ASN1_STRING_value(record.get(), type, value.data(), static_cast<std::uint32_t>(value.size()));
    return record;
}

/// The octets of a record; "(null)" for a null record or null data.
inline std::string octets(const ASN1_STRING *record) {
    if (record == nullptr || record->data == nullptr) return "(null)";
    return {reinterpret_cast<const char *>(record->data), static_cast<std::size_t>(record->length)};
}

/// Copies `length` octets of a result and frees the result; "(null)" for null.
template <typename T>
std::string take(T *result, std::size_t length) {
    if (result == nullptr) return "(null)";
    std::string copy(reinterpret_cast<const char *>(result), length);
    tlx_free(result);
    return copy;
}

/// Calls `function (text, its length, &out)` and returns its result. Checks that the length is 0 exactly when
/// out is unchanged.
template <typename Out, typename In, typename... Rest>
std::string call(std::uint32_t (*function)(const In *, std::uint32_t, Out **, Rest...),
                 const std::string &text, Rest... rest) {
    Out *out = nullptr;
    const std::uint32_t size = function(reinterpret_cast<const In *>(text.data()),
                                        static_cast<std::uint32_t>(text.size()), &out, rest...);
    if ((out == nullptr) != (size == 0)) return "length and result disagree";
    return take(out, size);
}

}  // namespace tlx_test
