#!/usr/bin/env bats
# vorl keys derive: the two keys of a client, from a secret or from an identifier.

load support

# digest_of FILE: the material's SHA-384, of which the keys are slices, by OpenSSL's own command.
digest_of() {
    openssl dgst -sha384 -r "$1" | cut -d ' ' -f 1
}

# print_of HEX: what stands for a secret.
print_of() {
    echo "sha256:$(octets "$1" | openssl dgst -sha256 -r | head -c 8) ($((${#1} / 2)) bytes)"
}

@test "the keys are slices of the digest of the secret, in files for their owner alone" {
    umask 000
    bytes_of 128 >secret
    local digest
    digest=$(digest_of secret)
    succeeds vorl keys derive --secret secret --enc-out enc --hmac-out mac
    equals "$(hex enc)" "${digest:0:32}"
    equals "$(hex mac)" "${digest:32}"
    equals "$(mode_of_both)" "600 600"
    equals "$output" "encryption key: $(print_of "${digest:0:32}")
HMAC key: $(print_of "${digest:32}")"
}

mode_of_both() {
    echo "$(stat -c %a enc) $(stat -c %a mac)"
}

@test "--show-secrets shows the keys, and nothing else does" {
    bytes_of 128 >secret
    local digest
    digest=$(digest_of secret)
    succeeds vorl keys derive --secret secret --show-secrets
    equals "$output" "encryption key: ${digest:0:32}
HMAC key: ${digest:32}"
    succeeds vorl keys derive --secret secret
    [[ "$output" != *"${digest:0:32}"* && "$output" != *"${digest:32}"* ]]
    equals "$(left_behind . key secret)" ""
}

@test "a secret has 48 bytes at the least" {
    bytes_of 47 >short
    refuses 3 "'short': the secret has 47 bytes, at least 48 are needed" "" vorl keys derive --secret short
    for size in 48 64 128 200; do
        bytes_of $size >secret
        succeeds vorl keys derive --secret secret --show-secrets
        contains "$output" "encryption key: $(digest_of secret | head -c 32)"
    done
}

@test "the hex or the Base64 of a secret is not taken for one" {
    bytes_of 128 >secret
    hex secret >hex
    { hex secret && echo; } >hex-line
    base64_text <secret >base64
    printf '%060d\n' 0 | tr 0 '~' >line
    for text in hex hex-line base64 line; do
        refuses 3 "'$text': a secret is bytes, and this is a text" \
            "the bytes themselves are needed, as 'vorl dh secret' writes them" vorl keys derive --secret $text
    done
}

@test "an identifier is taken as it is, without the newline that may end it" {
    printf 'SHOPPER-42' >id
    printf 'SHOPPER-42\n' >line
    printf 'SHOPPER-42\r\n' >crlf
    local digest
    digest=$(digest_of id)
    for file in id line crlf; do
        succeeds vorl keys derive --id-file $file --enc-out enc --hmac-out mac
        equals "$file $(hex enc)$(hex mac)" "$file $digest"
    done
    # Only one newline is no part of it.
    printf 'SHOPPER-42\n\n' >lines
    succeeds vorl keys derive --id-file lines --show-secrets
    contains "$output" "encryption key: $(printf 'SHOPPER-42\n' | openssl dgst -sha384 -r | head -c 32)"
}

@test "an identifier has 9 characters at the least" {
    printf 12345678 >eight
    printf '12345678\n' >line
    printf 123456789 >nine
    for file in eight line; do
        refuses 3 "'$file': the identifier has 8 characters, at least 9 are needed" "" vorl keys derive --id-file $file
    done
    refuses 3 "'/dev/null': the identifier has 0 characters, at least 9 are needed" "" \
        vorl keys derive --id-file /dev/null
    succeeds vorl keys derive --id-file nine
}

@test "standard input is taken for either" {
    from_standard_input() {
        printf 123456789 | vorl keys derive --id-file -
    }
    succeeds from_standard_input
    from_pipe() {
        bytes_of 128 | vorl keys derive --secret -
    }
    succeeds from_pipe
}

@test "one of a secret and an identifier, and both files or none" {
    bytes_of 128 >secret
    refuses 2 "a secret or an identifier is needed" "name its file with --secret or --id-file" vorl keys derive
    refuses 2 "--secret excludes --id-file" "'vorl keys derive --help' shows the usage" \
        vorl keys derive --secret secret --id-file note
    refuses 2 "--enc-out requires --hmac-out" "'vorl keys derive --help' shows the usage" \
        vorl keys derive --secret secret --enc-out enc
    refuses 2 "--hmac-out requires --enc-out" "'vorl keys derive --help' shows the usage" \
        vorl keys derive --secret secret --hmac-out mac
    equals "$(left_behind . key secret)" ""
}

@test "the two files cannot be one" {
    bytes_of 128 >secret
    mkdir folder
    touch there
    ln there linked
    local first second
    for pair in "enc enc" "enc ./enc" "enc folder/../enc" "there linked"; do
        read -r first second <<<"$pair"
        refuses 2 "'$first' and '$second' are one file" "" \
            vorl keys derive --secret secret --enc-out "$first" --hmac-out "$second"
    done
    [ ! -e enc ] && [ ! -s there ]
}

@test "keys do not go to standard output as bytes" {
    bytes_of 128 >secret
    for files in "--enc-out - --hmac-out mac" "--enc-out enc --hmac-out -"; do
        # shellcheck disable=SC2086
        refuses 2 "keys are written to files, not to standard output" "--show-secrets shows them there" \
            vorl keys derive --secret secret $files
    done
    equals "$(left_behind . key secret)" ""
}

@test "where one file cannot be written, the other is not either" {
    bytes_of 128 >secret
    mkdir folder
    echo old >old
    for bad in nowhere/mac folder; do
        for files in "--enc-out new --hmac-out $bad" "--enc-out $bad --hmac-out new" "--enc-out old --hmac-out $bad"; do
            # shellcheck disable=SC2086
            run --separate-stderr vorl keys derive --secret secret $files
            equals "$status$output" 5
            contains "$stderr" "vorl: error: cannot write '$bad': "
        done
    done
    equals "$(cat old)" old
    equals "$(left_behind . key secret old folder)" ""
}

# In a folder like /tmp nobody replaces a file of others, even one that anybody may write.
@test "where the second file cannot take its place after all, the first one gives way again" {
    [ "$(id -u)" -eq 0 ] || skip "only root makes files of two users"
    needs_unprivileged
    bytes_of 128 >secret
    chmod a+r secret
    mkdir sticky own
    chmod 1777 sticky
    chmod 777 own
    echo theirs >sticky/mac
    chmod 666 sticky/mac
    refuses 5 "cannot write 'sticky/mac': Operation not permitted" "" \
        unprivileged "$VORL" keys derive --secret secret --enc-out own/enc --hmac-out sticky/mac
    equals "$(ls -A own)" ""
    unprivileged sh -c 'echo before >own/enc'
    refuses 5 "cannot write 'sticky/mac': Operation not permitted" "" \
        unprivileged "$VORL" keys derive --secret secret --enc-out own/enc --hmac-out sticky/mac
    equals "$(ls -A own)" enc
    equals "$(cat own/enc sticky/mac)" "before
theirs"
    equals "$(ls -A sticky)" mac
}

@test "files that were there are replaced, and open to nobody else afterwards" {
    bytes_of 128 >secret
    echo old >enc
    echo old >mac
    chmod 644 enc mac
    succeeds vorl keys derive --secret secret --enc-out enc --hmac-out mac
    equals "$(mode_of_both)" "600 600"
    equals "$(hex enc)$(hex mac)" "$(digest_of secret)"
    equals "$(left_behind . key secret enc mac)" ""
}
