# shellcheck shell=bash disable=SC2034
# Sourced by the other scripts: where the project is, what a step looks like, and how a missing package is had.

set -euo pipefail
root=$(CDPATH="" cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." >/dev/null && pwd)

# What building and testing need, beyond a base Debian 12.
build_packages=(g++ cmake ninja-build libssl-dev libcli11-dev nlohmann-json3-dev libcpp-httplib-dev pkg-config)
test_packages=(libgtest-dev libgmock-dev bats openssl bsdutils scdoc man-db strace zsh fish)

say() {
    printf '== %s\n' "$*"
}

fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "not root, and there is no sudo; please run as root: $*"
    fi
}

# Installs those of the named packages that are missing.
need() {
    local missing=() package
    for package in "$@"; do
        [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
    done
    if [[ ${#missing[@]} -gt 0 ]]; then
        say "Installing ${missing[*]}"
        as_root apt-get update -qq
        as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
            >/dev/null
    fi
}

# Configures and builds a preset; further words go to the build.
build() { # PRESET [BUILD OPTIONS...]
    local preset=$1
    shift
    (cd "$root" && cmake --preset "$preset" >/dev/null && cmake --build --preset "$preset" "$@")
}

# Keeps a command quiet while it works and shows all of it when it fails.
quietly() {
    local log
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}
