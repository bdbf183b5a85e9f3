#!/usr/bin/env bash
# Installs what is missing, checks the code's format, builds everything, and runs the whole test
# suite: the tests on the release build, then the fuzz targets, each for a short time, under the
# sanitizers.
. "$(dirname "$0")/common.sh"

install_packages build test
install_mdb_reader

status=0
scripts/lint.sh --format || status=1
build release ON
build fuzz ON fuzzers
ctest --test-dir build/release --output-on-failure -j "$(nproc)" || status=1
ctest --test-dir build/fuzz --output-on-failure -j "$(nproc)" -L fuzz || status=1
exit $status
