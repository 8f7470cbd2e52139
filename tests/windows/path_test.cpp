// Paths of files as Windows has them: UTF-16, behind UTF-8 or the ANSI code page.
#include <gtest/gtest.h>
#include <tlxcrypto/file.h>
#include <tlxcrypto/memory.h>
#include <windows.h>

#include <string>

namespace {

std::string in_code_page(UINT code_page, const std::wstring &wide) {
    char text[64];
    BOOL replaced = FALSE;
    const int size =
        WideCharToMultiByte(code_page, code_page == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS, wide.c_str(), -1,
                            text, sizeof text, nullptr, code_page == CP_UTF8 ? nullptr : &replaced);
    return size > 0 && !replaced ? std::string(text) : "";
}

// What the functions write is in the file of that name, every octet of it and nothing else: no line ends, no
// end of the text.
void write_look_and_read(const std::string &path, const std::wstring &wide) {
    const std::uint8_t octets[] = {'\r', '\n', 0x1A, '\n', 0, 0xFF};
    ASSERT_EQ(binary_to_File(path.c_str(), octets, sizeof octets), 0U);
    const HANDLE file = CreateFileW(wide.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE) << GetLastError();
    EXPECT_EQ(GetFileSize(file, nullptr), sizeof octets);
    CloseHandle(file);
    std::uint8_t *read = nullptr;
    std::uint32_t len = 0;
    EXPECT_EQ(File_to_binary(path.c_str(), &read, &len), 0U);
    EXPECT_EQ(std::string(read, read + len), std::string(octets, octets + sizeof octets));
    tlx_free(read);
    EXPECT_TRUE(DeleteFileW(wide.c_str()));
}

TEST(WindowsPath, IsUtf8) {
    const std::wstring wide = L"\xC778\xC99D\xC11C \x00E9 \xD83D\xDD11.der";  // also beyond 16 bits
    write_look_and_read(in_code_page(CP_UTF8, wide), wide);
}

TEST(WindowsPath, IsInTheAnsiCodePageWhenItIsNotUtf8) {
    int written = 0;
    // A Korean word and a Latin one: every code page has no more than one of them.
    for (const std::wstring wide : {L"\xC778\xC99D\xC11C.der", L"cl\x00E9.der"}) {
        const std::string ansi = in_code_page(CP_ACP, wide);
        if (ansi.empty()) continue;
        write_look_and_read(ansi, wide);
        ++written;
    }
    EXPECT_GT(written, 0) << "code page " << GetACP();
}

}  // namespace
