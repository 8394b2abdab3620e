#!/usr/bin/env bash
# by_hand.bash PROGRAMS KEYS VORL FILE: what the device does, done by the commands of the tool before the same service, and
# shown as it would be typed. It ends where something is not as it should be.
programs=$1 keys=$2 file=$4
PATH=${3%/*}:$PATH
group=$(realpath -e -- "${BASH_SOURCE[0]%/*}/../../tests/tool/rfc2409_group.pem") || exit 1
# shellcheck source=examples/http/support.bash
. "${BASH_SOURCE[0]%/*}/support.bash"

say() {
    printf '== %s\n' "$*"
}

run() {
    printf '$ %s\n' "$*"
    "$@" || fail "it ends with $?"
}

# run_to FILE COMMAND...: what it writes goes to the file.
run_to() {
    printf '$ %s >%s\n' "${*:2}" "$1"
    "${@:2}" >"$1" || fail "it ends with $?"
}

# request_to PATH BODY: its text.
request_to() {
    printf '%s\r\n' "POST $1 HTTP/1.1" "Host: ${url#http://}" 'Content-Type: application/octet-stream' \
        "Content-Length: $(stat -c %s "$2")" 'Connection: close' ''
    cat "$2"
}

# post REQUEST ANSWER STATUS: as it stands.
post() {
    ask "$2" <"$1"
    [[ $(head -n 1 "$2") == "HTTP/1.1 $3 "* ]] || fail "$1 is answered in another way"
    printf '%s goes to %s; the answer has the status %s\n' "$1" "$url" "$3"
}

# line NUMBER ANSWER: of its body.
line() {
    sed '1,/^\r$/d' "$2" | sed -n "$1p"
}

# refused COMMAND...: with status 1.
refused() {
    local status=0
    printf '$ %s\n' "$*"
    "$@" 2>&1 || status=$?
    [[ $status -eq 1 ]] || fail "it ends with $status"
}

start service "$programs/service" "$keys/service.key.pem"
cp "$keys/service.pem" .
cp "$group" group.pem
head -c 2000 "$file" >piece

say 'A key pair in the group of the service; the public half goes to it'
run vorl dh new -p group.pem -o state
run_to device.dh vorl dh pub state
request_to /v1/agree device.dh >agree
post agree agreed 200

say 'Session, record and signature come back; whoever is at the other end has the private key to the certificate'
session=$(line 1 agreed)
line 2 agreed >service.dh
line 3 agreed >agreement.sig
{ echo "$session" && cat device.dh service.dh; } >agreement
run vorl verify --cert service.pem -s agreement.sig agreement

say 'Both derive the same keys; the tool shows what stands for them, not the keys'
run vorl dh secret state service.dh -o secret
run vorl keys derive --secret secret --enc-out key --hmac-out mac

say 'A piece of the file goes into an envelope, and the envelope into a request that is signed'
run vorl protect -k key piece -o envelope
request_to /v1/messages envelope >request
run vorl http sign -k key --context-key --keyid "$session" request -o signed
grep -a -E '^(Content-Digest|Signature-Input|Signature): ' signed | tr -d '\r'

say 'What the signature is computed of, which takes no key to see; and that it holds, which does'
run vorl http base signed
run vorl http verify -k key --context-key signed

say 'Five minutes later it does not hold any more, nor at any other address'
created=$(sed -n 's/^Signature-Input: .*;created=\([0-9]*\);.*/\1/p' signed)
refused vorl http verify -k key --context-key --at "$((created + 301))" signed
sed 's|/v1/messages|/v1/receipts|' signed >elsewhere
refused vorl http verify -k key --context-key elsewhere

say 'The service takes it, but not a second time: it remembers the nonce, for as long as the signature holds'
post signed answer 200
post signed refusal 403
tail -n 1 service.log
[[ $(tail -n 1 service.log) == 'refused: the signature of a request does not hold' ]] || fail 'it is refused for something else'

say 'The answer is signed, too, and answers this request; in it are a receipt and its signature'
run vorl http verify -k key --context-key --request signed answer
line 1 answer >receipt
line 2 answer >receipt.sig
run vorl unprotect -k key receipt -o received
cat received
echo
[[ $(<received) == "received $(stat -c %s piece) bytes, SHA-256 $(sha256sum <piece | cut -d ' ' -f 1)" ]] ||
    fail 'it is for something else'
{ echo "$session" && cat received; } >signed-receipt
run vorl verify --cert service.pem -s receipt.sig signed-receipt
