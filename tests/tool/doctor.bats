#!/usr/bin/env bats
# vorl doctor: all is well here, and faults that a broken OpenSSL configuration makes are found.

load support

CHECKS="openssl random start-up platform base64 machine round-trip known-envelopes wrong-key damage"

# An OpenSSL without random numbers, or without ciphers.
without_random() {
    cat >openssl.cnf <<'CNF'
openssl_conf = settings
[settings]
random = generator
[generator]
random = NO-SUCH-GENERATOR
CNF
    export OPENSSL_CONF=$PWD/openssl.cnf
}
without_ciphers() {
    cat >openssl.cnf <<'CNF'
openssl_conf = settings
[settings]
providers = loaded
[loaded]
null = nothing
[nothing]
activate = 1
CNF
    export OPENSSL_CONF=$PWD/openssl.cnf
}

@test "every check is ok on a sound machine" {
    succeeds vorl doctor
    for check in $CHECKS; do
        contains $'\n'"$output" $'\n'"ok     $check: "
    done
    equals "${lines[-1]}" "Everything works."
    equals "${#lines[@]}" 11
}

@test "the machine is described" {
    succeeds vorl doctor
    contains "$output" "machine: $VORL_WORD_BITS-bit words, $VORL_FIRST_BYTE byte first; \
time stamps of $VORL_TIME_BITS bits"
}

@test "--json shows the same" {
    succeeds vorl doctor --json
    contains "$output" '{
  "version": "'"$VORL_VERSION"'",
  "ok": true,
  "checks": [
    {
      "name": "openssl",
      "ok": true,
      "detail": "built with OpenSSL '
    for check in $CHECKS; do
        contains "$output" '"name": "'"$check"'",
      "ok": true,'
    done
    [[ "$output" != *'"ok": false'* ]]
}

@test "a random generator that does not work is a fault with advice" {
    without_random
    run --separate-stderr vorl doctor
    equals "$status" 5
    contains "$output" "FAULT  random: OpenSSL's random generator is not ready
       what to do: look for a [random] section in OpenSSL's configuration"
    contains "$output" "ok     known-envelopes: "
    contains "$output" "2 of 10 checks found a fault."
}

@test "ciphers that are missing are a fault" {
    without_ciphers
    run --separate-stderr vorl doctor
    equals "$status" 5
    for check in known-envelopes wrong-key damage; do
        contains "$output" "FAULT  $check: "
    done
    contains "$output" "ok     base64: "
}

@test "a fault is told in JSON too" {
    without_random
    run --separate-stderr vorl doctor --json
    equals "$status" 5
    contains "$output" '"ok": false,
  "checks": ['
    contains "$output" '"name": "random",
      "ok": false,
      "detail": "OpenSSL'"'"'s random generator is not ready",
      "advice": "look for a [random] section'
}

@test "without random numbers, what needs them sends to the doctor" {
    without_random
    refuses 5 "OpenSSL's random generator is not ready" "'vorl doctor' looks for the reason" vorl protect -k key note
}

@test "without random numbers, what needs none works" {
    printf 'vorl doctor' | full_envelope >full
    without_random
    succeeds vorl unprotect -k key --raw full
    equals "$output" "vorl doctor"
    succeeds vorl inspect full
    for level in test none; do
        succeeds vorl protect -k key --level $level note -o out
        succeeds vorl unprotect -k key --accept $level out
        equals "$output" hello
    done
}

@test "without ciphers, protecting is a fault of the platform" {
    without_ciphers
    run --separate-stderr vorl protect -k key note
    equals "$status$output" 5
}
