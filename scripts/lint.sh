#!/usr/bin/env bash
# lint.sh [--format] [FILE…]: checks the format of these files, or of all, with clang-format, then
# their code with clang-tidy; .clang-tidy lists the checks. With --format only the format, in seconds;
# `clang-format -i FILE` corrects it. Code in a header is checked with the files that include it.
format_only=
if [ "${1:-}" = --format ]; then
  format_only=yes
  shift
fi
files=()
for file in "$@"; do
  files+=("$(realpath "$file")")
done
. "$(dirname "$0")/common.sh"

install_packages lint
if [ ${#files[@]} -eq 0 ]; then
  mapfile -t files < <(git ls-files '*.h' '*.cc' '*.cpp')
fi
status=0
clang-format --dry-run -Werror "${files[@]}" || status=1
[ -z "$format_only" ] || exit $status

# The fuzz build is clang's own and has no precompiled headers: clang-tidy can take its commands.
install_packages build test
cmake --preset fuzz -DTENORA_TESTS=ON -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
sources=()
for file in "${files[@]}"; do
  case $file in *.cc | *.cpp) sources+=("$file") ;; esac
done
[ ${#sources[@]} -gt 0 ] || exit $status
printf '%s\0' "${sources[@]}" |
  nice xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/fuzz --quiet || status=1
exit $status
