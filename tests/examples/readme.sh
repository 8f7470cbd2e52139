#!/usr/bin/env bash
# The C program in the README is examples/verify_chain.c.
# usage: readme.sh <source dir>
set -euo pipefail
diff <(sed -n '/^```c$/,/^```$/{//!p}' "$1/README.md") "$1/examples/verify_chain.c"
