#!/usr/bin/env bats
# The manual pages name what the help names, no more and no less, and are well-formed.

load support
load help_support

setup_file() {
    read_help "$BATS_FILE_TMPDIR/help"
}

setup() {
    cd "$BATS_TEST_DIRNAME/../../docs/man" || return 1
    help=$BATS_FILE_TMPDIR/help
}

# page_of COMMAND: the first word of a command decides; the words of a group share a page.
page_of() {
    local words
    read -ra words <<<"$1"
    echo "vorl${words[1]:+-${words[1]}}.1.scd"
}

# part PAGE HEADING: what stands below it, to the next heading of the same or a higher rank.
part() {
    awk -v heading="$2" '
        /^#/ { match($0, /^#+/); rank = RLENGTH }
        /^#/ && found && rank <= depth { exit }
        found { print }
        $0 == heading { found = 1; depth = rank }' "$1"
}

# All that looks like an option, without its marks.
options_in() {
    grep -o -E '\*--?[a-zA-Z][a-zA-Z0-9-]*' | tr -d '*' | sort -u
}

# explained PAGE COMMAND: the options that the page gives a paragraph: its own ones, and those of one command of a group.
explained() {
    { part "$1" "# OPTIONS"; part "$1" "## $2"; } | grep -E '^\*-' | options_in
}

# The lines that show how a command is called.
synopsis() { # PAGE COMMAND
    part "$1" "# SYNOPSIS" | grep -F "*$2*"
}

is_group() { # COMMAND
    [ -n "$(in_help "$help" "$1" command)" ]
}

@test "each command has a page, and each page a command" {
    local pages
    pages=$(while IFS= read -r command; do page_of "$command"; done < <(commands_in_help "$help") | sort -u)
    equals "$(printf '%s\n' *.scd | sort)" "$pages"
}

@test "each page is built" {
    local pages
    pages=$(sed -n '/^foreach(name/,/)/p' CMakeLists.txt | grep -o -E 'vorl[a-z-]*' | sort)
    equals "$pages" "$(printf '%s\n' *.scd | sed 's/\.1\.scd$//' | sort)"
}

@test "each option is explained, and nothing else is" {
    local command page
    while IFS= read -r command; do
        page=$(page_of "$command")
        equals "$command: $(explained "$page" "$command")" "$command: $(in_help "$help" "$command" option | sort -u)"
    done < <(commands_in_help "$help")
}

@test "a page mentions options of its own commands only" {
    local page command known
    for page in vorl-*.scd; do
        known=$(while IFS= read -r command; do
            [ "$(page_of "$command")" != "$page" ] || in_help "$help" "$command" option
        done < <(commands_in_help "$help"))
        equals "$page: $(options_in <"$page" | grep -v -x -F -e "$known")" "$page: "
    done
}

@test "the synopsis has each option in one spelling, and each operand" {
    local command page is name
    while IFS= read -r command; do
        ! is_group "$command" || continue
        page=$(page_of "$command")
        is=$(synopsis "$page" "$command")
        equals "$command: $(grep -o -E '\*--?[a-z-]+' <<<"$is" | tr -d '*' | sort -u)" \
            "$command: $(first_spellings "$command" | sort -u)"
        for name in $(in_help "$help" "$command" operand); do
            contains "$is" "_${name}_"
        done
    done < <(commands_in_help "$help")
}

# The short spelling of an option, or its long one where there is no other. What every command has is left out.
first_spellings() { # COMMAND
    # shellcheck disable=SC2086
    "$VORL" ${1#vorl} --help | sed -nE 's/^  (-[a-zA-Z0-9-]+).*/\1/p' | grep -v -x -e -h -e --version || true
}

@test "a page says what it needs to say" {
    local page heading
    for page in *.scd; do
        for heading in NAME SYNOPSIS DESCRIPTION OPTIONS "EXIT STATUS" EXAMPLES "SEE ALSO"; do
            grep -q -x "# $heading" "$page" || { echo "$page: no $heading" >&2; return 1; }
        done
        contains "$(part "$page" "# NAME")" "${page%.1.scd} - "
    done
}

@test "a page sends to pages that there are" {
    local page
    for page in $(grep -h -o -E '\*vorl[a-z-]*\*\(1\)' ./*.scd | tr -d '*' | sed 's/(1)/.1.scd/' | sort -u); do
        [ -f "$page" ] || { echo "there is no $page" >&2; return 1; }
    done
}

@test "the page of the tool names each command" {
    local command
    while IFS= read -r command; do
        is_group "$command" || contains "$(part vorl.1.scd "# COMMANDS")" "*${command#vorl }*"
    done < <(commands_in_help "$help")
}

@test "the pages are formatted without a warning" {
    command -v scdoc >/dev/null && command -v man >/dev/null || skip "there is no scdoc or no man"
    local source page
    for source in *.scd; do
        page=$BATS_TEST_TMPDIR/${source%.scd}
        scdoc <"$source" >"$page"
        equals "$source: $(MANROFFSEQ='' MANWIDTH=80 LC_ALL=C.UTF-8 \
            man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)" "$source: "
        contains "$(MANWIDTH=80 LC_ALL=C.UTF-8 man -l "$page" | cat)" "EXIT STATUS"
    done
}
