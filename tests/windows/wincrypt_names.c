/* The values that <tlxpki/wincrypt.h> keeps are those that Windows' headers give. */
#include <windows.h>

#include <wincrypt.h>

static const LPCSTR kTheirs[] = {X509_CERT,       X509_NAME,    X509_EXTENSIONS,
                                 CMS_SIGNER_INFO, OCSP_REQUEST, OCSP_RESPONSE};

#include <stdio.h>
#include <tlxpki.h>
#include <tlxpki/ocsp.h>

static const LPCSTR kOurs[] = {TLX_WINCRYPT_X509_CERT,       TLX_WINCRYPT_X509_NAME,
                               TLX_WINCRYPT_X509_EXTENSIONS, TLX_WINCRYPT_CMS_SIGNER_INFO,
                               TLX_WINCRYPT_OCSP_REQUEST,    TLX_WINCRYPT_OCSP_RESPONSE};

int main(void) {
    X509_NAME *name = new_X509_NAME();
    OCSP_CERT_ID *id = new_OCSP_CERT_ID();
    int good = name != NULL && id != NULL;
    size_t i;
    for (i = 0; i < sizeof kOurs / sizeof kOurs[0]; ++i) {
        if (kOurs[i] == kTheirs[i]) continue;
        printf("value %u is %p, not %p\n", (unsigned)i, (const void *)kOurs[i], (const void *)kTheirs[i]);
        good = 0;
    }
    free_X509_NAME(name);
    free_OCSP_CERT_ID(id);
    return good ? 0 : 1;
}
