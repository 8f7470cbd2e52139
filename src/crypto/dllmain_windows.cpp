// What happens when the DLL is loaded and unloaded.
#ifdef _WIN32

#include <openssl/crypto.h>
#include <windows.h>

#include "crypto/backend.hpp"
#include "crypto/platform.hpp"

namespace tlx {
namespace {

// This DLL's copy of libcrypto must not clean up by itself: when the process ends, other threads have stopped
// anywhere, and what they held is lost.
bool attach() noexcept {
    return open_thread_pointer() && OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr) == 1;
}

void detach() noexcept {
    release_ciphers();
    release_aead();
    release_rc4();
    release_curves();
    release_backend();
    OPENSSL_cleanup();
    close_thread_pointer();
}

}  // namespace
}  // namespace tlx

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID process_ends);

extern "C" BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, LPVOID process_ends) {
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            return tlx::attach() ? TRUE : FALSE;
        case DLL_THREAD_DETACH:
            OPENSSL_thread_stop();
            return TRUE;
        case DLL_PROCESS_DETACH:
            if (process_ends == nullptr) tlx::detach();
            return TRUE;
        default:
            return TRUE;
    }
}

#endif
