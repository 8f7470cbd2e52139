// PKCS #11 modules with handles of their own, called through C_GetFunctionList.
#pragma once

#include <tlxpki/cryptoki.h>
#include <tlxpki/token.h>

#include <atomic>
#include <span>
#include <utility>

#include "der/memory.hpp"
#include "der/types.hpp"

/// A module. Whoever opened it and its sessions count as users of it.
struct TOKEN_MODULE {
    void *library = nullptr;
    TOKEN_MODULE *next = nullptr;  ///< of the open modules
    CK_FUNCTION_LIST_PTR functions = nullptr;
    bool finalizes = false;  ///< it was not initialised by somebody else
    std::atomic<tlx::u32> users = 1;
};

/// A session. Its keys count as users of it.
struct TOKEN_SESSION {
    TOKEN_MODULE *module;
    CK_SESSION_HANDLE handle;
    bool has_pin_pad;
    std::atomic<tlx::u32> users = 1;
};

namespace tlx {

/// The status of what a function of a module returned.
constexpr u32 status_of(CK_RV result) noexcept {
    constexpr CK_RV kVendors = 0xFFFF;
    if (result == CKR_OK) return 0;
    return 0x49200000 | static_cast<u32>(result < kVendors ? result : kVendors);
}

/// Calls a function of a module, which may lack it.
template <auto Function, typename... Arguments>
CK_RV call(const TOKEN_MODULE &module, Arguments... arguments) noexcept {
    const auto function = module.functions->*Function;
    return function == nullptr ? CKR_FUNCTION_NOT_SUPPORTED : function(arguments...);
}

/// The same with a session.
template <auto Function, typename... Arguments>
CK_RV call(const TOKEN_SESSION &session, Arguments... arguments) noexcept {
    return call<Function>(*session.module, session.handle, arguments...);
}

/// The octets of an attribute.
class AttributeValue {
  public:
    AttributeValue() noexcept = default;
    AttributeValue(const AttributeValue &) = delete;
    AttributeValue &operator=(const AttributeValue &) = delete;
    ~AttributeValue() { tlx_free(octets_); }

    /// Reads an attribute of at most so many octets. CKR_OK; kTooLong; CKR_HOST_MEMORY; a result of the
    /// module.
    [[nodiscard]] CK_RV read(const TOKEN_SESSION &session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type,
                             std::size_t most) noexcept;
    [[nodiscard]] Bytes bytes() const noexcept { return {octets_, size_}; }
    /// Hands the octets to the caller, with a NUL after them.
    [[nodiscard]] u8 *release() noexcept { return std::exchange(octets_, nullptr); }

    /// No result that a module returns is so large.
    static constexpr CK_RV kTooLong = ~CK_RV{0};

  private:
    u8 *octets_ = nullptr;
    std::size_t size_ = 0;
};

/// Handles of objects, as many as there may be.
class FoundHandles {
  public:
    FoundHandles() noexcept = default;
    FoundHandles(const FoundHandles &) = delete;
    FoundHandles &operator=(const FoundHandles &) = delete;
    ~FoundHandles() { tlx_free(handles_); }

    /// Finds what has these attributes. CKR_OK, AttributeValue::kTooLong for too many, CKR_HOST_MEMORY or a
    /// result of the module.
    [[nodiscard]] CK_RV find(const TOKEN_SESSION &session, std::span<CK_ATTRIBUTE> attributes) noexcept;
    [[nodiscard]] std::span<const CK_OBJECT_HANDLE> get() const noexcept { return {handles_, count_}; }

  private:
    [[nodiscard]] CK_RV take_all(const TOKEN_SESSION &session) noexcept;
    [[nodiscard]] bool grow() noexcept;

    CK_OBJECT_HANDLE *handles_ = nullptr;
    std::size_t count_ = 0;
    std::size_t room_ = 0;
};

inline CK_ATTRIBUTE attribute(CK_ATTRIBUTE_TYPE type, const void *value, std::size_t size) noexcept {
    // The standard's structure serves writing too.
    return {type, const_cast<void *>(value), static_cast<CK_ULONG>(size)};
}

}  // namespace tlx
