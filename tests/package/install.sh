#!/usr/bin/env bash
# Installs into a scratch prefix and builds a C and a C++ program against it, by the CMake package and by pkg-config.
# usage: install.sh <cmake> <build dir> <consumer source dir> <C compiler> <library dir below the prefix>
source "$(dirname "$0")/common.sh"
cmake=$1 build=$2 consumer=$3 cc=$4 libdir=$5

"$cmake" --install "$build" --prefix "$work/prefix" >/dev/null
"$cmake" -S "$consumer" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
"$cmake" --build "$work/build" >/dev/null
"$work/build/consumer_c"
"$work/build/consumer_cpp"

export PKG_CONFIG_PATH=$work/prefix/$libdir/pkgconfig
# shellcheck disable=SC2046  # the flags are words
"$cc" ${CFLAGS:-} "$consumer/consumer.c" -o "$work/by_pkg_config" $(pkg-config --cflags --libs tlxpki)
LD_LIBRARY_PATH=$work/prefix/$libdir "$work/by_pkg_config"
