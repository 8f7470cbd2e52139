// PKCS #11 modules: loading, and the wrappers of their functions.
#include <gtest/gtest.h>
#include <tlxpki/pkcs11.h>

#include <filesystem>
#include <tuple>

#include "modules/call_record.hpp"
#include "support/shell.hpp"
#include "support/utf8_path.hpp"

namespace {

constexpr std::uint32_t kNotLoadable = 0xFFFFFFFF;
constexpr CK_RV kNotInitialized = 400;

using Numbers = std::vector<std::uint64_t>;

// Calls a wrapper with arguments that all differ, and says what they were.
template <typename... Arguments>
CK_RV call(CK_RV (*wrapper)(Arguments...), Numbers &given) {
    const auto next = [&given]<typename Value>(Value *) {
        const auto number = static_cast<std::uintptr_t>(0x51 + 0x11 * given.size());
        Value value;
        if constexpr (std::is_pointer_v<Value>) {
            value = reinterpret_cast<Value>(number);
        } else {
            value = static_cast<Value>(number);
        }
        given.push_back(to_number(value));
        return value;
    };
    std::tuple<Arguments...> arguments{next(static_cast<Arguments *>(nullptr))...};
    return std::apply(wrapper, arguments);
}

template <auto Wrapper>
CK_RV forwarded(Numbers &given) {
    return call(Wrapper, given);
}

constexpr struct {
    const char *name;
    CK_RV (*call)(Numbers &given);
} kWrappers[] = {
    {"C_Initialize", forwarded<p11_C_Initialize>},
    {"C_Finalize", forwarded<p11_C_Finalize>},
    {"C_GetSlotList", forwarded<p11_C_GetSlotList>},
    {"C_GetTokenInfo", forwarded<p11_C_GetTokenInfo>},
    {"C_OpenSession", forwarded<p11_C_OpenSession>},
    {"C_CloseSession", forwarded<p11_C_CloseSession>},
    {"C_Login", forwarded<p11_C_Login>},
    {"C_Logout", forwarded<p11_C_Logout>},
    {"C_GetAttributeValue", forwarded<p11_C_GetAttributeValue>},
    {"C_FindObjectsInit", forwarded<p11_C_FindObjectsInit>},
    {"C_FindObjects", forwarded<p11_C_FindObjects>},
    {"C_FindObjectsFinal", forwarded<p11_C_FindObjectsFinal>},
    {"C_GetSlotInfo", forwarded<p11_C_GetSlotInfo>},
    {"C_GetFunctionList", forwarded<p11_C_GetFunctionList>},
    {"C_GetInfo", forwarded<p11_C_GetInfo>},
    {"C_GenerateKeyPair", forwarded<p11_C_GenerateKeyPair>},
    {"C_CreateObject", forwarded<p11_C_CreateObject>},
    {"C_EncryptInit", forwarded<p11_C_EncryptInit>},
    {"C_Encrypt", forwarded<p11_C_Encrypt>},
    {"C_EncryptUpdate", forwarded<p11_C_EncryptUpdate>},
    {"C_EncryptFinal", forwarded<p11_C_EncryptFinal>},
    {"C_DecryptInit", forwarded<p11_C_DecryptInit>},
    {"C_Decrypt", forwarded<p11_C_Decrypt>},
    {"C_DecryptUpdate", forwarded<p11_C_DecryptUpdate>},
    {"C_DecryptFinal", forwarded<p11_C_DecryptFinal>},
    {"C_DigestInit", forwarded<p11_C_DigestInit>},
    {"C_Digest", forwarded<p11_C_Digest>},
    {"C_DigestUpdate", forwarded<p11_C_DigestUpdate>},
    {"C_DigestKey", forwarded<p11_C_DigestKey>},
    {"C_DigestFinal", forwarded<p11_C_DigestFinal>},
    {"C_SignInit", forwarded<p11_C_SignInit>},
    {"C_Sign", forwarded<p11_C_Sign>},
    {"C_SignUpdate", forwarded<p11_C_SignUpdate>},
    {"C_SignFinal", forwarded<p11_C_SignFinal>},
    {"C_VerifyInit", forwarded<p11_C_VerifyInit>},
    {"C_Verify", forwarded<p11_C_Verify>},
    {"C_DestroyObject", forwarded<p11_C_DestroyObject>},
};
static_assert(std::size(kWrappers) == 37);

class Module : public testing::Test {
  protected:
    void TearDown() override { _unload_pkcs11_module(); }

    // The wrappers that return 400, by name.
    static std::vector<std::string> uninitialized() {
        std::vector<std::string> names;
        for (const auto &[name, call] : kWrappers) {
            Numbers given;
            if (call(given) == kNotInitialized) names.emplace_back(name);
        }
        return names;
    }
    static std::string first_call(CallRecord &record) {
        record.result = CKR_OK;
        return p11_C_Initialize(&record) == CKR_OK ? record.name : "";
    }
};

TEST_F(Module, WrappersForwardArgumentsAndResults) {
    ASSERT_EQ(_load_pkcs11_module(TLX_RECORDING_MODULE), 0U);
    CallRecord record;
    ASSERT_EQ(p11_C_Initialize(&record), CKR_OK);
    EXPECT_EQ(record.name, "C_Initialize");
    EXPECT_EQ(record.arguments, Numbers{to_number(&record)});
    CK_RV result = 0xE0000000;
    for (const auto &[name, call] : kWrappers) {
        if (std::string(name) == "C_Initialize") continue;
        record = {"", {}, ++result};
        Numbers given;
        EXPECT_EQ(call(given), result) << name;
        EXPECT_EQ(record.name, name);
        EXPECT_EQ(record.arguments, given) << name;
    }
}

TEST_F(Module, WithoutAFunctionItsWrapperReturns400) {
    EXPECT_EQ(uninitialized().size(), 37U) << "before any module was loaded";
    assign_function_list();
    EXPECT_EQ(uninitialized().size(), 37U) << "looked up in no module";
    ASSERT_EQ(_load_pkcs11_module(TLX_BARE_MODULE), 0U);
    CK_FUNCTION_LIST_PTR functions = nullptr;
    EXPECT_EQ(p11_C_GetFunctionList(&functions), CKR_OK);
    ASSERT_NE(functions, nullptr);
    EXPECT_EQ(functions->version.minor, 40);
    EXPECT_EQ(p11_C_Initialize(nullptr), kNotInitialized);
    EXPECT_EQ(p11_C_Sign(1, nullptr, 0, nullptr, nullptr), kNotInitialized);
}

TEST_F(Module, AfterUnloadingAWrapperReachesNothing) {
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(_load_pkcs11_module(TLX_RECORDING_MODULE), 0U);
        CallRecord record;
        EXPECT_EQ(first_call(record), "C_Initialize");
        _unload_pkcs11_module();
        EXPECT_EQ(uninitialized().size(), 37U);
        _unload_pkcs11_module();
    }
}

TEST_F(Module, ThatCannotBeLoaded) {
    const char *no_path = nullptr;
    for (const char *path : {no_path, "", "no-such-module.so", TLX_TEST_SOURCE "/README.md"}) {
        EXPECT_EQ(_load_pkcs11_module(path), kNotLoadable);
        EXPECT_EQ(uninitialized().size(), 37U);
    }
}

// Programs that try one module after another keep the one that they had.
TEST_F(Module, SecondReplacesTheFirstAndAMissingOneDoesNot) {
    ASSERT_EQ(_load_pkcs11_module(TLX_RECORDING_MODULE), 0U);
    EXPECT_EQ(_load_pkcs11_module("no-such-module.so"), kNotLoadable);
    CallRecord record;
    EXPECT_EQ(first_call(record), "C_Initialize");
    _unload_pkcs11_module();
    EXPECT_EQ(first_call(record), "C_Initialize") << "it can no longer be unloaded";
    ASSERT_EQ(_load_pkcs11_module(TLX_BARE_MODULE), 0U);
    EXPECT_EQ(p11_C_Initialize(&record), kNotInitialized);
}

TEST_F(Module, PathIsUtf8) {
    const std::string folder = tlx_test::make_temporary_folder();
    const std::string path = folder + "/보안토큰.dll";
    std::filesystem::copy_file(tlx_test::utf8_path(TLX_BARE_MODULE), tlx_test::utf8_path(path));
    EXPECT_EQ(_load_pkcs11_module(path.c_str()), 0U);
    _unload_pkcs11_module();  // Windows keeps the file until then
    std::filesystem::remove_all(tlx_test::utf8_path(folder));
}

}  // namespace
