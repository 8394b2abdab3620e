#!/usr/bin/env bats
# vorl verify: signatures by OpenSSL's own command, those that do not match, and what is no signature.

load support
load pki_support

CHAIN="not checked: the chain of trust, which is whether its issuer signed the certificate and can be trusted"
TIME_HINT="--at TIME judges it at another time, --ignore-time at none"
INSPECT_HINT="'vorl inspect --as signature' shows where it goes wrong"

@test "a signature by OpenSSL's own command matches, as Base64 text and raw" {
    for bits in 1024 2048; do
        rsa_key service $bits
        signed service note >text
        openssl base64 -d -A <text >raw
        echo >>text
        for signature in text raw; do
            succeeds vorl verify -k service.pub -s $signature note
            equals "$output" "the signature matches"
        done
    done
}

@test "an input of any size is verified, in pieces" {
    rsa_key service
    for size in 0 1 65535 65536 65537 300000; do
        bytes_of $size >message
        signed service message >signature
        succeeds vorl verify -k service.pub -s signature message
        head -c $size message | vorl verify -k service.pub -s signature
    done
}

@test "what sign writes, verify takes" {
    rsa_key service
    vorl sign -k service.pem note -o signature
    succeeds vorl verify -k service.pub -s signature note
}

@test "a signature that does not match is a clear no" {
    rsa_key service
    rsa_key other
    signed service note >signature
    local no="the signature does not match"
    echo hellp >changed
    refuses 1 "$no" "" vorl verify -k service.pub -s signature changed
    refuses 1 "$no" "" vorl verify -k other.pub -s signature note
    # One bit of the value.
    openssl base64 -d -A <signature >raw
    { part raw 0 130 && octets "$(printf %02x $((0x$(hex <(part raw 130 1)) ^ 1)))"; } >flipped
    run ! cmp -s raw flipped
    refuses 1 "$no" "" vorl verify -k service.pub -s flipped note
    # A value of another size, an empty one, and one over another digest.
    octets 0101ff >short
    octets 0100 >empty
    openssl dgst -sha256 -sign service.pem -out .signature note
    record .signature >sha256
    for signature in short empty sha256; do
        refuses 1 "$no" "" vorl verify -k service.pub -s $signature note
    done
}

@test "a malformed record is told, whatever the key" {
    rsa_key service
    signed service note | openssl base64 -d -A >raw
    refuses_record() {
        refuses 3 "'broken' is not a signature record: $1" "$INSPECT_HINT" vorl verify -k service.pub -s broken note
    }
    { octets 02 && part raw 1 130; } >broken
    refuses_record "Unknown PKSignature version: [UInt8: 0x 02]"
    head -c 130 raw >broken
    refuses_record "Unable to read 128 bytes from buffer, only 127 available"
    { cat raw && octets 00; } >broken
    refuses_record "1 byte behind its end"
    { cat raw && octets 0000; } | base64_text >broken
    refuses_record "2 bytes behind its end"
}

@test "each truncation of a record is malformed" {
    rsa_key service
    signed service note | openssl base64 -d -A >raw
    for ((size = 1; size < 131; size += STRIDE)); do
        head -c $size raw >short
        run --separate-stderr vorl verify -k service.pub -s short note
        equals "$size: $status" "$size: 3"
    done
}

@test "a text that is nearly Base64 is told at which character it is not" {
    rsa_key service
    signed service note | fold -w 60 >folded
    refuses 3 "'folded' is not a signature record: at character 60: white space or a line break within the text" "" \
        vorl verify -k service.pub -s folded note
    refuses 3 "'/dev/null' is empty" "" vorl verify -k service.pub -s /dev/null note
}

@test "the key, the signature and the input each need a stream of their own" {
    rsa_key service
    signed service note >signature
    equals "$(vorl verify -k service.pub -s - note <signature)" "the signature matches"
    equals "$(vorl verify -k - -s signature note <service.pub)" "the signature matches"
    local hint="name a file for one of them"
    refuses 2 "standard input cannot be both the signature and the input" "$hint" \
        vorl verify -k service.pub -s - <signature
    refuses 2 "standard input cannot be both the key and the input" "$hint" \
        vorl verify -k - -s signature <service.pub
    refuses 2 "standard input cannot be both the certificate and the signature" "$hint" \
        vorl verify --cert - -s - note <signature
    under_another_name() {
        head -c 1000 signature | vorl verify -k service.pub -s /dev/stdin
    }
    refuses 2 "'/dev/stdin' cannot be both the signature and the input" "$hint" under_another_name
}

@test "a file may be the key and what was signed" {
    rsa_key service
    signed service service.pub >signature
    succeeds vorl verify -k service.pub -s signature service.pub
}

@test "what is needed, and what excludes what" {
    local hint="'vorl verify --help' shows the usage"
    refuses 2 "a key is needed" "name the file of the public key with -k, or of a certificate with --cert" \
        vorl verify -s signature note
    refuses 2 "--signature is required" "$hint" vorl verify -k key note
    refuses 2 "--key excludes --cert" "$hint" vorl verify -k key --cert key -s signature note
    refuses 2 "--at requires --cert" "$hint" vorl verify -k key -s signature --at 2026-11-21 note
    refuses 2 "--ignore-time requires --cert" "$hint" vorl verify -k key -s signature --ignore-time note
    refuses 2 "--at excludes --ignore-time" "$hint" \
        vorl verify --cert key -s signature --ignore-time --at 2026-11-21 note
}

@test "a key of another algorithm is refused by its name, and so is a certificate for one" {
    other_keys
    rsa_key service
    signed service note >signature
    for algorithm in $OTHER_ALGORITHMS; do
        refuses 3 "cannot read the public key from '$algorithm.pub': its algorithm is $algorithm; signatures take RSA" \
            "" vorl verify -k $algorithm.pub -s signature note
    done
    certificate ec EC
    refuses 3 "the key of the certificate in 'ec.crt' is of no use: its algorithm is EC; signatures take RSA" "" \
        vorl verify --cert ec.crt -s signature note
}

@test "a file that holds no public key is told, with what helps" {
    rsa_key service
    certificate service service
    signed service note >signature
    local start="cannot read the public key from"
    refuses 3 "$start 'note': it is no PEM text" "" vorl verify -k note -s signature note
    refuses 3 "$start 'service.pem': it is PEM text of another kind: PRIVATE KEY" \
        "'openssl pkey -in FILE -pubout' makes the public key of it" vorl verify -k service.pem -s signature note
    refuses 3 "$start 'service.crt': it is PEM text of another kind: CERTIFICATE" "--cert reads a certificate" \
        vorl verify -k service.crt -s signature note
    head -n 3 service.pub >cut.pub
    refuses 3 "$start 'cut.pub': its content is malformed" "" vorl verify -k cut.pub -s signature note
    refuses 3 "cannot read '/dev/zero': it is larger than 1048576 bytes, which is more than is ever needed" "" \
        vorl verify -k /dev/zero -s signature note
}

@test "a certificate stands in for its key, in each form, and the chain of trust is not checked" {
    rsa_key service
    certificate service service
    signed service note >signature
    openssl x509 -in service.crt -outform DER -out service.der
    base64_text <service.der >service.b64
    for form in crt der b64; do
        succeeds vorl verify --cert service.$form -s signature note
        equals "$output" "the signature matches
signer, by the certificate: O=Example,CN=service.example
the certificate is within its validity period now
$CHAIN"
    done
}

@test "a signature that does not match is a clear no with a certificate too" {
    rsa_key service
    rsa_key other
    certificate other other
    signed service note >signature
    refuses 1 "the signature does not match" "" vorl verify --cert other.crt -s signature note
}

@test "a certificate that is not valid yet, or no longer, is refused" {
    rsa_key service
    signed service note >signature
    certificate early service 20980101000000Z 20991231235959Z
    refuses 1 "the certificate in 'early.crt' is out of its time: it is not valid before 2098-01-01T00:00:00Z" \
        "$TIME_HINT" vorl verify --cert early.crt -s signature note
    certificate late service 20200101000000Z 20201231235959Z
    refuses 1 "the certificate in 'late.crt' is out of its time: it is not valid after 2020-12-31T23:59:59Z" \
        "$TIME_HINT" vorl verify --cert late.crt -s signature note
}

@test "--ignore-time judges the time of a certificate not at all, and says so" {
    rsa_key service
    signed service note >signature
    certificate late service 20200101000000Z 20201231235959Z
    succeeds vorl verify --cert late.crt --ignore-time -s signature note
    contains "$output" $'\n'"not checked: the validity period of the certificate"$'\n'
    contains "$output" "$CHAIN"
    echo hellp >changed
    refuses 1 "the signature does not match" "" vorl verify --cert late.crt --ignore-time -s signature changed
}

# judged_at TIME STATUS
judged_at() {
    run --separate-stderr vorl verify --cert service.crt --at "$1" -s signature note
    equals "$1: $status" "$1: $2"
}

@test "--at judges the time of a certificate at another time, on both sides of its bounds" {
    rsa_key service
    signed service note >signature
    certificate service service 20200229120000Z 20201231235959Z
    judged_at 2020-02-29T11:59:59Z 1
    judged_at 2020-02-29T12:00:00Z 0
    contains "$output" "the certificate is within its validity period at 2020-02-29T12:00:00Z"
    judged_at 2020-12-31T23:59:58Z 0
    # Its last second is no longer part of it, for the library as for OpenSSL's own commands.
    judged_at 2020-12-31T23:59:59Z 1
    judged_at 2020-02-29 1
    judged_at 2020-03-01 0
    judged_at 0000-01-01 1
    judged_at 9999-12-31T23:59:59Z 1
}

@test "--at works past 2038 and past 2050, whatever the size of a time stamp" {
    rsa_key service
    signed service note >signature
    certificate service service 20380119031407Z 21060207062816Z
    judged_at 2038-01-19T03:14:06Z 1
    judged_at 2038-01-19T03:14:07Z 0
    judged_at 2049-12-31T23:59:59Z 0
    judged_at 2050-01-01T00:00:00Z 0
    judged_at 2106-02-07T06:28:15Z 0
    judged_at 2106-02-07T06:28:16Z 1
}

@test "--at takes a time in UTC of two forms, and no other" {
    for time in now 2026 2026-11 20261121 2026-11-21T12:00Z 2026-11-21T12:00:00 2026-11-21T12:00:00+00:00 \
        "2026-11-21 12:00:00Z" 2026-11-21T12:00:00z 2026-11-21T12:00:00.5Z 2026-13-01 2026-02-29 2026-04-31 \
        2026-11-21T24:00:00Z 2026-11-21T12:60:00Z 2026-11-21T12:00:60Z 2026-00-01 2026-01-00 ""; do
        refuses 2 "--at: '$time' is no time such as 2026-11-21T12:00:00Z or 2026-11-21" \
            "'vorl verify --help' shows the usage" vorl verify --cert key -s signature --at "$time" note
    done
}

@test "a file that holds no certificate is told" {
    rsa_key service
    signed service note >signature
    local start="cannot read the certificate from"
    refuses 3 "$start 'note': neither PEM text nor DER of a certificate" "" \
        vorl verify --cert note -s signature note
    refuses 3 "$start 'service.pub': PEM text of another kind: PUBLIC KEY" "" \
        vorl verify --cert service.pub -s signature note
    refuses 3 "cannot read 'missing': No such file or directory" "" vorl verify --cert missing -s signature note
}

@test "an input that cannot be read is told" {
    rsa_key service
    signed service note >signature
    refuses 3 "cannot read 'missing': No such file or directory" "" vorl verify -k service.pub -s signature missing
    refuses 3 "cannot read 'missing': No such file or directory" "" vorl verify -k service.pub -s missing note
    refuses 3 "cannot read 'missing': No such file or directory" "" vorl verify -k missing -s signature note
    closed() {
        vorl verify -k service.pub -s signature <&-
    }
    refuses 3 "cannot read standard input: it is not open" "" closed
}

@test "the time of a certificate is judged before the signature is looked at" {
    rsa_key service
    certificate late service 20200101000000Z 20201231235959Z
    octets 0200 >broken
    refuses 1 "the certificate in 'late.crt' is out of its time: it is not valid after 2020-12-31T23:59:59Z" \
        "$TIME_HINT" vorl verify --cert late.crt -s broken note
    refuses 3 "'broken' is not a signature record: Unknown PKSignature version: [UInt8: 0x 02]" "$INSPECT_HINT" \
        vorl verify --cert late.crt --ignore-time -s broken note
}

@test "the name of the signer reaches no terminal as it is" {
    rsa_key service
    openssl req -x509 -new -key service.pem -utf8 -subj "/CN=a"$'\e]0;b\a\e[31m\xc2\x9b31m\r' -out named.crt -days 2
    signed service note >signature
    succeeds vorl verify --cert named.crt --ignore-time -s signature note
    equals "${lines[1]}" "signer, by the certificate: CN=a\\1B]0\\;b\\07\\1B[31m\\C2\\9B31m\\0D"
}

@test "the key is found among other blocks, and the certificate too" {
    rsa_key service
    certificate service service
    signed service note >signature
    { echo "a comment" && cat service.pem service.crt service.pub; } >bundle
    equals "$(vorl verify -k bundle -s signature note)" "the signature matches"
    succeeds vorl verify --cert bundle -s signature note
    succeeds vorl verify --cert - -s signature note <bundle
}

@test "a certificate that claims to be encrypted is refused at once, with a standard input that says nothing" {
    { echo "-----BEGIN CERTIFICATE-----" && echo "Proc-Type: 4,ENCRYPTED" &&
        echo "DEK-Info: AES-128-CBC,$IV_HEX" && echo && base64_text <note && echo &&
        echo "-----END CERTIFICATE-----"; } >encrypted.crt
    refuses 3 "cannot read the certificate from 'encrypted.crt': PEM_read_bio_X509() failed in OpenSSL" "" \
        idle "$VORL" verify --cert encrypted.crt -s key note
}

@test "a standard output that is full or closed is told" {
    rsa_key service
    signed service note >signature
    full() {
        vorl verify -k service.pub -s signature note >/dev/full
    }
    refuses 5 "cannot write standard output: No space left on device" "" full
    closed() {
        vorl verify -k service.pub -s signature note >&-
    }
    refuses 5 "cannot write standard output: it is not open" "" closed
}
