#!/usr/bin/env bash
# The DLLs: they export, undecorated, the functions that the public headers declare elsewhere too, and so do their import
# libraries and .def files; they need no DLL but those that every Windows has; the system may place them anywhere in memory;
# and nothing in them runs before their entry point, throws or starts threads.
# usage: windows_dlls.sh <C compiler of this machine> <include dir> <DLL dir> <library dir> <.def dir>
source "$(dirname "$0")/common.sh"
cc=$1 include=$2 dlls=$3 libraries=$4 defs=$5
objdump() { x86_64-w64-mingw32-objdump "$@"; }
nm() { x86_64-w64-mingw32-nm "$@" 2>/dev/null; }

# As the headers read where there are no DLLs.
declarations "$cc" "$include"

declare -A needed=(
    [tlxcrypto.dll]="advapi32 bcrypt kernel32 msvcrt user32"
    [tlxpki.dll]="kernel32 msvcrt tlxcrypto"
    [tlxpki.exe]="advapi32 crypt32 kernel32 msvcrt shell32 tlxcrypto tlxpki winhttp"
)
for file in "${!needed[@]}"; do
    [[ -f $dlls/$file ]] || { echo "$file is missing"; status=1; continue; }
    objdump -p "$dlls/$file" | sed -nE 's/^\s*DLL Name: (.*)\.dll$/\L\1/Ip' | sort >"$work/needs"
    tr ' ' '\n' <<<"${needed[$file]}" | comm -13 - "$work/needs" >"$work/more"
    [[ -s $work/needs ]] || { echo "$file needs nothing?"; status=1; }
    [[ -s $work/more ]] && echo "$file needs:" && cat "$work/more" && status=1
    echo "$file needs: $(tr '\n' ' ' <"$work/needs")"
    for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
        objdump -p "$dlls/$file" | grep "$flag" >/dev/null || { echo "$file is not $flag"; status=1; }
    done
done

# Random octets are the system's present source's.
objdump -p "$dlls/tlxcrypto.dll" >"$work/imports"
grep -q ' BCryptGenRandom$' "$work/imports" || { echo "tlxcrypto.dll does not call BCryptGenRandom"; status=1; }
grep ' CryptGenRandom$' "$work/imports" && status=1

for library in tlxcrypto tlxpki; do
    objdump -p "$dlls/$library.dll" | sed -nE '/^\[Ordinal\/Name Pointer\]/,/^$/s/^\s*\[ *[0-9]+\].* (\S+)$/\1/p' |
        sort >"$work/exported"
    same "exports of $library.dll" "$work/$library.declared" "$work/exported"
    sed -n 's/^    //p' "$defs/$library.def" | sort >"$work/def"
    same "$library.def" "$work/$library.declared" "$work/def"
    for import in "lib$library.dll.a" "$library.lib"; do
        nm "$libraries/$import" | sed -nE 's/^.* T ([A-Za-z_][A-Za-z0-9_]*)$/\1/p' | sort -u >"$work/imports"
        same "$import" "$work/$library.declared" "$work/imports"
    done
    echo "$library.dll: $(wc -l <"$work/exported") functions, $(stat -c %s "$dlls/$library.dll") octets"

    nm "$dlls/$library.dll" >"$work/symbols"
    grep -q ' T DllMainCRTStartup$' "$work/symbols" || { echo "$library.dll has no symbols"; status=1; }
    if grep -E ' (_GLOBAL__sub_I_.*|__cxa_throw|__emutls_get_address|pthread_create|__guard_setup)$' "$work/symbols"; then
        echo "these have no place in $library.dll"
        status=1
    fi
done
exit $status
