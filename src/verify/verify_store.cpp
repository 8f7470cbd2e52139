// Stores of anchors and intermediates.
#include "verify/verify_result.hpp"

using namespace tlx;

namespace {

u32 add(VERIFY_STORE &store, Bytes certificate, bool is_anchor, u32 accepted) noexcept {
    return static_cast<u32>(store.store.add(certificate, is_anchor, accepted));
}

}  // namespace

extern "C" {

VERIFY_STORE *new_VERIFY_STORE(void) {
    OwnedObject<VERIFY_STORE> made = make_object<VERIFY_STORE>();
    return made && made->store.start() ? made.release() : nullptr;
}

void free_VERIFY_STORE(VERIFY_STORE *store) {
    Destroy<VERIFY_STORE>{}(store);
}

uint32_t add_VERIFY_STORE_anchor(VERIFY_STORE *store, const uint8_t *certificate, uint32_t len,
                                 uint32_t accepted_faults) {
    if (store == nullptr || certificate == nullptr) return 0x55070049;
    return add(*store, {certificate, len}, true, accepted_faults);
}

uint32_t add_VERIFY_STORE_anchor_key(VERIFY_STORE *store, const uint8_t *name, uint32_t name_len,
                                     const uint8_t *key_info, uint32_t key_info_len) {
    if (store == nullptr || name == nullptr || key_info == nullptr) return 0x55080049;
    return static_cast<u32>(store->store.add_anchor({name, name_len}, {key_info, key_info_len}));
}

uint32_t add_VERIFY_STORE_certificate(VERIFY_STORE *store, const uint8_t *certificate, uint32_t len,
                                      uint32_t accepted_faults) {
    if (store == nullptr || certificate == nullptr) return 0x55090049;
    return add(*store, {certificate, len}, false, accepted_faults);
}

uint32_t add_VERIFY_STORE_crl(VERIFY_STORE *store, const uint8_t *crl, uint32_t len) {
    if (store == nullptr || crl == nullptr) return 0x550B0049;
    return static_cast<u32>(store->store.status().add_list({crl, len}));
}

uint32_t add_VERIFY_STORE_ocsp(VERIFY_STORE *store, const uint8_t *response, uint32_t len) {
    if (store == nullptr || response == nullptr) return 0x550C0049;
    return static_cast<u32>(store->store.status().add_response({response, len}));
}

uint32_t get_VERIFY_STORE_count(const VERIFY_STORE *store) {
    return store == nullptr ? 0 : store->store.size();
}

}  // extern "C"
