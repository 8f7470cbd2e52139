// Checks of every codec of certificate records.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "support/allocation.hpp"
#include "support/der_text.hpp"
#include "support/record_type.hpp"

namespace tlx_test {

/// Encodings in the notation of der_text.hpp.
using Texts = std::vector<std::string>;
using Statuses = std::set<std::uint32_t>;

/// An owner that frees with the record's own function.
template <typename T, void (*Free)(T *)>
using Held = std::unique_ptr<T, tlx::FreeWith<Free>>;

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

/// The encoding of a record in hexadecimal, or the status of its encoder: "status 46100103".
template <typename T>
std::string encoded(std::uint32_t (*encoder)(const T *, ASN1_UNIT **), const T *record) {
    ASN1_UNIT *node = nullptr;
    const std::uint32_t status = encoder(record, &node);
    const Node owner(node);
    char text[32];
    std::snprintf(text, sizeof text, "status %08X", status);
    return status == 0 ? hex_of(node) : text;
}

/// `input` decodes into a new record and into a filled one, and encodes to `output`. A copy encodes to the
/// same after the original is cleaned.
inline void expect_reencodes(const RecordType &type, std::string_view input, std::string_view output) {
    SCOPED_TRACE(std::string(type.name) + " " + std::string(input));
    const LeakCheck leaks;
    const Node node = der_node(input);
    const std::string expected = hex_of_text(output);
    void *record = nullptr;
    ASSERT_EQ(type.decode(node.get(), &record), 0U);
    void *copy = type.dup(record);
    ASSERT_NE(copy, nullptr);
    void *const place = record;
    EXPECT_EQ(type.decode(node.get(), &record), 0U);
    EXPECT_EQ(record, place);
    EXPECT_EQ(encoded(type.encode, record), expected);
    type.clean(record);
    EXPECT_EQ(encoded(type.encode, copy), expected);
    type.free(record);
    type.free(copy);
}

inline void expect_come_back(const RecordType &type, const Texts &texts) {
    for (const std::string &text : texts)
        expect_reencodes(type, text, text);
}

/// The decoder refuses each text with the status and makes no record.
inline void expect_refused(const RecordType &type, std::uint32_t status, const Texts &texts) {
    for (const std::string &text : texts) {
        const LeakCheck leaks;
        void *record = nullptr;
        EXPECT_EQ(type.decode(der_node(text).get(), &record), status) << type.name << " " << text;
        EXPECT_EQ(record, nullptr);
    }
}

/// Null arguments give their status, and null records are ignored.
inline void expect_null_arguments_refused(const RecordType &type) {
    SCOPED_TRACE(type.name);
    const LeakCheck leaks;
    const Node node = der_node("30{}");
    void *record = nullptr;
    ASN1_UNIT *encoding = nullptr;
    EXPECT_EQ(type.decode(nullptr, &record), type.decoder_code);
    EXPECT_EQ(type.decode(node.get(), nullptr), type.decoder_code);
    EXPECT_EQ(type.encode(nullptr, &encoding), type.encoder_code);
    void *empty = type.make();
    EXPECT_EQ(type.encode(empty, nullptr), type.encoder_code);
    type.free(empty);
    EXPECT_EQ(type.dup(nullptr), nullptr);
    type.clean(nullptr);
    type.free(nullptr);
}

/// Lets each allocation fail while `node` is decoded, copied or encoded: nothing leaks, and decoder and
/// encoder return one of the given statuses.
inline void expect_allocations_may_fail(const RecordType &type, const ASN1_UNIT *node,
                                        const Statuses &decoder_statuses, const Statuses &encoder_statuses) {
    SCOPED_TRACE(type.name);
    sweep_failing_allocations([&] {
        void *record = nullptr;
        const std::uint32_t status = type.decode(node, &record);
        EXPECT_EQ(record != nullptr, status == 0);
        EXPECT_TRUE(status == 0 || decoder_statuses.contains(status)) << std::hex << status;
        type.free(record);
        return status == 0;
    });
    void *record = nullptr;
    ASSERT_EQ(type.decode(node, &record), 0U);
    sweep_failing_allocations([&] {
        void *copy = type.dup(record);
        type.free(copy);
        return copy != nullptr;
    });
    sweep_failing_allocations([&] {
        ASN1_UNIT *encoding = nullptr;
        const std::uint32_t status = type.encode(record, &encoding);
        EXPECT_EQ(encoding != nullptr, status == 0);
        EXPECT_TRUE(status == 0 || encoder_statuses.contains(status)) << std::hex << status;
        free_ASN1_UNIT(encoding);
        return status == 0;
    });
    type.free(record);
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

}  // namespace tlx_test
