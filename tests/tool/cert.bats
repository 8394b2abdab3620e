#!/usr/bin/env bats
# vorl cert show, vorl cert check: what a certificate says, and what is judged of it.

load support
load pki_support

CHAIN="not checked: the chain of trust, which is whether its issuer signed the certificate and can be trusted
not checked: revocation, names, and what the key may be used for"

# fact NAME FILE: a text among the facts of a report in JSON.
fact() {
    vorl cert show --json "$2" | sed -n "s/^    \"$1\": \(.*\)\$/\1/p" | sed 's/,$//; s/^"//; s/"$//'
}

digest_of() {
    openssl dgst -sha256 -r "$@" | cut -d ' ' -f 1
}

@test "show tells what OpenSSL's own command tells" {
    rsa_key service 2048
    certificate service service 20200101000000Z 20501231235959Z
    openssl x509 -in service.crt -outform DER -out service.der
    equals "$(fact commonName service.crt)" service.example
    equals "$(fact subject service.crt)" "O=Example,CN=service.example"
    equals "$(fact issuer service.crt)" "O=Example,CN=service.example"
    local serial
    serial=$(openssl x509 -in service.crt -noout -serial)
    equals "$(fact serial service.crt)" "$(tr A-F a-f <<<"${serial#serial=}")"
    equals "$(fact notBefore service.crt)" 2020-01-01T00:00:00Z
    equals "$(fact notAfter service.crt)" 2050-12-31T23:59:59Z
    equals "$(fact keyAlgorithm service.crt)" RSA
    equals "$(fact keyBits service.crt)" 2048
    equals "$(fact publicExponent service.crt)" 65537
    equals "$(fact keySha256 service.crt)" "$(digest_of <(openssl pkey -in service.pem -pubout -outform DER))"
    equals "$(fact signatureAlgorithm service.crt)" sha256WithRSAEncryption
    equals "$(fact sha256 service.crt)" "$(digest_of service.der)"
}

@test "show as text has the same facts, and says what they do not show" {
    rsa_key service
    certificate service service
    succeeds vorl cert show service.crt
    equals "${lines[0]}" "certificate, given as PEM text: $(stat -c %s service.crt) bytes"
    contains "$output" "subject's common name: service.example
subject: O=Example,CN=service.example
issuer: O=Example,CN=service.example
serial number: "
    contains "$output" "
not valid before: 2020-01-01T00:00:00Z
not valid after: 2099-12-31T23:59:59Z
key algorithm: RSA
bits in the key: 1024
public exponent: 65537
SHA-256 of the public key: "
    contains "$output" "
signature algorithm: sha256WithRSAEncryption
SHA-256 of the certificate: "
    contains "$output" "
This does not show:
- whether it is valid now: 'vorl cert check' tells
- whether its issuer signed it, and whether that one can be trusted: vorl does not check the chain of trust"
}

@test "show reads PEM text, Base64 text and DER, as inspect does" {
    rsa_key service
    certificate service service
    openssl x509 -in service.crt -outform DER -out service.der
    base64_text <service.der >service.b64
    for form in crt der b64; do
        succeeds vorl cert show service.$form
        equals "$output" "$(vorl inspect service.$form)"
        succeeds vorl cert show --json service.$form
        equals "$output" "$(vorl inspect --json service.$form)"
    done
    succeeds vorl cert show - <service.der
}

@test "the certificate is found among other blocks, and no key beside it is shown" {
    rsa_key service
    certificate service service
    cat service.pem service.crt >bundle
    succeeds vorl cert show bundle
    contains "$output" "subject's common name: service.example"
    [[ "$output" != *"private exponent"* ]]
}

@test "a name is shown in ASCII, whatever is in it" {
    rsa_key service
    rm -rf ca
    for name in "/CN=caf\\C3\\A9:café" "/CN=a\\,b\\;c\\<d:a,b;c<d" "/CN=tab\\09:tab"$'\t'; do
        local expected=${name%%:*} given=${name#*:}
        openssl req -x509 -new -key service.pem -utf8 -subj "/CN=$given" -out named.crt -days 2
        equals "$(vorl cert show named.crt | sed -n "s/^subject's common name: //p")" "${expected#/CN=}"
    done
}

@test "a subject without a common name, or with an empty one, says so" {
    rsa_key service
    openssl req -x509 -new -key service.pem -subj "/O=Example" -out none.crt -days 2
    succeeds vorl cert show none.crt
    contains "$output" "- a common name: its subject has none"
    [[ "$output" != *"subject's common name: "* ]]
    contains "$output" $'\n'"subject: O=Example"$'\n'
}

@test "a certificate for a key that signatures do not take is shown all the same" {
    other_keys
    for algorithm in $OTHER_ALGORITHMS; do
        openssl req -x509 -new -key $algorithm.pem -subj "/CN=$algorithm" -out $algorithm.crt -days 2
        equals "$(fact keyAlgorithm $algorithm.crt)" $algorithm
        succeeds vorl cert show $algorithm.crt
        contains "$output" "the library says: Unknown EVP_PKEY type value: "
    done
}

@test "bytes behind a certificate in DER are told" {
    rsa_key service
    certificate service service
    openssl x509 -in service.crt -outform DER -out service.der
    local size
    size=$(stat -c %s service.der)
    { cat service.der && octets 0000; } >long.der
    run --separate-stderr vorl cert show long.der
    equals "$status" 3
    equals "$stderr" "vorl: error: 'long.der', at offset $size: the certificate ends here, but 2 more bytes follow"
    contains "$output" "subject's common name: service.example"
}

@test "a period that is none is shown as OpenSSL calls it, and not judged" {
    rsa_key service
    certificate service service 20200101000000Z 20301231235959Z
    openssl x509 -in service.crt -outform DER -out service.der
    local text="the validity period of the certificate cannot be compared with"
    LC_ALL=C sed 's/200101000000Z/209901000000Z/' service.der >begin.der
    LC_ALL=C sed 's/301231235959Z/301299235959Z/' service.der >end.der
    for form in begin end; do
        run ! cmp -s service.der $form.der
        succeeds vorl cert show $form.der
        contains "$output" ": Bad time value"$'\n'
        for options in "" "--at 2026-11-21"; do
            # shellcheck disable=SC2086
            refuses 3 "$text" "'vorl cert show' shows it" vorl cert check $options $form.der
        done
    done
}

@test "what is no certificate is told" {
    rsa_key service
    certificate service service
    local start="cannot read the certificate from"
    for command in show check; do
        refuses 3 "$start 'note': neither PEM text nor DER of a certificate" "" vorl cert $command note
        refuses 3 "$start '/dev/null': neither PEM text nor DER of a certificate" "" vorl cert $command /dev/null
        refuses 3 "$start 'service.pem': PEM text of another kind: PRIVATE KEY" "" vorl cert $command service.pem
        head -n 5 service.crt >cut.crt
        refuses 3 "$start 'cut.crt': PEM_read_bio_X509() failed in OpenSSL" "" vorl cert $command cut.crt
        refuses 3 "cannot read 'missing': No such file or directory" "" vorl cert $command missing
        refuses 3 "cannot read '.': it is a directory" "" vorl cert $command .
        refuses 3 "cannot read '/dev/zero': it is larger than 1048576 bytes, which is more than is ever needed" "" \
            vorl cert $command /dev/zero
        refuses 2 "CERT is required" "'vorl cert $command --help' shows the usage" vorl cert $command
    done
}

@test "a block that claims to be encrypted is refused at once, with a standard input that says nothing" {
    { echo "-----BEGIN CERTIFICATE-----" && echo "Proc-Type: 4,ENCRYPTED" &&
        echo "DEK-Info: AES-128-CBC,$IV_HEX" && echo && base64_text <note && echo &&
        echo "-----END CERTIFICATE-----"; } >encrypted.crt
    for command in show check; do
        refuses 3 "cannot read the certificate from 'encrypted.crt': PEM_read_bio_X509() failed in OpenSSL" "" \
            idle "$VORL" cert $command encrypted.crt
    done
}

@test "check finds a certificate good, and says what it has not checked" {
    rsa_key service 2048
    certificate service service
    succeeds vorl cert check service.crt
    equals "$output" "subject: O=Example,CN=service.example
ok     time: it is within its validity period now
ok     key: RSA, 2048 bits
$CHAIN"
}

@test "check refuses a certificate that is not valid yet, or no longer" {
    rsa_key service
    certificate early service 20980101000000Z 20991231235959Z
    certificate late service 20200101000000Z 20201231235959Z
    run --separate-stderr vorl cert check early.crt
    equals "$status $stderr" "1 vorl: error: the certificate in 'early.crt' is not to be used"
    contains "$output" "FAULT  time: it is not valid before 2098-01-01T00:00:00Z"
    run --separate-stderr vorl cert check late.crt
    equals "$status $stderr" "1 vorl: error: the certificate in 'late.crt' is not to be used"
    contains "$output" "FAULT  time: it is not valid after 2020-12-31T23:59:59Z"
    contains "$output" "ok     key: RSA, 1024 bits"
}

@test "check judges at the time that --at names" {
    rsa_key service
    certificate service service 20380119031408Z 20500101000000Z
    for time in 2038-01-19T03:14:08Z 2049-12-31T23:59:59Z; do
        succeeds vorl cert check --at $time service.crt
        contains "$output" "ok     time: it is within its validity period at $time"
    done
    for time in 2038-01-19T03:14:07Z 2050-01-01; do
        run --separate-stderr vorl cert check --at $time service.crt
        equals "$time $status" "$time 1"
    done
    refuses 2 "--at: 'today' is no time such as 2026-11-21T12:00:00Z or 2026-11-21" \
        "'vorl cert check --help' shows the usage" vorl cert check --at today service.crt
}

@test "check refuses a certificate whose key verifies nothing" {
    other_keys
    for algorithm in $OTHER_ALGORITHMS; do
        openssl req -x509 -new -key $algorithm.pem -subj "/CN=$algorithm" -out $algorithm.crt -days 2
        run --separate-stderr vorl cert check $algorithm.crt
        equals "$status $stderr" "1 vorl: error: the certificate in '$algorithm.crt' is not to be used"
        contains "$output" "FAULT  key: its algorithm is $algorithm; signatures take RSA"
    done
}

@test "a full standard output is told" {
    rsa_key service
    certificate service service
    for command in show "show --json" check; do
        # shellcheck disable=SC2086
        full() {
            vorl cert $command service.crt >/dev/full
        }
        refuses 5 "cannot write standard output: No space left on device" "" full
    done
}

@test "a word is needed behind cert, and an unknown one is refused" {
    refuses 2 "a command is needed" "'vorl cert --help' lists the commands" vorl cert
    refuses 2 "there is no command 'cert frobnicate'" "'vorl cert --help' lists the commands" vorl cert frobnicate
}

@test "a name reaches no terminal as it is" {
    rsa_key service
    openssl req -x509 -new -key service.pem -utf8 -subj "/CN=a"$'\e]0;b\a\e[31m\xc2\x9b31m\r' -out named.crt -days 2
    local name="a\\1B]0\\;b\\07\\1B[31m\\C2\\9B31m\\0D"
    for command in show "show --json"; do
        # shellcheck disable=SC2086
        equals "$(vorl cert $command named.crt | LC_ALL=C grep -c $'[^ -~]')" 0
    done
    succeeds vorl cert show named.crt
    equals "${lines[1]} ${lines[2]} ${lines[3]}" "subject's common name: $name subject: CN=$name issuer: CN=$name"
    run --separate-stderr vorl cert check named.crt
    equals "${lines[0]}" "subject: CN=$name"
}
