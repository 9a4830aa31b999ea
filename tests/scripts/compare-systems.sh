#!/usr/bin/env bash
# Converts the example and a test document with the Linux and the Windows build, in separate folders with the same
# arguments, and compares all output: scene files, pictures, logs, standard output, pages.
# Usage: compare-systems.sh LINUX_BUILD WINDOWS_BUILD SOURCE_FOLDER
set -euo pipefail
linux=$1 windows=$2 source=$3
export WINEPREFIX=$windows/wine WINEDEBUG=-all LC_ALL=C.UTF-8

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
for system in linux windows; do
    mkdir "$folder/$system"
    (cd "$source" && cp -r --parents examples tests/documents "$folder/$system")
done
documents=(examples/house/house.json tests/documents/numbers.json)
for document in "${documents[@]}"; do
    name=$(basename "$document" .json)
    arguments=("$document" "scenes/$name.bin" maps "logs/$name.log")
    (cd "$folder/linux" && "$linux/orvane" "${arguments[@]}" >"$name.out")
    (cd "$folder/windows" && wine "$windows/orvane.exe" "${arguments[@]}" >"$name.out")
    (cd "$folder/linux" && "$linux/scene-inspect" --html "scenes/$name.html" "scenes/$name.bin" >>"$name.out")
    (cd "$folder/windows" && wine "$windows/scene-inspect.exe" --html "scenes/$name.html" "scenes/$name.bin" >>"$name.out")
    test -s "$folder/linux/scenes/$name.bin"
    test -s "$folder/linux/scenes/$name.html"
done
diff -rq "$folder/linux" "$folder/windows"
files=$(find "$folder/linux/scenes" "$folder/linux/logs" -type f | wc -l)
test "$files" -ge 14
echo "${#documents[@]} documents give the same $files files on both systems."
