# What the tests of the tool share. A test works in a folder of its own, which holds the files "key" and "note".
# shellcheck disable=SC2034

bats_require_minimum_version 1.5.0

# FIPS-197 and SP 800-38A use this key for their examples.
KEY_HEX=2b7e151628aed2a6abf7158809cf4f3c
IV_HEX=000102030405060708090a0b0c0d0e0f
WRONG_KEY_HEX=00000000000000000000000000000000

# Of the sizes that a test goes through one by one, an emulator is given every so many.
STRIDE=${VORL_STRIDE:-1}

CANNOT_OPEN='the message cannot be opened: wrong key or damaged data'

setup() {
    # bats has files of its own in the folder above.
    mkdir "$BATS_TEST_TMPDIR/work" && cd "$BATS_TEST_TMPDIR/work" || return 1
    echo "$KEY_HEX" >key
    echo hello >note
    umask 022
}

vorl() {
    "$VORL" "$@"
}

# octets HEX: these bytes on standard output.
octets() {
    local escaped
    # shellcheck disable=SC2001
    escaped=$(sed 's/../\\x&/g' <<<"$1")
    # shellcheck disable=SC2059
    printf "$escaped"
}

# hex [FILE]: its bytes as hex digits.
hex() {
    od -An -v -tx1 "$@" | tr -d ' \n'
}

# part FILE OFFSET SIZE: some bytes of a file.
part() {
    tail -c +$(($2 + 1)) "$1" | head -c "$3"
}

# bytes_of SIZE: a message of that size, of varying bytes.
bytes_of() {
    openssl enc -aes-128-ctr -K "$KEY_HEX" -iv "$IV_HEX" -in /dev/zero 2>/dev/null | head -c "$1"
}

# full_envelope, test_envelope: standard input protected by OpenSSL's own command, for bodies below 128 bytes.
full_envelope() {
    openssl enc -aes-128-cbc -K "$KEY_HEX" -iv "$IV_HEX" >.body
    octets "0210$IV_HEX$(printf %02x "$(stat -c %s .body)")"
    cat .body
}
test_envelope() {
    openssl enc -aes-128-ecb -K "$KEY_HEX" >.body
    octets "01$(printf %02x "$(stat -c %s .body)")"
    cat .body
}

base64_text() {
    openssl base64 -A
}

equals() {
    if [ "$1" != "$2" ]; then
        printf -- '--- is:\n%s\n--- should be:\n%s\n' "$1" "$2" >&2
        return 1
    fi
}

contains() {
    if [[ "$1" != *"$2"* ]]; then
        printf -- '--- is:\n%s\n--- should contain:\n%s\n' "$1" "$2" >&2
        return 1
    fi
}

# succeeds COMMAND...: with status 0 and nothing on standard error.
succeeds() {
    run --separate-stderr "$@"
    # shellcheck disable=SC2154
    equals "$status" 0 && equals "$stderr" ""
}

# refuses STATUS ERROR HINT COMMAND...: with nothing on standard output. No hint is expected where HINT is empty.
refuses() {
    local wanted=$1 error=$2 hint=$3
    shift 3
    run --separate-stderr "$@"
    equals "$status" "$wanted"
    equals "$stderr" "vorl: error: $error${hint:+$'\n'vorl: hint: $hint}"
    equals "$output" ""
}

# left_behind: what a folder holds besides the note and what is named, in one line.
left_behind() {
    local folder=$1
    shift
    (cd "$folder" && find . -mindepth 1 -maxdepth 1 | sed 's#^\./##' | grep -v -x -F "$(printf '%s\n' note "$@")" |
        tr '\n' ' ')
}

# unprivileged COMMAND...: as a user whom permissions bind.
unprivileged() {
    if [ "$(id -u)" -eq 0 ]; then
        setpriv --reuid 65534 --regid 65534 --clear-groups -- "$@"
    else
        "$@"
    fi
}

# Lets the unprivileged user in, or skips the test where it cannot run the tool at all.
needs_unprivileged() {
    chmod a+rx "$BATS_RUN_TMPDIR" "$(dirname "$BATS_TEST_TMPDIR")" "$BATS_TEST_TMPDIR" .
    unprivileged "$VORL" --version >/dev/null 2>&1 ||
        skip "runs as root, and another user cannot be had or cannot reach $VORL"
}

# in_terminal SCRIPT: runs it with a terminal for its standard streams; what it shows is in $output.
in_terminal() {
    run script -q -e -c "$1" /dev/null </dev/null
    output=${output//$'\r'/}
}
