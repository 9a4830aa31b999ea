# For the tests of docs/many-models.md to source: the recipes as they stand on the page, and a small collection of
# models on which they can go wrong. Needs the folders $programs and $repository.

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# Writes the scripts of the page into the working folder: every block whose second line names its file.
save_scripts() {
    awk '/^```/ { inside = !inside; line = 0; file = ""; next }
        inside && ++line == 1 { first = $0 }
        inside && line == 2 && first ~ /^#!/ { file = $2; sub(":$", "", file); print first >file }
        file { print >file }' "$repository/docs/many-models.md"
}

# Prints the NUMBERth (1) block of commands below a heading that begins with the words: recipe HEADING [NUMBER].
recipe() {
    awk -v heading="## $1" -v number="${2:-1}" '
        /^## / { below = index($0, heading) == 1 }
        /^```/ { inside = !inside; line = 0; next }
        inside && ++line == 1 { script = /^#!/; block += below && !script }
        inside && below && !script && block == number { print; found = 1 }
        END { exit !found }' "$repository/docs/many-models.md" || fail "no recipe $*"
}

hostile=$'-rf \'a" $(touch expanded) {} {#};\t* ü & house.json'

# Makes the folder models anew, removes what recipes made of it except their scripts, and puts an orvane before all
# others that adds each model to converted.txt and is killed by one of them.
make_collection() {
    rm -rf models scenes logs slices tasks models.txt* outcome.tsv converted.txt
    mkdir -p bin "models/new houses" models/.hidden
    cat >bin/orvane <<END
#!/bin/bash
echo "\${1#models/}" >>"$PWD/converted.txt"
if [ "\$1" = models/killing.json ]; then
    kill -KILL \$\$
fi
exec "$programs/orvane" "\$@"
END
    chmod +x bin/orvane
    export PATH=$PWD/bin:$programs:$PATH

    cp "$repository"/examples/house/* models
    cp "$repository"/examples/house/* "models/new houses"
    cp models/house.json "models/$hostile"
    # Names that differ in the extension alone, for models of different extents.
    printf 'v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n' >models/house.obj
    printf 'OFF\n3 1 0\n0 0 0\n2 0 0\n0 2 0\n3 0 1 2\n' >models/house.OFF
    echo '{ "orvaneModel": 1 }' >models/empty.json
    echo '{ "orvaneModel": 1, ' >"models/new houses/it's broken.json"
    sed 's/brick\.png/missing.png/' models/house.json >models/no-pictures-here.json
    cp models/house.json models/killing.json
    cp models/house.json models/._house.json
    cp models/house.json models/.hidden

    {
        printf '0\t%s\n' "$hostile" house.OFF house.json house.obj 'new houses/house.json'
        printf '13\tempty.json\n137\tkilling.json\n'
        printf "10\t%s\n" no-pictures-here.json "new houses/it's broken.json"
    } >expected.tsv
}

# Mends one of the failed models, for a check_retry afterwards.
mend_a_model() {
    grep -v $'^0\t' expected.tsv | cut -f 2- >failed.txt
    cp models/house.json models/empty.json
    sed -i 's/^13\t/0\t/' expected.tsv
    rm converted.txt
}

# The table has the right outcomes, and all successes have a sound scene file and a log of their own.
check_outcomes() {
    local model
    diff <(sort expected.tsv) <(sort outcome.tsv) >&2 || fail "$1: these outcomes differ"
    while IFS= read -r model; do
        scene-inspect "scenes/$model.bin" >summary.txt 2>&1 || fail "$1: $model: $(cat summary.txt)"
        iconv -f UTF-16 -t UTF-8 "logs/$model.log" | grep -q '^Success' || fail "$1: the log of $model"
    done < <(sed -n 's/^0\t//p' expected.tsv)
    [ ! -e expanded ] || fail "$1: a name was taken for a command"
    if cmp -s scenes/house.obj.bin scenes/house.OFF.bin; then
        fail "$1: models that differ in the extension alone share a scene file"
    fi
}

# Exactly the failed models were converted again, and the one that was mended succeeds.
check_retry() {
    diff <(sort failed.txt) <(sort converted.txt) >&2 || fail "$1: not the failed models alone were tried again"
    check_outcomes "$1, tried again"
}
