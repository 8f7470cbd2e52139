// What the tests of certificate records ask of every codec.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/allocation.hpp"
#include "support/der_text.hpp"
#include "support/record_type.hpp"

namespace tlx_test {

/// The encoding of a record in hexadecimal, or the status of its encoder.
inline std::string encoding_or_status(const RecordType &type, const void *record) {
    ASN1_UNIT *node = nullptr;
    const std::uint32_t status = type.encode(record, &node);
    const Node owner(node);
    return status == 0 ? hex_of(node) : "status " + std::to_string(status);
}

/// `input` decodes, into a new record and into one that holds something, and encodes to `output`; a copy
/// encodes to the same after the original has lost everything.
inline void expect_reencodes(const RecordType &type, std::string_view input, std::string_view output) {
    SCOPED_TRACE(std::string(type.name) + " " + std::string(input));
    const LeakCheck leaks;
    const Node node = der_node(input);
    const std::string expected = hex_of(der_node(output).get());
    void *record = nullptr;
    ASSERT_EQ(type.decode(node.get(), &record), 0U);
    EXPECT_EQ(encoding_or_status(type, record), expected);
    void *copy = type.dup(record);
    ASSERT_NE(copy, nullptr);
    void *const place = record;
    EXPECT_EQ(type.decode(node.get(), &record), 0U);
    EXPECT_EQ(record, place);
    EXPECT_EQ(encoding_or_status(type, record), expected);
    type.clean(record);
    EXPECT_EQ(encoding_or_status(type, copy), expected);
    type.free(record);
    type.free(copy);
}

inline void expect_comes_back(const RecordType &type, std::string_view text) {
    expect_reencodes(type, text, text);
}

/// `input` is refused with a status, and no record is made.
inline void expect_refused(const RecordType &type, std::string_view input, std::uint32_t status) {
    SCOPED_TRACE(std::string(type.name) + " " + std::string(input));
    const LeakCheck leaks;
    void *record = nullptr;
    EXPECT_EQ(type.decode(der_node(input).get(), &record), status);
    EXPECT_EQ(record, nullptr);
}

/// Missing arguments have their status, and nothing happens to null records.
inline void expect_null_arguments_refused(const RecordType &type) {
    SCOPED_TRACE(type.name);
    const LeakCheck leaks;
    const Node node = der_node("30{}");
    void *record = nullptr;
    ASN1_UNIT *encoded = nullptr;
    EXPECT_EQ(type.decode(nullptr, &record), type.decoder_code);
    EXPECT_EQ(type.decode(node.get(), nullptr), type.decoder_code);
    EXPECT_EQ(type.encode(nullptr, &encoded), type.encoder_code);
    void *empty = type.make();
    EXPECT_EQ(type.encode(empty, nullptr), type.encoder_code);
    type.free(empty);
    EXPECT_EQ(type.dup(nullptr), nullptr);
    type.clean(nullptr);
    type.free(nullptr);
}

/// Whichever allocation fails while `node` is decoded, copied or encoded: nothing leaks, and the decoder and
/// encoder answer with one of the given statuses.
inline void expect_allocations_may_fail(const RecordType &type, const ASN1_UNIT *node,
                                        std::initializer_list<std::uint32_t> decoder_statuses,
                                        std::initializer_list<std::uint32_t> encoder_statuses) {
    SCOPED_TRACE(type.name);
    const auto one_of = [](std::initializer_list<std::uint32_t> statuses, std::uint32_t status) {
        return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
    };
    sweep_failing_allocations([&] {
        void *record = nullptr;
        const std::uint32_t status = type.decode(node, &record);
        EXPECT_EQ(record != nullptr, status == 0);
        EXPECT_TRUE(status == 0 || one_of(decoder_statuses, status)) << std::hex << status;
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
        ASN1_UNIT *encoded = nullptr;
        const std::uint32_t status = type.encode(record, &encoded);
        EXPECT_EQ(encoded != nullptr, status == 0);
        EXPECT_TRUE(status == 0 || one_of(encoder_statuses, status)) << std::hex << status;
        free_ASN1_UNIT(encoded);
        return status == 0;
    });
    type.free(record);
}

}  // namespace tlx_test
