#include "system_anchors.hpp"

#ifdef _WIN32
#include <windows.h>
// After windows.h, which it needs.
#include <wincrypt.h>
#endif

#include "failure.hpp"

namespace tool {

#ifdef _WIN32

namespace {

struct CloseStore {
    void operator()(void *store) const { CertCloseStore(store, 0); }
};
using SystemStore = std::unique_ptr<void, CloseStore>;

}  // namespace

std::vector<ReceivedCertificate> system_anchors(std::vector<std::string> & /*warnings*/) {
    const SystemStore store(CertOpenSystemStoreW(0, L"ROOT"));
    std::vector<ReceivedCertificate> anchors;
    PCCERT_CONTEXT each = nullptr;
    // Asking for the next one frees the last.
    while (store != nullptr && (each = CertEnumCertificatesInStore(store.get(), each)) != nullptr) {
        if ((each->dwCertEncodingType & X509_ASN_ENCODING) == 0) continue;
        ReceivedCertificate anchor;
        anchor.octets = Buffer::copy_of({each->pbCertEncoded, each->cbCertEncoded});
        anchor.source = "store ROOT, certificate " + std::to_string(anchors.size() + 1);
        anchors.push_back(std::move(anchor));
    }
    if (anchors.empty()) throw Failure("--system-anchors: the store ROOT cannot be read, or is empty");
    return anchors;
}

#else

std::vector<ReceivedCertificate> system_anchors(std::vector<std::string> &warnings) {
    const std::string bundle = "/etc/ssl/certs/ca-certificates.crt";
    if (!exists(bundle)) {
        throw Failure("--system-anchors: there is no " + bundle + "; the package ca-certificates makes it");
    }
    return collect_received(bundle, warnings);
}

#endif

}  // namespace tool
