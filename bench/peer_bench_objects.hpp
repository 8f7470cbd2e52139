// libcrypto's object table behind plain types.
#pragma once

namespace peer {

int number_of_dotted(const char *text);
int number_of_short_name(const char *text);
int number_of_long_name(const char *text);

}  // namespace peer
