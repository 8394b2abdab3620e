#!/usr/bin/env bats
# How a key is given: -k, --key-fd, --key-format, and what is said about one that does not fit.

load support

ANOTHER_FORMAT="--key-format raw|hex|base64 says how to read it"

# opens OPTION...: whether these options name the key of the tests.
opens() {
    succeeds vorl unprotect "$@" envelope
    equals "$output" hello
}

envelope() {
    echo hello | full_envelope | base64_text >envelope
}

@test "a key file holds raw bytes, hex or Base64" {
    envelope
    octets "$KEY_HEX" >raw
    printf %s "$KEY_HEX" >hex
    printf %s "${KEY_HEX^^}" >HEX
    base64_text <raw >base64
    for file in raw hex HEX base64; do
        opens -k $file
    done
}

@test "one newline behind hex or Base64 is tolerated, LF or CRLF" {
    envelope
    octets "$KEY_HEX" | base64_text >base64
    for end in '\n' '\r\n'; do
        # shellcheck disable=SC2059
        printf "$KEY_HEX$end" >hex-line
        # shellcheck disable=SC2059
        { cat base64 && printf "$end"; } >base64-line
        opens -k hex-line
        opens -k base64-line
    done
}

@test "raw bytes are taken as they are, a newline included" {
    octets "${KEY_HEX:0:30}0a" >raw
    echo hello >message
    vorl protect -k raw --raw message -o envelope
    equals "$(part envelope 19 16 | openssl enc -d -aes-128-cbc -K "${KEY_HEX:0:30}0a" \
        -iv "$(hex <(part envelope 2 16))")" hello
    { octets "$KEY_HEX" && echo; } >line
    refuses 3 "'line': the key has 17 bytes, 16 are needed" "" vorl protect -k line message
}

@test "a key of a wrong size is refused with both sizes" {
    for size in 1 15 17 32; do
        local has="$size bytes"
        [ $size != 1 ] || has="1 byte"
        bytes_of $size >raw
        refuses 3 "'raw': the key has $has, 16 are needed" "" vorl protect -k raw key
        hex raw >hex
        refuses 3 "'hex': the key has $has, 16 are needed" "it was read as hex; $ANOTHER_FORMAT" \
            vorl protect -k hex key
    done
    bytes_of 15 | base64_text >base64
    refuses 3 "'base64': the key has 15 bytes, 16 are needed" "it was read as base64; $ANOTHER_FORMAT" \
        vorl protect -k base64 key
}

@test "an empty key file is refused with both sizes" {
    refuses 3 "'/dev/null': the key has 0 bytes, 16 are needed" "" vorl protect -k /dev/null key
    echo >line
    refuses 3 "'line': the key has 1 byte, 16 are needed" "" vorl protect -k line key
    refuses 3 "'line': the key has 1 byte, 16 are needed" "" vorl protect -k line --key-format raw key
}

@test "a file that could be read in two ways is never guessed at" {
    printf 0123456789abcdef >digits
    refuses 2 "'digits': the key can be read as hex (8 bytes) or as base64 (12 bytes) or as raw (16 bytes)" \
        "$ANOTHER_FORMAT" vorl protect -k digits key
    printf 'sixteen/letters+' >letters
    refuses 2 "'letters': the key can be read as base64 (12 bytes) or as raw (16 bytes)" "$ANOTHER_FORMAT" \
        vorl protect -k letters key
}

@test "a password and its newline are not taken for raw bytes unasked" {
    local hint="--key-format raw takes it as it is, with the newline"
    for text in password1234567 0123456789abcde ABCDEFGHIJKLMNO '~~~~~~~~~~~~~~ '; do
        printf '%s\n' "$text" >pw
        refuses 2 "'pw': the key can be read as raw (16 bytes), but looks like a text of 15 characters and a newline" \
            "$hint" vorl protect -k pw note
        succeeds vorl protect -k pw --key-format raw note
    done
    printf 'password123456\r\n' >pw
    refuses 2 "'pw': the key can be read as raw (16 bytes), but looks like a text of 14 characters and a newline" \
        "$hint" vorl protect -k pw note
    # One byte that no text has is enough, and so is an end other than a newline.
    for raw in 'password123456\x7f\n' 'password\x1f234567\n' 'passw\xc3\xb6rd123456\n' 'password1234567\r'; do
        # shellcheck disable=SC2059
        printf "$raw" >pw
        succeeds vorl protect -k pw note
    done
}

@test "--key-format settles it" {
    printf 0123456789abcdef >digits
    echo hello >message
    vorl protect -k digits --key-format raw --raw message -o envelope
    equals "$(part envelope 19 16 | openssl enc -d -aes-128-cbc -K "$(hex digits)" \
        -iv "$(hex <(part envelope 2 16))")" hello
    refuses 3 "'digits': the key has 8 bytes, 16 are needed" "it was read as hex; $ANOTHER_FORMAT" \
        vorl protect -k digits --key-format hex message
    refuses 3 "'digits': the key has 12 bytes, 16 are needed" "it was read as base64; $ANOTHER_FORMAT" \
        vorl protect -k digits --key-format base64 message
}

@test "a file that is not of the format that --key-format names is refused" {
    echo "not hex at all!!" >text
    refuses 3 "'text': the key is not hex" "$ANOTHER_FORMAT" vorl protect -k text --key-format hex key
    refuses 3 "'text': the key is not base64" "$ANOTHER_FORMAT" vorl protect -k text --key-format base64 key
    printf %s "${KEY_HEX:0:31}" >odd
    refuses 3 "'odd': the key is not hex" "$ANOTHER_FORMAT" vorl protect -k odd --key-format hex key
    refuses 2 "--key-format: binary not in {raw,hex,base64}" "'vorl protect --help' shows the usage" \
        vorl protect -k key --key-format binary key
}

@test "--key-fd reads a descriptor" {
    envelope
    with_descriptor() {
        vorl unprotect --key-fd 9 envelope 9<key
    }
    succeeds with_descriptor
    equals "$output" hello
}

@test "--key-fd 0 and -k - read standard input, where the message is a file" {
    envelope
    for option in --key-fd=0 --key=-; do
        run --separate-stderr vorl unprotect $option envelope <key
        equals "$status$stderr$output" 0hello
        refuses 2 "standard input cannot be both the key and the input" \
            "name a file for one of them, or pass the key with --key-fd" vorl unprotect $option <key
        refuses 2 "standard input cannot be both the key and the input" \
            "name a file for one of them, or pass the key with --key-fd" vorl unprotect $option - <key
    done
}

@test "the key and the input cannot be one stream, whatever their names" {
    local hint="name a file for one of them, or pass the key with --key-fd"
    local same="standard input cannot be both the key and the input"
    from_pipe() {
        cat key note | vorl "$@"
    }
    from_file() {
        vorl "$@" <key
    }
    from_copied_pipe() {
        cat key note | vorl "$@" 3<&0
    }
    for source in from_pipe from_file; do
        for options in "-k /dev/stdin" "-k /dev/fd/0 -" "-k - /dev/stdin" "--key-fd 0 /dev/fd/0" \
            "-k /proc/self/fd/0 /dev/stdin"; do
            # shellcheck disable=SC2086
            refuses 2 "$same" "$hint" $source protect $options
        done
    done
    for command in protect "unprotect --accept none"; do
        # shellcheck disable=SC2086
        refuses 2 "$same" "$hint" from_copied_pipe $command --key-fd 3
    done
}

@test "the key and the input cannot be one file, nor one pipe that is not standard input" {
    local hint="name a file for one of them, or pass the key with --key-fd"
    ln key link
    for input in key ./key link; do
        refuses 2 "'key' cannot be both the key and the input" "$hint" vorl protect -k key $input
    done
    with_descriptor() {
        cat key note | vorl protect --key-fd 9 /dev/fd/9 9<&0 </dev/null
    }
    refuses 2 "descriptor 9 cannot be both the key and the input" "$hint" with_descriptor
}

@test "a key and an input with the same content are two files" {
    cp key twin
    succeeds vorl protect -k key twin
    from_pipes() {
        cat note | vorl protect --key-fd 9 - 9< <(cat key)
    }
    succeeds from_pipes
}

@test "a descriptor that is not open is told" {
    closed() {
        vorl protect --key-fd 9 key 9>&-
    }
    refuses 3 "cannot read the key from descriptor 9: it is not open" "" closed
}

@test "a number that no descriptor has is wrong usage" {
    for number in -1 x 99999999999 2147483648 0x3 3.0 3x +3 "" " 3"; do
        refuses 2 "--key-fd: '$number' is not the number of a descriptor" "'vorl protect --help' shows the usage" \
            vorl protect --key-fd "$number" note
    done
}

@test "the number of a descriptor is decimal, whatever it begins with" {
    envelope
    with_descriptor() {
        vorl unprotect --key-fd 010 envelope 8<note 10<key
    }
    succeeds with_descriptor
    equals "$output" hello
}

@test "the key is named once" {
    refuses 2 "--key excludes --key-fd" "'vorl protect --help' shows the usage" vorl protect -k key --key-fd 9 key
}

@test "a key file that cannot be read is told" {
    refuses 3 "cannot read the key from 'missing': No such file or directory" "" vorl protect -k missing key
    refuses 3 "cannot read the key from '.': it is a directory" "" vorl protect -k . key
    refuses 3 "cannot read the key from '': No such file or directory" "" vorl protect -k "" key
}

@test "a key file that has no end is not read to it" {
    refuses 3 "cannot read the key from '/dev/zero': it has more than 65536 bytes" "" vorl protect -k /dev/zero key
}

@test "a key file that may not be read is told" {
    needs_unprivileged
    chmod 000 key
    refuses 3 "cannot read the key from 'key': Permission denied" "" unprivileged "$VORL" protect -k key /dev/null
}

@test "a key shows up in no message" {
    for hex in "$KEY_HEX" "${KEY_HEX}aa"; do
        echo "$hex" >named
        run vorl protect -k named --key-format base64 key
        [[ "$output" != *"$hex"* ]]
    done
}

@test "the file of the key is not replaced by the message or the envelope" {
    cp key before
    refuses 2 "the key and the output are one file: 'key'" "name another file with -o: the key would be lost" \
        vorl protect -k key note -o key
    vorl protect -k key note -o envelope
    refuses 2 "the key and the output are one file: './key'" "name another file with -o: the key would be lost" \
        vorl unprotect -k key envelope -o ./key
    cmp key before
}
