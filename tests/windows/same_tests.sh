#!/usr/bin/env bash
# What runs on Linux runs on Windows, too, but for the tests that are listed with a reason; and the list names no others.
# usage: same_tests.sh <Linux build> <results of ctest on Windows, JUnit's XML> <list>
set -euo pipefail
linux=$1 results=$2 list=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Names, without what gtest tells of parameters.
names() { sed 's/  # GetParam.*//' | LC_ALL=C sort; }
ctest --test-dir "$linux" -N | sed -nE 's/^ *Test +#[0-9]+: //p' | names >"$work/linux"
sed -nE '/ status="run"/s/.*<testcase name="([^"]*)".*/\1/p' "$results" | names >"$work/windows"
sed -nE 's/^([^# ]+) +[^ ].*/\1/p' "$list" | names >"$work/listed"
grep -vE '^(package\.)?windows[._]' "$work/windows" >"$work/both"

status=0
LC_ALL=C comm -23 "$work/linux" "$work/both" >"$work/only_linux"
diff "$work/listed" "$work/only_linux" >"$work/diff" || status=1
[[ $status == 0 ]] || { echo "tests that Windows lacks (< listed, > found):" && cat "$work/diff"; }
if LC_ALL=C comm -13 "$work/linux" "$work/both" | grep .; then
    echo "these run on Windows only, and are not named windows.*" && status=1
fi
echo "Linux: $(wc -l <"$work/linux") tests; Windows: $(wc -l <"$work/windows")," \
     "of them $(wc -l <"$work/both") of Linux's; $(wc -l <"$work/listed") listed as POSIX-only"
exit $status
