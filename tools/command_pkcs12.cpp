// tlxpki pkcs12 open and show: what a PKCS #12 file holds, as files, and what it consists of.
#include <filesystem>
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "input.hpp"
#include "output.hpp"
#include "pkcs12_file.hpp"
#include "status.hpp"

namespace tool {

namespace {

/// How an entry of a kind is written to a file.
struct EntryForm {
    const char *file;
    const char *extension;
    const char *label;  ///< of PEM; empty for the octets as they are
};
constexpr EntryForm kForms[] = {{"key", ".key", "PRIVATE KEY"},
                                {"certificate", ".pem", "CERTIFICATE"},
                                {"crl", ".pem", "X509 CRL"},
                                {"secret", ".der", ""}};

/// The octets of a file with an entry.
Buffer contents_of(const P12_ENTRY &entry, std::string_view label) {
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

/// Makes a folder that is its owner's alone unless there is one.
void make_folder(const std::string &path) {
    namespace fs = std::filesystem;
    std::error_code failed;
    if (fs::create_directory(file_path(path), failed)) {
        fs::permissions(file_path(path), fs::perms::owner_all, failed);
    }
    if (failed) throw Failure(path + ": cannot be made: " + failed.message());
}

/// Writes an entry to a file of the folder that is its owner's alone. Returns its path.
std::string write_entry(const P12_ENTRY &entry, uint32_t number, const Pkcs12Options &options) {
    const EntryForm &form = kForms[entry.kind - TLX_P12_PRIVATE_KEY];
    const std::string path = options.folder + "/" + form.file + "-" + std::to_string(number) + form.extension;
    if (!options.force && exists(path)) throw Failure(path + ": exists; --force replaces it");
    write_private_octets(path, contents_of(entry, form.label).octets());
    return path;
}

/// Sets what was read of a file, and writes it into the folder. False when something could not be read.
bool add_entries(Json &document, const Entries &entries, const Pkcs12Options &options) {
    bool whole = true;
    document["entries"] = Json::array();
    for (uint32_t i = 0; i < get_P12_ENTRIES_count(entries.get()); ++i) {
        const P12_ENTRY &entry = entry_at(entries, i);
        Json described = describe_entry(entry, i + 1);
        const bool read = entry.kind != TLX_P12_UNREAD;
        if (read && !options.folder.empty()) described["file"] = write_entry(entry, i + 1, options);
        document["entries"].push_back(std::move(described));
        whole = whole && read;
    }
    return whole;
}

void say_that_code_differs(const std::string &source) {
    std::cout.flush();
    std::cerr << "tlxpki: " << printable(source) << ": " << exact_status_sentence(kCodeDiffers) << '\n';
}

void print_entries(const Json &document) {
    for (const Json &entry : document["entries"]) {
        print_text(std::cout, entry, 2);
        std::cout << '\n';
    }
}

}  // namespace

int run_pkcs12_open(const Pkcs12Options &options) {
    const std::string source = source_of(options.file);
    const Pfx pfx = read_pfx(options.file);
    Password password(options.password_file);
    Entries entries;
    if (open_pfx(pfx.get(), source, password, Password(options.mac_password_file), entries) != 0) {
        say_that_code_differs(source);
        if (options.json) {
            print_json(std::cout, {{"source", source}, {"status", exact_status_json(kCodeDiffers)}});
        }
        return kNotValid;
    }
    Json document = {{"source", source}, {"code", describe_code(pfx.get())}};
    if (!options.folder.empty()) make_folder(options.folder);
    const bool whole = add_entries(document, entries, options);
    if (options.json) {
        print_json(std::cout, document);
    } else {
        std::cout << printable(source) << ": PKCS #12 file, "
                  << (document["code"].is_null() ? "without a code" : "its code agrees with the password")
                  << '\n';
        print_entries(document);
    }
    return whole ? kGood : kNotValid;
}

int run_pkcs12_show(const Pkcs12Options &options) {
    const std::string source = source_of(options.file);
    const Pfx pfx = read_pfx(options.file);
    Json document = {
        {"source", source}, {"code", describe_code(pfx.get())}, {"parts", describe_parts(pfx.get(), source)}};
    int status = kGood;
    if (!options.password_file.empty()) {
        Password password(options.password_file);
        Entries entries;
        if (open_pfx(pfx.get(), source, password, Password(options.mac_password_file), entries) != 0) {
            say_that_code_differs(source);
            document["status"] = exact_status_json(kCodeDiffers);
            status = kNotValid;
        } else if (!add_entries(document, entries, options)) {
            status = kNotValid;
        }
    }
    if (options.json) {
        print_json(std::cout, document);
        return status;
    }
    std::cout << printable(source) << ": PKCS #12 file\n";
    print_text(std::cout, {{"Code", document["code"]}, {"parts", document["parts"]}}, 2);
    if (document.contains("entries")) print_text(std::cout, {{"entries", document["entries"]}}, 2);
    return status;
}

}  // namespace tool
