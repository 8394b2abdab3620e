# What bash offers at the end of each line of standard input.
#
#   bash complete.bash FOLDER    FOLDER holds the completions; writes "LINE<tab>WORD" for each word

# shellcheck source=tools/vorl/completions/vorl.bash
. "$1/vorl.bash"

# Names of files come from the line editor, which is not there.
compopt() {
    local kind
    case $* in
        "-o default") kind="file" ;;
        "-o dirnames") kind="directory" ;;
        *) return 1 ;;
    esac
    # shellcheck disable=SC2154
    mapfile -t COMPREPLY < <(compgen -A "$kind" -- "$current")
}

function_of_vorl=$(complete -p vorl | sed -E 's/^complete -F ([^ ]+) vorl$/\1/')
while IFS= read -r line; do
    # A sign of equality is a word of its own, and so is nothing behind a blank.
    read -ra COMP_WORDS <<<"${line//=/ = }"
    [[ $line != *" " ]] || COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    "$function_of_vorl" vorl
    for word in "${COMPREPLY[@]}"; do
        printf '%s\t%s\n' "$line" "$word"
    done
done
