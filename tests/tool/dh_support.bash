# What the tests of key agreement share besides: the 1024-bit group of RFC 2409 (Second Oakley Group, generator
# 2), and numbers in it that are small enough to be seen through.
# shellcheck disable=SC2034

GROUP="$BATS_TEST_DIRNAME/rfc2409_group.pem"

# prime: of the group, as hex.
prime() {
    openssl dhparam -in "$GROUP" -outform DER | tail -c +8 | head -c 128 | hex
}

# number HEX: as 128 bytes.
number() {
    printf '%256s' "$1" | tr ' ' 0
}

# peer_text HEX: what a peer sends whose public number that is.
peer_text() {
    octets "000000028080$(number "$1")" | base64_text
}

# state FILE PRIVATE PUBLIC: a key pair in the group, of numbers that have one byte.
state() {
    octets "8080$(prime)010201${3}01$2" >"$1"
}

# zeros COUNT: so many bytes, as hex.
zeros() {
    printf "%$((2 * $1))s" "" | tr ' ' 0
}

mode_of() {
    stat -c %a "$1"
}
