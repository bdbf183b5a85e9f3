#!/usr/bin/env bash
# fuzz.sh TARGET SECONDS: searches for inputs that break a fuzz target of tests/fuzz, from another
# seed each time. What it learns stays in build/fuzz/corpus/TARGET for the next search; an input
# that breaks the target is left in build/fuzz/found.
. "$(dirname "$0")/common.sh"

target=${1:?which target of tests/fuzz?}
seconds=${2:?for how many seconds?}
install_packages build test
build fuzz ON "fuzz_$target"
mkdir -p "build/fuzz/corpus/$target" build/fuzz/found
program=$(find build/fuzz/tests -name "fuzz_$target" -type f)
"$program" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 -max_len=65536 \
  -artifact_prefix="build/fuzz/found/$target-" "build/fuzz/corpus/$target" "tests/fuzz/$target"
