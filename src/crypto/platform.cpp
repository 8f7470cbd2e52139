#include "crypto/platform.hpp"

#ifdef _WIN32
#include <windows.h>

#include <algorithm>
#include <cstring>

#include "crypto/wide_text.hpp"
#else
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <thread>
#endif

namespace tlx {

#ifdef _WIN32

namespace {

constinit DWORD g_thread_pointer = TLS_OUT_OF_INDEXES;

}  // namespace

void *thread_pointer() noexcept {
    // The host may still have to ask for an error of its own, which TlsGetValue clears.
    const DWORD error = GetLastError();
    void *pointer = TlsGetValue(g_thread_pointer);
    SetLastError(error);
    return pointer;
}

void set_thread_pointer(void *pointer) noexcept {
    TlsSetValue(g_thread_pointer, pointer);
}

bool open_thread_pointer() noexcept {
    g_thread_pointer = TlsAlloc();
    return g_thread_pointer != TLS_OUT_OF_INDEXES;
}

void close_thread_pointer() noexcept {
    TlsFree(g_thread_pointer);
}

void yield_thread() noexcept {
    SwitchToThread();
}

std::FILE *open_file(const char *path, const char *mode) noexcept {
    wchar_t wide_mode[4] = {};
    std::copy(mode, mode + std::strlen(mode), wide_mode);
    wchar_t *wide_path = to_wide(path);
    if (wide_path == nullptr) return nullptr;
    std::FILE *file = _wfopen(wide_path, wide_mode);
    tlx_free(wide_path);
    return file;
}

std::FILE *make_private_file(const char *path) noexcept {
    return open_file(path, "wb");
}

// Windows gives large pages to programs with a privilege alone.
void advise_large_pages(void * /*block*/, std::size_t /*size*/) noexcept {}

#else

void yield_thread() noexcept {
    std::this_thread::yield();
}

std::FILE *open_file(const char *path, const char *mode) noexcept {
    return std::fopen(path, mode);
}

// The pages that lie in the block as a whole. A system without them refuses, which is no failure.
void advise_large_pages(void *block, std::size_t size) noexcept {
#ifdef MADV_HUGEPAGE
    constexpr std::size_t kPage = std::size_t{2} << 20;
    void *first = block;
    if (std::align(kPage, kPage, first, size) == nullptr) return;
    static_cast<void>(madvise(first, size / kPage * kPage, MADV_HUGEPAGE));
#endif
}

namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

/// Takes a regular file away from group and others, and empties it. A file system without permissions refuses
/// that even to the file's owner, which is no failure. A file of another owner stays unchanged.
bool keep_to_owner(int descriptor) noexcept {
    struct stat file = {};
    if (fstat(descriptor, &file) != 0) return false;
    if (!S_ISREG(file.st_mode)) return true;
    const bool shared = (file.st_mode & (S_IRWXG | S_IRWXO)) != 0;
    if (shared && fchmod(descriptor, kOwnerOnly) != 0 && file.st_uid != geteuid()) return false;
    return ftruncate(descriptor, 0) == 0;
}

}  // namespace

std::FILE *make_private_file(const char *path) noexcept {
    const int descriptor = open(path, O_WRONLY | O_CREAT | O_CLOEXEC, kOwnerOnly);
    if (descriptor < 0) return nullptr;
    std::FILE *file = keep_to_owner(descriptor) ? fdopen(descriptor, "wb") : nullptr;
    if (file == nullptr) close(descriptor);
    return file;
}

#endif

}  // namespace tlx
