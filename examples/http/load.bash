#!/usr/bin/env bash
# load.bash PROGRAMS KEYS: with several devices at once, nothing is lost.
programs=$1 keys=$2
# shellcheck source=examples/http/support.bash
. "${BASH_SOURCE[0]%/*}/support.bash"

start service "$programs/service" "$keys/service.key.pem"
"$programs/load" "$url" "$keys/service.pem" 100 4 "$process" >load.log 2>load.err || fail 'a device lost something'
grep -q '^100 messages of 1024 bytes in ' load.log || fail 'they are not as many'
[[ $(grep -c '^received 1024 bytes, SHA-256 ' service.log) -eq 100 ]] || fail 'the service got other ones'
[[ $(grep '^received' service.log | sort -u | wc -l) -eq 100 ]] || fail 'the service got some of them twice'
[[ $(grep -c '^agreed on keys, session ' service.log) -eq 4 ]] || fail 'they are not as many devices'
