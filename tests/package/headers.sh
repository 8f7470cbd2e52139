#!/usr/bin/env bash
# Every public header compiles on its own as C99 and as C++11, without a warning.
# usage: headers.sh <C compiler> <C++ compiler> <include dir>
set -euo pipefail
cc=$1 cxx=$2 include=$3
warnings=(-Wall -Wextra -Wpedantic -pedantic-errors -Werror -Wundef -Wshadow)

cd "$include"
find . -name '*.h' | sort | while read -r header; do
    printf '#include <%s>\nint nothing;\n' "${header#./}" | "$cc" -std=c99 "${warnings[@]}" -Wstrict-prototypes \
        -I. -fsyntax-only -x c -
    printf '#include <%s>\n' "${header#./}" | "$cxx" -std=c++11 "${warnings[@]}" -Wold-style-cast -I. \
        -fsyntax-only -x c++ -
done
