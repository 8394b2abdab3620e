#!/usr/bin/env bats
# The whole way: two parties that share nothing but a group come to share keys, and a message.

load support
load dh_support

# as PARTY ARGUMENTS...: the tool, run in the party's own folder.
as() {
    (cd "$1" && shift && "$VORL" "$@")
}

@test "two parties agree on keys through the texts that they exchange, and one opens what the other protects" {
    mkdir client server
    for party in client server; do
        succeeds as $party dh new -p "$GROUP" -o state
    done
    succeeds as client dh pub state
    local from_client=$output
    succeeds as server dh pub state
    local from_server=$output
    [ "$from_client" != "$from_server" ]

    succeeds as client dh secret state "$from_server" -o secret
    echo "$from_client" >server/peer
    succeeds as server dh secret state peer -o secret
    cmp client/secret server/secret
    equals "$(stat -c %s client/secret)" 128
    equals "$(part client/secret 127 1 | hex)" 00

    for party in client server; do
        succeeds as $party keys derive --secret secret --enc-out enc --hmac-out mac
    done
    cmp client/enc server/enc
    cmp client/mac server/mac
    equals "$(hex client/enc)$(hex client/mac)" "$(openssl dgst -sha384 -r client/secret | cut -d ' ' -f 1)"

    echo "a message" >client/message
    succeeds as client protect -k enc message -o letter
    succeeds as client hmac -k mac letter
    local code=$output
    mv client/letter server
    succeeds as server hmac -k mac --verify "$code" letter
    succeeds as server unprotect -k enc letter
    equals "$output" "a message"
}

@test "a party that hears the texts, and has a pair of its own, gets another secret" {
    for party in client server listener; do
        vorl dh new -p "$GROUP" -o $party
        vorl dh pub $party >$party.text
    done
    vorl dh secret client server.text -o shared
    for peer in client server; do
        succeeds vorl dh secret listener $peer.text -o heard
        run cmp -s shared heard
        equals "$status" 1
    done
}
