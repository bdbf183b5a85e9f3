#!/usr/bin/env bash
# Installs what is missing, builds the program, starts a PostgreSQL server of its own, brings two
# branches to it, prints a letter from each, and has two workers make the letters of a run. The
# server is removed at the end.
. "$(dirname "$0")/common.sh"

install_packages build server
build release OFF tenora >&2
tenora=$root/build/release/tenora

cluster=$(scripts/private_postgres.sh start)
trap 'scripts/private_postgres.sh stop "$cluster"' EXIT
home=$(mktemp -d "${TMPDIR:-/tmp}/tenora-server-demo-XXXXXX")
mkdir "$home/north" "$home/south" "$home/settings"
cp examples/agency/property.mdb "$home/north"
cp examples/agency/property.mdb "$home/south"
cp -R examples/agency/Templates "$home"
printf '[rents]\nhost=%s\ndbname=rents\nuser=tenora\n' "$cluster" >"$home/services"
cat >"$home/settings/machine.settings" <<'SETTINGS'
Tenora settings, version 1

[SOFTWARE\Tenora\Settings]
"Networkable" = "1"
"DatabaseLocation" = "service=rents branch=North"

End of settings
SETTINGS
psql -q -h "$cluster" -U tenora -c "create database rents" postgres
export PGSERVICEFILE=$home/services
export TENORA_HOME=$home TENORA_SETTINGS=$home/settings TENORA_PRINTER="Print to PDF"
unset TENORA_PDF

# Shows a command and runs it.
run() {
  printf '\n$ tenora'
  printf ' %q' "$@"
  printf '\n'
  "$tenora" "$@"
}
# The same for what names contradictory rows: status 1 is expected, since the sample has two.
run_with_findings() {
  local status=0
  run "$@" || status=$?
  [ "$status" -eq 1 ] || { echo "expected status 1, not $status" >&2; return 1; }
}
in_south() { "$tenora" query --write "$home/south/property.mdb" "$1" >/dev/null; }

in_south "update tenancy set name = 'Southern, Sam' where reference = 'T00001'"
run server init rents
run_with_findings server import "$home/north/property.mdb" --branch North --service rents
run_with_findings server import "$home/south/property.mdb" --branch South --service rents
in_south "update tenancy set name = 'Southern, Samantha' where reference = 'T00001'"
run_with_findings server sync --service rents
run server status --service rents
run generate --all-branches --template "Tenancy statement" --recipient T00001 --to printer
run generate --queue --all-branches --template "Rent review" --all
run status
run work --workers 2 --until-done
run status 1
echo "The letters are in: $home/Branches"
