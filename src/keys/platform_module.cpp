#include "keys/platform_module.hpp"

#ifdef _WIN32
#include "crypto/wide_text.hpp"
#else
#include <dlfcn.h>
#include <pthread.h>
#endif

namespace tlx {

#ifdef _WIN32

void *load_module(const char *path) noexcept {
    wchar_t *wide = to_wide(path);
    if (wide == nullptr) return nullptr;
    HMODULE module = LoadLibraryW(wide);
    tlx_free(wide);
    return module;
}

void *module_function(void *module, const char *name) noexcept {
    return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void unload_module(void *module) noexcept {
    FreeLibrary(static_cast<HMODULE>(module));
}

namespace {
constinit SRWLOCK g_lock = SRWLOCK_INIT;
}

ModulesLock::ModulesLock() noexcept {
    AcquireSRWLockExclusive(&g_lock);
}

ModulesLock::~ModulesLock() {
    ReleaseSRWLockExclusive(&g_lock);
}

#else

void *load_module(const char *path) noexcept {
    // An empty path stands for the program itself.
    return *path == '\0' ? nullptr : dlopen(path, RTLD_NOW | RTLD_LOCAL);
}

void *module_function(void *module, const char *name) noexcept {
    return dlsym(module, name);
}

void unload_module(void *module) noexcept {
    dlclose(module);
}

namespace {
constinit pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
}

ModulesLock::ModulesLock() noexcept {
    static_cast<void>(pthread_mutex_lock(&g_lock));
}

ModulesLock::~ModulesLock() {
    static_cast<void>(pthread_mutex_unlock(&g_lock));
}

#endif

}  // namespace tlx
