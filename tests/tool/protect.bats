#!/usr/bin/env bats
# vorl protect: what it writes, checked with OpenSSL's own commands, and what it refuses to write.

load support

@test "the level full is AES-128-CBC behind a version and an IV" {
    bytes_of 100 >message
    succeeds vorl protect -k key --raw message -o envelope
    equals "$output" ""
    equals "$(stat -c %s envelope)" $((1 + 1 + 16 + 1 + 112))
    equals "$(hex <(part envelope 0 2))" 0210
    equals "$(hex <(part envelope 18 1))" 70
    part envelope 19 112 | openssl enc -d -aes-128-cbc -K "$KEY_HEX" -iv "$(hex <(part envelope 2 16))" >opened
    cmp opened message
}

@test "the level test is AES-128-ECB behind a version" {
    bytes_of 16 >message
    succeeds vorl protect -k key --level test --raw message -o envelope
    equals "$(hex <(part envelope 0 2))" 0120
    part envelope 2 32 | openssl enc -d -aes-128-ecb -K "$KEY_HEX" >opened
    cmp opened message
}

@test "the level none is the message behind a version, without a key" {
    printf abc >message
    succeeds vorl protect --level none --raw message -o envelope
    equals "$(hex envelope)" 0003616263
}

@test "a message of several fragments is AES-128-CBC when they are joined" {
    bytes_of 40000 >message
    succeeds vorl protect -k key --raw message -o envelope
    equals "$(hex <(part envelope 18 1))" c2
    equals "$(hex <(part envelope $((19 + 32768)) 2))" 9c50
    { part envelope 19 32768 && part envelope $((19 + 32768 + 2)) 7248; } |
        openssl enc -d -aes-128-cbc -K "$KEY_HEX" -iv "$(hex <(part envelope 2 16))" >opened
    cmp opened message
}

@test "without --raw it is one line of Base64" {
    bytes_of 1000 >message
    succeeds vorl protect -k key --level test message -o text
    succeeds vorl protect -k key --level test --raw message -o envelope
    { base64_text <envelope && echo; } >expected
    cmp text expected
}

@test "the same message never looks the same at the level full" {
    echo hello >message
    vorl protect -k key message >first
    vorl protect -k key message >second
    run ! cmp -s first second
}

@test "an empty message is protected at full and test" {
    for level in full test; do
        : | vorl protect -k key --level $level --raw -o envelope
        succeeds vorl unprotect -k key --accept $level --raw envelope -o opened
        equals "$(stat -c %s opened)" 0
    done
}

@test "an empty message is refused at none, where it could not be opened again" {
    refuses 3 "an empty message cannot be opened again in this format; add at least 1 byte" \
        "the levels full and test take an empty message" vorl protect --level none /dev/null
}

# refuses_size LEVEL BYTES ADVICE
refuses_size() {
    head -c "$2" /dev/zero >message
    refuses 3 "a message of $2 bytes cannot be opened again in this format; $3" "" \
        vorl protect -k key --level "$1" message -o out
    [ ! -e out ]
}

# comes_back LEVEL BYTES
comes_back() {
    head -c "$2" /dev/zero >message
    succeeds vorl protect -k key --level "$1" message -o out
    succeeds vorl unprotect -k key --accept "$1" out -o opened
    cmp opened message
    rm out
}

@test "messages whose body would not be closed are refused at full and test, with what helps" {
    for level in full test; do
        refuses_size $level 16368 "add 16 bytes or remove 1 byte"
        refuses_size $level 16375 "add 9 bytes or remove 8 bytes"
        refuses_size $level 16383 "add 1 byte or remove 16 bytes"
        refuses_size $level 32752 "add 16 bytes or remove 1 byte"
        refuses_size $level 131071 "add 1 byte or remove 16 bytes"
    done
}

@test "the advice helps at full and test, and one byte less of it does not" {
    for level in full test; do
        comes_back $level $((16368 + 16))
        refuses_size $level $((16368 + 15)) "add 1 byte or remove 16 bytes"
        comes_back $level $((16383 - 16))
        refuses_size $level $((16383 - 15)) "add 16 bytes or remove 1 byte"
        comes_back $level $((16375 + 9))
        comes_back $level $((16375 - 8))
    done
}

@test "messages whose body would not be closed are refused at none, with what helps" {
    refuses_size none 16384 "add or remove 1 byte"
    refuses_size none 65536 "add or remove 1 byte"
    comes_back none 16383
    comes_back none 16385
    comes_back none 65535
    comes_back none 65537
}

@test "messages come back at each level" {
    for level in full test none; do
        for size in 1 15 16 17 127 128 16400 1048577; do
            comes_back $level $size
        done
    done
}

@test "a key is needed at full and test" {
    for level in full test; do
        refuses 2 "a key is needed" "name its file with -k, or pass it with --key-fd" \
            vorl protect --level $level /dev/null
    done
}

@test "a key that is given at none is checked all the same" {
    bytes_of 15 >short
    refuses 3 "'short': the key has 15 bytes, 16 are needed" "" vorl protect --level none -k short key
    succeeds vorl protect --level none -k key note
}

@test "an unknown level is refused" {
    refuses 2 "--level: high not in {full,test,none}" "'vorl protect --help' shows the usage" \
        vorl protect -k key --level high key
}
