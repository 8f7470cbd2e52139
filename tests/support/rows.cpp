#include "support/rows.hpp"

#include <gtest/gtest.h>
#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "support/allocation.hpp"

namespace tlx_test {
namespace {

std::string without_escapes(const std::string &text) {
    std::string octets;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = text[i] == '\\' ? text.at(++i) : '\0';
        if (next == 'x') {
            octets += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            octets += next == 'n' ? '\n' : next == 'r' ? '\r' : next == 's' ? ' ' : text[i];
        }
    }
    return octets;
}

std::uint32_t number_of(const std::string &text) {
    static const std::map<std::string, std::uint32_t> digests = {{"MD5", TLX_DIGEST_MD5},
                                                                 {"SHA1", TLX_DIGEST_SHA1},
                                                                 {"SHA224", TLX_DIGEST_SHA224},
                                                                 {"SHA256", TLX_DIGEST_SHA256},
                                                                 {"SHA384", TLX_DIGEST_SHA384},
                                                                 {"SHA512", TLX_DIGEST_SHA512},
                                                                 {"HAS160", TLX_DIGEST_HAS160},
                                                                 {"MDC2", TLX_DIGEST_MDC2},
                                                                 {"SHA3_224", TLX_DIGEST_SHA3_224},
                                                                 {"SHA3_256", TLX_DIGEST_SHA3_256},
                                                                 {"SHA3_384", TLX_DIGEST_SHA3_384},
                                                                 {"SHA3_512", TLX_DIGEST_SHA3_512},
                                                                 {"SHA512_224", TLX_DIGEST_SHA512_224},
                                                                 {"SHA512_256", TLX_DIGEST_SHA512_256}};
    const auto digest = digests.find(text);
    if (digest != digests.end()) return digest->second;
    const auto size = static_cast<std::uint32_t>(text.size());
    const std::uint32_t by_short_name = index_from_sn(text.data(), size);
    const std::uint32_t index = by_short_name != 0 ? by_short_name : index_from_ln(text.data(), size);
    return index != 0 ? index : static_cast<std::uint32_t>(std::stoll(text, nullptr, 0));
}

void expect_row(const Row &row, const Operation &operation) {
    const std::string &expected = row.fields.back();
    {
        const LeakCheck leaks;
        EXPECT_EQ(operation.run(row), expected);
    }
    if (operation.without_memory.empty() || ::testing::Test::HasFailure()) return;
    sweep_failing_allocations([&] {
        const std::string result = operation.run(row);
        if (result == expected) return true;
        EXPECT_TRUE(operation.without_memory.contains(result)) << result << " for want of memory";
        return false;
    });
}

}  // namespace

const std::string &Row::operator[](std::size_t i) const {
    static const std::string none;
    return i < fields.size() ? fields[i] : none;
}

std::uint32_t Row::number(std::size_t i) const {
    return number_of((*this)[i]);
}

std::vector<Row> read_rows(const std::string &file) {
    std::vector<Row> rows;
    std::ifstream lines(TLX_TEST_DATA "/rows/" + file);
    EXPECT_TRUE(lines.is_open()) << file;
    unsigned at = 0;
    for (std::string line; std::getline(lines, line);) {
        ++at;
        if (line.empty() || line[0] == '#') continue;
        Row row{file + ":" + std::to_string(at), {}};
        for (std::size_t start = 0, end = 0; end != line.npos; start = end + 1) {
            end = line.find('|', start);
            row.fields.push_back(without_escapes(trimmed(line.substr(start, end - start))));
        }
        rows.push_back(row);
    }
    return rows;
}

void expect_rows(const std::string &file, const std::map<std::string, Operation> &operations) {
    std::set<std::string> seen;
    for (const Row &row : read_rows(file)) {
        SCOPED_TRACE(row.place);
        const auto operation = operations.find(row[0]);
        ASSERT_NE(operation, operations.end()) << row[0];
        expect_row(row, operation->second);
        seen.insert(row[0]);
    }
    EXPECT_EQ(seen.size(), operations.size()) << "an operation without a line";
}

std::string run_steps(const std::string &text, const Steps &known) {
    std::string results;
    std::istringstream steps(text);
    for (std::string step; std::getline(steps, step, ';');) {
        std::istringstream words(step);
        std::string name;
        words >> name;
        Numbers numbers;
        for (std::string word; words >> word;)
            numbers.push_back(number_of(word));
        numbers.resize(4);
        const auto found = known.find(name);
        if (found == known.end()) return "no step " + name;
        const std::uint32_t result = found->second(numbers);
        results +=
            (results.empty() ? "" : " ") + (result < 0x10000 ? std::to_string(result) : status_text(result));
    }
    return results;
}

std::string trimmed(const std::string &text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string status_text(std::uint32_t status) {
    char text[16];
    std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(status));
    return text;
}

}  // namespace tlx_test
