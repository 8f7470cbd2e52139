// Requests and responses. A request that decodes is answered, and the answer has to verify; a response is
// looked at for the certificate that the seeds were made with.
#include "identity.hpp"

namespace {

using fuzz::Held;
using fuzz::identity;
using fuzz::require;

template <typename T>
T *read(const std::uint8_t *octets, std::size_t size, std::uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    void *record = nullptr;
    readDER_from_Buffer(&record, TLX_DECODER(decoder), octets, static_cast<std::uint32_t>(size));
    return static_cast<T *>(record);
}

/// Verifies a response, and takes the answer about the certificate in it.
std::uint32_t look_at(const OCSP_RESPONSE *response, const std::uint8_t *nonce, std::uint32_t length) {
    const X509_CERT *cert = identity().cert.get();
    BASIC_OCSP_RESPONSE *basic = nullptr;
    const std::uint32_t decoded = decode_BASIC_OCSP_RESPONSE(response, &basic);
    require((decoded == 0) == (basic != nullptr));
    const Held<free_BASIC_OCSP_RESPONSE> owner(basic);
    const std::uint32_t verified =
        verify_BASIC_OCSP_RESPONSE(basic, cert, identity().pool.get(), identity().time.get());
    OCSP_ANSWER answer;
    const std::uint32_t status =
        check_OCSP_RESPONSE(response, cert, cert, nonce, length, identity().time.get(), &answer);
    require(status != 0 || (decoded == 0 && answer.status <= TLX_OCSP_UNKNOWN && answer.thisUpdate.day != 0));
    return verified;
}

void answer(const OCSP_REQUEST *request) {
    const std::uint8_t *nonce = get_OCSP_REQUEST_nonce(request);
    const std::uint32_t length = get_OCSP_REQUEST_nonce_length(request);
    const X509_CERT *cert = identity().cert.get();
    const Held<free_P8_PRIV_KEY_INFO> key(new_P8_PRIV_KEY_INFO());
    const fuzz::String time(asn1TimeToGENERALIZED_TIME(identity().time.get(), 2));
    require(set_PRIV_KEY_KeyParams(key.get(), identity().key.get()) == 0);
    OCSP_RESPONSE_DATA *data = nullptr;
    BASIC_OCSP_RESPONSE *basic = nullptr;
    OCSP_RESPONSE_BYTES *bytes = nullptr;
    OCSP_RESPONSE *response = nullptr;
    require(generate_OCSP_RESPONSE_DATA_withKeyHash(&data, cert, 0, nonce, length) == 0);
    const OCSP_SINGLE_REQUESTS *list = request->tbsRequest->requestList;
    for (std::int32_t i = 0; get_OCSP_SINGLE_REQUESTS_child(list, i) != nullptr; ++i) {
        OCSP_CERT_ID *id = get_OCSP_SINGLE_REQUESTS_child(list, i)->reqCert;
        const bool ours = match_OCSP_CERT_ID(id, cert) == 0;
        require(add_single_OCSP_RESPONSE(data, &id, ours ? TLX_OCSP_GOOD : TLX_OCSP_UNKNOWN, nullptr,
                                         time.get(), time.get()) == 0);
    }
    require(generate_BASIC_OCSP_RESPONSE_ex(&basic, data, cert, key.get(), TLX_DIGEST_SHA256) == 0);
    const Held<free_BASIC_OCSP_RESPONSE> owner(basic);
    require(generate_OCSP_RESPONSE_BYTES(&bytes, basic) == 0);
    require(generate_OCSP_RESPONSE(&response, bytes, TLX_OCSP_SUCCESSFUL) == 0);
    const Held<free_OCSP_RESPONSE> response_owner(response);
    require(look_at(response, nonce, length) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const Held<free_OCSP_REQUEST> request(read(data, size, Seq_to_OCSP_REQUEST));
    if (request != nullptr) {
        verify_OCSP_REQUEST(request.get(), nullptr);
        verify_OCSP_REQUEST(request.get(), identity().cert.get());
        answer(request.get());
    }
    const Held<free_OCSP_RESPONSE> response(read(data, size, Seq_to_OCSP_RESPONSE));
    if (response != nullptr) look_at(response.get(), nullptr, 0);
    return 0;
}
