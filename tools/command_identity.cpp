// tlxpki identity: whether a certificate, its key and an identity number belong together.
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "key_file.hpp"
#include "status.hpp"

namespace tool {

int run_identity_check(const IdentityOptions &options) {
    constexpr uint32_t kOther = 0x4761005E;
    Password password(options.password_file);
    const std::vector<LoadedCertificate> certs = load_certificates(options.cert);
    const KeyFile key = load_key(options.key, password);
    const BIT_STRING *random = get_PRIV_KEY_random(key.info.get());
    if (random == nullptr) {
        throw Failure(key.source + ": the key has no random number (attribute 1.2.410.200004.10.1.1.3)");
    }
    const Buffer number = read_octets(options.number_file);
    const std::string_view digits = first_line(number.octets());
    const uint32_t status = verify_KISA_VID(certs.front().cert.get(), digits.data(),
                                            static_cast<uint32_t>(digits.size()), random);
    if (status != 0 && status != kOther) {
        throw Failure(certs.front().source + ": the identity cannot be checked: " + status_sentence(status));
    }
    if (options.json) {
        print_json(std::cout, {{"belongs", status == 0}});
        return status == 0 ? kGood : kNotValid;
    }
    std::cout << (status == 0 ? "The number belongs to the certificate and its key.\n"
                              : "The number does not belong to the certificate and its key.\n");
    return status == 0 ? kGood : kNotValid;
}

}  // namespace tool
