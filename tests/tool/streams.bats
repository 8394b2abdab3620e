#!/usr/bin/env bats
# Standard input and output: named by '-', closed, full, or gone.

load support

@test "standard input and output are the default, and what '-' means" {
    echo hello | vorl protect --level none >default
    echo hello | vorl protect --level none -o - - >named
    equals "$(cat default)" "AAZoZWxsbwo="
    cmp default named
    succeeds vorl unprotect --accept none -o - - <named
    equals "$output" hello
    succeeds vorl inspect - <named
    succeeds vorl inspect <named
}

@test "'./-' is a file" {
    echo hello >-
    succeeds vorl protect --level none ./-
    equals "$output" "AAZoZWxsbwo="
}

@test "a pipe is read to its end" {
    bytes_of 300000 >message
    head -c 300000 message | vorl protect -k key --raw >envelope
    { head -c 100000 envelope && tail -c +100001 envelope; } | vorl unprotect -k key --raw >opened
    cmp opened message
}

@test "a closed standard input is told" {
    for command in "protect -k key" "unprotect -k key" inspect; do
        # shellcheck disable=SC2086
        closed() {
            vorl $command <&-
        }
        refuses 3 "cannot read standard input: it is not open" "" closed
    done
}

@test "a closed standard input does not become the output file" {
    closed() {
        vorl protect --level none key -o out <&-
    }
    succeeds closed
    succeeds vorl unprotect --accept none out
    equals "$output" "$KEY_HEX"
}

@test "a closed standard output is told" {
    vorl protect -k key note >text
    for command in "protect -k key note" "unprotect -k key text" "inspect text" doctor --help --version; do
        # shellcheck disable=SC2086
        closed() {
            vorl $command >&-
        }
        refuses 5 "cannot write standard output: it is not open" "" closed
    done
}

@test "a closed standard output does not become the output file" {
    closed() {
        vorl protect --level none key -o out >&-
    }
    succeeds closed
    succeeds vorl unprotect --accept none out
    equals "$output" "$KEY_HEX"
}

@test "standard output under another name is written to, not replaced" {
    ln -s /proc/self/fd/1 stdout
    echo first >log
    vorl protect --level none key -o stdout >>log
    equals "$(head -n 1 log)" first
    equals "$(tail -n 1 log)" "$(vorl protect --level none key)"
}

@test "a closed standard output is told under its other name too" {
    ln -s /proc/self/fd/1 stdout
    closed() {
        vorl protect --level none key -o stdout >&-
    }
    refuses 5 "cannot write 'stdout': it is a link to something that is not there" "" closed
    [ -L stdout ]
}

@test "no closed stream gets what is meant for a file, or for another stream" {
    closed() {
        vorl unprotect -k key --raw broken -o out <&- >&- 2>&-
    }
    octets 0210 >broken
    run closed
    equals "$status" 3
    [ ! -e out ]
    equals "$(hex broken)" 0210
    equals "$(cat key)" "$KEY_HEX"
}

@test "with a closed standard error the status still tells" {
    closed() {
        vorl inspect missing 2>&-
    }
    run --separate-stderr closed
    equals "$status$output" 3
}

@test "a full standard output is told" {
    vorl protect -k key note >text
    for command in "protect -k key note" "unprotect -k key text" "inspect text" "inspect --json text" doctor \
        --help --version "protect --help"; do
        # shellcheck disable=SC2086
        full() {
            vorl $command >/dev/full
        }
        refuses 5 "cannot write standard output: No space left on device" "" full
    done
}

@test "a reader that has gone away is told, and is not the end by a signal" {
    {
        until [ -e gone ]; do :; done
        "$VORL" protect -k key note 2>told && echo 0 >ended || echo $? >ended
    } | {
        exec <&-
        touch gone
    }
    equals "$(cat ended)" 5
    equals "$(cat told)" "vorl: error: cannot write standard output: Broken pipe"
}

@test "an input that cannot be read is told" {
    for command in "protect -k key" "unprotect -k key" inspect; do
        # shellcheck disable=SC2086
        {
            refuses 3 "cannot read 'missing': No such file or directory" "" vorl $command missing
            refuses 3 "cannot read 'key/in': Not a directory" "" vorl $command key/in
            refuses 3 "cannot read '.': it is a directory" "" vorl $command .
            refuses 3 "cannot read '': No such file or directory" "" vorl $command ""
        }
    done
}

@test "an input that may not be read is told" {
    needs_unprivileged
    touch secret
    chmod 000 secret
    refuses 3 "cannot read 'secret': Permission denied" "" unprivileged "$VORL" inspect secret
}

@test "a directory as standard input is told" {
    refuses 3 "cannot read standard input: it is a directory" "" vorl inspect <.
}

@test "an input of more bytes than the formats can hold is refused at once" {
    truncate -s 5T absurd
    for command in "protect -k key" "unprotect -k key" inspect; do
        # shellcheck disable=SC2086
        refuses 3 "cannot read 'absurd': it is larger than 4294967295 bytes, which is more than the formats can hold" \
            "" vorl $command absurd
    done
}

# with_memory KIB COMMAND...
with_memory() {
    (
        ulimit -v "$1"
        shift
        exec "$VORL" "$@"
    )
}

@test "an input that does not fit in memory is refused" {
    [ "$VORL_SANITIZED" = 0 ] || skip "a sanitizer needs more address space than the limit leaves"
    # The last is the largest that the formats can hold, and one byte more has no place in 32 bits.
    for size in 3G 4294967295; do
        truncate -s $size large
        for command in "protect -k key" "unprotect -k key" inspect; do
            # shellcheck disable=SC2086
            refuses 3 "cannot read 'large': it does not fit in memory" "" with_memory 400000 $command large
        done
    done
    truncate -s 200M fits
    refuses 3 "the input, and what becomes of it, does not fit in memory" "" \
        with_memory 400000 protect -k key fits -o out
    [ ! -e out ]
    equals "$(left_behind . key large fits)" ""
}
