// A PKCS #11 module that exports every function that has a wrapper, and writes down what it is called with.
#include "call_record.hpp"

namespace {

CallRecord *g_record = nullptr;

template <typename... Arguments>
CK_RV note(const char *name, Arguments... arguments) {
    *g_record = {name, {to_number(arguments)...}, g_record->result};
    return g_record->result;
}

}  // namespace

#ifdef _WIN32
#define EXPORTED extern "C" __declspec(dllexport)
#else
#define EXPORTED extern "C" __attribute__((visibility("default")))
#endif
#define ENTRY(name, parameters, ...)     \
    EXPORTED CK_RV name parameters {     \
        return note(#name, __VA_ARGS__); \
    }

EXPORTED CK_RV C_Initialize(CK_VOID_PTR arguments) {
    g_record = static_cast<CallRecord *>(arguments);
    return note("C_Initialize", arguments);
}
ENTRY(C_Finalize, (CK_VOID_PTR reserved), reserved)
ENTRY(C_GetSlotList, (CK_BBOOL with_token, CK_SLOT_ID_PTR slots, CK_ULONG_PTR count), with_token, slots,
      count)
ENTRY(C_GetTokenInfo, (CK_SLOT_ID slot, CK_TOKEN_INFO_PTR info), slot, info)
ENTRY(C_OpenSession,
      (CK_SLOT_ID slot, CK_FLAGS flags, CK_VOID_PTR application, CK_NOTIFY notify,
       CK_SESSION_HANDLE_PTR session),
      slot, flags, application, notify, session)
ENTRY(C_CloseSession, (CK_SESSION_HANDLE session), session)
ENTRY(C_Login, (CK_SESSION_HANDLE session, CK_USER_TYPE user, CK_UTF8CHAR_PTR pin, CK_ULONG pin_length),
      session, user, pin, pin_length)
ENTRY(C_Logout, (CK_SESSION_HANDLE session), session)
ENTRY(C_GetAttributeValue,
      (CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE_PTR attributes, CK_ULONG count),
      session, object, attributes, count)
ENTRY(C_FindObjectsInit, (CK_SESSION_HANDLE session, CK_ATTRIBUTE_PTR attributes, CK_ULONG count), session,
      attributes, count)
ENTRY(C_FindObjects,
      (CK_SESSION_HANDLE session, CK_OBJECT_HANDLE_PTR objects, CK_ULONG room, CK_ULONG_PTR count), session,
      objects, room, count)
ENTRY(C_FindObjectsFinal, (CK_SESSION_HANDLE session), session)
ENTRY(C_GetSlotInfo, (CK_SLOT_ID slot, CK_SLOT_INFO_PTR info), slot, info)
ENTRY(C_GetFunctionList, (CK_FUNCTION_LIST_PTR_PTR list), list)
ENTRY(C_GetInfo, (CK_INFO_PTR info), info)
ENTRY(C_GenerateKeyPair,
      (CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_ATTRIBUTE_PTR public_attributes,
       CK_ULONG public_count, CK_ATTRIBUTE_PTR private_attributes, CK_ULONG private_count,
       CK_OBJECT_HANDLE_PTR public_key, CK_OBJECT_HANDLE_PTR private_key),
      session, mechanism, public_attributes, public_count, private_attributes, private_count, public_key,
      private_key)
ENTRY(C_CreateObject,
      (CK_SESSION_HANDLE session, CK_ATTRIBUTE_PTR attributes, CK_ULONG count, CK_OBJECT_HANDLE_PTR object),
      session, attributes, count, object)
ENTRY(C_EncryptInit, (CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key), session,
      mechanism, key)
ENTRY(C_Encrypt,
      (CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length, CK_BYTE_PTR encrypted,
       CK_ULONG_PTR encrypted_length),
      session, data, data_length, encrypted, encrypted_length)
ENTRY(C_EncryptUpdate,
      (CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length, CK_BYTE_PTR encrypted,
       CK_ULONG_PTR encrypted_length),
      session, part, part_length, encrypted, encrypted_length)
ENTRY(C_EncryptFinal, (CK_SESSION_HANDLE session, CK_BYTE_PTR last, CK_ULONG_PTR last_length), session, last,
      last_length)
ENTRY(C_DecryptInit, (CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key), session,
      mechanism, key)
ENTRY(C_Decrypt,
      (CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted, CK_ULONG encrypted_length, CK_BYTE_PTR data,
       CK_ULONG_PTR data_length),
      session, encrypted, encrypted_length, data, data_length)
ENTRY(C_DecryptUpdate,
      (CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted, CK_ULONG encrypted_length, CK_BYTE_PTR part,
       CK_ULONG_PTR part_length),
      session, encrypted, encrypted_length, part, part_length)
ENTRY(C_DecryptFinal, (CK_SESSION_HANDLE session, CK_BYTE_PTR last, CK_ULONG_PTR last_length), session, last,
      last_length)
ENTRY(C_DigestInit, (CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism), session, mechanism)
ENTRY(C_Digest,
      (CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length, CK_BYTE_PTR digest,
       CK_ULONG_PTR digest_length),
      session, data, data_length, digest, digest_length)
ENTRY(C_DigestUpdate, (CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length), session, part,
      part_length)
ENTRY(C_DigestKey, (CK_SESSION_HANDLE session, CK_OBJECT_HANDLE key), session, key)
ENTRY(C_DigestFinal, (CK_SESSION_HANDLE session, CK_BYTE_PTR digest, CK_ULONG_PTR digest_length), session,
      digest, digest_length)
ENTRY(C_SignInit, (CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key), session,
      mechanism, key)
ENTRY(C_Sign,
      (CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length, CK_BYTE_PTR signature,
       CK_ULONG_PTR signature_length),
      session, data, data_length, signature, signature_length)
ENTRY(C_SignUpdate, (CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length), session, part,
      part_length)
ENTRY(C_SignFinal, (CK_SESSION_HANDLE session, CK_BYTE_PTR signature, CK_ULONG_PTR signature_length), session,
      signature, signature_length)
ENTRY(C_VerifyInit, (CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key), session,
      mechanism, key)
ENTRY(C_Verify,
      (CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length, CK_BYTE_PTR signature,
       CK_ULONG signature_length),
      session, data, data_length, signature, signature_length)
ENTRY(C_DestroyObject, (CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object), session, object)
