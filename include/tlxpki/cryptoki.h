/** @file
 * The types of PKCS #11 2.40 (OASIS Standard, Cryptographic Token Interface, Base Specification) that modules
 * and their callers exchange: packed by 1 on Windows, with CK_ULONG as an unsigned long. Programs include
 * <tlxpki/pkcs11.h>, which leaves these out for a program that has included a Cryptoki header of its own.
 */
#ifndef TLXPKI_CRYPTOKI_H
#define TLXPKI_CRYPTOKI_H

#include <tlxpki/cryptoki_values.h>
#include <tlxpki/export.h>

#define CRYPTOKI_VERSION_MAJOR 2
#define CRYPTOKI_VERSION_MINOR 40

#define CK_TRUE 1
#define CK_FALSE 0
#define CK_INVALID_HANDLE 0UL
#define CK_UNAVAILABLE_INFORMATION (~0UL)
#define CK_EFFECTIVELY_INFINITE 0UL

TLX_BEGIN_DECLS
#ifdef _WIN32
#pragma pack(push, 1)
#endif

/* Octets, numbers and pointers (section 3). */
typedef unsigned char CK_BYTE;
typedef CK_BYTE CK_CHAR;
typedef CK_BYTE CK_UTF8CHAR;
typedef CK_BYTE CK_BBOOL;
typedef unsigned long CK_ULONG;
typedef long CK_LONG;
typedef CK_ULONG CK_FLAGS;
typedef CK_BYTE *CK_BYTE_PTR;
typedef CK_CHAR *CK_CHAR_PTR;
typedef CK_UTF8CHAR *CK_UTF8CHAR_PTR;
typedef CK_ULONG *CK_ULONG_PTR;
typedef void *CK_VOID_PTR;
typedef void **CK_VOID_PTR_PTR;

/* Names of things: results, slots, sessions, objects and what they are. */
typedef CK_ULONG CK_RV;
typedef CK_ULONG CK_NOTIFICATION;
typedef CK_ULONG CK_SLOT_ID;
typedef CK_ULONG CK_SESSION_HANDLE;
typedef CK_ULONG CK_USER_TYPE;
typedef CK_ULONG CK_STATE;
typedef CK_ULONG CK_OBJECT_HANDLE;
typedef CK_ULONG CK_OBJECT_CLASS;
typedef CK_ULONG CK_CERTIFICATE_TYPE;
typedef CK_ULONG CK_KEY_TYPE;
typedef CK_ULONG CK_ATTRIBUTE_TYPE;
typedef CK_ULONG CK_MECHANISM_TYPE;
typedef CK_ULONG CK_RSA_PKCS_MGF_TYPE;
typedef CK_ULONG CK_RSA_PKCS_OAEP_SOURCE_TYPE;
typedef CK_SLOT_ID *CK_SLOT_ID_PTR;
typedef CK_SESSION_HANDLE *CK_SESSION_HANDLE_PTR;
typedef CK_OBJECT_HANDLE *CK_OBJECT_HANDLE_PTR;
typedef CK_OBJECT_CLASS *CK_OBJECT_CLASS_PTR;
typedef CK_MECHANISM_TYPE *CK_MECHANISM_TYPE_PTR;

/** A version number, such as 2.40 as 2 and 40. */
typedef struct CK_VERSION {
    CK_BYTE major;
    CK_BYTE minor;
} CK_VERSION;
typedef CK_VERSION *CK_VERSION_PTR;

/** What a module is. Texts of this and the next two are padded with spaces and not terminated. */
typedef struct CK_INFO {
    CK_VERSION cryptokiVersion;
    CK_UTF8CHAR manufacturerID[32];
    CK_FLAGS flags;
    CK_UTF8CHAR libraryDescription[32];
    CK_VERSION libraryVersion;
} CK_INFO;
typedef CK_INFO *CK_INFO_PTR;

/** What a slot is. */
typedef struct CK_SLOT_INFO {
    CK_UTF8CHAR slotDescription[64];
    CK_UTF8CHAR manufacturerID[32];
    CK_FLAGS flags;
    CK_VERSION hardwareVersion;
    CK_VERSION firmwareVersion;
} CK_SLOT_INFO;
typedef CK_SLOT_INFO *CK_SLOT_INFO_PTR;

/** What a token is, and what it has room for. */
typedef struct CK_TOKEN_INFO {
    CK_UTF8CHAR label[32];
    CK_UTF8CHAR manufacturerID[32];
    CK_UTF8CHAR model[16];
    CK_CHAR serialNumber[16];
    CK_FLAGS flags;
    CK_ULONG ulMaxSessionCount;
    CK_ULONG ulSessionCount;
    CK_ULONG ulMaxRwSessionCount;
    CK_ULONG ulRwSessionCount;
    CK_ULONG ulMaxPinLen;
    CK_ULONG ulMinPinLen;
    CK_ULONG ulTotalPublicMemory;
    CK_ULONG ulFreePublicMemory;
    CK_ULONG ulTotalPrivateMemory;
    CK_ULONG ulFreePrivateMemory;
    CK_VERSION hardwareVersion;
    CK_VERSION firmwareVersion;
    CK_CHAR utcTime[16];
} CK_TOKEN_INFO;
typedef CK_TOKEN_INFO *CK_TOKEN_INFO_PTR;

/** What a session may do. */
typedef struct CK_SESSION_INFO {
    CK_SLOT_ID slotID;
    CK_STATE state;
    CK_FLAGS flags;
    CK_ULONG ulDeviceError;
} CK_SESSION_INFO;
typedef CK_SESSION_INFO *CK_SESSION_INFO_PTR;

/** One attribute of an object: its type and its value. */
typedef struct CK_ATTRIBUTE {
    CK_ATTRIBUTE_TYPE type;
    CK_VOID_PTR pValue;
    CK_ULONG ulValueLen; /**< octets */
} CK_ATTRIBUTE;
typedef CK_ATTRIBUTE *CK_ATTRIBUTE_PTR;

/** A day in decimal digits. */
typedef struct CK_DATE {
    CK_CHAR year[4];
    CK_CHAR month[2];
    CK_CHAR day[2];
} CK_DATE;

/** An algorithm with its parameter. */
typedef struct CK_MECHANISM {
    CK_MECHANISM_TYPE mechanism;
    CK_VOID_PTR pParameter;
    CK_ULONG ulParameterLen; /**< octets */
} CK_MECHANISM;
typedef CK_MECHANISM *CK_MECHANISM_PTR;

/** What a token can do with an algorithm. */
typedef struct CK_MECHANISM_INFO {
    CK_ULONG ulMinKeySize;
    CK_ULONG ulMaxKeySize;
    CK_FLAGS flags;
} CK_MECHANISM_INFO;
typedef CK_MECHANISM_INFO *CK_MECHANISM_INFO_PTR;

/** The parameter of the mechanisms of RSASSA-PSS. */
typedef struct CK_RSA_PKCS_PSS_PARAMS {
    CK_MECHANISM_TYPE hashAlg;
    CK_RSA_PKCS_MGF_TYPE mgf;
    CK_ULONG sLen; /**< octets of salt */
} CK_RSA_PKCS_PSS_PARAMS;

/** The parameter of the mechanism of RSAES-OAEP. */
typedef struct CK_RSA_PKCS_OAEP_PARAMS {
    CK_MECHANISM_TYPE hashAlg;
    CK_RSA_PKCS_MGF_TYPE mgf;
    CK_RSA_PKCS_OAEP_SOURCE_TYPE source;
    CK_VOID_PTR pSourceData;
    CK_ULONG ulSourceDataLen; /**< octets */
} CK_RSA_PKCS_OAEP_PARAMS;

/* What a module calls: notices of a session, and the locks of a program with threads of its own. */
typedef CK_RV (*CK_NOTIFY)(CK_SESSION_HANDLE session, CK_NOTIFICATION event, CK_VOID_PTR application);
typedef CK_RV (*CK_CREATEMUTEX)(CK_VOID_PTR_PTR mutex);
typedef CK_RV (*CK_DESTROYMUTEX)(CK_VOID_PTR mutex);
typedef CK_RV (*CK_LOCKMUTEX)(CK_VOID_PTR mutex);
typedef CK_RV (*CK_UNLOCKMUTEX)(CK_VOID_PTR mutex);

/** The argument of C_Initialize. */
typedef struct CK_C_INITIALIZE_ARGS {
    CK_CREATEMUTEX CreateMutex;
    CK_DESTROYMUTEX DestroyMutex;
    CK_LOCKMUTEX LockMutex;
    CK_UNLOCKMUTEX UnlockMutex;
    CK_FLAGS flags;
    CK_VOID_PTR pReserved;
} CK_C_INITIALIZE_ARGS;
typedef CK_C_INITIALIZE_ARGS *CK_C_INITIALIZE_ARGS_PTR;

typedef struct CK_FUNCTION_LIST CK_FUNCTION_LIST;
typedef CK_FUNCTION_LIST *CK_FUNCTION_LIST_PTR;
typedef CK_FUNCTION_LIST_PTR *CK_FUNCTION_LIST_PTR_PTR;

/* The functions of a module (section 5). */
typedef CK_RV (*CK_C_Initialize)(CK_VOID_PTR arguments);
typedef CK_RV (*CK_C_Finalize)(CK_VOID_PTR reserved);
typedef CK_RV (*CK_C_GetInfo)(CK_INFO_PTR info);
typedef CK_RV (*CK_C_GetFunctionList)(CK_FUNCTION_LIST_PTR_PTR list);
typedef CK_RV (*CK_C_GetSlotList)(CK_BBOOL with_token, CK_SLOT_ID_PTR slots, CK_ULONG_PTR count);
typedef CK_RV (*CK_C_GetSlotInfo)(CK_SLOT_ID slot, CK_SLOT_INFO_PTR info);
typedef CK_RV (*CK_C_GetTokenInfo)(CK_SLOT_ID slot, CK_TOKEN_INFO_PTR info);
typedef CK_RV (*CK_C_GetMechanismList)(CK_SLOT_ID slot, CK_MECHANISM_TYPE_PTR mechanisms, CK_ULONG_PTR count);
typedef CK_RV (*CK_C_GetMechanismInfo)(CK_SLOT_ID slot, CK_MECHANISM_TYPE mechanism,
                                       CK_MECHANISM_INFO_PTR info);
typedef CK_RV (*CK_C_InitToken)(CK_SLOT_ID slot, CK_UTF8CHAR_PTR pin, CK_ULONG pin_length,
                                CK_UTF8CHAR_PTR label);
typedef CK_RV (*CK_C_InitPIN)(CK_SESSION_HANDLE session, CK_UTF8CHAR_PTR pin, CK_ULONG pin_length);
typedef CK_RV (*CK_C_SetPIN)(CK_SESSION_HANDLE session, CK_UTF8CHAR_PTR old_pin, CK_ULONG old_length,
                             CK_UTF8CHAR_PTR new_pin, CK_ULONG new_length);
typedef CK_RV (*CK_C_OpenSession)(CK_SLOT_ID slot, CK_FLAGS flags, CK_VOID_PTR application, CK_NOTIFY notify,
                                  CK_SESSION_HANDLE_PTR session);
typedef CK_RV (*CK_C_CloseSession)(CK_SESSION_HANDLE session);
typedef CK_RV (*CK_C_CloseAllSessions)(CK_SLOT_ID slot);
typedef CK_RV (*CK_C_GetSessionInfo)(CK_SESSION_HANDLE session, CK_SESSION_INFO_PTR info);
typedef CK_RV (*CK_C_GetOperationState)(CK_SESSION_HANDLE session, CK_BYTE_PTR state,
                                        CK_ULONG_PTR state_length);
typedef CK_RV (*CK_C_SetOperationState)(CK_SESSION_HANDLE session, CK_BYTE_PTR state, CK_ULONG state_length,
                                        CK_OBJECT_HANDLE encryption_key, CK_OBJECT_HANDLE authentication_key);
typedef CK_RV (*CK_C_Login)(CK_SESSION_HANDLE session, CK_USER_TYPE user, CK_UTF8CHAR_PTR pin,
                            CK_ULONG pin_length);
typedef CK_RV (*CK_C_Logout)(CK_SESSION_HANDLE session);
typedef CK_RV (*CK_C_CreateObject)(CK_SESSION_HANDLE session, CK_ATTRIBUTE_PTR attributes, CK_ULONG count,
                                   CK_OBJECT_HANDLE_PTR object);
typedef CK_RV (*CK_C_CopyObject)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                                 CK_ATTRIBUTE_PTR attributes, CK_ULONG count, CK_OBJECT_HANDLE_PTR copy);
typedef CK_RV (*CK_C_DestroyObject)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object);
typedef CK_RV (*CK_C_GetObjectSize)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ULONG_PTR size);
typedef CK_RV (*CK_C_GetAttributeValue)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                                        CK_ATTRIBUTE_PTR attributes, CK_ULONG count);
typedef CK_RV (*CK_C_SetAttributeValue)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                                        CK_ATTRIBUTE_PTR attributes, CK_ULONG count);
typedef CK_RV (*CK_C_FindObjectsInit)(CK_SESSION_HANDLE session, CK_ATTRIBUTE_PTR attributes, CK_ULONG count);
typedef CK_RV (*CK_C_FindObjects)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE_PTR objects, CK_ULONG room,
                                  CK_ULONG_PTR count);
typedef CK_RV (*CK_C_FindObjectsFinal)(CK_SESSION_HANDLE session);
typedef CK_RV (*CK_C_EncryptInit)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                  CK_OBJECT_HANDLE key);
typedef CK_RV (*CK_C_Encrypt)(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length,
                              CK_BYTE_PTR encrypted, CK_ULONG_PTR encrypted_length);
typedef CK_RV (*CK_C_EncryptUpdate)(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length,
                                    CK_BYTE_PTR encrypted, CK_ULONG_PTR encrypted_length);
typedef CK_RV (*CK_C_EncryptFinal)(CK_SESSION_HANDLE session, CK_BYTE_PTR last, CK_ULONG_PTR last_length);
typedef CK_RV (*CK_C_DecryptInit)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                  CK_OBJECT_HANDLE key);
typedef CK_RV (*CK_C_Decrypt)(CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted, CK_ULONG encrypted_length,
                              CK_BYTE_PTR data, CK_ULONG_PTR data_length);
typedef CK_RV (*CK_C_DecryptUpdate)(CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted,
                                    CK_ULONG encrypted_length, CK_BYTE_PTR part, CK_ULONG_PTR part_length);
typedef CK_RV (*CK_C_DecryptFinal)(CK_SESSION_HANDLE session, CK_BYTE_PTR last, CK_ULONG_PTR last_length);
typedef CK_RV (*CK_C_DigestInit)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism);
typedef CK_RV (*CK_C_Digest)(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length,
                             CK_BYTE_PTR digest, CK_ULONG_PTR digest_length);
typedef CK_RV (*CK_C_DigestUpdate)(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length);
typedef CK_RV (*CK_C_DigestKey)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE key);
typedef CK_RV (*CK_C_DigestFinal)(CK_SESSION_HANDLE session, CK_BYTE_PTR digest, CK_ULONG_PTR digest_length);
typedef CK_RV (*CK_C_SignInit)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key);
typedef CK_RV (*CK_C_Sign)(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length,
                           CK_BYTE_PTR signature, CK_ULONG_PTR signature_length);
typedef CK_RV (*CK_C_SignUpdate)(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length);
typedef CK_RV (*CK_C_SignFinal)(CK_SESSION_HANDLE session, CK_BYTE_PTR signature,
                                CK_ULONG_PTR signature_length);
typedef CK_RV (*CK_C_SignRecoverInit)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                      CK_OBJECT_HANDLE key);
typedef CK_RV (*CK_C_SignRecover)(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length,
                                  CK_BYTE_PTR signature, CK_ULONG_PTR signature_length);
typedef CK_RV (*CK_C_VerifyInit)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key);
typedef CK_RV (*CK_C_Verify)(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length,
                             CK_BYTE_PTR signature, CK_ULONG signature_length);
typedef CK_RV (*CK_C_VerifyUpdate)(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length);
typedef CK_RV (*CK_C_VerifyFinal)(CK_SESSION_HANDLE session, CK_BYTE_PTR signature,
                                  CK_ULONG signature_length);
typedef CK_RV (*CK_C_VerifyRecoverInit)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                        CK_OBJECT_HANDLE key);
typedef CK_RV (*CK_C_VerifyRecover)(CK_SESSION_HANDLE session, CK_BYTE_PTR signature,
                                    CK_ULONG signature_length, CK_BYTE_PTR data, CK_ULONG_PTR data_length);
typedef CK_RV (*CK_C_DigestEncryptUpdate)(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length,
                                          CK_BYTE_PTR encrypted, CK_ULONG_PTR encrypted_length);
typedef CK_RV (*CK_C_DecryptDigestUpdate)(CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted,
                                          CK_ULONG encrypted_length, CK_BYTE_PTR part,
                                          CK_ULONG_PTR part_length);
typedef CK_RV (*CK_C_SignEncryptUpdate)(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length,
                                        CK_BYTE_PTR encrypted, CK_ULONG_PTR encrypted_length);
typedef CK_RV (*CK_C_DecryptVerifyUpdate)(CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted,
                                          CK_ULONG encrypted_length, CK_BYTE_PTR part,
                                          CK_ULONG_PTR part_length);
typedef CK_RV (*CK_C_GenerateKey)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                  CK_ATTRIBUTE_PTR attributes, CK_ULONG count, CK_OBJECT_HANDLE_PTR key);
typedef CK_RV (*CK_C_GenerateKeyPair)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                      CK_ATTRIBUTE_PTR public_attributes, CK_ULONG public_count,
                                      CK_ATTRIBUTE_PTR private_attributes, CK_ULONG private_count,
                                      CK_OBJECT_HANDLE_PTR public_key, CK_OBJECT_HANDLE_PTR private_key);
typedef CK_RV (*CK_C_WrapKey)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                              CK_OBJECT_HANDLE wrapping_key, CK_OBJECT_HANDLE key, CK_BYTE_PTR wrapped,
                              CK_ULONG_PTR wrapped_length);
typedef CK_RV (*CK_C_UnwrapKey)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                CK_OBJECT_HANDLE unwrapping_key, CK_BYTE_PTR wrapped, CK_ULONG wrapped_length,
                                CK_ATTRIBUTE_PTR attributes, CK_ULONG count, CK_OBJECT_HANDLE_PTR key);
typedef CK_RV (*CK_C_DeriveKey)(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                CK_OBJECT_HANDLE base_key, CK_ATTRIBUTE_PTR attributes, CK_ULONG count,
                                CK_OBJECT_HANDLE_PTR key);
typedef CK_RV (*CK_C_SeedRandom)(CK_SESSION_HANDLE session, CK_BYTE_PTR seed, CK_ULONG seed_length);
typedef CK_RV (*CK_C_GenerateRandom)(CK_SESSION_HANDLE session, CK_BYTE_PTR random, CK_ULONG random_length);
typedef CK_RV (*CK_C_GetFunctionStatus)(CK_SESSION_HANDLE session);
typedef CK_RV (*CK_C_CancelFunction)(CK_SESSION_HANDLE session);
typedef CK_RV (*CK_C_WaitForSlotEvent)(CK_FLAGS flags, CK_SLOT_ID_PTR slot, CK_VOID_PTR reserved);

/** The functions of a module, in the order of the standard. */
struct CK_FUNCTION_LIST {
    CK_VERSION version;
    CK_C_Initialize C_Initialize;
    CK_C_Finalize C_Finalize;
    CK_C_GetInfo C_GetInfo;
    CK_C_GetFunctionList C_GetFunctionList;
    CK_C_GetSlotList C_GetSlotList;
    CK_C_GetSlotInfo C_GetSlotInfo;
    CK_C_GetTokenInfo C_GetTokenInfo;
    CK_C_GetMechanismList C_GetMechanismList;
    CK_C_GetMechanismInfo C_GetMechanismInfo;
    CK_C_InitToken C_InitToken;
    CK_C_InitPIN C_InitPIN;
    CK_C_SetPIN C_SetPIN;
    CK_C_OpenSession C_OpenSession;
    CK_C_CloseSession C_CloseSession;
    CK_C_CloseAllSessions C_CloseAllSessions;
    CK_C_GetSessionInfo C_GetSessionInfo;
    CK_C_GetOperationState C_GetOperationState;
    CK_C_SetOperationState C_SetOperationState;
    CK_C_Login C_Login;
    CK_C_Logout C_Logout;
    CK_C_CreateObject C_CreateObject;
    CK_C_CopyObject C_CopyObject;
    CK_C_DestroyObject C_DestroyObject;
    CK_C_GetObjectSize C_GetObjectSize;
    CK_C_GetAttributeValue C_GetAttributeValue;
    CK_C_SetAttributeValue C_SetAttributeValue;
    CK_C_FindObjectsInit C_FindObjectsInit;
    CK_C_FindObjects C_FindObjects;
    CK_C_FindObjectsFinal C_FindObjectsFinal;
    CK_C_EncryptInit C_EncryptInit;
    CK_C_Encrypt C_Encrypt;
    CK_C_EncryptUpdate C_EncryptUpdate;
    CK_C_EncryptFinal C_EncryptFinal;
    CK_C_DecryptInit C_DecryptInit;
    CK_C_Decrypt C_Decrypt;
    CK_C_DecryptUpdate C_DecryptUpdate;
    CK_C_DecryptFinal C_DecryptFinal;
    CK_C_DigestInit C_DigestInit;
    CK_C_Digest C_Digest;
    CK_C_DigestUpdate C_DigestUpdate;
    CK_C_DigestKey C_DigestKey;
    CK_C_DigestFinal C_DigestFinal;
    CK_C_SignInit C_SignInit;
    CK_C_Sign C_Sign;
    CK_C_SignUpdate C_SignUpdate;
    CK_C_SignFinal C_SignFinal;
    CK_C_SignRecoverInit C_SignRecoverInit;
    CK_C_SignRecover C_SignRecover;
    CK_C_VerifyInit C_VerifyInit;
    CK_C_Verify C_Verify;
    CK_C_VerifyUpdate C_VerifyUpdate;
    CK_C_VerifyFinal C_VerifyFinal;
    CK_C_VerifyRecoverInit C_VerifyRecoverInit;
    CK_C_VerifyRecover C_VerifyRecover;
    CK_C_DigestEncryptUpdate C_DigestEncryptUpdate;
    CK_C_DecryptDigestUpdate C_DecryptDigestUpdate;
    CK_C_SignEncryptUpdate C_SignEncryptUpdate;
    CK_C_DecryptVerifyUpdate C_DecryptVerifyUpdate;
    CK_C_GenerateKey C_GenerateKey;
    CK_C_GenerateKeyPair C_GenerateKeyPair;
    CK_C_WrapKey C_WrapKey;
    CK_C_UnwrapKey C_UnwrapKey;
    CK_C_DeriveKey C_DeriveKey;
    CK_C_SeedRandom C_SeedRandom;
    CK_C_GenerateRandom C_GenerateRandom;
    CK_C_GetFunctionStatus C_GetFunctionStatus;
    CK_C_CancelFunction C_CancelFunction;
    CK_C_WaitForSlotEvent C_WaitForSlotEvent;
};

#ifdef _WIN32
#pragma pack(pop)
#endif
TLX_END_DECLS

#endif
