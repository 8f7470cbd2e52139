#include "pkcs12_file.hpp"

#include "failure.hpp"
#include "status.hpp"
#include "terminal.hpp"

namespace tool {

namespace {

using Line = std::optional<std::string_view>;

constexpr uint32_t kEntryDoesNotOpen = 0x4D310012;

const char *data_of(const Line &password) {
    if (!password) return nullptr;
    return password->empty() ? "" : password->data();
}

uint32_t size_of(const Line &password) {
    return password ? static_cast<uint32_t>(password->size()) : 0;
}

uint32_t open(const P12_PFX *pfx, const Line &password, const Line &mac, Entries &entries) {
    const Waiting waiting("Decrypting");
    P12_ENTRIES *out = nullptr;
    const uint32_t status =
        open_PKCS12(pfx, data_of(password), size_of(password), data_of(mac), size_of(mac), &out);
    entries.reset(out);
    return status;
}

bool lacks_password(uint32_t status, const Entries &entries) {
    for (uint32_t i = 0; i < get_P12_ENTRIES_count(entries.get()); ++i) {
        if (entry_at(entries, i).status == kEntryDoesNotOpen) return true;
    }
    return status == kCodeDiffers;
}

uint32_t open_with_password(const P12_PFX *pfx, const std::string &source, Password &password,
                            const Password &mac, Entries &entries) {
    const Line given = password.in_file();
    const uint32_t status = open(pfx, given, mac.in_file(), entries);
    if (given || !lacks_password(status, entries)) return status;
    const Line typed = password.typed_for(source);
    if (!typed) throw Failure(source + ": has a password; give it with --password-file");
    return open(pfx, typed, mac.in_file(), entries);
}

}  // namespace

Pfx decode_pfx(Octets octets, const std::string &source) {
    void *pfx = nullptr;
    const uint32_t status = readDER_from_Buffer(&pfx, TLX_DECODER(Seq_to_P12_PFX), octets.data(),
                                                static_cast<uint32_t>(octets.size()));
    if (status != 0) throw Failure(source + ": is no PKCS #12 file: " + status_sentence(status));
    return Pfx(static_cast<P12_PFX *>(pfx));
}

Pfx read_pfx(const std::string &path) {
    const Buffer file = read_octets(path);
    return decode_pfx(file.octets(), source_of(path));
}

uint32_t open_pfx(const P12_PFX *pfx, const std::string &source, Password &password, const Password &mac,
                  Entries &entries) {
    const uint32_t status = open_with_password(pfx, source, password, mac, entries);
    if (status == 0 || status == kCodeDiffers) return status;
    std::string reason = exact_status_sentence(status);
    if (pfx->macData != nullptr) reason += " (code: " + values_line(describe_code(pfx)) + ")";
    throw Failure(source + ": cannot be opened: " + reason);
}

const P12_ENTRY &entry_at(const Entries &entries, uint32_t index) {
    return *get_P12_ENTRIES_child(entries.get(), static_cast<int32_t>(index));
}

}  // namespace tool
