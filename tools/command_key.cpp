// tlxpki key: shows private keys, changes their form and their password, and makes them.
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "key_file.hpp"
#include "output.hpp"

namespace tool {

namespace {

KeyInfo generate(const std::string &type, uint32_t bits) {
    P8_PRIV_KEY_INFO *info = nullptr;
    if (type == "rsa") {
        constexpr uint32_t kExponent = 65537;
        const auto unit = made<RsaKey>(new_RSA_UNIT());
        if (gen_RSA_UNIT(unit.get(), bits == 0 ? 3072 : bits, kExponent) != 0) {
            throw Failure("an RSA key of this size cannot be made");
        }
        const ASYMMETRIC_KEY key = {TLX_KEY_RSA, unit.get()};
        must(gen_P8_PRIV_KEY_INFO(&key, &info));
        return KeyInfo(info);
    }
    constexpr uint32_t kSubgroupBits = 256;
    const auto unit = made<Owned<KCDSA, free_KCDSA>>(new_KCDSA());
    if (gen_KCDSA_params(unit.get(), bits == 0 ? 2048 : bits, kSubgroupBits, TLX_DIGEST_SHA256) != 0 ||
        gen_KCDSA_key(unit.get()) != 0) {
        throw Failure("a KCDSA key of this size cannot be made");
    }
    const ASYMMETRIC_KEY key = {TLX_KEY_KCDSA, unit.get()};
    must(gen_P8_PRIV_KEY_INFO(&key, &info));
    return KeyInfo(info);
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
