# What the tests of signatures and certificates share: keys and certificates by OpenSSL's own command.
# shellcheck disable=SC2034

ENCRYPTED_HINT="--key-fd 3 3< <(openssl pkey -in FILE) decrypts it without a file"

# rsa_key NAME [BITS]: NAME.pem and NAME.pub.
rsa_key() {
    openssl genpkey -quiet -algorithm RSA -pkeyopt "rsa_keygen_bits:${2:-1024}" -out "$1.pem"
    openssl pkey -in "$1.pem" -pubout -out "$1.pub"
}

# other_keys: one pair of each algorithm that signatures do not take.
OTHER_ALGORITHMS="EC DSA Ed25519 RSA-PSS"
other_keys() {
    openssl genpkey -quiet -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out EC.pem
    openssl dsaparam -genkey -noout -out DSA.pem 1024 2>/dev/null
    openssl genpkey -quiet -algorithm ED25519 -out Ed25519.pem
    openssl genpkey -quiet -algorithm RSA-PSS -pkeyopt rsa_keygen_bits:1024 -out RSA-PSS.pem
    for algorithm in $OTHER_ALGORITHMS; do
        openssl pkey -in $algorithm.pem -pubout -out $algorithm.pub
    done
}

# certificate NAME KEY [BEGIN END]: NAME.crt for KEY.pem, signed by itself. BEGIN and END are
# YYYYMMDDHHMMSSZ.
certificate() {
    rm -rf ca && mkdir ca && : >ca/index
    openssl req -new -key "$2.pem" -subj /CN=service.example/O=Example -out ca/request
    openssl ca -batch -selfsign -notext -md sha256 -keyfile "$2.pem" -in ca/request -out "$1.crt" \
        -startdate "${3:-20200101000000Z}" -enddate "${4:-20991231235959Z}" \
        -config <(
            cat <<'CONFIG'
[ca]
default_ca = own
[own]
database = ca/index
new_certs_dir = ca
policy = any
rand_serial = yes
[any]
commonName = optional
organizationName = optional
CONFIG
        ) 2>/dev/null
}

# record FILE: a signature as a record, straight from the format: 01, its length, and the signature.
record() {
    local size
    size=$(stat -c %s "$1")
    octets "01$(printf %04x $((0x8000 + size)))"
    cat "$1"
}

# signed KEY FILE: OpenSSL's own signature over FILE as Base64 text of a record.
signed() {
    openssl dgst -sha1 -sign "$1.pem" -out .signature "$2"
    record .signature | base64_text
}

# idle COMMAND...: with a standard input that stays open and says nothing, and a limit on what waits for it.
idle() {
    local status=0
    mkfifo .idle
    # Open for both, so that there is no end of file either.
    timeout 20 "$@" <>.idle || status=$?
    rm .idle
    return $status
}
