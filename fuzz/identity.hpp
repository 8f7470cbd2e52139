// The key and the certificate that seeds were made with.
#pragma once

#include "values.hpp"

namespace fuzz {

/// PKCS #1, 512 bits
inline constexpr char kKey[] =
    "3082013B020100024100B0149011E992F726C1AFD945E74EB8228831A618CB3932AF9A07695596280B04EB44FD41343F"
    "CA44A2D46E8946BD0ED688BB23B97E4707F1D892484352FCDFCB020301000102407525991C71BBF776EF91E10A22F43A"
    "89AEF6E93CC1A852528635BC1CD703D91FD7F53B826BBF1A18318FE081BD76E42F27D977C80E3BCEDB4B39D818952F2C"
    "31022100DCD2A145325073AABD79F61C2D181F9D060CAA9990B02D7AEDBD8AE99D70E2DF022100CC214AAA87B88F6173"
    "8B3CA89F9C966A4CFAA33F86FBC03FA4FDBFAC4685AC95022100BC85FA77080895676C52466231C189A3D6395420BCDD"
    "1C46F9D73B544D3CC603022100907A0BAFD0E9A6C9B18EDDFAF7254C2CA6994ACBDECCF64FD58627905645AC5502202E"
    "58AC3643FD1D4E0D110A583095D284DCD1F9D833993214698CA10782594E71";
/// Of "CN=Fuzz", signed by itself, until 2081
inline constexpr char kCertificate[] =
    "308201093081B4020107300D06092A864886F70D01010B0500300F310D300B06035504030C0446757A7A3020170D3236"
    "313132323039303935365A180F32303831303832353039303935365A300F310D300B06035504030C0446757A7A305C30"
    "0D06092A864886F70D0101010500034B003048024100B0149011E992F726C1AFD945E74EB8228831A618CB3932AF9A07"
    "695596280B04EB44FD41343FCA44A2D46E8946BD0ED688BB23B97E4707F1D892484352FCDFCB0203010001300D06092A"
    "864886F70D01010B05000341002681B4AE81F0CD02A43F83DE54D1AEB9FEEE1911F8EBED0C9B333E15DB0ADE73F25922"
    "42B1FFB7295639F23FA4FCA98DF946E01004C88DC34EA539C40EBBC24E";
struct Identity {
    Held<free_ASYMMETRIC_KEY> key{new_ASYMMETRIC_KEY()};
    Held<free_X509_CERT> cert;
    Held<free_X509_CERTIFICATES> pool{new_X509_CERTIFICATES()};
    Held<free_VERIFY_STORE> store{new_VERIFY_STORE()};
    Held<free_ASN1_TIME> time{charToASN1_TIME("2030-01-01,00:00:00")};
    VERIFY_SETTINGS settings{};  ///< which take keys of any size

    Identity() {
        const Octets key_octets = hex(kKey);
        const Octets cert_octets = hex(kCertificate);
        void *record = nullptr;
        require(readDER_from_Buffer(&record, TLX_DECODER(Seq_to_X509_CERT), cert_octets.data(),
                                    static_cast<std::uint32_t>(cert_octets.size())) == 0);
        cert.reset(static_cast<X509_CERT *>(record));
        record = nullptr;
        require(readDER_from_Buffer(&record, TLX_DECODER(Seq_to_PKCS1_RSA_PRIVATE_KEY), key_octets.data(),
                                    static_cast<std::uint32_t>(key_octets.size())) == 0);
        const Held<free_PKCS1_RSA_PRIVATE_KEY> numbers(static_cast<PKCS1_RSA_PRIVATE_KEY *>(record));
        const Held<free_RSA_UNIT> unit(new_RSA_UNIT());
        require(get_RSA_UNIT_from_PKCS1_RSA_PRIVATE_KEY(unit.get(), numbers.get()) == 0);
        set_ASYMMETRIC_KEY(key.get(), TLX_KEY_RSA, unit.get());
        add_X509_CERTIFICATES(pool.get(), cert.get());
        require(add_VERIFY_STORE_anchor(store.get(), cert_octets.data(),
                                        static_cast<std::uint32_t>(cert_octets.size()), 0) == 0);
        settings.time = time.get();
        settings.profile = TLX_PROFILE_ANY;
        settings.purpose = TLX_PURPOSE_SIGNING;
    }
};

inline const Identity &identity() {
    static const Identity known;
    return known;
}

}  // namespace fuzz
