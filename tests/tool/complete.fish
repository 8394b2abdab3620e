# What fish offers at the end of each line of standard input.
#
#   fish --no-config complete.fish FOLDER    FOLDER holds the completions; writes "LINE<tab>WORD" for each word

source $argv[1]/vorl.fish

while read --local line
    for offered in (complete --do-complete=$line)
        printf '%s\t%s\n' $line (string split --max 1 --fields 1 \t -- $offered)
    end
end
