#!/usr/bin/env bats
# vorl inspect: what an envelope shows of itself, and where it goes wrong.

load support

# The bytes of the sample are OpenSSL's.
sample() {
    printf 'vorl doctor' | full_envelope
}

@test "an envelope of the level full is shown field by field" {
    sample | base64_text >text
    echo >>text
    succeeds vorl inspect text
    equals "$output" "$(
        cat <<'TEXT'
envelope, given as Base64 text: 35 bytes in 49 characters

offset  length  field        value                             meaning
     0       1  version      02                                level full
     1       1  iv length    10                                16 bytes
     2      16  iv           000102030405060708090a0b0c0d0e0f  initialisation vector
    18       1  body length  10                                16 bytes
    19      16  body         87559a75126bfb0362bab26a185d0e83  ciphertext

version: 2
level: full
protection: AES-128-CBC with a random IV, PKCS#5 padding
bytes in the body: 16
bytes in the message: 0 to 15

This does not show:
- whether it opens: that takes the key, and a damaged body looks like a whole one
- the message, and how many of the bytes above are padding
- who made it, and whether it was changed since: not even the key tells, since an envelope is encrypted but carries no signature
TEXT
    )"
}

@test "--json shows the same" {
    sample >envelope
    succeeds vorl inspect --json envelope
    equals "$output" "$(
        cat <<'JSON'
{
  "kind": "envelope",
  "form": "raw",
  "inputBytes": 35,
  "recordBytes": 35,
  "facts": {
    "version": 2,
    "level": "full",
    "protection": "AES-128-CBC with a random IV, PKCS#5 padding",
    "bodyBytes": 16,
    "messageBytes": {
      "min": 0,
      "max": 15
    }
  },
  "fields": [
    {
      "name": "version",
      "offset": 0,
      "length": 1,
      "value": "02",
      "valueIsComplete": true,
      "meaning": "level full"
    },
    {
      "name": "iv.length",
      "offset": 1,
      "length": 1,
      "value": "10",
      "valueIsComplete": true,
      "meaning": "16 bytes"
    },
    {
      "name": "iv",
      "offset": 2,
      "length": 16,
      "value": "000102030405060708090a0b0c0d0e0f",
      "valueIsComplete": true,
      "meaning": "initialisation vector"
    },
    {
      "name": "body.length",
      "offset": 18,
      "length": 1,
      "value": "10",
      "valueIsComplete": true,
      "meaning": "16 bytes"
    },
    {
      "name": "body",
      "offset": 19,
      "length": 16,
      "value": "87559a75126bfb0362bab26a185d0e83",
      "valueIsComplete": true,
      "meaning": "ciphertext"
    }
  ],
  "isWellFormed": true,
  "problem": null,
  "libraryVerdict": "",
  "unknown": [
    "whether it opens: that takes the key, and a damaged body looks like a whole one",
    "the message, and how many of the bytes above are padding",
    "who made it, and whether it was changed since: not even the key tells, since an envelope is encrypted but carries no signature"
  ]
}
JSON
    )"
}

@test "Base64 text and raw bytes are told apart" {
    sample >envelope
    base64_text <envelope >text
    succeeds vorl inspect envelope
    contains "$output" "envelope, given as raw bytes: 35 bytes"$'\n'
    succeeds vorl inspect text
    contains "$output" "envelope, given as Base64 text: 35 bytes in 48 characters"$'\n'
}

@test "each fragment of a long body is shown, with the beginning of its bytes" {
    { octets 00c1 && head -c 16384 /dev/zero && octets c2 && head -c 32768 /dev/zero && octets 8001ff; } >envelope
    succeeds vorl inspect envelope
    contains "$output" "     1       1  body length 1  c1                                   16384 bytes, more follow
     2   16384  body 1         00000000000000000000000000000000...  the message
 16386       1  body length 2  c2                                   32768 bytes, more follow
 16387   32768  body 2         00000000000000000000000000000000...  the message
 49155       2  body length 3  8001                                 1 byte, written longer than needed
 49157       1  body 3         ff                                   the message
"
    contains "$output" "bytes in the message: 49153"$'\n'
}

@test "fragments are numbered in JSON, and a value that is not whole says so" {
    { octets 00c1 && head -c 16384 /dev/zero && octets 01ff; } >envelope
    succeeds vorl inspect --json envelope
    contains "$output" '"name": "body",
      "offset": 2,
      "length": 16384,
      "fragment": 1,
      "value": "00000000000000000000000000000000",
      "valueIsComplete": false,
      "meaning": "the message"'
}

# malformed HEX OFFSET PROBLEM: the report on standard output and an error both tell it.
malformed() {
    octets "$1" >input
    run --separate-stderr vorl inspect input
    equals "$status" 3
    equals "$stderr" "vorl: error: 'input', at offset $2: $3"
    contains "$output" "malformed at $2: $3"
}

@test "a malformed envelope is shown as far as it can be read, and the place is named" {
    malformed 02 1 "the input ends where the length of the iv is expected"
    malformed 0280 1 "the length of the iv has two bytes, and the second is missing"
    malformed 02c5 1 "0xc5 is no length"
    malformed 02c0 1 "0xc0 is no length"
    malformed 0210aabb 2 "the iv is cut short: 16 bytes announced, 2 there"
    malformed 0210$IV_HEX 18 "the input ends where the length of the body is expected"
    malformed 0210${IV_HEX}10aabbcc 19 "the body is cut short: 16 bytes announced, 3 there"
    malformed 0210${IV_HEX}10${IV_HEX}ffff 35 "the envelope ends here, but 2 more bytes follow"
    malformed 0210${IV_HEX}10${IV_HEX}ff 35 "the envelope ends here, but 1 more byte follows"
    malformed 0201aa10$IV_HEX 1 "the iv has 1 byte, 16 are needed"
    malformed 0208000102030405060710$IV_HEX 1 "the iv has 8 bytes, 16 are needed"
    malformed 7f00 0 "unknown version 0x7f"
}

@test "what can be read of a malformed envelope is in the report" {
    octets 0210${IV_HEX}10aabbcc >input
    run --separate-stderr vorl inspect input
    contains "$output" "     2      16  iv           $IV_HEX  initialisation vector
    18       1  body length  10                                16 bytes
    19       3  body         aabbcc                            ciphertext, cut short
"
    contains "$output" "the library says: Unable to read 16 bytes from buffer, only 3 available"
}

@test "what lies behind the fault is shown as unread" {
    octets 02c5aabb >input
    run --separate-stderr vorl inspect input
    contains "$output" "     1       1  iv length  c5     no length
     2       2  unread     aabb   cannot be read because of the fault before it
"
}

@test "an envelope whose body is not closed is called out" {
    { octets 00c1 && head -c 16384 /dev/zero; } >input
    run --separate-stderr vorl inspect input
    equals "$status" 3
    contains "$stderr" "'input', at offset 16386: the body is not closed: a length must follow its 16384 bytes, \
an exact multiple of 16384"
    { octets "0210${IV_HEX}c4" && head -c 65536 /dev/zero; } >input
    run --separate-stderr vorl inspect input
    equals "$status" 3
    contains "$stderr" "at offset 65555: the body is not closed: a length must follow its 65536 bytes"
}

@test "the empty message at the level none is called out" {
    malformed 00 1 "no body follows: an empty message at the level none, which this format writes but cannot read"
}

@test "a body that no key opens is called out" {
    malformed 0210${IV_HEX}0f0102030405060708090a0b0c0d0e0f 18 \
        "the body has 15 bytes; what a key opens has a multiple of 16, and at least that"
    malformed 0100 1 "the body has 0 bytes; what a key opens has a multiple of 16, and at least that"
}

@test "a malformed envelope is told in JSON too" {
    octets 0100 >input
    run --separate-stderr vorl inspect --json input
    equals "$status" 3
    contains "$output" '"isWellFormed": false,
  "problem": {
    "offset": 1,
    "text": "the body has 0 bytes; what a key opens has a multiple of 16, and at least that"
  },
  "libraryVerdict": ""'
}

@test "a text that is nearly Base64 is told at which character it is not" {
    sample | base64_text >text
    fold -w 20 text >folded
    run --separate-stderr vorl inspect folded
    equals "$status" 3
    equals "$stderr" "vorl: error: 'folded', at character 20: white space or a line break within the text"
    contains "$output" "unknown record, given as Base64 text"
    contains "$output" "malformed at 20: white space or a line break within the text"
}

@test "a text with one foreign character is told where that is" {
    sample | base64_text >text
    sed 's/./!/11' text >damaged
    run --separate-stderr vorl inspect damaged
    equals "$status" 3
    equals "$stderr" "vorl: error: 'damaged', at character 10: a character that Base64 does not have: 0x21"
    contains "$output" "unknown record, given as Base64 text"
}

@test "an empty input is refused" {
    run --separate-stderr vorl inspect /dev/null
    equals "$status" 3
    equals "$stderr" "vorl: error: '/dev/null', at offset 0: the input is empty"
}

@test "each truncation of an envelope is malformed, and the tool and the library agree" {
    sample >full
    printf 'vorl doctor' | test_envelope >test
    octets 000568656c6c6f >none
    for level in full test none; do
        for ((size = 1; size < $(stat -c %s $level); size += STRIDE)); do
            head -c $size $level >input
            run --separate-stderr vorl inspect input
            equals "$level $size: $status" "$level $size: 3"
        done
        succeeds vorl inspect $level
    done
}
