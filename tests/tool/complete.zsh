# What zsh offers at the end of each line of standard input, completed in a terminal as for a user.
#
#   zsh -f complete.zsh FOLDER    FOLDER holds the completions; writes "LINE<tab>WORD" for each word

zmodload zsh/zpty

# The end is written in two parts, so that the terminal's echo of this text is not taken for it.
setup='
    fpath=('${(q)1}' $fpath)
    autoload -Uz compinit && compinit -D -u
    # All that is offered passes through compadd; with -O, -A or -D, it is only asked what it would offer.
    compadd() {
        if [[ -z ${(M)@:#-(O|A|D)*} ]]; then
            local -a offered
            builtin compadd -O offered "$@"
            (( $#offered )) && print -rl -- "<word>"${IPREFIX}${^offered}"</word>"
        fi
        builtin compadd "$@"
    }
    finish() { compstate[insert]= compstate[list]=; print -r "<"end">"; }
    offer() { comppostfuncs=(finish); _main_complete; }
    zle -C offer complete-word offer
    bindkey "^I" offer
    bindkey "^U" kill-whole-line
    PS1=
    print -r "<"end">"
'
TERM=dumb zpty shell zsh -f -i
zpty -w shell "eval ${(qq)setup}"
zpty -r shell output '*<end>*'
while IFS= read -r line; do
    zpty -w -n shell $line$'\t'
    zpty -r shell output '*<end>*'
    zpty -w -n shell $'\C-u'
    while [[ $output == *'<word>'* ]]; do
        output=${output#*<word>}
        print -r -- $line$'\t'${output%%</word>*}
    done
done
zpty -d shell
