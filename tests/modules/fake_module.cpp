// A PKCS #11 module that exports C_GetFunctionList alone, and does with a FakeToken what a test says.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "fake_token.hpp"

namespace {

FakeToken *g_token = nullptr;
std::vector<CK_OBJECT_HANDLE> g_found;

FakeToken::Octets octets(const void *from, CK_ULONG size) {
    const auto *first = static_cast<const std::uint8_t *>(from);
    return first == nullptr ? FakeToken::Octets() : FakeToken::Octets(first, first + size);
}

CK_RV note(const std::string &call) {
    g_token->calls.push_back(call);
    const auto result = g_token->results.find(call.substr(0, call.find(' ')));
    return result == g_token->results.end() ? CKR_OK : result->second;
}

template <std::size_t Size>
void fill(CK_UTF8CHAR (&text)[Size], const char *value) {
    std::memset(text, ' ', Size);
    std::memcpy(text, value, std::min(Size, std::strlen(value)));
}

CK_RV initialize(CK_VOID_PTR) {
    return note("C_Initialize");
}
CK_RV finalize(CK_VOID_PTR) {
    return note("C_Finalize");
}

CK_RV get_slot_list(CK_BBOOL, CK_SLOT_ID_PTR slots, CK_ULONG_PTR count) {
    *count = g_token->slots + (slots == nullptr ? 0 : g_token->more_slots);
    for (CK_ULONG i = 0; slots != nullptr && i < g_token->slots; ++i)
        slots[i] = 7 + i;
    return note("C_GetSlotList");
}

CK_RV get_token_info(CK_SLOT_ID, CK_TOKEN_INFO_PTR info) {
    fill(info->label, "a label of thirty-two characters");
    fill(info->manufacturerID, "maker");
    fill(info->model, "");
    fill(info->serialNumber, "12 34");
    info->flags = g_token->flags;
    return note("C_GetTokenInfo");
}

CK_RV open_session(CK_SLOT_ID slot, CK_FLAGS, CK_VOID_PTR, CK_NOTIFY, CK_SESSION_HANDLE_PTR session) {
    *session = 100 + slot;
    return note("C_OpenSession " + std::to_string(slot));
}
CK_RV close_session(CK_SESSION_HANDLE session) {
    return note("C_CloseSession " + std::to_string(session));
}

CK_RV login(CK_SESSION_HANDLE, CK_USER_TYPE user, CK_UTF8CHAR_PTR pin, CK_ULONG length) {
    return note("C_Login " + std::to_string(user) + " " +
                (pin == nullptr ? "pad" : std::string(reinterpret_cast<char *>(pin), length)));
}
CK_RV logout(CK_SESSION_HANDLE) {
    return note("C_Logout");
}

CK_RV get_attribute(CK_SESSION_HANDLE, CK_OBJECT_HANDLE object, CK_ATTRIBUTE_PTR attribute, CK_ULONG) {
    if (object == 0 || object > g_token->objects.size()) return CKR_OBJECT_HANDLE_INVALID;
    const FakeToken::Object &of = g_token->objects[object - 1];
    const auto found = of.find(attribute->type);
    if (found == of.end()) {
        attribute->ulValueLen = CK_UNAVAILABLE_INFORMATION;
        return CKR_ATTRIBUTE_TYPE_INVALID;
    }
    if (attribute->pValue != nullptr && attribute->ulValueLen >= found->second.size())
        std::copy(found->second.begin(), found->second.end(), static_cast<std::uint8_t *>(attribute->pValue));
    attribute->ulValueLen =
        static_cast<CK_ULONG>(found->second.size()) + (attribute->pValue == nullptr ? 0 : g_token->grows);
    return note("C_GetAttributeValue");
}

CK_RV find_init(CK_SESSION_HANDLE, CK_ATTRIBUTE_PTR attributes, CK_ULONG count) {
    g_found.clear();
    for (std::size_t i = 0; i < g_token->objects.size(); ++i) {
        const FakeToken::Object &object = g_token->objects[i];
        const bool fits = std::all_of(attributes, attributes + count, [&](const CK_ATTRIBUTE &wanted) {
            const auto has = object.find(wanted.type);
            return has != object.end() && has->second == octets(wanted.pValue, wanted.ulValueLen);
        });
        if (fits) g_found.push_back(static_cast<CK_OBJECT_HANDLE>(i + 1));
    }
    return note("C_FindObjectsInit");
}
CK_RV find(CK_SESSION_HANDLE, CK_OBJECT_HANDLE_PTR objects, CK_ULONG room, CK_ULONG_PTR count) {
    const CK_ULONG given = std::min<CK_ULONG>(room, static_cast<CK_ULONG>(g_found.size()));
    std::copy_n(g_found.begin(), given, objects);
    if (!g_token->endless)
        g_found.erase(g_found.begin(), g_found.begin() + static_cast<std::ptrdiff_t>(given));
    *count = given + (given == 0 ? 0 : g_token->found_beside);
    return note("C_FindObjects");
}
CK_RV find_final(CK_SESSION_HANDLE) {
    return note("C_FindObjectsFinal");
}

CK_RV begin(const char *call, CK_MECHANISM_PTR mechanism) {
    g_token->mechanism = mechanism->mechanism;
    g_token->parameter = octets(mechanism->pParameter, mechanism->ulParameterLen);
    return note(call);
}
CK_RV carry_out(const char *call, CK_BYTE_PTR data, CK_ULONG length, CK_BYTE_PTR out,
                CK_ULONG_PTR out_length) {
    g_token->input = octets(data, length);
    const CK_ULONG size = std::min<CK_ULONG>(*out_length, static_cast<CK_ULONG>(g_token->output.size()));
    std::copy_n(g_token->output.begin(), size, out);
    *out_length = size + g_token->output_beside;
    return note(call);
}
CK_RV sign_init(CK_SESSION_HANDLE, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE) {
    return begin("C_SignInit", mechanism);
}
CK_RV sign(CK_SESSION_HANDLE, CK_BYTE_PTR data, CK_ULONG length, CK_BYTE_PTR out, CK_ULONG_PTR out_length) {
    return carry_out("C_Sign", data, length, out, out_length);
}
CK_RV sign_final(CK_SESSION_HANDLE, CK_BYTE_PTR, CK_ULONG_PTR) {
    return note("C_SignFinal");
}
CK_RV decrypt_init(CK_SESSION_HANDLE, CK_MECHANISM_PTR mechanism, CK_OBJECT_HANDLE) {
    return begin("C_DecryptInit", mechanism);
}
CK_RV decrypt(CK_SESSION_HANDLE, CK_BYTE_PTR data, CK_ULONG length, CK_BYTE_PTR out,
              CK_ULONG_PTR out_length) {
    return carry_out("C_Decrypt", data, length, out, out_length);
}

}  // namespace

#ifdef _WIN32
extern "C" __declspec(dllexport)
#else
extern "C" __attribute__((visibility("default")))
#endif
    CK_RV C_GetFunctionList(CK_FUNCTION_LIST_PTR_PTR list) {
    g_token = reinterpret_cast<FakeToken *>(std::strtoull(std::getenv("TLX_FAKE_TOKEN"), nullptr, 16));
    CK_FUNCTION_LIST &functions = g_token->functions;
    functions.C_Initialize = initialize;
    functions.C_Finalize = finalize;
    functions.C_GetSlotList = get_slot_list;
    functions.C_GetTokenInfo = get_token_info;
    functions.C_OpenSession = open_session;
    functions.C_CloseSession = close_session;
    functions.C_Login = login;
    functions.C_Logout = logout;
    functions.C_GetAttributeValue = get_attribute;
    functions.C_FindObjectsInit = find_init;
    functions.C_FindObjects = find;
    functions.C_FindObjectsFinal = find_final;
    functions.C_SignInit = sign_init;
    functions.C_Sign = sign;
    functions.C_SignFinal = sign_final;
    functions.C_DecryptInit = decrypt_init;
    functions.C_Decrypt = decrypt;
    *list = g_token->has_list ? &functions : nullptr;
    return note("C_GetFunctionList");
}
