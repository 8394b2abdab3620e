#!/usr/bin/env bats
# vorl vectors: the same files on every machine, and nothing is replaced by mistake.

load support

REFERENCE=$BATS_TEST_DIRNAME/../vectors/reference
files_in() {
    (cd "$1" && echo ./* | sed 's#\./##g')
}
FILES="agreement.json client_keys.json digests.json envelopes.json signatures.json texts.json"

@test "the files are those that another machine wrote" {
    succeeds vorl vectors -o made
    equals "$output" ""
    equals "$(files_in made)" "$FILES"
    equals "$(files_in "$REFERENCE")" "$FILES"
    for file in $FILES; do
        run diff "$REFERENCE/$file" "made/$file"
        equals "$output" ""
        equals "$(stat -c %a "made/$file")" 644
    done
}

@test "they are written into a folder that is there, beside what it holds" {
    mkdir made
    cp note made/
    succeeds vorl vectors -o made
    equals "$(files_in made)" "${FILES/envelopes.json/envelopes.json note}"
}

@test "a file that is there already stays, and none is written" {
    mkdir made
    echo mine >made/signatures.json
    refuses 2 "'made/signatures.json' is there already" \
        "name another folder, or replace the files in this one with --force" vorl vectors -o made
    equals "$(cat made/signatures.json)" mine
    equals "$(files_in made)" signatures.json
    ln -s nowhere made/texts.json
    rm made/signatures.json
    refuses 2 "'made/texts.json' is there already" \
        "name another folder, or replace the files in this one with --force" vorl vectors -o made
}

@test "--force replaces it" {
    mkdir made
    echo mine >made/signatures.json
    succeeds vorl vectors -o made --force
    run diff "$REFERENCE" made
    equals "$output" ""
}

@test "a folder that cannot be made is told" {
    refuses 5 "cannot make the folder 'nowhere/made': No such file or directory" "" vorl vectors -o nowhere/made
    refuses 5 "cannot make the folder 'note': File exists" "" vorl vectors -o note
    refuses 2 "--output is required" "'vorl vectors --help' shows the usage" vorl vectors
}

@test "the help says that nothing in the files is secret" {
    succeeds vorl vectors --help
    contains "$(tr -s ' \n' ' ' <<<"$output")" "the same on every machine, known to everybody, and for testing only"
}
