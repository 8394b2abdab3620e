#!/usr/bin/env bats
# What a terminal gets to see: no binary data unasked, and colour only where it is wanted.

load support

INSIST="name a file with -o FILE, or insist with '-o -'"
ESCAPE=$'\e'

setup_file() {
    script -q -e -c true /dev/null </dev/null >/dev/null || skip "no pseudo-terminal can be had here"
}

@test "a raw envelope is not written to a terminal" {
    in_terminal "'$VORL' protect -k key --raw note 2>told"
    equals "$status$output" 2
    equals "$(cat told)" "vorl: error: binary data is not written to a terminal
vorl: hint: $INSIST"
}

@test "a terminal under another name is a terminal" {
    octets 0001ff >envelope
    ln -s /dev/tty link
    for path in /dev/stdout /dev/tty /dev/fd/1 link; do
        for command in "protect -k key --raw note" "unprotect --accept none --raw envelope"; do
            in_terminal "'$VORL' $command -o $path 2>told"
            equals "$path $status$output" "$path 2"
            equals "$(cat told)" "vorl: error: binary data is not written to a terminal
vorl: hint: $INSIST"
        done
        in_terminal "'$VORL' protect --level none note -o $path"
        equals "$path $status$output" "$path 0$(vorl protect --level none note)"
    done
}

@test "a message that is not plain text is not written to a terminal" {
    for message in 00 1b5b33316d 7f ff c1a1 e081a1 c285 eda080 f4908080 e282 80; do
        octets "00$(printf %02x $((${#message} / 2)))$message" >envelope
        in_terminal "'$VORL' unprotect --accept none --raw envelope 2>told"
        equals "$message $status$output" "$message 2"
        contains "$(cat told)" "vorl: error: binary data is not written to a terminal"
    done
}

@test "neither is a signed HTTP message with such a body" {
    [ "$VORL_SIGNS_HTTP" = 1 ] || skip "built without the signer"
    printf 'PUT / HTTP/1.1\nHost: a\nContent-Type: b\n\n\xff' >request
    local sign="'$VORL' http sign -k key --key-format hex --keyid device"
    in_terminal "$sign request 2>told"
    equals "$status$output" 2
    equals "$(cat told)" "vorl: error: binary data is not written to a terminal
vorl: hint: $INSIST"
    in_terminal "$sign request -o signed"
    equals "$status$output" 0
    equals "$(tail -c 1 signed | hex)" ff
}

@test "a message of plain text is" {
    for message in "hello" $'two\n\tlines' "Grüße" "€" "𝄞"; do
        printf %s "$message" >plain
        vorl protect --level none --raw plain -o envelope
        in_terminal "'$VORL' unprotect --accept none --raw envelope 2>told"
        equals "$status$output" "0$message"
    done
}

@test "'-o -' insists" {
    octets 0001ff >envelope
    in_terminal "'$VORL' unprotect --accept none --raw -o - envelope 2>told"
    equals "$status" 0
    equals "$(printf %s "$output" | hex)" ff
    in_terminal "'$VORL' protect -k key --raw -o - note >/dev/null"
    equals "$status" 0
}

@test "Base64 text is written to a terminal" {
    in_terminal "'$VORL' protect --level none key"
    equals "$status" 0
    equals "$output" "$(vorl protect --level none key)"
}

@test "a terminal is not in the way of a file" {
    in_terminal "'$VORL' protect -k key --raw note -o out"
    equals "$status$output" 0
    [ -s out ]
}

@test "a terminal gets colour" {
    octets 0100 >malformed
    export TERM=xterm
    unset NO_COLOR
    in_terminal "'$VORL' doctor"
    contains "$output" "${ESCAPE}[32mok   ${ESCAPE}[0m  openssl: "
    in_terminal "'$VORL' inspect malformed 2>/dev/null"
    contains "$output" "${ESCAPE}[1moffset  length  field"
    contains "$output" "${ESCAPE}[1;31mmalformed${ESCAPE}[0m at 1: "
}

@test "there is no colour where NO_COLOR is set, the terminal is dumb, or it is none" {
    octets 000161 >envelope
    for environment in "TERM=xterm NO_COLOR=1" "TERM=dumb" "-u TERM"; do
        for command in doctor "inspect envelope"; do
            in_terminal "env $environment '$VORL' $command"
            equals "$status" 0
            [[ "$output" != *"$ESCAPE"* ]]
        done
    done
    TERM=xterm succeeds vorl doctor
    [[ "$output" != *"$ESCAPE"* ]]
}

@test "an empty NO_COLOR refuses nothing" {
    in_terminal "env TERM=xterm NO_COLOR= '$VORL' doctor"
    contains "$output" "${ESCAPE}[32m"
}
