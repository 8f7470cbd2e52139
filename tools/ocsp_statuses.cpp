// The table of serial numbers that a responder answers from.
#include <algorithm>

#include "failure.hpp"
#include "ocsp.hpp"
#include "revocation.hpp"
#include "verify.hpp"

namespace tool {

namespace {

/// What stands before the next comma, which the text loses with it.
std::string take_field(std::string_view &text) {
    const std::size_t comma = std::min(text.find(','), text.size());
    std::string field(text.substr(0, comma));
    text.remove_prefix(std::min(comma + 1, text.size()));
    return field;
}

/// A time as OCSP writes it; without a text the present.
std::string time_of(const std::string &text) {
    const Time time = text.empty() ? made<Time>(getCurrentGMTime()) : parse_time(text);
    if (time == nullptr) {
        throw Failure("\"" + text + "\" is no time; write it like 2026-01-31 or 2026-01-31T12:00:00Z");
    }
    return text_of(made<String>(asn1TimeToGENERALIZED_TIME(time.get(), 2)).get());
}

TableEntry entry_of(std::string_view line) {
    const std::string status = take_field(line);
    TableEntry entry;
    if (status == "good") entry.status = TLX_OCSP_GOOD;
    if (status == "revoked") {
        const std::string reason = take_field(line);
        entry.status = TLX_OCSP_REVOKED;
        entry.reason = reason.empty() ? 0 : reason_of(reason);
        entry.time = time_of(take_field(line));
    }
    if (certificate_status_name(entry.status) != status) {
        throw Failure("\"" + status + "\" is neither good nor revoked nor unknown");
    }
    if (!line.empty()) throw Failure("\"" + std::string(line) + "\" is too much");
    return entry;
}

void add_line(StatusTable &table, std::string_view line) {
    const std::string serial = number_hex(serial_of(take_field(line)).get());
    if (!table.emplace(serial, entry_of(line)).second) throw Failure(serial + " is in the table already");
}

}  // namespace

StatusTable load_status_table(const std::string &path) {
    const Buffer file = read_octets(path);
    std::string_view rest(reinterpret_cast<const char *>(file.octets().data()), file.octets().size());
    StatusTable table;
    for (std::size_t number = 1; !rest.empty(); ++number) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) {
            line.remove_suffix(1);
        }
        if (line.empty() || line.front() == '#') continue;
        try {
            add_line(table, line);
        } catch (const Failure &failure) {
            throw Failure(source_of(path) + ", line " + std::to_string(number) + ": " + failure.what());
        }
    }
    return table;
}

}  // namespace tool
