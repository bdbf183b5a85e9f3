#!/usr/bin/env bash
# Installs what is missing, builds the program, and prints one receipt of the sample agency.
. "$(dirname "$0")/common.sh"

install_packages build
build release OFF tenora >&2

home=$(mktemp -d "${TMPDIR:-/tmp}/tenora-demo-XXXXXX")
cp -R examples/agency/. "$home"
export TENORA_HOME=$home TENORA_SETTINGS=$home/settings TENORA_PRINTER="Print to PDF"
unset TENORA_PDF

echo "The sample agency is in $home"
echo "Running: tenora 'PRINTRECEIPT=\"T00001\" FORMAT=\"Receipt\"'"
build/release/tenora 'PRINTRECEIPT="T00001" FORMAT="Receipt"'
pdf=$(find "$home/Printed" -name '*.pdf')
echo "The receipt is in: $pdf"
