#!/usr/bin/env bash
# The zip: it holds what it should and nothing else, programs are built with it alone, by CMake and by both compilers, and run.
# usage: windows_zip.sh <cmake> <build dir> <source dir> <toolchain file> <clang> <lld-link> <emulator ...>
source "$(dirname "$0")/common.sh"
cmake=$1 build=$2 source=$3 toolchain=$4 clang=$5 lld_link=$6
shift 6

"$(dirname "$cmake")/cpack" --config "$build/CPackConfig.cmake" -B "$work" >"$work/log" || { cat "$work/log"; exit 1; }
zip=$(echo "$work"/tlxpki-*-win64.zip)
(cd "$work" && "$cmake" -E tar xf "$zip")
root=${zip%.zip}

{
    (cd "$source" && find include -name '*.h')
    printf 'bin/%s\n' tlxcrypto.dll tlxpki.dll tlxpki.exe
    for library in tlxcrypto tlxpki; do
        printf 'lib/%s\n' "$library.lib" "$library.def" "lib$library.dll.a" "pkgconfig/$library.pc"
    done
    printf 'lib/cmake/tlxpki/tlxpki%s.cmake\n' Config ConfigVersion Targets Targets-release
    printf 'licenses/%s.txt\n' openssl mingw-w64-runtime gcc-runtime cli11 nlohmann-json
    echo README.md
} | sort >"$work/expected"
(cd "$root" && find . -type f | sed 's|^\./||' | sort) >"$work/found"
diff "$work/expected" "$work/found" || { echo "contents (< expected, > found)"; status=1; }

licence() {  # file, a text it has to hold
    grep -q "$2" "$root/licenses/$1.txt" || { echo "licenses/$1.txt does not hold \"$2\""; status=1; }
}
licence openssl 'Apache License'
licence openssl 'source package openssl [0-9]'
licence mingw-w64-runtime 'winpthreads'
licence gcc-runtime 'Runtime Library Exception'
licence cli11 'University of Cincinnati'
licence nlohmann-json 'Niels Lohmann'

"$cmake" -S "$source/tests/package/consumer" -B "$work/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -Dtlxpki_DIR="$root/lib/cmake/tlxpki" >"$work/log" && "$cmake" --build "$work/build" >>"$work/log" ||
    { cat "$work/log"; exit 1; }
cp "$root"/bin/*.dll "$work/build"
for program in consumer_c consumer_cpp; do
    "$@" "$work/build/$program.exe" || { echo "$program: exit status $?"; status=1; }
done
"$(dirname "$0")/windows_msvc.sh" "$clang" "$lld_link" "$root/include" "$root/lib" "$root/bin" \
    "$source/tests/windows/msvc_program.c" "$@" || status=1
ls -l "$zip" "$root/bin" | awk 'NF > 8 { print $5, $9 }'
exit $status
