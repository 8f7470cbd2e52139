// What -fstack-protector and _FORTIFY_SOURCE ask of the C library, linked into each DLL. The compiler's own
// version starts a cryptographic provider when the DLL is loaded, where nothing may load another DLL or
// allocate.
#include <windows.h>

#include <cstdint>

extern "C" {
extern std::uintptr_t __stack_chk_guard;
std::uintptr_t __stack_chk_guard = 0;

[[noreturn]] void __stack_chk_fail();
[[noreturn]] void __chk_fail();
}

namespace {

// Ends the process at once, by the system's own way for programs whose memory cannot be trusted.
[[noreturn]] void fail_fast(unsigned code) noexcept {
    __asm__ volatile("int $0x29" : : "c"(code) : "memory");
    __builtin_unreachable();
}

std::uint64_t mixed(std::uint64_t value) noexcept {
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31);
}

// Before anything else of ours runs: what differs from process to process, from load to load. As elsewhere on
// Windows the guard's highest octets are zero, which stops an overrun by a text.
[[gnu::constructor(101), gnu::no_stack_protector]] void set_guard() noexcept {
    LARGE_INTEGER counter;
    FILETIME time;
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&time);
    std::uint64_t value = mixed(static_cast<std::uint64_t>(counter.QuadPart));
    value = mixed(value ^ (std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime));
    value = mixed(value ^ (std::uint64_t{GetCurrentProcessId()} << 32 | GetCurrentThreadId()));
    value = mixed(value ^ reinterpret_cast<std::uintptr_t>(&counter));
    __stack_chk_guard = value >> 16;
}

}  // namespace

extern "C" {

void __stack_chk_fail() {
    fail_fast(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE);
}

void __chk_fail() {
    fail_fast(FAST_FAIL_RANGE_CHECK_FAILURE);
}

}  // extern "C"
