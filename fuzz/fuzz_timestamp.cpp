// Requests for time stamps, responses and tokens; a response may stand after its request. What is read is
// compared, verified for the content and the authority that the seeds were made with, and attached to a
// signer.
#include <tlxpki/timestamp.h>

#include "values.hpp"

namespace {

using fuzz::Held;
using fuzz::require;

/// Of "CN=Fuzz" with a key on P-256, signed by itself for time stamping, until 2081
constexpr char kAuthority[] =
    "3082016A30820111A00302010202146C3E70836F87F2310B0E977A44965AADDFA88496300A06082A8648CE3D04030230"
    "0F310D300B06035504030C0446757A7A3020170D3236313132333033303432335A180F32303831303832363033303432"
    "335A300F310D300B06035504030C0446757A7A3059301306072A8648CE3D020106082A8648CE3D03010703420004BB6F"
    "FDD62DEC91808AA310EA500B9D6D1F170FB0897F0C9C2349D5775B3935B6C7A86D46046C88751E295DE36352600DE18B"
    "7A553456BFF9890E18C2A76911CCA349304730160603551D250101FF040C300A06082B06010505070308300E0603551D"
    "0F0101FF040403020780301D0603551D0E04160414B1E802A7C6F124FFBE8262BBE077E3361519BBE7300A06082A8648"
    "CE3D040302034700304402204FAA867C888E27552BC9F018379F010DA3DA72BEDD0198504416C95CD3FF85DA02204E1F"
    "E3C86908C0302BD1CBC6D147EAF295A30885F941FBC8C51ACE39060D0972";
constexpr std::uint8_t kContent[] = "some content";
constexpr std::uint32_t kContentLength = sizeof kContent - 1;

/// What tokens are verified with.
struct Trust {
    Held<free_VERIFY_STORE> store{new_VERIFY_STORE()};
    Held<free_X509_CERTIFICATES> pool{new_X509_CERTIFICATES()};
    CMS_TIMESTAMP_SETTINGS settings{};

    Trust() {
        const fuzz::Octets octets = fuzz::hex(kAuthority);
        const auto length = static_cast<std::uint32_t>(octets.size());
        void *record = nullptr;
        require(readDER_from_Buffer(&record, TLX_DECODER(Seq_to_X509_CERT), octets.data(), length) == 0);
        const Held<free_X509_CERT> cert(static_cast<X509_CERT *>(record));
        require(add_X509_CERTIFICATES(pool.get(), cert.get()) == 0);
        require(add_VERIFY_STORE_anchor(store.get(), octets.data(), length, 0) == 0);
        settings.octets = kContent;
        settings.octets_len = kContentLength;
        settings.pool = pool.get();
        settings.store = store.get();
    }
};

const CMS_TIMESTAMP_SETTINGS &trust() {
    static const Trust known;
    return known.settings;
}

/// The record at the front of octets; null for octets that are none.
template <typename T>
T *read(const std::uint8_t *octets, std::size_t size, std::uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    void *record = nullptr;
    readDER_from_Buffer(&record, TLX_DECODER(decoder), octets, static_cast<std::uint32_t>(size));
    return static_cast<T *>(record);
}

struct Findings {
    std::uint32_t status;
    std::uint32_t info;
    std::uint32_t imprint;
    std::uint32_t request;
    std::uint32_t signer;

    bool operator==(const Findings &) const = default;
};

Findings verify(const CMS_CONTENT_INFO *token, const CMS_TIMESTAMP_SETTINGS &settings) {
    CMS_TIMESTAMP_REPORT *made = nullptr;
    const std::uint32_t status = verify_CMS_TIMESTAMP(token, &settings, &made);
    const Held<free_CMS_TIMESTAMP_REPORT> report(made);
    require(made != nullptr && made->status == status && (made->info == nullptr) == (made->time == nullptr));
    const Findings found = {status, made->infoStatus, made->imprintStatus, made->requestStatus,
                            made->signerStatus};
    const bool all_good = found.info == 0 && found.imprint == 0 && found.request == 0 && found.signer == 0;
    require((status == 0) == all_good && (status != 0 || made->signer->pathStatus == 0));
    return found;
}

/// Whether a token can be attached to a signer whose signature is the content.
bool attaches(const CMS_CONTENT_INFO *token) {
    const Held<free_CMS_SIGNER_INFO> signer(new_CMS_SIGNER_INFO());
    signer->signature = fuzz::string_of(TLX_TAG_OCTET_STRING, "some content").release();
    const bool added = add_CMS_SIGNER_INFO_timestamp(signer.get(), token) == 0;
    require(added == (signer->unsignedAttrs != nullptr));
    return added;
}

void look_at(const CMS_CONTENT_INFO *token, const CMS_TIMESTAMP_REQUEST *request) {
    CMS_TIMESTAMP_SETTINGS settings = trust();
    settings.request = request;
    const Findings found = verify(token, settings);
    CMS_TST_INFO *decoded = nullptr;
    const std::uint32_t status = decode_CMS_TST_INFO(token, &decoded);
    const Held<free_CMS_TST_INFO> info(decoded);
    require((status == 0) == (decoded != nullptr));
    require(status == 0 ? found.info == 0 || found.info == 0x52C70048 : found.info == status);
    const std::uint32_t matched =
        status != 0 ? status : match_CMS_MESSAGE_IMPRINT(decoded->messageImprint, kContent, kContentLength);
    require(attaches(token) == (matched == 0));
    // The digest may still be none of the profile's.
    require(matched == 0 ? found.imprint == 0 || found.imprint == 0x55020207 : found.imprint == matched);
    if (status != 0) return;
    const ASN1_STRING *digest = decoded->messageImprint->hashedMessage;
    settings.octets = nullptr;
    settings.digest = digest->data;
    settings.digest_len = static_cast<std::uint32_t>(digest->length);
    const std::uint32_t own = verify(token, settings).imprint;
    require(own == 0 || own == 0x55020207 || own == 0x52C60048);
}

void look_at(const CMS_TIMESTAMP_RESPONSE *response, const CMS_TIMESTAMP_REQUEST *request) {
    CMS_TST_INFO *compared = nullptr;
    const std::uint32_t status = check_CMS_TIMESTAMP_RESPONSE(response, request, &compared);
    const Held<free_CMS_TST_INFO> info(compared);
    require((status == 0) == (compared != nullptr));
    if (response->timeStampToken == nullptr) return;
    look_at(response->timeStampToken, request);
    if (status != 0 || request == nullptr) return;
    CMS_TIMESTAMP_SETTINGS settings = trust();
    settings.request = request;
    require(verify(response->timeStampToken, settings).request == 0);
}

/// Gives a request another nonce and policy, which are read again.
void change(CMS_TIMESTAMP_REQUEST *request, std::uint32_t octets) {
    const fuzz::String policy(text_to_OBJECT_IDENTIFIER("1.2.3.4"));
    require(set_CMS_TIMESTAMP_REQUEST_policy(request, policy.get()) == 0);
    require((generate_CMS_TIMESTAMP_REQUEST_nonce(request, octets) == 0) == (octets >= 1 && octets <= 64));
    std::uint8_t *der = nullptr;
    const std::uint32_t size = TLX_WRITE_DER(CMS_TIMESTAMP_REQUEST, request, &der);
    if (size == 0xFFFFFFFF) return;  // what the decoder takes of an extension is not always written
    const std::string written = fuzz::taken(der, size);
    const Held<free_CMS_TIMESTAMP_REQUEST> again(read(reinterpret_cast<const std::uint8_t *>(written.data()),
                                                      written.size(), Seq_to_CMS_TIMESTAMP_REQUEST));
    require(again != nullptr && fuzz::octets(again->reqPolicy) == "1.2.3.4");
    require((request->nonce == nullptr) == (again->nonce == nullptr));
    require(request->nonce == nullptr || cmp_BIGINT(request->nonce, again->nonce) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const Held<free_CMS_TIMESTAMP_REQUEST> request(read(data, size, Seq_to_CMS_TIMESTAMP_REQUEST));
    std::size_t at = 0;
    if (request != nullptr) at = fuzz::octets_of(fuzz::node_of(data, size).get()).size();
    const Held<free_CMS_TIMESTAMP_RESPONSE> response(
        read(data + at, size - at, Seq_to_CMS_TIMESTAMP_RESPONSE));
    if (response != nullptr) look_at(response.get(), request.get());
    const Held<free_CMS_CONTENT_INFO> token(read(data + at, size - at, Seq_to_CMS_CONTENT_INFO));
    if (token != nullptr) look_at(token.get(), request.get());
    if (request != nullptr) change(request.get(), data[size - 1]);
    return 0;
}
