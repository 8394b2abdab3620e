#!/usr/bin/env bash
# keys.bash FOLDER: the keys of a service, and of somebody else.
set -euo pipefail
mkdir -p "$1"
cd "$1"
for name in service other; do
    openssl req -x509 -newkey rsa:2048 -noenc -days 2 -subj "/CN=$name" -keyout "$name.key.pem" -out "$name.pem" 2>/dev/null
done
