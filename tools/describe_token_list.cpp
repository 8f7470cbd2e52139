#include "describe.hpp"

namespace tool {

namespace {

/// The description of each item of a plain list.
template <typename Item>
Json describe_stack(const STACK *list, Json (*describe)(const Item *)) {
    Json items = Json::array();
    for (uint32_t i = 0; i < get_STACK_count(list); ++i) {
        items.push_back(describe(static_cast<const Item *>(get_STACK_value(list, i))));
    }
    return items;
}

Json describe_token(const KISA_HSM_SIGNATURE_TOKEN *token) {
    return {{"name", text_of(token->name)},
            {"digest_algorithm", oid_json(get_X509_ALGO_IDENTIFIER_OID(token->digestAlgorithm))},
            {"digest", hex(octets_of(token->digest))}};
}

Json describe_driver(const KISA_HSM_DRIVER_INFO *driver) {
    Json json = {{"strings", {text_of(driver->string1), text_of(driver->string2)}},
                 {"number", number_text(driver->number)},
                 {"names", {describe_general_name(driver->name1), describe_general_name(driver->name2)}}};
    if (driver->string3 != nullptr) json["strings"].push_back(text_of(driver->string3));
    return json;
}

Json describe_url(const KISA_HSM_TOKEN_DISTRIBUTION_URL *url) {
    return {{"uri", text_of(url->url)}, {"drivers", describe_stack(url->drivers, describe_driver)}};
}

}  // namespace

Json describe_token_list(const KISA_HSM_SIGNATURE_VALUE *list) {
    return {{"tokens", describe_stack(list->tokens, describe_token)},
            {"distribution", describe_stack(list->urls, describe_url)},
            {"issuer", name_text(list->signer->issuer)},
            {"serial", number_hex(list->signer->serialNumber)},
            {"signature_algorithm", oid_json(get_X509_ALGO_IDENTIFIER_OID(list->signatureAlgorithm))},
            {"signature", hex(octets_of(list->signature))}};
}

}  // namespace tool
