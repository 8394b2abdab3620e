#!/usr/bin/env bash
# tamperings.bash PROGRAMS KEYS NAME...: these are all that the proxy knows, so that each has its test.
set -euo pipefail
programs=$1
shift 2
diff <("$programs/proxy" | sort) <(printf '%s\n' "$@" | sort)
