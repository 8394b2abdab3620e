#!/usr/bin/env bash
# exchange.bash PROGRAMS KEYS FILE TAMPERING [REFUSING REASON]: what a device and its service say when the TAMPERING of
# the proxy ("direct" for none in between) is done. REFUSING is "service" or "device"; without it, nothing is refused.
programs=$1 keys=$2 file=$3 tampering=$4 refusing=${5-} reason=${6-}
# shellcheck source=examples/http/support.bash
. "${BASH_SOURCE[0]%/*}/support.bash"

start service "$programs/service" "$keys/service.key.pem"
service=$process
case $tampering in
direct | certificate) ;;
*) start proxy "$programs/proxy" "$url" "$tampering" ;;
esac
certificate=$keys/service.pem
[[ $tampering != certificate ]] || certificate=$keys/other.pem
status=0
mkdir kept
"$programs/device" "$url" "$certificate" "$file" kept >device.log 2>device.err || status=$?

case $refusing in
'')
    [[ $status -eq 0 && ! -s device.err ]] || fail "the device ends with $status"
    # What the receipts should say, by other means.
    split -b 2000 "$file" piece.
    for piece in piece.*; do
        printf 'received %s bytes, SHA-256 %s\n' "$(stat -c %s "$piece")" "$(sha256sum <"$piece" | cut -d ' ' -f 1)"
    done >expected
    [[ $(wc -l <expected) -ge 3 ]] || fail "$file is of too few pieces"
    cmp expected <(sed -n 's/^receipt: //p' device.log) || fail 'the device has other receipts'
    cmp expected <(grep '^received ' service.log) || fail 'the service gave other receipts'
    cmp <(grep '^agreed' device.log) <(grep '^agreed' service.log) || fail 'they do not agree on the session'
    ! grep '^refused' service.log || fail 'something was refused'
    # The last receipt and its session, as somebody else verifies it: the signature ends the record.
    { sed -n 's/^agreed on keys, session //p' device.log && tail -n 1 expected; } | head -c -1 >signed
    base64 -d kept/6-receipt.sig | tail -c 256 >signature
    openssl x509 -in "$certificate" -noout -pubkey >public.pem
    openssl dgst -sha1 -verify public.pem -signature signature signed >verified || fail 'the receipt is not signed for this session'
    ;;
service)
    [[ $status -eq 1 ]] || fail "the device ends with $status"
    [[ $(<device.err) == 'device: the service refuses: status 403' ]] || fail 'the device gives another reason'
    [[ $(grep '^refused' service.log) == "refused: $reason" ]] || fail 'the service gives another reason'
    ;;
device)
    [[ $status -eq 1 ]] || fail "the device ends with $status"
    [[ $(<device.err) == "device: $reason" ]] || fail 'the device gives another reason'
    ! grep '^refused' service.log || fail 'the service refuses, too'
    ;;
esac

kill -TERM "$service"
status=0
wait "$service" || status=$?
[[ $status -eq 0 && $(tail -n 1 service.log) == ended && ! -s service.err ]] || fail "the service ends with $status"
