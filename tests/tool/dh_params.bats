#!/usr/bin/env bats
# vorl dh params: groups are made, shown and judged.

load support
load dh_support

@test "a new group is PEM text that OpenSSL takes" {
    succeeds vorl dh params new --bits 512
    equals "${lines[0]}" "-----BEGIN DH PARAMETERS-----"
    echo "$output" >group
    run openssl dhparam -in group -check -noout
    equals "$status" 0
    contains "$output" "DH parameters appear to be ok."
    run openssl dhparam -in group -text -noout
    contains "$output" "DH Parameters: (512 bit)"
    contains "$output" "(0x5)"
}

@test "-o writes it to a file that everybody may read" {
    succeeds vorl dh params new --bits 512 --generator 2 -o group
    equals "$output" ""
    equals "$(mode_of group)" 644
    run openssl dhparam -in group -text -noout
    contains "$output" "generator: 2 (0x2)" || contains "$output" "G:    2 (0x2)"
}

@test "a size that OpenSSL makes no group of is wrong usage" {
    for bits in 0 1 511 10001 99999999999 -1 0x400 1k; do
        refuses 2 "--bits: '$bits' is not a number from 512 to 10000" "'vorl dh params new --help' shows the usage" \
            vorl dh params new "--bits=$bits"
    done
}

@test "generators are 2 and 5, and nothing aborts for others" {
    for generator in 0 1 3 4 6 05 -5 x; do
        refuses 2 "--generator: $generator not in {2,5}" "'vorl dh params new --help' shows the usage" \
            vorl dh params new --bits 512 "--generator=$generator"
    done
}

@test "what cannot be written is told, and the search leaves nothing behind" {
    refuses 5 "cannot write 'nowhere/group': No such file or directory" "" \
        vorl dh params new --bits 512 -o nowhere/group
    equals "$(left_behind . key)" ""
}

@test "a terminal sees the search while it lasts" {
    script -q -e -c true /dev/null </dev/null >/dev/null || skip "no pseudo-terminal can be had here"
    in_terminal "'$VORL' dh params new --bits 512 -o group"
    equals "$status" 0
    contains "$output" "searching for a safe prime of 512 bits ... 0 s"
    # The line is gone in the end.
    [[ "$output" =~ \ {40,}$ ]]
    in_terminal "'$VORL' dh params new --bits 512 2>told >group"
    equals "$status$output" 0
    equals "$(cat told)" ""
}

@test "a group is shown from PEM text, DER, and the library's encoding as bytes or Base64" {
    octets "8080$(prime)0102" >blocks
    base64_text <blocks >base64
    openssl dhparam -in "$GROUP" -outform DER >der
    base64_text <der >base64-der
    succeeds vorl dh params show "$GROUP"
    local shown=$output
    equals "${lines[0]}" "bits in the prime: 1024"
    equals "${lines[1]}" "Diffie-Hellman-Parameters:"
    contains "$(tr -d ' :\n' <<<"$output")" "$(prime)"
    contains "$output" "generator:  02"
    for form in blocks base64 der base64-der; do
        succeeds vorl dh params show $form
        equals "$form: $output" "$form: $shown"
    done
    from_standard_input() {
        vorl dh params show - <der
    }
    succeeds from_standard_input
    equals "$output" "$shown"
}

@test "a number that is 0 is not taken for the other one" {
    # DER of two integers: the generator 5 without a prime, and the prime 5 without a generator.
    octets 3006020100020105 >no-prime
    octets 3006020105020100 >no-generator
    succeeds vorl dh params show no-prime
    equals "${lines[0]}" "bits in the prime: 0"
    succeeds vorl dh params show no-generator
    equals "${lines[0]}" "bits in the prime: 3"
    for group in no-prime no-generator; do
        run -1 --separate-stderr vorl dh params check "$group"
        contains "$output" "FAULT  "
    done
}

@test "text around the PEM block is passed over" {
    openssl dhparam -in "$GROUP" -text >text
    succeeds vorl dh params show text
    equals "${lines[0]}" "bits in the prime: 1024"
}

@test "what is no group is refused" {
    local no="holds no Diffie-Hellman parameters"
    for command in show check; do
        refuses 3 "cannot read 'missing': No such file or directory" "" vorl dh params $command missing
        refuses 3 "'note' $no: it is neither PEM text nor DER nor the encoding of a group" "" \
            vorl dh params $command note
        head -n 2 "$GROUP" >cut
        refuses 3 "'cut' $no: Unable to read DHParams from BIO" "" vorl dh params $command cut
        refuses 3 "'/dev/null' $no: it is neither PEM text nor DER nor the encoding of a group" "" \
            vorl dh params $command /dev/null
    done
    refuses 2 "FILE is required" "'vorl dh params show --help' shows the usage" vorl dh params show
}

@test "a PEM block that claims to be encrypted is refused, and no password is asked for" {
    sed '1a Proc-Type: 4,ENCRYPTED\nDEK-Info: AES-128-CBC,00112233445566778899AABBCCDDEEFF\n' "$GROUP" >encrypted
    refuses 3 "'encrypted' holds no Diffie-Hellman parameters: Unable to read DHParams from BIO" "" \
        timeout 20 "$VORL" dh params show encrypted
}

@test "a good group passes the check" {
    succeeds vorl dh params check "$GROUP"
    equals "$output" "bits in the prime: 1024
ok     the prime is a safe one, and the generator suits it"
}

@test "the check says that another size serves for no agreement" {
    vorl dh params new --bits 512 -o group
    succeeds vorl dh params check group
    contains "$output" "note: the group has 512 bits, and a secret is agreed in one of 1024"
}

# checked PRIME GENERATOR: the findings on a group of these numbers, given as hex.
checked() {
    octets "40${1}01$2" >blocks
    run --separate-stderr vorl dh params check blocks
    equals "$status" 1
    equals "$stderr" "vorl: error: the group in 'blocks' is not to be used"
}

@test "what OpenSSL finds wrong with a group is told in words, with status 1" {
    # 2^512 - 1 is a multiple of 3; 2^512 - 569 is prime, and no safe one.
    local ones not_safe
    ones=$(zeros 64 | tr 0 f)
    checked "$ones" 02
    contains "$output" "FAULT  the prime is not prime"
    not_safe=${ones:0:124}fdc7
    equals "$(openssl prime -hex "$not_safe" | grep -o 'is prime')" "is prime"
    checked "$not_safe" 02
    equals "$output" "bits in the prime: 512
note: the group has 512 bits, and a secret is agreed in one of 1024
FAULT  the prime is not a safe one: half of it is not prime"
    octets "8080$(prime)0101" >blocks
    run --separate-stderr vorl dh params check blocks
    equals "$status" 1
    contains "$output" "FAULT  the generator is not suitable: it has to lie between 1 and the prime - 1"
}

@test "a group that OpenSSL knows by name is held to a safe prime, too" {
    # RFC 5114, section 2.1: its subgroup has 160 bits.
    openssl genpkey -genparam -algorithm DHX -pkeyopt dh_rfc5114:1 -out x942
    local p g
    p=$(openssl asn1parse -in x942 | sed -n 's/.*INTEGER *://p' | sed -n 1p)
    g=$(openssl asn1parse -in x942 | sed -n 's/.*INTEGER *://p' | sed -n 2p)
    octets "8080${p}8080$g" >blocks
    run --separate-stderr vorl dh params check blocks
    equals "$status" 1
    equals "$output" "bits in the prime: 1024
FAULT  the prime is not a safe one: half of it is not prime"
    equals "$stderr" "vorl: error: the group in 'blocks' is not to be used"
}
