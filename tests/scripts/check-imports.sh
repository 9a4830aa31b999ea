#!/usr/bin/env bash
# Checks that orvane.exe imports exactly the 64 plain names from SketchUpAPI.dll, that the library exports exactly
# these, and that the Windows programs otherwise need only libraries of every Windows.
# Usage: check-imports.sh WINDOWS_BUILD
set -euo pipefail
build=$1
objdump=x86_64-w64-mingw32-objdump
bare="^(KERNEL32|msvcrt|USER32|GLU32|OPENGL32)\.dll$"

names() { grep -oE '\bSU[A-Z][A-Za-z0-9]+\b' | sort -u; }
wanted=$(sed 's/LIBRARY.*//' "$build/link/SketchUpAPI.def" | names)
test "$(wc -l <<<"$wanted")" = 64

imports=$("$objdump" -p "$build/orvane.exe" | awk '/DLL Name: /{dll=$3} dll=="SketchUpAPI.dll"' | names)
exports=$("$objdump" -p "$build/SketchUpAPI.dll" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' |
    sed -nE 's/^\s*\[ *[0-9]+\] //p' | sort -u)
diff <(echo "$wanted") <(echo "$imports")
diff <(echo "$wanted") <(echo "$exports")

for file in orvane.exe SketchUpAPI.dll scene-inspect.exe; do
    others=$("$objdump" -p "$build/$file" | awk '/DLL Name: /{print $3}' | grep -v '^SketchUpAPI.dll$')
    if grep -vE "$bare" <<<"$others"; then
        echo "$file needs libraries that Windows lacks."
        exit 1
    fi
done
echo "orvane.exe imports the 64 operations, and otherwise only libraries of Windows."
