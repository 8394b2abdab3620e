#!/usr/bin/env bats
# vorl explain: which check refuses a record, where, and why. Envelopes come from OpenSSL's own command.

load support
load dh_support
load pki_support

# checks: how each of them went, in one line of words, from what explain has written.
checks() {
    sed -e '1,/^Checks, in the order of the library:$/d' -e '/^$/,$d' <<<"$output" | grep -v '^ ' |
        sed 's/  .*//' | uniq -c | sed 's/^ *//' | paste -s -d ,
}

# members NAME: the values that each check has for it, in JSON, in one line.
members() {
    sed '1,/^  "steps": \[$/d' <<<"$output" | sed -n "s/^      \"$1\": \(.*[^,]\),\{0,1\}$/\1/p" | paste -s -d ,
}

# refused STATUS ERROR COMMAND...: the report is there all the same.
refused() {
    local wanted=$1 error=$2
    shift 2
    run --separate-stderr "$@"
    equals "$status" "$wanted"
    # shellcheck disable=SC2154
    equals "$stderr" "vorl: error: $error"
    contains "$output" "Checks, in the order of the library:"
}

@test "of a whole envelope only the decryption is open without a key" {
    full_envelope <note | base64_text >letter
    succeeds vorl explain letter
    contains "$output" "envelope, given as Base64 text: 35 bytes in 48 characters"
    contains "$output" $'\nlevels that the policy accepts: full\nlevel of the context: full\n\nChecks, in the order of the library:\n'
    equals "$(checks)" "10 passed,1 needs the key"
    contains "$output" $'\nneeds the key  the key must open the body'
}

@test "with the key, the decryption is tried" {
    full_envelope <note >letter
    succeeds vorl explain -k key letter
    equals "$(checks)" "11 passed"
    contains "$output" $'\n\nAll checks pass, but an envelope carries no signature: anybody who has the key can have made it, and a damaged one may open all the same.'
    echo "$WRONG_KEY_HEX" >wrong
    refused 4 "'letter', at offset 18: wrong key or damaged data" vorl explain -k wrong letter
    equals "$(checks)" "10 passed,1 REFUSED"
}

@test "how a decryption failed is not told, and the message is not shown" {
    # A block that no message with padding was made of, under this key.
    octets "0210$IV_HEX""10$IV_HEX" >noise
    refused 4 "'noise', at offset 18: wrong key or damaged data" vorl explain -k key noise
    refute_contains() {
        [[ "$1" != *"$2"* ]]
    }
    refute_contains "$output" "OpenSSL"
    full_envelope <note >letter
    succeeds vorl explain -k key letter
    refute_contains "$output" hello
}

@test "a level that is not accepted is refused by the policy, with status 1" {
    test_envelope <note | base64_text >letter
    refused 1 "'letter', at offset 0: the level test is not accepted" vorl explain letter
    contains "$output" 'the library says: CipherWrapper CipherWrapper[Test:0x01] not allowed'
    equals "$(checks)" "3 passed,1 REFUSED,7 not reached"
}

@test "a level that is accepted is refused by a context of another one, with status 1" {
    test_envelope <note | base64_text >letter
    refused 1 "'letter', at offset 0: the context is of the level full" vorl explain --accept full,test letter
    contains "$output" 'the library says: Cipher spec mismatch between cipher and wrapper'
    equals "$(checks)" "4 passed,1 REFUSED,6 not reached"
    succeeds vorl explain --accept full,test --level test letter
    equals "$(checks)" "10 passed,1 needs the key"
    succeeds vorl explain --accept full,test --level test -k key letter
    equals "$(checks)" "11 passed"
}

@test "the level none needs no key" {
    octets 0003616263 >letter
    succeeds vorl explain --accept none --level none letter
    equals "$(checks)" "11 passed"
    contains "$output" $'\n\nAll checks pass, but an envelope of the level none is not protected: anybody can have made it.'
}

@test "the library's order decides which of several faults is told" {
    # An unknown version; then a level that is not accepted, in another context, cut short; then the context.
    octets 7f >unknown
    refused 3 "'unknown', at offset 0: no level has the version 0x7f" vorl explain unknown
    contains "$output" "the library says: Unknown CipherWrapper version: 0x7f"
    octets 0120aa >short
    refused 1 "'short', at offset 0: the level test is not accepted" vorl explain short
    refused 1 "'short', at offset 0: the context is of the level full" vorl explain --accept test short
    refused 3 "'short', at offset 2: the body is cut short: 32 bytes announced, 1 there" \
        vorl explain --accept test --level test short
    contains "$output" "the library says: Unable to read 32 bytes from buffer, only 1 available"
}

@test "what follows an envelope is refused where it begins" {
    { full_envelope <note && octets 0000; } >letter
    refused 3 "'letter', at offset 35: 2 more bytes follow" vorl explain letter
    contains "$output" "the library says: Buffer is not empty after parsing decrypted data; 2 bytes remain"
    equals "$(checks)" "8 passed,1 REFUSED,2 not reached"
}

@test "a text that is not Base64 is refused at its character" {
    printf 'AgAA=' >text
    run --separate-stderr vorl explain text
    equals "$status" 3
    contains "$stderr" "vorl: error: 'text', at character "
    contains "$output" 'the library says: index out of bounds: read index('
    equals "$(checks)" "1 passed,1 REFUSED,9 not reached"
    refused 3 "'/dev/null', at character 0: the input is empty, which leaves an envelope without a byte" \
        vorl explain /dev/null
}

# damaged FILE COLUMN [CHARACTER]: the file with one character, counted from 0, replaced.
damaged() {
    local text
    text=$(cat "$1")
    printf %s "${text:0:$2}${3-!}${text:$(($2 + 1))}"
}

@test "one foreign character in a text is refused as the library refuses it" {
    local foreign="a character that Base64 does not have: 0x21"
    full_envelope <note | base64_text >letter
    damaged letter 10 >bad
    for options in "" "--as envelope" "-k key" "--as envelope -k key"; do
        # shellcheck disable=SC2086
        refused 3 "'bad', at character 10: $foreign, which leaves an envelope without a byte" vorl explain $options bad
        equals "$(checks)" "1 passed,1 REFUSED,9 not reached"
        contains "$output" $'\n             the library says: index out of bounds: read index(0) >= write index(0)\n'
    done
    { octets 000000028080 && bytes_of 128; } | base64_text >peer
    damaged peer 40 >bad
    cp "$GROUP" group.pem
    for options in "" "--as dh-record" "-p group.pem"; do
        # shellcheck disable=SC2086
        refused 3 "'bad', at character 40: $foreign" vorl explain $options bad
        contains "$output" "the library says: Unable to Base64 decode input:"
        equals "$(checks)" "1 REFUSED,6 not reached"
    done
    { octets 018080 && bytes_of 128; } | base64_text >record
    damaged record 0 >bad
    refused 3 "'bad', at character 0: $foreign, which leaves a record without a byte" vorl explain --as signature bad
    contains "$output" "the library says: index out of bounds: read index(0) >= write index(0)"
    equals "$(checks)" "1 REFUSED,5 not reached"
}

@test "a text is refused as one however much of it is foreign" {
    # A byte order mark; a byte that is no ASCII; what was never Base64.
    full_envelope <note | base64_text >letter
    { octets efbbbf && cat letter; } >marked
    refused 3 "'marked', at character 0: a character that Base64 does not have: 0xef, which leaves an envelope without a byte" \
        vorl explain marked
    damaged letter 10 $'\xe4' >bad
    refused 3 "'bad', at character 10: a character that Base64 does not have: 0xe4, which leaves an envelope without a byte" \
        vorl explain bad
    printf '{"no": "envelope"}' >other
    refused 3 "'other', at character 0: a character that Base64 does not have: 0x7b, which leaves an envelope without a byte" \
        vorl explain other
    # A record is no text, though nearly all of its bytes are of Base64.
    { octets 0040 && printf '%064d' 0; } >plain
    succeeds vorl explain --accept none --level none plain
    head -c 50 plain >shortened
    refused 3 "'shortened', at offset 2: the body is cut short: 64 bytes announced, 48 there" \
        vorl explain --accept none --level none shortened
}

@test "a newline behind a text is told, since the library refuses a text with it" {
    local remark=": without the newline at its end, with which the library would refuse it"
    full_envelope <note | base64_text >letter
    { octets 000000028080 && bytes_of 128; } | base64_text >peer
    { octets 018080 && bytes_of 128; } | base64_text >record
    for newline in '\n' '\r\n'; do
        # shellcheck disable=SC2059
        for text in letter peer record; do
            { cat "$text" && printf "$newline"; } >"$text.txt"
        done
        succeeds vorl explain letter.txt
        contains "$output" $'\npassed         a version byte must be there'"$remark"$'\n'
        succeeds vorl explain peer.txt
        contains "$output" $'\npassed           the text must be Base64, of one byte or more'"$remark"$'\n'
        succeeds vorl explain record.txt
        contains "$output" "a version byte must be there$remark"$'\n'
    done
    succeeds vorl explain --json letter.txt
    contains "$(members reason)" "\"\",\"${remark#: }\",\"the level full\""
    for text in letter peer record; do
        succeeds vorl explain "$text"
        run ! grep -q 'newline' <<<"$output"
    done
}

@test "a public key record is explained up to its group" {
    { octets 000000028080 && bytes_of 128; } | base64_text >peer
    succeeds vorl explain peer
    equals "$(checks)" "5 passed,2 needs the group"
    { octets 000000028077 && bytes_of 127; } >short
    refused 3 "'short', at offset 4: it has 119 bytes" vorl explain short
    contains "$output" "the library says: DH public key from server is 119bytes, expected 120-129"
    { octets 00000002 && bytes_of 120; } >truncated
    refused 3 "'truncated', at offset 124: it ends here, with 124 bytes" vorl explain truncated
    contains "$output" "the library says: DH PubKey length (124) out of range"
}

@test "with the group, its size and the number are judged" {
    { octets 000000028080 && bytes_of 128; } | base64_text >peer
    succeeds vorl explain -p "$GROUP" peer
    equals "$(checks)" "7 passed"
    equals "$(tail -n 2 <<<"$output")" $'\nAll checks pass, but a record carries no signature, so that something else has to prove who made it.'
    openssl dhparam -outform DER -out group 512 2>/dev/null
    refused 3 "'peer': the group has 512 bits, and a secret is agreed in one of 1024" vorl explain --params group peer
    contains "$output" "the library says: DH shared secret size (64) != 128"
    equals "$(checks)" "5 passed,1 REFUSED,1 not reached"
    refuses 3 "'note' holds no Diffie-Hellman parameters: it is neither PEM text nor DER nor the encoding of a group" "" \
        vorl explain -p note peer
    refuses 2 "standard input cannot be both the record and the group" "name a file for one of them" vorl explain -p - - <peer
}

@test "a number that fixes the secret does not end looking fine" {
    local fixed=": OpenSSL computes nothing with it, and the library gives out 128 zero bytes as the secret, which anybody knows"
    for number in 0 1; do
        peer_text "$number" >peer
        refused 4 "'peer', at offset 4: it is $number$fixed" vorl explain peer
        equals "$(checks)" "5 passed,1 needs the group,1 WARNING"
    done
    equals "$(tail -n 2 <<<"$output")" $'\nThe library refuses nothing here, and no keys should be derived all the same.'
    local last
    last=$(prime)
    peer_text "${last%f}e" >peer
    refused 4 "'peer', at offset 4: it is the prime less 1$fixed" vorl explain -p "$GROUP" peer
    equals "$(checks)" "6 passed,1 WARNING"
    run --separate-stderr vorl explain --json -p "$GROUP" peer
    equals "$(members outcome)" '"passes","passes","passes","passes","passes","passes","warns"'
    equals "$(members offset)" 'null,null,null,null,null,null,4'
    # Whose record that is, it takes the group to see.
    succeeds vorl explain peer
    equals "$(checks)" "5 passed,2 needs the group"
    contains "$output" $'\nNo check that was made refuses it, which does not make it valid: others were not made, and\n'
}

@test "what a number does in a group that has faults is not told" {
    local last even
    last=$(prime)
    even=${last%f}e
    # DER of that modulus and the generator 2.
    octets "30818702818100${even}020102" >group
    run -1 vorl dh params check group
    peer_text 1234 >peer
    refused 1 "'peer': the group has faults, which 'vorl dh params check' tells; the library does not look for them" \
        vorl explain -p group peer
    equals "$(checks)" "5 passed,1 WARNING,1 needs a group without faults"
    equals "$(tail -n 2 <<<"$output")" $'\nThe library refuses nothing here, and no keys should be derived all the same.'
    peer_text 1 >peer
    run -1 --separate-stderr vorl explain --json -p group peer
    equals "$(members outcome)" '"passes","passes","passes","passes","passes","warns","warns"'
    # No fault is that of a group of another size.
    openssl dhparam -outform DER -out group 512 2>/dev/null
    refused 3 "'peer': the group has 512 bits, and a secret is agreed in one of 1024" vorl explain -p group peer
}

@test "with the key and what was signed, a signature is verified" {
    rsa_key signer
    rsa_key other 2048
    certificate service signer
    openssl dgst -sha1 -sign signer.pem -out value note
    { octets 018080 && cat value; } | base64_text >record
    succeeds vorl explain --public-key signer.pub --signed note record
    equals "$(checks)" "6 passed"
    contains "$output" $'\n\nAll checks pass, but whose key that is, they do not say.'
    succeeds vorl explain --cert service.crt --signed - record <note
    equals "$(checks)" "6 passed"
    succeeds vorl explain --cert service.crt record
    equals "$(checks)" "5 passed,1 needs the input"
    succeeds vorl explain --signed note record
    equals "$(checks)" "4 passed,2 needs the public key"
    refused 1 "'record', at offset 1: the key has not made it over this input" \
        vorl explain --public-key signer.pub --signed key record
    equals "$(checks)" "5 passed,1 REFUSED"
    refused 1 "'record', at offset 1: it has 128 bytes, and the modulus 256 bytes" \
        vorl explain --public-key other.pub --signed note record
    equals "$(checks)" "4 passed,1 REFUSED,1 not reached"
    run ! grep -q 'the library says' <<<"$output"
    run -2 vorl explain --public-key signer.pub --cert service.crt record
}

@test "a signature of any size is judged with its key, whatever else it looks like" {
    rsa_key k1000 1000
    rsa_key k1536 1536
    openssl dgst -sha1 -sign k1000.pem -out value note
    { octets 017d && cat value; } >record1000
    signed k1536 note >record1536
    for bits in 1000 1536; do
        succeeds vorl explain --public-key k$bits.pub --signed note record$bits
        equals "$(checks)" "6 passed"
        succeeds vorl explain --signed note record$bits
        equals "$(checks)" "4 passed,2 needs the public key"
        refused 1 "'record$bits', at offset 1: the key has not made it over this input" \
            vorl explain --public-key k$bits.pub --signed key record$bits
        refused 1 "'record$bits', at offset 0: the level test is not accepted" vorl explain record$bits
    done
}

@test "with what a signature is verified with, a damaged one is refused as a signature" {
    local none="which leaves a record without a byte"
    rsa_key signer
    certificate service signer
    signed signer note >text
    openssl base64 -d -A <text >raw
    head -c 127 raw >stump
    { cat raw && octets 00; } >longer
    bytes_of 128 >bare
    for options in "--public-key signer.pub" "--cert service.crt" "--signed note"; do
        for column in 0 3 60; do
            damaged text $column >bad
            # shellcheck disable=SC2086
            refused 3 "'bad', at character $column: a character that Base64 does not have: 0x21, $none" \
                vorl explain $options bad
            equals "$(checks)" "1 REFUSED,5 not reached"
        done
        # shellcheck disable=SC2086
        {
            refused 3 "'stump', at offset 3: the value is cut short: 128 bytes announced, 124 there" \
                vorl explain $options stump
            refused 3 "'longer', at offset 131: 1 more byte follows; the library does not look at them, and 'vorl verify' refuses them" \
                vorl explain $options longer
            refused 3 "'bare', at offset 0: no signature record has the version 0x50" vorl explain $options bare
            refused 3 "'/dev/null', at character 0: the input is empty, $none" vorl explain $options /dev/null
        }
    done
}

@test "with the group, a damaged record is refused as one of a public key" {
    { octets 000000028080 && bytes_of 128; } | base64_text >peer
    damaged peer 3 >bad
    refused 3 "'bad', at character 3: a character that Base64 does not have: 0x21" vorl explain -p "$GROUP" bad
    equals "$(checks)" "1 REFUSED,6 not reached"
    bytes_of 120 >short
    refused 3 "'short', at offset 120: it ends here, with 120 bytes" vorl explain -p "$GROUP" short
    refused 3 "'/dev/null', at character 0: the input is empty" vorl explain -p "$GROUP" /dev/null
    refused 3 "'note', at character 5: the text has 5 characters, which is no multiple of 4: something is missing" \
        vorl explain -p "$GROUP" note
}

@test "options for records of different kinds are refused, whatever the input" {
    local hint="leave one of them out"
    local kinds="are for records of different kinds"
    refuses 2 "the group and the public key $kinds" "$hint" vorl explain -p no-file --public-key no-file no-file
    refuses 2 "the group and the certificate $kinds" "$hint" vorl explain -p no-file --cert no-file no-file
    refuses 2 "the group and the signed input $kinds" "$hint" vorl explain -p no-file --signed no-file no-file
    refuses 2 "the group and the key $kinds" "$hint" vorl explain -p no-file -k no-file no-other
    refuses 2 "the public key and the key $kinds" "$hint" vorl explain --public-key no-file -k no-file no-other
    refuses 2 "--as envelope and the group $kinds" "$hint" vorl explain --as envelope -p no-file no-file
    refuses 2 "--as envelope and the certificate $kinds" "$hint" vorl explain --as envelope --cert no-file no-file
    refuses 2 "--as dh-record and the signed input $kinds" "$hint" vorl explain --as dh-record --signed no-file no-file
    refuses 2 "--as signature and the group $kinds" "$hint" vorl explain --as signature -p no-file no-file
    refuses 2 "--as dh-record and the key $kinds" "$hint" vorl explain --as dh-record -k no-file no-other
    bytes_of 128 >bare
    succeeds vorl explain --as dh-record -p "$GROUP" bare
    equals "$(checks)" "7 passed"
}

@test "--as says what a record is" {
    bytes_of 128 >bare
    succeeds vorl explain bare
    equals "$(checks)" "5 passed,2 needs the group"
    { octets 018080 && bytes_of 128; } >record
    succeeds vorl explain record
    equals "$(checks)" "4 passed,1 needs the public key,1 needs the public key and the input"
    refused 1 "'record', at offset 0: the level test is not accepted" vorl explain --as envelope record
}

@test "what follows a signature is refused, though the library does not look at it" {
    { octets 018080 && bytes_of 129; } >record
    refused 3 "'record', at offset 131: 1 more byte follows; the library does not look at them, and 'vorl verify' refuses them" \
        vorl explain --as signature record
    octets 0200 >record
    refused 3 "'record', at offset 0: no signature record has the version 0x02" vorl explain --as signature record
}

@test "other kinds are shown by inspect" {
    local hint="an envelope, a Diffie-Hellman record and a signature are explained; 'vorl inspect' shows what else there is"
    printf '%s\n' '-----BEGIN CERTIFICATE-----' >pem
    refuses 3 "'pem' is PEM text" "$hint" vorl explain pem
    # Whatever it is explained with.
    cp "$GROUP" group.pem
    for options in "-p group.pem" "--signed note"; do
        # shellcheck disable=SC2086
        refuses 3 "'pem' is PEM text" "$hint" vorl explain $options pem
    done
    octets 3006020117020105 >group
    refuses 3 "'group' looks like another kind of record: dh-params" \
        "'vorl inspect' shows it; if it is none, --as says what it is" vorl explain group
}

@test "with a key, the input is an envelope, whatever it looks like" {
    # Version byte and body together have the size of a signature by an RSA key.
    head -c 127 /dev/zero >zeros
    vorl protect -k key --level test zeros -o letter
    succeeds vorl explain --accept test --level test -k key letter
    contains "$output" "passed  the key must open the body"
    bytes_of 128 >bare
    run --separate-stderr vorl explain -k key bare
    contains "$stderr" "vorl: error: 'bare', at offset 0: "
    echo 00 >short
    refuses 3 "'short': the key has 1 byte, 16 are needed" \
        "it was read as hex; --key-format raw|hex|base64 says how to read it" vorl explain -k short bare
}

@test "levels are read strictly" {
    refuses 2 "--accept: there is no level 'ful'" \
        "give a list of full, test and none, for example --accept full,test" vorl explain --accept ful note
    refuses 2 "--level: ful not in {full,test,none}" "'vorl explain --help' shows the usage" \
        vorl explain --level ful note
}

@test "--json is that of inspect, and the checks" {
    test_envelope <note >letter
    run --separate-stderr vorl explain --json letter
    equals "$status" 1
    # All but the brace at its end.
    equals "${output%%,$'\n'  \"accept\"*}" "$(vorl inspect --json letter | head -n -1)"
    contains "$output" $',\n  "accept": [\n    "full"\n  ],\n  "level": "full",\n  "steps": [\n    {\n      "name": "initialised",\n      "requirement": "the library must be initialised",\n      "outcome": "passes",\n      "needs": null,\n      "offset": null,\n      "reason": "",\n      "libraryText": ""\n    },\n'
    equals "$(members name)" \
        '"initialised","version","known-version","policy","context","iv","iv-length","body","end","blocks","decryption"'
    equals "$(members outcome)" "\"passes\",\"passes\",\"passes\",\"refuses\"$(printf ',"not reached"%.0s' 1 2 3 4 5 6 7)"
    equals "$(members offset)" "null,null,null,0,null,null,null,null,null,null,null"
    contains "$(members reason)" '"the level test","the level test is not accepted",""'
    contains "$(members libraryText)" '"","CipherWrapper CipherWrapper[Test:0x01] not allowed",""'
}

@test "--json names what a check needs" {
    test_envelope <note >letter
    succeeds vorl explain --json --accept test --level test letter
    equals "$(members needs)" 'null,null,null,null,null,null,null,null,null,null,"the key"'
    bytes_of 128 >bare
    succeeds vorl explain --json bare
    equals "$(members needs)" 'null,null,null,null,null,"the group","the group"'
    run ! grep -q '^  "accept"' <<<"$output"
}
