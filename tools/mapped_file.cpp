#include "mapped_file.hpp"

#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace tool {

namespace {

#ifdef _WIN32

/// The first octets of a file; null when it cannot be read.
const uint8_t *map(const std::filesystem::path &path, std::size_t size) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return nullptr;
    const HANDLE mapping = CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    CloseHandle(file);
    if (mapping == nullptr) return nullptr;
    const void *octets = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, size);
    CloseHandle(mapping);
    return static_cast<const uint8_t *>(octets);
}

void unmap(const uint8_t *octets, std::size_t /*size*/) {
    UnmapViewOfFile(octets);
}

#else

/// The first octets of a file; null when it cannot be read.
const uint8_t *map(const std::filesystem::path &path, std::size_t size) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return nullptr;
    const void *octets = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    (void)close(file);
    return octets == MAP_FAILED ? nullptr : static_cast<const uint8_t *>(octets);
}

void unmap(const uint8_t *octets, std::size_t size) {
    (void)munmap(const_cast<uint8_t *>(octets), size);
}

#endif

}  // namespace

MappedFile::MappedFile(const std::filesystem::path &path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return;
    const auto size = static_cast<std::size_t>(std::filesystem::file_size(path, error));
    if (error || size == 0) return;
    octets_ = map(path, size);
    if (octets_ != nullptr) size_ = size;
}

MappedFile::~MappedFile() {
    if (octets_ != nullptr) unmap(octets_, size_);
}

}  // namespace tool
