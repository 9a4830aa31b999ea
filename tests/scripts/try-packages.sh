#!/usr/bin/env bash
# Checks both packages as their systems want them, unpacks them, and converts the example with their contents alone.
# Usage: try-packages.sh DIST_FOLDER WINDOWS_BUILD SOURCES
set -euo pipefail
dist=$1
sources=$3
export WINEPREFIX=$2/wine WINEDEBUG=-all LC_ALL=C.UTF-8

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

fail() {
    echo "$*" >&2
    exit 1
}

# A file of notices must contain those of Debian packages as they are: check_notices FILE PACKAGE...
check_notices() {
    python3 - "$@" <<'END'
import pathlib, sys
notices = pathlib.Path(sys.argv[1]).read_text()
for package in sys.argv[2:]:
    if pathlib.Path(f"/usr/share/doc/{package}/copyright").read_text() not in notices:
        sys.exit(f"{sys.argv[1]} lacks the notices of {package}")
END
}

# Only the mail address may be made up: whoever makes a package for others sets it.
lintian --allow-root --tag-display-limit 0 "$dist"/orvane_*_amd64.deb >tags || [ $? -eq 2 ]
! grep -v bogus-mail-host tags || fail "lintian has more to say"

dpkg-deb -x "$dist"/orvane_*_amd64.deb deb
usr=$folder/deb/usr
"$usr/bin/orvane" "$usr/share/doc/orvane/examples/house/house.json" linux/house.bin maps linux/run.log
"$usr/bin/scene-inspect" linux/house.bin
test -f "$usr/share/doc/orvane/README.md"
test -f "$usr/share/doc/orvane/docs/scene-file.md"
for page in "$usr"/share/man/man1/*.1.gz; do
    # Warnings of both; what mandoc calls style includes that the pages are not installed.
    mandoc -T lint -W warning "$page"
    man --warnings -l "$page" 2>&1 >/dev/null | (! grep .)
done
# Every library that a file is linked with.
mapfile -t owners < <(objdump -p "$usr"/lib/*/orvane/* | awk '$1 == "NEEDED" { print "*/x86_64-linux-gnu/" $2 }' |
    grep -v libSketchUpAPI.so | sort -u | xargs dpkg -S | cut -d: -f1 | sort -u)
[ ${#owners[@]} -gt 8 ] || fail "the packages of the libraries cannot be found"
check_notices "$usr/share/doc/orvane/NOTICES" nlohmann-json3-dev libstb-dev libtinygltf-dev "${owners[@]}"
grep -q 'three.js authors' "$usr/share/doc/orvane/NOTICES" || fail "NOTICES lacks three"
# What bash offers for "--j".
offered=$(PATH=$usr/bin:$PATH bash -c '. "$0"; COMP_WORDS=(scene-inspect --j) COMP_CWORD=1; _scene_inspect
    echo "${COMPREPLY[*]}"' "$usr/share/bash-completion/completions/scene-inspect")
[ "$offered" = --json ] || fail "bash offers \"$offered\" for --j"

unzip -q "$dist"/orvane-*-windows-x64.zip
cd orvane-*-windows-x64
wine orvane.exe examples/house/house.json out/house.bin maps out/run.log
wine scene-inspect.exe out/house.bin
# The second column of the list is the package that decides the version.
mapfile -t owners < <(sed -nE 's/^    "[a-z-]+ +([a-z0-9-]+) +[0-9.]+"$/\1/p' "$sources/scripts/windows-libraries")
check_notices NOTICES.txt nlohmann-json3-dev libstb-dev libtinygltf-dev libz-mingw-w64-dev mingw-w64-x86-64-dev \
    g++-mingw-w64-x86-64-posix "${owners[@]}"
for file in orvane.exe scene-inspect.exe SketchUpAPI.dll; do
    x86_64-w64-mingw32-windres -O rc -i "$file" >"$file.rc"
    grep -q 'VALUE "FileDescription", ".' "$file.rc" || fail "$file has no description"
    [ "$file" = SketchUpAPI.dll ] || grep -q longPathAware "$file" || fail "$file has no manifest"
done
test -f README.md
test -f docs/scene-file.md

cmp out/house.bin "$folder/linux/house.bin"
echo "Both packages convert the example."
