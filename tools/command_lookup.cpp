// tlxpki oid and tlxpki status: explain identifiers and status codes.
#include <algorithm>
#include <charconv>
#include <iostream>
#include <optional>

#include "commands.hpp"
#include "document.hpp"
#include "failure.hpp"
#include "status.hpp"

namespace tool {

namespace {

constexpr const char *kAlgorithmClasses[] = {"none", "digest or MAC", "symmetric cipher",
                                             "public key or signature", "password-based scheme"};

/// Reads a whole text as a number of the given base.
std::optional<uint32_t> number_of(std::string_view text, int base) {
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// The row that a text names: an index, a dotted text, a short name or else a long name.
std::optional<int32_t> row_of(const std::string &text) {
    const auto size = static_cast<uint32_t>(text.size());
    if (const std::optional<uint32_t> index = number_of(text, 10)) {
        if (*index >= TLX_OID_COUNT) return std::nullopt;
        return static_cast<int32_t>(*index);
    }
    for (const auto look_up : {index_from_oid_string, index_from_sn, index_from_ln}) {
        if (const uint32_t index = look_up(text.data(), size)) return static_cast<int32_t>(index);
    }
    return std::nullopt;
}

Json identifier_or_none(uint32_t identifier) {
    return identifier == 0 ? Json() : Json(code_text(identifier));
}

Json describe_row(int32_t index) {
    const OID_ROW *row = OID_LIST(index);
    const Oid oid(index_to_OBJECT_IDENTIFIER(index));
    const uint32_t kind = get_AlgorType_from_OID(oid.get());
    return {{"index", index},
            {"short_name", row->short_name},
            {"long_name", row->long_name},
            {"dotted", row->dotted},
            {"digest", identifier_or_none(get_DigestID_from_OID(oid.get()))},
            {"cipher", identifier_or_none(get_CipherID_from_OID(oid.get()))},
            {"class", kind},
            {"class_name", kAlgorithmClasses[std::min<std::size_t>(kind, std::size(kAlgorithmClasses) - 1)]}};
}

/// Reads hexadecimal after "0x", and eight digits without it that are no code as a decimal number.
std::optional<uint32_t> parse_status(const std::string &text) {
    constexpr std::size_t kDigits = 8;
    const bool prefixed = text.starts_with("0x") || text.starts_with("0X");
    if (prefixed) return number_of(std::string_view(text).substr(2), 16);
    const std::optional<uint32_t> decimal = number_of(text, 10);
    const bool known = decimal && status_meaning(*decimal).known;
    return text.size() == kDigits && !known ? number_of(text, 16) : decimal;
}

void print_documents(const Json &documents, bool json) {
    if (json) return print_json(std::cout, documents);
    for (std::size_t i = 0; i < documents.size(); ++i) {
        if (i > 0) std::cout << '\n';
        print_text(std::cout, documents[i], 0);
    }
}

}  // namespace

int run_oid(const LookUpOptions &options) {
    Json rows = Json::array();
    int result = kGood;
    for (const std::string &text : options.texts) {
        if (const std::optional<int32_t> index = row_of(text)) {
            rows.push_back(describe_row(*index));
            continue;
        }
        std::cerr << "tlxpki: \"" << printable(text) << "\" is not in the registry (rows 0 to "
                  << TLX_OID_COUNT - 1 << ")\n";
        result = kNotValid;
    }
    print_documents(rows, options.json);
    return result;
}

int run_status(const LookUpOptions &options) {
    Json meanings = Json::array();
    int result = kGood;
    for (const std::string &text : options.texts) {
        const std::optional<uint32_t> status = parse_status(text);
        if (!status) {
            std::cerr << "tlxpki: \"" << printable(text)
                      << "\" is no status code; write it like 0x53100054\n";
            result = kUnusable;
            continue;
        }
        meanings.push_back(status_json(*status));
        if (result == kGood && !status_meaning(*status).known) result = kNotValid;
    }
    print_documents(meanings, options.json);
    return result;
}

}  // namespace tool
