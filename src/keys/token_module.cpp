// Modules, the tokens in their slots, and sessions.
#include <cstring>
#include <new>
#include <span>

#include "der/owned.hpp"
#include "keys/platform_module.hpp"
#include "keys/token.hpp"

using namespace tlx;

namespace {

constexpr CK_ULONG kMostSlots = 10000;

/// The module's table of functions. 0, or a status.
u32 find_functions(TOKEN_MODULE &module) noexcept {
    const auto get =
        reinterpret_cast<CK_C_GetFunctionList>(module_function(module.library, "C_GetFunctionList"));
    if (get == nullptr) return 0x49170047;
    if (const CK_RV result = get(&module.functions); result != CKR_OK) return status_of(result);
    if (module.functions == nullptr) return 0x49170047;
    const CK_BYTE version = module.functions->version.major;
    return version == 2 || version == 3 ? 0 : 0x49170048;
}

u32 initialize(TOKEN_MODULE &module) noexcept {
    CK_C_INITIALIZE_ARGS with_locks = {};
    with_locks.flags = CKF_OS_LOCKING_OK;
    CK_RV result = call<&CK_FUNCTION_LIST::C_Initialize>(module, static_cast<CK_VOID_PTR>(&with_locks));
    // A module without locks serves programs with one thread.
    if (result == CKR_CANT_LOCK || result == CKR_ARGUMENTS_BAD) {
        result = call<&CK_FUNCTION_LIST::C_Initialize>(module, static_cast<CK_VOID_PTR>(nullptr));
    }
    module.finalizes = result == CKR_OK;
    return result == CKR_CRYPTOKI_ALREADY_INITIALIZED ? 0 : status_of(result);
}

/// The open modules, which ModulesLock guards. A library may be initialised and finalised once alone, however
/// often it is opened.
constinit TOKEN_MODULE *g_modules = nullptr;

TOKEN_MODULE *find_open(const void *library) noexcept {
    TOKEN_MODULE *module = g_modules;
    while (module != nullptr && module->library != library) {
        module = module->next;
    }
    return module;
}

/// Opens a library that is not open. On failure it stays the caller's.
u32 open_library(void *library, TOKEN_MODULE *&out) noexcept {
    void *memory = TLX_ALLOCATE(sizeof(TOKEN_MODULE));
    if (memory == nullptr) return 0x4917003C;
    auto *module = new (memory) TOKEN_MODULE;
    module->library = library;
    u32 status = find_functions(*module);
    if (status == 0) status = initialize(*module);
    if (status != 0) {
        tlx_free(module);
        return status;
    }
    module->next = std::exchange(g_modules, module);
    out = module;
    return 0;
}

/// Adds a user. Whoever had initialised the library may have finalised it meanwhile.
u32 open_again(TOKEN_MODULE &module) noexcept {
    const u32 status = module.finalizes ? 0 : initialize(module);
    if (status == 0) module.users.fetch_add(1, std::memory_order_relaxed);
    return status;
}

void free_module(TOKEN_MODULE *module) noexcept {
    TOKEN_MODULE **link = &g_modules;
    while (*link != module) {
        link = &(*link)->next;
    }
    *link = module->next;
    if (module->finalizes) {
        static_cast<void>(call<&CK_FUNCTION_LIST::C_Finalize>(*module, static_cast<CK_VOID_PTR>(nullptr)));
    }
    unload_module(module->library);
    tlx_free(module);
}

/// Text that a module pads with spaces.
template <std::size_t Size, std::size_t Room>
void copy_text(const CK_UTF8CHAR (&padded)[Size], char (&text)[Room]) noexcept {
    static_assert(Room == Size + 1);
    std::size_t length = Size;
    while (length > 0 && (padded[length - 1] == ' ' || padded[length - 1] == 0)) {
        --length;
    }
    std::memcpy(text, padded, length);
    text[length] = 0;
}

bool read_token(const TOKEN_MODULE &module, CK_SLOT_ID slot, TOKEN_INFO &token) noexcept {
    CK_TOKEN_INFO info = {};
    if (call<&CK_FUNCTION_LIST::C_GetTokenInfo>(module, slot, &info) != CKR_OK) return false;
    token.slotId = slot;
    copy_text(info.label, token.label);
    copy_text(info.manufacturerID, token.manufacturer);
    copy_text(info.model, token.model);
    copy_text(info.serialNumber, token.serialNumber);
    token.flags = info.flags;
    return true;
}

/// The slots with tokens. `count` is how many there may be, then how many there are.
u32 list_slots(const TOKEN_MODULE &module, OwnedOctets<CK_SLOT_ID> &slots, CK_ULONG &count) noexcept {
    count = 0;
    const CK_BBOOL with_token = CK_TRUE;
    CK_RV result = call<&CK_FUNCTION_LIST::C_GetSlotList>(module, with_token,
                                                          static_cast<CK_SLOT_ID_PTR>(nullptr), &count);
    if (result != CKR_OK) return status_of(result);
    if (count > kMostSlots) return 0x4918001C;
    // A token may be put in meanwhile.
    const CK_ULONG room = count + 1;
    slots.reset(static_cast<CK_SLOT_ID *>(TLX_ALLOCATE(room * sizeof(CK_SLOT_ID))));
    if (!slots) return 0x4918003C;
    count = room;
    result = call<&CK_FUNCTION_LIST::C_GetSlotList>(module, with_token, slots.get(), &count);
    if (result != CKR_OK) return status_of(result);
    return count > room ? 0x4918001C : 0;
}

/// The only token, or the only one of a label.
u32 find_slot(TOKEN_MODULE *module, const char *label, u64 &slot) noexcept {
    TOKEN_INFO *tokens = nullptr;
    u32 count = 0;
    if (const u32 status = list_TOKENS(module, &tokens, &count); status != 0) return status;
    const OwnedOctets<TOKEN_INFO> owner(tokens);
    u32 found = 0;
    for (const TOKEN_INFO &token : std::span(tokens, count)) {
        // Some modules offer a further token, to be initialised.
        if ((token.flags & CKF_TOKEN_INITIALIZED) == 0) continue;
        if (label != nullptr && std::strcmp(label, token.label) != 0) continue;
        slot = token.slotId;
        ++found;
    }
    if (found == 0) return 0x49190047;
    return found > 1 ? 0x4919001C : 0;
}

}  // namespace

uint32_t open_TOKEN_MODULE(const char *path, TOKEN_MODULE **out) {
    if (path == nullptr || out == nullptr) return 0x49170049;
    const ModulesLock lock;
    void *library = load_module(path);
    if (library == nullptr) return 0x49170047;
    TOKEN_MODULE *module = find_open(library);
    const bool is_open = module != nullptr;
    const u32 status = is_open ? open_again(*module) : open_library(library, module);
    // The system counts how often a library is loaded.
    if (is_open || status != 0) unload_module(library);
    if (status == 0) *out = module;
    return status;
}

void close_TOKEN_MODULE(TOKEN_MODULE *module) {
    if (module == nullptr) return;
    const ModulesLock lock;
    if (module->users.fetch_sub(1, std::memory_order_acq_rel) == 1) free_module(module);
}

uint32_t list_TOKENS(TOKEN_MODULE *module, TOKEN_INFO **tokens, uint32_t *count) {
    if (module == nullptr || tokens == nullptr || count == nullptr) return 0x49180049;
    OwnedOctets<CK_SLOT_ID> slots;
    CK_ULONG slot_count = 0;
    if (const u32 status = list_slots(*module, slots, slot_count); status != 0) return status;
    auto *made = static_cast<TOKEN_INFO *>(TLX_ALLOCATE((slot_count + 1) * sizeof(TOKEN_INFO)));
    if (made == nullptr) return 0x4918003C;
    u32 made_count = 0;
    for (CK_ULONG i = 0; i < slot_count; ++i) {
        if (read_token(*module, slots.get()[i], made[made_count])) ++made_count;
    }
    *tokens = made;
    *count = made_count;
    return 0;
}

uint32_t open_TOKEN_SESSION(TOKEN_MODULE *module, const char *label, TOKEN_SESSION **out) {
    if (module == nullptr || out == nullptr) return 0x49190049;
    u64 slot = 0;
    const u32 status = find_slot(module, label, slot);
    return status != 0 ? status : open_TOKEN_SESSION_slot(module, slot, out);
}

uint32_t open_TOKEN_SESSION_slot(TOKEN_MODULE *module, uint64_t slot_id, TOKEN_SESSION **out) {
    if (module == nullptr || out == nullptr) return 0x49190049;
    const auto slot = static_cast<CK_SLOT_ID>(slot_id);
    CK_TOKEN_INFO info = {};
    CK_RV result = call<&CK_FUNCTION_LIST::C_GetTokenInfo>(*module, slot, &info);
    if (result != CKR_OK) return status_of(result);
    void *memory = TLX_ALLOCATE(sizeof(TOKEN_SESSION));
    if (memory == nullptr) return 0x4919003C;
    CK_SESSION_HANDLE handle = CK_INVALID_HANDLE;
    const CK_FLAGS flags = CKF_SERIAL_SESSION;
    result = call<&CK_FUNCTION_LIST::C_OpenSession>(*module, slot, flags, static_cast<CK_VOID_PTR>(nullptr),
                                                    static_cast<CK_NOTIFY>(nullptr), &handle);
    if (result != CKR_OK) {
        tlx_free(memory);
        return status_of(result);
    }
    module->users.fetch_add(1, std::memory_order_relaxed);
    *out = new (memory) TOKEN_SESSION{module, handle, (info.flags & CKF_PROTECTED_AUTHENTICATION_PATH) != 0};
    return 0;
}

void close_TOKEN_SESSION(TOKEN_SESSION *session) {
    if (session == nullptr || session->users.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    static_cast<void>(call<&CK_FUNCTION_LIST::C_CloseSession>(*session));
    close_TOKEN_MODULE(session->module);
    tlx_free(session);
}

uint32_t login_TOKEN(TOKEN_SESSION *session, const char *pin, uint32_t pin_len) {
    if (session == nullptr || (pin == nullptr && pin_len != 0)) return 0x491A0049;
    // The standard's function reads the PIN only.
    auto *octets = reinterpret_cast<CK_UTF8CHAR_PTR>(const_cast<char *>(pin));
    const CK_USER_TYPE user = CKU_USER;
    return status_of(call<&CK_FUNCTION_LIST::C_Login>(*session, user, octets, CK_ULONG{pin_len}));
}

uint32_t logout_TOKEN(TOKEN_SESSION *session) {
    return session == nullptr ? 0x491B0049 : status_of(call<&CK_FUNCTION_LIST::C_Logout>(*session));
}
