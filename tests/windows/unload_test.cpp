// The DLLs loaded by name, used and unloaded, as a plug-in host does: nothing stays behind in the process.
#include <gtest/gtest.h>
#include <tlxpki.h>
// After the library's headers, so that the names have to be taken back.
#include <windows.h>

#include <psapi.h>

#include <tlxpki/wincrypt.h>

#include <fstream>

namespace {

/// A function of a DLL by its name.
template <typename Function>
Function *find(const char *dll, const char *name) {
    void *address = reinterpret_cast<void *>(GetProcAddress(GetModuleHandleA(dll), name));
    if (address == nullptr) ADD_FAILURE() << dll << " has no " << name;
    return reinterpret_cast<Function *>(address);
}
#define TLX_CRYPTO(function) find<decltype(function)>("tlxcrypto.dll", #function)
#define TLX_PKI(function) find<decltype(function)>("tlxpki.dll", #function)

/// What a process holds.
struct Holdings {
    std::size_t heap_blocks = 0;
    std::size_t heap_octets = 0;
    unsigned handles = 0;
    DWORD modules = 0;

    static Holdings now() {
        Holdings held;
        HANDLE heaps[64];
        const DWORD count = GetProcessHeaps(64, heaps);
        for (DWORD i = 0; i < count && i < 64; ++i) {
            HeapLock(heaps[i]);
            PROCESS_HEAP_ENTRY entry{};
            while (HeapWalk(heaps[i], &entry)) {
                if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) == 0) continue;
                ++held.heap_blocks;
                held.heap_octets += entry.cbData;
            }
            HeapUnlock(heaps[i]);
        }
        // The values of handles are small multiples of 4.
        for (std::uintptr_t value = 4; value < 0x4000; value += 4) {
            DWORD flags = 0;
            if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) ++held.handles;
        }
        EnumProcessModules(GetCurrentProcess(), nullptr, 0, &held.modules);
        return held;
    }
};

/// A certificate that has signed itself, decoded, verified and printed to nowhere: digests, big numbers, RSA,
/// files.
void verify_certificate(const std::vector<std::uint8_t> &der) {
    void *cert = nullptr;
    ASSERT_EQ(TLX_PKI(readDER_from_Buffer)(&cert, TLX_DECODER(TLX_PKI(Seq_to_X509_CERT)), der.data(),
                                           static_cast<std::uint32_t>(der.size())),
              0U);
    auto *root = static_cast<X509_CERT *>(cert);
    EXPECT_EQ(TLX_PKI(verify_SIG_X509_CERT)(root, root->tbsCertificate->subjectPublicKeyInfo), 0U);
    TLX_PKI(free_X509_CERT)(root);
    TLX_PKI(free_ASN1_TIME)(TLX_PKI(getCurrentLocalTime)());
}

void use_ciphers() {
    std::uint8_t octets[32] = {};
    EXPECT_EQ(TLX_CRYPTO(RAND_BYTES)(octets, sizeof octets), 0U);
    EXPECT_EQ(TLX_CRYPTO(get_KeyLength)(TLX_CIPHER_SEED | TLX_CIPHER_MODE_CBC), 16U);
    RC4_UNIT *unit = TLX_CRYPTO(new_RC4_UNIT)();
    EXPECT_EQ(TLX_CRYPTO(init_RC4)(unit, octets, 16), 0U);
    TLX_CRYPTO(free_RC4_UNIT)(unit);
    // A refused value, after which the backend keeps what went wrong for the thread.
    EXPECT_EQ(TLX_CRYPTO(hex_to_BIGINT)("no number"), nullptr);
}

DWORD WINAPI use(void *der) {
    verify_certificate(*static_cast<std::vector<std::uint8_t> *>(der));
    use_ciphers();
    return 0;
}

/// A thread of the system's own: those of the compiler's library keep things for the next one.
void use_on_a_thread(std::vector<std::uint8_t> der) {
    const HANDLE thread = CreateThread(nullptr, 0, use, &der, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);
}

class Unload : public ::testing::Test {
  protected:
    Unload() {
        std::ifstream file(TLX_TEST_DATA "/chains/root.pem", std::ios::binary);
        pem_.assign(std::istreambuf_iterator<char>(file), {});
    }

    void load_use_and_unload() const {
        const HMODULE library = LoadLibraryA("tlxpki.dll");
        ASSERT_NE(library, nullptr) << GetLastError();
        std::uint8_t *octets = nullptr;
        const std::uint32_t size =
            TLX_PKI(decode_PEM)(pem_.data(), static_cast<std::int32_t>(pem_.size()), &octets);
        std::vector<std::uint8_t> der(octets, octets + size);
        TLX_CRYPTO(tlx_free)(octets);
        use(&der);
        use_on_a_thread(der);
        EXPECT_EQ(TLX_CRYPTO(tlx_live_blocks)(), 0U);
        EXPECT_TRUE(FreeLibrary(library));
        ASSERT_EQ(GetModuleHandleA("tlxpki.dll"), nullptr);
    }

    std::string pem_;
};

/// What the process holds stays the same from the fourth run on. In the first ones the system, the test and
/// its threads set up what they need once.
template <typename Run>
void expect_nothing_left_behind(Run run) {
    Holdings before;
    for (int round = 0; round < 103 && !::testing::Test::HasFatalFailure(); ++round) {
        if (round == 3) before = Holdings::now();
        run();
    }
    const Holdings after = Holdings::now();
    ASSERT_GT(before.heap_blocks, 0U);
    ASSERT_GT(before.handles, 0U);
    EXPECT_EQ(GetModuleHandleA("tlxcrypto.dll"), nullptr);
    EXPECT_EQ(after.heap_blocks, before.heap_blocks);
    EXPECT_EQ(after.heap_octets, before.heap_octets);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_EQ(after.modules, before.modules);
}

TEST_F(Unload, LeavesNothingBehind) {
    expect_nothing_left_behind([this] { load_use_and_unload(); });
}

TEST_F(Unload, LeavesNothingBehindWhenNothingWasUsed) {
    expect_nothing_left_behind([] { FreeLibrary(LoadLibraryA("tlxpki.dll")); });
}

}  // namespace
