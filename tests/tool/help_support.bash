# What the help says of each command, as a table of lines with four words, separated by tabs:
#
#   COMMAND  command  WORD              one of the words that go on with a group of commands
#   COMMAND  option   NAME      TYPE    each spelling of an option; TYPE is "-" where it takes no value
#   COMMAND  operand  NAME
#
# COMMAND is all words, "vorl dh params new".

help_of() { # COMMAND
    # shellcheck disable=SC2086
    "$VORL" ${1#vorl} --help | awk -v OFS='\t' -v command="$1" '
        /^[A-Z][a-z]+:$/ { part = $1; next }
        part == "Subcommands:" && /^  [a-z]/ { print command, "command", $1 }
        part == "Positionals:" && /^  [A-Z]/ { print command, "operand", $1 }
        part == "Options:" && /^  -/ {
            # What an option is called and what it takes stand before the first run of blanks.
            split(substr($0, 3), columns, /  +/)
            split(columns[1], words, " ")
            count = split(words[1], names, ",")
            for (i = 1; i <= count; ++i) {
                print command, "option", names[i], words[2] ~ /^[A-Z]+$/ && words[2] != "REQUIRED" ? words[2] : "-"
            }
        }'
}

help_table() { # COMMAND: of this command and all that go on with it
    local table word
    table=$(help_of "$1")
    printf '%s\n' "$table"
    for word in $(awk -F '\t' '$2 == "command" { print $3 }' <<<"$table"); do
        help_table "$1 $word"
    done
}

# in_help TABLE COMMAND KIND: the names of that kind.
in_help() {
    awk -F '\t' -v command="$2" -v kind="$3" '$1 == command && $2 == kind { print $3 }' "$1"
}

# commands_in_help TABLE: all commands, groups and the tool itself included.
commands_in_help() {
    cut -f 1 "$1" | uniq
}

# Writes the table, and looks whether it holds what is known to be there: no test is better than this reading.
read_help() { # TABLE
    help_table vorl >"$1"
    grep -q -x -F $'vorl\tcommand\tprotect' "$1"
    grep -q -x -F $'vorl dh\tcommand\tparams' "$1"
    grep -q -x -F $'vorl dh params new\toption\t--generator\tN' "$1"
    grep -q -x -F $'vorl dh new\toption\t-p\tFILE' "$1"
    grep -q -x -F $'vorl verify\toption\t--cert\tFILE' "$1"
    grep -q -x -F $'vorl verify\toption\t--ignore-time\t-' "$1"
    grep -q -x -F $'vorl dh secret\toperand\tPEERTEXT' "$1"
}
