/** @file
 * PKCS #11 modules: one shared library of the vendor of a token, loaded by its name, and its functions
 * (PKCS #11 2.40, OASIS Standard, Cryptographic Token Interface).
 *
 * - <tlxpki.h> does not include this header. A program that includes a Cryptoki header of its own includes it
 *   before this one and keeps its types; others get those of <tlxpki/cryptoki.h>.
 * - The wrappers p11_C_<name> take the arguments of the standard's C_<name>, hand them to the module and
 * return its result. 400 (CKR_CRYPTOKI_NOT_INITIALIZED) without a call: no module was loaded, it has been
 * unloaded, or it does not export a function of that name. Some modules export C_GetFunctionList alone;
 *   p11_C_GetFunctionList then gives the table of the others.
 * - Ownership: nothing changes hands. What an argument must point to is the standard's matter; the wrappers
 *   look at none.
 * - Threads: the module is one for the whole process. Loading and unloading must not run while a wrapper
 * runs. Whether wrappers may run at once follows from the arguments of p11_C_Initialize.
 */
#ifndef TLXPKI_PKCS11_H
#define TLXPKI_PKCS11_H

#ifndef CKR_OK /* every Cryptoki header defines it */
#include <tlxpki/cryptoki.h>
#endif
#include <stdint.h>
#include <tlxpki/export.h>

TLX_BEGIN_DECLS

/**
 * Loads a module and looks its functions up. A function that the module lacks is no failure. A second module
 * replaces the first, which stays loaded for the rest of the process.
 *
 * @param path  Of the shared library: UTF-8, on Windows otherwise the ANSI code page. A name without a folder
 *              is searched for as the system does.
 * @return 0, or 0xFFFFFFFF: null path, or it cannot be loaded. The wrappers then go on calling the module
 * that was loaded before, but it can no longer be unloaded.
 */
TLXPKI_API uint32_t _load_pkcs11_module(const char *path);
/** Looks the functions of the loaded module up once more. Without a module there are none: each wrapper
 * returns 400. */
TLXPKI_API void assign_function_list(void);
/** Unloads the module, so that each wrapper returns 400. Without a module, does nothing. */
TLXPKI_API void _unload_pkcs11_module(void);

/* General purpose (section 5.4). */
/** Prepares the module; `arguments` is a CK_C_INITIALIZE_ARGS or null. */
TLXPKI_API CK_RV p11_C_Initialize(CK_VOID_PTR arguments);
/** Ends the use of the module; `reserved` is null. */
TLXPKI_API CK_RV p11_C_Finalize(CK_VOID_PTR reserved);
/** Tells what the module is. */
TLXPKI_API CK_RV p11_C_GetInfo(CK_INFO_PTR info);
/** Gives the module's own table of all its functions, which stays the module's. */
TLXPKI_API CK_RV p11_C_GetFunctionList(CK_FUNCTION_LIST_PTR_PTR list);

/* Slots and tokens (section 5.5). */
/** Lists the slots, or those with a token; with null `slots` tells how many there are. */
TLXPKI_API CK_RV p11_C_GetSlotList(CK_BBOOL with_token, CK_SLOT_ID_PTR slots, CK_ULONG_PTR count);
/** Tells what a slot is. */
TLXPKI_API CK_RV p11_C_GetSlotInfo(CK_SLOT_ID slot, CK_SLOT_INFO_PTR info);
/** Tells what the token in a slot is. */
TLXPKI_API CK_RV p11_C_GetTokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO_PTR info);

/* Sessions (section 5.6). */
/** Opens a session with a token. */
TLXPKI_API CK_RV p11_C_OpenSession(CK_SLOT_ID slot, CK_FLAGS flags, CK_VOID_PTR application, CK_NOTIFY notify,
                                   CK_SESSION_HANDLE_PTR session);
/** Closes a session. */
TLXPKI_API CK_RV p11_C_CloseSession(CK_SESSION_HANDLE session);
/** Logs a user in with a PIN of `pin_length` octets in UTF-8. */
TLXPKI_API CK_RV p11_C_Login(CK_SESSION_HANDLE session, CK_USER_TYPE user, CK_UTF8CHAR_PTR pin,
                             CK_ULONG pin_length);
/** Logs the user out of the token. */
TLXPKI_API CK_RV p11_C_Logout(CK_SESSION_HANDLE session);

/* Objects (section 5.7). */
/** Makes an object from `count` attributes. */
TLXPKI_API CK_RV p11_C_CreateObject(CK_SESSION_HANDLE session, CK_ATTRIBUTE_PTR attributes, CK_ULONG count,
                                    CK_OBJECT_HANDLE_PTR object);
/** Removes an object from its token. */
TLXPKI_API CK_RV p11_C_DestroyObject(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object);
/** Reads attributes of an object; the length of one with a null value is told. */
TLXPKI_API CK_RV p11_C_GetAttributeValue(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                                         CK_ATTRIBUTE_PTR attributes, CK_ULONG count);
/** Begins a search for objects that have all these attributes. */
TLXPKI_API CK_RV p11_C_FindObjectsInit(CK_SESSION_HANDLE session, CK_ATTRIBUTE_PTR attributes,
                                       CK_ULONG count);
/** Gives up to `room` further objects of the search. */
TLXPKI_API CK_RV p11_C_FindObjects(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE_PTR objects, CK_ULONG room,
                                   CK_ULONG_PTR count);
/** Ends the search. */
TLXPKI_API CK_RV p11_C_FindObjectsFinal(CK_SESSION_HANDLE session);

/* Encryption (section 5.8). */
/** Begins encryption. */
TLXPKI_API CK_RV p11_C_EncryptInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                   CK_OBJECT_HANDLE key);
/** Encrypts data in one part. */
TLXPKI_API CK_RV p11_C_Encrypt(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length,
                               CK_BYTE_PTR encrypted, CK_ULONG_PTR encrypted_length);
/** Encrypts the next part. */
TLXPKI_API CK_RV p11_C_EncryptUpdate(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length,
                                     CK_BYTE_PTR encrypted, CK_ULONG_PTR encrypted_length);
/** Gives the last of the ciphertext. */
TLXPKI_API CK_RV p11_C_EncryptFinal(CK_SESSION_HANDLE session, CK_BYTE_PTR last, CK_ULONG_PTR last_length);

/* Decryption (section 5.9). */
/** Begins decryption. */
TLXPKI_API CK_RV p11_C_DecryptInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                   CK_OBJECT_HANDLE key);
/** Decrypts data in one part. */
TLXPKI_API CK_RV p11_C_Decrypt(CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted, CK_ULONG encrypted_length,
                               CK_BYTE_PTR data, CK_ULONG_PTR data_length);
/** Decrypts the next part. */
TLXPKI_API CK_RV p11_C_DecryptUpdate(CK_SESSION_HANDLE session, CK_BYTE_PTR encrypted,
                                     CK_ULONG encrypted_length, CK_BYTE_PTR part, CK_ULONG_PTR part_length);
/** Gives the last of the plaintext. */
TLXPKI_API CK_RV p11_C_DecryptFinal(CK_SESSION_HANDLE session, CK_BYTE_PTR last, CK_ULONG_PTR last_length);

/* Digests (section 5.10). */
/** Begins a digest. */
TLXPKI_API CK_RV p11_C_DigestInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism);
/** Digests data in one part. */
TLXPKI_API CK_RV p11_C_Digest(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length,
                              CK_BYTE_PTR digest, CK_ULONG_PTR digest_length);
/** Digests the next part. */
TLXPKI_API CK_RV p11_C_DigestUpdate(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length);
/** Digests the value of a secret key as the next part. */
TLXPKI_API CK_RV p11_C_DigestKey(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE key);
/** Gives the digest. */
TLXPKI_API CK_RV p11_C_DigestFinal(CK_SESSION_HANDLE session, CK_BYTE_PTR digest, CK_ULONG_PTR digest_length);

/* Signatures and their verification (sections 5.11 and 5.12). */
/** Begins a signature. */
TLXPKI_API CK_RV p11_C_SignInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE key);
/** Signs data in one part. */
TLXPKI_API CK_RV p11_C_Sign(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length,
                            CK_BYTE_PTR signature, CK_ULONG_PTR signature_length);
/** Takes the next part to be signed. */
TLXPKI_API CK_RV p11_C_SignUpdate(CK_SESSION_HANDLE session, CK_BYTE_PTR part, CK_ULONG part_length);
/** Gives the signature. */
TLXPKI_API CK_RV p11_C_SignFinal(CK_SESSION_HANDLE session, CK_BYTE_PTR signature,
                                 CK_ULONG_PTR signature_length);
/** Begins a verification. */
TLXPKI_API CK_RV p11_C_VerifyInit(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                  CK_OBJECT_HANDLE key);
/** Verifies a signature of data in one part. */
TLXPKI_API CK_RV p11_C_Verify(CK_SESSION_HANDLE session, CK_BYTE_PTR data, CK_ULONG data_length,
                              CK_BYTE_PTR signature, CK_ULONG signature_length);

/* Keys (section 5.14). */
/** Makes a key pair on the token. */
TLXPKI_API CK_RV p11_C_GenerateKeyPair(CK_SESSION_HANDLE session, CK_MECHANISM_PTR mechanism,
                                       CK_ATTRIBUTE_PTR public_attributes, CK_ULONG public_count,
                                       CK_ATTRIBUTE_PTR private_attributes, CK_ULONG private_count,
                                       CK_OBJECT_HANDLE_PTR public_key, CK_OBJECT_HANDLE_PTR private_key);

TLX_END_DECLS

#endif
