#!/usr/bin/env bash
# sanitize.sh [REGEX]: builds and runs the unit tests, or those whose names match, under the address
# and undefined-behaviour sanitizers, as in `scripts/sanitize.sh '^(access|query)$'`.
. "$(dirname "$0")/common.sh"

install_packages build test
install_mdb_reader
cmake --preset debug -DTENORA_TESTS=ON >/dev/null
# ui_end_to_end drives the built program from outside; it is no unit test.
chosen=(-R "${1:-.}" -E '^ui_end_to_end$')
mapfile -t tests < <(ctest --test-dir build/debug -N "${chosen[@]}" 2>/dev/null |
  sed -n 's/^ *Test *#[0-9]*: //p')
[ ${#tests[@]} -gt 0 ] || { echo "No test has a name like '${1:-}'" >&2; exit 1; }
cmake --build --preset debug --target "${tests[@]/%/_test}"
ctest --test-dir build/debug --output-on-failure -j "$(nproc)" "${chosen[@]}"
