#!/usr/bin/env bats
# vorl platform check: all is well with the platform here, unless OpenSSL's configuration breaks it.

load support

own_keys() {
    octets "$KEY_HEX" >first
    octets "$IV_HEX" >second
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

@test "the platform passes, with a line for each check" {
    succeeds vorl platform check
    for check in id-is-the-spec agrees-with-published-vectors encrypts-short-messages refuses-wrong-padding \
        cbc-chains-its-blocks threads-have-contexts-of-their-own base64-refuses-white-space \
        recursive-mutex-counts-its-locks signs-or-refuses never-verifies-the-unsigned; do
        contains $'\n'"$output" $'\n'"ok     $check: "
    done
    contains "${lines[-1]}" "The platform passes"
    [[ "$output" != *FAULT* ]]
}

@test "the signatures are those that a service makes and takes, where the library signs" {
    succeeds vorl platform check
    for check in a-service-takes-its-requests verifies-what-a-service-signs; do
        if [[ $VORL_SIGNS_HTTP == 1 ]]; then
            contains "$output" "ok     $check: "
        else
            contains "$output" "-      $check: The platform does not sign"
        fi
    done
}

@test "--json shows the same" {
    succeeds vorl platform check --json
    contains "$output" '{
  "version": "'"$VORL_VERSION"'",
  "ok": true,
  "checks": [
    {
      "name": "refuses-before-init",
      "outcome": "holds",
      "requirement": "Before the first init(), the factory makes no contexts",
      "detail": ""
    },'
    [[ "$output" != *'"outcome": "fails"'* ]]
}

@test "with keys of the platform's own, what needs a known one is left out" {
    own_keys
    succeeds vorl platform check --own-keys first second
    contains "$output" "-      agrees-with-published-vectors: The platform has only keys of its own, \
and this takes one of known value"
    contains "$output" "ok     encrypts-short-messages: "
    contains "$output" "ok     cbc-chains-its-blocks: "
    contains "${lines[-1]}" " left out."
    succeeds vorl platform check --json --own-keys first second
    contains "$output" '"name": "agrees-with-published-vectors",
      "outcome": "left out",'
}

@test "no key is shown" {
    own_keys
    run --separate-stderr vorl platform check --own-keys first second
    equals "$status" 0
    [[ "$output$stderr" != *"$KEY_HEX"* && "$output$stderr" != *"$IV_HEX"* ]]
}

@test "one key alone is wrong usage, and the same one twice a fault" {
    own_keys
    run --separate-stderr vorl platform check --own-keys first
    equals "$status$output" 2
    contains "$stderr" "'vorl platform check --help' shows the usage"
    cp first same
    run --separate-stderr vorl platform check --own-keys first same
    equals "$status" 5
    contains "$output" "FAULT  id-is-the-spec: The platform is described without a way to provision keys and without \
two keys of its own
       what must hold: The id() of a context is the spec that the factory was asked for"
}

@test "a key that cannot be read is refused" {
    own_keys
    run --separate-stderr vorl platform check --own-keys first missing
    equals "$status$output" 3
}

@test "a platform whose ciphers do not work fails, and the rest is still checked" {
    without_ciphers
    run --separate-stderr vorl platform check
    equals "$status" 5
    contains "$output" "FAULT  encrypts-short-messages: "
    contains "$output" "ok     base64-agrees-with-published-vectors: "
    contains "${lines[-1]}" " checks found a fault"
    run --separate-stderr vorl platform check --json
    equals "$status" 5
    contains "$output" '"ok": false,'
    contains "$output" '"outcome": "fails",'
}
