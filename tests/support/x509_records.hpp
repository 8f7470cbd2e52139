// Records as encodings, in the notation of der_text.hpp.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/allocation.hpp"
#include "support/der_text.hpp"
#include "support/held.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"

namespace tlx_test {

using Statuses = std::set<std::uint32_t>;

inline String oid_of(const char *dotted) {
    return string_of(TLX_TAG_OBJECT_IDENTIFIER, dotted);
}

inline std::string hex_of_text(std::string_view text) {
    return hex_of(der_node(text).get());
}

/// The record of an encoding. A refused encoding gives null and fails the test.
template <typename T>
T *decoded(std::uint32_t (*decoder)(const ASN1_UNIT *, T **), std::string_view text) {
    T *record = nullptr;
    EXPECT_EQ(decoder(der_node(text).get(), &record), 0U) << text;
    return record;
}

/// The encoding of a record in hexadecimal, or the status of its encoder.
template <typename T>
std::string encoded(std::uint32_t (*encoder)(const T *, ASN1_UNIT **), const T *record) {
    ASN1_UNIT *node = nullptr;
    const std::uint32_t status = encoder(record, &node);
    const Node owner(node);
    return status == 0 ? hex_of(node) : status_text(status);
}

/// Lets each allocation of `make` fail: it returns null and leaks nothing.
template <typename Make, typename Free>
void expect_making_may_fail(Make make, Free free) {
    sweep_failing_allocations([&] {
        auto *made = make();
        free(made);
        return made != nullptr;
    });
}

/// Lets each allocation of `run` fail: it gives one of the statuses, and 0 in the end. Returns how many runs
/// failed.
template <typename Run>
unsigned sweep_statuses(const Statuses &no_memory, Run run) {
    return sweep_failing_allocations([&] {
        const std::uint32_t status = run();
        EXPECT_TRUE(status == 0 || no_memory.contains(status)) << std::hex << status;
        return status == 0;
    });
}

/// What a function makes has this encoding. It makes nothing without one of its arguments or without memory.
template <auto Free, typename T, typename... Arguments>
void expect_made(std::string_view text, std::uint32_t (*encoder)(const T *, ASN1_UNIT **),
                 T *(*create)(Arguments...), std::type_identity_t<Arguments>... arguments) {
    SCOPED_TRACE(text);
    const Held<Free> made(create(arguments...));
    EXPECT_EQ(made == nullptr ? "null" : encoded<T>(encoder, made.get()), hex_of_text(text));
    expect_refuses_null(nullptr, create, arguments...);
    expect_making_may_fail([&] { return create(arguments...); }, Free);
}

}  // namespace tlx_test
