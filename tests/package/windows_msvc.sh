#!/usr/bin/env bash
# A program compiled and linked the way of the other compiler of Windows, with its import libraries, runs.
# usage: windows_msvc.sh <clang> <lld-link> <include dir> <library dir> <DLL dir> <source> <emulator ...>
source "$(dirname "$0")/common.sh"
clang=$1 link=$2 include=$3 libraries=$4 dlls=$5 source=$6
shift 6

"$clang" --target=x86_64-pc-windows-msvc -ffreestanding -std=c99 -Wall -Wextra -Wpedantic -Werror -I"$include" \
    -c "$source" -o "$work/program.obj"
"$link" -nologo -nodefaultlib -entry:start -subsystem:console -out:"$work/program.exe" "$work/program.obj" \
    "$libraries/tlxpki.lib" "$libraries/tlxcrypto.lib"
cp "$dlls"/tlx*.dll "$work"
"$@" "$work/program.exe" || status=$?
[[ $status == 42 ]] || { echo "exit status $status, not 42"; exit 1; }
