// The one PKCS #11 module of the process, and the wrappers of its functions.
#include <tlxpki/pkcs11.h>

#include "keys/platform_module.hpp"

namespace tlx {
namespace {

constexpr uint32_t kNotLoadable = 0xFFFFFFFF;

constinit void *g_module = nullptr;
// The functions by name: those that no wrapper calls stay null.
constinit CK_FUNCTION_LIST g_functions{};

template <typename Function>
void resolve(Function CK_FUNCTION_LIST::*function, const char *name) noexcept {
    g_functions.*function = reinterpret_cast<Function>(module_function(g_module, name));
}

template <auto Function, typename... Arguments>
CK_RV forward(Arguments... arguments) noexcept {
    const auto function = g_functions.*Function;
    return function == nullptr ? CKR_CRYPTOKI_NOT_INITIALIZED : function(arguments...);
}

}  // namespace
}  // namespace tlx

using tlx::forward;

uint32_t _load_pkcs11_module(const char *path) {  // NOLINT(bugprone-reserved-identifier)
    tlx::g_module = path == nullptr ? nullptr : tlx::load_module(path);
    if (tlx::g_module == nullptr) return tlx::kNotLoadable;
    assign_function_list();
    return 0;
}

void assign_function_list() {
    using List = CK_FUNCTION_LIST;
    tlx::g_functions = {};
    if (tlx::g_module == nullptr) return;
    tlx::resolve(&List::C_Initialize, "C_Initialize");
    tlx::resolve(&List::C_Finalize, "C_Finalize");
    tlx::resolve(&List::C_GetSlotList, "C_GetSlotList");
    tlx::resolve(&List::C_GetTokenInfo, "C_GetTokenInfo");
    tlx::resolve(&List::C_OpenSession, "C_OpenSession");
    tlx::resolve(&List::C_CloseSession, "C_CloseSession");
    tlx::resolve(&List::C_Login, "C_Login");
    tlx::resolve(&List::C_Logout, "C_Logout");
    tlx::resolve(&List::C_GetAttributeValue, "C_GetAttributeValue");
    tlx::resolve(&List::C_FindObjectsInit, "C_FindObjectsInit");
    tlx::resolve(&List::C_FindObjects, "C_FindObjects");
    tlx::resolve(&List::C_FindObjectsFinal, "C_FindObjectsFinal");
    tlx::resolve(&List::C_GetSlotInfo, "C_GetSlotInfo");
    tlx::resolve(&List::C_GetFunctionList, "C_GetFunctionList");
    tlx::resolve(&List::C_GetInfo, "C_GetInfo");
    tlx::resolve(&List::C_GenerateKeyPair, "C_GenerateKeyPair");
    tlx::resolve(&List::C_CreateObject, "C_CreateObject");
    tlx::resolve(&List::C_EncryptInit, "C_EncryptInit");
    tlx::resolve(&List::C_Encrypt, "C_Encrypt");
    tlx::resolve(&List::C_EncryptUpdate, "C_EncryptUpdate");
    tlx::resolve(&List::C_EncryptFinal, "C_EncryptFinal");
    tlx::resolve(&List::C_DecryptInit, "C_DecryptInit");
    tlx::resolve(&List::C_Decrypt, "C_Decrypt");
    tlx::resolve(&List::C_DecryptUpdate, "C_DecryptUpdate");
    tlx::resolve(&List::C_DecryptFinal, "C_DecryptFinal");
    tlx::resolve(&List::C_DigestInit, "C_DigestInit");
    tlx::resolve(&List::C_Digest, "C_Digest");
    tlx::resolve(&List::C_DigestUpdate, "C_DigestUpdate");
    tlx::resolve(&List::C_DigestKey, "C_DigestKey");
    tlx::resolve(&List::C_DigestFinal, "C_DigestFinal");
    tlx::resolve(&List::C_SignInit, "C_SignInit");
    tlx::resolve(&List::C_Sign, "C_Sign");
    tlx::resolve(&List::C_SignUpdate, "C_SignUpdate");
    tlx::resolve(&List::C_SignFinal, "C_SignFinal");
    tlx::resolve(&List::C_VerifyInit, "C_VerifyInit");
    tlx::resolve(&List::C_Verify, "C_Verify");
    tlx::resolve(&List::C_DestroyObject, "C_DestroyObject");
}

void _unload_pkcs11_module() {  // NOLINT(bugprone-reserved-identifier)
    if (tlx::g_module == nullptr) return;
    tlx::unload_module(tlx::g_module);
    tlx::g_module = nullptr;
    // What these pointed to is gone: a wrapper called from now on must not reach it.
    tlx::g_functions = {};
}

CK_RV p11_C_Initialize(CK_VOID_PTR arguments) {
    return forward<&CK_FUNCTION_LIST::C_Initialize>(arguments);
}

CK_RV p11_C_Finalize(CK_VOID_PTR reserved) {
    return forward<&CK_FUNCTION_LIST::C_Finalize>(reserved);
}

CK_RV p11_C_GetSlotList(CK_BBOOL with_token, CK_SLOT_ID_PTR slots, CK_ULONG_PTR count) {
    return forward<&CK_FUNCTION_LIST::C_GetSlotList>(with_token, slots, count);
}

CK_RV p11_C_GetTokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO_PTR info) {
    return forward<&CK_FUNCTION_LIST::C_GetTokenInfo>(slot, info);
}

CK_RV p11_C_OpenSession(CK_SLOT_ID slot, CK_FLAGS flags, CK_VOID_PTR application, CK_NOTIFY notify,
                        CK_SESSION_HANDLE_PTR session) {
    return forward<&CK_FUNCTION_LIST::C_OpenSession>(slot, flags, application, notify, session);
}

CK_RV p11_C_CloseSession(CK_SESSION_HANDLE session) {
    return forward<&CK_FUNCTION_LIST::C_CloseSession>(session);
}

CK_RV p11_C_Login(CK_SESSION_HANDLE session, CK_USER_TYPE user, CK_UTF8CHAR_PTR pin, CK_ULONG pin_length) {
    return forward<&CK_FUNCTION_LIST::C_Login>(session, user, pin, pin_length);
}

CK_RV p11_C_Logout(CK_SESSION_HANDLE session) {
    return forward<&CK_FUNCTION_LIST::C_Logout>(session);
}

CK_RV p11_C_GetAttributeValue(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE_PTR attributes,
                              CK_ULONG count) {
    return forward<&CK_FUNCTION_LIST::C_GetAttributeValue>(session, object, attributes, count);
}

CK_RV p11_C_FindObjectsInit(CK_SESSION_HANDLE session, CK_ATTRIBUTE_PTR attributes, CK_ULONG count) {
    return forward<&CK_FUNCTION_LIST::C_FindObjectsInit>(session, attributes, count);
}

CK_RV p11_C_FindObjects(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE_PTR objects, CK_ULONG room,
                        CK_ULONG_PTR count) {
    return forward<&CK_FUNCTION_LIST::C_FindObjects>(session, objects, room, count);
}

CK_RV p11_C_FindObjectsFinal(CK_SESSION_HANDLE session) {
    return forward<&CK_FUNCTION_LIST::C_FindObjectsFinal>(session);
}

CK_RV p11_C_GetSlotInfo(CK_SLOT_ID slot, CK_SLOT_INFO_PTR info) {
    return forward<&CK_FUNCTION_LIST::C_GetSlotInfo>(slot, info);
}

CK_RV p11_C_GetFunctionList(CK_FUNCTION_LIST_PTR_PTR list) {
    return forward<&CK_FUNCTION_LIST::C_GetFunctionList>(list);
}

CK_RV p11_C_GetInfo(CK_INFO_PTR info) {
    return forward<&CK_FUNCTION_LIST::C_GetInfo>(info);
}

CK_RV p11_C_GenerateKeyPair(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                            CK_ATTRIBUTE_PTR public_attributes, CK_ULONG public_count,
                            CK_ATTRIBUTE_PTR private_attributes, CK_ULONG private_count,
                            CK_OBJECT_HANDLE_PTR public_key, CK_OBJECT_HANDLE_PTR private_key) {
    return forward<&CK_FUNCTION_LIST::C_GenerateKeyPair>(session, mechanism, public_attributes, public_count,
                                                         private_attributes, private_count, public_key,
                                                         private_key);
}

CK_RV p11_C_CreateObject(CK_SESSION_HANDLE session, CK_ATTRIBUTE_PTR attributes, CK_ULONG count,
                         CK_OBJECT_HANDLE_PTR object) {
    return forward<&CK_FUNCTION_LIST::C_CreateObject>(session, attributes, count, object);
}

CK_RV p11_C_EncryptInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key) {
    return forward<&CK_FUNCTION_LIST::C_EncryptInit>(session, mechanism, key);
}

CK_RV p11_C_Encrypt(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length, CK_BYTE_PTR encrypted,
                    CK_ULONG_PTR encrypted_length) {
    return forward<&CK_FUNCTION_LIST::C_Encrypt>(session, data, data_length, encrypted, encrypted_length);
}

CK_RV p11_C_EncryptUpdate(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length,
                          CK_BYTE_PTR encrypted, CK_ULONG_PTR encrypted_length) {
    return forward<&CK_FUNCTION_LIST::C_EncryptUpdate>(session, part, part_length, encrypted,
                                                       encrypted_length);
}

CK_RV p11_C_EncryptFinal(CK_SESSION_HANDLE session, CK_BYTE_PTR last, CK_ULONG_PTR last_length) {
    return forward<&CK_FUNCTION_LIST::C_EncryptFinal>(session, last, last_length);
}

CK_RV p11_C_DecryptInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key) {
    return forward<&CK_FUNCTION_LIST::C_DecryptInit>(session, mechanism, key);
}

CK_RV p11_C_Decrypt(CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted, CK_ULONG encrypted_length,
                    CK_BYTE_PTR data, CK_ULONG_PTR data_length) {
    return forward<&CK_FUNCTION_LIST::C_Decrypt>(session, encrypted, encrypted_length, data, data_length);
}

CK_RV p11_C_DecryptUpdate(CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted, CK_ULONG encrypted_length,
                          CK_BYTE_PTR part, CK_ULONG_PTR part_length) {
    return forward<&CK_FUNCTION_LIST::C_DecryptUpdate>(session, encrypted, encrypted_length, part,
                                                       part_length);
}

CK_RV p11_C_DecryptFinal(CK_SESSION_HANDLE session, CK_BYTE_PTR last, CK_ULONG_PTR last_length) {
    return forward<&CK_FUNCTION_LIST::C_DecryptFinal>(session, last, last_length);
}

CK_RV p11_C_DigestInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism) {
    return forward<&CK_FUNCTION_LIST::C_DigestInit>(session, mechanism);
}

CK_RV p11_C_Digest(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length, CK_BYTE_PTR digest,
                   CK_ULONG_PTR digest_length) {
    return forward<&CK_FUNCTION_LIST::C_Digest>(session, data, data_length, digest, digest_length);
}

CK_RV p11_C_DigestUpdate(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length) {
    return forward<&CK_FUNCTION_LIST::C_DigestUpdate>(session, part, part_length);
}

CK_RV p11_C_DigestKey(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE key) {
    return forward<&CK_FUNCTION_LIST::C_DigestKey>(session, key);
}

CK_RV p11_C_DigestFinal(CK_SESSION_HANDLE session, CK_BYTE_PTR digest, CK_ULONG_PTR digest_length) {
    return forward<&CK_FUNCTION_LIST::C_DigestFinal>(session, digest, digest_length);
}

CK_RV p11_C_SignInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key) {
    return forward<&CK_FUNCTION_LIST::C_SignInit>(session, mechanism, key);
}

CK_RV p11_C_Sign(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length, CK_BYTE_PTR signature,
                 CK_ULONG_PTR signature_length) {
    return forward<&CK_FUNCTION_LIST::C_Sign>(session, data, data_length, signature, signature_length);
}

CK_RV p11_C_SignUpdate(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length) {
    return forward<&CK_FUNCTION_LIST::C_SignUpdate>(session, part, part_length);
}

CK_RV p11_C_SignFinal(CK_SESSION_HANDLE session, CK_BYTE_PTR signature, CK_ULONG_PTR signature_length) {
    return forward<&CK_FUNCTION_LIST::C_SignFinal>(session, signature, signature_length);
}

CK_RV p11_C_VerifyInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key) {
    return forward<&CK_FUNCTION_LIST::C_VerifyInit>(session, mechanism, key);
}

CK_RV p11_C_Verify(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length, CK_BYTE_PTR signature,
                   CK_ULONG signature_length) {
    return forward<&CK_FUNCTION_LIST::C_Verify>(session, data, data_length, signature, signature_length);
}

CK_RV p11_C_DestroyObject(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object) {
    return forward<&CK_FUNCTION_LIST::C_DestroyObject>(session, object);
}
