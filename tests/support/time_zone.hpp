#pragma once

#include <cstdlib>
#include <ctime>

namespace tlx_test {

/// Sets the process's time zone, in the form of the environment variable TZ; empty for the host's own.
inline void set_time_zone(const char *zone) {
#ifdef _WIN32
    _putenv_s("TZ", zone);
    _tzset();
#else
    if (*zone == '\0') {
        unsetenv("TZ");
    } else {
        setenv("TZ", zone, 1);
    }
    tzset();
#endif
}

}  // namespace tlx_test
