#include "revocation.hpp"

#include "block_kind.hpp"
#include "choice.hpp"
#include "describe.hpp"
#include "status.hpp"

namespace tool {

namespace {

constexpr Choice kReasons[] = {{"unspecified", TLX_CRL_REASON_UNSPECIFIED},
                               {"keyCompromise", TLX_CRL_REASON_KEY_COMPROMISE},
                               {"cACompromise", TLX_CRL_REASON_CA_COMPROMISE},
                               {"affiliationChanged", TLX_CRL_REASON_AFFILIATION_CHANGED},
                               {"superseded", TLX_CRL_REASON_SUPERSEDED},
                               {"cessationOfOperation", TLX_CRL_REASON_CESSATION_OF_OPERATION},
                               {"certificateHold", TLX_CRL_REASON_CERTIFICATE_HOLD},
                               {"removeFromCRL", TLX_CRL_REASON_REMOVE_FROM_CRL},
                               {"privilegeWithdrawn", TLX_CRL_REASON_PRIVILEGE_WITHDRAWN},
                               {"aACompromise", TLX_CRL_REASON_AA_COMPROMISE}};

constexpr uint32_t kNoReason = 0xFFFFFFFF;

/// The issuer that an entry names for itself and those after it.
void add_certificate_issuer(Json &json, const X509_REVOKED *revoked) {
    GENERAL_NAMES *names = nullptr;
    const uint32_t status =
        TLX_DECODE_EXTENSION(GENERAL_NAMES, revoked->extensions, TLX_OID_CERTIFICATE_ISSUER, &names);
    const Owned<GENERAL_NAMES, free_GENERAL_NAMES> owner(names);
    if (status == 0) json["certificate_issuer"] = describe_general_names(names);
}

Json describe_entry(const X509_REVOKED *revoked) {
    Json json = {{"serial", number_hex(revoked->serialNumber)}};
    add_revocation(json, revoked);
    add_certificate_issuer(json, revoked);
    return json;
}

Json describe_entries(const X509_CRL *crl, uint32_t most) {
    Json entries = Json::array();
    X509_REVOKED *revoked = nullptr;
    for (uint32_t at = 0; entries.size() < most && next_X509_CRL_revoked(crl, &at, &revoked) == 0;) {
        entries.push_back(describe_entry(revoked));
    }
    free_X509_REVOKED(revoked);
    return entries;
}

}  // namespace

Crl decode_crl(const Block &block) {
    expect_one_element(block);
    X509_CRL *crl = nullptr;
    const uint32_t status =
        readDER_from_Buffer(reinterpret_cast<void **>(&crl), TLX_DECODER(Seq_to_X509_CRL),
                            block.octets.data(), static_cast<uint32_t>(block.octets.size()));
    if (status == 0) return Crl(crl);
    const Kind kind = kind_of(block);
    const bool is_other = kind != Kind::kOther && kind != Kind::kRevocationList;
    throw Failure(block.source + ": is no revocation list" +
                  (is_other ? ", but " + kind_name(kind) : ": " + status_sentence(status)));
}

Crl load_crl(const std::string &path) {
    const Input input(path);
    return decode_crl(input.blocks().front());
}

Serial serial_of(const std::string &text) {
    const bool has_prefix = text.starts_with("0x") || text.starts_with("0X");
    Serial serial(hex_to_BIGINT(text.c_str() + (has_prefix ? 2 : 0)));
    if (serial == nullptr) throw Failure("\"" + text + "\" is no serial number in hexadecimal");
    return serial;
}

bool names_certificate_issuer(const X509_REVOKED *revoked) {
    return get_X509_EXTENSION_index_by_OID_index(revoked->extensions, TLX_OID_CERTIFICATE_ISSUER, -1) >= 0;
}

std::string reason_name(uint32_t reason) {
    for (const Choice &known : kReasons) {
        if (known.value == reason) return known.name;
    }
    return std::to_string(reason);
}

uint32_t reason_of(const std::string &name) {
    for (const Choice &known : kReasons) {
        if (known.name == name) return known.value;
    }
    throw Failure("\"" + name + "\" is no reason");
}

void add_revocation(Json &json, const X509_REVOKED *revoked) {
    json["revocation_date"] = time_text(revoked->revocationDate);
    const uint32_t reason = get_X509_REVOKED_reason(revoked);
    if (reason != kNoReason) json["reason"] = reason_name(reason);
    const Time suspect(get_X509_REVOKED_invalidityDate(revoked));
    if (suspect == nullptr) return;
    const auto time = made<Owned<X509_TIME, free_X509_TIME>>(new_X509_TIME());
    must(set_X509_TIME(time.get(), suspect.get()));
    json["invalidity_date"] = time_text(time.get());
}

Json describe_crl(const X509_CRL *crl, uint32_t most_entries) {
    Json json = {{"kind", "certificate revocation list"},
                 {"version", get_X509_CRL_version(crl) + 1},
                 {"issuer", name_text(get_X509_CRL_issuer(crl))},
                 {"this_update", time_text(get_X509_CRL_thisUpdate(crl))},
                 {"next_update", nullptr},
                 {"signature_algorithm", algorithm_name(get_X509_CRL_sig_alg(crl))},
                 {"entry_count", get_X509_CRL_count(crl)}};
    if (get_X509_CRL_nextUpdate(crl) != nullptr) {
        json["next_update"] = time_text(get_X509_CRL_nextUpdate(crl));
    }
    json["extensions"] = describe_items(get_X509_CRL_extensions(crl), get_X509_EXTENSION_count,
                                        get_X509_EXTENSION, describe_extension);
    json["entries"] = describe_entries(crl, most_entries);
    return json;
}

}  // namespace tool
