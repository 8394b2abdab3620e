#!/usr/bin/env bats
# vorl inspect: public key records, parameters and key pairs of Diffie-Hellman, and how they are told apart.

load support
load dh_support

@test "a record of version 2 is shown field by field" {
    peer_text 03 >text
    succeeds vorl inspect text
    equals "$output" "$(
        cat <<'TEXT'
Diffie-Hellman public key record, given as Base64 text: 134 bytes in 180 characters

offset  length  field       value                                meaning
     0       4  version     00000002
     4       2  key length  8080                                 128 bytes
     6     128  key         00000000000000000000000000000000...  the public value

version: 2
bytes in the key: 128

This does not show:
- which group the key is for, and whether OpenSSL takes it for one of that group
- who made it, and whether it was changed since: a record carries no signature
TEXT
    )"
}

@test "125 to 129 bytes are a record of version 1, a bare key" {
    for size in 125 126 128 129; do
        octets "$(zeros $size | sed "s/00/f7/g")" >key
        succeeds vorl inspect key
        contains "$output" "Diffie-Hellman public key record, given as raw bytes: $size bytes"
        contains "$output" "version: 1
bytes in the key: $size"
        contains "$output" "- whether it is a key at all: any 125 to 129 bytes can be a record of version 1"
    done
    for size in 124 130; do
        octets "$(zeros $size | sed "s/00/f7/g")" >key
        run vorl inspect key
        equals "$status" 3
        contains "$output" "unknown record"
    done
}

@test "--json names the kind and its facts" {
    octets "000000028080$(number 03)" >record
    succeeds vorl inspect --json record
    contains "$output" '"kind": "dh-record",
  "form": "raw",'
    contains "$output" '"facts": {
    "version": 2,
    "keyBytes": 128
  },'
}

@test "a record with a key that no agreement takes is called out" {
    octets "0000000277$(zeros 119)$(zeros 7)" >short
    run --separate-stderr vorl inspect short
    equals "$status" 3
    equals "$stderr" "vorl: error: 'short', at offset 4: the key has 119 bytes; an agreement takes 120 to 129"
    contains "$output" "trailing"
    octets "000000028082$(zeros 130)" >long
    run --separate-stderr vorl inspect long
    equals "$status" 3
    equals "$stderr" "vorl: error: 'long', at offset 4: the key has 130 bytes; an agreement takes 120 to 129"
}

@test "a record that is cut short is shown as far as it goes" {
    octets "000000028080$(zeros 60)" >cut
    run --separate-stderr vorl inspect cut
    equals "$status" 3
    equals "$stderr" "vorl: error: 'cut', at offset 6: the key is cut short: 128 bytes announced, 60 there"
    contains "$output" "the library says: DH PubKey length (66) out of range"
    # The library takes 125 to 129 bytes for a bare key, whatever they begin with.
    octets "000000028080$(zeros 120)" >cut
    succeeds vorl inspect cut
    contains "$output" "version: 1
bytes in the key: 126"
}

@test "a record of an unknown version is called out, where it is said to be one" {
    octets "00000003$(zeros 126)" >record
    run --separate-stderr vorl inspect --as dh-record record
    equals "$status" 3
    equals "$stderr" "vorl: error: 'record', at offset 0: a record of this size has version 2"
    contains "$output" "the library says: Unknown DHPubKey version: 3"
}

@test "parameters are shown from PEM text, DER, and the library's own encoding" {
    openssl dhparam -in "$GROUP" -outform DER >der
    octets "8080$(prime)0102" >blocks
    base64_text <blocks >text
    local facts
    facts="bits in the prime: 1024
generator: 2
prime: $(prime)"
    succeeds vorl inspect "$GROUP"
    contains "$output" "Diffie-Hellman parameters, given as PEM text: $(stat -c %s "$GROUP") bytes"
    contains "$output" "encoding: pem
$facts"
    succeeds vorl inspect der
    contains "$output" "Diffie-Hellman parameters, given as raw bytes: 138 bytes"
    contains "$output" "encoding: der
$facts"
    for form in blocks text; do
        succeeds vorl inspect $form
        contains "$output" "encoding: blocks
$facts"
        contains "$output" "   130       1  generator length  01 "
    done
}

@test "--json of parameters has the numbers as facts" {
    succeeds vorl inspect --json "$GROUP"
    contains "$output" '"kind": "dh-params",
  "form": "pem",'
    contains "$output" '"facts": {
    "encoding": "pem",
    "primeBits": 1024,
    "generator": "2",
    "prime": "'"$(prime)"'"
  },
  "fields": [],
  "isWellFormed": true,'
}

@test "PEM text that holds no parameters is called out" {
    head -n 2 "$GROUP" >cut
    run --separate-stderr vorl inspect cut
    equals "$status" 3
    equals "$stderr" "vorl: error: 'cut', at offset 0: no group can be read from this"
    contains "$output" "the library says: Unable to read DHParams from BIO"
    printf -- 'a line\n-----BEGIN NONSENSE-----\n' >unknown
    run --separate-stderr vorl inspect unknown
    equals "$status" 3
    equals "$stderr" "vorl: error: 'unknown', at offset 7: PEM text of an unknown kind: NONSENSE"
}

@test "a key pair is shown without its private key" {
    local private=77665544332211ffeeddccbbaa998877
    octets "8080$(prime)0102010410$private" >state
    succeeds vorl inspect state
    contains "$output" "Diffie-Hellman key pair, given as raw bytes: 151 bytes"
    contains "$output" "privateKey         $(printed "$private")"
    contains "$output" "public key: 04
private key: $(printed "$private")"
    [[ "$output" != *77665544* ]]
    succeeds vorl inspect --json state
    contains "$output" '"kind": "dh-state"'
    contains "$output" '"value": "",
      "valueIsComplete": false,
      "fingerprint": "'"$(printed "$private")"'"'
    contains "$output" '"privateKey": "'"$(printed "$private")"'"'
    [[ "$output" != *77665544* ]]
}

# printed HEX: what stands for a secret.
printed() {
    echo "sha256:$(octets "$1" | openssl dgst -sha256 -r | head -c 8) ($((${#1} / 2)) bytes)"
}

@test "--show-secrets shows the private key" {
    local private=77665544332211ffeeddccbbaa998877
    octets "8080$(prime)0102010410$private" >state
    succeeds vorl inspect --show-secrets state
    contains "$output" "private key: $private"
    succeeds vorl inspect --show-secrets --json state
    contains "$output" '"privateKey": "'"$private"'"'
}

@test "a key pair with a fault in it shows nothing of its private key either" {
    local private=77665544332211ffeeddccbbaa998877
    octets "8080$(prime)0102010411$private" >cut
    octets "8080$(prime)0102010401778f$private" >more
    octets "8080$(prime)0102c51077$private" >broken
    for state in cut more broken; do
        for format in "" --json; do
            # shellcheck disable=SC2086
            run --separate-stderr vorl inspect --as dh-state $format $state
            equals "$state $status" "$state 3"
            [[ "$output$stderr" != *7766554433* ]]
        done
    done
    run --separate-stderr vorl inspect --as dh-state cut
    equals "$stderr" "vorl: error: 'cut', at offset 135: the privateKey is cut short: 17 bytes announced, 16 there"
    run --separate-stderr vorl inspect --as dh-state more
    equals "$stderr" "vorl: error: 'more', at offset 136: the numbers end here, but 17 bytes more follow"
}

@test "what a number cannot be is called out, though the library reads it" {
    octets "8080$(prime)0102000102" >zero
    run --separate-stderr vorl inspect --as dh-state zero
    equals "$status" 3
    equals "$stderr" "vorl: error: 'zero', at offset 0: the publicKey is 0"
    octets "8080$(prime)020002" >padded
    run --separate-stderr vorl inspect --as dh-params padded
    equals "$status" 3
    equals "$stderr" "vorl: error: 'padded', at offset 0: the generator has a leading zero byte"
}

@test "an envelope of the size of a bare key is an envelope, where it is whole or begins as one of the level full" {
    # 00, a length of 127 and as many bytes are 129 in all.
    { octets 007f && bytes_of 127; } >none
    succeeds vorl inspect none
    contains "$output" "envelope, given as raw bytes: 129 bytes"
    { octets "0210$IV_HEX" && bytes_of 110; } >cut
    run vorl inspect cut
    equals "$status" 3
    contains "$output" "envelope, given as raw bytes: 128 bytes"
    { octets 0075 && bytes_of 127; } >neither
    succeeds vorl inspect neither
    contains "$output" "version: 1"
}

@test "--as settles what an input is" {
    { octets 007f && bytes_of 127; } >both
    succeeds vorl inspect --as dh-record both
    contains "$output" "Diffie-Hellman public key record"
    { octets 0075 && bytes_of 127; } >cut
    run vorl inspect --as envelope cut
    equals "$status" 3
    contains "$output" "envelope, given as raw bytes: 129 bytes"
    refuses 2 "--as: nonsense not in {$(kinds)}" "'vorl inspect --help' shows the usage" \
        vorl inspect --as nonsense both
}

# kinds: as the help lists them.
kinds() {
    vorl inspect --help | tr '\n' ' ' | sed 's/.*if it does not show: //; s/  *--show-secrets.*//; s/ *//g'
}
