// The operating system's character sets: iconv of the C library, or the code pages of Windows.
#pragma once

#include <string>

namespace tlx_test::korean {

/// The UTF-16 unit (big-endian, two octets) of a character in EUC-KR; empty when there is no such character.
std::string euc_to_utf16(const std::string &euc);

/// The same of a character in code page 949, outside the rows that EUC-KR has.
std::string cp949_to_utf16(const std::string &pair);

/// The EUC-KR octets of a UTF-16 unit (big-endian); empty when there are none.
std::string utf16_to_euc(const std::string &unit);

}  // namespace tlx_test::korean
