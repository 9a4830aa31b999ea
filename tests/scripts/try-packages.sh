#!/usr/bin/env bash
# Unpacks both packages and converts the example with their contents alone.
# Usage: try-packages.sh DIST_FOLDER WINDOWS_BUILD
set -euo pipefail
dist=$1
export WINEPREFIX=$2/wine WINEDEBUG=-all LC_ALL=C.UTF-8

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

dpkg-deb -x "$dist"/orvane_*_amd64.deb deb
usr=$folder/deb/usr
"$usr/bin/orvane" "$usr/share/doc/orvane/examples/house/house.json" linux/house.bin maps linux/run.log
"$usr/bin/scene-inspect" linux/house.bin
test -f "$usr/share/doc/orvane/README.md"
test -f "$usr/share/doc/orvane/docs/scene-file.md"

unzip -q "$dist"/orvane-*-windows-x64.zip
cd orvane-*-windows-x64
wine orvane.exe examples/house/house.json out/house.bin maps out/run.log
wine scene-inspect.exe out/house.bin
test -f README.md
test -f docs/scene-file.md

cmp out/house.bin "$folder/linux/house.bin"
echo "Both packages convert the example."
