# Completion of vorl(1) for fish.

# What has been typed before the cursor begins with these words of a command, which stand in front of all options.
function __vorl_in
    set -l typed (commandline -opc)[2..]
    test -z "$argv"; or test "$typed[1..$(count $argv)]" = "$argv"
end

# The same, and nothing follows them yet.
function __vorl_after
    test (count (commandline -opc)) -eq (math (count $argv) + 1); and __vorl_in $argv
end

function __vorl_digests
    printf '%s\n' SHA1 SHA224 SHA256 SHA384 SHA512
end

# The word before the cursor is the first of the two that this option takes.
function __vorl_within
    set -l typed (commandline -opc)
    test (count $typed) -gt 1; and test "$typed[-2]" = "$argv"
end

# Words that may go on with a list that is separated by commas.
function __vorl_list # OPTION WORD...
    set -l before (string match -r '.*,' -- (commandline -ct | string replace -r "^$argv[1]=" ''))
    for word in $argv[2..]
        string match -q -- "*,$word,*" ",$before"; or echo "$before$word"
    end
end

complete -c vorl -f
complete -c vorl -s h -l help -d 'Show the help and exit'
complete -c vorl -l version -d 'Show the versions of vorl and OpenSSL and exit'

complete -c vorl -n __vorl_after -a protect -d 'Put a message into an envelope'
complete -c vorl -n __vorl_after -a unprotect -d 'Take the message out of an envelope'
complete -c vorl -n __vorl_after -a inspect -d 'Show field by field what a record is made of'
complete -c vorl -n __vorl_after -a explain -d 'Show which check of a receiver refuses a record'
complete -c vorl -n __vorl_after -a digest -d 'Compute the digest of an input'
complete -c vorl -n __vorl_after -a hmac -d 'Compute or verify the authentication code of an input'
complete -c vorl -n __vorl_after -a dh -d 'Agree on a secret with a party that shares no key'
complete -c vorl -n __vorl_after -a keys -d 'Derive the keys of a client'
complete -c vorl -n __vorl_after -a sign -d 'Sign an input with a private key'
complete -c vorl -n __vorl_after -a verify -d 'Verify a signature with a public key or a certificate'
complete -c vorl -n __vorl_after -a http -d 'Sign HTTP messages, or verify their signatures'
complete -c vorl -n __vorl_after -a cert -d 'Show or judge a certificate'
complete -c vorl -n __vorl_after -a doctor -d 'Check what the tool depends on'
complete -c vorl -n __vorl_after -a vectors -d 'Write sample records for the tests of other implementations'
complete -c vorl -n __vorl_after -a platform -d 'Judge the platform that the library stands on'

complete -c vorl -n '__vorl_after dh' -a params -d 'Make and judge the groups that an agreement takes place in'
complete -c vorl -n '__vorl_after dh' -a new -d 'Make a key pair in a group'
complete -c vorl -n '__vorl_after dh' -a pub -d 'Write the text to send to the peer'
complete -c vorl -n '__vorl_after dh' -a secret -d 'Compute the secret that is shared with a peer'
complete -c vorl -n '__vorl_after dh params' -a new -d 'Search for a new group'
complete -c vorl -n '__vorl_after dh params' -a show -d 'Show the numbers of a group'
complete -c vorl -n '__vorl_after dh params' -a check -d 'Let OpenSSL judge a group'
complete -c vorl -n '__vorl_after keys' -a derive -d 'Derive the encryption key and the HMAC key of a client'
complete -c vorl -n '__vorl_after platform' -a check -d 'Hold the platform against all that the library asks of one'
complete -c vorl -n '__vorl_after http' -a base -d 'Show what the signature of an HTTP message is computed of'
complete -c vorl -n '__vorl_after http' -a sign -d 'Sign an HTTP message'
complete -c vorl -n '__vorl_after http' -a verify -d 'Verify the signature of an HTTP message'
complete -c vorl -n '__vorl_after cert' -a show -d 'Show what a certificate says'
complete -c vorl -n '__vorl_after cert' -a check -d 'Judge the time and the key of a certificate'

# What several commands have: operands that are files, and options.
for command in protect unprotect inspect explain digest hmac 'dh params show' 'dh params check' 'dh pub' 'dh secret' \
        sign verify 'http base' 'http sign' 'http verify' 'cert show' 'cert check'
    complete -c vorl -n "__vorl_in $command" -F
end
for command in protect unprotect explain hmac sign verify 'http sign' 'http verify'
    complete -c vorl -n "__vorl_in $command" -s k -l key -rF -d 'File that holds the key'
end
for command in protect unprotect explain hmac sign 'http sign' 'http verify'
    complete -c vorl -n "__vorl_in $command" -l key-fd -x -d 'Open file descriptor to read the key from'
end
for command in protect unprotect explain hmac 'http sign' 'http verify'
    complete -c vorl -n "__vorl_in $command" -l key-format -xa 'raw hex base64' -d 'How the key is written'
end
for command in protect unprotect 'dh params new' 'dh new' 'dh secret' sign 'http sign'
    complete -c vorl -n "__vorl_in $command" -s o -l output -rF -d 'File to write'
end
for command in digest hmac
    complete -c vorl -n "__vorl_in $command" -s a -l algorithm -xa '(__vorl_digests)' -d 'Digest'
end
for command in inspect explain 'cert show' doctor 'platform check'
    complete -c vorl -n "__vorl_in $command" -l json -d 'Write JSON'
end
for command in inspect 'keys derive'
    complete -c vorl -n "__vorl_in $command" -l show-secrets -d 'Show secret keys instead of their fingerprints'
end
for command in verify 'cert check'
    complete -c vorl -n "__vorl_in $command" -l at -x -d 'Judge the validity at this time instead of now'
end
for command in 'http base' 'http sign' 'http verify'
    complete -c vorl -n "__vorl_in $command" -l keyid -x -d 'Name of the key'
    complete -c vorl -n "__vorl_in $command" -l label -x -d 'Name of the signature in its fields'
    complete -c vorl -n "__vorl_in $command" -l tag -x -d 'Value of the parameter tag'
    complete -c vorl -n "__vorl_in $command" -l cover -x -d 'Components that are covered'
    complete -c vorl -n "__vorl_in $command" -l parameters -d 'Parameters of the signature' \
        -xa '(__vorl_list --parameters created expires nonce keyid alg tag)'
    complete -c vorl -n "__vorl_in $command" -l at -x -d 'Sign or judge at this time instead of now'
    complete -c vorl -n "__vorl_in $command" -l scheme -xa 'http https' -d 'What a target that is a path is a path of'
    complete -c vorl -n "__vorl_in $command" -l request -rF -d 'File that holds the request that a response answers'
end
for command in explain 'dh new'
    complete -c vorl -n "__vorl_in $command" -s p -l params -rF -d 'Diffie-Hellman parameters'
end
for command in explain verify
    complete -c vorl -n "__vorl_in $command" -l cert -rF -d 'File that holds a certificate for the key'
end
for command in 'http sign' 'http verify'
    complete -c vorl -n "__vorl_in $command" -l context-key -d 'The key is that of a message context'
end

complete -c vorl -n '__vorl_in http base' -l raw -d 'Write no newline behind it'
complete -c vorl -n '__vorl_in protect' -l level -xa 'full test none' -d 'Level of protection'
complete -c vorl -n '__vorl_in protect' -l raw -d 'Write the envelope itself'
complete -c vorl -n '__vorl_in unprotect' -l accept -xa '(__vorl_list --accept full test none)' -d 'Levels that are accepted'
complete -c vorl -n '__vorl_in unprotect' -l raw -d 'Read the envelope itself'
complete -c vorl -n '__vorl_in inspect' -l as -d 'What the input is' -xa \
    'dh-record dh-params certificate public-key private-key signature envelope dh-state'
complete -c vorl -n '__vorl_in explain' -l accept -xa '(__vorl_list --accept full test none)' -d 'Levels that are accepted'
complete -c vorl -n '__vorl_in explain' -l level -xa 'full test none' -d 'Level of the context'
complete -c vorl -n '__vorl_in explain' -l public-key -rF -d 'File that holds the public key'
complete -c vorl -n '__vorl_in explain' -l signed -rF -d 'What was signed'
complete -c vorl -n '__vorl_in explain' -l as -xa 'envelope dh-record signature' -d 'What the input is'
complete -c vorl -n '__vorl_in hmac' -l verify -x -d 'Compare the code with this one'
complete -c vorl -n '__vorl_in dh params new' -l bits -x -d 'Size of the prime'
complete -c vorl -n '__vorl_in dh params new' -l generator -xa '2 5' -d Generator
complete -c vorl -n '__vorl_in keys derive' -l secret -rF -d 'File that holds a shared secret'
complete -c vorl -n '__vorl_in keys derive' -l id-file -rF -d 'File that holds the identifier of a shopper or a device'
complete -c vorl -n '__vorl_in keys derive' -l enc-out -rF -d 'File to write the encryption key to'
complete -c vorl -n '__vorl_in keys derive' -l hmac-out -rF -d 'File to write the HMAC key to'
complete -c vorl -n '__vorl_in verify' -s s -l signature -rF -d 'File that holds the signature record'
complete -c vorl -n '__vorl_in verify' -l ignore-time -d 'Do not check the validity period of the certificate'
complete -c vorl -n '__vorl_in vectors' -s o -l output -xa '(__fish_complete_directories)' -d 'Folder to write the files to'
complete -c vorl -n '__vorl_in vectors' -l force -d 'Replace files that are there already'
complete -c vorl -n '__vorl_in platform check' -l own-keys -rF -d 'Files with the bytes of two keys of the platform'
complete -c vorl -n '__vorl_in platform check; and __vorl_within --own-keys' -F
