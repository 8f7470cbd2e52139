// tlxpki key: shows private keys, changes their form and their password, and makes them.
#include <algorithm>
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "key_file.hpp"
#include "output.hpp"

namespace tool {

namespace {

struct CurveType {
    std::string_view name;
    uint32_t kind;
    uint32_t curve;
};

constexpr CurveType kCurveTypes[] = {
    {"p256", TLX_KEY_ECDSA, TLX_CURVE_P256},   {"p384", TLX_KEY_ECDSA, TLX_CURVE_P384},
    {"p521", TLX_KEY_ECDSA, TLX_CURVE_P521},   {"ed25519", TLX_KEY_EDDSA, TLX_CURVE_ED25519},
    {"ed448", TLX_KEY_EDDSA, TLX_CURVE_ED448}, {"x25519", TLX_KEY_XDH, TLX_CURVE_X25519},
    {"x448", TLX_KEY_XDH, TLX_CURVE_X448},
};

KeyInfo info_of(uint32_t kind, void *unit) {
    const ASYMMETRIC_KEY key = {kind, unit};
    P8_PRIV_KEY_INFO *info = nullptr;
    must(write_PRIV_KEY(&key, &info));
    return KeyInfo(info);
}

KeyInfo generate_rsa(uint32_t bits) {
    constexpr uint32_t kExponent = 65537;
    const auto unit = made<RsaKey>(new_RSA_UNIT());
    if (gen_RSA_UNIT(unit.get(), bits == 0 ? 3072 : bits, kExponent) != 0) {
        throw Failure("an RSA key of this size cannot be made");
    }
    return info_of(TLX_KEY_RSA, unit.get());
}

KeyInfo generate_kcdsa(uint32_t bits) {
    constexpr uint32_t kSubgroupBits = 256;
    const auto unit = made<Owned<KCDSA, free_KCDSA>>(new_KCDSA());
    if (gen_KCDSA_params(unit.get(), bits == 0 ? 2048 : bits, kSubgroupBits, TLX_DIGEST_SHA256) != 0 ||
        gen_KCDSA_key(unit.get()) != 0) {
        throw Failure("a KCDSA key of this size cannot be made");
    }
    return info_of(TLX_KEY_KCDSA, unit.get());
}

/// Makes a key with a function of the library.
template <auto Free, typename Key>
KeyInfo generate_by(uint32_t (*generate)(uint32_t, Key **), const CurveType &type) {
    Key *key = nullptr;
    must(generate(type.curve, &key));
    const Owned<Key, Free> owner(key);
    return info_of(type.kind, key);
}

KeyInfo generate(const std::string &name, uint32_t bits) {
    if (name == "rsa") return generate_rsa(bits);
    if (name == "kcdsa") return generate_kcdsa(bits);
    if (bits != 0) throw Failure("--bits is for rsa and kcdsa: the curve " + name + " has its size");
    const auto *type = std::ranges::find(kCurveTypes, name, &CurveType::name);
    if (type->kind == TLX_KEY_ECDSA) return generate_by<free_ECDSA_KEY>(gen_ECDSA_KEY, *type);
    if (type->kind == TLX_KEY_EDDSA) return generate_by<free_EDDSA_KEY>(gen_EDDSA_KEY, *type);
    return generate_by<free_XDH_KEY>(gen_XDH_KEY, *type);
}

/// Writes the key, and says so in JSON when that is asked for.
int write(const P8_PRIV_KEY_INFO *info, const KeyForm &form, const KeyOptions &options) {
    expect_room_for_json(options.json, options.output);
    Password new_password(options.new_password_file);
    write_key(info, form, new_password, options.output, options.force);
    if (options.json) {
        print_json(std::cout, {{"output", options.output},
                               {"form", form.is_pkcs1 ? "PKCS #1" : "PKCS #8"},
                               {"scheme", form.scheme}});
    }
    return kGood;
}

KeyForm form_from(const KeyOptions &options) {
    return {.is_pkcs1 = options.to == "pkcs1", .is_der = options.der, .scheme = options.scheme};
}

}  // namespace

std::vector<std::string> key_schemes() {
    return {"pbes2", "seed", "aria", "seed-cbc", "gpki", "none"};
}

std::vector<std::string> key_types() {
    std::vector<std::string> types = {"rsa", "kcdsa"};
    for (const CurveType &type : kCurveTypes)
        types.emplace_back(type.name);
    return types;
}

int run_key_show(const KeyOptions &options) {
    Password password(options.password_file);
    Json keys = Json::array();
    for (const KeyFile &key : load_keys(options.input, password)) {
        keys.push_back({{"source", key.source}});
        keys.back().update(describe_key_file(key));
    }
    if (options.json) {
        print_json(std::cout, keys);
        return kGood;
    }
    for (Json &key : keys) {
        std::cout << printable(key["source"].get<std::string>()) << ": private key\n";
        key.erase("source");
        print_text(std::cout, key, 2);
    }
    return kGood;
}

int run_key_convert(const KeyOptions &options) {
    Password password(options.password_file);
    const KeyFile key = load_key(options.input, password);
    return write(key.info.get(), form_from(options), options);
}

int run_key_password(const KeyOptions &options) {
    Password password(options.password_file);
    const KeyFile key = load_key(options.input, password);
    const KeyForm form = form_of(key);
    if (form.scheme == "none")
        throw Failure(key.source + ": the key is not encrypted; see tlxpki key convert");
    return write(key.info.get(), form, options);
}

int run_key_make(const KeyOptions &options) {
    const KeyInfo info = generate(options.type, options.bits);
    return write(info.get(), form_from(options), options);
}

}  // namespace tool
