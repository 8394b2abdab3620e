#!/usr/bin/env bats
# vorl http: signatures of HTTP messages, beside published ones and OpenSSL's own HMAC.
# shellcheck disable=SC2054

load support

setup_file() {
    : "${VORL:?}"
    [ "$VORL_SIGNS_HTTP" = 1 ] || return 0
    cd "$BATS_FILE_TMPDIR" || return 1
    messages
}

# setup of support.bash, and the messages.
eval "common_$(declare -f setup)"
setup() {
    common_setup
    [ "$VORL_SIGNS_HTTP" != 1 ] || cp "$BATS_FILE_TMPDIR"/* .
}

VECTORS=$BATS_TEST_DIRNAME/../vectors/http_signatures.txt

# known NAME FIELD: what a known signature has in that field, or in the fields that the pattern names, line by line.
known() {
    sed -n "/^Name = $1\$/,/^\$/s/^$2 = //p" "$VECTORS"
}

# head_of_known NAME: its message up to the body.
head_of_known() {
    known "$1" Request
    known "$1" 'Field [0-9]*'
    echo
}

# The known ones: with lines as they are sent, without a body, and as an editor writes them.
messages() {
    head_of_known Rfc9421B25 | sed 's/$/\r/' >rfc9421
    known Rfc9421B25 Body | head -c -1 >>rfc9421
    head_of_known AuthorityWithAPort >with-port
    { head_of_known BodyWithADigest && known BodyWithADigest Body; } >with-body
    printf '%s\n' 'HTTP/1.1 200 OK' 'Content-Type: text/plain' 'Content-Length: 5' '' 'hello' >response
}

# is_signed_as NAME MESSAGE: the message is given that signature; it is shown, verified and computed without the tool, too.
is_signed_as() {
    local name=$1 message=$2 code digest format input key_digits label signature
    signature=$(known "$name" Signature)
    label=${signature%%=:*}
    code=${signature#*=:}
    code=${code%:}
    known "$name" 'Base [0-9]*' | head -c -1 >known-base
    input=$(tail -n 1 known-base)
    digest=$(known "$name" 'Added digest')
    if [ -n "$(known "$name" 'Key in hex')" ]; then
        format=hex
        key_digits=$(known "$name" 'Key in hex')
        echo "$key_digits" >known-key
    else
        format=base64
        known "$name" 'Key in Base64' >known-key
        key_digits=$(openssl base64 -d -A -in known-key | hex)
    fi
    local profile=(--label "$label" --keyid "$(known "$name" Keyid)" --cover "$(known "$name" Cover)"
        --parameters "$(known "$name" Parameters)" --at "$(known "$name" Created)")

    succeeds vorl http sign -k known-key --key-format $format "${profile[@]}" "$message" -o signed
    equals "$(head_of signed)" "$(head_of "$message")${digest:+$'\n'Content-Digest: $digest}
Signature-Input: $label=${input#*: }
Signature: $signature"
    vorl http base --raw --label "$label" signed >shown
    cmp shown known-base
    vorl http base --raw "${profile[@]}" "$message" >shown
    cmp shown known-base
    succeeds vorl http verify -k known-key --key-format $format "${profile[@]}" signed
    equals "$output" "the signature holds"
    equals "$(openssl dgst -sha256 -mac HMAC -macopt "hexkey:$key_digits" -binary known-base | base64_text)" "$code"
}

signs() {
    [ "$VORL_SIGNS_HTTP" = 1 ] || skip "built without the signer"
}

# fields FILE: the lines of its head.
head_of() {
    sed -n '/^\r*$/q; p' "$1" | tr -d '\r'
}

# What a device and its service do, with one key.
NOW=(--at 1700000000)
device_signs() {
    vorl http sign -k key --key-format hex --keyid device "${NOW[@]}" "$@"
}
service_verifies() {
    vorl http verify -k key --key-format hex "${NOW[@]}" "$@"
}

DOES_NOT_HOLD=("the signature does not hold" "'vorl http base' shows what it has to be computed of")

@test "a signature of RFC 9421 is made, shown and verified" {
    signs
    is_signed_as Rfc9421B25 rfc9421
    equals "$(stat -c %s known-base)" 200
}

@test "a signature for another port is made, shown and verified" {
    signs
    is_signed_as AuthorityWithAPort with-port
}

@test "a signature over a digest of the body is made, shown and verified" {
    signs
    is_signed_as BodyWithADigest with-body
}

@test "each known signature has its test" {
    equals "$(sed -n 's/^Name = //p' "$VECTORS" | sort)" "$(sed -n 's/^ *is_signed_as \([^ ]*\) .*/\1/p' "$BATS_TEST_FILENAME" | sort)"
}

@test "the signature is OpenSSL's HMAC of the base" {
    signs
    device_signs with-body >signed
    equals "$(sed -n 's/^Signature: vorl=:\(.*\):$/\1/p' signed)" \
        "$(vorl http base --raw signed | openssl dgst -sha256 -mac HMAC -macopt "hexkey:$KEY_HEX" -binary | base64_text)"
}

@test "the base ends with one newline, without --raw" {
    signs
    device_signs with-body >signed
    vorl http base signed >shown
    vorl http base --raw signed >raw
    { cat raw && echo; } | cmp - shown
}

@test "what is not told is what the software platform signs" {
    signs
    device_signs with-body >signed
    contains "$(head_of signed)" 'Signature-Input: vorl=("@method" "@authority" "@path" "@query" "content-digest" "content-type");created=1700000000;expires=1700000300;nonce="'
    contains "$(head_of signed)" '";keyid="device";alg="hmac-sha256";tag="vorl-1"'
    succeeds service_verifies signed
    equals "$output" "the signature holds"
}

@test "a message is signed with the derived key of a context" {
    signs
    # The label under which it is derived is a part of the format.
    printf 'libVORL HTTP request signing key' |
        openssl dgst -sha256 -mac HMAC -macopt "hexkey:$KEY_HEX" -binary >derived
    vorl http sign -k key --context-key --keyid device "${NOW[@]}" with-body >signed
    succeeds vorl http verify -k derived --key-format raw "${NOW[@]}" signed
    succeeds vorl http verify -k key --context-key "${NOW[@]}" signed
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies signed
    echo 00 >short
    refuses 3 "'short': the key has 1 byte, 16 are needed" "it was read as hex; --key-format raw|hex|base64 says how to read it" \
        vorl http verify -k short --context-key signed
}

@test "the head keeps how its lines end, and the body is not touched" {
    signs
    for end in '\n' '\r\n'; do
        # shellcheck disable=SC2059
        printf "POST /a?b HTTP/1.1${end}Host:  here${end}content-type: x${end}Content-Length: 7${end}${end}" >before
        printf 'a\r\n\x00\xff\nb' >body
        cat body >>before
        device_signs before -o after
        tail -c 7 after | cmp - body
        # shellcheck disable=SC2059
        printf "POST /a?b HTTP/1.1${end}Host:  here${end}content-type: x${end}Content-Length: 7${end}" >start
        head -c "$(stat -c %s start)" after | cmp - start
        equals "$(grep -c $'\r$' after)" "$([ "$end" = '\n' ] && echo 1 || echo 9)"
        succeeds service_verifies after
    done
}

@test "a newline that an editor puts behind the body is no part of it" {
    signs
    device_signs with-body >signed
    equals "$(tail -c 19 signed)" '{"hello": "world"}'
    head -c -1 signed >shorter
    succeeds service_verifies shorter
    { cat signed && echo; } >longer
    refuses 3 "'longer' is no HTTP message: line 4: Content-Length is 18, and the body has 20 bytes" "" service_verifies longer
}

@test "a message that is signed again has one signature" {
    signs
    device_signs with-body >once
    device_signs once >twice
    equals "$(grep -c '^Signature' twice)" 2
    succeeds service_verifies twice
    run ! cmp -s once twice
}

@test "signatures of several labels stand side by side" {
    signs
    device_signs with-body | device_signs --label other >signed
    succeeds service_verifies signed
    succeeds service_verifies --label other signed
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies --label third signed
}

@test "a request whose target is absolute is signed like one with a host" {
    signs
    printf '%s\n' 'GET https://Example.com:443/a HTTP/1.1' '' | device_signs >absolute
    succeeds vorl http base absolute
    contains "$output" $'"@authority": example.com\n"@path": /a\n"@query": ?\n'
    printf '%s\n' 'GET /a HTTP/1.1' 'Host: example.com' '' | device_signs --cover @method,@scheme,@target-uri --scheme https >origin
    succeeds vorl http base --scheme https origin
    contains "$output" $'"@scheme": https\n"@target-uri": https://example.com/a\n'
    succeeds service_verifies --scheme https --cover @target-uri origin
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies --cover @target-uri origin
}

@test "a response is signed with the request that it answers" {
    signs
    device_signs with-body >request
    device_signs --request request response >answer
    succeeds vorl http base --request request answer
    contains "$output" $'"@status": 200\n"content-digest": sha-256=:LPJNul+wow4m6DsqxbninhsWHlwfp0JecwQzYpOLmCQ=:\n"@method";req: POST\n'
    contains "$output" $'\n"signature";req: vorl=:'
    succeeds service_verifies --request request answer
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies answer
    device_signs with-body >another
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies --request another answer
}

@test "a response is signed alone where its request is not known" {
    signs
    device_signs response >answer
    succeeds service_verifies answer
    sed 's/200 OK/201 OK/' answer >changed
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies changed
}

@test "whatever is wrong with a signature, the answer is the same" {
    signs
    device_signs with-body >signed
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies with-body
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies --keyid another signed
    refuses 1 "${DOES_NOT_HOLD[@]}" vorl http verify -k <(echo "$WRONG_KEY_HEX") --key-format hex "${NOW[@]}" signed
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies --tag another signed
    refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies --cover @method,date signed
    for change in s/POST/PUT/ 's#/foo#/bar#' s/example.com/example.org/ s/world/earth/ s#application/json#text/plain# \
        's/expires=1700000300/expires=1700000301/' '/^Signature:/d' '/^Signature-Input:/d' 's/^Signature: vorl/&2/'; do
        sed "$change" signed >changed
        run ! cmp -s signed changed
        refuses 1 "${DOES_NOT_HOLD[@]}" service_verifies changed
    done
}

@test "a signature holds within its time" {
    signs
    device_signs with-body >signed
    for second in 1699999995 1700000300; do
        succeeds vorl http verify -k key --key-format hex --at $second signed
    done
    for second in 1699999994 1700000301; do
        refuses 1 "${DOES_NOT_HOLD[@]}" vorl http verify -k key --key-format hex --at $second signed
    done
    refuses 1 "${DOES_NOT_HOLD[@]}" vorl http verify -k key --key-format hex signed
    vorl http sign -k key --key-format hex --keyid device with-body >now
    succeeds vorl http verify -k key --key-format hex now
}

@test "the base of a message that is not signed is the one it would be signed with" {
    signs
    vorl http base --keyid device "${NOW[@]}" --parameters created,keyid --cover @method,content-type with-body >shown
    equals "$(cat shown)" '"@method": POST
"content-type": application/json
"@signature-params": ("@method" "content-type");created=1700000000;keyid="device"'
    refuses 2 "a name for the key is needed" "give it with --keyid, or leave keyid out of --parameters" \
        vorl http base with-body
    succeeds vorl http base --parameters created with-body
    device_signs --parameters created with-body >nameless
    succeeds vorl http base nameless
}

@test "what cannot be signed is told by its component" {
    signs
    refuses 3 "'with-port' cannot be signed so: the message has no component \"date\"" "" device_signs --cover date with-port
    refuses 3 "'with-port' cannot be signed so: there is no answered request for component \"@method\";req" "" \
        device_signs --cover '@method;req' with-port
    sed 's/^Host:.*/Host: a:b/' with-port >port
    refuses 3 "'port' cannot be signed so: the request's URI is no absolute one of http or https" "" device_signs port
    equals "$(left_behind . key rfc9421 with-port with-body response port)" ""
}

@test "a message with more fields than are verified is not signed" {
    signs
    { printf '%s\n' 'GET / HTTP/1.1' 'Host: a' && printf 'X: %08192d\n\n' 0; } >long
    run --separate-stderr device_signs long
    equals "$status" 3
    # shellcheck disable=SC2154
    [[ "$stderr" == "vorl: error: 'long' cannot be signed so: the signed message has "8???" bytes of fields, 8192 are verified at the most" ]]
    equals "$output" ""
}

@test "the base of a message that lost what was signed is refused by its component" {
    signs
    device_signs with-body >signed
    sed '/^Content-Type:/d' signed >changed
    refuses 3 "'changed' has no such signature base: the message has no component \"content-type\"" "" \
        vorl http base changed
    device_signs --request with-body response >answer
    refuses 3 "'answer' has no such signature base: there is no answered request for component \"@method\";req" "" \
        vorl http base answer
    sed 's/^Signature-Input: .*/Signature-Input: vorl=(/' signed >broken
    refuses 3 "'broken' has no such signature base: the message has a field Signature-Input that cannot be read" "" \
        vorl http base --keyid device broken
}

@test "what no signature looks like is wrong usage" {
    signs
    local hint="components are written in lower case, such as @method or content-type, and a label too"
    refuses 2 "unknown component Date" "$hint" device_signs --cover Date with-body
    refuses 2 "unknown component @frobnicate" "$hint" device_signs --cover @method,@frobnicate with-body
    refuses 2 "a component stands twice" "$hint" device_signs --cover date,date with-body
    refuses 2 "the signature's label or tag cannot be written" "$hint" device_signs --label Vorl with-body
    refuses 2 "signature parameter created stands twice" "$hint" device_signs --parameters created,keyid,created with-body
    refuses 2 "a signature cannot cover the field signature that it becomes a part of" "$hint" device_signs --cover signature with-body
    local seventeen
    seventeen=$(printf 'x-%s,' {1..17})
    refuses 2 "17 components are too many, 16 are verified at the most" "$hint" device_signs --cover "${seventeen%,}" with-body
}

@test "options are read strictly" {
    local hint="'vorl http sign --help' shows the usage"
    refuses 2 "--cover: a name is missing in 'date,'" "$hint" vorl http sign --cover date, note
    refuses 2 "--cover: a name is missing in ''" "$hint" vorl http sign --cover '' note
    refuses 2 "--parameters: there is no parameter 'Nonce'" \
        "give a list of created, expires, nonce, keyid, alg and tag, for example --parameters created,keyid" \
        vorl http sign --parameters created,Nonce note
    for seconds in '' x 1.5 0x10 ' 1' 99999999999999999999; do
        refuses 2 "--at: '$seconds' is no number of seconds" "$hint" vorl http sign --at "$seconds" note
    done
    refuses 2 "--scheme: ftp not in {http,https}" "$hint" vorl http sign --scheme ftp note
}

@test "a time of more digits than a signature has is refused" {
    signs
    refuses 3 "'with-body' cannot be signed so: the signature's time cannot be written" "" \
        vorl http sign -k key --key-format hex --keyid device --at 1000000000000000 with-body
}

@test "an empty key signs nothing and verifies nothing" {
    signs
    device_signs with-body >signed
    for format in raw hex base64; do
        refuses 3 "'/dev/null': the key is empty" "" vorl http sign -k /dev/null --key-format $format --keyid a with-body
        refuses 3 "'/dev/null': the key is empty" "" vorl http verify -k /dev/null --key-format $format signed
    done
    refuses 3 "'/dev/null': the key is empty" "" vorl http verify -k /dev/null signed
    echo >blank
    refuses 3 "'blank': the key is empty" "" vorl http verify -k blank --key-format hex signed
    refuses 3 "'/dev/null': the key has 0 bytes, 16 are needed" "" \
        vorl http sign -k /dev/null --context-key --keyid a with-body
}

@test "a key and its name are needed" {
    signs
    refuses 2 "a key is needed" "name its file with -k, or pass it with --key-fd" vorl http verify with-body
    refuses 2 "a key is needed" "name its file with -k, or pass it with --key-fd" vorl http sign --keyid a with-body
    refuses 2 "a name for the key is needed" "give it with --keyid, or leave keyid out of --parameters" \
        vorl http sign -k key --key-format hex with-body
}

@test "the message, the request, the key and the output are kept apart" {
    signs
    refuses 2 "standard input cannot be both the message and the request" "name a file for one of them" \
        vorl http verify -k key --request - -
    refuses 2 "standard input cannot be both the key and the request" "name a file for one of them" \
        vorl http verify -k - --request - response
    refuses 2 "'key' cannot be both the key and the input" \
        "name a file for one of them, or pass the key with --key-fd" vorl http verify -k key key
    refuses 2 "the key and the output are one file: 'key'" "name another file with -o: the key would be lost" \
        vorl http sign -k key --keyid a -o key with-body
    refuses 2 "'with-body' is a request itself" "--request is for a response" service_verifies --request with-port with-body
    refuses 3 "'response' is a response" "--request names the request that was answered" \
        service_verifies --request response response
}

@test "a text that is no message is refused with the line, by each command" {
    signs
    printf 'GET / HTTP/1.1\nHost: a\n folded\n\n' >folded
    local error="'folded' is no HTTP message: line 3: the line is folded: it begins with a blank"
    refuses 3 "$error" "" device_signs folded
    refuses 3 "$error" "" service_verifies folded
    refuses 3 "$error" "" vorl http base folded
    refuses 3 "$error" "" service_verifies --request folded response
    refuses 3 "'/dev/null' is empty" "" service_verifies /dev/null
    refuses 3 "cannot read 'missing': No such file or directory" "" vorl http base missing
}

@test "the message may come from standard input" {
    signs
    from_standard_input() {
        device_signs with-body | vorl http verify -k key --key-format hex "${NOW[@]}"
    }
    succeeds from_standard_input
    equals "$output" "the signature holds"
}

@test "without a signer in the library, each command says so" {
    [ "$VORL_SIGNS_HTTP" != 1 ] || skip "built with the signer"
    for command in base sign verify; do
        refuses 5 "this build has no signer of HTTP messages" \
            "the library was built with VORL_HTTP_SIGNER=OFF, or with another platform" vorl http $command note
    done
}
