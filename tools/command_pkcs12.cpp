// tlxpki pkcs12 open: what a PKCS #12 file holds, as files.
#include <tlxpki/pkcs12_file.h>

#include <iostream>
#include <optional>

#include "commands.hpp"
#include "document.hpp"
#include "failure.hpp"
#include "hidden_line.hpp"
#include "input.hpp"
#include "private_key.hpp"
#include "status.hpp"
#include "terminal.hpp"

namespace tool {

namespace {

using Pfx = Owned<P12_PFX, free_P12_PFX>;
using Entries = Owned<P12_ENTRIES, free_P12_ENTRIES>;

constexpr uint32_t kCodeDiffers = 0x4D300012;
constexpr uint32_t kEntryDoesNotOpen = 0x4D310012;

/// A password, which may have no characters, or none at all.
class FilePassword {
  public:
    FilePassword() = default;
    /// The first line of a file.
    explicit FilePassword(const std::string &path)
        : buffer_(read_octets(path)), size_(first_line(buffer_.octets()).size()), given_(true) {}
    /// What is typed on the terminal. False when there is none.
    [[nodiscard]] bool type(const std::string &source) {
        constexpr std::size_t kLongest = 4096;
        buffer_ = Buffer::of_size(kLongest);
        const auto size = read_hidden_line("Password of " + printable(source) + ": ",
                                           {reinterpret_cast<char *>(buffer_.data()), kLongest});
        given_ = size.has_value();
        size_ = size.value_or(0);
        return given_;
    }
    [[nodiscard]] bool given() const { return given_; }
    [[nodiscard]] const char *data() const {
        if (!given_) return nullptr;
        return size_ == 0 ? "" : reinterpret_cast<const char *>(buffer_.octets().data());
    }
    [[nodiscard]] uint32_t size() const { return static_cast<uint32_t>(size_); }

  private:
    Buffer buffer_;
    std::size_t size_ = 0;
    bool given_ = false;
};

Pfx read_pfx(const std::string &path) {
    const Buffer file = read_octets(path);
    void *pfx = nullptr;
    const uint32_t status = readDER_from_Buffer(&pfx, TLX_DECODER(Seq_to_P12_PFX), file.octets().data(),
                                                static_cast<uint32_t>(file.octets().size()));
    if (status != 0) throw Failure(source_of(path) + ": is no PKCS #12 file: " + status_sentence(status));
    return Pfx(static_cast<P12_PFX *>(pfx));
}

uint32_t open(const P12_PFX *pfx, const FilePassword &password, const FilePassword &mac, Entries &entries) {
    const Waiting waiting("Decrypting");
    P12_ENTRIES *out = nullptr;
    const uint32_t status = open_PKCS12(pfx, password.data(), password.size(), mac.data(), mac.size(), &out);
    entries.reset(out);
    return status;
}

const P12_ENTRY &entry_at(const Entries &entries, uint32_t index) {
    return *get_P12_ENTRIES_child(entries.get(), static_cast<int32_t>(index));
}

bool lacks_password(uint32_t status, const Entries &entries) {
    for (uint32_t i = 0; i < get_P12_ENTRIES_count(entries.get()); ++i) {
        if (entry_at(entries, i).status == kEntryDoesNotOpen) return true;
    }
    return status == kCodeDiffers;
}

/// Opens with the password of a file, without one, or with what is typed.
uint32_t open_with_password(const Pkcs12Options &options, const P12_PFX *pfx, Entries &entries) {
    const FilePassword mac =
        options.mac_password_file.empty() ? FilePassword() : FilePassword(options.mac_password_file);
    FilePassword password =
        options.password_file.empty() ? FilePassword() : FilePassword(options.password_file);
    const uint32_t status = open(pfx, password, mac, entries);
    if (password.given() || !lacks_password(status, entries)) return status;
    const std::string source = source_of(options.file);
    if (!password.type(source)) throw Failure(source + ": has a password; give it with --password-file");
    return open(pfx, password, mac, entries);
}

/// What kinds of entries are called, in the document and in the names of files.
struct KindNames {
    const char *kind;
    const char *file;
    const char *extension;
    const char *label;
};
constexpr KindNames kKinds[] = {{"unread", "", "", ""},
                                {"private key", "key", ".key", "PRIVATE KEY"},
                                {"certificate", "certificate", ".pem", "CERTIFICATE"},
                                {"revocation list", "crl", ".pem", "X509 CRL"},
                                {"secret", "secret", ".der", ""},
                                {"unread", "", "", ""}};

const KindNames &names_of(const P12_ENTRY &entry) {
    return kKinds[entry.kind < std::size(kKinds) ? entry.kind : 0];
}

/// The octets of a file with an entry: PEM, or for a secret its element.
Buffer contents_of(const P12_ENTRY &entry) {
    const std::string_view label = names_of(entry).label;
    const Octets value = octets_of(entry.value);
    if (label.empty()) {
        Buffer copy = Buffer::of_size(value.size());
        std::ranges::copy(value, copy.data());
        return copy;
    }
    char *pem = nullptr;
    const uint32_t size = encode_PEM(value.data(), static_cast<uint32_t>(value.size()), label.data(),
                                     static_cast<uint32_t>(label.size()), &pem, 1);
    if (pem == nullptr) throw Failure("an entry without contents cannot be written");
    return {reinterpret_cast<uint8_t *>(pem), size};
}

/// Writes an entry to a new file of the folder, private where it is a secret. Returns its path.
std::string write_entry(const P12_ENTRY &entry, uint32_t number, const std::string &folder) {
    const KindNames &names = names_of(entry);
    const std::string path = folder + "/" + names.file + "-" + std::to_string(number) + names.extension;
    if (exists(path)) throw Failure(path + ": exists");
    const Buffer contents = contents_of(entry);
    if (binary_to_private_File(path.c_str(), contents.octets().data(),
                               static_cast<uint32_t>(contents.octets().size())) != 0) {
        throw Failure(path + ": cannot be written");
    }
    return path;
}

Json describe_entry(const P12_ENTRY &entry, uint32_t number) {
    Json json = {{"number", number}, {"kind", names_of(entry).kind}};
    if (entry.friendlyName != nullptr) json["name"] = text_of(entry.friendlyName);
    if (entry.localKeyId != nullptr) json["local_key_id"] = hex(octets_of(entry.localKeyId));
    if (entry.kind == TLX_P12_CERTIFICATE) {
        void *cert = nullptr;
        const Octets value = octets_of(entry.value);
        readDER_from_Buffer(&cert, TLX_DECODER(Seq_to_X509_CERT), value.data(),
                            static_cast<uint32_t>(value.size()));
        const Certificate owner(static_cast<X509_CERT *>(cert));
        if (owner) json["subject"] = shown_name(get_X509_subject(owner.get()));
        if (entry.owner >= 0) json["key"] = entry.owner + 1;
    }
    if (entry.type != nullptr) json["type"] = oid_json(entry.type);
    if (entry.kind == TLX_P12_UNREAD) json["status"] = exact_status_json(entry.status);
    return json;
}

/// The code that protects the file.
Json describe_code(const P12_PFX *pfx) {
    if (pfx->macData == nullptr) return nullptr;
    Json json = {{"digest", oid_json(pfx->macData->digestAlgorithm)}};
    json["iterations"] = pfx->macData->iterations == nullptr ? "1" : number_text(pfx->macData->iterations);
    return json;
}

void print_entries(const Json &document) {
    std::cout << printable(document["source"].get<std::string>()) << ": PKCS #12 file, "
              << (document["code"].is_null() ? "without a code" : "its code agrees with the password")
              << '\n';
    for (const Json &entry : document["entries"]) {
        print_text(std::cout, entry, 2);
        std::cout << '\n';
    }
}

}  // namespace

int run_pkcs12_open(const Pkcs12Options &options) {
    const std::string source = source_of(options.file);
    const Pfx pfx = read_pfx(options.file);
    Entries entries;
    const uint32_t status = open_with_password(options, pfx.get(), entries);
    if (status == kCodeDiffers) {
        std::cerr << "tlxpki: " << printable(source) << ": " << exact_status_sentence(status) << '\n';
        if (options.json) print_json(std::cout, {{"source", source}, {"status", exact_status_json(status)}});
        return kNotValid;
    }
    if (status != 0) {
        std::string reason = exact_status_sentence(status);
        if (pfx->macData != nullptr)
            reason += " (digest " + oid_line(oid_json(pfx->macData->digestAlgorithm)) + ")";
        throw Failure(source + ": cannot be opened: " + reason);
    }
    Json document = {{"source", source}, {"code", describe_code(pfx.get())}, {"entries", Json::array()}};
    bool whole = true;
    for (uint32_t i = 0; i < get_P12_ENTRIES_count(entries.get()); ++i) {
        const P12_ENTRY &entry = entry_at(entries, i);
        Json described = describe_entry(entry, i + 1);
        const bool read = entry.kind != TLX_P12_UNREAD;
        if (read && !options.folder.empty()) described["file"] = write_entry(entry, i + 1, options.folder);
        document["entries"].push_back(std::move(described));
        whole = whole && read;
    }
    if (options.json) {
        print_json(std::cout, document);
    } else {
        print_entries(document);
    }
    return whole ? kGood : kNotValid;
}

}  // namespace tool
