#include "key_file.hpp"

#include <filesystem>

#include "block_kind.hpp"
#include "describe.hpp"
#include "output.hpp"
#include "pkcs12_file.hpp"
#include "record.hpp"
#include "status.hpp"

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kNone = "none";

/// The file of a folder as Korean programs keep keys.
std::string_view name_of(KeyUse use) {
    return use == KeyUse::kDecrypt ? "kmPri.key" : "signPri.key";
}

std::string in_folder(const std::string &folder, std::string_view name) {
    const std::u8string path = (file_path(folder) / file_path(name)).u8string();
    return {path.begin(), path.end()};
}

bool is_folder(const std::string &path) {
    std::error_code ignored;
    return fs::is_directory(file_path(path), ignored);
}

KeyInfo info_of(const RsaKey &unit) {
    const ASYMMETRIC_KEY key = {TLX_KEY_RSA, unit.get()};
    P8_PRIV_KEY_INFO *info = nullptr;
    must(gen_P8_PRIV_KEY_INFO(&key, &info));
    return KeyInfo(info);
}

std::string why_not_opened(uint32_t status, const PKCS8 *container) {
    constexpr uint32_t kWrongPassword = 0x4A410012;
    if (status == kWrongPassword) {
        return "the password is wrong, or the file was damaged: " + status_sentence(status);
    }
    return "the key cannot be decrypted: " + status_sentence(status) + " (" +
           values_line(describe_encryption(container->encryptionAlgorithm)) + ")";
}

void open_container(KeyFile &key, Password &password) {
    const std::string_view text = password.of_key(key.source);
    P8_PRIV_KEY_INFO *info = nullptr;
    const uint32_t status =
        open_PKCS8(key.container.get(), text.data(), static_cast<uint32_t>(text.size()), &info);
    if (status != 0) throw Failure(key.source + ": " + why_not_opened(status, key.container.get()));
    key.info.reset(info);
}

/// The text of a key in PEM, or its DER. The buffer is wiped.
Buffer encoded(const void *record, ASN1_ENCODER encoder, const char *label, bool is_der) {
    uint8_t *der = nullptr;
    const uint32_t size = writeDER_to_Binary(record, encoder, &der);
    if (size == 0xFFFFFFFF) throw Failure("the key cannot be encoded");
    Buffer octets(der, size);
    if (is_der) return octets;
    char *text = nullptr;
    const uint32_t length =
        encode_PEM(der, size, label, static_cast<uint32_t>(std::string_view(label).size()), &text, 1);
    if (length == 0) throw std::bad_alloc();
    return {reinterpret_cast<uint8_t *>(text), length};
}

const char *or_default(const std::string &name) {
    return name.empty() ? nullptr : name.c_str();
}

Buffer sealed(const P8_PRIV_KEY_INFO *info, const KeyForm &form, Password &password) {
    const std::string_view text = password.of_new_key();
    PKCS8 *made = nullptr;
    const uint32_t status =
        seal_PKCS8(info, form.scheme.c_str(), or_default(form.cipher), or_default(form.prf), form.iterations,
                   text.data(), static_cast<uint32_t>(text.size()), &made);
    if (status != 0) throw Failure("the key cannot be encrypted: " + status_sentence(status));
    const EncryptedKey container(made);
    return encoded(made, TLX_ENCODER(P8_ENCRYPTED_KEY_to_Seq), "ENCRYPTED PRIVATE KEY", form.is_der);
}

Buffer in_pkcs1(const P8_PRIV_KEY_INFO *info, const KeyForm &form, Password &password) {
    if (info->privateKey == nullptr || info->privateKey->kind != TLX_KEY_RSA) {
        throw Failure("PKCS #1 holds RSA keys only");
    }
    const auto *unit = static_cast<const RSA_UNIT *>(info->privateKey->key);
    const bool plain = form.scheme == kNone;
    if (form.is_der) {
        if (!plain) throw Failure("an encrypted key of PKCS #1 is PEM");
        PKCS1_RSA_PRIVATE_KEY *numbers = nullptr;
        must(set_RSA_UNIT_to_PKCS1_RSA_PRIVATE_KEY(unit, &numbers));
        const Owned<PKCS1_RSA_PRIVATE_KEY, free_PKCS1_RSA_PRIVATE_KEY> key(numbers);
        return encoded(numbers, TLX_ENCODER(PKCS1_RSA_PRIVATE_KEY_to_Seq), "", true);
    }
    const std::string_view secret = plain ? std::string_view() : password.of_new_key();
    char *text = nullptr;
    const uint32_t status = writePKCS1PrivateKey_to_Binary(unit, plain ? nullptr : secret.data(),
                                                           static_cast<int32_t>(secret.size()), &text);
    if (status != 0) throw Failure("the key cannot be encrypted: " + status_sentence(status));
    return {reinterpret_cast<uint8_t *>(text), std::string_view(text).size()};
}

/// The private keys of a block that is a file of PKCS #12.
std::vector<KeyFile> read_pkcs12(const Block &block, Password &password) {
    const Pfx pfx = decode_pfx(block.octets, block.source);
    Entries entries;
    if (open_pfx(pfx.get(), block.source, password, Password(""), entries) != 0) {
        throw Failure(block.source + ": the password is wrong, or the file was damaged");
    }
    std::vector<KeyFile> keys;
    for (uint32_t i = 0; i < get_P12_ENTRIES_count(entries.get()); ++i) {
        const P12_ENTRY &entry = entry_at(entries, i);
        if (entry.kind != TLX_P12_PRIVATE_KEY) continue;
        const Octets octets = octets_of(entry.value);
        void *info = nullptr;
        const uint32_t status = readDER_from_Buffer(&info, TLX_DECODER(Seq_to_P8_PRIV_KEY_INFO),
                                                    octets.data(), static_cast<uint32_t>(octets.size()));
        if (status != 0)
            throw Failure(block.source + ": a key cannot be decoded: " + status_sentence(status));
        KeyFile key;
        key.info.reset(static_cast<P8_PRIV_KEY_INFO *>(info));
        key.source = block.source;
        key.is_pkcs12 = true;
        keys.push_back(std::move(key));
    }
    if (keys.empty()) throw Failure(block.source + ": holds no private key that can be read");
    return keys;
}

KeyInfo decode_ec_key(const Block &block) {
    P8_PRIV_KEY_INFO *info = nullptr;
    const uint32_t status =
        decode_EC_PRIVATE_KEY(block.octets.data(), static_cast<uint32_t>(block.octets.size()), &info);
    if (status != 0) throw Failure(block.source + ": the key cannot be decoded: " + status_sentence(status));
    return KeyInfo(info);
}

bool is_pkcs12(const Block &block) {
    return !block.is_encrypted && block.unusable.empty() && kind_of(block) == Kind::kPkcs12;
}

bool holds_private_key(const Block &block) {
    if (block.is_encrypted) return true;
    if (!block.unusable.empty()) return false;
    const Kind kind = kind_of(block);
    return kind == Kind::kRsaPrivate || kind == Kind::kEcPrivate || kind == Kind::kPkcs8 ||
           kind == Kind::kEncryptedPkcs8;
}

/// The key of the first block that holds one, or all of a file of PKCS #12.
std::vector<KeyFile> read_keys(const std::string &file, Password &password) {
    const Input input(file);
    for (const Block &block : input.blocks()) {
        if (is_pkcs12(block)) return read_pkcs12(block, password);
        if (holds_private_key(block)) {
            std::vector<KeyFile> keys;
            keys.push_back(read_key(block, password));
            return keys;
        }
        if (!block.unusable.empty()) throw Failure(block.source + ": " + block.unusable);
    }
    throw Failure(file + ": holds no private key of PKCS #1, PKCS #8 or PKCS #12");
}

}  // namespace

KeyFile read_key(const Block &block, Password &password) {
    KeyFile key;
    key.source = block.source;
    key.is_der = block.label.empty();
    key.is_encrypted_pem = block.is_encrypted;
    if (block.is_encrypted) {
        key.is_pkcs1 = true;
        key.info = info_of(decrypt_key(block, password));
        return key;
    }
    expect_one_element(block);
    switch (kind_of(block)) {
        case Kind::kRsaPrivate:
            key.is_pkcs1 = true;
            key.info = info_of(decode_private_key(block));
            return key;
        case Kind::kEcPrivate:
            key.is_ec = true;
            key.info = decode_ec_key(block);
            return key;
        case Kind::kPkcs8:
            key.info.reset(decode_record(block, Seq_to_P8_PRIV_KEY_INFO));
            return key;
        default:
            key.container.reset(decode_record(block, Seq_to_P8_ENCRYPTED_KEY));
            open_container(key, password);
            return key;
    }
}

KeyFile load_key(const std::string &path, Password &password, KeyUse use) {
    return std::move(read_keys(is_folder(path) ? in_folder(path, name_of(use)) : path, password).front());
}

Key load_private_key(const std::string &path, Password &password, KeyUse use) {
    const KeyFile key = load_key(path, password, use);
    ASYMMETRIC_KEY *made = nullptr;
    const uint32_t status = read_PRIV_KEY(key.info.get(), &made);
    Key owner(made);
    if (use == KeyUse::kSign && (status != 0 || (made->kind != TLX_KEY_RSA && made->kind != TLX_KEY_KCDSA))) {
        throw Failure(key.source + ": the key is neither of RSA nor of KCDSA");
    }
    if (status != 0) throw Failure(key.source + ": the key cannot be used: " + status_sentence(status));
    return owner;
}

std::vector<KeyFile> load_keys(const std::string &path, Password &password) {
    if (!is_folder(path)) return read_keys(path, password);
    std::vector<KeyFile> keys;
    for (const KeyUse use : {KeyUse::kSign, KeyUse::kDecrypt}) {
        const std::string file = in_folder(path, name_of(use));
        if (exists(file)) keys.push_back(load_key(file, password));
    }
    if (keys.empty()) throw Failure(path + ": the folder has neither signPri.key nor kmPri.key");
    return keys;
}

KeyForm form_of(const KeyFile &key) {
    if (key.is_pkcs12) throw Failure(key.source + ": is a PKCS #12 file; see tlxpki pkcs12 make");
    KeyForm form = {.is_pkcs1 = key.is_pkcs1, .is_der = key.is_der, .scheme = std::string(kNone)};
    if (key.is_encrypted_pem) form.scheme = "des-ede3-cbc";
    if (key.container == nullptr) return form;
    PKCS8_SCHEME scheme = {};
    const uint32_t status = get_PKCS8_scheme(key.container.get(), &scheme);
    if (status != 0) throw Failure(key.source + ": " + status_sentence(status));
    form.scheme = scheme.scheme;
    form.cipher = scheme.cipher;
    form.prf = scheme.prf;
    form.iterations = scheme.iterations;
    return form;
}

void write_key(const P8_PRIV_KEY_INFO *info, const KeyForm &form, Password &password, const std::string &path,
               bool replaces) {
    if (!replaces && exists(path)) throw Failure(path + ": exists; --force replaces it");
    const Buffer octets = form.is_pkcs1          ? in_pkcs1(info, form, password)
                          : form.scheme == kNone ? encoded(info, TLX_ENCODER(P8_PRIV_KEY_INFO_to_Seq),
                                                           "PRIVATE KEY", form.is_der)
                                                 : sealed(info, form, password);
    write_private_octets(path, octets.octets());
}

}  // namespace tool
