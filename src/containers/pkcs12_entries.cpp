#include "containers/pkcs12_entries.hpp"

#include "der/list_items.hpp"

using namespace tlx;

namespace {

// An entry has no encoding.
constexpr auto kEntry = record<P12_ENTRY>(
    any_count(), kept_word(&P12_ENTRY::kind), kept_word(&P12_ENTRY::status), kept<Oid>(&P12_ENTRY::type),
    kept<Secret<Octets>>(&P12_ENTRY::value), kept<Octets>(&P12_ENTRY::friendlyName),
    kept<Octets>(&P12_ENTRY::localKeyId), kept_word(&P12_ENTRY::owner));

struct EntryKind {
    using type = P12_ENTRY;
    static type *dup(const type *entry) noexcept { return dup_P12_ENTRY(entry); }
    static void free(type *entry) noexcept { free_P12_ENTRY(entry); }
};

}  // namespace

void clean_P12_ENTRY(P12_ENTRY *entry) {
    clean_record(kEntry, entry);
    if (entry != nullptr) entry->owner = -1;
}

void free_P12_ENTRY(P12_ENTRY *entry) {
    free_record(kEntry, entry);
}

P12_ENTRY *dup_P12_ENTRY(const P12_ENTRY *entry) {
    return dup_record(kEntry, entry);
}

P12_ENTRY *new_P12_ENTRY(void) {
    auto *const entry = TLX_NEW(P12_ENTRY);
    if (entry != nullptr) entry->owner = -1;
    return entry;
}

P12_ENTRIES *new_P12_ENTRIES(void) {
    return new_STACK();
}

void clean_P12_ENTRIES(P12_ENTRIES *entries) {
    clean_list<EntryKind>(entries);
}

void free_P12_ENTRIES(P12_ENTRIES *entries) {
    free_list<EntryKind>(entries);
}

P12_ENTRIES *dup_P12_ENTRIES(const P12_ENTRIES *entries) {
    return dup_list<EntryKind>(entries);
}

uint32_t get_P12_ENTRIES_count(const P12_ENTRIES *entries) {
    return get_STACK_count(entries);
}

P12_ENTRY *get_P12_ENTRIES_child(const P12_ENTRIES *entries, int32_t index) {
    return item_at<P12_ENTRY>(entries, index);
}

uint32_t add_P12_ENTRIES_child(P12_ENTRIES *entries, const P12_ENTRY *entry, int32_t index) {
    return add_list_child<EntryKind>(entries, entry, index);
}

P12_ENTRY *remove_P12_ENTRIES_child(P12_ENTRIES *entries, int32_t index) {
    return take_item<P12_ENTRY>(entries, index);
}

uint32_t add_PKCS12_entry(P12_ENTRIES *entries, uint32_t kind, const OBJECT_IDENTIFIER *type,
                          const uint8_t *value, uint32_t len, const char *friendly_name, int32_t owner) {
    if (entries == nullptr || (value == nullptr && len != 0)) return 1;
    Owned<P12_ENTRY> entry(new_P12_ENTRY());
    if (!entry) return 1;
    entry->kind = kind;
    entry->owner = owner;
    entry->value = new_string(TLX_TAG_OCTET_STRING, {value, len});
    if (type != nullptr) entry->type = dup_OBJECT_IDENTIFIER(type);
    if (friendly_name != nullptr) {
        const std::string_view name(friendly_name);
        entry->friendlyName =
            new_string(TLX_TAG_UTF8_STRING, {reinterpret_cast<const u8 *>(name.data()), name.size()});
    }
    const bool complete = entry->value != nullptr && (type == nullptr) == (entry->type == nullptr) &&
                          (friendly_name == nullptr) == (entry->friendlyName == nullptr);
    if (!complete || push_STACK_value(entries, entry.get()) != 0) return 1;
    static_cast<void>(entry.release());
    return 0;
}
