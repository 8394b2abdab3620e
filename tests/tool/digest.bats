#!/usr/bin/env bats
# vorl digest and vorl hmac, beside OpenSSL's own command.

load support

@test "a digest is written in hex, by each algorithm" {
    for algorithm in SHA1 SHA224 SHA256 SHA384 SHA512; do
        succeeds vorl digest -a $algorithm note
        equals "$output" "$(openssl dgst "-${algorithm,,}" -r note | cut -d ' ' -f 1)"
    done
}

@test "the name of an algorithm is read in any case, with a dash or without" {
    # FIPS 180-4: the digest of "abc".
    printf abc >abc
    for name in SHA1 sha1 Sha-1 SHA-1; do
        succeeds vorl digest -a $name abc
        equals "$output" a9993e364706816aba3e25717850c26c9cd0d89d
    done
    for name in SHA256 sha256 SHA-256 sha-256; do
        succeeds vorl digest --algorithm $name abc
        equals "$output" ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad
    done
}

@test "an unknown algorithm is wrong usage" {
    for command in digest hmac; do
        for name in MD5 SHA3-256 SHA SHA--256 sha2 256; do
            refuses 2 "--algorithm: '$name' is not SHA1, SHA224, SHA256, SHA384 or SHA512" \
                "'vorl $command --help' shows the usage" vorl $command "--algorithm=$name" note
        done
    done
    refuses 2 "--algorithm is required" "'vorl digest --help' shows the usage" vorl digest note
}

@test "standard input is digested, also where it is long or empty" {
    from_standard_input() {
        bytes_of "$1" | vorl digest -a sha256
    }
    for size in 0 1 65536 3000001; do
        succeeds from_standard_input $size
        equals "$output" "$(bytes_of $size | openssl dgst -sha256 -r | cut -d ' ' -f 1)"
    done
}

@test "an input of any size takes no more memory" {
    [ "$VORL_SANITIZED" = 0 ] || skip "sanitizers need more address space than a limit leaves"
    truncate -s 600M large
    printf 'a key of bytes:\x01' >bytes
    limited() {
        (ulimit -v 300000 && "$VORL" "$@")
    }
    succeeds limited digest -a sha1 large
    equals "$output" "$(openssl dgst -sha1 -r large | cut -d ' ' -f 1)"
    succeeds limited hmac -a sha1 -k bytes large
    equals "$output" "$(openssl dgst -sha1 -mac HMAC -macopt "hexkey:$(hex bytes)" -binary large | base64_text)"
}

@test "an input that cannot be read is told" {
    printf 'a key of bytes:\x01' >bytes
    for command in "digest -a sha256" "hmac -k bytes"; do
        # shellcheck disable=SC2086
        refuses 3 "cannot read 'missing': No such file or directory" "" vorl $command missing
        # shellcheck disable=SC2086
        refuses 3 "cannot read '.': it is a directory" "" vorl $command .
    done
}

# openssl_hmac NAME HEXKEY FILE: the code as Base64, by OpenSSL's own command.
openssl_hmac() {
    openssl dgst "-$1" -mac HMAC -macopt "hexkey:$2" -binary "$3" | base64_text
}

@test "an authentication code is written as Base64, by each algorithm and with a key of any size" {
    for size in 1 16 32 64 65 200; do
        bytes_of $size >bytes
        succeeds vorl hmac -k bytes --key-format raw note
        equals "$output" "$(openssl_hmac sha256 "$(hex bytes)" note)"
    done
    for algorithm in SHA1 sha-224 SHA256 SHA384 sha512; do
        local name=${algorithm,,}
        succeeds vorl hmac -a $algorithm -k bytes note
        equals "$output" "$(openssl_hmac "${name/-/}" "$(hex bytes)" note)"
    done
}

@test "a code of RFC 4231 is what the RFC says" {
    # Test case 2, "Jefe" and "what do ya want for nothing?".
    printf Jefe >jefe
    printf 'what do ya want for nothing?' >question
    succeeds vorl hmac -k jefe --key-format raw question
    equals "$output" "$(octets 5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843 | base64_text)"
}

@test "a key may be hex or Base64, and what could be two things is never guessed at" {
    bytes_of 32 >raw
    hex raw >hex
    base64_text <raw >base64
    local expected
    expected=$(openssl_hmac sha256 "$(hex raw)" note)
    for format in raw hex base64; do
        succeeds vorl hmac -k $format --key-format $format note
        equals "$output" "$expected"
    done
    refuses 2 "'hex': the key can be read as hex (32 bytes) or as base64 (48 bytes) or as raw (64 bytes)" \
        "--key-format raw|hex|base64 says how to read it" vorl hmac -k hex note
    echo 'a line!' >line
    refuses 2 "'line': the key can be read as raw (8 bytes), but looks like a text of 7 characters and a newline" \
        "--key-format raw takes it as it is, with the newline" vorl hmac -k line note
    refuses 3 "'line': the key is not hex" "--key-format raw|hex|base64 says how to read it" \
        vorl hmac -k line --key-format hex note
}

@test "an empty key authenticates nothing" {
    for format in "" "--key-format raw" "--key-format hex"; do
        # shellcheck disable=SC2086
        refuses 3 "'/dev/null': the key is empty" "" vorl hmac -k /dev/null $format note
    done
    refuses 2 "a key is needed" "name its file with -k, or pass it with --key-fd" vorl hmac note
}

@test "the key and the input cannot be one" {
    local hint="name a file for one of them, or pass the key with --key-fd"
    bytes_of 32 >bytes
    refuses 2 "'bytes' cannot be both the key and the input" "$hint" vorl hmac -k bytes bytes
    from_standard_input() {
        vorl hmac -k - <bytes
    }
    refuses 2 "standard input cannot be both the key and the input" "$hint" from_standard_input
    with_descriptor() {
        vorl hmac --key-fd 9 note 9<bytes
    }
    succeeds with_descriptor
    equals "$output" "$(openssl_hmac sha256 "$(hex bytes)" note)"
}

@test "--verify says nothing to a code that matches" {
    bytes_of 32 >bytes
    for algorithm in sha1 sha256 sha512; do
        succeeds vorl hmac -a $algorithm -k bytes --verify "$(openssl_hmac $algorithm "$(hex bytes)" note)" note
        equals "$output" ""
    done
}

@test "--verify refuses a code of another key, another input, or one changed bit, with status 1" {
    bytes_of 32 >bytes
    bytes_of 31 >another
    local code
    code=$(openssl_hmac sha256 "$(hex bytes)" note | openssl base64 -d -A | hex)
    refuses 1 "the code does not match" "" \
        vorl hmac -k another --verify "$(octets "$code" | base64_text)" note
    refuses 1 "the code does not match" "" \
        vorl hmac -k bytes --verify "$(octets "$code" | base64_text)" /dev/null
    for digit in 0 31 63; do
        local changed
        changed=${code:0:digit}$(printf %x $((0x${code:digit:1} ^ 1)))${code:digit+1}
        refuses 1 "the code does not match" "" \
            vorl hmac -k bytes --verify "$(octets "$changed" | base64_text)" note
    done
}

@test "--verify takes no beginning of a code for the whole" {
    bytes_of 32 >bytes
    local code
    code=$(openssl_hmac sha256 "$(hex bytes)" note | openssl base64 -d -A | hex)
    refuses 1 "the code does not match" "it has 16 bytes, and one with SHA256 has 32" \
        vorl hmac -k bytes --verify "$(octets "${code:0:32}" | base64_text)" note
    refuses 1 "the code does not match" "it has 33 bytes, and one with SHA256 has 32" \
        vorl hmac -k bytes --verify "$(octets "${code}00" | base64_text)" note
}

@test "--verify refuses what is not Base64" {
    bytes_of 32 >bytes
    refuses 3 "the code to verify is not Base64 text: at character 0: the input is empty" "" \
        vorl hmac -k bytes --verify "" note
    refuses 3 "the code to verify is not Base64 text: at character 3: a character that Base64 does not have: 0x21" "" \
        vorl hmac -k bytes --verify 'abc!' note
}
