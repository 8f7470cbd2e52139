// A PKCS #11 module as some vendors make them: it exports the one function that gives the others.
#include <tlxpki/pkcs11.h>

#ifdef _WIN32
extern "C" __declspec(dllexport)
#else
extern "C" __attribute__((visibility("default")))
#endif
    CK_RV C_GetFunctionList(CK_FUNCTION_LIST_PTR_PTR list) {
    static CK_FUNCTION_LIST functions{};
    functions.version = {CRYPTOKI_VERSION_MAJOR, CRYPTOKI_VERSION_MINOR};
    *list = &functions;
    return CKR_OK;
}
