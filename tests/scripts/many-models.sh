#!/usr/bin/env bash
# Runs the recipe for one machine in docs/many-models.md, as it stands there, on a folder of good and bad models.
# Usage: many-models.sh PROGRAMS REPOSITORY. Exit code 77: skipped.
set -euo pipefail
programs=$(realpath "$1")
repository=$(realpath "$2")
source "$repository/tests/scripts/recipes.sh"

if ! command -v parallel >/dev/null; then
    echo "SKIPPED: GNU parallel isn't installed"
    exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export HOME=$work
save_scripts
make_collection
recipe "The list" >list.sh
recipe "One machine" >convert-and-count.sh

bash list.sh
[ "$(bash outcome.sh models.txt | cut -f 1 | sort -u)" = - ] || fail "a model has an outcome before the first run"
bash convert-and-count.sh >counts.txt || fail "the recipe ended with $?"
check_outcomes "one machine"
[ "$(tr -s ' \n' ' ' <counts.txt)" = " 5 0 2 10 1 13 1 137 " ] || fail "counts: $(cat counts.txt)"
grep -q $'^no-pictures-here.json\t.*missing.png' models.txt.errors || fail "reasons: $(cat models.txt.errors)"
cmp scenes/house.json.bin "scenes/new houses/house.json.bin" || fail "the two houses differ"
[ -s "logs/new houses/it's broken.json.log" ] || fail "no log of the broken model"

mend_a_model
! bash convert.sh models.txt || fail "convert.sh ends with 0 though models fail"
bash outcome.sh models.txt >outcome.tsv
check_retry "one machine"

# A model that comes later, and a list beside the first one.
cp models/house.json models/later.json
bash list.sh
[ "$(tail -n 1 models.txt), line $(wc -l <models.txt)" = "later.json, line 10" ] || fail "the list: $(cat models.txt)"
echo house.obj >other.txt
bash convert.sh models.txt --resume || true
bash convert.sh other.txt || fail "convert.sh ends with $? though the model converts"
[ "$(bash outcome.sh models.txt other.txt | tail -n 2)" = $'0\tlater.json\n0\thouse.obj' ] || fail "outcomes of two lists"

# The page's check of all scene files, one of them truncated.
truncate -s -1 scenes/empty.json.bin
! recipe "One machine" 2 | bash >checked.txt 2>&1 || fail "a faulty file isn't found"
[ "$(cut -d ' ' -f 1-3 checked.txt)" = "scenes/empty.json.bin: at byte" ] || fail "the check says: $(cat checked.txt)"
echo "The recipe works."
