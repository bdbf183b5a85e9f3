#!/bin/sh
# fuzz_test.sh PROGRAM CORPUS RUNS: one fuzz program as a test. Without traces of comparisons, which
# hold addresses, a seed gives the same inputs everywhere; new ones are forgotten with the folder.
set -eu
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
"$1" -seed=1 -runs="$3" -use_cmp=0 -timeout=60 -rss_limit_mb=2048 -max_len=65536 -verbosity=0 \
  "$scratch" "$2"
