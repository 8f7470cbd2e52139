#include "document.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <iostream>
#include <map>

namespace tool {

namespace {

constexpr std::size_t kDumpWidth = 16;
constexpr std::size_t kWrapAt = 64;
constexpr uint32_t kMostDecimalBits = 256;

std::string label_of(const std::string &key) {
    static const std::map<std::string, std::string> kLabels = {
        {"ca", "CA"},           {"cps", "CPS"},       {"crl_issuer", "CRL issuer"},
        {"dns", "DNS"},         {"ip", "IP address"}, {"kisa_identity", "KISA identity"},
        {"oid", "OID"},         {"pss", "PSS"},       {"sha1", "SHA-1"},
        {"sha256", "SHA-256"},  {"uri", "URI"},       {"virtual_id", "Virtual ID"},
        {"id_type", "ID type"}, {"code", "Status"}};
    const auto known = kLabels.find(key);
    if (known != kLabels.end()) return known->second;
    std::string label = key;
    std::replace(label.begin(), label.end(), '_', ' ');
    if (!label.empty()) label[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(label[0])));
    return label;
}

bool is_oid(const Json &value) {
    return value.is_object() && value.contains("oid") && value.size() == (value.contains("name") ? 2U : 1U);
}

bool is_long_hex(const std::string &line) {
    const auto is_digit = [](char c) {
        return std::isxdigit(static_cast<unsigned char>(c)) != 0 || c == 'x';
    };
    return line.size() > kWrapAt && std::all_of(line.begin(), line.end(), is_digit);
}

/// Prints a value in its column, and continues long numbers below.
void print_line(std::ostream &out, const std::string &line, std::size_t column) {
    if (!is_long_hex(line)) {
        out << line << '\n';
        return;
    }
    for (std::size_t i = 0; i < line.size(); i += kWrapAt) {
        out << (i == 0 ? "" : std::string(column, ' ')) << line.substr(i, kWrapAt) << '\n';
    }
}

/// Prints words, such as the names of bits, on one line where they fit.
bool is_word_list(const Json &value) {
    std::size_t size = 0;
    const auto is_word = [&size](const Json &item) {
        if (item.is_string()) size += item.get_ref<const std::string &>().size() + 2;
        return item.is_string();
    };
    return value.is_array() && !value.empty() && std::all_of(value.begin(), value.end(), is_word) &&
           size < kWrapAt;
}

bool is_line(const Json &value) {
    return value.is_primitive() || is_oid(value) || is_word_list(value);
}

std::string line_of(const Json &value) {
    if (is_oid(value)) return printable(oid_line(value));
    if (value.is_null()) return "none";
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (value == "") return "(empty)";
    if (value.is_string()) return printable(value.get<std::string>());
    if (!value.is_array()) return value.dump();
    std::string line;
    for (const Json &word : value) {
        line += (line.empty() ? "" : ", ") + line_of(word);
    }
    return line;
}

/// A dash before objects of several members distinguishes one from the next.
void print_items(std::ostream &out, const Json &array, std::size_t indent) {
    for (const Json &item : array) {
        if (is_line(item)) {
            out << std::string(indent, ' ');
            print_line(out, line_of(item), indent);
        } else if (item.size() == 1) {
            print_text(out, item, indent);
        } else {
            out << std::string(indent, ' ') << "-\n";
            print_text(out, item, indent + 2);
        }
    }
}

void print_member(std::ostream &out, const std::string &key, const Json &value, std::size_t indent,
                  std::size_t width) {
    const std::string label = label_of(key);
    out << std::string(indent, ' ') << label;
    const std::string gap(width - std::min(width, label.size()), ' ');
    if (value.is_structured() && value.empty()) {
        out << gap << "none\n";
    } else if (is_line(value) && key != "hex") {
        out << gap;
        print_line(out, line_of(value), indent + width);
    } else {
        out << '\n';
        if (key == "hex") return print_dump(out, value.get<std::string>(), indent + 2);
        print_value(out, value, indent + 2);
    }
}

}  // namespace

void print_json(std::ostream &out, const Json &document) {
    out << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void print_value(std::ostream &out, const Json &value, std::size_t indent) {
    if (value.is_object() && !is_oid(value)) return print_text(out, value, indent);
    if (value.is_array() && !is_word_list(value)) return print_items(out, value, indent);
    out << std::string(indent, ' ');
    print_line(out, line_of(value), indent);
}

void print_text(std::ostream &out, const Json &object, std::size_t indent) {
    std::size_t width = 0;
    for (const auto &[key, value] : object.items()) {
        if (is_line(value)) width = std::max(width, label_of(key).size());
    }
    for (const auto &[key, value] : object.items()) {
        print_member(out, key, value, indent, width + 2);
    }
}

void print_document(Json document, bool as_json) {
    if (as_json) return print_json(std::cout, document);
    std::cout << printable(document["source"].get<std::string>()) << ": "
              << document["kind"].get<std::string>() << '\n';
    document.erase("source");
    document.erase("kind");
    print_text(std::cout, document, 2);
}

void print_dump(std::ostream &out, const std::string &digits, std::size_t indent) {
    std::array<char, 32> offset{};
    for (std::size_t line = 0; line < digits.size(); line += 2 * kDumpWidth) {
        (void)std::snprintf(offset.data(), offset.size(), "%04zx  ", line / 2);
        out << std::string(indent, ' ') << offset.data();
        std::string characters;
        for (std::size_t i = line; i < line + 2 * kDumpWidth; i += 2) {
            if (i >= digits.size()) {
                out << "   ";
                continue;
            }
            const std::string octet = digits.substr(i, 2);
            const auto c = static_cast<char>(std::stoi(octet, nullptr, 16));
            characters += c >= ' ' && c <= '~' ? c : '.';
            out << octet << ' ';
        }
        out << ' ' << characters << '\n';
    }
}

Json oid_json(const OBJECT_IDENTIFIER *oid) {
    const std::string dotted = dotted_text(oid);
    Json json = {{"oid", dotted}};
    const std::string name = short_name(dotted);
    if (!name.empty()) json["name"] = name;
    return json;
}

std::string oid_line(const Json &oid) {
    const std::string dotted = oid.at("oid").get<std::string>();
    return oid.contains("name") ? oid.at("name").get<std::string>() + " (" + dotted + ")" : dotted;
}

std::string values_line(const Json &object) {
    std::string line;
    for (const auto &[key, value] : object.items()) {
        line += (line.empty() ? "" : ", ") + line_of(value);
    }
    return line;
}

std::string number_hex(const BIGINT *number) {
    const Text digits(BIGINT_to_hex(number));
    return digits == nullptr ? "(none)" : "0x" + std::string(digits.get());
}

std::string number_text(const BIGINT *number) {
    if (get_BIGINT_bits(number) > kMostDecimalBits) return number_hex(number);
    const Text digits(BIGINT_to_decimal(number));
    return digits == nullptr ? "(none)" : digits.get();
}

}  // namespace tool
