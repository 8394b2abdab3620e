#!/usr/bin/env bash
# refusals.bash PROGRAMS KEYS: the service refuses whatever is not for it by the same octets, goes on, and ends when told.
programs=$1 keys=$2
# shellcheck source=examples/http/support.bash
. "${BASH_SOURCE[0]%/*}/support.bash"

start service "$programs/service" "$keys/service.key.pem"
service=$process
port=${url##*:}
printf 'HTTP/1.1 403 Forbidden\r\nConnection: close\r\nContent-Length: 0\r\n\r\n' >refusal

# refused NAME REQUEST [REASON]: by the known octets, and for this reason in the log; with "unread" for a reason, without
# a line in the log.
refused() {
    local before expected
    expected="refused: ${3-}"
    [[ ${3-} != unread ]] || expected=
    before=$(wc -l <service.log)
    printf '%b' "$2" | ask "$1.answer"
    cmp refusal "$1.answer" || fail "$1: it is refused in another way"
    [[ -z ${3-} || $(tail -n "+$((before + 1))" service.log) == "$expected" ]] ||
        fail "$1: the reason in the log is another one"
}

hosts=0
host='Host: 127.0.0.1\r\n'
type='Content-Type: application/octet-stream\r\n'
agree="POST /v1/agree HTTP/1.1\r\n$host$type"
messages="POST /v1/messages HTTP/1.1\r\n$host$type"
signed='Signature-Input: vorl=("@method");created=1;keyid="00";alg="hmac-sha256"\r\nSignature: vorl=:AAAA:\r\n'
plainly='a request does not say plainly how long it is'

refused unknown-path "POST /v1/other HTTP/1.1\r\n${host}Content-Length: 0\r\n\r\n" 'nothing is served there'
refused other-method "GET /v1/agree HTTP/1.1\r\n$host\r\n" 'nothing is served there'
refused head-only "HEAD /v1/agree HTTP/1.1\r\n$host\r\n" 'nothing is served there'
refused no-host "POST /v1/agree HTTP/1.1\r\nContent-Length: 0\r\n\r\n" 'a request names no host, or several'
refused two-hosts "POST /v1/agree HTTP/1.1\r\n$host${host}Content-Length: 0\r\n\r\n" 'a request names no host, or several'
addressed='a request is not addressed by host and path'
for wrong in '127.0.0.1/x' '127.0.0.1?q=' '127.0.0.1#x' 'x@127.0.0.1' '127.0.0.1 x' '127.0.0.1\\x'; do
    refused "host-$((++hosts))" "POST /v1/messages HTTP/1.1\r\nHost: $wrong\r\n${type}Content-Length: 5\r\n\r\nAAAA\n" "$addressed"
done
refused no-slash "POST %2fv1/messages HTTP/1.1\r\n$host${type}Content-Length: 5\r\n\r\nAAAA\n" "$addressed"
more='a request asks for more than an answer'
refused expect "${agree}Expect: 100-continue\r\nContent-Length: 5\r\n\r\nAAAA\n" "$more"
refused expect-other "${agree}Expect: other\r\nContent-Length: 5\r\n\r\nAAAA\n" "$more"
refused range "${agree}Range: bytes=0-1\r\nContent-Length: 5\r\n\r\nAAAA\n" "$more"
refused empty-host "POST /v1/agree HTTP/1.1\r\nHost: \r\nContent-Length: 0\r\n\r\n" unread
refused empty-host-first "POST /v1/agree HTTP/1.1\r\nHost:\r\n$host${type}Content-Length: 5\r\n\r\nAAAA\n" unread
refused fragment "POST /v1/agree#x HTTP/1.1\r\n$host${type}Content-Length: 5\r\n\r\nAAAA\n" unread
refused encoded-length "${agree}Content-Length: %35\r\n\r\nAAAA\n" unread
refused encoded-type "POST /v1/agree HTTP/1.1\r\n${host}Content-Type: a%2fb\r\nContent-Length: 5\r\n\r\nAAAA\n" unread
refused encoded-host "POST /v1/agree HTTP/1.1\r\nHost: %3127.0.0.1\r\nContent-Length: 5\r\n\r\nAAAA\n" unread
refused two-blanks "POST  /v1/agree HTTP/1.1\r\n$host${type}Content-Length: 5\r\n\r\nAAAA\n" unread
refused tab-and-blank "POST\t /v1/agree HTTP/1.1\r\n$host${type}Content-Length: 5\r\n\r\nAAAA\n" unread
refused bare-request-line "POST /v1/agree HTTP/1.1\n$host${type}Content-Length: 5\r\n\r\nAAAA\n" unread
malformed=0 well_formed=0
chunked='Transfer-Encoding: chunked'
for line in 'Transfer-Encoding : chunked\r\n' 'Transfer-Encoding\t: chunked\r\n' " $chunked\r\n" "\t$chunked\r\n" \
    "X: a\r\n $chunked\r\n" "X: a\r\n\t$chunked\r\n" 'Content-Length: 3\n' '\n' "\n$chunked\r\n" \
    "X: a\r$chunked\r\n" "X: a\r\r\n" '\r\r\n' "X: a\0b\r\n" "X: a\x01b\r\n" "X: a\x7fb\r\n" "X\0: a\r\n" \
    'X\r\n' ': a\r\n' 'X(: a\r\n' 'X\xe4: a\r\n' 'X:\r\n' 'X: \t \r\n' 'Host:\r\n' 'Content-Length:\r\n' \
    'Transfer-Encoding:\r\n'; do
    refused "malformed-$((++malformed))" "$agree${line}Content-Length: 5\r\n\r\nAAAA\n" unread
done
# Others that look like them are read, and refused for what is in the body.
for line in 'X:a:b\r\n' 'X: a\tb \t\r\n' 'X: \xe4\r\n' "!#\$&'*+-.^_\x60|~09AZaz: a\r\n"; do
    refused "well-formed-$((++well_formed))" "$agree${line}Content-Length: 5\r\n\r\n!!!!\n" 'Unable to Base64 decode input:'
done
refused percent-in-body "${agree}Content-Length: 5\r\n\r\n%%41\n" 'Unable to Base64 decode input:'
refused no-length "$agree\r\nAAAA\n" "$plainly"
refused two-lengths "${agree}Content-Length: 5\r\nContent-Length: 6\r\n\r\nAAAA\n" "$plainly"
refused negative-length "${agree}Content-Length: -1\r\n\r\nAAAA\n" "$plainly"
refused endless-length "${agree}Content-Length: 18446744073709551616\r\n\r\nAAAA\n" "$plainly"
refused chunked "${agree}Transfer-Encoding: chunked\r\n\r\n5\r\nAAAA\n\r\n0\r\n\r\n" "$plainly"
refused chunked-with-length "${agree}Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n" "$plainly"
refused compressed "${agree}Content-Encoding: gzip\r\nContent-Length: 5\r\n\r\nAAAA\n" "$plainly"
refused one-byte-too-long "${agree}Content-Length: 65537\r\n\r\n$(printf '%065537d' 0)" 'a request is longer than it may be'
refused as-long-as-allowed "${agree}Content-Length: 65536\r\n\r\n$(printf '%065535d' 0)\n" \
    'Unable to Base64 decode input:'
refused empty "${agree}Content-Length: 0\r\n\r\n" 'a text of 0 lines, not 1'
refused two-lines "${agree}Content-Length: 10\r\n\r\nAAAA\nAAAA\n" 'a text of 2 lines, not 1'
refused no-base64 "${agree}Content-Length: 5\r\n\r\n!!!!\n" 'Unable to Base64 decode input:'
refused unsigned "${messages}Content-Length: 5\r\n\r\nAAAA\n" 'a request is not signed'
refused unknown-session "$messages${signed}Content-Length: 5\r\n\r\nAAAA\n" 'there is no such session'
refused no-http 'hello\r\n\r\n'
refused long-target "POST /$(printf '%09000d' 0) HTTP/1.1\r\n$host\r\n"
refused endless-line "$(printf '%0100000d' 0)"
refused endless-head "POST /v1/agree HTTP/1.1\r\n$(printf 'A: %05000d\\r\\n' {1..20})"
refused bad-range "${agree}Range: bytes=x\r\nContent-Length: 0\r\n\r\n"
refused compressible "POST / HTTP/1.1\r\n${host}Accept-Encoding: gzip\r\nRange: bytes=0-1\r\nContent-Length: 0\r\n\r\n"

# Now by an octet at a time, which must not go on for ever.
exec {slow}<>"/dev/tcp/127.0.0.1/$port"
for ((count = 0; count < 600; ++count)); do
    { printf 'A' >&"$slow"; } 2>/dev/null || break
    if read -r -t 0.1 -n 1 <&"$slow"; then
        break
    fi
done
[[ $count -lt 600 ]] || fail 'a slow client is served for a minute'

# It goes on serving, but not for those who only know the name of a session.
"$programs/device" "$url" "$keys/service.pem" "$keys/service.pem" >device.log 2>device.err || fail 'it serves no more'
session=$(sed -n 's/^agreed on keys, session //p' device.log)
refused wrong-signature "$messages${signed/keyid=\"00\"/keyid=\"$session\"}Content-Length: 5\r\n\r\nAAAA\n" \
    'the signature of a request does not hold'

# There may be 64 sessions, of which that device has one.
for ((count = 0; count < 9; ++count)); do
    "$programs/load" "$url" "$keys/service.pem" 7 7 >load.log 2>load.err || fail 'there are too few sessions'
done
status=0
"$programs/device" "$url" "$keys/service.pem" "$keys/service.pem" >device.log 2>device.err || status=$?
[[ $status -eq 1 && $(<device.err) == 'device: the service refuses: status 403' &&
    $(tail -n 1 service.log) == 'refused: there are as many sessions as there may be' ]] || fail 'there are too many sessions'

# A second one does not get its port.
status=0
timeout 60 "$programs/service" "$keys/service.key.pem" "$port" >second.log 2>second.err || status=$?
[[ $status -eq 1 && $(<second.err) == "service: port $port is not to be had" ]] || fail 'a port is shared'
for wrong in x 80x -1 65536 ''; do
    status=0
    timeout 60 "$programs/service" "$keys/service.key.pem" "$wrong" >wrong.log 2>wrong.err || status=$?
    [[ $status -eq 1 && $(<wrong.err) == "service: a port is a number from 0 to 65535, not $wrong" ]] ||
        fail "the port $wrong is taken"
done

# What a device cannot begin with.
status=0
"$programs/device" "$url" "$keys/service.pem" missing >device.log 2>device.err || status=$?
[[ $status -eq 1 && ! -s device.log && $(<device.err) == 'device: missing cannot be read' ]] || fail 'a missing file is sent'
status=0
"$programs/device" "$url/" "$keys/service.pem" "$keys/service.pem" >device.log 2>device.err || status=$?
[[ $status -eq 1 && $(<device.err) == "device: this is no http URL of a service without a path: $url/" ]] || fail 'a path is dropped'

status=0
"$programs/device" "$url" "$keys/service.pem" "$keys/service.pem" missing >device.log 2>device.err || status=$?
[[ $status -eq 1 && $(<device.err) == 'device: missing/1-device.dh cannot be written' ]] || fail 'records are not kept, without a word'

# Told to end with half a request read, it ends.
exec {half}<>"/dev/tcp/127.0.0.1/$port"
printf '%b' "${agree}Content-Length: 5\r\n\r\nAA" >&"$half"
kill -TERM "$service"
status=0
wait "$service" || status=$?
[[ $status -eq 0 && $(tail -n 1 service.log) == ended && ! -s service.err ]] || fail "the service ends with $status"
