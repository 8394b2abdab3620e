#!/usr/bin/env bats
# What all commands have in common: help, version, and wrong usage.

load support

COMMANDS=(protect unprotect inspect explain digest hmac "dh params new" "dh params show" "dh params check" "dh new" "dh pub"
    "dh secret" "keys derive" sign verify "http base" "http sign" "http verify" "cert show" "cert check" vectors
    "platform check" doctor)

@test "without a command, the usage is wrong" {
    refuses 2 "a command is needed" "'vorl --help' lists the commands" vorl
}

@test "an unknown command is refused by its name" {
    local hint="'vorl --help' lists the commands"
    refuses 2 "there is no command 'frobnicate'" "$hint" vorl frobnicate
    refuses 2 "there is no command 'prot'" "$hint" vorl prot -k key note
    refuses 2 "there is no command 'Protect'" "$hint" vorl Protect
    refuses 2 "there is no command ''" "$hint" vorl ""
    for option in --help -h --version; do
        refuses 2 "there is no command 'bogus'" "$hint" vorl bogus $option
    done
}

@test "no command of a group is refused by all of its words, and the hint names the group" {
    refuses 2 "a command is needed" "'vorl dh --help' lists the commands" vorl dh
    refuses 2 "a command is needed" "'vorl dh params --help' lists the commands" vorl dh params
    refuses 2 "there is no command 'dh frobnicate'" "'vorl dh --help' lists the commands" vorl dh frobnicate
    refuses 2 "there is no command 'dh params new2'" "'vorl dh params --help' lists the commands" \
        vorl dh params new2 --help
}

@test "--help of a group lists its commands" {
    succeeds vorl dh --help
    contains "$output" "Usage: vorl dh "
    contains "$output" $'\n'"  params "
}

@test "--help lists the commands and exit statuses on standard output" {
    succeeds vorl --help
    for command in "${COMMANDS[@]}"; do
        contains "$output" $'\n'"  ${command%% *} "
    done
    contains "$output" "Exit status: 0 success, 1 a clear no, 2 wrong usage"
}

@test "each command has its own --help" {
    for command in "${COMMANDS[@]}"; do
        # shellcheck disable=SC2086
        succeeds vorl $command --help
        contains "$output" "Usage: vorl $command "
        # shellcheck disable=SC2086
        succeeds vorl $command -h
    done
}

@test "--version names vorl and the OpenSSL that runs, for each command too" {
    for command in "" "${COMMANDS[@]}"; do
        # shellcheck disable=SC2086
        succeeds vorl $command --version
        equals "${lines[0]}" "vorl $VORL_VERSION"
        contains "${lines[1]}" "OpenSSL "
        equals "${#lines[@]}" 2
    done
}

@test "an unknown option is refused, and the hint names the command" {
    for command in protect unprotect inspect explain hmac "dh params new" "keys derive" sign "http base" "http sign" doctor; do
        # shellcheck disable=SC2086
        refuses 2 "The following argument was not expected: --frobnicate" "'vorl $command --help' shows the usage" \
            vorl $command --frobnicate
    done
}

@test "a second input is refused" {
    refuses 2 "The following argument was not expected: b" "'vorl inspect --help' shows the usage" vorl inspect a b
}

@test "an option without its value is refused" {
    refuses 2 "--output: 1 required FILE missing" "'vorl protect --help' shows the usage" vorl protect -k key -o
}

@test "a file may have the name of a command" {
    printf hello >inspect
    succeeds vorl protect --level none inspect
    equals "$output" "AAVoZWxsbw=="
}

@test "a file whose name begins with a dash stands behind --" {
    printf hello >-x
    succeeds vorl protect --level none -- -x
    equals "$output" "AAVoZWxsbw=="
}

@test "control characters of a file name do not reach the terminal" {
    refuses 3 "cannot read 'a?b?[31m': No such file or directory" "" vorl inspect $'a\nb\e[31m'
}

@test "the control characters above DEL do not either, as bytes or as UTF-8" {
    local missing="No such file or directory"
    refuses 3 "cannot read 'a?31mb': $missing" "" vorl inspect $'a\xc2\x9b31mb'
    refuses 3 "cannot read 'a?31mb': $missing" "" vorl inspect $'a\x9b31mb'
    refuses 3 "cannot read '????': $missing" "" vorl inspect $'\xc2\x80\xc2\x9f\x80\x9f'
    # An overlong form is no UTF-8.
    refuses 3 "cannot read '"$'\xe0'"??': $missing" "" vorl inspect $'\xe0\x82\x9b'
}

@test "other characters of a file name do, whatever bytes they are made of" {
    for name in "Grüße" "Ü" "€" "𝄞" $'\xc2\xa0' $'Gr\xfc\xdfe'; do
        refuses 3 "cannot read '$name': No such file or directory" "" vorl inspect "$name"
    done
}
