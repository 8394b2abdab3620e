#!/usr/bin/env bats
# -o FILE: whole or not at all, with the right mode, and nothing left behind.

load support

protect_to() {
    vorl protect --level none key -o "$1"
}

@test "a protected message may be read by whom the umask lets" {
    for level in full test; do
        for mask in 022 027 077 002; do
            rm -f out
            umask $mask
            vorl protect -k key --level $level note -o out
            equals "$(stat -c %a out)" "$(printf '%o' $((0666 & ~0$mask)))"
        done
    done
}

@test "a message that is in an envelope without protection may be read by its owner only" {
    umask 000
    for raw in "" --raw; do
        rm -f out
        # shellcheck disable=SC2086
        vorl protect --level none $raw note -o out
        equals "$(stat -c %a out)" 600
    done
}

# replaced MODE: the mode of the file that replaces one of this mode.
replaced() {
    rm -f out
    touch out
    chmod "$1" out
    vorl protect -k key note -o out
    stat -c %a out
}

@test "a file that replaces another is open to nobody to whom that was closed" {
    equals "$(replaced 600)" 600
    equals "$(replaced 640)" 640
    equals "$(replaced 666)" 644
    equals "$(replaced 777)" 644
    equals "$(replaced 4755)" 644
    vorl protect -k key note -o text
    rm out
    touch out
    chmod 200 out
    vorl unprotect -k key text -o out
    equals "$(stat -c %a out)" 200
}

@test "a file that may not be written is not replaced" {
    needs_unprivileged
    mkdir folder
    echo old >folder/out
    ln -s out folder/link
    chmod 444 folder/out
    chmod 777 folder
    if [ "$(id -u)" -eq 0 ]; then
        chown 65534 folder/out
    fi
    for path in folder/out folder/link; do
        refuses 5 "cannot write '$path': Permission denied" "" \
            unprivileged "$VORL" protect --level none note -o $path
    done
    equals "$(cat folder/out)" old
    equals "$(left_behind folder out link)" ""
}

@test "an opened message may be read by its owner only" {
    protect_to text
    umask 000
    vorl unprotect --accept none text -o out
    equals "$(stat -c %a out)" 600
}

@test "a file that was open to others is closed when a secret replaces it" {
    protect_to text
    touch out
    chmod 666 out
    vorl unprotect --accept none text -o out
    equals "$(stat -c %a out)" 600
    cmp out key
}

@test "an existing file is replaced, not written into" {
    echo old >out
    ln out other
    protect_to out
    equals "$(cat other)" old
    run ! cmp -s out other
    equals "$(left_behind . key out other)" ""
}

@test "the input may be the output" {
    cp key file
    vorl protect -k key file -o file
    vorl unprotect -k key file -o file
    cmp file key
}

@test "a link is followed" {
    mkdir folder
    echo old >folder/file
    ln -s folder/file link
    protect_to link
    [ -L link ]
    equals "$(vorl unprotect --accept none folder/file)" "$KEY_HEX"
    equals "$(left_behind folder file)" ""
}

@test "a link that leads nowhere is neither replaced nor brought to life" {
    ln -s nowhere link
    refuses 5 "cannot write 'link': it is a link to something that is not there" "" protect_to link
    [ -L link ]
    equals "$(left_behind . key link)" ""
}

@test "a link that leads in a circle is told as what it is" {
    ln -s loop other
    ln -s other loop
    refuses 5 "cannot write 'loop': Too many levels of symbolic links" "" protect_to loop
    [ -L loop ] && [ -L other ]
}

@test "a link into a folder that may not be entered is told as what it is" {
    needs_unprivileged
    mkdir closed
    echo old >closed/out
    ln -s closed/out link
    chmod 700 closed
    if [ "$(id -u)" -ne 0 ]; then
        chmod 000 closed
    fi
    refuses 5 "cannot write 'link': Permission denied" "" unprivileged "$VORL" protect --level none note -o link
    chmod 700 closed
    equals "$(cat closed/out)" old
}

@test "nothing is written, nor left behind, when the run fails" {
    mkdir folder
    echo old >folder/out
    octets 0210 >broken
    run vorl unprotect -k key --raw broken -o folder/out
    equals "$status" 3
    run vorl protect -k key missing -o folder/new
    equals "$status" 3
    equals "$(cat folder/out)" old
    equals "$(left_behind folder out)" ""
}

@test "a directory is not written to" {
    mkdir folder
    for path in folder folder/ .; do
        refuses 5 "cannot write '$path': it is a directory" "" protect_to $path
    done
    equals "$(left_behind folder '')" ""
}

@test "a folder that is not there is told" {
    refuses 5 "cannot write 'missing/out': No such file or directory" "" protect_to missing/out
    refuses 5 "cannot write 'key/out': Not a directory" "" protect_to key/out
    refuses 5 "cannot write '': No such file or directory" "" protect_to ""
    equals "$(left_behind . key)" ""
}

@test "a folder that may not be written is told" {
    needs_unprivileged
    mkdir folder
    echo old >folder/out
    chmod 555 folder
    for path in folder/out folder/new; do
        refuses 5 "cannot write '$path': Permission denied" "" \
            unprivileged "$VORL" protect --level none key -o $path
    done
    chmod 755 folder
    equals "$(cat folder/out)" old
    equals "$(left_behind folder out)" ""
}

@test "a full device is told" {
    refuses 5 "cannot write '/dev/full': No space left on device" "" protect_to /dev/full
}

@test "a device is written to, not replaced" {
    succeeds protect_to /dev/null
    [ -c /dev/null ]
}

@test "a pipe with a name is written to, not replaced" {
    mkfifo pipe
    cat pipe >received 3>&- &
    protect_to pipe
    wait $!
    [ -p pipe ]
    equals "$(vorl unprotect --accept none received)" "$KEY_HEX"
    equals "$(left_behind . key pipe received)" ""
}

@test "a file that grows past a limit leaves the old one in place" {
    mkdir folder
    echo old >folder/out
    bytes_of 100000 >message
    limited() {
        (
            ulimit -f 4
            exec "$VORL" protect -k key message -o folder/out
        )
    }
    refuses 5 "cannot write 'folder/out': File too large" "" limited
    equals "$(cat folder/out)" old
    equals "$(left_behind folder out)" ""
}

@test "a name of the greatest length works" {
    local name
    name=$(printf 'n%.0s' {1..255})
    succeeds protect_to "$name"
    equals "$(vorl unprotect --accept none "$name")" "$KEY_HEX"
}
