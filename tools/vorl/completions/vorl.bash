# Completion of vorl(1) for bash, which needs nothing else. Bash 4 and later.
# shellcheck shell=bash

# What may follow a command: other words of commands, options, and operands that are files.
_vorl_describe() { # COMMAND
    subcommands="" options="" operands=""
    case $1 in
        vorl) subcommands="protect unprotect inspect explain digest hmac dh keys sign verify http cert doctor vectors platform" ;;
        "vorl protect") options="-k --key --key-fd --key-format --level --raw -o --output" operands=files ;;
        "vorl unprotect") options="-k --key --key-fd --key-format --accept --raw -o --output" operands=files ;;
        "vorl inspect") options="--json --as --show-secrets" operands=files ;;
        "vorl explain")
            options="-k --key --key-fd --key-format --accept --level -p --params --public-key --cert --signed --as --json" operands=files
            ;;
        "vorl digest") options="-a --algorithm" operands=files ;;
        "vorl hmac") options="-k --key --key-fd --key-format -a --algorithm --verify" operands=files ;;
        "vorl dh") subcommands="params new pub secret" ;;
        "vorl dh params") subcommands="new show check" ;;
        "vorl dh params new") options="--bits --generator -o --output" ;;
        "vorl dh params show" | "vorl dh params check") operands=files ;;
        "vorl dh new") options="-p --params -o --output" ;;
        "vorl dh pub") operands=files ;;
        "vorl dh secret") options="-o --output" operands=files ;;
        "vorl keys") subcommands="derive" ;;
        "vorl keys derive") options="--secret --id-file --enc-out --hmac-out --show-secrets" ;;
        "vorl sign") options="-k --key --key-fd -o --output" operands=files ;;
        "vorl verify") options="-k --key --cert -s --signature --at --ignore-time" operands=files ;;
        "vorl http") subcommands="base sign verify" ;;
        "vorl http "*)
            options="--keyid --label --tag --cover --parameters --at --scheme --request" operands=files
            [[ $1 == "vorl http base" ]] || options+=" -k --key --key-fd --key-format --context-key"
            [[ $1 != "vorl http base" ]] || options+=" --raw"
            [[ $1 != "vorl http sign" ]] || options+=" -o --output"
            ;;
        "vorl cert") subcommands="show check" ;;
        "vorl cert show") options="--json" operands=files ;;
        "vorl cert check") options="--at" operands=files ;;
        "vorl doctor") options="--json" ;;
        "vorl vectors") options="-o --output --force" ;;
        "vorl platform") subcommands="check" ;;
        "vorl platform check") options="--json --own-keys" ;;
    esac
    options+=" -h --help --version"
}

# What the value of an option is: one of some words, a file, a folder, or something that cannot be guessed. Fails where
# the option takes none.
_vorl_value() { # COMMAND OPTION
    case $2 in
        --level) words="full test none" ;;
        --accept) list="full test none" ;;
        --parameters) list="created expires nonce keyid alg tag" ;;
        --key-format) words="raw hex base64" ;;
        --scheme) words="http https" ;;
        --as)
            words="dh-record dh-params certificate public-key private-key signature envelope dh-state"
            [[ $1 != "vorl explain" ]] || words="envelope dh-record signature"
            ;;
        -a | --algorithm) words="SHA1 SHA224 SHA256 SHA384 SHA512" ;;
        --generator) words="2 5" ;;
        -o | --output)
            words=files
            [[ $1 != "vorl vectors" ]] || words=folders
            ;;
        -k | --key | -p | --params | -s | --signature | --cert | --public-key | --signed | --own-keys | --request | --secret | --id-file | --enc-out | --hmac-out) words=files ;;
        --key-fd | --bits | --verify | --at | --keyid | --label | --tag | --cover) ;;
        *) return 1 ;;
    esac
}

_vorl_offer() { # WORDS, or "files", or "folders"
    case $1 in
        files) compopt -o default ;;
        folders) compopt -o dirnames ;;
        *) mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current") ;;
    esac
}

# One more word of a list that is separated by commas.
_vorl_offer_in_list() { # WORDS
    local before="" word more=""
    [[ $current != *,* ]] || before=${current%,*},
    for word in $1; do
        [[ ,$before == *,$word,* ]] || more+=" $before$word"
    done
    _vorl_offer "$more"
}

_vorl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local subcommands options operands words="" list="" command=vorl word
    COMPREPLY=()
    # Bash makes three words of --level=test.
    if [[ $current == "=" ]]; then
        current=""
    elif [[ $previous == "=" ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    elif [[ $COMP_CWORD -gt 2 && ${COMP_WORDS[COMP_CWORD - 2]} == --own-keys ]]; then
        previous=--own-keys # which takes two
    fi

    _vorl_describe vorl
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ " $subcommands " == *" $word "* ]] || break
        command+=" $word"
        _vorl_describe "$command"
    done

    if [[ " ${COMP_WORDS[*]:1:COMP_CWORD-1} " == *" -- "* ]]; then
        _vorl_offer "$operands"
    elif [[ " $options " == *" $previous "* ]] && _vorl_value "$command" "$previous"; then
        if [[ -n $list ]]; then
            _vorl_offer_in_list "$list"
        else
            _vorl_offer "$words"
        fi
    elif [[ $current == -* || -z $subcommands$operands ]]; then
        _vorl_offer "$options"
    else
        _vorl_offer "$subcommands$operands"
    fi
}

complete -F _vorl vorl
