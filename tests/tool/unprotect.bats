#!/usr/bin/env bats
# vorl unprotect: what it opens, what the policy refuses, and how little it tells about a failure.

load support

ONLY_FULL_HINT="if that is what the sender was meant to use: --accept"

@test "an envelope that OpenSSL's own command made opens" {
    bytes_of 100 >message
    full_envelope <message >envelope
    succeeds vorl unprotect -k key --raw envelope -o opened
    cmp opened message
    test_envelope <message >envelope
    succeeds vorl unprotect -k key --accept test --raw envelope -o opened
    cmp opened message
    { octets 0064 && cat message; } >envelope
    succeeds vorl unprotect --accept none --raw envelope -o opened
    cmp opened message
}

@test "a body in fragments, and lengths longer than needed, are read" {
    bytes_of 32800 >message
    openssl enc -aes-128-cbc -K "$KEY_HEX" -iv "$IV_HEX" -in message >body
    # 32816 bytes: twice 16384, and 48 behind a length of two bytes.
    { octets 028010$IV_HEX && octets c1 && part body 0 16384 && octets c1 && part body 16384 16384 &&
        octets 8030 && part body 32768 48; } >envelope
    succeeds vorl unprotect -k key --raw envelope -o opened
    cmp opened message
}

@test "the message goes to standard output unchanged" {
    printf 'no newline at the end' | full_envelope | base64_text >text
    vorl unprotect -k key text >opened
    equals "$(hex opened)" "$(printf 'no newline at the end' | hex)"
}

@test "one newline behind Base64 text is tolerated, LF or CRLF, or none" {
    echo hello | full_envelope | base64_text >text
    for end in '' '\n' '\r\n'; do
        # shellcheck disable=SC2059
        { cat text && printf "$end"; } >ended
        succeeds vorl unprotect -k key ended
        equals "$output" hello
    done
}

@test "more than one newline, or white space within, is no Base64 text" {
    echo hello | full_envelope | base64_text >text
    local white="white space or a line break within the text"
    printf '\n\n' | cat text - >twice
    refuses 3 "'twice' is not Base64 text: at character 48: $white" "" vorl unprotect -k key twice
    printf '\n' | cat - text >before
    refuses 3 "'before' is not Base64 text: at character 0: $white" "" vorl unprotect -k key before
    fold -w 20 text >folded
    refuses 3 "'folded' is not Base64 text: at character 20: $white" "" vorl unprotect -k key folded
}

@test "malformed Base64 is refused with the place" {
    refuses 3 "standard input is not Base64 text: at character 3: a character that Base64 does not have: 0x2d" "" \
        vorl unprotect -k key <<<"AhA-"
    refuses 3 "standard input is not Base64 text: at character 3: the text has 3 characters, which is no multiple \
of 4: something is missing" "" vorl unprotect -k key <<<"AhA"
    refuses 3 "standard input is not Base64 text: at character 2: a '=' that is not at the end of the text" "" \
        vorl unprotect -k key <<<"Ah=="Ah==
    refuses 3 "standard input is not Base64 text: at character 1: the last character has bits that belong to no byte" \
        "" vorl unprotect -k key <<<"Ah=="
}

@test "a raw envelope without --raw, and a text with it, are told" {
    echo hello | full_envelope >envelope
    refuses 3 "'envelope' is not Base64 text: at character 0: a character that Base64 does not have: 0x02" \
        "it begins like an envelope itself: --raw reads one" vorl unprotect -k key envelope
    base64_text <envelope >text
    refuses 3 "'text' is not a whole envelope: Unknown CipherWrapper version: 0x41" \
        "it is Base64 text, which is read without --raw" vorl unprotect -k key --raw text
}

@test "an empty input is refused" {
    refuses 3 "'/dev/null' is empty" "" vorl unprotect -k key /dev/null
    refuses 3 "'/dev/null' is empty" "" vorl unprotect -k key --raw /dev/null
    refuses 3 "standard input is not Base64 text: at character 0: the input is empty" "" vorl unprotect -k key <<<""
}

@test "a malformed envelope is refused, whatever the key" {
    local hint="'vorl inspect' shows where it goes wrong"
    echo hello | full_envelope >envelope
    head -c 34 envelope >short
    refuses 3 "'short' is not a whole envelope: Unable to read 16 bytes from buffer, only 15 available" "$hint" \
        vorl unprotect -k key --raw short
    printf x | cat envelope - >long
    refuses 3 "'long' is not a whole envelope: Buffer is not empty after parsing decrypted data; 1 bytes remain" \
        "$hint" vorl unprotect -k key --raw long
    octets 0208aaaaaaaaaaaaaaaa10$IV_HEX >iv
    refuses 3 "'iv' is not a whole envelope: Parsed IV length(8) != CipherSpec iv size(16" "$hint" \
        vorl unprotect -k key --raw iv
    octets 7f >unknown
    refuses 3 "'unknown' is not a whole envelope: Unknown CipherWrapper version: 0x7f" "$hint" \
        vorl unprotect -k key --raw unknown
    { octets 00c1 && head -c 16384 /dev/zero; } >unclosed
    refuses 3 "'unclosed' is not a whole envelope: index out of bounds: read index(16386) >= write index(16386)" \
        "$hint" vorl unprotect --accept none --raw unclosed
}

@test "only the level full is accepted unless more is said" {
    echo hello | test_envelope >test
    refuses 1 "the message is protected at the level test, which is not accepted" "$ONLY_FULL_HINT full,test" \
        vorl unprotect -k key --raw test -o out
    octets 000568656c6c6f >none
    refuses 1 "the message is protected at the level none, which is not accepted" "$ONLY_FULL_HINT full,none" \
        vorl unprotect -k key --raw none -o out
    [ ! -e out ]
}

@test "what is refused is refused before the rest of it is read" {
    octets 01 >cut
    refuses 1 "the message is protected at the level test, which is not accepted" "$ONLY_FULL_HINT full,test" \
        vorl unprotect -k key --raw cut
}

@test "--accept names exactly what is accepted" {
    echo hello | full_envelope >full
    echo hello | test_envelope >test
    { octets 0006 && echo hello; } >none
    for accept in full test none full,test full,none test,none full,test,none none,full; do
        for level in full test none; do
            run --separate-stderr vorl unprotect -k key --accept $accept --raw $level
            if [[ ",$accept," == *",$level,"* ]]; then
                equals "$status $output" "0 hello"
            else
                equals "$status $output" "1 "
                contains "$stderr" "hint: $ONLY_FULL_HINT $accept,$level"
            fi
        done
    done
}

@test "--accept takes levels only" {
    local hint="give a list of full, test and none, for example --accept full,test"
    refuses 2 "--accept: there is no level 'high'" "$hint" vorl unprotect -k key --accept full,high key
    refuses 2 "--accept: there is no level ''" "$hint" vorl unprotect -k key --accept full, key
    refuses 2 "--accept: there is no level ''" "$hint" vorl unprotect -k key --accept "" key
}

@test "a key is needed unless only the level none is accepted" {
    refuses 2 "a key is needed" "name its file with -k, or pass it with --key-fd" vorl unprotect key
    refuses 2 "a key is needed" "name its file with -k, or pass it with --key-fd" \
        vorl unprotect --accept none,test key
    octets 000568656c6c6f >none
    succeeds vorl unprotect --accept none --raw none
    equals "$output" hello
}

# For these keys and envelopes the padding breaks, as OpenSSL's own command confirms: it does not always.
does_not_open_elsewhere() {
    run ! openssl enc -d "$1" -K "$2" ${3:+-iv "$3"} -in "$4" -out /dev/null
}

@test "a wrong key and damaged data are answered with the same words" {
    echo "$WRONG_KEY_HEX" >wrong
    printf 'vorl doctor' | full_envelope >full
    part full 19 16 >body
    does_not_open_elsewhere -aes-128-cbc "$WRONG_KEY_HEX" "$IV_HEX" body
    refuses 4 "$CANNOT_OPEN" "" vorl unprotect -k wrong --raw full -o out

    octets "$(hex full | sed 's/83$/82/')" >damaged
    run ! cmp -s full damaged
    part damaged 19 16 >body
    does_not_open_elsewhere -aes-128-cbc "$KEY_HEX" "$IV_HEX" body
    refuses 4 "$CANNOT_OPEN" "" vorl unprotect -k key --raw damaged -o out

    printf 'vorl doctor' | test_envelope >test
    part test 2 16 >body
    does_not_open_elsewhere -aes-128-ecb "$WRONG_KEY_HEX" "" body
    refuses 4 "$CANNOT_OPEN" "" vorl unprotect -k wrong --accept test --raw test -o out
    [ ! -e out ]
}

@test "a body that no key opens is malformed, whatever the key" {
    local hint="'vorl inspect' shows where it goes wrong"
    local needed="what a key opens has a multiple of 16, and at least that"
    local rest=0102030405060708090a0b0c0d0e0f
    echo "$WRONG_KEY_HEX" >wrong
    for prefix in "0210$IV_HEX" 01; do
        for key in key wrong; do
            octets "${prefix}00" >body
            refuses 3 "'body' is not a whole envelope: the body has 0 bytes; $needed" "$hint" \
                vorl unprotect -k $key --accept full,test --raw body -o out
            octets "${prefix}01aa" >body
            refuses 3 "'body' is not a whole envelope: the body has 1 byte; $needed" "$hint" \
                vorl unprotect -k $key --accept full,test --raw body -o out
            octets "${prefix}0f$rest" >body
            refuses 3 "'body' is not a whole envelope: the body has 15 bytes; $needed" "$hint" \
                vorl unprotect -k $key --accept full,test --raw body -o out
            octets "${prefix}11${rest}1011" >body
            refuses 3 "'body' is not a whole envelope: the body has 17 bytes; $needed" "$hint" \
                vorl unprotect -k $key --accept full,test --raw body -o out
        done
    done
    [ ! -e out ]
}
