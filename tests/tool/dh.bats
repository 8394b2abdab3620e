#!/usr/bin/env bats
# vorl dh: key pairs, the texts that peers exchange, and the secrets that they come to share.

load support
load dh_support

@test "a key pair is what DiffieHellman::encode() writes, and for its owner alone" {
    umask 000
    succeeds vorl dh new -p "$GROUP" -o state
    equals "$output" ""
    equals "$(mode_of state)" 600
    equals "$(part state 0 132 | hex)" "8080$(prime)0102"
    # Both keys have 128 bytes, or fewer by chance.
    [ "$(stat -c %s state)" -gt $((132 + 2 * 100)) ]
    vorl dh new -p "$GROUP" -o another
    run cmp -s state another
    equals "$status" 1
}

@test "a state that others could read is replaced by one that they cannot" {
    echo old >state
    chmod 666 state
    succeeds vorl dh new -p "$GROUP" -o state
    equals "$(mode_of state)" 600
    equals "$(left_behind . key state)" ""
}

@test "the state is never open to others, not even for a moment" {
    command -v strace >/dev/null || skip "there is no strace here"
    umask 000
    strace -f -e trace=file,fchmod -o trace "$VORL" dh new -p "$GROUP" -o state || skip "strace may not trace here"
    contains "$(grep O_CREAT trace)" "0600"
    run grep -E '(O_CREAT|fchmod\().*, 0[0-7]*[1-7][0-7]?\)' trace
    equals "$status" 1
}

@test "parameters are read in any of their forms, and from standard input" {
    octets "8080$(prime)0102" >blocks
    openssl dhparam -in "$GROUP" -outform DER >der
    for form in blocks der; do
        succeeds vorl dh new -p $form -o state
        equals "$(part state 0 132 | hex)" "8080$(prime)0102"
    done
    from_standard_input() {
        vorl dh new -p - -o state <"$GROUP"
    }
    succeeds from_standard_input
}

@test "a group of another size makes a pair, with a word about it" {
    vorl dh params new --bits 512 -o group
    run --separate-stderr vorl dh new -p group -o state
    equals "$status$output" 0
    equals "$stderr" "vorl: hint: the group has 512 bits, and a secret is agreed in one of 1024"
    refuses 3 "'state': the group has 512 bits, and a secret is agreed in one of 1024" "" \
        vorl dh secret state "$(peer_text 03)" -o secret
    [ ! -e secret ]
}

@test "a group that OpenSSL makes no keys for is refused" {
    octets "08ffffffffffffffc50102" >tiny
    refuses 3 "OpenSSL makes no key pair for the group in 'tiny'" \
        "'vorl dh params check' says what is wrong with a group" vorl dh new -p tiny -o state
    [ ! -e state ]
}

@test "what dh new needs has to be named" {
    refuses 2 "--params is required" "'vorl dh new --help' shows the usage" vorl dh new -o state
    refuses 2 "--output is required" "'vorl dh new --help' shows the usage" vorl dh new -p "$GROUP"
    refuses 3 "'note' holds no Diffie-Hellman parameters: it is neither PEM text nor DER nor the encoding of a group" \
        "" vorl dh new -p note -o state
    refuses 5 "cannot write 'nowhere/state': No such file or directory" "" vorl dh new -p "$GROUP" -o nowhere/state
    equals "$(left_behind . key)" ""
}

@test "the text for the peer is a record of the public key, padded" {
    state four 02 04
    succeeds vorl dh pub four
    equals "$output" "$(peer_text 04)"
    from_standard_input() {
        vorl dh pub - <four
    }
    succeeds from_standard_input
    equals "$output" "$(peer_text 04)"
    # The top bit of 128 bytes would make them look negative.
    octets "8080$(prime)01028080$(tr 0 8 <<<"$(zeros 128)")0102" >large
    succeeds vorl dh pub large
    equals "$output" "$(octets "00000002808100$(tr 0 8 <<<"$(zeros 128)")" | base64_text)"
}

@test "a group that is too large makes no record" {
    octets "81007f$(zeros 255 | tr 0 f)01028100ff$(zeros 254)010105" >large
    run --separate-stderr vorl dh pub large
    equals "$status$output" 3
    contains "$stderr" "vorl: error: 'large': the group has 2047 bits, and a secret is agreed in one of 1024"
}

@test "what is no key pair is refused" {
    local hint="'vorl dh new' makes one; 'vorl inspect --as dh-state' shows where it goes wrong"
    state whole 02 04
    head -c $(($(stat -c %s whole) - 1)) whole >cut
    { cat whole && echo; } >more
    octets "8080$(prime)0102" >group
    base64_text <whole >text
    for input in cut more group text note /dev/null; do
        refuses 3 "'$input' holds no key pair" "$hint" vorl dh pub $input
        refuses 3 "'$input' holds no key pair" "$hint" vorl dh secret $input "$(peer_text 03)" -o secret
    done
    refuses 3 "cannot read 'missing': No such file or directory" "" vorl dh pub missing
    refuses 2 "STATE is required" "'vorl dh pub --help' shows the usage" vorl dh pub
    [ ! -e secret ]
}

@test "the secret is the peer's number to the power of one's own" {
    # 3 to the power of 2: leading zeros are left out, the rest stands at the front, and the last byte is 0.
    state two 02 04
    succeeds vorl dh secret two "$(peer_text 03)" -o secret
    equals "$output" ""
    equals "$(hex secret)" "09$(zeros 127)"
    equals "$(mode_of secret)" 600
    # 2^511 squared is 2^1022, a number of all 128 bytes.
    succeeds vorl dh secret two "$(peer_text "80$(zeros 63)")" -o secret
    equals "$(hex secret)" "40$(zeros 127)"
}

@test "the secret agrees with OpenSSL's" {
    openssl genpkey -paramfile "$GROUP" -out peer.pem 2>/dev/null
    # OpenSSL's command takes a public key as SubjectPublicKeyInfo: PKCS #3's algorithm, and the number as an
    # INTEGER in a BIT STRING, which takes a zero byte in front of a number with its top bit set.
    local own=0 info
    until [[ "$own" == [89a-f]* ]]; do
        vorl dh new -p "$GROUP" -o state
        own=$(vorl dh pub state | openssl base64 -d -A | tail -c 128 | hex)
    done
    info="30819506092a864886f70d010301$(openssl dhparam -in "$GROUP" -outform DER | hex)0381850002818100$own"
    octets "3082$(printf %04x $((${#info} / 2)))$info" | openssl pkey -pubin -inform DER -out own.pem
    openssl pkeyutl -derive -inkey peer.pem -peerkey own.pem -out expected
    local peer
    # What is in the BIT STRING behind the parameters of this group: an INTEGER without leading zeros.
    peer=$(openssl pkey -in peer.pem -pubout -outform DER | openssl asn1parse -inform DER -strparse 156 |
        sed -n 's/.*INTEGER *://p')
    succeeds vorl dh secret state "$(peer_text "$peer")" -o secret
    # OpenSSL's command leaves leading zeros out as well; the library overwrites the last byte of 128.
    equals "$(part secret 0 120 | hex)" "$(head -c 120 expected | hex)"
}

@test "the peer's text is given itself, as a file, or on standard input" {
    state two 02 04
    peer_text 03 >text
    { cat text && echo; } >line
    { cat text && printf '\r\n'; } >crlf
    for source in text line crlf ./line; do
        succeeds vorl dh secret two $source -o secret
        equals "$(hex secret)" "09$(zeros 127)"
        rm secret
    done
    from_standard_input() {
        vorl dh secret two - -o secret <line
    }
    succeeds from_standard_input
    equals "$(hex secret)" "09$(zeros 127)"
}

@test "a bare key is a record of version 1" {
    state two 02 04
    succeeds vorl dh secret two "$(octets "$(number 03)" | base64_text)" -o secret
    equals "$(hex secret)" "09$(zeros 127)"
}

@test "the key pair and the peer's text cannot be one stream" {
    state two 02 04
    from_standard_input() {
        vorl dh secret - - -o secret <two
    }
    refuses 2 "standard input cannot be both the key pair and the peer's text" "name a file for one of them" \
        from_standard_input
}

@test "a number that OpenSSL refuses makes no secret, and the tool says why" {
    state two 02 04
    local last
    last=$(prime)
    for peer in 00 01 "${last%f}e" "$last"; do
        refuses 4 "OpenSSL refuses the peer's number, so that there is no secret" \
            "no honest peer sends such a number: it may have been exchanged on its way" \
            vorl dh secret two "$(peer_text "$peer")" -o secret
        [ ! -e secret ]
    done
    echo old >secret
    run vorl dh secret two "$(peer_text 01)" -o secret
    equals "$(cat secret)" old
}

@test "a peer's text that is no record is refused" {
    state two 02 04
    local no="the peer's text is no public key" hint="'vorl inspect' shows what it is made of"
    as_text() {
        octets "$1" | base64_text
    }
    refuses 3 "$no: DH PubKey length (124) out of range" "$hint" \
        vorl dh secret two "$(as_text "$(zeros 124)")" -o secret
    refuses 3 "$no: DH public key from server is 119bytes, expected 120-129" "$hint" \
        vorl dh secret two "$(as_text "0000000277$(zeros 130)")" -o secret
    refuses 3 "$no: DH public key from server is 130bytes, expected 120-129" "$hint" \
        vorl dh secret two "$(as_text "000000028082$(zeros 130)")" -o secret
    refuses 3 "$no: Unknown DHPubKey version: 3" "$hint" \
        vorl dh secret two "$(as_text "00000003$(zeros 126)")" -o secret
    refuses 3 "'note' is not Base64 text: at character 5: the text has 5 characters, which is no multiple of 4: something is missing" \
        "" vorl dh secret two note -o secret
    refuses 3 "cannot read 'missing': No such file or directory" "" vorl dh secret two missing -o secret
    refuses 3 "'/dev/null' is not Base64 text: at character 0: the input is empty" "" \
        vorl dh secret two /dev/null -o secret
    [ ! -e secret ]
}

@test "what is secret goes to a terminal only with '-o -'" {
    script -q -e -c true /dev/null </dev/null >/dev/null || skip "no pseudo-terminal can be had here"
    state two 02 04
    for command in "new -p '$GROUP'" "secret two '$(peer_text 03)'"; do
        in_terminal "'$VORL' dh $command -o /dev/tty 2>told"
        equals "$status$output" 2
        contains "$(cat told)" "vorl: error: binary data is not written to a terminal"
    done
}

@test "'-o -' is standard output" {
    state two 02 04
    vorl dh secret two "$(peer_text 03)" -o - >secret
    equals "$(hex secret)" "09$(zeros 127)"
}

@test "no command says anything about the private key" {
    vorl dh new -p "$GROUP" -o state
    local private
    private=$(tail -c 60 state | hex)
    for command in "dh pub state" "inspect state" "inspect --json state" "dh secret state note -o x" \
        "inspect --as envelope note"; do
        # shellcheck disable=SC2086
        run vorl $command
        [[ "$output" != *"$private"* ]]
        [[ "$output" != *"$(tail -c 16 state | hex)"* ]]
    done
}
