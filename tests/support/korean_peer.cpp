#include "support/korean_peer.hpp"

#ifdef _WIN32
#include <windows.h>
#else
#include <iconv.h>
#endif

namespace tlx_test::korean {

#ifdef _WIN32

namespace {

constexpr UINT kKorean = 949;  // EUC-KR and more

// The character set (KS X 1001:2002) has the postal code mark; the older code page lacks it.
const std::string kPostalCodeInEuc = "\xA2\xE8";
const std::string kPostalCodeInUtf16 = "\x32\x7E";

// The code page fills the character set's room for a user's own characters.
bool is_private_use(wchar_t unit) {
    return unit >= 0xE000 && unit <= 0xF8FF;
}

}  // namespace

std::string euc_to_utf16(const std::string &euc) {
    if (euc == kPostalCodeInEuc) return kPostalCodeInUtf16;
    wchar_t unit = 0;
    const int units = MultiByteToWideChar(kKorean, MB_ERR_INVALID_CHARS, euc.data(),
                                          static_cast<int>(euc.size()), &unit, 1);
    if (units != 1 || is_private_use(unit)) return {};
    return {static_cast<char>(unit >> 8), static_cast<char>(unit)};
}

std::string cp949_to_utf16(const std::string &pair) {
    return euc_to_utf16(pair);
}

std::string utf16_to_euc(const std::string &unit) {
    if (unit == kPostalCodeInUtf16) return kPostalCodeInEuc;
    const wchar_t wide[] = {
        static_cast<wchar_t>(static_cast<unsigned char>(unit[0]) << 8 | static_cast<unsigned char>(unit[1]))};
    char euc[2];
    BOOL replaced = FALSE;
    const int size = WideCharToMultiByte(kKorean, WC_NO_BEST_FIT_CHARS, wide, 1, euc, 2, nullptr, &replaced);
    if (size <= 0 || replaced || is_private_use(wide[0])) return {};
    return {euc, static_cast<std::size_t>(size)};
}

#else

namespace {

class Iconv {
  public:
    Iconv(const char *to, const char *from) : handle_(iconv_open(to, from)) {}
    ~Iconv() { iconv_close(handle_); }
    Iconv(const Iconv &) = delete;
    Iconv &operator=(const Iconv &) = delete;

    std::string operator()(std::string in) {
        char room[16];
        char *from = in.data();
        char *to = room;
        std::size_t left = in.size();
        std::size_t free = sizeof room;
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        if (iconv(handle_, &from, &left, &to, &free) != 0 || left != 0) return {};
        return {room, sizeof room - free};
    }

  private:
    iconv_t handle_;
};

}  // namespace

std::string euc_to_utf16(const std::string &euc) {
    static Iconv convert("UTF-16BE", "EUC-KR");
    return convert(euc);
}

std::string cp949_to_utf16(const std::string &pair) {
    static Iconv convert("UTF-16BE", "UHC");
    return convert(pair);
}

std::string utf16_to_euc(const std::string &unit) {
    static Iconv convert("EUC-KR", "UTF-16BE");
    return convert(unit);
}

#endif

}  // namespace tlx_test::korean
