#!/usr/bin/env bash
# load.bash PROGRAMS KEYS: with several devices at once, nothing is lost, and the report says how long it took.
programs=$1 keys=$2
# shellcheck source=examples/http/support.bash
. "${BASH_SOURCE[0]%/*}/support.bash"

# report PATTERN: it has one such line.
report() {
    [[ $(grep -c -x -E "$1" load.log) -eq 1 ]] || fail "there is not one line of the kind: $1"
}

# refuses STATUS REASON MESSAGES CONNECTIONS PROCESS
refuses() {
    local status=0
    "$programs/load" "$url" "$keys/service.pem" "$3" "$4" "$5" >wrong.log 2>wrong.err || status=$?
    [[ $status -eq $1 && $(<wrong.err) == "load: $2" ]] || fail "it is not refused: $2"
}

start service "$programs/service" "$keys/service.key.pem"
"$programs/load" "$url" "$keys/service.pem" 100 4 "$process" >load.log 2>load.err || fail 'a device lost something'
number='[0-9]+\.[0-9]{2}'
report "memory of the service before: [1-9][0-9]* kB"
report "100 messages of 1024 bytes in $number s, each with its receipt"
report "$number requests per second"
report "memory of the service after: [1-9][0-9]* kB"
times=$(sed -n -E 's/^(50|90|99|100) % within (.*) ms$/\2/p' load.log)
[[ $(wc -l <<<"$times") -eq 4 && $(sort -g <<<"$times") == "$times" ]] || fail 'some times are missing, or do not grow'
# The time is rounded to 0.01 s.
awk '/ messages of /{seconds = $7} / requests per second$/{rate = $1}
    END {exit !(rate * (seconds - 0.005) <= 100.5 && rate * (seconds + 0.005) >= 99.5)}' load.log ||
    fail 'the rate is that of another time'

[[ $(grep -c '^received 1024 bytes, SHA-256 ' service.log) -eq 100 ]] || fail 'the service got other ones'
[[ $(grep '^received' service.log | sort -u | wc -l) -eq 100 ]] || fail 'the service got some of them twice'
[[ $(grep -c '^agreed on keys, session ' service.log) -eq 4 ]] || fail 'they are not as many devices'

most=$((32 * 65536))
for messages in 0 $((most + 1)) 1x; do
    refuses 2 "not a number from 1 to $most: $messages" "$messages" 32 "$process"
done
for connections in 0 33 x; do
    refuses 2 "not a number from 1 to 32: $connections" 1 "$connections" "$process"
done
# The process is looked at last: what is refused on its account alone is not too much.
too_many='more than 65536 messages on one connection: its session takes no more within five minutes'
no_process='the memory of process none is not to be seen'
for connections in 1 2 31; do
    refuses 2 "$too_many" $((connections * 65536 + 1)) "$connections" none
    refuses 1 "$no_process" $((connections * 65536)) "$connections" none
done
refuses 1 "$no_process" $most 32 none
