#include "private_key.hpp"

#include "block_kind.hpp"
#include "hidden_line.hpp"
#include "record.hpp"

namespace tool {

namespace {

using KeyInfo = Owned<P8_PRIV_KEY_INFO, free_P8_PRIV_KEY_INFO>;

/// The first line of a file. The input owns and wipes it.
std::string_view first_line(const Input &file) {
    const Octets octets = file.blocks().front().octets;
    const std::string_view text(reinterpret_cast<const char *>(octets.data()), octets.size());
    return text.substr(0, text.find_first_of("\r\n"));
}

/// The cipher of a line "DEK-Info: DES-EDE3-CBC,0123456789ABCDEF"; empty when there is none.
std::string_view cipher_of(std::string_view block) {
    constexpr std::string_view kHeader = "DEK-Info: ";
    const std::size_t at = block.find(kHeader);
    if (at == std::string_view::npos) return {};
    const std::string_view value = block.substr(at + kHeader.size());
    return value.substr(0, value.find_first_of(",\r\n"));
}

std::string why_not_decrypted(const Block &block, uint32_t status) {
    constexpr std::string_view kSupported = "DES-EDE3-CBC";
    const std::string_view cipher = cipher_of(block.text);
    if (!cipher.empty() && cipher != kSupported) {
        return "the key is encrypted with " + std::string(cipher) + ", which is not supported, only " +
               std::string(kSupported) + " is";
    }
    return "the key cannot be decrypted (is the password right?): " + status_sentence(status);
}

Key private_key(const RsaKey &unit) {
    Key key = made<Key>(new_ASYMMETRIC_KEY());
    must(set_ASYMMETRIC_KEY(key.get(), TLX_KEY_RSA, unit.get()));
    return key;
}

KeyInfo open_key(const Block &block, Password &password) {
    const Owned<PKCS8, free_PKCS8> container(decode_record(block, Seq_to_P8_ENCRYPTED_KEY));
    const std::string_view text = password.of_key(block.source);
    P8_PRIV_KEY_INFO *info = nullptr;
    const uint32_t status =
        open_PKCS8(container.get(), text.data(), static_cast<uint32_t>(text.size()), &info);
    if (status == 0) return KeyInfo(info);
    throw Failure(block.source +
                  ": the key cannot be decrypted (is the password right?): " + exact_status_sentence(status));
}

/// Takes the key out of a PrivateKeyInfo.
Key key_in(const Block &block, P8_PRIV_KEY_INFO &info) {
    Key key(std::exchange(info.privateKey, nullptr));
    if (key != nullptr && (key->kind == TLX_KEY_RSA || key->kind == TLX_KEY_KCDSA)) return key;
    throw Failure(block.source + ": the key is neither one of RSA nor of KCDSA");
}

}  // namespace

Password::Password(const std::string &path) {
    if (path.empty()) return;
    file_.emplace(path);
    expect_contents(file_->blocks().front());
}

std::string_view Password::of_key(const std::string &source) {
    constexpr std::size_t kLongest = 4096;  // as a terminal's lines are
    if (file_) {
        const std::string_view line = first_line(*file_);
        if (!line.empty()) return line;
        throw Failure(source + ": the key is encrypted, and the first line of the password file is empty");
    }
    typed_ = Buffer::of_size(kLongest);
    const std::span<char> room(reinterpret_cast<char *>(typed_.data()), kLongest);
    const auto size = read_hidden_line("Password of " + printable(source) + ": ", room);
    if (!size) throw Failure(source + ": the key is encrypted; give its password with --password-file");
    if (*size == 0) throw Failure(source + ": the key is encrypted, and no password was typed");
    return {room.data(), *size};
}

RsaKey decrypt_key(const Block &block, Password &password) {
    if (block.label != "RSA PRIVATE KEY") {
        throw Failure(block.source + ": an encrypted " + block.label + " cannot be read");
    }
    const std::string_view text = password.of_key(block.source);
    auto unit = made<RsaKey>(new_RSA_UNIT());
    const uint32_t status = readPKCS1_from_Binary(unit.get(), text.data(), static_cast<int32_t>(text.size()),
                                                  block.text.data(), static_cast<int32_t>(block.text.size()));
    if (status != 0) throw Failure(block.source + ": " + why_not_decrypted(block, status));
    return unit;
}

RsaKey decode_private_key(const Block &block) {
    auto unit = made<RsaKey>(new_RSA_UNIT());
    const Owned<PKCS1_RSA_PRIVATE_KEY, free_PKCS1_RSA_PRIVATE_KEY> key(
        decode_record(block, Seq_to_PKCS1_RSA_PRIVATE_KEY));
    must(get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(unit.get(), key.get()));
    return unit;
}

Key load_private_key(const std::string &path, Password &password) {
    const Input input(path);
    for (const Block &block : input.blocks()) {
        if (block.is_encrypted) return private_key(decrypt_key(block, password));
        expect_contents(block);
        const Kind kind = kind_of(block);
        if (kind != Kind::kRsaPrivate && kind != Kind::kPkcs8 && kind != Kind::kEncryptedPkcs8) continue;
        expect_one_element(block);
        if (kind == Kind::kRsaPrivate) return private_key(decode_private_key(block));
        const KeyInfo info = kind == Kind::kPkcs8 ? KeyInfo(decode_record(block, Seq_to_P8_PRIV_KEY_INFO))
                                                  : open_key(block, password);
        return key_in(block, *info);
    }
    throw Failure(source_of(path) + ": holds no private key of PKCS #1 or PKCS #8");
}

}  // namespace tool
