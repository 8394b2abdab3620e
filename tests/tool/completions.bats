#!/usr/bin/env bats
# What bash, zsh and fish offer is what the help names, no more and no less. The shells really complete.

load support
load help_support

setup_file() {
    : "${VORL:?}"
    export COMPLETIONS=$BATS_TEST_DIRNAME/../../tools/vorl/completions
    cd "$BATS_FILE_TMPDIR" || return 1
    read_help help
    values_of_options >values
    mkdir folder folder/inner && echo hello >folder/note
    questions >lines
    for shell in bash zsh fish; do
        ! command -v $shell >/dev/null || (cd folder && answers $shell <../lines >../$shell)
    done
}

setup() {
    cd "$BATS_FILE_TMPDIR" || return 1
}

answers() { # SHELL
    case $1 in
        bash) bash "$BATS_TEST_DIRNAME/complete.bash" "$COMPLETIONS" ;;
        # A completion that fails may leave its terminal waiting.
        zsh) timeout 120 zsh -f "$BATS_TEST_DIRNAME/complete.zsh" "$COMPLETIONS" ;;
        fish) HOME=$BATS_FILE_TMPDIR fish --no-config "$BATS_TEST_DIRNAME/complete.fish" "$COMPLETIONS" ;;
    esac
}

options_with_values() {
    awk -F '\t' -v OFS='\t' '$2 == "option" && $4 != "-" { print $1, $3, $4 }' help
}

# The lines to be completed: each command, its options, and the value of each option.
questions() {
    commands_in_help help | sed 's/$/ /; p; s/$/-/'
    options_with_values | awk -F '\t' '{ print $1, $2, "" }'
    cat <<'LINES'
vorl prot
vorl protect --lev
vorl protect --raw 
vorl protect -- 
vorl protect note -
vorl platform check --own-keys note 
vorl protect --level=t
vorl unprotect --accept full,
vorl unprotect --accept=none,t
LINES
}

takes_path() { # TYPE
    [[ $1 == FILE || $1 == STATE || $1 == SECRET || $1 == DIR ]]
}

# The words that an option takes, as the tool names them when it refuses another one. A file it would not refuse, but
# go to work, which in a search for a group takes long.
values_of_options() {
    local command option type
    options_with_values | while IFS=$'\t' read -r command option type; do
        ! takes_path "$type" || continue
        # shellcheck disable=SC2086
        "$VORL" ${command#vorl} "$option" frobnicate 2>&1 </dev/null | sed -nE \
            -e 's/.* not in \{(.*)\}$/\1/p' -e 's/.* is not (.*, .* or .*)$/\1/p' \
            -e 's/.*: give a list of (.* and .*), for example .*/\1/p' |
            sed -E 's/,? (or|and) |, ?/\n/g' | tr ',' '\n' | sed "s/^/$command $option\t/"
    done
}

# offered SHELL LINE: the words, sorted. A folder may have its stroke.
offered() {
    awk -F '\t' -v line="$2" '$1 == line { print $2 }' "$1" | sed 's#/$##' | sort -u
}

# offers SHELL LINE WORD...: these and no others.
offers() {
    equals "$(offered "$1" "$2")" "$(printf '%s\n' "${@:3}" | sort -u)" || {
        echo "after: $2" >&2
        return 1
    }
}

needs() {
    [ -f "$1" ] || skip "there is no $1"
}

each_command_offers_its_options() { # SHELL
    local command
    while IFS= read -r command; do
        # shellcheck disable=SC2046
        offers "$1" "$command -" $(in_help help "$command" option)
    done < <(commands_in_help help)
}

each_group_offers_its_commands() { # SHELL
    local group
    while IFS= read -r group; do
        # shellcheck disable=SC2046
        offers "$1" "$group " $(in_help help "$group" command)
    done < <(awk -F '\t' '$2 == "command" { print $1 }' help | uniq)
}

files_are_offered_where_they_are_taken() { # SHELL
    local command wanted is
    while IFS= read -r command; do
        [ -z "$(in_help help "$command" command)" ] || continue
        wanted=$(in_help help "$command" operand | sed 's/.*/note/' | uniq)
        is=$(offered "$1" "$command " | grep -x note) || true
        equals "$command: $is" "$command: $wanted"
    done < <(commands_in_help help)
}

each_option_offers_its_values() { # SHELL
    local command option type values
    while IFS=$'\t' read -r command option type; do
        case $type in
            FILE | STATE | SECRET) values="inner note" ;;
            DIR) values=inner ;;
            *) values=$(offered values "$command $option") ;;
        esac
        # shellcheck disable=SC2086
        offers "$1" "$command $option " $values
    done < <(options_with_values)
}

a_line_goes_on_where_it_stands() { # SHELL
    offers "$1" "vorl prot" protect
    offers "$1" "vorl protect --lev" --level
    offers "$1" "vorl protect --raw " inner note
    offers "$1" "vorl protect -- " inner note
    offers "$1" "vorl platform check --own-keys note " inner note
    # shellcheck disable=SC2046
    offers "$1" "vorl protect note -" $(in_help help "vorl protect" option)
}

@test "the values of an option are what the tool names" {
    offers values "vorl protect --level" full test none
    offers values "vorl unprotect --accept" full test none
    offers values "vorl digest -a" SHA1 SHA224 SHA256 SHA384 SHA512
    offers values "vorl dh params new --generator" 2 5
}

@test "bash offers the options of each command" {
    each_command_offers_its_options bash
}

@test "bash offers the commands of each group" {
    each_group_offers_its_commands bash
}

@test "bash offers files where they are taken" {
    files_are_offered_where_they_are_taken bash
}

@test "bash offers the values of each option" {
    each_option_offers_its_values bash
}

@test "bash goes on where the line stands" {
    a_line_goes_on_where_it_stands bash
    offers bash "vorl protect --level=t" test
    offers bash "vorl unprotect --accept full," full,test full,none
    offers bash "vorl unprotect --accept=none,t" none,test
}

@test "zsh offers the options of each command" {
    needs zsh
    each_command_offers_its_options zsh
}

@test "zsh offers the commands of each group" {
    needs zsh
    each_group_offers_its_commands zsh
}

@test "zsh offers files where they are taken" {
    needs zsh
    files_are_offered_where_they_are_taken zsh
}

@test "zsh offers the values of each option" {
    needs zsh
    each_option_offers_its_values zsh
}

@test "zsh goes on where the line stands" {
    needs zsh
    a_line_goes_on_where_it_stands zsh
    offers zsh "vorl protect --level=t" --level=test
    offers zsh "vorl unprotect --accept full," full,test full,none
    offers zsh "vorl unprotect --accept=none,t" --accept=none,test
}

@test "fish offers the options of each command" {
    needs fish
    each_command_offers_its_options fish
}

@test "fish offers the commands of each group" {
    needs fish
    each_group_offers_its_commands fish
}

@test "fish offers files where they are taken" {
    needs fish
    files_are_offered_where_they_are_taken fish
}

@test "fish offers the values of each option" {
    needs fish
    each_option_offers_its_values fish
}

@test "fish goes on where the line stands" {
    needs fish
    a_line_goes_on_where_it_stands fish
    offers fish "vorl protect --level=t" --level=test
    offers fish "vorl unprotect --accept full," full,test full,none
    offers fish "vorl unprotect --accept=none,t" --accept=none,test
}
