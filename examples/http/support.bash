# shellcheck shell=bash
# Sourced by what shows a service at work, in a folder of its own: starts programs, and ends them on every way out.
set -euo pipefail
work=$(mktemp -d)
cd "$work"

end_all() {
    local job
    for job in $(jobs -pr); do
        kill -TERM "$job" 2>/dev/null || true
    done
    wait
    rm -rf "$work"
}
trap end_all EXIT
trap 'exit 130' INT
trap 'exit 129' HUP
trap 'exit 141' PIPE
trap 'exit 143' TERM

fail() {
    printf 'FAILED: %s\n' "$*"
    tail -v -n 20 ./*.log ./*.err 2>/dev/null
    exit 1
}

# start NAME COMMAND...: in the background, its output in NAME.log; until it says where it listens, in $url.
start() {
    local name=$1 tries
    shift
    : >"$name.log"
    "$@" >"$name.log" 2>"$name.err" &
    process=$!
    for ((tries = 0; tries < 1200; ++tries)); do
        url=$(sed -n 's/^listening on //p' "$name.log")
        [[ -z $url ]] || return 0
        kill -0 "$process" 2>/dev/null || break
        sleep 0.05
    done
    fail "$name does not start"
}

# ask ANSWER: standard input goes to the service at $url, what comes back to the file.
ask() {
    local connection
    exec {connection}<>"/dev/tcp/127.0.0.1/${url##*:}"
    cat >&"$connection"
    timeout 60 cat <&"$connection" >"$1" || fail "$1: the connection does not end"
    exec {connection}>&-
}
