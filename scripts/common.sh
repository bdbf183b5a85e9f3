# What the scripts share: installing what is missing, and building. Sourced, not run.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# install_packages WHO…: the packages that scripts/packages.txt lists for these, as far as they are
# missing.
install_packages() {
  local missing=() who name
  while read -r who name; do
    case " $* " in *" $who "*) ;; *) continue ;; esac
    # A program from another source than Debian's package serves as well.
    case $name in
      cmake | clang | clang-format | clang-tidy | npm) command -v "$name" >/dev/null && continue ;;
      nodejs) command -v node >/dev/null && continue ;;
    esac
    dpkg-query -W -f='${Status}' "$name" 2>/dev/null | grep -q 'ok installed' || missing+=("$name")
  done < <(grep -vE '^(#|$)' scripts/packages.txt)
  [ ${#missing[@]} -eq 0 ] && return
  echo "Installing: ${missing[*]}" >&2
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# install_mdb_reader: the reader of databases that tests compare ours with, into build/mdb-reader.
# Without a package registry in reach there is none, and those tests say that they were skipped.
install_mdb_reader() {
  local folder=build/mdb-reader lock
  for lock in package.json package-lock.json; do
    cmp -s "tests/platform/access/mdb_reader/$lock" "$folder/$lock" || rm -rf "$folder"
  done
  [ -d "$folder/node_modules/mdb-reader" ] && return
  rm -rf "$folder"
  mkdir -p "$folder"
  cp tests/platform/access/mdb_reader/package{,-lock}.json "$folder"
  echo "Installing: mdb-reader" >&2
  npm ci --prefix "$folder" --ignore-scripts --no-audit --no-fund >/dev/null ||
    echo "mdb-reader cannot be installed; the tests that ask it will be skipped" >&2
}

# build PRESET TESTS [TARGET…]: configures with or without the tests (ON, OFF) and builds.
build() {
  local preset=$1 tests=$2
  shift 2
  cmake --preset "$preset" -DTENORA_TESTS="$tests" >/dev/null
  cmake --build --preset "$preset" ${1:+--target "$@"}
}
