#!/usr/bin/env bash
# Runs the recipe for one machine in docs/many-models.md on a folder of good and bad models.
# Usage: many-models.sh PROGRAMS REPOSITORY. Exit code 77: skipped.
set -euo pipefail
programs=$(realpath "$1")
repository=$(realpath "$2")

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

if ! command -v parallel >/dev/null; then
    echo "SKIPPED: GNU parallel isn't installed"
    exit 77
fi

export PATH=$programs:$PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export HOME=$work

awk '/^## /{ there = $0 == "## One machine" } /^```$/ { inside = 0 } inside { print }
    there && /^```sh$/ && !done { inside = done = 1 }' "$repository/docs/many-models.md" >recipe.sh
grep -q '^parallel' recipe.sh || fail "no recipe found"

mkdir -p "models/new houses"
cp "$repository"/examples/house/* models
cp "$repository"/examples/house/* "models/new houses"
echo '{ "orvaneModel": 1 }' >models/empty.json
echo '{ "orvaneModel": 1, ' >"models/new houses/it's broken.json"
cp models/house.json models/no-pictures-here.json
sed -i 's/brick\.png/missing.png/' models/no-pictures-here.json

# The last exit code of a model.
code_of() {
    awk -F '\t' -v name="$1" 'index($2, name) { print $1 }' outcome.tsv
}

bash recipe.sh >counts.txt || fail "the recipe ended with $?"
[ "$(wc -l <outcome.tsv)" = 5 ] || fail "not five outcomes: $(cat outcome.tsv)"
[ "$(code_of models/house.json)" = 0 ] || fail "house: $(cat outcome.tsv errors.txt)"
[ "$(code_of 'new houses/house.json')" = 0 ] || fail "new house: $(cat outcome.tsv)"
[ "$(code_of models/empty.json)" = 13 ] || fail "empty: $(cat outcome.tsv)"
[ "$(code_of broken.json)" = 10 ] || fail "broken: $(cat outcome.tsv)"
[ "$(code_of no-pictures-here.json)" = 10 ] || fail "no pictures: $(cat outcome.tsv)"
[ "$(tr -s ' \n' ' ' <counts.txt)" = " 2 0 2 10 1 13 " ] || fail "counts: $(cat counts.txt)"
grep -q 'missing.png' errors.txt || fail "the library's reason isn't in errors.txt"
cmp scenes/house.bin "scenes/new houses/house.bin" || fail "the two houses differ"
[ -s "logs/new houses/it's broken.log" ] || fail "no log of the broken model"
scene-inspect "scenes/new houses/house.bin" >/dev/null || fail "the scene file isn't sound"

# A second run converts failed models only, and the repaired one succeeds.
touch -d 2001-01-01 scenes/house.bin
cp models/house.json models/empty.json
bash recipe.sh >counts.txt || fail "the recipe ended with $? at the second time"
[ "$(stat -c %Y scenes/house.bin)" = "$(date -d 2001-01-01 +%s)" ] || fail "a finished model was converted again"
[ "$(tr -s ' \n' ' ' <counts.txt)" = " 3 0 2 10 " ] || fail "counts at the second time: $(cat counts.txt)"
[ "$(grep -c '^[0-9]' jobs.tsv)" = 8 ] || fail "not five and three jobs: $(cat jobs.tsv)"

# The page's check of all scene files, one of them truncated.
truncate -s -1 scenes/empty.bin
check=$(grep '^find scenes' "$repository/docs/many-models.md")
! bash -c "$check" >checked.txt 2>&1 || fail "a faulty file isn't found"
[ "$(cut -d ' ' -f 1-3 checked.txt)" = "scenes/empty.bin: at byte" ] || fail "the check says: $(cat checked.txt)"
echo "The recipe works."
